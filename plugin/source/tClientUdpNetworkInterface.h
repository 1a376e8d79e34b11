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
// timestamps; general messages (port 320) carry none.
//
// An event message's time is the kernel's stamp of the datagram where Linux
// offers one (see tKernelTimestamps.h), carried into the timekeeper's time.
// Otherwise, and for any single datagram the kernel did not stamp, it is the
// timekeeper's reading right around the socket call, taken with the thread at
// the highest priority. A transmit stamp is waited for at most
// kTransmitTimestampWaitMs after the send; one that does not come leaves the
// reading around the send in its place. The choice made at open goes to the
// trace.
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
    enum : u32
    {
        kTransmitTimestampWaitMs = 5
    };
    // Where event message timestamps come from.
    enum tTimestamping : u8
    {
        // The kernel's, each direction where the socket and the device offer
        // them; the timekeeper's readings otherwise.
        kTimestampingAutomatic,
        // The kernel's in both directions; open fails with kStatusNotSupported
        // without them.
        kTimestampingKernel,
        // Always the timekeeper's readings around the socket calls.
        kTimestampingUser
    };
    // How many event messages were stamped in each way since construction.
    struct tTimestampCounts
    {
        u64 m_kernelReceive;
        u64 m_userReceive;
        u64 m_kernelTransmit;
        u64 m_userTransmit;
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

    // Takes effect at the next open. The default is kTimestampingAutomatic.
    void setTimestamping(tTimestamping a_timestamping) { m_timestamping = a_timestamping; }
    tTimestampCounts getTimestampCounts() const;

private:
    void openReceiveSocket(u16 a_port, std::atomic<int>& a_rSocket, nOrvTarn000::tStatus& a_status);
    void dropMembership(const std::atomic<int>& a_rSocket, nOrvTarn000::tStatus& a_status);
    // Closes the socket if one is held, and forgets it.
    static void closeSocket(std::atomic<int>& a_rSocket, bool a_wakeReceiver);
    void closeAllSockets();
    // The group on this device, for joining, leaving and choosing the device
    // that multicast leaves from.
    ip_mreqn makeMembership() const;
    // Turns on the kernel's timestamps that a_timestamping asks for and the
    // sockets and a_pDevice offer.
    void chooseTimestamping(const char* a_pDevice, nOrvTarn000::tStatus& a_status);
    // The time the message went: the kernel's, or else a_readingSent.
    nOrvPTP000::tTimestamp transmitTime(const nOrvPTP000::tProtocolDataUnit& a_rPdu,
                                        const nOrvPTP000::tTimestamp& a_readingSent,
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
    tTimestamping m_timestamping;
    // The kernel's stamps in use, as open chose; open and close only change
    // them while no thread sends or receives.
    bool m_kernelReceive;
    bool m_kernelTransmit;
    // The first missing transmit stamp after open goes to the trace.
    bool m_transmitMissReported;
    std::atomic<u64> m_kernelReceiveCount;
    std::atomic<u64> m_userReceiveCount;
    std::atomic<u64> m_kernelTransmitCount;
    std::atomic<u64> m_userTransmitCount;
    // The receiving thread's own: the last datagram came from the event socket
    // while the general socket held one too.
    bool m_generalPassedOver;
};

} // namespace nZelmarPtpPlugin_1_0
