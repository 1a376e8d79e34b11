#pragma once
#include "orvptp/tOctetBlock.h"
#include "orvptp/tOrganizationExtensionTLV.h"

namespace nOrvPTP000
{

// The LXI Consortium's organisation extension of subtype NOT_DEFINED
// (0xFFFFFF): opaque data, kept as received.
class tLXIConsortiumNotDefinedTLV : public tOrganizationExtensionTLV
{
public:
    enum : u32
    {
        kOrganizationSubType = 0xFFFFFF
    };

    // No data; lengthField 6.
    tLXIConsortiumNotDefinedTLV();
    // A deep copy; without memory for the data the status says so.
    tLXIConsortiumNotDefinedTLV(const tLXIConsortiumNotDefinedTLV& a_other,
                                nOrvTarn000::tStatus& a_status);

    // Null when there is no data.
    const u8* getData() const { return m_data.getData(); }
    u16 getDataLength() const { return static_cast<u16>(m_data.getLength()); }
    // Replaces the data and sets the lengthField to match.
    void setData(const void* a_pData, u16 a_length, nOrvTarn000::tStatus& a_status);

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    std::unique_ptr<tTLV> clone(nOrvTarn000::tStatus& a_status) const override;
    // Takes lengthField - 6 octets, counted in 16 bits; a lengthField below 6
    // therefore asks for nearly 64 KiB, which no datagram holds.
    void deserializeOrganizationData(iSerializableTarget& a_target,
                                     nOrvTarn000::tStatus& a_status) override;
    void serializeOrganizationData(iSerializableTarget& a_target,
                                   nOrvTarn000::tStatus& a_status) override;

private:
    tOctetBlock m_data;
};

} // namespace nOrvPTP000
