#pragma once
// A stand-in for the PTP node in tests and benchmarks: every typed accessor
// reads or writes a plain public field, so a test sets the clock up by
// assignment and reads back what the code under test wrote. Setters honour a
// fatal status, as the node's do, and port accessors ignore the port number.
// Handlers, posting, properties and time do nothing; the foreign master table
// is whatever m_pForeignMasterDS points at.
#include "orvptp/iPTPNode.h"
#include "orvptp/tLogInterval.h"
#include "orvptp/tPortStateCodes.h"
#include "orvtarn/protons/status/tTrace.h"

namespace nFakeNode
{

using nOrvPTP000::logIntervalToMilliseconds;
using nOrvPTP000::tClockIdentity;
using nOrvPTP000::tClockQuality;
using nOrvPTP000::tPortIdentity;
using nOrvPTP000::tTimeInterval;
using nOrvTarn000::tStatus;

// A getter and a setter of a clock-wide field.
#define FAKE_NODE_FIELD(tValue, tArgument, Name, field)                                            \
    tValue get##Name() override                                                                    \
    {                                                                                              \
        return field;                                                                              \
    }                                                                                              \
    void set##Name(tArgument a_value, tStatus& a_status, i32) override                             \
    {                                                                                              \
        if (a_status.isNotFatal())                                                                 \
        {                                                                                          \
            field = a_value;                                                                       \
        }                                                                                          \
    }

// The same for a port field: the port number comes first.
#define FAKE_NODE_PORT_FIELD(tValue, tArgument, Name, field)                                       \
    tValue get##Name(u16, tStatus&) override                                                       \
    {                                                                                              \
        return field;                                                                              \
    }                                                                                              \
    void set##Name(u16, tArgument a_value, tStatus& a_status, i32) override                        \
    {                                                                                              \
        if (a_status.isNotFatal())                                                                 \
        {                                                                                          \
            field = a_value;                                                                       \
        }                                                                                          \
    }

class tFakeNode : public nOrvPTP000::iPTPNode
{
public:
    // A clock of default quality and priorities (class 187, accuracy 0xFE,
    // variance 0xFFFF, priorities 128) with one port in LISTENING.
    explicit tFakeNode(const tClockIdentity& a_clockIdentity = tClockIdentity())
        : m_clockIdentity(a_clockIdentity), m_parentPortIdentity(a_clockIdentity, 0),
          m_grandmasterIdentity(a_clockIdentity)
    {
    }

    // Default data set.
    FAKE_NODE_FIELD(bool, bool, TwoStepFlag, m_twoStepFlag)
    FAKE_NODE_FIELD(tClockIdentity, const tClockIdentity&, ClockIdentity, m_clockIdentity)
    FAKE_NODE_FIELD(u16, u16, NumberPorts, m_numberPorts)
    FAKE_NODE_FIELD(u8, u8, ClockClass, m_clockClass)
    FAKE_NODE_FIELD(u8, u8, ClockAccuracy, m_clockAccuracy)
    FAKE_NODE_FIELD(u16, u16, OffsetScaledLogVariance, m_offsetScaledLogVariance)
    FAKE_NODE_FIELD(u8, u8, Priority1, m_priority1)
    FAKE_NODE_FIELD(u8, u8, Priority2, m_priority2)
    FAKE_NODE_FIELD(u8, u8, DomainNumber, m_domainNumber)
    FAKE_NODE_FIELD(bool, bool, SlaveOnly, m_slaveOnly)
    tClockQuality getClockQuality() override
    {
        return tClockQuality(m_clockClass, m_clockAccuracy, m_offsetScaledLogVariance);
    }
    void setClockQuality(const tClockQuality& a_value, tStatus& a_status, i32 a_context) override
    {
        setClockClass(a_value.getClockClass(), a_status, a_context);
        setClockAccuracy(a_value.getClockAccuracy(), a_status, a_context);
        setOffsetScaledLogVariance(a_value.getOffsetScaledLogVariance(), a_status, a_context);
    }

