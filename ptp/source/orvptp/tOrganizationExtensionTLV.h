#pragma once
#include "orvptp/tTLV.h"

namespace nOrvPTP000
{

// A TLV defined by an organisation, recognised by its organisationId and
// organizationSubType:
//   organizationId (3 octets), organizationSubType (3 octets),
//   then lengthField - 6 octets of organisation data.
// Both identifiers are handled as 24-bit numbers, stored big-endian.
class tOrganizationExtensionTLV : public tTLV
{
public:
    enum : u16
    {
        kIdentifiersLength = 6
    };

    tOrganizationExtensionTLV();

    u32 getOrganizationId() const { return fromOctets(m_organizationId); }
    u32 getOrganizationSubType() const { return fromOctets(m_organizationSubType); }
    // The low 24 bits count.
    void setOrganizationId(u32 a_organizationId, nOrvTarn000::tStatus& a_status);
    void setOrganizationSubType(u32 a_organizationSubType, nOrvTarn000::tStatus& a_status);

    // a_valueLength is the length of the organisation data alone.
    u16 setLength(u32 a_valueLength, nOrvTarn000::tStatus& a_status, u32 a_alignment) override;
    void deserializeValue(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeValue(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

    virtual void deserializeOrganizationData(iSerializableTarget& a_target,
                                             nOrvTarn000::tStatus& a_status) = 0;
    virtual void serializeOrganizationData(iSerializableTarget& a_target,
                                           nOrvTarn000::tStatus& a_status) = 0;

    // The 24-bit number of three octets, first octet highest.
    static u32 fromOctets(const u8* a_pOctets);

protected:
    tOrganizationExtensionTLV(u32 a_organizationId, u32 a_organizationSubType);

private:
    static void toOctets(u32 a_value, u8* a_pOctets);

    u8 m_organizationId[3];
    u8 m_organizationSubType[3];
};

} // namespace nOrvPTP000
