#include "tKernelTimestamps.h"

#include "orvtarn/protons/status/tTrace.h"
#include "orvtarn/quarks/tClock.h"
#include "tTimeConversion.h"

#include <cerrno>
#include <cstring>
#include <linux/ethtool.h>
#include <linux/net_tstamp.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

using nOrvPTP000::tTimestamp;
using nOrvTarn000::tStatus;
using zelmarPluginCore_1_0::tTimeValue;

namespace nZelmarPtpPlugin_1_0
{
namespace nKernelTimestamps
{
namespace
{

enum : u32
{
    kKindInformation = 105, // 'i'
    // Room for the link, IP and UDP headers that come back before the data of
    // a transmit timestamp's datagram.
    kHeadroom = 256,
    kFrameSize = 1024 + kHeadroom,
    kControlSize = 256
};

nOrvTarn000::tTrace& traceHeader(u64 a_line)
{
    return nOrvTarn000::getTrace(0).writeHeader(ORVTARN_COMPONENT, a_line, __FILE__,
                                                kKindInformation, 0);
}

void traceFailure(const char* a_pWhat, int a_error, u64 a_line)
{
    char reason[128] = "";
    traceHeader(a_line)
        .writeFormatted("%s failed: %s", a_pWhat, strerror_r(a_error, reason, sizeof(reason)))
        .endLine();
}

bool setTimestamping(int a_socket, int a_flags, const char* a_pWhat)
{
    if (::setsockopt(a_socket, SOL_SOCKET, SO_TIMESTAMPING, &a_flags, sizeof(a_flags)) != 0)
    {
        traceFailure(a_pWhat, errno, __LINE__);
        return false;
    }
    return true;
}

// The software stamp of a message's SCM_TIMESTAMPING, if it carries one.
bool findStamp(msghdr& a_rMessage, timespec& a_rStamp)
{
    for (cmsghdr* pHeader = CMSG_FIRSTHDR(&a_rMessage); pHeader != nullptr;
         pHeader = CMSG_NXTHDR(&a_rMessage, pHeader))
    {
        timespec stamps[3];
        if (pHeader->cmsg_level == SOL_SOCKET && pHeader->cmsg_type == SCM_TIMESTAMPING &&
            pHeader->cmsg_len >= CMSG_LEN(sizeof(stamps)))
        {
            std::memcpy(stamps, CMSG_DATA(pHeader), sizeof(stamps));
            a_rStamp = stamps[0];
            return stamps[0].tv_sec != 0 || stamps[0].tv_nsec != 0;
        }
    }
    return false;
}

// recvmsg of one datagram with its control messages.
ssize_t receiveWithControl(int a_socket, u8* a_pBuffer, u32 a_size, int a_flags, timespec& a_rStamp,
                           bool& a_rStamped, bool& a_rTruncated)
{
    alignas(cmsghdr) char control[kControlSize];
    iovec vector = {a_pBuffer, a_size};
    msghdr message;
    std::memset(&message, 0, sizeof(message));
    message.msg_iov = &vector;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    const ssize_t length = ::recvmsg(a_socket, &message, a_flags | MSG_DONTWAIT);
    a_rStamped = length >= 0 && findStamp(message, a_rStamp);
    a_rTruncated = (message.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0;
    return length;
}

i64 nanosecondsOf(const timespec& a_time)
{
    return static_cast<i64>(a_time.tv_sec) * 1000000000 + a_time.tv_nsec;
}

} // namespace

bool enableReceive(int a_socket)
{
    return setTimestamping(a_socket, SOF_TIMESTAMPING_RX_SOFTWARE | SOF_TIMESTAMPING_SOFTWARE,
                           "receive timestamps: setsockopt(SO_TIMESTAMPING)");
}

bool enableTransmit(int a_socket, const char* a_pDevice)
{
    ethtool_ts_info info;
    std::memset(&info, 0, sizeof(info));
    info.cmd = ETHTOOL_GET_TS_INFO;
    ifreq request;
    std::memset(&request, 0, sizeof(request));
    std::strncpy(request.ifr_name, a_pDevice, sizeof(request.ifr_name) - 1);
    request.ifr_data = reinterpret_cast<char*>(&info);
    if (::ioctl(a_socket, SIOCETHTOOL, &request) != 0)
    {
        traceFailure("transmit timestamps: ioctl(SIOCETHTOOL, ETHTOOL_GET_TS_INFO)", errno,
                     __LINE__);
        return false;
    }
    // Each event message asks for its own stamp (sendStamped); the socket
    // only has to report them.
    return (info.so_timestamping & SOF_TIMESTAMPING_TX_SOFTWARE) != 0 &&
           setTimestamping(a_socket, SOF_TIMESTAMPING_SOFTWARE,
                           "transmit timestamps: setsockopt(SO_TIMESTAMPING)");
}

ssize_t receive(int a_socket, u8* a_pBuffer, u32 a_size, timespec& a_rStamp, bool& a_rStamped)
{
    bool truncated = false;
    return receiveWithControl(a_socket, a_pBuffer, a_size, 0, a_rStamp, a_rStamped, truncated);
}

ssize_t sendStamped(int a_socket, const u8* a_pData, u32 a_length, const sockaddr_in& a_destination)
{
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
    std::memset(control, 0, sizeof(control));
    iovec vector = {const_cast<u8*>(a_pData), a_length};
    msghdr message;
    std::memset(&message, 0, sizeof(message));
    message.msg_name = const_cast<sockaddr_in*>(&a_destination);
    message.msg_namelen = sizeof(a_destination);
    message.msg_iov = &vector;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    cmsghdr* pHeader = CMSG_FIRSTHDR(&message);
    pHeader->cmsg_level = SOL_SOCKET;
    pHeader->cmsg_type = SO_TIMESTAMPING;
    pHeader->cmsg_len = CMSG_LEN(sizeof(int));
    const int request = SOF_TIMESTAMPING_TX_SOFTWARE;
    std::memcpy(CMSG_DATA(pHeader), &request, sizeof(request));
    return ::sendmsg(a_socket, &message, 0);
}

bool awaitTransmit(int a_socket, const u8* a_pData, u32 a_length, u32 a_waitMs, timespec& a_rStamp)
{
    u64 now = 0;
    if (!nOrvTarn000::nClock::readCounter(now))
    {
        return false;
    }
    const u64 end = now + static_cast<u64>(a_waitMs) * 1000000u;
    for (;;)
    {
        // The datagram comes back whole, its link, IP and UDP headers first.
        u8 frame[kFrameSize];
        bool stamped = false;
        bool truncated = false;
        const ssize_t length = receiveWithControl(a_socket, frame, sizeof(frame), MSG_ERRQUEUE,
                                                  a_rStamp, stamped, truncated);
        if (length >= 0)
        {
            if (stamped && !truncated && static_cast<size_t>(length) >= a_length &&
                std::memcmp(frame + length - a_length, a_pData, a_length) == 0)
            {
                return true;
            }
            continue;
        }
        const int error = errno;
        if (error != EAGAIN && error != EWOULDBLOCK && error != EINTR)
        {
            traceFailure("transmit timestamp: recvmsg(MSG_ERRQUEUE)", error, __LINE__);
            return false;
        }
        if (!nOrvTarn000::nClock::readCounter(now) || now >= end)
        {
            return false;
        }
        // A stamp on the error queue wakes the wait as POLLERR.
        const u64 left = end - now;
        const timespec wait = {static_cast<time_t>(left / 1000000000u),
                               static_cast<long>(left % 1000000000u)};
        pollfd socket = {a_socket, 0, 0};
        ::ppoll(&socket, 1, &wait, nullptr);
    }
}

bool toTimekeeperTime(const timespec& a_stamp, nOrvPTP000::iPTPTimekeeper& a_rTimekeeper,
                      tTimestamp& a_rTime, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return false;
    }
    timespec before;
    timespec after;
    tTimestamp timekeeper;
    const bool read = ::clock_gettime(CLOCK_REALTIME, &before) == 0;
    a_rTimekeeper.getTime(timekeeper, a_status);
    if (!read || ::clock_gettime(CLOCK_REALTIME, &after) != 0)
    {
        traceFailure("clock_gettime(CLOCK_REALTIME)", errno, __LINE__);
        return false;
    }
    if (a_status.isFatal())
    {
        return false;
    }
    a_rTime = systemToTimekeeperTime(tTimeValue(nanosecondsOf(a_stamp)),
                                     tTimeValue(nanosecondsOf(before)), timekeeper,
                                     tTimeValue(nanosecondsOf(after)));
    return true;
}

void traceChoice(const char* a_pDevice, bool a_kernelReceive, bool a_kernelTransmit)
{
    traceHeader(__LINE__)
        .writeFormatted("event timestamps on %s: receive %s, transmit %s", a_pDevice,
                        a_kernelReceive ? "kernel" : "user", a_kernelTransmit ? "kernel" : "user")
        .endLine();
}

void traceMissingTransmit(u32 a_waitMs)
{
    traceHeader(__LINE__)
        .writeFormatted("a transmit timestamp did not come within %u ms: the timekeeper's "
                        "reading around the send stands in (further ones are only counted)",
                        static_cast<unsigned>(a_waitMs))
        .endLine();
}

} // namespace nKernelTimestamps
} // namespace nZelmarPtpPlugin_1_0
