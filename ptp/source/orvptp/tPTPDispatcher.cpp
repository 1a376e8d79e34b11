#include "orvptp/tPTPDispatcher.h"

#include "orvtarn/quarks/tMutexGuard.h"

namespace nOrvPTP000
{

using namespace nOrvTarn000;

tPTPDispatcher::tPTPDispatcher(tStatus& a_status) : tPTPDispatcher(getSystemClock(), a_status) {}

tPTPDispatcher::tPTPDispatcher(iClock& a_rClock, tStatus& a_status)
    : m_mutex(a_status), m_wakeEvent(a_rClock, true, a_status), m_exiting(false), m_failed(false),
      m_stopped(true)
{
    m_thread.start(this, 0, ORVTARN_COMPONENT, a_status);
    // Without its thread the dispatcher can never run what it accepts.
    m_failed = a_status.isFatal();
}

tPTPDispatcher::~tPTPDispatcher()
{
    tStatus lockStatus;
    {
        tMutexGuard guard(m_mutex, lockStatus);
        m_queue.clear();
        m_exiting = true;
        m_wakeEvent.signal();
    }
    m_thread.join();
}

void tPTPDispatcher::post(std::unique_ptr<iPTPEvent>& a_rpEvent, tStatus& a_status)
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
    if (a_rpEvent == nullptr)
    {
        ORVTARN_SET_CODE(a_status, kStatusMemoryFull);
        return;
    }
    if (m_stopped && !a_rpEvent->allowedWhenStopped())
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return;
    }
    m_queue.push(std::move(a_rpEvent));
    m_wakeEvent.signal();
}

bool tPTPDispatcher::postEvent(std::unique_ptr<iPTPEvent> a_pEvent, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return false;
    }
    post(a_pEvent, a_status);
    if (a_status.isFatal())
    {
        abandonEvent(std::move(a_pEvent));
        return false;
    }
    return true;
}

void tPTPDispatcher::postEventAndWait(std::unique_ptr<iPTPEvent> a_pEvent, tEvent* a_pDoneEvent,
                                      tStatus& a_status)
{
    tStatus local(a_status);
    if (postEvent(std::move(a_pEvent), local))
    {
        a_pDoneEvent->wait(tEvent::kInfinite, local);
    }
    if (a_status.isNotFatal() && local.isFatal())
    {
        a_status.mergeFrom(local);
    }
}

void tPTPDispatcher::discardStoppableEvents(tEventQueue& a_rBatch, bool a_markStopped,
                                            tStatus& a_status)
{
    a_rBatch.abandonStoppable();
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    m_queue.abandonStoppable();
    if (a_markStopped)
    {
        m_stopped = true;
    }
}

void tPTPDispatcher::runEvent(std::unique_ptr<iPTPEvent> a_pEvent, tEventQueue& a_rBatch,
                              tStatus& a_status)
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
        tEventQueue batch;
        {
            tMutexGuard guard(m_mutex, a_status);
            if (a_status.isNotFatal())
            {
                batch.splice(m_queue);
            }
        }
        while (!batch.isEmpty() && a_status.isNotFatal())
        {
            runEvent(batch.pop(), batch, a_status);
        }
        // Left over only when the batch broke off on a fatal status.
        while (!batch.isEmpty())
        {
            abandonEvent(batch.pop());
        }
    }
    if (a_status.isFatal())
    {
        m_failed = true;
    }
}

} // namespace nOrvPTP000
