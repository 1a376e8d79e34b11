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
#include "orvptp/tClockDescriptionDS.h"
#include "orvptp/tCurrentDS.h"
#include "orvptp/tDefaultBestMasterClockAlgorithm.h"
#include "orvptp/tDefaultDS.h"
#include "orvptp/tForeignMasterDS.h"
#include "orvptp/tPTPDispatcher.h"
#include "orvptp/tParentDS.h"
#include "orvptp/tPortDS.h"
#include "orvptp/tPortNetworkMaintainer.h"
#include "orvptp/tSyncDelayExchange.h"
#include "orvptp/tTimePropertiesDS.h"
#include "orvptp/tTimedEventGenerator.h"
#include "orvtarn/protons/status/tAllocator.h"
#include "orvtarn/quarks/tMutex.h"

#include <vector>

namespace nOrvPTP000
{

class tDelayReqMessage;
class tDelayRespMessage;
class tFollowUpMessage;
class tPTPMessage;
class tSyncMessage;

// The PTP ordinary clock: its data sets, the current port state object, the
// dispatcher, the timed event generator and the network maintainer.
//
// All PTP work runs on the dispatcher thread; only m_mutex, m_closing and the
// posting operations are used from other threads once the clock runs. Every
// handler that asks the port object for its next state applies the
// transition rule (transition()).
class tPTPNode : public iPTPNode, public iForeignMasterTimer
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
    // Re-arms the periodic timer at a_index with a new period, if it runs.
    void rearmPeriodic(u32 a_index, std::unique_ptr<iPTPEventGenerator> a_pGenerator,
                       u32 a_periodMs, tStatus& a_status);

    // The common start of INITIALIZING: timers, tables and data sets back to
    // their initial state, the network reopened, the initialized check armed.
    void reinitializePort(tStatus& a_status);
    // The network failed: close it, stop the timers, arm recovery if enabled.
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

