#pragma once
#include "iTickSource.h"
#include "orvtarn/protons/status/tStatus.h"

namespace nZelmar
{

// The system's raw monotonic clock as a counter of 10 MHz, counted from the
// construction of the source.
//
// The timekeeper turns tick spans into nanoseconds as span * 1e9 / frequency
// in wrapping 64-bit arithmetic, which wraps for spans of 2^64 / 1e9 ticks:
// 18 s of a 1 GHz counter, but 30 minutes of this one. Counting from
// construction keeps the first span after an attach that short as well. A
// tick of 100 ns lies well below the noise of software timestamps.
class tMonotonicRawTickSource : public iTickSource
{
public:
    static const u64 kFrequency = 10000000u;

    // -52008 when the clock cannot be read.
    explicit tMonotonicRawTickSource(nOrvTarn000::tStatus& a_status);

    u64 getFrequency() const override { return kFrequency; }
    bool readTicks(u64& a_rTicks) override;

private:
    u64 m_originNanoseconds;
};

} // namespace nZelmar
