#include "tSoftwareTimeReference.h"

#include "orvtarn/quarks/tMutexGuard.h"
#include "tSystemClocks.h"

#include <algorithm>
#include <cmath>

using nOrvTarn000::tMutexGuard;
using nOrvTarn000::tStatus;

namespace nZelmar
{
namespace
{

const f64 kNanosecondsPerSecond = 1e9;

} // namespace

tSoftwareTimeReference::tSoftwareTimeReference(iTickSource& a_rTickSource, i64 a_offsetFromUtc,
                                               tStatus& a_status)
    : m_rTickSource(a_rTickSource), m_mutex(a_status),
      m_nominalRate(static_cast<f64>(a_rTickSource.getFrequency())), m_rate(m_nominalRate),
      m_nanosecondsPerTick(kNanosecondsPerSecond / m_nominalRate), m_baseTicks(0), m_baseTime(0),
      m_baseFraction(0.0), m_lastTicks(0)
{
    u64 utc = 0;
    if (a_status.isNotFatal() && !nSystemClocks::readUtc(utc))
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusSystemError);
    }
    m_rTickSource.readTicks(m_lastTicks);
    m_baseTicks = m_lastTicks;
    m_baseTime =
        utc + kReferenceEpochToUnixEpochSeconds * 1000000000u + static_cast<u64>(a_offsetFromUtc);
}

void tSoftwareTimeReference::getReferenceTime(u64& a_rNanoseconds)
{
    tStatus lockStatus;
    tMutexGuard guard(m_mutex, lockStatus);
    a_rNanoseconds = m_baseTime + static_cast<u64>(std::llround(spanTo(readTicks())));
}

void tSoftwareTimeReference::getReferenceTicks(u64& a_rTicks)
{
    tStatus lockStatus;
    tMutexGuard guard(m_mutex, lockStatus);
    a_rTicks = readTicks();
}

f64 tSoftwareTimeReference::getRate()
{
    tStatus lockStatus;
    tMutexGuard guard(m_mutex, lockStatus);
    return m_rate;
}

void tSoftwareTimeReference::setRate(f64 a_rate)
{
    if (!std::isfinite(a_rate))
    {
        return;
    }
    tStatus lockStatus;
    tMutexGuard guard(m_mutex, lockStatus);
    const u64 ticks = readTicks();
    const f64 span = spanTo(ticks);
    const f64 whole = std::floor(span);
    m_baseTime += static_cast<u64>(whole);
    m_baseFraction = span - whole;
    m_baseTicks = ticks;
    m_rate = std::min(std::max(a_rate, m_nominalRate * (1.0 - kMaximumRateDeviation)),
                      m_nominalRate * (1.0 + kMaximumRateDeviation));
    m_nanosecondsPerTick = kNanosecondsPerSecond / m_rate;
}

void tSoftwareTimeReference::adjustTime(const i64& a_rNanoseconds)
{
    tStatus lockStatus;
    tMutexGuard guard(m_mutex, lockStatus);
    m_baseTime += static_cast<u64>(a_rNanoseconds);
}

u64 tSoftwareTimeReference::readTicks()
{
    u64 ticks = 0;
    if (m_rTickSource.readTicks(ticks) && ticks > m_lastTicks)
    {
        m_lastTicks = ticks;
    }
    return m_lastTicks;
}

f64 tSoftwareTimeReference::spanTo(u64 a_ticks) const
{
    return m_baseFraction + static_cast<f64>(a_ticks - m_baseTicks) * m_nanosecondsPerTick;
}

} // namespace nZelmar
