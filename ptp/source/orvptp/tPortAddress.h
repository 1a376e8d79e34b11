#pragma once
#include "orvptp/iPTPSerializable.h"

namespace nOrvPTP000
{

// A network protocol and an address of up to kMaxAddressLength octets, held
// inline. An address longer than the field is refused with kStatusOutOfBounds,
// on construction and on reception alike, and nothing is written outside it.
class tPortAddress : public iPTPSerializable
{
public:
    enum : u16
    {
        kMaxAddressLength = 16,
        kFixedLength = 4,
        kNetworkProtocolUnknown = 0xFFFE
    };

    // Protocol unknown (0xFFFE), empty address.
    tPortAddress();
    // A null a_pBytes means an empty address. A fatal status on return leaves
    // the address empty.
    tPortAddress(u16 a_networkProtocol, u16 a_length, const void* a_pBytes,
                 nOrvTarn000::tStatus& a_status);

    u16 getNetworkProtocol() const { return m_networkProtocol; }
    u16 getAddressLength() const { return m_addressLength; }
    const u8* getAddressField() const { return m_addressField; }

    bool operator==(const tPortAddress& a_other) const;
    bool operator!=(const tPortAddress& a_other) const { return !(*this == a_other); }

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void serialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    // Leaves the address unchanged when the data runs out or its length
    // exceeds the field (kStatusOutOfBounds).
    void deserialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    u16 getSize() override { return static_cast<u16>(kFixedLength + m_addressLength); }

private:
    u16 m_networkProtocol;
    u16 m_addressLength;
    u8 m_addressField[kMaxAddressLength];
};

} // namespace nOrvPTP000
