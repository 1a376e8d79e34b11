#include "orvptp/tPTPNode.h"

#include "orvptp/ports/tPTPStoppedPort.h"
#include "orvptp/tForeignMasterAging.h"
#include "orvptp/tLogInterval.h"
#include "orvptp/tNodeEventGenerators.h"
#include "orvptp/tProtocolDataUnit.h"
#include "orvptp/tStateDecisionUpdate.h"
#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tAssertion.h"
#include "orvtarn/protons/status/tTrace.h"
#include "orvtarn/quarks/tMutexGuard.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace nOrvPTP000
{

using namespace nOrvTarn000;

namespace
{

// A uniform draw from 0 to 1 inclusive, for the randomised timer times.
double draw()
{
    return static_cast<double>(std::rand()) / RAND_MAX;
}

} // namespace

tPTPNode::tPTPNode(iPTPPortMessaging* a_pMessaging, iPTPTimestampGenerator* a_pTimestampGenerator,
                   iPTPTimekeeper* a_pTimekeeper, const tClockIdentity& a_clockIdentity,
                   tStatus& a_status)
    : tPTPNode(a_pMessaging, a_pTimestampGenerator, a_pTimekeeper, a_clockIdentity,
               getSystemClock(), a_status)
{
}

tPTPNode::tPTPNode(iPTPPortMessaging* a_pMessaging, iPTPTimestampGenerator* a_pTimestampGenerator,
                   iPTPTimekeeper* a_pTimekeeper, const tClockIdentity& a_clockIdentity,
                   iClock& a_rClock, tStatus& a_status)
    : tNodeDataSets(a_clockIdentity, a_status), m_pMessaging(a_pMessaging),
      m_pTimestampGenerator(a_pTimestampGenerator), m_pTimekeeper(a_pTimekeeper),
      m_pDispatcher(makeOwned<tPTPDispatcher>(a_status, a_rClock, a_status)),
      m_networkMaintainer(a_pMessaging, m_pDispatcher.get(), a_status), m_bmcOutput(1, a_status),
      m_closing(false), m_externalChecks(false), m_automaticRecovery(false),
      m_pTimedEventGenerator(
          makeOwned<tTimedEventGenerator>(a_status, m_pDispatcher.get(), a_rClock, a_status)),
      m_mutex(a_status)
{
    m_pPort = makeOwned<tPTPStoppedPort>(a_status, this, &m_networkMaintainer, &m_portDS, a_status);
    m_pForeignMasterDS = makeOwned<tForeignMasterDS>(a_status, a_status);
    if (a_status.isNotFatal())
    {
        m_clockDescriptionDS.setProtocolAddress(tPortDS::kPortNumber,
                                                m_pMessaging->getPortAddress(), a_status);
    }
    std::srand(static_cast<unsigned>(std::time(nullptr)));
}

tPTPNode::~tPTPNode()
{
    {
        tStatus status;
        tMutexGuard guard(m_mutex, status);
        m_closing = true;
    }
    // The stop goes through the dispatcher: the port object is its thread's.
    if (m_pDispatcher != nullptr)
    {
        tStatus stopStatus;
        stopClock(stopStatus);
    }
    tStatus cleanUpStatus;
    m_networkMaintainer.stop(cleanUpStatus);
    m_syncDelayExchange.reset(cleanUpStatus);
    // The threads first, then what their events reach.
    m_pTimedEventGenerator.reset();
    m_pDispatcher.reset();
    m_pPort.reset();
    m_bmcOutput.resetAll();
    m_pForeignMasterDS.reset();
}

// ---- start, stop and posting ----

void tPTPNode::startClock(tStatus& a_status)
{
    tEvent done(a_status);
    postEventAndWait(makeOwned<tStartClockEvent>(a_status, this, &done, &a_status), &done,
                     a_status);
}

void tPTPNode::stopClock(tStatus& a_status)
{
    tEvent done(a_status);
    postEventAndWait(makeOwned<tStopClockEvent>(a_status, this, &done, &a_status), &done, a_status);
}

bool tPTPNode::postEvent(std::unique_ptr<iPTPEvent> a_pEvent, tStatus& a_status)
{
    if (m_pDispatcher == nullptr)
    {
        ORVTARN_SET_CODE(a_status, kStatusInvalidState);
        return false;
    }
    return m_pDispatcher->postEvent(std::move(a_pEvent), a_status);
}

void tPTPNode::postEventAndWait(std::unique_ptr<iPTPEvent> a_pEvent, tEvent* a_pDoneEvent,
                                tStatus& a_status)
{
    if (m_pDispatcher == nullptr)
    {
        ORVTARN_SET_CODE(a_status, kStatusInvalidState);
        return;
    }
    m_pDispatcher->postEventAndWait(std::move(a_pEvent), a_pDoneEvent, a_status);
}

template <typename tEventClass>
bool tPTPNode::postNew(tStatus& a_status)
{
    return postEvent(makeOwned<tEventClass>(a_status, this), a_status);
}

void tPTPNode::postInitializedCheck(tStatus& a_status)
{
    postNew<tInitializedCheckEvent>(a_status);
}

void tPTPNode::postMasterClockSelectedCheck(tStatus& a_status)
{
    postNew<tMasterClockSelectedCheckEvent>(a_status);
}

bool tPTPNode::designatePortDisabled(tStatus& a_status)
{
    return postNew<tDesignatePortDisabledEvent>(a_status);
}

bool tPTPNode::designatePortEnabled(tStatus& a_status)
{
    return postNew<tDesignatePortEnabledEvent>(a_status);
}

bool tPTPNode::signalFaultDetected(tStatus& a_status)
{
    return postNew<tSignalFaultDetectedEvent>(a_status);
}

bool tPTPNode::signalFaultCleared(tStatus& a_status)
{
    return postNew<tSignalFaultClearedEvent>(a_status);
}

bool tPTPNode::signalSyncFault(tStatus& a_status)
{
    return postNew<tSignalSyncFaultEvent>(a_status);
}

bool tPTPNode::initializePort(tStatus& a_status)
{
    return postNew<tInitializePortEvent>(a_status);
}

// ---- timers ----

u32 tPTPNode::scheduleOnce(std::unique_ptr<iPTPEventGenerator> a_pGenerator, u32 a_delayMs,
                           tStatus& a_status)
{
    return schedulePeriodic(std::move(a_pGenerator), a_delayMs, 0, a_status);
}

u32 tPTPNode::schedulePeriodic(std::unique_ptr<iPTPEventGenerator> a_pGenerator, u32 a_delayMs,
                               u32 a_periodMs, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (!guard.isLocked() || m_closing || m_pTimedEventGenerator == nullptr)
    {
        return kNotScheduled;
    }
    return m_pTimedEventGenerator->add(std::move(a_pGenerator), a_delayMs, a_periodMs, a_status);
}

void tPTPNode::cancelScheduled(u32 a_id, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (!guard.isLocked() || m_closing || m_pTimedEventGenerator == nullptr)
    {
        return;
    }
    m_pTimedEventGenerator->remove(a_id, a_status);
    if (a_status.getCode() == kStatusInvalidState)
    {
        a_status.clear();
    }
}

void tPTPNode::stopPortTimers(tStatus& a_status)
{
    {
        tMutexGuard guard(m_mutex, a_status);
        if (guard.isLocked() && m_pTimedEventGenerator != nullptr)
        {
            m_pTimedEventGenerator->clear(a_status);
        }
    }
    m_portDS.clearTimerIds();
}

void tPTPNode::restartAnnounceReceiptTimeout(tStatus& a_status)
{
    cancelScheduled(m_portDS.getTimerId(tPortDS::kAnnounceReceiptTimer), a_status);
    const u32 interval = getAnnounceIntervalMs();
    const u32 delay =
        m_portDS.getAnnounceReceiptTimeout() * interval + static_cast<u32>(draw() * interval);
    const u32 id = scheduleOnce(makeOwned<tInitialAnnounceTimeoutEventGenerator>(a_status, this),
                                delay, a_status);
    m_portDS.setTimerId(tPortDS::kAnnounceReceiptTimer, id, a_status);
}

void tPTPNode::armForeignMasterTimeout(const tPortIdentity& a_sender, tStatus& a_status)
{
    const u32 delay = m_portDS.getAnnounceReceiptTimeout() * getAnnounceIntervalMs();
    scheduleOnce(makeOwned<tForeignMasterAnnounceTimeoutEventGenerator>(a_status, this, a_sender),
                 delay, a_status);
}

void tPTPNode::armDelayRequestTimer(tStatus& a_status)
{
    const double mean = logIntervalToMilliseconds(m_portDS.getLogMinDelayReqInterval());
    const u32 delay = static_cast<u32>(draw() * 2 * mean);
    const u32 id =
        scheduleOnce(makeOwned<tDelayRequestEventGenerator>(a_status, this), delay, a_status);
    m_portDS.setTimerId(tPortDS::kDelayRequestTimer, id, a_status);
}

void tPTPNode::redrawDelayRequestTimer(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (!guard.isLocked() || m_closing || m_pTimedEventGenerator == nullptr)
    {
        return;
    }
    tStatus removeStatus;
    m_pTimedEventGenerator->remove(m_portDS.getTimerId(tPortDS::kDelayRequestTimer), removeStatus);
    if (removeStatus.isNotFatal())
    {
        armDelayRequestTimer(a_status);
    }
}

void tPTPNode::rearmPeriodic(u32 a_index, std::unique_ptr<iPTPEventGenerator> a_pGenerator,
                             u32 a_periodMs, tStatus& a_status)
{
    const u32 id = m_portDS.getTimerId(a_index);
    if (id == tPortDS::kNoTimer || a_status.isFatal())
    {
        return;
    }
    cancelScheduled(id, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    const u32 newId = schedulePeriodic(std::move(a_pGenerator), a_periodMs, a_periodMs, a_status);
    m_portDS.setTimerId(a_index, newId, a_status);
}

u32 tPTPNode::getAnnounceIntervalMs()
{
    return logIntervalToMilliseconds(m_portDS.getLogAnnounceInterval());
}

u32 tPTPNode::getSyncIntervalMs()
{
    return logIntervalToMilliseconds(m_portDS.getLogSyncInterval());
}

// ---- the transition rule ----

u8 tPTPNode::currentState() const
{
    return m_pPort != nullptr ? m_pPort->getState() : static_cast<u8>(kPortStateStopped);
}

void tPTPNode::transition(tPortOperation a_operation, tStatus& a_status)
{
    if (m_pPort == nullptr)
    {
        return;
    }
    const u8 oldState = m_pPort->getState();
    // The operation gives this very object to stay, or a new one that is ours.
    iPTPPort* pNext = (m_pPort.get()->*a_operation)(a_status);
    if (pNext == m_pPort.get())
    {
        return;
    }
    std::unique_ptr<iPTPPort> pOld = std::move(m_pPort);
    m_pPort.reset(pNext);
    // The master's send timers end with the master, after its successor is built.
    if (oldState == kPortStateMaster)
    {
        for (u32 index : {u32(tPortDS::kSendAnnounceTimer), u32(tPortDS::kSendSyncTimer)})
        {
            cancelScheduled(m_portDS.getTimerId(index), a_status);
            m_portDS.setTimerId(index, tPortDS::kNoTimer, a_status);
        }
    }
    pOld.reset();
    notifyPortStateChange(m_pPort->getState(), oldState);
}

bool tPTPNode::isHeld()
{
    return !m_externalChecks && m_pTimekeeper->isPortStateHeld();
}

void tPTPNode::notifyPortStateChange(i32 a_newState, i32 a_oldState)
{
    for (iPortStateObserver* pObserver : m_portStateObservers)
    {
        pObserver->portStateChanged(a_newState, a_oldState);
    }
}

// ---- handlers ----

void tPTPNode::handleStartClock(tEvent* a_pDone, tStatus* a_pStatus)
{
    if (currentState() != kPortStateStopped)
    {
        ORVTARN_SET_CODE(*a_pStatus, kStatusWrongRunState);
    }
    else
    {
        transition(&iPTPPort::handleStartClock, *a_pStatus);
        // A start that could not leave the stopped state (no memory for the
        // next state) leaves nothing running either: no network, no timers.
        if (currentState() == kPortStateStopped)
        {
            tStatus cleanUpStatus;
            m_networkMaintainer.stop(cleanUpStatus);
            stopPortTimers(cleanUpStatus);
        }
    }
    a_pDone->signal();
}

void tPTPNode::handleStopClock(tEvent* a_pDone, tStatus* a_pStatus)
{
    if (currentState() == kPortStateStopped)
    {
        ORVTARN_SET_CODE(*a_pStatus, kStatusWrongRunState);
    }
    else
    {
        transition(&iPTPPort::handleStopClock, *a_pStatus);
        m_networkMaintainer.stop(*a_pStatus);
        stopPortTimers(*a_pStatus);
    }
    a_pDone->signal();
}

void tPTPNode::handleStateDecisionEvent(tStatus& a_status)
{
    m_bmcAlgorithm.runBestMasterClock(*this, m_bmcOutput, a_status);
    transition(&iPTPPort::handleStateDecision, a_status);
}

void tPTPNode::handleInitialAnnounceTimeout(tStatus& a_status)
{
    transition(&iPTPPort::handleAnnounceReceiptTimeout, a_status);
}

void tPTPNode::handleMasterClockSelectedCheck(tStatus& a_status)
{
    if (isHeld())
    {
        return;
    }
    transition(&iPTPPort::handleMasterClockSelected, a_status);
}

void tPTPNode::handleInitializedCheck(tStatus& a_status)
{
    if (isHeld())
    {
        return;
    }
    stopPortTimers(a_status);
    transition(&iPTPPort::handleInitializedCheck, a_status);
    armDelayRequestTimer(a_status);
}

void tPTPNode::handleDesignatedDisabled(u16, tStatus& a_status)
{
    transition(&iPTPPort::handleDesignatedDisabled, a_status);
}

void tPTPNode::handleDesignatedEnabled(u16, tStatus& a_status)
{
    transition(&iPTPPort::handleDesignatedEnabled, a_status);
}

void tPTPNode::handleInitializePort(u16, tStatus& a_status)
{
    transition(&iPTPPort::handleInitialize, a_status);
}

void tPTPNode::handleSyncFault(tStatus& a_status)
{
    transition(&iPTPPort::handleSyncFault, a_status);
}

void tPTPNode::handleFaultCleared(tStatus& a_status)
{
    transition(&iPTPPort::handleFaultCleared, a_status);
}

void tPTPNode::handleFaultDetected(tStatus& a_status)
{
    transition(&iPTPPort::handleFaultDetected, a_status);
}

void tPTPNode::handleNetworkError(tStatus& a_status)
{
    transition(&iPTPPort::handleNetworkError, a_status);
}

void tPTPNode::handleNetworkRecovery(tStatus& a_status)
{
    if (currentState() != kPortStateFaulty || a_status.isFatal())
    {
        return;
    }
    m_networkMaintainer.start(this, a_status);
    if (a_status.isNotFatal())
    {
        transition(&iPTPPort::handleFaultCleared, a_status);
    }
}

// ---- the port's common work ----

void tPTPNode::reinitializePort(tStatus& a_status)
{
    stopPortTimers(a_status);
    if (m_pForeignMasterDS != nullptr)
    {
        m_bmcOutput.resetAll();
        m_pForeignMasterDS->clear(a_status);
    }
    m_defaultDS.resetToInitial(a_status);
    m_currentDS.resetToInitial(a_status);
    m_parentDS.resetToInitial(a_status);
    m_portDS.resetToInitial(a_status);
    m_timePropertiesDS.resetToInitial(a_status);
    m_networkMaintainer.stop(a_status);
    m_networkMaintainer.start(this, a_status);
    if (!m_externalChecks && a_status.isNotFatal())
    {
        schedulePeriodic(makeOwned<tInitializedCheckEventGenerator>(a_status, this), 0,
                         kCheckPeriodMs, a_status);
    }
}

// Every step of this clean-up runs whatever the one before it did: a socket
// that will not close must not leave the port running on a dead network with
// its timers firing and no recovery. Failures are traced, not passed on, so
// that the port goes on to FAULTY; only a recovery that cannot be armed is.
void tPTPNode::handleNetworkFailure(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    tStatus closeStatus;
    m_networkMaintainer.stop(closeStatus);
    traceFailure("closing the network", closeStatus);
    const u8 state = currentState();
    // A FAULTY port runs no timer but its recovery, which a further failure
    // (a master's Sync and Announce fail together) must not cancel.
    if (state == kPortStateFaulty)
    {
        return;
    }
    tStatus timerStatus;
    stopPortTimers(timerStatus);
    traceFailure("stopping the port's timers", timerStatus);
    if (state != kPortStateDisabled && m_automaticRecovery)
    {
        schedulePeriodic(makeOwned<tNetworkRecoveryEventGenerator>(a_status, this), 0,
                         kRecoveryPeriodMs, a_status);
    }
}

void tPTPNode::traceFailure(const char* a_pWhat, const tStatus& a_status)
{
    if (a_status.isFatal())
    {
        getTrace(0)
            .writeHeader(ORVTARN_COMPONENT, __LINE__, __FILE__, 0, 0)
            .writeFormatted("%s failed (%d)", a_pWhat, static_cast<int>(a_status.getCode()))
            .endLine();
    }
}

void tPTPNode::prepareSlaveEntry(tStatus& a_status)
{
    m_syncDelayExchange.reset(a_status);
    if (a_status.isNotFatal() && !m_externalChecks)
    {
        const u32 id =
            schedulePeriodic(makeOwned<tMasterClockSelectedCheckEventGenerator>(a_status, this), 0,
                             kCheckPeriodMs, a_status);
        m_portDS.setTimerId(tPortDS::kMasterClockSelectedTimer, id, a_status);
    }
}

void tPTPNode::dropBestForeignMaster(u16 a_portNumber, tStatus& a_status)
{
    nOrvPTP000::dropBestForeignMaster(a_portNumber, *m_pForeignMasterDS, m_bmcOutput, a_status);
}

void tPTPNode::applyStateDecision(i32 a_updateCode, const tAnnounceMessage* a_pMessage,
                                  tStatus& a_status)
{
    applyStateDecisionUpdate(a_updateCode, a_pMessage, m_defaultDS, m_currentDS, m_parentDS,
                             m_timePropertiesDS, m_localTimePropertiesDS, a_status);
}

tStateDecision tPTPNode::getStateDecision(tStatus& a_status)
{
    return m_bmcOutput.getDecision(tPortDS::kPortNumber, a_status);
}

tForeignMasterDS* tPTPNode::getForeignMasterDS(u16)
{
    return m_pForeignMasterDS.get();
}

void tPTPNode::handleForeignMasterAnnounceTimeout(const tPortIdentity& a_sender, tStatus& a_status)
{
    ageForeignMaster(a_sender, *m_pForeignMasterDS, m_bmcOutput, *this, a_status);
}

// ---- time ----

void tPTPNode::getCurrentTime(tTimestamp& a_rTime, tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        m_pTimekeeper->getTime(a_rTime, a_status);
    }
}

void tPTPNode::setCurrentTime(const tTimestamp& a_time, tStatus& a_status, i32 a_context)
{
    if (a_status.isFatal())
    {
        return;
    }
    m_pTimekeeper->stepTime(a_time, a_status);
    notifyPropertyChange(CURRENT_TIME, a_status, a_context);
}

// ---- trace ----

tTrace& tPTPNode::trace(tTrace& a_trace)
{
    a_trace.write("--- Begin tPTPNode ---\n");
    a_trace.write("defaultDS : ").write(m_defaultDS);
    a_trace.write("\ncurrentDS : ").write(m_currentDS);
    a_trace.write("\nparentDS : ").write(m_parentDS);
    a_trace.write("\ntimePropertiesDS : ").write(m_timePropertiesDS);
    a_trace.write("\nportDS : ").write(m_portDS);
    return a_trace.write("\n--- End tPTPNode ---");
}

} // namespace nOrvPTP000
