#pragma once
#include "iOrvTimeReferenceObserver.h"
#include "iZelmarController.h"
#include "iZelmarPluginFactory.h"
#include "tDeferredActionQueue.h"
#include "tDeferredControllerActions.h"
#include "tTimekeeper.h"

#include <atomic>
#include <memory>

namespace zelmarPluginCore_1_0
{

// The controller of one time source. A plug-in may die at any time: whatever
// fails only calls goOffline. The offline action destroys the plug-in and
// queues the online action 2000 ms later, which builds a new one from the
// factory, again every 2000 ms until one is built, for as long as the
// controller lives. The timekeeper, its reference and its settings live
// through that cycle; a new plug-in starts only at the next attach.
//
// States: Starting (no plug-in, the online action is due), Waiting (no
// plug-in, the online action is queued with its delay), Online (a plug-in).
// Exactly one online or offline action stands in the queue at a time.
//
// Lock order: the mutex, the timekeeper's, the queue's. The mutex is
// recursive and is held while the plug-in is stopped or destroyed, which
// waits for the plug-in's threads: those never take it.
class tZelmarController : public iZelmarController,
                          public tDeferredOnlineAction,
                          public tDeferredOfflineAction
{
public:
    enum : u32
    {
        kRetryDelayMs = 2000
    };

    // Builds the members, starts the deferred-action thread and queues the
    // first online action. The factory, the observer and the clock are
    // borrowed and must outlive the controller.
    tZelmarController(iZelmarPluginFactory& a_rFactory, iOrvTimeReferenceObserver* a_pObserver,
                      nOrvTarn000::iClock& a_rClock, tStatus& a_status);
    // Stops the thread (what is due by then still runs, the rest is
    // dropped), then destroys the plug-in.
    ~tZelmarController() override;

    tZelmarController(const tZelmarController&) = delete;
    tZelmarController& operator=(const tZelmarController&) = delete;

    u32 takeErrorCode(tStatus& a_status) override;
    void attachTimeReference(nZelmar::iTimeReference* a_pReference, tStatus& a_status) override;
    void detachTimeReference() override;
    bool isAttached() override { return m_attached.load(); }
    bool isOnline() override { return m_online.load(); }

    void addTimeSample(const tTimeValue& a_rMaster, const tTimeValue& a_rLocal,
                       tStatus& a_status) override;
    void stepTimeReference(const tTimeValue& a_rTime, tStatus& a_status) override;
    tTimeValue getTime(tStatus& a_status) override;
    bool isSynchronized(tStatus& a_status) override;
    bool takeSynchronizationChanged(tStatus& a_status) override;
    f64 getSynchronizationThreshold(tStatus& a_status) override;
    void setSynchronizationThreshold(const f64& a_seconds, tStatus& a_status) override;
    f64 getInterval(tStatus& a_status) override;
    void setInterval(const f64& a_seconds, tStatus& a_status) override;
    f64 getMacroPhaseAdjustThreshold(tStatus& a_status) override;
    void setMacroPhaseAdjustThreshold(const f64& a_seconds, tStatus& a_status) override;
    f64 getGain(tStatus& a_status) override;
    void setGain(const f64& a_gain, tStatus& a_status) override;
    f64 getOffset(tStatus& a_status) override;
    f64 getTimeReferenceCorrection(tStatus& a_status) override;
    void setTimeReferenceCorrection(const f64& a_seconds, tStatus& a_status) override;
    void setFreeRunning(bool a_freeRunning, tStatus& a_status) override;

    void goOffline(tStatus& a_status) override;
    void queueDeferredActionAfter(iDeferredAction* a_pAction, u32 a_delayMs,
                                  tStatus& a_status) override;
    void queueDeferredAction(iDeferredAction* a_pAction, tStatus& a_status) override;
    void cancelDeferredAction(iDeferredAction* a_pAction) override;

    iZelmarPlugin* acquirePlugin(tStatus& a_status) override;
    void releasePlugin() override;
    nOrvTarn000::tMutex& getMutex() override { return m_mutex; }
    nOrvTarn000::iClock& getClock() override { return m_rClock; }

protected:
    void deferredOnline() override;
    void deferredOffline() override;

private:
    // The online action again, after the retry delay; a failure is traced.
    void queueOnlineRetry();

    iZelmarPluginFactory& m_rFactory;
    nOrvTarn000::iClock& m_rClock;
    // Guards the plug-in, the error code and the correction's writes.
    nOrvTarn000::tMutex m_mutex;
    std::unique_ptr<iZelmarPlugin> m_pZelmarPlugin;
    // Read without the lock by any thread; written under it.
    std::atomic<bool> m_online;
    std::atomic<bool> m_attached;
    // An offline action stands in the queue and has not destroyed yet.
    std::atomic<bool> m_offlineRequested;
    u32 m_errorCode;
    iOrvTimeReferenceObserver* m_pObserver;
    tTimekeeper m_timekeeper;
    // Nanoseconds; read by the samples without the lock.
    std::atomic<i64> m_timeReferenceCorrection;
    // Last: its thread ends before anything it may touch goes.
    tDeferredActionQueue m_queue;
};

} // namespace zelmarPluginCore_1_0
