#include "tClientUdpNetworkInterface.h"

#include "tKernelTimestamps.h"
#include "tNetworkDevices.h"
#include "tThreadPriorityGuard.h"
#include "tTimeConversion.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

using nOrvPTP000::tPortAddress;
using nOrvPTP000::tProtocolDataUnit;
using nOrvPTP000::tTimestamp;
using nOrvTarn000::kStatusCancelled;
using nOrvTarn000::kStatusInternalError;
using nOrvTarn000::kStatusNotAvailable;
using nOrvTarn000::kStatusNotSupported;
using nOrvTarn000::kStatusResourceUnavailable;
using nOrvTarn000::kStatusSystemError;
using nOrvTarn000::tStatus;
using zelmarPluginCore_1_0::tTimeValue;

namespace nZelmarPtpPlugin_1_0
{
namespace
{

// The low bit of transportSpecific, by which a peer asks for event messages
// of the old fixed size.
const u8 kLegacySizeFlag = 0x10;
const u8 kMessageTypeMask = 0x0F;
const u8 kAnnounceMessageType = 11;

const u8 kPadding[tClientUdpNetworkInterface::kLegacyEventMessageSize] = {};

int openUdpSocket()
{
    return ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP);
}

template <typename T>
bool setOption(int a_socket, int a_level, int a_option, const T& a_value)
{
    return ::setsockopt(a_socket, a_level, a_option, &a_value, sizeof(a_value)) == 0;
}

u32 groupAddress()
{
    in_addr group;
    ::inet_pton(AF_INET, tClientUdpNetworkInterface::kMulticastGroup, &group);
    return group.s_addr;
}

} // namespace

tClientUdpNetworkInterface::tClientUdpNetworkInterface(
    nOrvPTP000::iPTPTimestampGenerator* a_pTimestampGenerator,
    nOrvPTP000::iPTPTimekeeper* a_pTimekeeper, const u8* a_pMacAddress, u8 a_ttl)
    : m_pTimestampGenerator(a_pTimestampGenerator), m_pTimekeeper(a_pTimekeeper), m_macAddress(),
      m_ipAddress(0), m_interfaceIndex(0), m_multicastTtl(a_ttl), m_eventSocket(-1),
      m_generalSocket(-1), m_sendSocket(-1), m_destination(), m_cancelled(false),
      m_padEventMessages(false), m_timestamping(kTimestampingAutomatic), m_kernelReceive(false),
      m_kernelTransmit(false), m_transmitMissReported(false), m_kernelReceiveCount(0),
      m_userReceiveCount(0), m_kernelTransmitCount(0), m_userTransmitCount(0),
      m_generalPassedOver(false)
{
    if (a_pMacAddress != nullptr)
    {
        std::memcpy(m_macAddress, a_pMacAddress, sizeof(m_macAddress));
    }
    m_destination.sin_family = AF_INET;
    m_destination.sin_addr.s_addr = groupAddress();
}

tClientUdpNetworkInterface::~tClientUdpNetworkInterface()
{
    closeAllSockets();
}

void tClientUdpNetworkInterface::open(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    // Sockets left over from an open that failed half-way.
    closeAllSockets();
    m_kernelReceive = false;
    m_kernelTransmit = false;
    m_transmitMissReported = false;

    tNetworkDeviceConfig device;
    u32 ipAddress = 0;
    m_interfaceIndex = 0;
    if (nNetworkDevices::findDeviceByMacAddress(m_macAddress, device, a_status))
    {
        ipAddress = device.m_ipAddress;
        m_interfaceIndex = device.m_device;
    }
    m_ipAddress = ipAddress;
    if (a_status.isFatal())
    {
        return;
    }
    if (ipAddress == 0)
    {
        ORVTARN_SET_CODE(a_status, kStatusNotAvailable);
        return;
    }
    m_cancelled = false;

    const int sendSocket = openUdpSocket();
    m_sendSocket = sendSocket;
    if (sendSocket < 0)
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return;
    }
    const ip_mreqn membership = makeMembership();
    if (!setOption(sendSocket, IPPROTO_IP, IP_MULTICAST_IF, membership))
    {
        ORVTARN_SET_CODE(a_status, kStatusInternalError);
        return;
    }
    if (!setOption(sendSocket, IPPROTO_IP, IP_MULTICAST_TTL, static_cast<int>(m_multicastTtl)))
    {
        ORVTARN_SET_CODE(a_status, kStatusInternalError);
        return;
    }
    // Our own multicast comes back to our receive sockets, as the node expects.
    if (!setOption(sendSocket, IPPROTO_IP, IP_MULTICAST_LOOP, 1))
    {
        ORVTARN_SET_CODE(a_status, kStatusInternalError);
        return;
    }
    openReceiveSocket(kEventPort, m_eventSocket, a_status);
    openReceiveSocket(kGeneralPort, m_generalSocket, a_status);
    chooseTimestamping(device.m_name, a_status);
}

