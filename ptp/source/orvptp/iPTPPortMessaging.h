#pragma once
#include "orvptp/tPortAddress.h"
#include "orvptp/tProtocolDataUnit.h"

namespace nOrvPTP000
{

// The network of the one port, as the engine sees it: event messages go to the
// event port with a transmit timestamp, general messages to the general port.
class iPTPPortMessaging
{
public:
    virtual ~iPTPPortMessaging() {}

    // Opens the sockets and joins the multicast group.
    virtual void open(nOrvTarn000::tStatus& a_status) = 0;
    // Leaves the group and closes the sockets.
    virtual void close(nOrvTarn000::tStatus& a_status) = 0;
    virtual void sendEventMessage(tProtocolDataUnit& a_rPdu, nOrvTarn000::tStatus& a_status) = 0;
    virtual void sendGeneralMessage(tProtocolDataUnit& a_rPdu, nOrvTarn000::tStatus& a_status) = 0;
    // Blocks until a datagram has arrived or cancelReceive ends the wait.
    virtual void receiveMessage(tProtocolDataUnit& a_rPdu, nOrvTarn000::tStatus& a_status) = 0;
    virtual void cancelReceive(nOrvTarn000::tStatus& a_status) = 0;
    // The multicast destination.
    virtual tPortAddress getPortAddress() = 0;
};

} // namespace nOrvPTP000
