#include "orvtarn/protons/timer/tTimer.h"

namespace nOrvTarn000
{

tTimer::tTimer(u32 a_source, iClock& a_rClock)
    : m_start(0), m_accumulated(0), m_running(false), m_source(a_source), m_pClock(&a_rClock)
{
}

u64 tTimer::now(i32 a_unit, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return 0;
    }
    // The counter counts nanoseconds (nClock::kCounterFrequency), the tick milliseconds.
    const u64 nanoseconds = m_pClock->getNanoseconds(a_status);
    const u64 count = m_source == kClockTick ? nanoseconds / 1000000u : nanoseconds;
    const u64 reading = count * getResolution(m_source, a_status);
    return convertTime(reading, getResolutionUnit(static_cast<i32>(m_source), a_status), a_unit,
                       a_status);
}

void tTimer::start(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (m_running)
    {
        ORVTARN_SET_CODE(a_status, kStatusWrongRunState);
        return;
    }
    const u64 reading = now(getResolutionUnit(static_cast<i32>(m_source), a_status), a_status);
    if (a_status.isFatal())
    {
        return;
    }
    m_start = reading;
    m_running = true;
}

void tTimer::stop(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (!m_running)
    {
        ORVTARN_SET_CODE(a_status, kStatusWrongRunState);
        return;
    }
    // A failed reading is 0 and so falls under the test below.
    tStatus readingStatus;
    const u64 reading =
        now(getResolutionUnit(static_cast<i32>(m_source), readingStatus), readingStatus);
    if (reading >= m_start)
    {
        m_accumulated += reading - m_start;
    }
    else
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
    }
    m_start = 0;
    m_running = false;
}

u64 tTimer::getElapsed(i32 a_unit, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return 0;
    }
    const i32 resolutionUnit = getResolutionUnit(static_cast<i32>(m_source), a_status);
    u64 elapsed = m_accumulated;
    if (m_running)
    {
        const u64 reading = now(resolutionUnit, a_status);
        if (m_source == kClockTick)
        {
            // The tick cannot go back.
            elapsed += reading - m_start;
        }
        else if (reading >= m_start)
        {
            elapsed += reading - m_start;
        }
        else
        {
            ORVTARN_SET_CODE(a_status, kStatusSystemError);
        }
    }
    return convertTime(elapsed, resolutionUnit, a_unit, a_status);
}

void tTimer::reset()
{
    m_start = 0;
    m_accumulated = 0;
    m_running = false;
}

} // namespace nOrvTarn000
