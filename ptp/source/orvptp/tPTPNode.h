#pragma once
#include "orvptp/iForeignMasterTimer.h"
#include "orvptp/iPTPNode.h"
#include "orvptp/iPTPPort.h"
#include "orvptp/iPTPPortMessaging.h"
#include "orvptp/iPTPTimekeeper.h"
#include "orvptp/iPTPTimestampGenerator.h"
#include "orvptp/iPortStateObserver.h"
#include "orvptp/iPropertyChangeObserver.h"
#include "orvptp/tBMCOutput.h"
#include "orvptp/tDefaultBestMasterClockAlgorithm.h"
#include "orvptp/tForeignMasterDS.h"
#include "orvptp/tNodeDataSets.h"
#include "orvptp/tNodeEvents.h"
#include "orvptp/tNodeProperty.h"
#include "orvptp/tObserverList.h"
#include "orvptp/tPTPDispatcher.h"
#include "orvptp/tPortNetworkMaintainer.h"
#include "orvptp/tSyncDelayExchange.h"
#include "orvptp/tTimedEventGenerator.h"
#include "orvtarn/quarks/tMutex.h"

namespace nOrvPTP000
{

class tDelayReqMessage;
class tDelayRespMessage;
class tFollowUpMessage;
class tManagementMessage;
class tPTPMessage;
class tSyncMessage;

// The PTP ordinary clock: its data sets, the current port state object, the
// dispatcher, the timed event generator and the network maintainer.
//
// All PTP work runs on the dispatcher thread; only m_mutex, m_closing and the
// posting operations are used from other threads once the clock runs. Every
// handler that asks the port object for its next state applies the
// transition rule (transition()).
class tPTPNode : public tNodeDataSets, public iForeignMasterTimer
{
public:
    enum : u32
    {
        kCheckPeriodMs = 200,
        kRecoveryPeriodMs = 500,
        kNotScheduled = 0xFFFFFFFF
    };

    tPTPNode(iPTPPortMessaging* a_pMessaging, iPTPTimestampGenerator* a_pTimestampGenerator,
             iPTPTimekeeper* a_pTimekeeper, const tClockIdentity& a_clockIdentity,
             tStatus& a_status);
    // The same on a given time base for the timers and the engine's waits.
    tPTPNode(iPTPPortMessaging* a_pMessaging, iPTPTimestampGenerator* a_pTimestampGenerator,
             iPTPTimekeeper* a_pTimekeeper, const tClockIdentity& a_clockIdentity,
             nOrvTarn000::iClock& a_rClock, tStatus& a_status);
    ~tPTPNode() override;
    tPTPNode(const tPTPNode&) = delete;
    tPTPNode& operator=(const tPTPNode&) = delete;

    // Caller's thread, never the dispatcher's: start or stop through an event
    // and wait for it. Start while running, or stop while stopped: -52017.
    void startClock(tStatus& a_status);
    void stopClock(tStatus& a_status);

    bool postEvent(std::unique_ptr<iPTPEvent> a_pEvent, tStatus& a_status);
    void postEventAndWait(std::unique_ptr<iPTPEvent> a_pEvent, nOrvTarn000::tEvent* a_pDoneEvent,
                          tStatus& a_status);
    void postInitializedCheck(tStatus& a_status);
    void postMasterClockSelectedCheck(tStatus& a_status);

    // Timers through the node, which take the generator: refused
    // (kNotScheduled) once the node closes. Cancelling what has fired or never
    // existed is no failure.
    u32 scheduleOnce(std::unique_ptr<iPTPEventGenerator> a_pGenerator, u32 a_delayMs,
                     tStatus& a_status);
    u32 schedulePeriodic(std::unique_ptr<iPTPEventGenerator> a_pGenerator, u32 a_delayMs,
                         u32 a_periodMs, tStatus& a_status);
    void cancelScheduled(u32 a_id, tStatus& a_status);
    void stopPortTimers(tStatus& a_status);
    void restartAnnounceReceiptTimeout(tStatus& a_status);
    void armForeignMasterTimeout(const tPortIdentity& a_sender, tStatus& a_status) override;
    void armDelayRequestTimer(tStatus& a_status);
    // Draws the pending Delay_Req anew from the present interval. A timer
    // that has fired is left alone: its event is under way and arms the next
    // one, and a second timer would start a second chain of requests.
    void redrawDelayRequestTimer(tStatus& a_status);
    // Re-arms the periodic timer at a_index with a new period, if it runs.
    void rearmPeriodic(u32 a_index, std::unique_ptr<iPTPEventGenerator> a_pGenerator,
                       u32 a_periodMs, tStatus& a_status);

