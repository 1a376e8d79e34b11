#include "tZelmarController.h"

#include "orvtarn/protons/status/tTrace.h"
#include "orvtarn/quarks/tMutexGuard.h"

using nOrvTarn000::tMutexGuard;

namespace zelmarPluginCore_1_0
{
namespace
{

enum : u32
{
    kKindInformation = 105 // 'i'
};

void traceFailure(const char* a_pWhat, u32 a_errorCode, const tStatus& a_status, u64 a_line)
{
    nOrvTarn000::getTrace(0)
        .writeHeader(ORVTARN_COMPONENT, a_line, __FILE__, kKindInformation, 0)
        .writeFormatted("%s: error code %u, status %d at %s:%d", a_pWhat,
                        static_cast<unsigned>(a_errorCode), static_cast<int>(a_status.getCode()),
                        a_status.getFile(), static_cast<int>(a_status.getLine()))
        .endLine();
}

} // namespace

tZelmarController::tZelmarController(iZelmarPluginFactory& a_rFactory,
                                     iOrvTimeReferenceObserver* a_pObserver,
                                     nOrvTarn000::iClock& a_rClock, tStatus& a_status)
    : m_rFactory(a_rFactory), m_rClock(a_rClock), m_mutex(a_status), m_pZelmarPlugin(),
      m_online(false), m_attached(false), m_offlineRequested(false), m_errorCode(0),
      m_pObserver(a_pObserver), m_timekeeper(a_status), m_timeReferenceCorrection(0),
      m_queue(a_rClock, a_status)
{
    m_queue.start(a_status);
    m_queue.queue(static_cast<tDeferredOnlineAction*>(this), a_status);
}

tZelmarController::~tZelmarController()
{
    m_queue.stop();
    tStatus destroyStatus;
    tMutexGuard guard(m_mutex, destroyStatus);
    m_online = false;
    m_pZelmarPlugin.reset();
}

u32 tZelmarController::takeErrorCode(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.getCode() != nOrvTarn000::kStatusSuccess)
    {
        return m_errorCode;
    }
    if (m_errorCode != 0)
    {
        const u32 code = m_errorCode;
        m_errorCode = 0;
        return code;
    }
    return m_pZelmarPlugin != nullptr ? m_pZelmarPlugin->takeErrorCode(a_status) : 0;
}

void tZelmarController::attachTimeReference(nZelmar::iTimeReference* a_pReference,
                                            tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    tMutexGuard guard(m_mutex, a_status);
    if (!guard.isLocked() || m_pZelmarPlugin == nullptr)
    {
        return;
    }
    m_timekeeper.attach(a_pReference, a_status);
    m_attached = a_status.isNotFatal() && a_pReference != nullptr;
    m_pZelmarPlugin->start(a_status);
}

void tZelmarController::detachTimeReference()
{
    tStatus detachStatus;
    tMutexGuard guard(m_mutex, detachStatus);
    if (m_pZelmarPlugin != nullptr)
    {
        m_pZelmarPlugin->stop();
    }
    m_timekeeper.detach();
    m_attached = false;
}

void tZelmarController::addTimeSample(const tTimeValue& a_rMaster, const tTimeValue& a_rLocal,
                                      tStatus& a_status)
{
    const tTimeValue corrected = a_rLocal + tTimeValue(m_timeReferenceCorrection.load());
    m_timekeeper.addTimeSample(a_rMaster, corrected, a_status);
}

void tZelmarController::stepTimeReference(const tTimeValue& a_rTime, tStatus& a_status)
{
    m_timekeeper.stepTime(a_rTime, a_status);
}

tTimeValue tZelmarController::getTime(tStatus& a_status)
{
    return m_timekeeper.getTime(a_status);
}

bool tZelmarController::isSynchronized(tStatus& a_status)
{
    return m_timekeeper.isSynchronized(a_status);
}

bool tZelmarController::takeSynchronizationChanged(tStatus& a_status)
{
    return m_timekeeper.takeSynchronizationChanged(a_status);
}

f64 tZelmarController::getSynchronizationThreshold(tStatus& a_status)
{
    return m_timekeeper.getSynchronizationThreshold(a_status);
}

void tZelmarController::setSynchronizationThreshold(const f64& a_seconds, tStatus& a_status)
{
    m_timekeeper.setSynchronizationThreshold(a_seconds, a_status);
}

f64 tZelmarController::getInterval(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    return guard.isLocked() && m_pZelmarPlugin != nullptr ? m_pZelmarPlugin->getInterval(a_status)
                                                          : 0.0;
}

void tZelmarController::setInterval(const f64& a_seconds, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (guard.isLocked() && m_pZelmarPlugin != nullptr)
    {
        m_pZelmarPlugin->setInterval(a_seconds, a_status);
    }
}

f64 tZelmarController::getMacroPhaseAdjustThreshold(tStatus& a_status)
{
    return m_timekeeper.getMacroPhaseAdjustThreshold(a_status);
}

