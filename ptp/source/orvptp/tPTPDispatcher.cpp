#include "orvptp/tPTPDispatcher.h"

#include "orvtarn/quarks/tMutexGuard.h"

namespace nOrvPTP000
{

using namespace nOrvTarn000;

namespace
{

void abandonAndDelete(iPTPEvent* a_pEvent)
{
    tStatus status;
    a_pEvent->abandon(status);
    delete a_pEvent;
}

// Abandons and removes every event of the list that is not allowed when stopped.
void dropStoppable(tEventList& a_rEvents)
{
    for (tEventList::iterator it = a_rEvents.begin(); it != a_rEvents.end();)
    {
        if ((*it)->allowedWhenStopped())
        {
            ++it;
            continue;
        }
        abandonAndDelete(*it);
        it = a_rEvents.erase(it);
    }
}

} // namespace

tPTPDispatcher::tPTPDispatcher(tStatus& a_status)
    : m_mutex(a_status), m_wakeEvent(a_status), m_exiting(false), m_failed(false), m_stopped(true)
{
    m_thread.start(this, 0, ORVTARN_COMPONENT, a_status);
    // Without its thread the dispatcher can never run what it accepts.
    m_failed = a_status.isFatal();
}

tPTPDispatcher::~tPTPDispatcher()
{
    tStatus status;
    {
        tMutexGuard guard(m_mutex, status);
        for (iPTPEvent* pEvent : m_queue)
        {
            delete pEvent;
        }
        m_queue.clear();
        m_exiting = true;
        m_wakeEvent.signal();
    }
    m_thread.join();
}

void tPTPDispatcher::post(iPTPEvent* a_pEvent, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    if (m_exiting)
    {
        ORVTARN_SET_CODE(a_status, kStatusCancelled);
        return;
    }
    if (m_failed)
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return;
    }
    // A null event is what a poster holds when making the event ran out of memory.
    if (a_pEvent == nullptr)
    {
        ORVTARN_SET_CODE(a_status, kStatusMemoryFull);
        return;
    }
    if (m_stopped && !a_pEvent->allowedWhenStopped())
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return;
    }
    m_queue.push_back(a_pEvent);
    if (!CHECK_ALLOCATION(m_queue, a_status))
    {
        return;
    }
    m_wakeEvent.signal();
}

bool tPTPDispatcher::postEvent(iPTPEvent* a_pEvent, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        delete a_pEvent;
        return false;
    }
    post(a_pEvent, a_status);
    if (a_status.isFatal())
    {
        if (a_pEvent != nullptr)
        {
            abandonAndDelete(a_pEvent);
        }
        return false;
    }
    return true;
}

void tPTPDispatcher::postEventAndWait(iPTPEvent* a_pEvent, tEvent* a_pDoneEvent, tStatus& a_status)
{
    tStatus local(a_status);
    if (postEvent(a_pEvent, local))
    {
        a_pDoneEvent->wait(tEvent::kInfinite, local);
    }
    if (a_status.isNotFatal() && local.isFatal())
    {
        a_status.mergeFrom(local);
    }
}

void tPTPDispatcher::discardStoppableEvents(tEventList& a_rBatch, bool a_markStopped,
                                            tStatus& a_status)
{
    dropStoppable(a_rBatch);
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    dropStoppable(m_queue);
    if (a_markStopped)
    {
        m_stopped = true;
    }
}

void tPTPDispatcher::runEvent(iPTPEvent* a_pEvent, tEventList& a_rBatch, tStatus& a_status)
{
    switch (a_pEvent->getEventKind())
    {
    case iPTPEvent::kStartEvent:
        m_stopped = false;
        a_pEvent->execute(a_status);
        a_status.clear();
        break;
    case iPTPEvent::kStopEvent:
        a_pEvent->execute(a_status);
        a_status.clear();
        discardStoppableEvents(a_rBatch, true, a_status);
        break;
    default:
        if (m_stopped && !a_pEvent->allowedWhenStopped())
        {
            a_pEvent->abandon(a_status);
        }
        else
        {
            a_pEvent->execute(a_status);
        }
        a_status.clear();
        break;
    }
    delete a_pEvent;
}

void tPTPDispatcher::run(tStatus& a_status)
{
    while (!m_exiting)
    {
        if (a_status.isFatal())
        {
            break;
        }
        m_wakeEvent.wait(tEvent::kInfinite, a_status);
        tEventList batch;
        {
            tMutexGuard guard(m_mutex, a_status);
            if (a_status.isNotFatal())
            {
                batch.splice(batch.end(), m_queue);
            }
        }
        while (!batch.empty() && a_status.isNotFatal())
        {
            iPTPEvent* pEvent = batch.front();
            batch.pop_front();
            runEvent(pEvent, batch, a_status);
        }
        // Left over only when the batch broke off on a fatal status.
        for (iPTPEvent* pEvent : batch)
        {
            abandonAndDelete(pEvent);
        }
    }
    if (a_status.isFatal())
    {
        m_failed = true;
    }
}

} // namespace nOrvPTP000