    // Typed data-set accessors.
    bool getTwoStepFlag() override;
    void setTwoStepFlag(bool a_value, tStatus& a_status, i32 a_context) override;
    tClockIdentity getClockIdentity() override;
    void setClockIdentity(const tClockIdentity& a_value, tStatus& a_status, i32 a_context) override;
    u16 getNumberPorts() override;
    void setNumberPorts(u16 a_value, tStatus& a_status, i32 a_context) override;
    tClockQuality getClockQuality() override;
    void setClockQuality(const tClockQuality& a_value, tStatus& a_status, i32 a_context) override;
    u8 getClockClass() override;
    void setClockClass(u8 a_value, tStatus& a_status, i32 a_context) override;
    u8 getClockAccuracy() override;
    void setClockAccuracy(u8 a_value, tStatus& a_status, i32 a_context) override;
    u16 getOffsetScaledLogVariance() override;
    void setOffsetScaledLogVariance(u16 a_value, tStatus& a_status, i32 a_context) override;
    u8 getPriority1() override;
    void setPriority1(u8 a_value, tStatus& a_status, i32 a_context) override;
    u8 getPriority2() override;
    void setPriority2(u8 a_value, tStatus& a_status, i32 a_context) override;
    u8 getDomainNumber() override;
    void setDomainNumber(u8 a_value, tStatus& a_status, i32 a_context) override;
    bool getSlaveOnly() override;
    void setSlaveOnly(bool a_value, tStatus& a_status, i32 a_context) override;
    u16 getStepsRemoved() override;
    void setStepsRemoved(u16 a_value, tStatus& a_status, i32 a_context) override;
    tTimeInterval getOffsetFromMaster() override;
    void setOffsetFromMaster(const tTimeInterval& a_value, tStatus& a_status,
                             i32 a_context) override;
    tTimeInterval getMeanPathDelay() override;
    void setMeanPathDelay(const tTimeInterval& a_value, tStatus& a_status, i32 a_context) override;
    tPortIdentity getParentPortIdentity() override;
    void setParentPortIdentity(const tPortIdentity& a_value, tStatus& a_status,
                               i32 a_context) override;
    tClockIdentity getParentClockIdentity() override;
    void setParentClockIdentity(const tClockIdentity& a_value, tStatus& a_status,
                                i32 a_context) override;
    u16 getParentPortNumber() override;
    void setParentPortNumber(u16 a_value, tStatus& a_status, i32 a_context) override;
    bool getParentStats() override;
    void setParentStats(bool a_value, tStatus& a_status, i32 a_context) override;
    u16 getObservedParentOffsetScaledLogVariance() override;
    void setObservedParentOffsetScaledLogVariance(u16 a_value, tStatus& a_status,
                                                  i32 a_context) override;
    i32 getObservedParentClockPhaseChangeRate() override;
    void setObservedParentClockPhaseChangeRate(i32 a_value, tStatus& a_status,
                                               i32 a_context) override;
    tClockIdentity getGrandmasterIdentity() override;
    void setGrandmasterIdentity(const tClockIdentity& a_value, tStatus& a_status,
                                i32 a_context) override;
    tClockQuality getGrandmasterClockQuality() override;
    void setGrandmasterClockQuality(const tClockQuality& a_value, tStatus& a_status,
                                    i32 a_context) override;
    u8 getGrandmasterClockClass() override;
    void setGrandmasterClockClass(u8 a_value, tStatus& a_status, i32 a_context) override;
    u8 getGrandmasterClockAccuracy() override;
    void setGrandmasterClockAccuracy(u8 a_value, tStatus& a_status, i32 a_context) override;
    u16 getGrandmasterOffsetScaledLogVariance() override;
    void setGrandmasterOffsetScaledLogVariance(u16 a_value, tStatus& a_status,
                                               i32 a_context) override;
    u8 getGrandmasterPriority1() override;
    void setGrandmasterPriority1(u8 a_value, tStatus& a_status, i32 a_context) override;
    u8 getGrandmasterPriority2() override;
    void setGrandmasterPriority2(u8 a_value, tStatus& a_status, i32 a_context) override;
    i16 getCurrentUtcOffset() override;
    void setCurrentUtcOffset(i16 a_value, tStatus& a_status, i32 a_context) override;
    bool getCurrentUtcOffsetValid() override;
    void setCurrentUtcOffsetValid(bool a_value, tStatus& a_status, i32 a_context) override;
    bool getLeap59() override;
    void setLeap59(bool a_value, tStatus& a_status, i32 a_context) override;
    bool getLeap61() override;
    void setLeap61(bool a_value, tStatus& a_status, i32 a_context) override;
    bool getTimeTraceable() override;
    void setTimeTraceable(bool a_value, tStatus& a_status, i32 a_context) override;
    bool getFrequencyTraceable() override;
    void setFrequencyTraceable(bool a_value, tStatus& a_status, i32 a_context) override;
    bool getPtpTimescale() override;
    void setPtpTimescale(bool a_value, tStatus& a_status, i32 a_context) override;
    u8 getTimeSource() override;
    void setTimeSource(u8 a_value, tStatus& a_status, i32 a_context) override;
    u8 getPortState(u16 a_portNumber, tStatus& a_status) override;
    void setPortState(u16 a_portNumber, u8 a_value, tStatus& a_status, i32 a_context) override;
    i8 getLogMinDelayReqInterval(u16 a_portNumber, tStatus& a_status) override;
    void setLogMinDelayReqInterval(u16 a_portNumber, i8 a_value, tStatus& a_status,
                                   i32 a_context) override;
    tTimeInterval getPeerMeanPathDelay(u16 a_portNumber, tStatus& a_status) override;
    void setPeerMeanPathDelay(u16 a_portNumber, const tTimeInterval& a_value, tStatus& a_status,
                              i32 a_context) override;
    i8 getLogAnnounceInterval(u16 a_portNumber, tStatus& a_status) override;
    void setLogAnnounceInterval(u16 a_portNumber, i8 a_value, tStatus& a_status,
                                i32 a_context) override;
    u8 getAnnounceReceiptTimeout(u16 a_portNumber, tStatus& a_status) override;
    void setAnnounceReceiptTimeout(u16 a_portNumber, u8 a_value, tStatus& a_status,
                                   i32 a_context) override;
    i8 getLogSyncInterval(u16 a_portNumber, tStatus& a_status) override;
    void setLogSyncInterval(u16 a_portNumber, i8 a_value, tStatus& a_status,
                            i32 a_context) override;
    u8 getDelayMechanism(u16 a_portNumber, tStatus& a_status) override;
    void setDelayMechanism(u16 a_portNumber, u8 a_value, tStatus& a_status, i32 a_context) override;
    i8 getLogMinPdelayReqInterval(u16 a_portNumber, tStatus& a_status) override;
    void setLogMinPdelayReqInterval(u16 a_portNumber, i8 a_value, tStatus& a_status,
                                    i32 a_context) override;
    u8 getVersionNumber(u16 a_portNumber, tStatus& a_status) override;
    void setVersionNumber(u16 a_portNumber, u8 a_value, tStatus& a_status, i32 a_context) override;

