#pragma once
#include "iTickSource.h"
#include "iTimeReference.h"
#include "orvtarn/quarks/tMutex.h"

namespace nZelmar
{

// A time reference in software: a time in nanoseconds from 1904-01-01 that
// runs on a free-running counter at a rate that can be changed, and can be
// moved at once.
//
// The rate is in counter ticks per second of reference time: the reference's
// second measured in ticks. The nominal rate is the counter's frequency, at
// which the reference keeps the counter's pace. A lower rate makes fewer
// ticks a second, so the reference runs faster, as the servo expects; a
// relative change of the rate by -e speeds it up by about e. Rates are held
// within kMaximumRateDeviation of the nominal rate.
//
// All operations lock one mutex (no system call unless it is contended),
// read the counter at most once and allocate nothing.
class tSoftwareTimeReference : public iTimeReference
{
public:
    static constexpr f64 kMaximumRateDeviation = 0.01;

    // Starts at the system's UTC time plus a_offsetFromUtc nanoseconds, at the
    // nominal rate. The counter must outlive the reference. -52008 when the
    // system's time cannot be read.
    tSoftwareTimeReference(iTickSource& a_rTickSource, i64 a_offsetFromUtc,
                           nOrvTarn000::tStatus& a_status);

    void getReferenceTime(u64& a_rNanoseconds) override;
    void getReferenceTicks(u64& a_rTicks) override;
    u64 getTickFrequency() override { return m_rTickSource.getFrequency(); }
    f64 getRate() override;
    // A rate that is not finite is ignored; one beyond the limits is held at them.
    void setRate(f64 a_rate) override;
    void adjustTime(const i64& a_rNanoseconds) override;

    f64 getNominalRate() const { return m_nominalRate; }

private:
    // The counter, never behind the count read last (a failed read repeats it).
    u64 readTicks();
    // The time at a_ticks since the base, in nanoseconds with their fraction.
    f64 spanTo(u64 a_ticks) const;

    iTickSource& m_rTickSource;
    nOrvTarn000::tMutex m_mutex;
    f64 m_nominalRate;
    f64 m_rate;
    f64 m_nanosecondsPerTick; // 1e9 / m_rate
    // The time runs from this pair at the rate in force; a rate change
    // moves it to the moment of the change. The base time keeps the fraction
    // of a nanosecond it had then, so that rate changes lose no time.
    u64 m_baseTicks;
    u64 m_baseTime;
    f64 m_baseFraction; // [0, 1)
    u64 m_lastTicks;
};

} // namespace nZelmar