    // Current data set.
    FAKE_NODE_FIELD(u16, u16, StepsRemoved, m_stepsRemoved)
    FAKE_NODE_FIELD(tTimeInterval, const tTimeInterval&, OffsetFromMaster, m_offsetFromMaster)
    FAKE_NODE_FIELD(tTimeInterval, const tTimeInterval&, MeanPathDelay, m_meanPathDelay)

    // Parent data set.
    FAKE_NODE_FIELD(tPortIdentity, const tPortIdentity&, ParentPortIdentity, m_parentPortIdentity)
    FAKE_NODE_FIELD(bool, bool, ParentStats, m_parentStats)
    FAKE_NODE_FIELD(u16, u16, ObservedParentOffsetScaledLogVariance,
                    m_observedParentOffsetScaledLogVariance)
    FAKE_NODE_FIELD(i32, i32, ObservedParentClockPhaseChangeRate,
                    m_observedParentClockPhaseChangeRate)
    FAKE_NODE_FIELD(tClockIdentity, const tClockIdentity&, GrandmasterIdentity,
                    m_grandmasterIdentity)
    FAKE_NODE_FIELD(tClockQuality, const tClockQuality&, GrandmasterClockQuality,
                    m_grandmasterClockQuality)
    FAKE_NODE_FIELD(u8, u8, GrandmasterPriority1, m_grandmasterPriority1)
    FAKE_NODE_FIELD(u8, u8, GrandmasterPriority2, m_grandmasterPriority2)
    tClockIdentity getParentClockIdentity() override
    {
        return m_parentPortIdentity.getClockIdentity();
    }
    void setParentClockIdentity(const tClockIdentity& a_value, tStatus& a_status, i32) override
    {
        m_parentPortIdentity.setClockIdentity(a_value, a_status);
    }
    u16 getParentPortNumber() override { return m_parentPortIdentity.getPortNumber(); }
    void setParentPortNumber(u16 a_value, tStatus& a_status, i32) override
    {
        m_parentPortIdentity.setPortNumber(a_value, a_status);
    }
    u8 getGrandmasterClockClass() override { return m_grandmasterClockQuality.getClockClass(); }
    void setGrandmasterClockClass(u8 a_value, tStatus& a_status, i32) override
    {
        setGrandmasterQuality(a_value, getGrandmasterClockAccuracy(),
                              getGrandmasterOffsetScaledLogVariance(), a_status);
    }
    u8 getGrandmasterClockAccuracy() override
    {
        return m_grandmasterClockQuality.getClockAccuracy();
    }
    void setGrandmasterClockAccuracy(u8 a_value, tStatus& a_status, i32) override
    {
        setGrandmasterQuality(getGrandmasterClockClass(), a_value,
                              getGrandmasterOffsetScaledLogVariance(), a_status);
    }
    u16 getGrandmasterOffsetScaledLogVariance() override
    {
        return m_grandmasterClockQuality.getOffsetScaledLogVariance();
    }
    void setGrandmasterOffsetScaledLogVariance(u16 a_value, tStatus& a_status, i32) override
    {
        setGrandmasterQuality(getGrandmasterClockClass(), getGrandmasterClockAccuracy(), a_value,
                              a_status);
    }

    // Time properties.
    FAKE_NODE_FIELD(i16, i16, CurrentUtcOffset, m_currentUtcOffset)
    FAKE_NODE_FIELD(bool, bool, CurrentUtcOffsetValid, m_currentUtcOffsetValid)
    FAKE_NODE_FIELD(bool, bool, Leap59, m_leap59)
    FAKE_NODE_FIELD(bool, bool, Leap61, m_leap61)
    FAKE_NODE_FIELD(bool, bool, TimeTraceable, m_timeTraceable)
    FAKE_NODE_FIELD(bool, bool, FrequencyTraceable, m_frequencyTraceable)
    FAKE_NODE_FIELD(bool, bool, PtpTimescale, m_ptpTimescale)
    FAKE_NODE_FIELD(u8, u8, TimeSource, m_timeSource)

