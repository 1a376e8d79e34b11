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

tDefaultDataSetTLV::tDefaultDataSetTLV() : tCloneable(nManagementId::DEFAULT_DATA_SET), m_values()
{
}

tManagementReply tDefaultDataSetTLV::handleGet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_values.m_slaveOnly = a_node.getSlaveOnly();
    m_values.m_twoStepFlag = a_node.getTwoStepFlag();
    m_values.m_numberPorts = a_node.getNumberPorts();
    m_values.m_priority1 = a_node.getPriority1();
    m_values.m_priority2 = a_node.getPriority2();
    m_values.m_domainNumber = a_node.getDomainNumber();
    m_values.m_clockQuality = a_node.getClockQuality();
    m_values.m_clockIdentity = a_node.getClockIdentity();
    return itselfUnlessFailed(kFailureGetting, a_status);
}

void tDefaultDataSetTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    const u8 flags = readFlags(a_target, a_status);
    m_values.m_slaveOnly = hasFlag(flags, kSlaveOnlyBit);
    m_values.m_twoStepFlag = hasFlag(flags, kTwoStepBit);
    readReserved(a_target, 1, a_status);
    a_target.readUInteger16(m_values.m_numberPorts, a_status);
    a_target.readUInteger8(m_values.m_priority1, a_status);
    m_values.m_clockQuality.deserialize(a_target, a_status);
    a_target.readUInteger8(m_values.m_priority2, a_status);
    m_values.m_clockIdentity.deserialize(a_target, a_status);
    a_target.readUInteger8(m_values.m_domainNumber, a_status);
    readReserved(a_target, 1, a_status);
}

void tDefaultDataSetTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    writeFlags(a_target,
               static_cast<u8>(flagIf(m_values.m_slaveOnly, kSlaveOnlyBit) |
                               flagIf(m_values.m_twoStepFlag, kTwoStepBit)),
               a_status);
    writeReserved(a_target, 1, a_status);
    a_target.writeUInteger16(m_values.m_numberPorts, a_status);
    a_target.writeUInteger8(m_values.m_priority1, a_status);
    m_values.m_clockQuality.serialize(a_target, a_status);
    a_target.writeUInteger8(m_values.m_priority2, a_status);
    m_values.m_clockIdentity.serialize(a_target, a_status);
    a_target.writeUInteger8(m_values.m_domainNumber, a_status);
    writeReserved(a_target, 1, a_status);
}

// ---- CURRENT_DATA_SET ----

tCurrentDataSetTLV::tCurrentDataSetTLV() : tCloneable(nManagementId::CURRENT_DATA_SET), m_values()
{
}

tManagementReply tCurrentDataSetTLV::handleGet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_values.m_stepsRemoved = a_node.getStepsRemoved();
    m_values.m_offsetFromMaster = a_node.getOffsetFromMaster();
    m_values.m_meanPathDelay = a_node.getMeanPathDelay();
    return itselfUnlessFailed(kFailureGetting, a_status);
}

tTrace& tCurrentDataSetTLV::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    a_trace.writeFormatted("stepsRemoved: %u", static_cast<unsigned>(m_values.m_stepsRemoved));
    traceLabelled(a_trace, " offsetFromMaster", m_values.m_offsetFromMaster);
    return traceLabelled(a_trace, " meanPathDelay", m_values.m_meanPathDelay).write("\n");
}

void tCurrentDataSetTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.readUInteger16(m_values.m_stepsRemoved, a_status);
    m_values.m_offsetFromMaster.deserialize(a_target, a_status);
    m_values.m_meanPathDelay.deserialize(a_target, a_status);
}

void tCurrentDataSetTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeUInteger16(m_values.m_stepsRemoved, a_status);
    m_values.m_offsetFromMaster.serialize(a_target, a_status);
    m_values.m_meanPathDelay.serialize(a_target, a_status);
}

// ---- PARENT_DATA_SET ----

tParentDataSetTLV::tParentDataSetTLV() : tCloneable(nManagementId::PARENT_DATA_SET), m_values() {}

tManagementReply tParentDataSetTLV::handleGet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_values.m_parentPortIdentity = a_node.getParentPortIdentity();
    m_values.m_parentStats = a_node.getParentStats();
    m_values.m_observedParentOffsetScaledLogVariance =
        a_node.getObservedParentOffsetScaledLogVariance();
    m_values.m_observedParentClockPhaseChangeRate = a_node.getObservedParentClockPhaseChangeRate();
    m_values.m_grandmasterPriority1 = a_node.getGrandmasterPriority1();
    m_values.m_grandmasterPriority2 = a_node.getGrandmasterPriority2();
    m_values.m_grandmasterIdentity = a_node.getGrandmasterIdentity();
    m_values.m_grandmasterClockQuality = a_node.getGrandmasterClockQuality();
    return itselfUnlessFailed(kFailureGetting, a_status);
}