void tClientUdpNetworkInterface::chooseTimestamping(const char* a_pDevice, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (m_timestamping != kTimestampingUser)
    {
        m_kernelReceive = nKernelTimestamps::enableReceive(m_eventSocket.load());
        m_kernelTransmit = nKernelTimestamps::enableTransmit(m_sendSocket.load(), a_pDevice);
    }
    nKernelTimestamps::traceChoice(a_pDevice, m_kernelReceive, m_kernelTransmit);
    if (m_timestamping == kTimestampingKernel && !(m_kernelReceive && m_kernelTransmit))
    {
        ORVTARN_SET_CODE(a_status, kStatusNotSupported);
    }
}

void tClientUdpNetworkInterface::openReceiveSocket(u16 a_port, std::atomic<int>& a_rSocket,
                                                   tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    const int receiveSocket = openUdpSocket();
    a_rSocket = receiveSocket;
    if (receiveSocket < 0)
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return;
    }
    // Another instance on the same machine may listen on the same ports.
    if (!setOption(receiveSocket, SOL_SOCKET, SO_REUSEADDR, 1))
    {
        ORVTARN_SET_CODE(a_status, kStatusInternalError);
        return;
    }
    // Only the memberships of this socket count: without this, a socket bound
    // to the group would take the group's datagrams from every device that
    // any socket of the machine joined it on.
    if (!setOption(receiveSocket, IPPROTO_IP, IP_MULTICAST_ALL, 0))
    {
        ORVTARN_SET_CODE(a_status, kStatusInternalError);
        return;
    }
    // Bound to the group, not to the device's unicast address: a socket bound
    // to a unicast address receives no multicast here.
    sockaddr_in local;
    std::memset(&local, 0, sizeof(local));
    local.sin_family = AF_INET;
    local.sin_port = htons(a_port);
    local.sin_addr.s_addr = m_destination.sin_addr.s_addr;
    if (::bind(receiveSocket, reinterpret_cast<const sockaddr*>(&local), sizeof(local)) != 0)
    {
        ORVTARN_SET_CODE(a_status, kStatusResourceUnavailable);
        return;
    }
    const ip_mreqn membership = makeMembership();
    if (!setOption(receiveSocket, IPPROTO_IP, IP_ADD_MEMBERSHIP, membership))
    {
        ORVTARN_SET_CODE(a_status, kStatusInternalError);
        return;
    }
    if (!setOption(receiveSocket, IPPROTO_IP, IP_MULTICAST_IF, membership))
    {
        ORVTARN_SET_CODE(a_status, kStatusInternalError);
    }
}

ip_mreqn tClientUdpNetworkInterface::makeMembership() const
{
    ip_mreqn membership;
    std::memset(&membership, 0, sizeof(membership));
    membership.imr_multiaddr.s_addr = m_destination.sin_addr.s_addr;
    membership.imr_address.s_addr = m_ipAddress.load();
    membership.imr_ifindex = static_cast<int>(m_interfaceIndex);
    return membership;
}

void tClientUdpNetworkInterface::close(tStatus& a_status)
{
    m_padEventMessages = false;
    dropMembership(m_eventSocket, a_status);
    dropMembership(m_generalSocket, a_status);
    closeAllSockets();
}

void tClientUdpNetworkInterface::dropMembership(const std::atomic<int>& a_rSocket,
                                                tStatus& a_status)
{
    const int receiveSocket = a_rSocket.load();
    if (a_status.isFatal() || receiveSocket < 0)
    {
        return;
    }
    if (!setOption(receiveSocket, IPPROTO_IP, IP_DROP_MEMBERSHIP, makeMembership()))
    {
        ORVTARN_SET_CODE(a_status, kStatusInternalError);
    }
}

