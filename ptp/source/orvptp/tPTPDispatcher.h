#pragma once
#include "orvptp/tEventQueue.h"
#include "orvtarn/protons/thread/iThread.h"
#include "orvtarn/protons/thread/tThreadController.h"
#include "orvtarn/protons/timer/tClockedEvent.h"
#include "orvtarn/quarks/tMutex.h"

#include <atomic>

namespace nOrvPTP000
{

// The one thread that runs all PTP work. Any thread posts events; the
// dispatcher takes the whole queue as one batch and runs the events in order
// of arrival. It owns every queued event.
//
// States: Stopped (only events allowed when stopped are accepted and run),
// Running (all events), Failed (thread ended on a fatal status, posts get
// -52008) and Exiting (destructor begun, posts get -52009). A start event
// leaves Stopped before it runs; a stop event enters Stopped after it ran and
// then abandons every queued event that is not allowed when stopped.
//
// The thread waits through the clock it is given, so that a test clock sees
// when it has work.
class tPTPDispatcher : public nOrvTarn000::iThread
{
public:
    explicit tPTPDispatcher(tStatus& a_status);
    tPTPDispatcher(nOrvTarn000::iClock& a_rClock, tStatus& a_status);
    ~tPTPDispatcher() override;
    tPTPDispatcher(const tPTPDispatcher&) = delete;
    tPTPDispatcher& operator=(const tPTPDispatcher&) = delete;

    // Queues the event and takes it; on failure it stays the caller's. A null
    // event (what a poster holds when making it ran out of memory) is refused
    // with -52000.
    void post(std::unique_ptr<iPTPEvent>& a_rpEvent, tStatus& a_status);

    // Posts, and abandons the event when that fails. A fatal status on entry
    // deletes the event. True when the event was queued.
    bool postEvent(std::unique_ptr<iPTPEvent> a_pEvent, tStatus& a_status);

    // Posts and waits without limit for a_pDoneEvent, which the event's handler
    // signals. A failure of the post or the wait reaches a_status unless it
    // already holds one. Must not be called on the dispatcher thread.
    void postEventAndWait(std::unique_ptr<iPTPEvent> a_pEvent, nOrvTarn000::tEvent* a_pDoneEvent,
                          tStatus& a_status);

    // Abandons and removes from a_rBatch, then from the queue, every event not
    // allowed when stopped; with a_markStopped enters Stopped under the same lock.
    void discardStoppableEvents(tEventQueue& a_rBatch, bool a_markStopped, tStatus& a_status);

    void run(tStatus& a_status) override;

private:
    void runEvent(std::unique_ptr<iPTPEvent> a_pEvent, tEventQueue& a_rBatch, tStatus& a_status);

    nOrvTarn000::tMutex m_mutex;
    nOrvTarn000::tClockedEvent m_wakeEvent;
    nOrvTarn000::tThreadController m_thread;
    std::atomic<bool> m_exiting;
    std::atomic<bool> m_failed;
    std::atomic<bool> m_stopped;
    tEventQueue m_queue;
};

} // namespace nOrvPTP000
