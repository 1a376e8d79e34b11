#pragma once
#include "orvptp/iPTPPortMessaging.h"
#include "orvptp/iPTPTimekeeper.h"
#include "orvptp/iPTPTimestampGenerator.h"

#include <atomic>
#include <netinet/in.h>

namespace nZelmarPtpPlugin_1_0
{

// The PTP port's network: UDP/IPv4 multicast to the group 224.0.1.129 on one
// network device, named by its MAC address. Event messages (port 319) carry
// software timestamps, read from the timekeeper with the thread at the highest
// priority right around the socket calls; general messages (port 320) carry
// none.
//
// Our own multicast comes back to us (the node recognises and drops it), and
// only the group's datagrams that arrive on this device are received.
//
// Threads: one thread receives; senders are serialised by the caller, which
// also calls open and close. cancelReceive may come from any thread; a close
// that follows it wakes a blocked receive at once, and without a close the
// receive notices the cancel within one poll of kSelectTimeoutUs.
class tClientUdpNetworkInterface : public nOrvPTP000::iPTPPortMessaging
{
public:
    enum : u16
    {
        kEventPort = 319,
        kGeneralPort = 320
    };
    enum : u32
    {
        kMacAddressSize = 6,
        kReceiveBufferSize = 1024,
        kSelectTimeoutUs = 500000,
        kLegacyEventMessageSize = 124
    };
    enum : i32
    {
        kTimestampPriority = 15
    };
    static constexpr const char* kMulticastGroup = "224.0.1.129";
    // The peer-delay group: nothing joins it and nothing is sent to it.
    static constexpr const char* kPeerDelayMulticastGroup = "224.0.0.107";

    // Touches no socket. a_pMacAddress holds the six bytes of the device.
    tClientUdpNetworkInterface(nOrvPTP000::iPTPTimestampGenerator* a_pTimestampGenerator,
                               nOrvPTP000::iPTPTimekeeper* a_pTimekeeper, const u8* a_pMacAddress,
                               u8 a_ttl);
    // Closes whatever sockets a failed open left behind.
    ~tClientUdpNetworkInterface() override;

    tClientUdpNetworkInterface(const tClientUdpNetworkInterface&) = delete;
    tClientUdpNetworkInterface& operator=(const tClientUdpNetworkInterface&) = delete;

    // Finds the device (kStatusNotAvailable when it is missing or has no IPv4
    // address), then makes the send socket and the two receive sockets and
    // joins the group on the device. Stops at the first failure; what was
    // opened until then stays open until close, the next open or destruction.
    void open(nOrvTarn000::tStatus& a_status) override;
    // Leaves the group, and closes all three sockets whatever the status.
    // Also ends the padding of event messages.
    void close(nOrvTarn000::tStatus& a_status) override;
    // Pads to kLegacyEventMessageSize when a peer has asked for it, sends, and
    // records the transmit time in the timestamp generator.
    void sendEventMessage(nOrvPTP000::tProtocolDataUnit& a_rPdu,
                          nOrvTarn000::tStatus& a_status) override;
    void sendGeneralMessage(nOrvPTP000::tProtocolDataUnit& a_rPdu,
                            nOrvTarn000::tStatus& a_status) override;
    // One datagram per call, the event port's first. An event datagram's
    // receive time goes to the timestamp generator. A cancelled wait ends with
    // kStatusCancelled and clears the cancel.
    void receiveMessage(nOrvPTP000::tProtocolDataUnit& a_rPdu,
                        nOrvTarn000::tStatus& a_status) override;
    void cancelReceive(nOrvTarn000::tStatus& a_status) override;
    // Protocol 1 (UDP/IPv4) with the four bytes of the group address.
    nOrvPTP000::tPortAddress getPortAddress() override;

    // The device's IPv4 address in network byte order; 0 until open finds it.
    u32 getIpAddress() const { return m_ipAddress.load(); }

private:
    void openReceiveSocket(u16 a_port, std::atomic<int>& a_rSocket, nOrvTarn000::tStatus& a_status);
    void dropMembership(const std::atomic<int>& a_rSocket, nOrvTarn000::tStatus& a_status);
    // Closes the socket if one is held, and forgets it.
    static void closeSocket(std::atomic<int>& a_rSocket, bool a_wakeReceiver);
    void closeAllSockets();
    // The group on this device, for joining, leaving and choosing the device
    // that multicast leaves from.
    ip_mreqn makeMembership() const;
    void sendTo(u16 a_port, const nOrvPTP000::tProtocolDataUnit& a_rPdu,
                nOrvTarn000::tStatus& a_status);

    nOrvPTP000::iPTPTimestampGenerator* m_pTimestampGenerator;
    nOrvPTP000::iPTPTimekeeper* m_pTimekeeper;
    u8 m_macAddress[kMacAddressSize];
    std::atomic<u32> m_ipAddress;
    // The device's interface index, which pins membership and sending to it
    // even when another device has the same address.
    u32 m_interfaceIndex;
    u8 m_multicastTtl;
    // Socket descriptors, -1 when none is held. The receiving thread reads the
    // two receive sockets while another thread may close them.
    std::atomic<int> m_eventSocket;
    std::atomic<int> m_generalSocket;
    std::atomic<int> m_sendSocket;
    sockaddr_in m_destination;
    std::atomic<bool> m_cancelled;
    std::atomic<bool> m_padEventMessages;
    // The receiving thread's own: the last datagram came from the event socket
    // while the general socket held one too.
    bool m_generalPassedOver;
};

} // namespace nZelmarPtpPlugin_1_0