    // Port data set.
    FAKE_NODE_PORT_FIELD(u8, u8, PortState, m_portState)
    FAKE_NODE_PORT_FIELD(i8, i8, LogMinDelayReqInterval, m_logMinDelayReqInterval)
    FAKE_NODE_PORT_FIELD(tTimeInterval, const tTimeInterval&, PeerMeanPathDelay,
                         m_peerMeanPathDelay)
    FAKE_NODE_PORT_FIELD(i8, i8, LogAnnounceInterval, m_logAnnounceInterval)
    FAKE_NODE_PORT_FIELD(u8, u8, AnnounceReceiptTimeout, m_announceReceiptTimeout)
    FAKE_NODE_PORT_FIELD(i8, i8, LogSyncInterval, m_logSyncInterval)
    FAKE_NODE_PORT_FIELD(u8, u8, DelayMechanism, m_delayMechanism)
    FAKE_NODE_PORT_FIELD(i8, i8, LogMinPdelayReqInterval, m_logMinPdelayReqInterval)
    FAKE_NODE_PORT_FIELD(u8, u8, VersionNumber, m_versionNumber)

    // Clock description.
    FAKE_NODE_FIELD(bool, bool, OrdinaryClockFlag, m_ordinaryClock)
    FAKE_NODE_FIELD(bool, bool, BoundaryClockFlag, m_boundaryClock)
    FAKE_NODE_FIELD(bool, bool, PeerToPeerTransparentClockFlag, m_peerToPeerTransparentClock)
    FAKE_NODE_FIELD(bool, bool, EndToEndTransparentClockFlag, m_endToEndTransparentClock)
    FAKE_NODE_FIELD(bool, bool, ManagementNodeFlag, m_managementNode)

    // The clock description beyond its flags is not the fake's concern.
    nOrvPTP000::tPTPText getPhysicalLayerProtocol(u16) override { return {}; }
    void setPhysicalLayerProtocol(u16, const nOrvPTP000::tPTPText&, tStatus&, i32) override {}
    u16 getPhysicalAddress(u16, u8*, tStatus&) override { return 0; }
    void setPhysicalAddress(u16, const u8*, u16, tStatus&, i32) override {}
    u16 getPhysicalAddressLength(u16) override { return 0; }
    nOrvPTP000::tPortAddress getProtocolAddress(u16) override { return {}; }
    void setProtocolAddress(u16, const nOrvPTP000::tPortAddress&, tStatus&, i32) override {}
    void getManufacturerIdentity(u8*, tStatus&) override {}
    void setManufacturerIdentity(const u8*, tStatus&, i32) override {}
    nOrvPTP000::tPTPText getProductDescription() override { return {}; }
    void setProductDescription(const nOrvPTP000::tPTPText&, tStatus&, i32) override {}
    nOrvPTP000::tPTPText getRevisionData() override { return {}; }
    void setRevisionData(const nOrvPTP000::tPTPText&, tStatus&, i32) override {}
    nOrvPTP000::tPTPText getUserDescription() override { return {}; }
    void setUserDescription(const nOrvPTP000::tPTPText&, tStatus&, i32) override {}
    void getProfileIdentity(u16, u8*, tStatus&) override {}
    void setProfileIdentity(u16, const u8*, tStatus&, i32) override {}

    u32 getAnnounceIntervalMs() override
    {
        return logIntervalToMilliseconds(m_logAnnounceInterval);
    }
    u32 getSyncIntervalMs() override { return logIntervalToMilliseconds(m_logSyncInterval); }

    nOrvPTP000::tForeignMasterDS* getForeignMasterDS(u16) override { return m_pForeignMasterDS; }
    nOrvPTP000::tPTPDispatcher* getDispatcher() override { return nullptr; }
    nOrvPTP000::tTimedEventGenerator* getTimedEventGenerator() override { return nullptr; }

    void getCurrentTime(nOrvPTP000::tTimestamp&, tStatus&) override {}
    void setCurrentTime(const nOrvPTP000::tTimestamp&, tStatus&, i32) override {}
    void handlePacketReceived(std::unique_ptr<nOrvPTP000::tProtocolDataUnit>, tStatus&) override {}

