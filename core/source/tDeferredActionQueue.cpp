#include "tDeferredActionQueue.h"

#include "orvtarn/quarks/tMutexGuard.h"

#include <algorithm>

namespace zelmarPluginCore_1_0
{

using namespace nOrvTarn000;

tDeferredActionQueue::tDeferredActionQueue(tStatus& a_status)
    : tDeferredActionQueue(getSystemClock(), a_status)
{
}

tDeferredActionQueue::tDeferredActionQueue(iClock& a_rClock, tStatus& a_status)
    : m_rClock(a_rClock), m_mutex(a_status), m_running(false), m_wake(a_rClock, true, a_status)
{
}

tDeferredActionQueue::~tDeferredActionQueue()
{
    stop();
}

void tDeferredActionQueue::start(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    {
        tMutexGuard guard(m_mutex, a_status);
        if (!guard.isLocked())
        {
            return;
        }
        m_running = true;
    }
    // A queue without its worker accepts nothing, so that nothing waits for
    // a thread that is not there. A second start leaves the running one be.
    if (!m_thread.start(this, kThreadPriorityDefault, ORVTARN_COMPONENT, a_status) &&
        !m_thread.isRunning())
    {
        tStatus lockStatus;
        tMutexGuard guard(m_mutex, lockStatus);
        m_running = false;
    }
}

void tDeferredActionQueue::stop()
{
    tStatus stopStatus;
    {
        tMutexGuard guard(m_mutex, stopStatus);
        m_running = false;
        m_wake.signal();
    }
    m_thread.join();
    // What is left was not due. It stays its owners', and a later start must
    // not find it, nor the signal that woke the worker to end.
    tMutexGuard guard(m_mutex, stopStatus);
    m_actions.clear();
    m_wake.reset(stopStatus);
}

void tDeferredActionQueue::queueAfter(iDeferredAction* a_pAction, u32 a_delayMs, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (a_pAction == nullptr)
    {
        ORVTARN_SET_CODE(a_status, kStatusInvalidArgument);
        return;
    }
    tMutexGuard guard(m_mutex, a_status);
    if (!guard.isLocked() || !m_running)
    {
        return;
    }
    a_pAction->arm(a_delayMs, m_rClock, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    m_actions.push_back(a_pAction);
    if (!CHECK_ALLOCATION(m_actions, a_status))
    {
        return;
    }
    m_wake.signal();
}

void tDeferredActionQueue::queue(iDeferredAction* a_pAction, tStatus& a_status)
{
    queueAfter(a_pAction, 0, a_status);
}

void tDeferredActionQueue::cancel(iDeferredAction* a_pAction)
{
    // Should the lock fail, the entries go all the same: they would point at
    // an object that is gone.
    tStatus lockStatus;
    tMutexGuard guard(m_mutex, lockStatus);
    m_actions.erase(std::remove(m_actions.begin(), m_actions.end(), a_pAction), m_actions.end());
}

void tDeferredActionQueue::run(tStatus& a_status)
{
    while (isRunning())
    {
        tStatus passStatus;
        // The wait may end early through a signal; the next pass looks again.
        m_wake.wait(getWait(passStatus), passStatus);
        if (passStatus.getCode() == kStatusTimedOut)
        {
            passStatus.clear();
        }
        for (iDeferredAction* pAction = takeDueAction(passStatus); pAction != nullptr;
             pAction = takeDueAction(passStatus))
        {
            pAction->execute();
        }
        a_status.mergeFrom(passStatus);
    }
}

bool tDeferredActionQueue::isRunning()
{
    // Should the lock fail, the flag is read all the same, so that stop still
    // ends the worker.
    tStatus lockStatus;
    tMutexGuard guard(m_mutex, lockStatus);
    return m_running;
}

u32 tDeferredActionQueue::getWait(tStatus& a_status)
{
    u32 wait = tEvent::kInfinite;
    tMutexGuard guard(m_mutex, a_status);
    if (!guard.isLocked())
    {
        return wait;
    }
    for (iDeferredAction* pAction : m_actions)
    {
        const u32 remaining = pAction->getRemainingMilliseconds(a_status);
        if (remaining < wait)
        {
            wait = remaining;
        }
    }
    return wait;
}

iDeferredAction* tDeferredActionQueue::takeDueAction(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (!guard.isLocked())
    {
        return nullptr;
    }
    for (tActionList::iterator it = m_actions.begin(); it != m_actions.end(); ++it)
    {
        if ((*it)->isDue(a_status))
        {
            iDeferredAction* const pAction = *it;
            m_actions.erase(it);
            return pAction;
        }
    }
    return nullptr;
}

} // namespace zelmarPluginCore_1_0
