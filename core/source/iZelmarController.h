#pragma once
#include "iDeferredAction.h"
#include "iTimeReference.h"
#include "iZelmarPlugin.h"
#include "tTimeValue.h"

namespace zelmarPluginCore_1_0
{

// The long-lived centre of a time source, which outlives its plug-ins: it
// owns the servo (the timekeeper), the deferred-action thread, the source's
// one mutex and the current plug-in. Everything a plug-in does to the core,
// and everything the source does, goes through here.
//
// Threads: host threads (attach, detach, property reads), the deferred-action
// thread (online, offline and every plug-in action), and the plug-in's own
// threads. The last may use only the operations that never take the mutex:
// addTimeSample, stepTimeReference, getTime, setFreeRunning, goOffline, the
// queueing and the timekeeper's getters and setters. Code that holds the
// mutex may wait for those threads.
class iZelmarController
{
public:
    virtual ~iZelmarController() {}

    // A latched error of a failed start, once; else the plug-in's code.
    virtual u32 takeErrorCode(tStatus& a_status) = 0;
    // Online: binds the timekeeper to a_pReference and starts the plug-in.
    // Offline: nothing; the host attaches again once the source is online.
    virtual void attachTimeReference(nZelmar::iTimeReference* a_pReference, tStatus& a_status) = 0;
    // Stops the plug-in, if there is one, and unbinds the timekeeper.
    virtual void detachTimeReference() = 0;
    // The timekeeper has a reference.
    virtual bool isAttached() = 0;
    // A plug-in exists.
    virtual bool isOnline() = 0;

    // One servo sample: the local time is corrected by the time reference
    // correction first.
    virtual void addTimeSample(const tTimeValue& a_rMaster, const tTimeValue& a_rLocal,
                               tStatus& a_status) = 0;
    virtual void stepTimeReference(const tTimeValue& a_rTime, tStatus& a_status) = 0;
    virtual tTimeValue getTime(tStatus& a_status) = 0;
    virtual bool isSynchronized(tStatus& a_status) = 0;
    virtual bool takeSynchronizationChanged(tStatus& a_status) = 0;
    // Seconds, held in whole nanoseconds.
    virtual f64 getSynchronizationThreshold(tStatus& a_status) = 0;
    virtual void setSynchronizationThreshold(const f64& a_seconds, tStatus& a_status) = 0;
    // Through the plug-in: 0.0 and nothing while offline.
    virtual f64 getInterval(tStatus& a_status) = 0;
    virtual void setInterval(const f64& a_seconds, tStatus& a_status) = 0;
    virtual f64 getMacroPhaseAdjustThreshold(tStatus& a_status) = 0;
    virtual void setMacroPhaseAdjustThreshold(const f64& a_seconds, tStatus& a_status) = 0;
    virtual f64 getGain(tStatus& a_status) = 0;
    virtual void setGain(const f64& a_gain, tStatus& a_status) = 0;
    virtual f64 getOffset(tStatus& a_status) = 0;
    virtual f64 getTimeReferenceCorrection(tStatus& a_status) = 0;
    virtual void setTimeReferenceCorrection(const f64& a_seconds, tStatus& a_status) = 0;
    // True while this clock is a slave of no other.
    virtual void setFreeRunning(bool a_freeRunning, tStatus& a_status) = 0;

    // Asks for the plug-in's destruction and, 2000 ms later, a new one. Any
    // thread, also one that holds the mutex; never blocks, and the status is
    // neither read nor set. Requests that come before the destruction are one.
    virtual void goOffline(tStatus& a_status) = 0;
    virtual void queueDeferredActionAfter(iDeferredAction* a_pAction, u32 a_delayMs,
                                          tStatus& a_status) = 0;
    virtual void queueDeferredAction(iDeferredAction* a_pAction, tStatus& a_status) = 0;
    // Takes every queued entry of a_pAction out, for an owner about to go.
    // Only on the deferred-action thread, where no action runs meanwhile.
    virtual void cancelDeferredAction(iDeferredAction* a_pAction) = 0;

    // Locks the mutex and returns the plug-in with the mutex held; the
    // caller ends with releasePlugin. Offline: null and -52010, unlocked.
    virtual iZelmarPlugin* acquirePlugin(tStatus& a_status) = 0;
    virtual void releasePlugin() = 0;
    virtual nOrvTarn000::tMutex& getMutex() = 0;
    // The time base of delays and timers, the plug-in's included.
    virtual nOrvTarn000::iClock& getClock() = 0;
};

} // namespace zelmarPluginCore_1_0
