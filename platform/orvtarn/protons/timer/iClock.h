#pragma once
#include "orvtarn/protons/status/tStatus.h"

namespace nOrvTarn000
{

class tEvent;

// The time base of whatever measures spans or lets a delay run out: the
// engine's timers, deferred actions, time-outs. The product runs on the
// system clock; a test puts a clock in its place that moves only when the
// test moves it, so that timed behaviour runs in virtual time, fast and the
// same on every run.
//
// Timed waits belong to the clock too. A thread waits for an event or a span
// of the clock's time through it, and whoever wakes such a thread signals
// through it (tClockedEvent does both), so that a virtual clock knows which
// threads still have work at the present instant.
class iClock
{
public:
    virtual ~iClock() {}

    // Nanoseconds since the clock's origin; never goes back. 0 and
    // kStatusSystemError when the clock cannot be read.
    virtual u64 getNanoseconds(tStatus& a_status) = 0;

    // The operations of tEvent, for events whose waits count this clock's time.
    virtual bool wait(tEvent& a_rEvent, u32 a_timeoutMs, tStatus& a_status) = 0;
    virtual void signal(tEvent& a_rEvent) = 0;
    virtual void reset(tEvent& a_rEvent, tStatus& a_status) = 0;
    // The event is about to go: the clock drops what it keeps of it.
    virtual void forget(tEvent& a_rEvent) = 0;
};

// The product's clock: the monotonic counter, counted from the start of the
// process, so that a reading in nanoseconds lasts for centuries of uptime.
iClock& getSystemClock();

} // namespace nOrvTarn000
