#pragma once
#include "tMonotonicRawTickSource.h"
#include "tSoftwareTimeReference.h"

namespace nZmHost
{

// The host's time reference that the source steers: a software clock on the
// raw monotonic counter, started off the system clock by a chosen offset and
// frequency error. Every namespace of the machine shares the system clock,
// so the clock's time minus the system clock's is its true error from a
// master on the same machine.
class tHostClock
{
public:
    // -52008 when a system clock cannot be read.
    tHostClock(i64 a_offsetNs, f64 a_ppm, nOrvTarn000::tStatus& a_status);

    nZelmar::iTimeReference& getReference() { return m_reference; }
    // The reference's time minus the system's UTC time, read around it.
    i64 readErrorNs();
    // How much faster the reference runs than its counter, in ppm.
    f64 readRatePpm();

private:
    nZelmar::tMonotonicRawTickSource m_ticks;
    nZelmar::tSoftwareTimeReference m_reference;
};

} // namespace nZmHost
