#pragma once
#include "orvptp/tClockIdentity.h"

namespace nOrvPTP000
{

// A clock identity and the number of one of its ports. Orders by the clock
// identity first and by the port number only between equal identities.
class tPortIdentity : public iPTPSerializable
{
public:
    enum : u16
    {
        kLength = 10,
        kAllPorts = 0xFFFF
    };

    // Zero identity, port 0.
    tPortIdentity();
    tPortIdentity(const tClockIdentity& a_clockIdentity, u16 a_portNumber);

    const tClockIdentity& getClockIdentity() const { return m_clockIdentity; }
    u16 getPortNumber() const { return m_portNumber; }
    void setClockIdentity(const tClockIdentity& a_clockIdentity, nOrvTarn000::tStatus& a_status);
    void setPortNumber(u16 a_portNumber, nOrvTarn000::tStatus& a_status);

    bool operator==(const tPortIdentity& a_other) const;
    bool operator!=(const tPortIdentity& a_other) const { return !(*this == a_other); }
    bool operator<(const tPortIdentity& a_other) const;
    bool operator>(const tPortIdentity& a_other) const { return a_other < *this; }

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void serialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    // Leaves the identity unchanged when the data runs out.
    void deserialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    u16 getSize() override { return kLength; }

private:
    tClockIdentity m_clockIdentity;
    u16 m_portNumber;
};

// Every port of every clock: all-ones identity, port 0xFFFF.
tPortIdentity allPortsIdentity();

} // namespace nOrvPTP000