void tClientUdpNetworkInterface::closeSocket(std::atomic<int>& a_rSocket, bool a_wakeReceiver)
{
    const int held = a_rSocket.exchange(-1);
    if (held < 0)
    {
        return;
    }
    // A receiver waiting on the socket would not notice the close; the
    // shutdown makes its wait return at once.
    if (a_wakeReceiver)
    {
        ::shutdown(held, SHUT_RDWR);
    }
    ::close(held);
}

void tClientUdpNetworkInterface::closeAllSockets()
{
    closeSocket(m_sendSocket, false);
    closeSocket(m_eventSocket, true);
    closeSocket(m_generalSocket, true);
}

void tClientUdpNetworkInterface::sendEventMessage(tProtocolDataUnit& a_rPdu, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    m_destination.sin_port = htons(kEventPort);
    const u32 length = a_rPdu.getLength();
    if (m_padEventMessages && length < kLegacyEventMessageSize)
    {
        a_rPdu.writeOctets(kPadding, kLegacyEventMessageSize - length, a_status);
    }

    const int sendSocket = m_sendSocket.load();
    tTimestamp before;
    tTimestamp after;
    {
        // Nothing that allocates, logs or locks between the readings and the
        // send.
        tThreadPriorityGuard guard(kTimestampPriority);
        m_pTimekeeper->getTime(before, a_status);
        if (a_status.isNotFatal())
        {
            const ssize_t sent =
                m_kernelTransmit ? nKernelTimestamps::sendStamped(sendSocket, a_rPdu.getData(),
                                                                  a_rPdu.getLength(), m_destination)
                                 : ::sendto(sendSocket, a_rPdu.getData(), a_rPdu.getLength(), 0,
                                            reinterpret_cast<const sockaddr*>(&m_destination),
                                            sizeof(m_destination));
            if (sent < 0)
            {
                ORVTARN_SET_CODE(a_status, kStatusInternalError);
            }
        }
        m_pTimekeeper->getTime(after, a_status);
    }
    if (a_status.isFatal())
    {
        return;
    }
    // The later reading plus half the time the call took: the datagram leaves
    // towards the end of the call.
    const tTimeValue afterValue = toTimeValue(after);
    const tTimeValue reading = afterValue + (afterValue - toTimeValue(before)) / 2;
    const tTimestamp sent = transmitTime(a_rPdu, toTimestamp(reading), a_status);
    m_pTimestampGenerator->recordTransmitTimestamp(a_rPdu, sent, a_status);
}

tTimestamp tClientUdpNetworkInterface::transmitTime(const tProtocolDataUnit& a_rPdu,
                                                    const tTimestamp& a_readingSent,
                                                    tStatus& a_status)
{
    timespec stamp;
    tTimestamp time = a_readingSent;
    if (m_kernelTransmit &&
        nKernelTimestamps::awaitTransmit(m_sendSocket.load(), a_rPdu.getData(), a_rPdu.getLength(),
                                         kTransmitTimestampWaitMs, stamp) &&
        nKernelTimestamps::toTimekeeperTime(stamp, *m_pTimekeeper, time, a_status))
    {
        ++m_kernelTransmitCount;
        return time;
    }
    if (m_kernelTransmit && !m_transmitMissReported)
    {
        m_transmitMissReported = true;
        nKernelTimestamps::traceMissingTransmit(kTransmitTimestampWaitMs);
    }
    ++m_userTransmitCount;
    return a_readingSent;
}

void tClientUdpNetworkInterface::sendGeneralMessage(tProtocolDataUnit& a_rPdu, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    m_destination.sin_port = htons(kGeneralPort);
    if (::sendto(m_sendSocket.load(), a_rPdu.getData(), a_rPdu.getLength(), 0,
                 reinterpret_cast<const sockaddr*>(&m_destination), sizeof(m_destination)) < 0)
    {
        ORVTARN_SET_CODE(a_status, kStatusInternalError);
    }
}

