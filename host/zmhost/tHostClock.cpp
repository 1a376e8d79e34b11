#include "tHostClock.h"

#include "tSystemClocks.h"

namespace nZmHost
{

tHostClock::tHostClock(i64 a_offsetNs, f64 a_ppm, nOrvTarn000::tStatus& a_status)
    : m_ticks(a_status), m_reference(m_ticks, a_offsetNs, a_status)
{
    // A lower rate runs faster.
    m_reference.setRate(m_reference.getNominalRate() / (1.0 + a_ppm * 1e-6));
}

i64 tHostClock::readErrorNs()
{
    u64 before = 0;
    u64 reference = 0;
    u64 after = 0;
    nZelmar::nSystemClocks::readUtc(before);
    m_reference.getReferenceTime(reference);
    nZelmar::nSystemClocks::readUtc(after);
    const u64 epochOffsetNs = nZelmar::kReferenceEpochToUnixEpochSeconds * 1000000000u;
    return static_cast<i64>(reference - epochOffsetNs - (before + (after - before) / 2));
}

f64 tHostClock::readRatePpm()
{
    return (m_reference.getNominalRate() / m_reference.getRate() - 1.0) * 1e6;
}

} // namespace nZmHost
