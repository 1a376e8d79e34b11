#include "orvptp/TLVs/tManagementErrorStatusTLV.h"

#include "orvptp/TLVs/tManagementFields.h"
#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tManagementErrorStatusTLV::tManagementErrorStatusTLV()
    : tCloneable(kTlvTypeManagementErrorStatus), m_managementErrorId(kManagementErrorNotSupported),
      m_managementId(0), m_pad(false)
{
    tStatus status;
    m_pad = setLength(m_displayData.getSize() + kFixedValueLength, status, 2) != 0;
}

tManagementErrorStatusTLV::tManagementErrorStatusTLV(u16 a_managementId, u16 a_managementErrorId,
                                                     const char* a_displayData, tStatus& a_status)
    : tCloneable(kTlvTypeManagementErrorStatus), m_managementErrorId(a_managementErrorId),
      m_managementId(a_managementId), m_displayData(a_displayData, a_status), m_pad(false)
{
    m_pad = setLength(m_displayData.getSize() + kFixedValueLength, a_status, 2) != 0;
}

tManagementErrorStatusTLV::tManagementErrorStatusTLV(const tManagementErrorStatusTLV& a_other,
                                                     tStatus& a_status)
    : tCloneable(a_other), m_managementErrorId(a_other.m_managementErrorId),
      m_managementId(a_other.m_managementId), m_pad(a_other.m_pad)
{
    m_displayData.assign(a_other.m_displayData, a_status);
}

void tManagementErrorStatusTLV::setManagementId(u16 a_managementId, tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        m_managementId = a_managementId;
    }
}

tTrace& tManagementErrorStatusTLV::trace(tTrace& a_trace)
{
    tTLV::trace(a_trace);
    a_trace.writeFormatted("managementErrorId: %#.4x managementId: %#.4x displayData: ",
                           static_cast<unsigned>(m_managementErrorId),
                           static_cast<unsigned>(m_managementId));
    return a_trace.write(m_displayData).write("\n");
}

void tManagementErrorStatusTLV::serializeValue(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeEnumeration16(m_managementErrorId, a_status);
    a_target.writeEnumeration16(m_managementId, a_status);
    writeReserved(a_target, 4, a_status);
    m_displayData.serialize(a_target, a_status);
    if (m_pad)
    {
        a_target.writeOctet(0, a_status);
    }
}

void tManagementErrorStatusTLV::deserializeValue(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    a_target.readEnumeration16(m_managementErrorId, a_status);
    a_target.readEnumeration16(m_managementId, a_status);
    readReserved(a_target, 4, a_status);
    m_displayData.deserialize(a_target, a_status);
    m_pad = false;
    if (a_status.getCode() == nOrvTarn000::kStatusOutOfBounds)
    {
        a_status.clear();
    }
}

} // namespace nOrvPTP000
