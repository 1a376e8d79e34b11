#pragma once
#include "orvtarn/protons/timer/iClock.h"
#include "orvtarn/protons/timer/tTime.h"

namespace nOrvTarn000
{

// A stopwatch on one clock (kClockTick or kClockPerformanceCounter), chosen
// when it is built and read from a time base (the system clock in the
// product). Time accumulates over each start-stop span; start and stop
// alternate, and either in the wrong state gives kStatusWrongRunState. Holds
// no lock: its owner guards it. Assignment takes the other timer whole, its
// clock included, so an owner can put a fresh timer on another clock in place.
class tTimer
{
public:
    explicit tTimer(u32 a_source, iClock& a_rClock = getSystemClock());

    // The clock's reading in a_unit. On the high-resolution counter the
    // reading in picoseconds wraps every 2^64 ps.
    u64 now(i32 a_unit, tStatus& a_status);

    void start(tStatus& a_status);
    // A reading below the start (the counter wrapped) adds nothing and gives
    // kStatusSystemError; the timer is stopped in either case.
    void stop(tStatus& a_status);
    // The accumulated time, plus the running span, in a_unit.
    u64 getElapsed(i32 a_unit, tStatus& a_status);
    void reset();

    bool isRunning() const { return m_running; }

private:
    u64 m_start;
    u64 m_accumulated;
    bool m_running;
    u32 m_source;
    iClock* m_pClock;
};

} // namespace nOrvTarn000
