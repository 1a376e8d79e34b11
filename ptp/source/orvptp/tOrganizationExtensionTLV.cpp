#include "orvptp/tOrganizationExtensionTLV.h"

#include <cstring>

using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

tOrganizationExtensionTLV::tOrganizationExtensionTLV() : tTLV(kTlvTypeOrganizationExtension)
{
    std::memset(m_organizationId, 0, sizeof(m_organizationId));
    std::memset(m_organizationSubType, 0, sizeof(m_organizationSubType));
}

tOrganizationExtensionTLV::tOrganizationExtensionTLV(u32 a_organizationId,
                                                     u32 a_organizationSubType)
    : tTLV(kTlvTypeOrganizationExtension)
{
    toOctets(a_organizationId, m_organizationId);
    toOctets(a_organizationSubType, m_organizationSubType);
}

u32 tOrganizationExtensionTLV::fromOctets(const u8* a_pOctets)
{
    return (static_cast<u32>(a_pOctets[0]) << 16) | (static_cast<u32>(a_pOctets[1]) << 8) |
           a_pOctets[2];
}

void tOrganizationExtensionTLV::toOctets(u32 a_value, u8* a_pOctets)
{
    a_pOctets[0] = static_cast<u8>(a_value >> 16);
    a_pOctets[1] = static_cast<u8>(a_value >> 8);
    a_pOctets[2] = static_cast<u8>(a_value);
}

void tOrganizationExtensionTLV::setOrganizationId(u32 a_organizationId, tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        toOctets(a_organizationId, m_organizationId);
    }
}

void tOrganizationExtensionTLV::setOrganizationSubType(u32 a_organizationSubType, tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        toOctets(a_organizationSubType, m_organizationSubType);
    }
}

u16 tOrganizationExtensionTLV::setLength(u32 a_valueLength, tStatus& a_status, u32 a_alignment)
{
    return tTLV::setLength(a_valueLength + kIdentifiersLength, a_status, a_alignment);
}

void tOrganizationExtensionTLV::deserializeValue(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    u8 organizationId[3];
    u8 organizationSubType[3];
    a_target.readOctets(organizationId, sizeof(organizationId), a_status);
    a_target.readOctets(organizationSubType, sizeof(organizationSubType), a_status);
    if (a_status.isNotFatal())
    {
        std::memcpy(m_organizationId, organizationId, sizeof(m_organizationId));
        std::memcpy(m_organizationSubType, organizationSubType, sizeof(m_organizationSubType));
        deserializeOrganizationData(a_target, a_status);
    }
}

void tOrganizationExtensionTLV::serializeValue(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeOctets(m_organizationId, sizeof(m_organizationId), a_status);
    a_target.writeOctets(m_organizationSubType, sizeof(m_organizationSubType), a_status);
    serializeOrganizationData(a_target, a_status);
}

} // namespace nOrvPTP000