void tClientUdpNetworkInterface::receiveMessage(tProtocolDataUnit& a_rPdu, tStatus& a_status)
{
    a_rPdu.clear();
    if (a_status.isFatal())
    {
        return;
    }
    u8 buffer[kReceiveBufferSize];
    while (!m_cancelled)
    {
        pollfd sockets[2];
        sockets[0].fd = m_eventSocket.load();
        sockets[1].fd = m_generalSocket.load();
        sockets[0].events = POLLIN;
        sockets[1].events = POLLIN;
        sockets[0].revents = 0;
        sockets[1].revents = 0;
        const bool open = sockets[0].fd >= 0 && sockets[1].fd >= 0;

        tTimestamp received;
        int ready = -1;
        int waitError = EBADF;
        {
            tThreadPriorityGuard guard(kTimestampPriority);
            if (open)
            {
                ready = ::poll(sockets, 2, kSelectTimeoutUs / 1000);
                waitError = errno;
            }
            m_pTimekeeper->getTime(received, a_status);
        }
        // A cancel is looked at before the sockets are touched again: after
        // cancel and close, their descriptors may belong to someone else.
        if (m_cancelled)
        {
            break;
        }
        if (a_status.isFatal())
        {
            return;
        }
        if (ready < 0 && waitError == EINTR)
        {
            continue;
        }
        if (ready < 0 || ((sockets[0].revents | sockets[1].revents) & POLLNVAL) != 0)
        {
            ORVTARN_SET_CODE(a_status, kStatusSystemError);
            return;
        }
        if (ready == 0)
        {
            continue;
        }

        // The event socket goes first, so that its datagrams are read at the
        // time just taken; but not twice in a row while the general one
        // waits, so that a flood at one port cannot starve the other.
        const bool bothReady = sockets[0].revents != 0 && sockets[1].revents != 0;
        const bool fromEventSocket = sockets[0].revents != 0 && !(bothReady && m_generalPassedOver);
        m_generalPassedOver = bothReady && fromEventSocket;
        const int source = fromEventSocket ? sockets[0].fd : sockets[1].fd;
        // Never blocks: a datagram announced by the wait may have been thrown
        // away since (a bad checksum is found only when it is read).
        timespec stamp;
        bool stamped = false;
        const ssize_t length =
            nKernelTimestamps::receive(source, buffer, sizeof(buffer), stamp, stamped);
        const int receiveError = errno;
        if (m_cancelled)
        {
            break;
        }
        if (length < 0)
        {
            if (receiveError == EAGAIN || receiveError == EWOULDBLOCK || receiveError == EINTR)
            {
                continue;
            }
            ORVTARN_SET_CODE(a_status, kStatusInternalError);
            return;
        }

        // A peer that sets the flag in an event message, or in an Announce,
        // wants our event messages at the old fixed size until the next close.
        if (length > 0 && (buffer[0] & kLegacySizeFlag) != 0 &&
            (fromEventSocket || (buffer[0] & kMessageTypeMask) == kAnnounceMessageType))
        {
            m_padEventMessages = true;
        }
        a_rPdu.writeOctets(buffer, static_cast<u32>(length), a_status);
        if (a_status.isFatal())
        {
            return;
        }
        if (fromEventSocket)
        {
            if (stamped && m_kernelReceive &&
                nKernelTimestamps::toTimekeeperTime(stamp, *m_pTimekeeper, received, a_status))
            {
                ++m_kernelReceiveCount;
            }
            else
            {
                ++m_userReceiveCount;
            }
            m_pTimestampGenerator->recordReceiveTimestamp(a_rPdu, received, a_status);
        }
        return;
    }
    ORVTARN_SET_CODE(a_status, kStatusCancelled);
    m_cancelled = false;
}

void tClientUdpNetworkInterface::cancelReceive(tStatus& /*a_status*/)
{
    m_cancelled = true;
}

tClientUdpNetworkInterface::tTimestampCounts tClientUdpNetworkInterface::getTimestampCounts() const
{
    tTimestampCounts counts;
    counts.m_kernelReceive = m_kernelReceiveCount.load();
    counts.m_userReceive = m_userReceiveCount.load();
    counts.m_kernelTransmit = m_kernelTransmitCount.load();
    counts.m_userTransmit = m_userTransmitCount.load();
    return counts;
}

tPortAddress tClientUdpNetworkInterface::getPortAddress()
{
    tStatus status;
    const u32 group = m_destination.sin_addr.s_addr;
    return tPortAddress(1, 4, &group, status);
}

} // namespace nZelmarPtpPlugin_1_0
