#include "orvptp/TLVs/tTimeTLVs.h"

#include "orvptp/iPropertyChangeObserver.h"
#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

namespace
{

const i32 kManagement = iPropertyChangeObserver::kContextManagement;

} // namespace

// ---- TIME ----

tManagementReply tTimeTLV::handleGet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    a_node.getCurrentTime(m_currentTime, a_status);
    return itselfUnlessFailed(kFailureGetting, a_status);
}

tManagementReply tTimeTLV::handleSet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    if (a_node.getClockIdentity() != a_node.getGrandmasterIdentity())
    {
        return failure(kManagementErrorNotSupported, "Cannot set time on non-grandmaster clock",
                       a_status);
    }
    a_node.setCurrentTime(m_currentTime, a_status, kManagement);
    return itselfUnlessFailed(kFailureSetting, a_status);
}

tTrace& tTimeTLV::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    return a_trace.write("currentTime: ").write(m_currentTime).write("\n");
}

void tTimeTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    m_currentTime.deserialize(a_target, a_status);
}

void tTimeTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    m_currentTime.serialize(a_target, a_status);
}

// ---- UTC_PROPERTIES ----

tManagementReply tUTCPropertiesTLV::handleGet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_currentUtcOffset = a_node.getCurrentUtcOffset();
    m_flags = static_cast<u8>(flagIf(a_node.getCurrentUtcOffsetValid(), kUtcOffsetValidBit) |
                              flagIf(a_node.getLeap59(), kLeap59Bit) |
                              flagIf(a_node.getLeap61(), kLeap61Bit));
    return itselfUnlessFailed(kFailureGetting, a_status);
}

tManagementReply tUTCPropertiesTLV::handleSet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    a_node.setCurrentUtcOffset(m_currentUtcOffset, a_status, kManagement);
    a_node.setCurrentUtcOffsetValid(hasFlag(m_flags, kUtcOffsetValidBit), a_status, kManagement);
    a_node.setLeap59(hasFlag(m_flags, kLeap59Bit), a_status, kManagement);
    a_node.setLeap61(hasFlag(m_flags, kLeap61Bit), a_status, kManagement);
    return itselfUnlessFailed(kFailureSetting, a_status);
}

tTrace& tUTCPropertiesTLV::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    a_trace.writeFormatted("currentUtcOffset: %d ", static_cast<int>(m_currentUtcOffset));
    a_trace.write("UTCV: ").write(hasFlag(m_flags, kUtcOffsetValidBit));
    a_trace.write(" LI59: ").write(hasFlag(m_flags, kLeap59Bit));
    return a_trace.write(" LI61: ").write(hasFlag(m_flags, kLeap61Bit)).write("\n");
}

void tUTCPropertiesTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.readInteger16(m_currentUtcOffset, a_status);
    m_flags = readFlags(a_target, a_status) & 0x07;
    readReserved(a_target, 1, a_status);
}

void tUTCPropertiesTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeInteger16(m_currentUtcOffset, a_status);
    writeFlags(a_target, m_flags, a_status);
    writeReserved(a_target, 1, a_status);
}

// ---- TRACEABILITY_PROPERTIES ----

tManagementReply tTraceabilityPropertiesTLV::handleGet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_flags = static_cast<u8>(flagIf(a_node.getTimeTraceable(), kTimeTraceableBit) |
                              flagIf(a_node.getFrequencyTraceable(), kFrequencyTraceableBit));
    return itselfUnlessFailed(kFailureGetting, a_status);
}

tManagementReply tTraceabilityPropertiesTLV::handleSet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    a_node.setTimeTraceable(hasFlag(m_flags, kTimeTraceableBit), a_status, kManagement);
    a_node.setFrequencyTraceable(hasFlag(m_flags, kFrequencyTraceableBit), a_status, kManagement);
    return itselfUnlessFailed(kFailureSetting, a_status);
}

tTrace& tTraceabilityPropertiesTLV::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    a_trace.write("FTRA: ").write(hasFlag(m_flags, kFrequencyTraceableBit));
    return a_trace.write(" TTRA: ").write(hasFlag(m_flags, kTimeTraceableBit)).write("\n");
}

void tTraceabilityPropertiesTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    m_flags = readFlags(a_target, a_status) & 0x30;
    readReserved(a_target, 1, a_status);
}

void tTraceabilityPropertiesTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    writeFlags(a_target, m_flags, a_status);
    writeReserved(a_target, 1, a_status);
}

// ---- TIMESCALE_PROPERTIES ----

tManagementReply tTimescalePropertiesTLV::handleGet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_flags = flagIf(a_node.getPtpTimescale(), kPtpTimescaleBit);
    m_timeSource = a_node.getTimeSource();
    return itselfUnlessFailed(kFailureGetting, a_status);
}

tManagementReply tTimescalePropertiesTLV::handleSet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    const bool known = isTimeSource(m_timeSource);
    if (known)
    {
        a_node.setTimeSource(m_timeSource, a_status, kManagement);
    }
    a_node.setPtpTimescale(hasFlag(m_flags, kPtpTimescaleBit), a_status, kManagement);
    if (!known)
    {
        return failure(kManagementErrorWrongValue, "Unknown timeSource value", a_status);
    }
    return itselfUnlessFailed(kFailureSetting, a_status);
}

tTrace& tTimescalePropertiesTLV::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    a_trace.write("PTP: ").write(hasFlag(m_flags, kPtpTimescaleBit));
    return a_trace.writeFormatted(" timeSource: %u\n", static_cast<unsigned>(m_timeSource));
}

void tTimescalePropertiesTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    m_flags = readFlags(a_target, a_status) & 0x08;
    a_target.readEnumeration8(m_timeSource, a_status);
}

void tTimescalePropertiesTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    writeFlags(a_target, m_flags, a_status);
    a_target.writeEnumeration8(m_timeSource, a_status);
}

} // namespace nOrvPTP000
