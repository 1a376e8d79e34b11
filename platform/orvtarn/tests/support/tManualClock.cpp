#include "tManualClock.h"

#include <algorithm>
#include <cstdio>

namespace nOrvTarn000
{

// Which manual clock the calling thread is running for: set when the clock
// lets it go (by a signal or a deadline), cleared when it waits again. A
// thread that ends while running is taken off the count as it ends.
struct tRunningMark
{
    tManualClock* m_pClock = nullptr;
    ~tRunningMark()
    {
        if (m_pClock != nullptr)
        {
            m_pClock->threadEnded();
        }
    }
};

namespace
{
thread_local tRunningMark t_mark;
} // namespace

tManualClock::tManualClock(u64 a_startNs) : m_now(a_startNs), m_running(0) {}

tManualClock::~tManualClock()
{
    if (t_mark.m_pClock == this)
    {
        t_mark.m_pClock = nullptr;
    }
}

u64 tManualClock::getNanoseconds(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return 0;
    }
    return now();
}

u64 tManualClock::now()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_now;
}

bool tManualClock::wait(tEvent& a_rEvent, u32 a_timeoutMs, tStatus& a_status)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const u64 deadline =
        a_timeoutMs == tEvent::kInfinite ? kNever : m_now + a_timeoutMs * kMillisecond;
    return waitLocked(lock, a_rEvent, deadline, a_status);
}

bool tManualClock::waitUntil(tEvent& a_rEvent, u64 a_deadlineNs, tStatus& a_status)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return waitLocked(lock, a_rEvent, a_deadlineNs, a_status);
}

bool tManualClock::waitLocked(std::unique_lock<std::mutex>& a_rLock, tEvent& a_rEvent,
                              u64 a_deadline, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return false;
    }
    tEventState& state = stateOf(a_rEvent);
    state.m_owner = std::this_thread::get_id();
    tWaiter waiter{&state, a_deadline, state.m_owner};
    bool registered = false;
    for (;;)
    {
        const bool signalled = state.m_signalled;
        if (signalled || m_now >= a_deadline)
        {
            if (signalled && state.m_autoReset)
            {
                state.m_signalled = false;
            }
            if (registered)
            {
                m_waiters.erase(std::find(m_waiters.begin(), m_waiters.end(), &waiter));
            }
            markRunning();
            m_changed.notify_all();
            if (!signalled)
            {
                ORVTARN_SET_CODE(a_status, kStatusTimedOut);
            }
            return signalled;
        }
        if (!registered)
        {
            m_waiters.push_back(&waiter);
            registered = true;
            markBlocked();
            m_changed.notify_all();
        }
        m_changed.wait(a_rLock);
    }
}

void tManualClock::signal(tEvent& a_rEvent)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    stateOf(a_rEvent).m_signalled = true;
    m_changed.notify_all();
}

void tManualClock::reset(tEvent& a_rEvent, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    stateOf(a_rEvent).m_signalled = false;
    m_changed.notify_all();
}

void tManualClock::forget(tEvent& a_rEvent)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_events.erase(&a_rEvent);
    m_changed.notify_all();
}

tManualClock::tEventState& tManualClock::stateOf(tEvent& a_rEvent)
{
    const auto it = m_events.find(&a_rEvent);
    if (it != m_events.end())
    {
        return it->second;
    }
    tEventState& state = m_events[&a_rEvent];
    state.m_autoReset = a_rEvent.isAutoReset();
    return state;
}

void tManualClock::advanceTo(u64 a_ns)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (a_ns > m_now)
    {
        m_now = a_ns;
        m_changed.notify_all();
    }
}

bool tManualClock::isQuiet() const
{
    if (m_running != 0)
    {
        return false;
    }
    for (const tWaiter* pWaiter : m_waiters)
    {
        if (pWaiter->m_pState->m_signalled || pWaiter->m_deadline <= m_now)
        {
            return false;
        }
    }
    // A signal that no waiter has seen is work unless its thread is held
    // elsewhere.
    for (const auto& entry : m_events)
    {
        const tEventState& state = entry.second;
        if (state.m_signalled && !isWaiting(state.m_owner))
        {
            return false;
        }
    }
    return true;
}

bool tManualClock::isWaiting(std::thread::id a_thread) const
{
    for (const tWaiter* pWaiter : m_waiters)
    {
        if (pWaiter->m_thread == a_thread)
        {
            return true;
        }
    }
    return false;
}

bool tManualClock::settle(std::chrono::milliseconds a_realBound)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_changed.wait_for(lock, a_realBound, [this] { return isQuiet(); }))
    {
        return true;
    }
    // What keeps the clock from settling, for the failing test's log.
    std::fprintf(stderr, "manual clock at %llu ns did not settle: %u running, %zu waiting\n",
                 static_cast<unsigned long long>(m_now), m_running, m_waiters.size());
    for (const auto& entry : m_events)
    {
        if (entry.second.m_signalled)
        {
            std::fprintf(stderr, "  event %p signalled, its last waiter %s\n",
                         static_cast<const void*>(entry.first),
                         isWaiting(entry.second.m_owner) ? "waits elsewhere" : "does not wait");
        }
    }
    return false;
}

u64 tManualClock::getNextDeadline()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    u64 next = kNever;
    for (const tWaiter* pWaiter : m_waiters)
    {
        next = std::min(next, pWaiter->m_deadline);
    }
    return next;
}

bool tManualClock::runUntil(const std::function<bool()>& a_condition, u64 a_boundNs)
{
    const u64 start = now();
    const u64 end = a_boundNs > kNever - start ? kNever : start + a_boundNs;
    for (;;)
    {
        if (!settle())
        {
            return false;
        }
        if (a_condition())
        {
            return true;
        }
        const u64 next = getNextDeadline();
        if (next > end)
        {
            advanceTo(end);
            return settle() && a_condition();
        }
        advanceTo(next);
    }
}

bool tManualClock::runFor(u64 a_ns)
{
    runUntil([] { return false; }, a_ns);
    return settle();
}

void tManualClock::markRunning()
{
    if (t_mark.m_pClock != this)
    {
        t_mark.m_pClock = this;
        ++m_running;
    }
}

void tManualClock::markBlocked()
{
    if (t_mark.m_pClock == this)
    {
        t_mark.m_pClock = nullptr;
        --m_running;
    }
}

void tManualClock::threadEnded()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    --m_running;
    m_changed.notify_all();
}

} // namespace nOrvTarn000