    u32 getAnnounceIntervalMs() override;
    u32 getSyncIntervalMs() override;
    tForeignMasterDS* getForeignMasterDS(u16 a_portNumber) override;
    tPTPDispatcher* getDispatcher() override { return m_pDispatcher.get(); }
    tTimedEventGenerator* getTimedEventGenerator() override { return m_pTimedEventGenerator.get(); }
    void getCurrentTime(tTimestamp& a_rTime, tStatus& a_status) override;
    void setCurrentTime(const tTimestamp& a_time, tStatus& a_status, i32 a_context) override;

    void handlePacketReceived(tProtocolDataUnit* a_pPacket, tStatus& a_status) override;
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
    template <typename T>
    struct tNonDeduced
    {
        typedef T type;
    };
    typedef iPTPPort* (iPTPPort::*tPortOperation)(tStatus&);
    template <typename T>
    using tVector = std::vector<T, nOrvTarn000::tAllocator<T>>;

    // Asks the port object for the next state and, if it changed, cancels
    // the master's send timers, deletes the old object and tells observers.
    void transition(tPortOperation a_operation, tStatus& a_status);
    u8 currentState() const;
    // True when the timekeeper holds the port in its state for now.
    bool isHeld();
    bool checkPortNumber(u16 a_portNumber, tStatus& a_status);
    void notifyPropertyChange(i32 a_id, tStatus& a_status, i32 a_context);
    template <typename tEventClass>
    bool postNew(tStatus& a_status);
    // Writes one field through its data set's setter and tells the observers.
    template <typename tDataSet, typename tValue>
    void setField(tDataSet& a_rDataSet, void (tDataSet::*a_setter)(tValue, tStatus&),
                  typename tNonDeduced<tValue>::type a_value, i32 a_id, tStatus& a_status,
                  i32 a_context);
    template <typename tObserver>
    void addObserver(tVector<tObserver*>& a_rObservers, tObserver* a_pObserver, tStatus& a_status);
    template <typename tObserver>
    void removeObserver(tVector<tObserver*>& a_rObservers, tObserver* a_pObserver);
    // Writes a time property to what the clock would announce, and to what is
    // in force while the clock is its own grandmaster.
    template <typename tValue>
    void setTimeProperty(void (tTimePropertiesDS::*a_setter)(tValue, tStatus&),
                         typename tNonDeduced<tValue>::type a_value, i32 a_id, tStatus& a_status,
                         i32 a_context);

    // Reception: each takes the parsed message and hands it on or drops it;
    // a_state is the port state at its arrival.
    void receiveSync(std::unique_ptr<tSyncMessage> a_pMessage, tProtocolDataUnit& a_rPacket,
                     tStatus& a_status);
    void receiveFollowUp(std::unique_ptr<tFollowUpMessage> a_pMessage, tStatus& a_status);
    void receiveDelayResp(std::unique_ptr<tDelayRespMessage> a_pMessage, tStatus& a_status);
    void receiveAnnounce(std::unique_ptr<tAnnounceMessage> a_pMessage, u8 a_state,
                         tStatus& a_status);
    bool isFromParentClock(const tPTPMessage& a_message) const;
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

    tDefaultDS m_defaultDS;
    tCurrentDS m_currentDS;
    tParentDS m_parentDS;
    tTimePropertiesDS m_timePropertiesDS;
    tTimePropertiesDS m_localTimePropertiesDS;
    tPortDS m_portDS;
    tClockDescriptionDS m_clockDescriptionDS;
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
    tVector<iPortStateObserver*> m_portStateObservers;
    tVector<iPropertyChangeObserver*> m_propertyObservers;
};

} // namespace nOrvPTP000
