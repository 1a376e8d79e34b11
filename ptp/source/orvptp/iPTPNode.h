#pragma once
#include "orvptp/tClockIdentity.h"
#include "orvptp/tClockQuality.h"
#include "orvptp/tPortIdentity.h"
#include "orvptp/tTimeInterval.h"
#include "orvptp/tTimestamp.h"
#include "orvtarn/protons/status/iTraceable.h"
#include "orvtarn/quarks/tEvent.h"

namespace nOrvPTP000
{

class tForeignMasterDS;
class tPTPDispatcher;
class tProtocolDataUnit;
class tTimedEventGenerator;

// Property ids of the clock's data-set fields, in the order of the typed
// accessors below. Setters report them to the property observers, with the
// context 1 for a change made by a management message and 0 otherwise.
enum tPropertyId : i32
{
    TWO_STEP_FLAG = 0,
    CLOCK_IDENTITY,
    NUMBER_PORTS,
    CLOCK_QUALITY,
    CLOCK_CLASS,
    CLOCK_ACCURACY,
    OFFSET_SCALED_LOG_VARIANCE,
    PRIORITY1,
    PRIORITY2,
    DOMAIN_NUMBER,
    SLAVE_ONLY,
    STEPS_REMOVED,
    OFFSET_FROM_MASTER,
    MEAN_PATH_DELAY,
    PARENT_PORT_IDENTITY,
    PARENT_CLOCK_IDENTITY,
    PARENT_PORT_NUMBER,
    PARENT_STATS,
    OBSERVED_PARENT_OFFSET_SCALED_LOG_VARIANCE,
    OBSERVED_PARENT_CLOCK_PHASE_CHANGE_RATE,
    GRANDMASTER_IDENTITY,
    GRANDMASTER_CLOCK_QUALITY,
    GRANDMASTER_CLOCK_CLASS,
    GRANDMASTER_CLOCK_ACCURACY,
    GRANDMASTER_OFFSET_SCALED_LOG_VARIANCE,
    GRANDMASTER_PRIORITY1,
    GRANDMASTER_PRIORITY2,
    CURRENT_UTC_OFFSET,
    CURRENT_UTC_OFFSET_VALID,
    LEAP59,
    LEAP61,
    TIME_TRACEABLE,
    FREQUENCY_TRACEABLE,
    PTP_TIMESCALE,
    TIME_SOURCE,
    PORT_STATE,
    LOG_MIN_DELAY_REQ_INTERVAL,
    PEER_MEAN_PATH_DELAY,
    LOG_ANNOUNCE_INTERVAL,
    ANNOUNCE_RECEIPT_TIMEOUT,
    LOG_SYNC_INTERVAL,
    DELAY_MECHANISM,
    LOG_MIN_PDELAY_REQ_INTERVAL,
    VERSION_NUMBER,
    ORDINARY_CLOCK,
    BOUNDARY_CLOCK,
    PEER_TO_PEER_TRANSPARENT_CLOCK,
    END_TO_END_TRANSPARENT_CLOCK,
    MANAGEMENT_NODE,
    PHYSICAL_LAYER_PROTOCOL,
    PHYSICAL_ADDRESS_LENGTH,
    PHYSICAL_ADDRESS,
    PROTOCOL_ADDRESS,
    MANUFACTURER_IDENTITY,
    PRODUCT_DESCRIPTION,
    REVISION_DATA,
    USER_DESCRIPTION,
    PROFILE_IDENTITY,
    ADD_PORT_STATE_OBSERVER,
    REMOVE_PORT_STATE_OBSERVER,
    EXTERNAL_CHECKS,
    AUTOMATIC_RECOVERY,
    ADD_PROPERTY_OBSERVER,
    REMOVE_PROPERTY_OBSERVER,
    CURRENT_TIME
};

// The PTP clock as the port states, the events, the best-master selection and
// management see it. Everything but the posting operations runs on the
// dispatcher thread only.
//
// Typed accessors: a setter writes the field, then (if the status is not
// fatal) tells the property observers; port properties take the port number
// first and refuse 0 or one beyond numberPorts with kStatusInvalidArgument.
class iPTPNode : public nOrvTarn000::iTraceable
{
public:
    typedef nOrvTarn000::tStatus tStatus;

