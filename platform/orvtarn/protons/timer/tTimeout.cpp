#include "orvtarn/protons/timer/tTimeout.h"

namespace nOrvTarn000
{

tTimeout::tTimeout(iClock& a_rClock)
    : tTimer(kClockTick, a_rClock), m_value(0), m_unit(kNanoseconds), m_armed(false)
{
}

void tTimeout::setTimeout(u64 a_value, i32 a_unit, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (isRunning())
    {
        ORVTARN_SET_CODE(a_status, kStatusWrongRunState);
        return;
    }
    const i32 unit = getResolutionUnit(static_cast<i32>(kClockTick), a_status);
    const u64 tick = getResolution(kClockTick, a_status);
    u64 value = convertTime(a_value, a_unit, unit, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    if (value + tick >= value)
    {
        value += tick;
    }
    m_value = value;
    m_unit = unit;
    m_armed = true;
}

void tTimeout::start(u32 a_milliseconds, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    reset();
    if (a_milliseconds > 0)
    {
        setTimeout(a_milliseconds, kMilliseconds, a_status);
        tTimer::start(a_status);
    }
}

u64 tTimeout::getRemaining(i32 a_unit, tStatus& a_status)
{
    if (a_status.isFatal() || !m_armed)
    {
        return 0;
    }
    const u64 value = convertTime(m_value, m_unit, a_unit, a_status);
    const u64 elapsed = getElapsed(a_unit, a_status);
    if (a_status.isFatal() || elapsed >= value)
    {
        return 0;
    }
    return value - elapsed;
}

u64 tTimeout::getRemainingMilliseconds(tStatus& a_status)
{
    return getRemaining(kMilliseconds, a_status);
}

bool tTimeout::isExpired(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return false;
    }
    return getRemaining(m_unit, a_status) == 0;
}

} // namespace nOrvTarn000