tTrace& tParentDataSetTLV::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    traceLabelled(a_trace, "parent port identity", m_values.m_parentPortIdentity);
    a_trace.write("PS: ").write(m_values.m_parentStats);
    a_trace.writeFormatted(" observedParentOffsetScaledLogVariance: %u",
                           static_cast<unsigned>(m_values.m_observedParentOffsetScaledLogVariance));
    a_trace.writeFormatted(" observedParentClockPhaseChangeRate: %d",
                           static_cast<int>(m_values.m_observedParentClockPhaseChangeRate));
    a_trace.writeFormatted(" grandmasterPriority1: %u ",
                           static_cast<unsigned>(m_values.m_grandmasterPriority1));
    traceLabelled(a_trace, "grandmasterIdentity", m_values.m_grandmasterIdentity);
    a_trace.writeFormatted(" grandmasterPriority2: %u ",
                           static_cast<unsigned>(m_values.m_grandmasterPriority2));
    return traceLabelled(a_trace, "grandmasterClockQuality", m_values.m_grandmasterClockQuality)
        .write("\n");
}

void tParentDataSetTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    m_values.m_parentPortIdentity.deserialize(a_target, a_status);
    m_values.m_parentStats = hasFlag(readFlags(a_target, a_status), kParentStatsBit);
    readReserved(a_target, 1, a_status);
    a_target.readUInteger16(m_values.m_observedParentOffsetScaledLogVariance, a_status);
    a_target.readInteger32(m_values.m_observedParentClockPhaseChangeRate, a_status);
    a_target.readUInteger8(m_values.m_grandmasterPriority1, a_status);
    m_values.m_grandmasterClockQuality.deserialize(a_target, a_status);
    a_target.readUInteger8(m_values.m_grandmasterPriority2, a_status);
    m_values.m_grandmasterIdentity.deserialize(a_target, a_status);
}

void tParentDataSetTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    m_values.m_parentPortIdentity.serialize(a_target, a_status);
    writeFlags(a_target, flagIf(m_values.m_parentStats, kParentStatsBit), a_status);
    writeReserved(a_target, 1, a_status);
    a_target.writeUInteger16(m_values.m_observedParentOffsetScaledLogVariance, a_status);
    a_target.writeInteger32(m_values.m_observedParentClockPhaseChangeRate, a_status);
    a_target.writeUInteger8(m_values.m_grandmasterPriority1, a_status);
    m_values.m_grandmasterClockQuality.serialize(a_target, a_status);
    a_target.writeUInteger8(m_values.m_grandmasterPriority2, a_status);
    m_values.m_grandmasterIdentity.serialize(a_target, a_status);
}

// ---- TIME_PROPERTIES_DATA_SET ----

tTimePropertiesDataSetTLV::tTimePropertiesDataSetTLV()
    : tCloneable(nManagementId::TIME_PROPERTIES_DATA_SET), m_values()
{
}

tManagementReply tTimePropertiesDataSetTLV::handleGet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_values.m_currentUtcOffset = a_node.getCurrentUtcOffset();
    m_values.m_leap61 = a_node.getLeap61();
    m_values.m_leap59 = a_node.getLeap59();
    m_values.m_currentUtcOffsetValid = a_node.getCurrentUtcOffsetValid();
    m_values.m_ptpTimescale = a_node.getPtpTimescale();
    m_values.m_timeTraceable = a_node.getTimeTraceable();
    m_values.m_frequencyTraceable = a_node.getFrequencyTraceable();
    m_values.m_timeSource = a_node.getTimeSource();
    return itselfUnlessFailed(kFailureGetting, a_status);
}

tTrace& tTimePropertiesDataSetTLV::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    a_trace.writeFormatted("currentUtcOffset: %d", static_cast<int>(m_values.m_currentUtcOffset));
    a_trace.write(" UTCV: ").write(m_values.m_currentUtcOffsetValid);
    a_trace.write(" LI59: ").write(m_values.m_leap59);
    return a_trace.write(" LI61: ").write(m_values.m_leap61).write("\n");
}

void tTimePropertiesDataSetTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.readInteger16(m_values.m_currentUtcOffset, a_status);
    const u8 flags = readFlags(a_target, a_status);
    m_values.m_frequencyTraceable = hasFlag(flags, kFrequencyTraceableBit);
    m_values.m_timeTraceable = hasFlag(flags, kTimeTraceableBit);
    m_values.m_ptpTimescale = hasFlag(flags, kPtpTimescaleBit);
    m_values.m_currentUtcOffsetValid = hasFlag(flags, kUtcOffsetValidBit);
    m_values.m_leap59 = hasFlag(flags, kLeap59Bit);
    m_values.m_leap61 = hasFlag(flags, kLeap61Bit);
    a_target.readEnumeration8(m_values.m_timeSource, a_status);
}

void tTimePropertiesDataSetTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeInteger16(m_values.m_currentUtcOffset, a_status);
    writeFlags(a_target,
               static_cast<u8>(flagIf(m_values.m_frequencyTraceable, kFrequencyTraceableBit) |
                               flagIf(m_values.m_timeTraceable, kTimeTraceableBit) |
                               flagIf(m_values.m_ptpTimescale, kPtpTimescaleBit) |
                               flagIf(m_values.m_currentUtcOffsetValid, kUtcOffsetValidBit) |
                               flagIf(m_values.m_leap59, kLeap59Bit) |
                               flagIf(m_values.m_leap61, kLeap61Bit)),
               a_status);
    a_target.writeEnumeration8(m_values.m_timeSource, a_status);
}

// ---- PORT_DATA_SET ----

tPortDataSetTLV::tPortDataSetTLV() : tCloneable(nManagementId::PORT_DATA_SET), m_values() {}

tManagementReply tPortDataSetTLV::handleGet(iPTPNode& a_node, u16 a_portNumber, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_values.m_portIdentity = tPortIdentity(a_node.getClockIdentity(), a_portNumber);
    m_values.m_portState = a_node.getPortState(a_portNumber, a_status);
    m_values.m_logMinDelayReqInterval = a_node.getLogMinDelayReqInterval(a_portNumber, a_status);
    m_values.m_peerMeanPathDelay = a_node.getPeerMeanPathDelay(a_portNumber, a_status);
    m_values.m_logAnnounceInterval = a_node.getLogAnnounceInterval(a_portNumber, a_status);
    m_values.m_announceReceiptTimeout = a_node.getAnnounceReceiptTimeout(a_portNumber, a_status);
    m_values.m_logSyncInterval = a_node.getLogSyncInterval(a_portNumber, a_status);
    m_values.m_delayMechanism = a_node.getDelayMechanism(a_portNumber, a_status);
    m_values.m_logMinPdelayReqInterval = a_node.getLogMinPdelayReqInterval(a_portNumber, a_status);
    m_values.m_versionNumber = a_node.getVersionNumber(a_portNumber, a_status);
    return itselfUnlessFailed(kFailureGetting, a_status);
}

tTrace& tPortDataSetTLV::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    traceLabelled(a_trace, "portIdentity", m_values.m_portIdentity);
    a_trace.writeFormatted(" portState: %u", static_cast<unsigned>(m_values.m_portState));
    a_trace.writeFormatted(" logMinDelayReqInterval: %d",
                           static_cast<int>(m_values.m_logMinDelayReqInterval));
    traceLabelled(a_trace, " peerMeanPathDelay", m_values.m_peerMeanPathDelay);
    a_trace.writeFormatted(" logAnnounceInterval: %d",
                           static_cast<int>(m_values.m_logAnnounceInterval));
    a_trace.writeFormatted(" announceReceiptTimeout: %u",
                           static_cast<unsigned>(m_values.m_announceReceiptTimeout));
    a_trace.writeFormatted(" logSyncInterval: %d", static_cast<int>(m_values.m_logSyncInterval));
    a_trace.writeFormatted(" delayMechanism: %u", static_cast<unsigned>(m_values.m_delayMechanism));
    a_trace.writeFormatted(" logMinPdelayReqInterval: %d",
                           static_cast<int>(m_values.m_logMinPdelayReqInterval));
    return a_trace.writeFormatted(" versionNumber: %u\n",
                                  static_cast<unsigned>(m_values.m_versionNumber));
}

void tPortDataSetTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    u8 reserved = 0;
    m_values.m_portIdentity.deserialize(a_target, a_status);
    a_target.readEnumeration8(m_values.m_portState, a_status);
    a_target.readInteger8(m_values.m_logMinDelayReqInterval, a_status);
    m_values.m_peerMeanPathDelay.deserialize(a_target, a_status);
    a_target.readInteger8(m_values.m_logAnnounceInterval, a_status);
    a_target.readUInteger8(m_values.m_announceReceiptTimeout, a_status);
    a_target.readInteger8(m_values.m_logSyncInterval, a_status);
    a_target.readEnumeration8(m_values.m_delayMechanism, a_status);
    a_target.readInteger8(m_values.m_logMinPdelayReqInterval, a_status);
    a_target.readNibble(reserved, a_status);
    a_target.readUInteger4(m_values.m_versionNumber, a_status);
}

void tPortDataSetTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    m_values.m_portIdentity.serialize(a_target, a_status);
    a_target.writeEnumeration8(m_values.m_portState, a_status);
    a_target.writeInteger8(m_values.m_logMinDelayReqInterval, a_status);
    m_values.m_peerMeanPathDelay.serialize(a_target, a_status);
    a_target.writeInteger8(m_values.m_logAnnounceInterval, a_status);
    a_target.writeUInteger8(m_values.m_announceReceiptTimeout, a_status);
    a_target.writeInteger8(m_values.m_logSyncInterval, a_status);
    a_target.writeEnumeration8(m_values.m_delayMechanism, a_status);
    a_target.writeInteger8(m_values.m_logMinPdelayReqInterval, a_status);
    a_target.writeNibble(0, a_status);
    a_target.writeUInteger4(m_values.m_versionNumber, a_status);
}

} // namespace nOrvPTP000