    ~iPTPNode() override {}

    // Default data set.
    virtual bool getTwoStepFlag() = 0;
    virtual void setTwoStepFlag(bool a_value, tStatus& a_status, i32 a_context) = 0;
    virtual tClockIdentity getClockIdentity() = 0;
    virtual void setClockIdentity(const tClockIdentity& a_value, tStatus& a_status,
                                  i32 a_context) = 0;
    virtual u16 getNumberPorts() = 0;
    virtual void setNumberPorts(u16 a_value, tStatus& a_status, i32 a_context) = 0;
    virtual tClockQuality getClockQuality() = 0;
    virtual void setClockQuality(const tClockQuality& a_value, tStatus& a_status,
                                 i32 a_context) = 0;
    virtual u8 getClockClass() = 0;
    virtual void setClockClass(u8 a_value, tStatus& a_status, i32 a_context) = 0;
    virtual u8 getClockAccuracy() = 0;
    virtual void setClockAccuracy(u8 a_value, tStatus& a_status, i32 a_context) = 0;
    virtual u16 getOffsetScaledLogVariance() = 0;
    virtual void setOffsetScaledLogVariance(u16 a_value, tStatus& a_status, i32 a_context) = 0;
    virtual u8 getPriority1() = 0;
    virtual void setPriority1(u8 a_value, tStatus& a_status, i32 a_context) = 0;
    virtual u8 getPriority2() = 0;
    virtual void setPriority2(u8 a_value, tStatus& a_status, i32 a_context) = 0;
    virtual u8 getDomainNumber() = 0;
    virtual void setDomainNumber(u8 a_value, tStatus& a_status, i32 a_context) = 0;
    virtual bool getSlaveOnly() = 0;
    virtual void setSlaveOnly(bool a_value, tStatus& a_status, i32 a_context) = 0;

    // Current data set.
    virtual u16 getStepsRemoved() = 0;
    virtual void setStepsRemoved(u16 a_value, tStatus& a_status, i32 a_context) = 0;
    virtual tTimeInterval getOffsetFromMaster() = 0;
    virtual void setOffsetFromMaster(const tTimeInterval& a_value, tStatus& a_status,
                                     i32 a_context) = 0;
    virtual tTimeInterval getMeanPathDelay() = 0;
    virtual void setMeanPathDelay(const tTimeInterval& a_value, tStatus& a_status,
                                  i32 a_context) = 0;

    // Parent data set.
    virtual tPortIdentity getParentPortIdentity() = 0;
    virtual void setParentPortIdentity(const tPortIdentity& a_value, tStatus& a_status,
                                       i32 a_context) = 0;
    virtual tClockIdentity getParentClockIdentity() = 0;
    virtual void setParentClockIdentity(const tClockIdentity& a_value, tStatus& a_status,
                                        i32 a_context) = 0;
    virtual u16 getParentPortNumber() = 0;
    virtual void setParentPortNumber(u16 a_value, tStatus& a_status, i32 a_context) = 0;
    virtual bool getParentStats() = 0;
    virtual void setParentStats(bool a_value, tStatus& a_status, i32 a_context) = 0;
    virtual u16 getObservedParentOffsetScaledLogVariance() = 0;
    virtual void setObservedParentOffsetScaledLogVariance(u16 a_value, tStatus& a_status,
                                                          i32 a_context) = 0;
    virtual i32 getObservedParentClockPhaseChangeRate() = 0;
    virtual void setObservedParentClockPhaseChangeRate(i32 a_value, tStatus& a_status,
                                                       i32 a_context) = 0;
    virtual tClockIdentity getGrandmasterIdentity() = 0;
    virtual void setGrandmasterIdentity(const tClockIdentity& a_value, tStatus& a_status,
                                        i32 a_context) = 0;
    virtual tClockQuality getGrandmasterClockQuality() = 0;
    virtual void setGrandmasterClockQuality(const tClockQuality& a_value, tStatus& a_status,
                                            i32 a_context) = 0;
    virtual u8 getGrandmasterClockClass() = 0;
    virtual void setGrandmasterClockClass(u8 a_value, tStatus& a_status, i32 a_context) = 0;
    virtual u8 getGrandmasterClockAccuracy() = 0;
    virtual void setGrandmasterClockAccuracy(u8 a_value, tStatus& a_status, i32 a_context) = 0;
    virtual u16 getGrandmasterOffsetScaledLogVariance() = 0;
    virtual void setGrandmasterOffsetScaledLogVariance(u16 a_value, tStatus& a_status,
                                                       i32 a_context) = 0;
    virtual u8 getGrandmasterPriority1() = 0;
    virtual void setGrandmasterPriority1(u8 a_value, tStatus& a_status, i32 a_context) = 0;
    virtual u8 getGrandmasterPriority2() = 0;
    virtual void setGrandmasterPriority2(u8 a_value, tStatus& a_status, i32 a_context) = 0;