    // The common start of INITIALIZING: timers, tables and data sets back to
    // their initial state, the network reopened, the initialized check armed.
    void reinitializePort(tStatus& a_status);
    // The network failed: close it, stop the timers, arm recovery if enabled,
    // each step whatever became of the one before.
    void handleNetworkFailure(tStatus& a_status);
    // Resets the measurement and arms the master clock selected check.
    void prepareSlaveEntry(tStatus& a_status);
    // Removes the foreign master that this port's decision names.
    void dropBestForeignMaster(u16 a_portNumber, tStatus& a_status);
    // The data-set update that goes with a state decision.
    void applyStateDecision(i32 a_updateCode, const tAnnounceMessage* a_pMessage,
                            tStatus& a_status);
    // This port's decision of the last best master run.
    tStateDecision getStateDecision(tStatus& a_status);

    tPortNetworkMaintainer& getNetworkMaintainer() { return m_networkMaintainer; }
    tPortDS& getPortDS() { return m_portDS; }
    tDefaultDS& getDefaultDS() { return m_defaultDS; }
    tCurrentDS& getCurrentDS() { return m_currentDS; }
    tParentDS& getParentDS() { return m_parentDS; }
    tTimePropertiesDS& getTimePropertiesDS() { return m_timePropertiesDS; }
    tTimePropertiesDS& getLocalTimePropertiesDS() { return m_localTimePropertiesDS; }
    tClockDescriptionDS& getClockDescriptionDS() { return m_clockDescriptionDS; }
    iPTPTimekeeper* getTimekeeper() { return m_pTimekeeper; }
    tSyncDelayExchange& getSyncDelayExchange() { return m_syncDelayExchange; }
    tBMCOutput& getBMCOutput() { return m_bmcOutput; }
    bool hasExternalChecks() const { return m_externalChecks; }
    iPTPTimestampGenerator* getTimestampGenerator() { return m_pTimestampGenerator; }
    bool isSlaveOnly() { return m_defaultDS.getSlaveOnly(); }

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;

    // The port state is the state object's: 0 while stopped.
    u8 getPortState(u16 a_portNumber, tStatus& a_status) override;

    // Property access from a thread other than the dispatcher's: posts the
    // get or set event of property kId and waits for it. A get that fails
    // returns a default value.
    template <i32 kId>
    typename tNodeProperty<kId>::tValue readProperty(tStatus& a_status);
    template <i32 kId>
    void writeProperty(const typename tNodeProperty<kId>::tValue& a_value, tStatus& a_status);
    // The same with the event's list of value pointers as getProperty and
    // setProperty read it: one to three entries.
    enum tAccess
    {
        kGet,
        kSet
    };
    void accessProperty(tAccess a_access, i32 a_id, void* const* a_pValues, u32 a_count,
                        u16 a_portNumber, tStatus& a_status);

    u32 getAnnounceIntervalMs() override;
    u32 getSyncIntervalMs() override;
    tForeignMasterDS* getForeignMasterDS(u16 a_portNumber) override;
    tPTPDispatcher* getDispatcher() override { return m_pDispatcher.get(); }
    tTimedEventGenerator* getTimedEventGenerator() override { return m_pTimedEventGenerator.get(); }
    void getCurrentTime(tTimestamp& a_rTime, tStatus& a_status) override;
    void setCurrentTime(const tTimestamp& a_time, tStatus& a_status, i32 a_context) override;

    void handlePacketReceived(std::unique_ptr<tProtocolDataUnit> a_pPacket,
                              tStatus& a_status) override;
    void handleStateDecisionEvent(tStatus& a_status) override;
    void handleInitialAnnounceTimeout(tStatus& a_status) override;
    void handleSendAnnouncePacket(tStatus& a_status) override;
    void handleSendSyncPacket(tStatus& a_status) override;
    void handleDelayRequestTimer(tStatus& a_status) override;
    void handleMasterClockSelectedCheck(tStatus& a_status) override;
    void handleStartClock(nOrvTarn000::tEvent* a_pDone, tStatus* a_pStatus) override;
    void handleStopClock(nOrvTarn000::tEvent* a_pDone, tStatus* a_pStatus) override;
    void handleInitializedCheck(tStatus& a_status) override;
    void handleDesignatedDisabled(u16 a_portNumber, tStatus& a_status) override;
    void handleInitializePort(u16 a_portNumber, tStatus& a_status) override;
    void handleSyncFault(tStatus& a_status) override;
    void handleFaultCleared(tStatus& a_status) override;
    void handleFaultDetected(tStatus& a_status) override;
    void handleDesignatedEnabled(u16 a_portNumber, tStatus& a_status) override;
    void handleNetworkError(tStatus& a_status) override;
    void handleNetworkRecovery(tStatus& a_status) override;

    void getProperty(i32 a_id, void** a_pValues, u16 a_portNumber, nOrvTarn000::tEvent* a_pDone,
                     tStatus* a_pStatus) override;
    void setProperty(i32 a_id, void** a_pValues, u16 a_portNumber, nOrvTarn000::tEvent* a_pDone,
                     tStatus* a_pStatus) override;

    void notifyPortStateChange(i32 a_newState, i32 a_oldState) override;

    bool designatePortDisabled(tStatus& a_status) override;
    bool designatePortEnabled(tStatus& a_status) override;
    bool signalFaultDetected(tStatus& a_status) override;
    bool signalFaultCleared(tStatus& a_status) override;
    bool signalSyncFault(tStatus& a_status) override;
    bool initializePort(tStatus& a_status) override;