void tZelmarController::setMacroPhaseAdjustThreshold(const f64& a_seconds, tStatus& a_status)
{
    m_timekeeper.setMacroPhaseAdjustThreshold(a_seconds, a_status);
}

f64 tZelmarController::getGain(tStatus& a_status)
{
    return m_timekeeper.getGain(a_status);
}

void tZelmarController::setGain(const f64& a_gain, tStatus& a_status)
{
    m_timekeeper.setGain(a_gain, a_status);
}

f64 tZelmarController::getOffset(tStatus& a_status)
{
    return m_timekeeper.getOffset(a_status);
}

f64 tZelmarController::getTimeReferenceCorrection(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    return tTimeValue(m_timeReferenceCorrection.load()).toSeconds();
}

void tZelmarController::setTimeReferenceCorrection(const f64& a_seconds, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (guard.isLocked())
    {
        m_timeReferenceCorrection = tTimeValue(a_seconds).getSignedNanoseconds();
    }
}

void tZelmarController::setFreeRunning(bool a_freeRunning, tStatus& a_status)
{
    m_timekeeper.setFreeRunning(a_freeRunning, a_status);
}

void tZelmarController::goOffline(tStatus&)
{
    // A request while one waits is answered by that one: the offline action
    // takes down whatever plug-in exists when it runs.
    if (m_offlineRequested.exchange(true))
    {
        return;
    }
    tStatus queueStatus;
    m_queue.queue(static_cast<tDeferredOfflineAction*>(this), queueStatus);
    if (queueStatus.isFatal())
    {
        m_offlineRequested = false;
        traceFailure("the offline action could not be queued", 0, queueStatus, __LINE__);
    }
}

void tZelmarController::queueDeferredActionAfter(iDeferredAction* a_pAction, u32 a_delayMs,
                                                 tStatus& a_status)
{
    m_queue.queueAfter(a_pAction, a_delayMs, a_status);
}

void tZelmarController::queueDeferredAction(iDeferredAction* a_pAction, tStatus& a_status)
{
    m_queue.queue(a_pAction, a_status);
}

void tZelmarController::cancelDeferredAction(iDeferredAction* a_pAction)
{
    m_queue.cancel(a_pAction);
}

iZelmarPlugin* tZelmarController::acquirePlugin(tStatus& a_status)
{
    if (a_status.isFatal() || !m_mutex.lock(a_status))
    {
        return nullptr;
    }
    if (m_pZelmarPlugin == nullptr)
    {
        m_mutex.unlock();
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidState);
        return nullptr;
    }
    return m_pZelmarPlugin.get();
}

void tZelmarController::releasePlugin()
{
    m_mutex.unlock();
}

void tZelmarController::deferredOnline()
{
    // The factory runs unlocked: it takes long, and the plug-in's constructor
    // calls back into the accessors.
    tStatus buildStatus;
    u32 code = 0;
    std::unique_ptr<iZelmarPlugin> pPlugin = m_rFactory.createPlugin(this, code, buildStatus);
    bool online = false;
    {
        tStatus lockStatus;
        tMutexGuard guard(m_mutex, lockStatus);
        // The first failure's code stays until it is taken.
        if (m_errorCode == 0)
        {
            m_errorCode = code;
        }
        if (buildStatus.isFatal() || pPlugin == nullptr)
        {
            pPlugin.reset();
            traceFailure("no plug-in could be built, next try in 2000 ms", code, buildStatus,
                         __LINE__);
            queueOnlineRetry();
        }
        else
        {
            m_pZelmarPlugin = std::move(pPlugin);
            m_online = true;
            online = true;
        }
    }
    if (online && m_pObserver != nullptr)
    {
        m_pObserver->timeReferenceChanged(true);
    }
}

void tZelmarController::deferredOffline()
{
    bool destroyed = false;
    {
        tStatus offlineStatus;
        tMutexGuard guard(m_mutex, offlineStatus);
        if (m_pZelmarPlugin != nullptr)
        {
            if (m_errorCode == 0)
            {
                m_errorCode = m_pZelmarPlugin->takeErrorCode(offlineStatus);
            }
            m_online = false;
            // Stops the plug-in's threads, which may ask to go offline once
            // more on their way down: the flag below is still set then.
            m_pZelmarPlugin.reset();
            destroyed = true;
            queueOnlineRetry();
        }
        m_offlineRequested = false;
    }
    if (destroyed && m_pObserver != nullptr)
    {
        m_pObserver->timeReferenceChanged(false);
    }
}

void tZelmarController::queueOnlineRetry()
{
    tStatus queueStatus;
    m_queue.queueAfter(static_cast<tDeferredOnlineAction*>(this), kRetryDelayMs, queueStatus);
    if (queueStatus.isFatal())
    {
        traceFailure("the online action could not be queued", 0, queueStatus, __LINE__);
    }
}

} // namespace zelmarPluginCore_1_0