    // Time properties: getters read the properties in force; setters write
    // what the local clock would announce, and the properties in force too
    // while the local clock is its own grandmaster.
    virtual i16 getCurrentUtcOffset() = 0;
    virtual void setCurrentUtcOffset(i16 a_value, tStatus& a_status, i32 a_context) = 0;
    virtual bool getCurrentUtcOffsetValid() = 0;
    virtual void setCurrentUtcOffsetValid(bool a_value, tStatus& a_status, i32 a_context) = 0;
    virtual bool getLeap59() = 0;
    virtual void setLeap59(bool a_value, tStatus& a_status, i32 a_context) = 0;
    virtual bool getLeap61() = 0;
    virtual void setLeap61(bool a_value, tStatus& a_status, i32 a_context) = 0;
    virtual bool getTimeTraceable() = 0;
    virtual void setTimeTraceable(bool a_value, tStatus& a_status, i32 a_context) = 0;
    virtual bool getFrequencyTraceable() = 0;
    virtual void setFrequencyTraceable(bool a_value, tStatus& a_status, i32 a_context) = 0;
    virtual bool getPtpTimescale() = 0;
    virtual void setPtpTimescale(bool a_value, tStatus& a_status, i32 a_context) = 0;
    virtual u8 getTimeSource() = 0;
    virtual void setTimeSource(u8 a_value, tStatus& a_status, i32 a_context) = 0;

