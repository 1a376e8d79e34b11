#pragma once
#include "iDeferredAction.h"
#include "orvtarn/protons/status/tAllocator.h"
#include "orvtarn/protons/thread/iThread.h"
#include "orvtarn/protons/thread/tThreadController.h"
#include "orvtarn/protons/timer/tClockedEvent.h"
#include "orvtarn/quarks/tMutex.h"

#include <vector>

namespace zelmarPluginCore_1_0
{

// One worker thread for work that may not run where it is asked for. It runs
// the queued actions one at a time, each once its delay has run out; among
// the due ones the one queued first runs first. The queue borrows its actions
// and never releases them; an action may stand in it twice.
//
// Between start and stop any thread may queue, the worker itself included;
// before start and after stop a queueing has no effect and is no failure.
// Delays and waits count the time of the given clock, which must outlive the
// queue. The mutex is held only for list work, never while an action runs.
class tDeferredActionQueue : public nOrvTarn000::iThread
{
public:
    explicit tDeferredActionQueue(tStatus& a_status);
    tDeferredActionQueue(nOrvTarn000::iClock& a_rClock, tStatus& a_status);
    // Stops first.
    ~tDeferredActionQueue() override;

    tDeferredActionQueue(const tDeferredActionQueue&) = delete;
    tDeferredActionQueue& operator=(const tDeferredActionQueue&) = delete;

    // Starts the worker at the default priority, named after the component.
    void start(tStatus& a_status);

    // Ends the worker, after it has run what is due by then; when stop
    // returns, the worker has ended. The actions still waiting leave the
    // queue without running and stay their owners'. Not for the worker itself.
    void stop();

    // Arms a_pAction with a_delayMs and queues it. kStatusMemoryFull when the
    // list cannot grow: the action is then armed but not queued.
    void queueAfter(iDeferredAction* a_pAction, u32 a_delayMs, tStatus& a_status);
    void queue(iDeferredAction* a_pAction, tStatus& a_status);
    // Takes every entry of a_pAction out of the list, for an owner about to
    // go. The action must not be running meanwhile: call it on the worker,
    // or once the worker has stopped.
    void cancel(iDeferredAction* a_pAction);

    // The worker. Each pass runs on a status of its own, so that one failed
    // pass does not end the service before stop; the first failure is kept as
    // the thread's final status.
    void run(tStatus& a_status) override;

private:
    typedef std::vector<iDeferredAction*, nOrvTarn000::tAllocator<iDeferredAction*>> tActionList;

    bool isRunning();
    // The least time left of the queued actions; kInfinite when none waits.
    u32 getWait(tStatus& a_status);
    // Takes the first due action off the list; null when none is due.
    iDeferredAction* takeDueAction(tStatus& a_status);

    nOrvTarn000::iClock& m_rClock;
    nOrvTarn000::tMutex m_mutex;
    tActionList m_actions;
    bool m_running;
    nOrvTarn000::tClockedEvent m_wake;
    nOrvTarn000::tThreadController m_thread;
};

} // namespace zelmarPluginCore_1_0
