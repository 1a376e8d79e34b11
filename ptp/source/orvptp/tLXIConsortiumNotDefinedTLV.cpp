#include "orvptp/tLXIConsortiumNotDefinedTLV.h"

#include "orvptp/tOrganizationIdentifiers.h"
#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tLXIConsortiumNotDefinedTLV::tLXIConsortiumNotDefinedTLV()
    : tOrganizationExtensionTLV(kLXIConsortiumOrganizationId, kOrganizationSubType)
{
    tStatus status;
    setLength(0, status, 1);
}

tLXIConsortiumNotDefinedTLV::tLXIConsortiumNotDefinedTLV(const tLXIConsortiumNotDefinedTLV& a_other,
                                                         tStatus& a_status)
    : tOrganizationExtensionTLV(a_other)
{
    m_data.assign(a_other.m_data, a_status);
}

void tLXIConsortiumNotDefinedTLV::setData(const void* a_pData, u16 a_length, tStatus& a_status)
{
    m_data.assign(a_pData, a_length, a_status);
    setLength(m_data.getLength(), a_status, 1);
}

tTrace& tLXIConsortiumNotDefinedTLV::trace(tTrace& a_trace)
{
    tTLV::trace(a_trace);
    a_trace.write("LXI Consortium NOT_DEFINED TLV data field: ");
    if (m_data.getLength() != 0)
    {
        a_trace.write(reinterpret_cast<const char*>(m_data.getData()), m_data.getLength());
    }
    return a_trace.write("\n");
}

std::unique_ptr<tTLV> tLXIConsortiumNotDefinedTLV::clone(tStatus& a_status) const
{
    std::unique_ptr<tTLV> pCopy =
        nOrvTarn000::makeOwned<tLXIConsortiumNotDefinedTLV>(a_status, *this, a_status);
    if (a_status.isFatal())
    {
        return nullptr;
    }
    return pCopy;
}

void tLXIConsortiumNotDefinedTLV::deserializeOrganizationData(iSerializableTarget& a_target,
                                                              tStatus& a_status)
{
    m_data.readFrom(a_target, static_cast<u16>(getLength() - kIdentifiersLength), a_status);
}

void tLXIConsortiumNotDefinedTLV::serializeOrganizationData(iSerializableTarget& a_target,
                                                            tStatus& a_status)
{
    m_data.writeTo(a_target, a_status);
}

} // namespace nOrvPTP000