    void handleStateDecisionEvent(tStatus&) override {}
    void handleInitialAnnounceTimeout(tStatus&) override {}
    void handleSendAnnouncePacket(tStatus&) override {}
    void handleSendSyncPacket(tStatus&) override {}
    void handleDelayRequestTimer(tStatus&) override {}
    void handleMasterClockSelectedCheck(tStatus&) override {}
    void handleStartClock(nOrvTarn000::tEvent*, tStatus*) override {}
    void handleStopClock(nOrvTarn000::tEvent*, tStatus*) override {}
    void handleInitializedCheck(tStatus&) override {}
    void handleDesignatedDisabled(u16, tStatus&) override {}
    void handleInitializePort(u16, tStatus&) override {}
    void handleSyncFault(tStatus&) override {}
    void handleFaultCleared(tStatus&) override {}
    void handleFaultDetected(tStatus&) override {}
    void handleDesignatedEnabled(u16, tStatus&) override {}
    void handleNetworkError(tStatus&) override {}
    void handleNetworkRecovery(tStatus&) override {}

    void getProperty(i32, void**, u16, nOrvTarn000::tEvent*, tStatus*) override {}
    void setProperty(i32, void**, u16, nOrvTarn000::tEvent*, tStatus*) override {}
    void notifyPortStateChange(i32, i32) override {}

    bool designatePortDisabled(tStatus&) override { return false; }
    bool designatePortEnabled(tStatus&) override { return false; }
    bool signalFaultDetected(tStatus&) override { return false; }
    bool signalFaultCleared(tStatus&) override { return false; }
    bool signalSyncFault(tStatus&) override { return false; }
    bool initializePort(tStatus&) override { return false; }

    void handleForeignMasterAnnounceTimeout(const tPortIdentity&, tStatus&) override {}

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override
    {
        return a_trace.write("tFakeNode");
    }

    bool m_twoStepFlag = true;
    tClockIdentity m_clockIdentity;
    u16 m_numberPorts = 1;
    u8 m_clockClass = tClockQuality::kDefaultClockClass;
    u8 m_clockAccuracy = tClockQuality::kAccuracyUnknown;
    u16 m_offsetScaledLogVariance = tClockQuality::kDefaultOffsetScaledLogVariance;
    u8 m_priority1 = 128;
    u8 m_priority2 = 128;
    u8 m_domainNumber = 0;
    bool m_slaveOnly = false;

    u16 m_stepsRemoved = 0;
    tTimeInterval m_offsetFromMaster;
    tTimeInterval m_meanPathDelay;

    tPortIdentity m_parentPortIdentity;
    bool m_parentStats = false;
    u16 m_observedParentOffsetScaledLogVariance = 0xFFFF;
    i32 m_observedParentClockPhaseChangeRate = 0x7FFFFFFF;
    tClockIdentity m_grandmasterIdentity;
    tClockQuality m_grandmasterClockQuality;
    u8 m_grandmasterPriority1 = 128;
    u8 m_grandmasterPriority2 = 128;

    i16 m_currentUtcOffset = 34;
    bool m_currentUtcOffsetValid = false;
    bool m_leap59 = false;
    bool m_leap61 = false;
    bool m_timeTraceable = false;
    bool m_frequencyTraceable = false;
    bool m_ptpTimescale = true;
    u8 m_timeSource = 0xA0;

    u8 m_portState = nOrvPTP000::kPortStateListening;
    i8 m_logMinDelayReqInterval = 0;
    tTimeInterval m_peerMeanPathDelay;
    i8 m_logAnnounceInterval = 1;
    u8 m_announceReceiptTimeout = 3;
    i8 m_logSyncInterval = 0;
    u8 m_delayMechanism = 1;
    i8 m_logMinPdelayReqInterval = 0;
    u8 m_versionNumber = 2;
    bool m_ordinaryClock = true;
    bool m_boundaryClock = false;
    bool m_peerToPeerTransparentClock = false;
    bool m_endToEndTransparentClock = false;
    bool m_managementNode = false;

    nOrvPTP000::tForeignMasterDS* m_pForeignMasterDS = nullptr;

private:
    void setGrandmasterQuality(u8 a_class, u8 a_accuracy, u16 a_variance, tStatus& a_status)
    {
        if (a_status.isNotFatal())
        {
            m_grandmasterClockQuality = tClockQuality(a_class, a_accuracy, a_variance);
        }
    }
};

#undef FAKE_NODE_FIELD
#undef FAKE_NODE_PORT_FIELD

} // namespace nFakeNode
