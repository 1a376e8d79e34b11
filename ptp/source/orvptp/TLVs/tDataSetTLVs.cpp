#include "orvptp/TLVs/tDataSetTLVs.h"

#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

namespace
{

// Flag bits of the data fields.
enum : u8
{
    kSlaveOnlyBit = 1,
    kTwoStepBit = 0,
    kParentStatsBit = 0
};

} // namespace

// ---- DEFAULT_DATA_SET ----

tDefaultDataSetTLV::tDefaultDataSetTLV()
    : tManagementTLV(nManagementId::DEFAULT_DATA_SET), m_slaveOnly(false), m_twoStepFlag(false),
      m_numberPorts(0), m_priority1(0), m_priority2(0), m_domainNumber(0)
{
}

tManagementReply tDefaultDataSetTLV::handleGet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_slaveOnly = a_node.getSlaveOnly();
    m_twoStepFlag = a_node.getTwoStepFlag();
    m_numberPorts = a_node.getNumberPorts();
    m_priority1 = a_node.getPriority1();
    m_priority2 = a_node.getPriority2();
    m_domainNumber = a_node.getDomainNumber();
    m_clockQuality = a_node.getClockQuality();
    m_clockIdentity = a_node.getClockIdentity();
    return itselfUnlessFailed(kFailureGetting, a_status);
}

std::unique_ptr<tTLV> tDefaultDataSetTLV::clone(tStatus& a_status) const
{
    return cloneOf(*this, a_status);
}

void tDefaultDataSetTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    const u8 flags = readFlags(a_target, a_status);
    m_slaveOnly = hasFlag(flags, kSlaveOnlyBit);
    m_twoStepFlag = hasFlag(flags, kTwoStepBit);
    readReserved(a_target, 1, a_status);
    a_target.readUInteger16(m_numberPorts, a_status);
    a_target.readUInteger8(m_priority1, a_status);
    m_clockQuality.deserialize(a_target, a_status);
    a_target.readUInteger8(m_priority2, a_status);
    m_clockIdentity.deserialize(a_target, a_status);
    a_target.readUInteger8(m_domainNumber, a_status);
    readReserved(a_target, 1, a_status);
}

void tDefaultDataSetTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    writeFlags(
        a_target,
        static_cast<u8>(flagIf(m_slaveOnly, kSlaveOnlyBit) | flagIf(m_twoStepFlag, kTwoStepBit)),
        a_status);
    writeReserved(a_target, 1, a_status);
    a_target.writeUInteger16(m_numberPorts, a_status);
    a_target.writeUInteger8(m_priority1, a_status);
    m_clockQuality.serialize(a_target, a_status);
    a_target.writeUInteger8(m_priority2, a_status);
    m_clockIdentity.serialize(a_target, a_status);
    a_target.writeUInteger8(m_domainNumber, a_status);
    writeReserved(a_target, 1, a_status);
}

// ---- CURRENT_DATA_SET ----

tCurrentDataSetTLV::tCurrentDataSetTLV()
    : tManagementTLV(nManagementId::CURRENT_DATA_SET), m_stepsRemoved(0)
{
}

tManagementReply tCurrentDataSetTLV::handleGet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_stepsRemoved = a_node.getStepsRemoved();
    m_offsetFromMaster = a_node.getOffsetFromMaster();
    m_meanPathDelay = a_node.getMeanPathDelay();
    return itselfUnlessFailed(kFailureGetting, a_status);
}

tTrace& tCurrentDataSetTLV::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    a_trace.writeFormatted("stepsRemoved: %u", static_cast<unsigned>(m_stepsRemoved));
    traceLabelled(a_trace, " offsetFromMaster", m_offsetFromMaster);
    return traceLabelled(a_trace, " meanPathDelay", m_meanPathDelay).write("\n");
}

std::unique_ptr<tTLV> tCurrentDataSetTLV::clone(tStatus& a_status) const
{
    return cloneOf(*this, a_status);
}

void tCurrentDataSetTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.readUInteger16(m_stepsRemoved, a_status);
    m_offsetFromMaster.deserialize(a_target, a_status);
    m_meanPathDelay.deserialize(a_target, a_status);
}

void tCurrentDataSetTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeUInteger16(m_stepsRemoved, a_status);
    m_offsetFromMaster.serialize(a_target, a_status);
    m_meanPathDelay.serialize(a_target, a_status);
}

// ---- PARENT_DATA_SET ----

tParentDataSetTLV::tParentDataSetTLV()
    : tManagementTLV(nManagementId::PARENT_DATA_SET), m_parentStats(false),
      m_observedParentOffsetScaledLogVariance(0), m_observedParentClockPhaseChangeRate(0),
      m_grandmasterPriority1(0), m_grandmasterPriority2(0)
{
}

