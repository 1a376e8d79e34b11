#pragma once
#include "orvtarn/protons/timer/tTimer.h"

namespace nOrvTarn000
{

// A delay on the millisecond tick: not armed, armed and running, or expired
// (armed with no time left). A timeout that was never armed counts as
// expired. Holds no lock: its owner guards it.
class tTimeout : public tTimer
{
public:
    explicit tTimeout(iClock& a_rClock = getSystemClock());

    // Arms a_value in a_unit, plus one tick, so that the delay cannot end
    // early however the start falls between two ticks. Refused with
    // kStatusWrongRunState while the timer runs.
    void setTimeout(u64 a_value, i32 a_unit, tStatus& a_status);

    // Restarts from nothing elapsed. A positive a_milliseconds arms that
    // delay and starts the timer; 0 leaves the timer stopped and the armed
    // state as it was.
    void start(u32 a_milliseconds, tStatus& a_status);

    // The time left in a_unit; 0 when not armed, expired or on a fatal status.
    u64 getRemaining(i32 a_unit, tStatus& a_status);
    u64 getRemainingMilliseconds(tStatus& a_status);
    bool isExpired(tStatus& a_status);

private:
    u64 m_value;
    i32 m_unit;
    bool m_armed;
};

} // namespace nOrvTarn000
