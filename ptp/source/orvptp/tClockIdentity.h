#pragma once
#include "orvptp/iPTPSerializable.h"

namespace nOrvPTP000
{

// The 8-octet identity of a clock. Identities order as big-endian 64-bit
// numbers: octet by octet, unsigned.
class tClockIdentity : public iPTPSerializable
{
public:
    enum : u16
    {
        kLength = 8
    };

    // All zero.
    tClockIdentity();
    // Copies kLength octets from a_pBytes.
    explicit tClockIdentity(const u8* a_pBytes);

    const u8* getBytes() const { return m_id; }

    bool operator==(const tClockIdentity& a_other) const;
    bool operator!=(const tClockIdentity& a_other) const { return !(*this == a_other); }
    bool operator<(const tClockIdentity& a_other) const;
    bool operator>(const tClockIdentity& a_other) const { return a_other < *this; }

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void serialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    // Leaves the identity unchanged when the data runs out.
    void deserialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    u16 getSize() override { return kLength; }

private:
    u8 m_id[kLength];
};

// Together with port number 0xFFFF this addresses every clock and every port.
extern const tClockIdentity kAllOnesClockIdentity;

} // namespace nOrvPTP000