    void handleForeignMasterAnnounceTimeout(const tPortIdentity& a_sender,
                                            tStatus& a_status) override;

private:
    typedef iPTPPort* (iPTPPort::*tPortOperation)(tStatus&);

    // Asks the port object for the next state and, if it changed, cancels
    // the master's send timers, deletes the old object and tells observers.
    void transition(tPortOperation a_operation, tStatus& a_status);
    u8 currentState() const;
    // True when the timekeeper holds the port in its state for now.
    bool isHeld();
    // One trace line for a clean-up step whose status holds a failure.
    static void traceFailure(const char* a_pWhat, const tStatus& a_status);
    // Tells the property observers, then re-arms the timers that run at an
    // interval just written.
    void propertyWritten(i32 a_id, tStatus& a_status, i32 a_context) override;
    void notifyPropertyChange(i32 a_id, tStatus& a_status, i32 a_context);
    template <i32 kId>
    void setById(void** a_pValues, u16 a_portNumber, tStatus& a_status);
    template <typename tEventClass>
    bool postNew(tStatus& a_status);

    // Reception: each takes the parsed message and hands it on or drops it;
    // a_state is the port state at its arrival.
    void receiveSync(std::unique_ptr<tSyncMessage> a_pMessage, tProtocolDataUnit& a_rPacket,
                     tStatus& a_status);
    void receiveFollowUp(std::unique_ptr<tFollowUpMessage> a_pMessage, tStatus& a_status);
    void receiveDelayResp(std::unique_ptr<tDelayRespMessage> a_pMessage, tStatus& a_status);
    void receiveAnnounce(std::unique_ptr<tAnnounceMessage> a_pMessage, u8 a_state,
                         tStatus& a_status);
    bool isFromParentClock(const tPTPMessage& a_message) const;
    // Management to this clock: to one of its ports, or to all of them.
    void receiveManagement(tManagementMessage& a_rMessage, tStatus& a_status);
    // Applies the request to the port of its target and sends the response.
    void answerManagement(tManagementMessage& a_rMessage, tStatus& a_status);
    // Transmission. sendSync and sendFollowUp share the packet: the Sync's
    // transmit time is looked up by it.
    void sendAnnounce(tStatus& a_status);
    void sendSync(tProtocolDataUnit& a_rPacket, tStatus& a_status);
    void sendFollowUp(tProtocolDataUnit& a_rPacket, tStatus& a_status);
    void sendDelayReq(tStatus& a_status);
    void sendDelayResp(tProtocolDataUnit& a_rRequestPacket, const tDelayReqMessage& a_rRequest,
                       tStatus& a_status);
    // The header fields that every message sent from this port shares.
    void fillHeader(tPTPMessage& a_rMessage, u16 a_sequenceId, i8 a_logMessageInterval,
                    tStatus& a_status);
    // Reads the time a message is sent with. A clock without time can neither
    // serve nor measure: the port stops its timers and goes FAULTY, and the
    // caller's status keeps the failure, so that nothing more is sent.
    bool readTimeForSending(tTimestamp& a_rNow, tStatus& a_status);

    iPTPPortMessaging* m_pMessaging;
    iPTPTimestampGenerator* m_pTimestampGenerator;
    iPTPTimekeeper* m_pTimekeeper;
    std::unique_ptr<tPTPDispatcher> m_pDispatcher;
    tPortNetworkMaintainer m_networkMaintainer;
    // Never null after a good construction.
    std::unique_ptr<iPTPPort> m_pPort;
    std::unique_ptr<tForeignMasterDS> m_pForeignMasterDS;
    tSyncDelayExchange m_syncDelayExchange;
    tTimestamp m_syncReceiptTime;
    tBMCOutput m_bmcOutput;
    bool m_closing;
    bool m_externalChecks;
    bool m_automaticRecovery;
    tDefaultBestMasterClockAlgorithm m_bmcAlgorithm;
    std::unique_ptr<tTimedEventGenerator> m_pTimedEventGenerator;
    nOrvTarn000::tMutex m_mutex;
    tObserverList<iPortStateObserver> m_portStateObservers;
    tObserverList<iPropertyChangeObserver> m_propertyObservers;
};

template <i32 kId>
typename tNodeProperty<kId>::tValue tPTPNode::readProperty(tStatus& a_status)
{
    typename tNodeProperty<kId>::tValue value{};
    void* const values[1] = {&value};
    accessProperty(kGet, kId, values, 1, tNodeProperty<kId>::kPortNumber, a_status);
    return value;
}

template <i32 kId>
void tPTPNode::writeProperty(const typename tNodeProperty<kId>::tValue& a_value, tStatus& a_status)
{
    // The handler only reads through the pointer.
    void* const values[1] = {const_cast<typename tNodeProperty<kId>::tValue*>(&a_value)};
    accessProperty(kSet, kId, values, 1, tNodeProperty<kId>::kPortNumber, a_status);
}

} // namespace nOrvPTP000