    // Port data set. getPortState gives the state object's code: 0 while stopped.
    virtual u8 getPortState(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void setPortState(u16 a_portNumber, u8 a_value, tStatus& a_status, i32 a_context) = 0;
    virtual i8 getLogMinDelayReqInterval(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void setLogMinDelayReqInterval(u16 a_portNumber, i8 a_value, tStatus& a_status,
                                           i32 a_context) = 0;
    virtual tTimeInterval getPeerMeanPathDelay(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void setPeerMeanPathDelay(u16 a_portNumber, const tTimeInterval& a_value,
                                      tStatus& a_status, i32 a_context) = 0;
    virtual i8 getLogAnnounceInterval(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void setLogAnnounceInterval(u16 a_portNumber, i8 a_value, tStatus& a_status,
                                        i32 a_context) = 0;
    virtual u8 getAnnounceReceiptTimeout(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void setAnnounceReceiptTimeout(u16 a_portNumber, u8 a_value, tStatus& a_status,
                                           i32 a_context) = 0;
    virtual i8 getLogSyncInterval(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void setLogSyncInterval(u16 a_portNumber, i8 a_value, tStatus& a_status,
                                    i32 a_context) = 0;
    virtual u8 getDelayMechanism(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void setDelayMechanism(u16 a_portNumber, u8 a_value, tStatus& a_status,
                                   i32 a_context) = 0;
    virtual i8 getLogMinPdelayReqInterval(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void setLogMinPdelayReqInterval(u16 a_portNumber, i8 a_value, tStatus& a_status,
                                            i32 a_context) = 0;
    virtual u8 getVersionNumber(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void setVersionNumber(u16 a_portNumber, u8 a_value, tStatus& a_status,
                                  i32 a_context) = 0;

    // Intervals in milliseconds from the port's log intervals: 1000 << n, or
    // 1000 >> -n for negative n (so -10 gives 0).
    virtual u32 getAnnounceIntervalMs() = 0;
    virtual u32 getSyncIntervalMs() = 0;

    // Inner objects; the port number is not used.
    virtual tForeignMasterDS* getForeignMasterDS(u16 a_portNumber) = 0;
    virtual tPTPDispatcher* getDispatcher() = 0;
    virtual tTimedEventGenerator* getTimedEventGenerator() = 0;

    // The clock's time, through the timekeeper; setting it steps the clock.
    virtual void getCurrentTime(tTimestamp& a_rTime, tStatus& a_status) = 0;
    virtual void setCurrentTime(const tTimestamp& a_time, tStatus& a_status, i32 a_context) = 0;

    // One received datagram; takes and deletes it.
    virtual void handlePacketReceived(tProtocolDataUnit* a_pPacket, tStatus& a_status) = 0;

    // Event handlers, dispatcher thread only. Start and stop report into the
    // caller's status and signal the done event last.
    virtual void handleStateDecisionEvent(tStatus& a_status) = 0;
    virtual void handleInitialAnnounceTimeout(tStatus& a_status) = 0;
    virtual void handleSendAnnouncePacket(tStatus& a_status) = 0;
    virtual void handleSendSyncPacket(tStatus& a_status) = 0;
    virtual void handleDelayRequestTimer(tStatus& a_status) = 0;
    virtual void handleMasterClockSelectedCheck(tStatus& a_status) = 0;
    virtual void handleStartClock(nOrvTarn000::tEvent* a_pDone, tStatus* a_pStatus) = 0;
    virtual void handleStopClock(nOrvTarn000::tEvent* a_pDone, tStatus* a_pStatus) = 0;
    virtual void handleInitializedCheck(tStatus& a_status) = 0;
    virtual void handleDesignatedDisabled(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void handleInitializePort(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void handleSyncFault(tStatus& a_status) = 0;
    virtual void handleFaultCleared(tStatus& a_status) = 0;
    virtual void handleFaultDetected(tStatus& a_status) = 0;
    virtual void handleDesignatedEnabled(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void handleNetworkError(tStatus& a_status) = 0;
    virtual void handleNetworkRecovery(tStatus& a_status) = 0;

    // Reads or writes the property a_id through the caller's value pointers, and
    // signals a_pDone as the last act. Observers (ids 58, 59, 62, 63) and the
    // external-checks and automatic-recovery flags (60, 61) are reached only here.
    virtual void getProperty(i32 a_id, void** a_pValues, u16 a_portNumber,
                             nOrvTarn000::tEvent* a_pDone, tStatus* a_pStatus) = 0;
    virtual void setProperty(i32 a_id, void** a_pValues, u16 a_portNumber,
                             nOrvTarn000::tEvent* a_pDone, tStatus* a_pStatus) = 0;

    // Tells every port state observer, in the order they were added.
    virtual void notifyPortStateChange(i32 a_newState, i32 a_oldState) = 0;

    // Any thread: each makes its event and posts it; true when posted.
    virtual bool designatePortDisabled(tStatus& a_status) = 0;
    virtual bool designatePortEnabled(tStatus& a_status) = 0;
    virtual bool signalFaultDetected(tStatus& a_status) = 0;
    virtual bool signalFaultCleared(tStatus& a_status) = 0;
    virtual bool signalSyncFault(tStatus& a_status) = 0;
    virtual bool initializePort(tStatus& a_status) = 0;

    // Ages the foreign master record of this sender.
    virtual void handleForeignMasterAnnounceTimeout(const tPortIdentity& a_sender,
                                                    tStatus& a_status) = 0;
};

} // namespace nOrvPTP000
