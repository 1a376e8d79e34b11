#pragma once
// A clock that moves only when the test moves it. The threads under test
// wait through it (tClockedEvent, or waitUntil for test doubles), so it knows
// at every moment which of them still have work at the present instant.
// settle() waits, in real time, until none has; the run operations then step
// the clock from one waiter's deadline to the next. Time never passes while
// anything runs, so a scenario of minutes runs in the time its work takes,
// and comes out the same on every run.
//
// A thread has work while it runs after the clock let it go (by a signal or a
// deadline), and while it waits on an event that is signalled or whose
// deadline has come. A signalled event that nobody waits on is work too,
// unless the thread that last waited on it is held in a wait on another
// event: a thread that has not come to its first wait yet, or that took the
// place of one that ended, will take the signal.
#include "orvtarn/protons/timer/iClock.h"
#include "orvtarn/quarks/tEvent.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

namespace nOrvTarn000
{

class tManualClock : public iClock
{
public:
    static constexpr u64 kNever = ~static_cast<u64>(0);
    static constexpr u64 kMillisecond = 1000000u;

    explicit tManualClock(u64 a_startNs = 0);
    ~tManualClock() override;

    u64 getNanoseconds(tStatus& a_status) override;
    bool wait(tEvent& a_rEvent, u32 a_timeoutMs, tStatus& a_status) override;
    void signal(tEvent& a_rEvent) override;
    void reset(tEvent& a_rEvent, tStatus& a_status) override;
    void forget(tEvent& a_rEvent) override;

    // Waits for a_rEvent until the clock reads a_deadlineNs (kNever: without
    // limit): for test doubles that keep their own times in nanoseconds.
    bool waitUntil(tEvent& a_rEvent, u64 a_deadlineNs, tStatus& a_status);

    u64 now();
    // Sets the clock forward (never back) and wakes the waiters that are due.
    void advanceTo(u64 a_ns);
    void advance(u64 a_ns) { advanceTo(now() + a_ns); }

    // Waits in real time until no thread has work at the present instant.
    // False if that took longer than a_realBound, which only a hung or
    // runaway thread does.
    bool settle(std::chrono::milliseconds a_realBound = std::chrono::seconds(20));
    // The earliest deadline of a waiting thread, or kNever.
    u64 getNextDeadline();

    // Settles, then steps from deadline to deadline until a_condition holds
    // (true) or a_boundNs of virtual time have passed (false). The condition
    // runs between steps, on the calling thread, and may post and wait.
    bool runUntil(const std::function<bool()>& a_condition, u64 a_boundNs);
    // Lets a_ns of virtual time pass, with everything that falls due in it.
    // False if the threads did not settle.
    bool runFor(u64 a_ns);

private:
    struct tEventState
    {
        bool m_signalled = false;
        bool m_autoReset = true;
        // The thread that waited on it last; none before the first wait.
        std::thread::id m_owner;
    };
    struct tWaiter
    {
        const tEventState* m_pState;
        u64 m_deadline;
        std::thread::id m_thread;
    };

    friend struct tRunningMark;
    bool waitLocked(std::unique_lock<std::mutex>& a_rLock, tEvent& a_rEvent, u64 a_deadline,
                    tStatus& a_status);
    tEventState& stateOf(tEvent& a_rEvent);
    bool isQuiet() const;
    bool isWaiting(std::thread::id a_thread) const;
    void markRunning();
    void markBlocked();
    void threadEnded();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    u64 m_now;
    u32 m_running;
    std::map<const tEvent*, tEventState> m_events;
    std::vector<tWaiter*> m_waiters;
};

} // namespace nOrvTarn000
