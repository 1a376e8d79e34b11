#pragma once
#include "orvtarn/protons/timer/iClock.h"
#include "orvtarn/quarks/tEvent.h"

namespace nOrvTarn000
{

// An event whose timed waits count the time of a given clock. Every wait,
// signal and reset goes through the clock, so that a virtual clock can tell
// a thread with work from one that sleeps.
class tClockedEvent
{
public:
    tClockedEvent(iClock& a_rClock, bool a_autoReset, tStatus& a_status)
        : m_rClock(a_rClock), m_event(a_autoReset, false, nullptr, a_status)
    {
    }
    ~tClockedEvent() { m_rClock.forget(m_event); }
    tClockedEvent(const tClockedEvent&) = delete;
    tClockedEvent& operator=(const tClockedEvent&) = delete;

    // As tEvent::wait, with a_timeoutMs of the clock's time.
    bool wait(u32 a_timeoutMs, tStatus& a_status)
    {
        return m_rClock.wait(m_event, a_timeoutMs, a_status);
    }
    void signal() { m_rClock.signal(m_event); }
    void reset(tStatus& a_status) { m_rClock.reset(m_event, a_status); }

    iClock& getClock() { return m_rClock; }

private:
    iClock& m_rClock;
    tEvent m_event;
};

} // namespace nOrvTarn000