tManagementReply tParentDataSetTLV::handleGet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_parentPortIdentity = a_node.getParentPortIdentity();
    m_parentStats = a_node.getParentStats();
    m_observedParentOffsetScaledLogVariance = a_node.getObservedParentOffsetScaledLogVariance();
    m_observedParentClockPhaseChangeRate = a_node.getObservedParentClockPhaseChangeRate();
    m_grandmasterPriority1 = a_node.getGrandmasterPriority1();
    m_grandmasterPriority2 = a_node.getGrandmasterPriority2();
    m_grandmasterIdentity = a_node.getGrandmasterIdentity();
    m_grandmasterClockQuality = a_node.getGrandmasterClockQuality();
    return itselfUnlessFailed(kFailureGetting, a_status);
}

tTrace& tParentDataSetTLV::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    traceLabelled(a_trace, "parent port identity", m_parentPortIdentity);
    a_trace.write("PS: ").write(m_parentStats);
    a_trace.writeFormatted(" observedParentOffsetScaledLogVariance: %u",
                           static_cast<unsigned>(m_observedParentOffsetScaledLogVariance));
    a_trace.writeFormatted(" observedParentClockPhaseChangeRate: %d",
                           static_cast<int>(m_observedParentClockPhaseChangeRate));
    a_trace.writeFormatted(" grandmasterPriority1: %u ",
                           static_cast<unsigned>(m_grandmasterPriority1));
    traceLabelled(a_trace, "grandmasterIdentity", m_grandmasterIdentity);
    a_trace.writeFormatted(" grandmasterPriority2: %u ",
                           static_cast<unsigned>(m_grandmasterPriority2));
    return traceLabelled(a_trace, "grandmasterClockQuality", m_grandmasterClockQuality).write("\n");
}

std::unique_ptr<tTLV> tParentDataSetTLV::clone(tStatus& a_status) const
{
    return cloneOf(*this, a_status);
}

void tParentDataSetTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    m_parentPortIdentity.deserialize(a_target, a_status);
    m_parentStats = hasFlag(readFlags(a_target, a_status), kParentStatsBit);
    readReserved(a_target, 1, a_status);
    a_target.readUInteger16(m_observedParentOffsetScaledLogVariance, a_status);
    a_target.readInteger32(m_observedParentClockPhaseChangeRate, a_status);
    a_target.readUInteger8(m_grandmasterPriority1, a_status);
    m_grandmasterClockQuality.deserialize(a_target, a_status);
    a_target.readUInteger8(m_grandmasterPriority2, a_status);
    m_grandmasterIdentity.deserialize(a_target, a_status);
}

void tParentDataSetTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    m_parentPortIdentity.serialize(a_target, a_status);
    writeFlags(a_target, flagIf(m_parentStats, kParentStatsBit), a_status);
    writeReserved(a_target, 1, a_status);
    a_target.writeUInteger16(m_observedParentOffsetScaledLogVariance, a_status);
    a_target.writeInteger32(m_observedParentClockPhaseChangeRate, a_status);
    a_target.writeUInteger8(m_grandmasterPriority1, a_status);
    m_grandmasterClockQuality.serialize(a_target, a_status);
    a_target.writeUInteger8(m_grandmasterPriority2, a_status);
    m_grandmasterIdentity.serialize(a_target, a_status);
}

// ---- TIME_PROPERTIES_DATA_SET ----

tTimePropertiesDataSetTLV::tTimePropertiesDataSetTLV()
    : tManagementTLV(nManagementId::TIME_PROPERTIES_DATA_SET), m_currentUtcOffset(0), m_flags(0),
      m_timeSource(0)
{
}

tManagementReply tTimePropertiesDataSetTLV::handleGet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_currentUtcOffset = a_node.getCurrentUtcOffset();
    m_flags = static_cast<u8>(flagIf(a_node.getLeap61(), kLeap61Bit) |
                              flagIf(a_node.getLeap59(), kLeap59Bit) |
                              flagIf(a_node.getCurrentUtcOffsetValid(), kUtcOffsetValidBit) |
                              flagIf(a_node.getPtpTimescale(), kPtpTimescaleBit) |
                              flagIf(a_node.getTimeTraceable(), kTimeTraceableBit) |
                              flagIf(a_node.getFrequencyTraceable(), kFrequencyTraceableBit));
    m_timeSource = a_node.getTimeSource();
    return itselfUnlessFailed(kFailureGetting, a_status);
}

tTrace& tTimePropertiesDataSetTLV::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    a_trace.writeFormatted("currentUtcOffset: %d", static_cast<int>(m_currentUtcOffset));
    a_trace.write(" UTCV: ").write(hasFlag(m_flags, kUtcOffsetValidBit));
    a_trace.write(" LI59: ").write(hasFlag(m_flags, kLeap59Bit));
    return a_trace.write(" LI61: ").write(hasFlag(m_flags, kLeap61Bit)).write("\n");
}

std::unique_ptr<tTLV> tTimePropertiesDataSetTLV::clone(tStatus& a_status) const
{
    return cloneOf(*this, a_status);
}

void tTimePropertiesDataSetTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.readInteger16(m_currentUtcOffset, a_status);
    // Bits 7 and 6 are reserved.
    m_flags = readFlags(a_target, a_status) & 0x3F;
    a_target.readEnumeration8(m_timeSource, a_status);
}

void tTimePropertiesDataSetTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeInteger16(m_currentUtcOffset, a_status);
    writeFlags(a_target, m_flags, a_status);
    a_target.writeEnumeration8(m_timeSource, a_status);
}

// ---- PORT_DATA_SET ----

tPortDataSetTLV::tPortDataSetTLV()
    : tManagementTLV(nManagementId::PORT_DATA_SET), m_portState(0), m_logMinDelayReqInterval(0),
      m_logAnnounceInterval(0), m_announceReceiptTimeout(0), m_logSyncInterval(0),
      m_delayMechanism(0), m_logMinPdelayReqInterval(0), m_versionNumber(0)
{
}

tManagementReply tPortDataSetTLV::handleGet(iPTPNode& a_node, u16 a_portNumber, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_portIdentity = tPortIdentity(a_node.getClockIdentity(), a_portNumber);
    m_portState = a_node.getPortState(a_portNumber, a_status);
    m_logMinDelayReqInterval = a_node.getLogMinDelayReqInterval(a_portNumber, a_status);
    m_peerMeanPathDelay = a_node.getPeerMeanPathDelay(a_portNumber, a_status);
    m_logAnnounceInterval = a_node.getLogAnnounceInterval(a_portNumber, a_status);
    m_announceReceiptTimeout = a_node.getAnnounceReceiptTimeout(a_portNumber, a_status);
    m_logSyncInterval = a_node.getLogSyncInterval(a_portNumber, a_status);
    m_delayMechanism = a_node.getDelayMechanism(a_portNumber, a_status);
    m_logMinPdelayReqInterval = a_node.getLogMinPdelayReqInterval(a_portNumber, a_status);
    m_versionNumber = a_node.getVersionNumber(a_portNumber, a_status);
    return itselfUnlessFailed(kFailureGetting, a_status);
}

tTrace& tPortDataSetTLV::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    traceLabelled(a_trace, "portIdentity", m_portIdentity);
    a_trace.writeFormatted(" portState: %u", static_cast<unsigned>(m_portState));
    a_trace.writeFormatted(" logMinDelayReqInterval: %d",
                           static_cast<int>(m_logMinDelayReqInterval));
    traceLabelled(a_trace, " peerMeanPathDelay", m_peerMeanPathDelay);
    a_trace.writeFormatted(" logAnnounceInterval: %d", static_cast<int>(m_logAnnounceInterval));
    a_trace.writeFormatted(" announceReceiptTimeout: %u",
                           static_cast<unsigned>(m_announceReceiptTimeout));
    a_trace.writeFormatted(" logSyncInterval: %d", static_cast<int>(m_logSyncInterval));
    a_trace.writeFormatted(" delayMechanism: %u", static_cast<unsigned>(m_delayMechanism));
    a_trace.writeFormatted(" logMinPdelayReqInterval: %d",
                           static_cast<int>(m_logMinPdelayReqInterval));
    return a_trace.writeFormatted(" versionNumber: %u\n", static_cast<unsigned>(m_versionNumber));
}

std::unique_ptr<tTLV> tPortDataSetTLV::clone(tStatus& a_status) const
{
    return cloneOf(*this, a_status);
}

void tPortDataSetTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    u8 reserved = 0;
    m_portIdentity.deserialize(a_target, a_status);
    a_target.readEnumeration8(m_portState, a_status);
    a_target.readInteger8(m_logMinDelayReqInterval, a_status);
    m_peerMeanPathDelay.deserialize(a_target, a_status);
    a_target.readInteger8(m_logAnnounceInterval, a_status);
    a_target.readUInteger8(m_announceReceiptTimeout, a_status);
    a_target.readInteger8(m_logSyncInterval, a_status);
    a_target.readEnumeration8(m_delayMechanism, a_status);
    a_target.readInteger8(m_logMinPdelayReqInterval, a_status);
    a_target.readNibble(reserved, a_status);
    a_target.readUInteger4(m_versionNumber, a_status);
}

void tPortDataSetTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    m_portIdentity.serialize(a_target, a_status);
    a_target.writeEnumeration8(m_portState, a_status);
    a_target.writeInteger8(m_logMinDelayReqInterval, a_status);
    m_peerMeanPathDelay.serialize(a_target, a_status);
    a_target.writeInteger8(m_logAnnounceInterval, a_status);
    a_target.writeUInteger8(m_announceReceiptTimeout, a_status);
    a_target.writeInteger8(m_logSyncInterval, a_status);
    a_target.writeEnumeration8(m_delayMechanism, a_status);
    a_target.writeInteger8(m_logMinPdelayReqInterval, a_status);
    a_target.writeNibble(0, a_status);
    a_target.writeUInteger4(m_versionNumber, a_status);
}

} // namespace nOrvPTP000
