// The network layer with real sockets between two network namespaces. The
// program runs inside the first namespace, and enters the peer's namespace
// only to open the peer's sockets: every socket lives in a test namespace.
// tests/netns/messaging_test.sh builds the namespaces and passes them in.
#include "tClientUdpNetworkInterface.h"
#include "tNetworkDevices.h"
#include "tPluginTestSupport.h"
#include "tTimeConversion.h"
#include "tTimestampGenerator.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <future>
#include <memory>
#include <net/if.h>
#include <poll.h>
#include <sched.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace nZelmarPtpPlugin_1_0;
using namespace nZelmarPtpPlugin_1_0::nTest;
using nOrvPTP000::tProtocolDataUnit;
using nOrvPTP000::tTimestamp;
using nOrvTarn000::tStatus;

namespace
{

// Bound on every wait for the network: generous, only to end a broken test.
const std::chrono::seconds kGenerous(10);
const u8 kTtl = 5;

std::string environment(const char* a_pName)
{
    const char* pValue = std::getenv(a_pName);
    return pValue == nullptr ? std::string() : std::string(pValue);
}

bool parseMac(const std::string& a_text, u8* a_pMac)
{
    return std::sscanf(a_text.c_str(), "%hhx:%hhx:%hhx:%hhx:%hhx:%hhx", &a_pMac[0], &a_pMac[1],
                       &a_pMac[2], &a_pMac[3], &a_pMac[4], &a_pMac[5]) == 6;
}

u32 parseAddress(const std::string& a_text)
{
    in_addr address = {};
    inet_pton(AF_INET, a_text.c_str(), &address);
    return address.s_addr;
}

u16 sequenceOf(const std::vector<u8>& a_bytes)
{
    return a_bytes.size() < 32 ? 0 : static_cast<u16>((a_bytes[30] << 8) | a_bytes[31]);
}

// True when the calling thread works in the named test namespace.
bool inNamespace(const std::string& a_name)
{
    struct stat own = {};
    struct stat named = {};
    return !a_name.empty() && stat("/proc/thread-self/ns/net", &own) == 0 &&
           stat(("/run/netns/" + a_name).c_str(), &named) == 0 && own.st_dev == named.st_dev &&
           own.st_ino == named.st_ino;
}

// The calling thread works in the named namespace for the object's scope.
class tNamespaceVisit
{
public:
    explicit tNamespaceVisit(const std::string& a_name)
        : m_home(open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC)), m_entered(false)
    {
        const int target = open(("/run/netns/" + a_name).c_str(), O_RDONLY | O_CLOEXEC);
        if (m_home >= 0 && target >= 0)
        {
            m_entered = setns(target, CLONE_NEWNET) == 0;
        }
        if (target >= 0)
        {
            close(target);
        }
    }
    ~tNamespaceVisit()
    {
        // Never carry on in the wrong namespace.
        if (m_entered && setns(m_home, CLONE_NEWNET) != 0)
        {
            std::abort();
        }
        if (m_home >= 0)
        {
            close(m_home);
        }
    }
    bool entered() const { return m_entered; }

private:
    int m_home;
    bool m_entered;
};

// One end of the link: the network layer with its own clock and timestamps.
// Its clock counts its readings, or (a_onSystemClock) is the system clock
// 1000 s ahead, whose times compare with the test's.
struct tEnd
{
    explicit tEnd(const u8* a_pMac, bool a_onSystemClock = false)
        : m_generator(m_status), m_systemClock(1000000000000),
          m_messaging(&m_generator, a_onSystemClock ? &m_systemClock : &m_clock, a_pMac, kTtl)
    {
    }
    tStatus m_status;
    tTimestampGenerator m_generator;
    tCountingTimekeeper m_clock;
    tSystemTimekeeper m_systemClock;
    tClientUdpNetworkInterface m_messaging;
};

// A plain socket of the test, beside the network layer in the first
// namespace: it sees the group's datagrams on one port with their source and
// TTL.
class tObserver
{
public:
    tObserver(u16 a_port, u32 a_device) : m_socket(socket(AF_INET, SOCK_DGRAM, 0))
    {
        const int on = 1;
        const int off = 0;
        sockaddr_in local = {};
        local.sin_family = AF_INET;
        local.sin_port = htons(a_port);
        local.sin_addr.s_addr = parseAddress("224.0.1.129");
        ip_mreqn membership = {};
        membership.imr_multiaddr = local.sin_addr;
        membership.imr_ifindex = static_cast<int>(a_device);
        m_ready =
            m_socket >= 0 && setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on)) == 0 &&
            setsockopt(m_socket, IPPROTO_IP, IP_MULTICAST_ALL, &off, sizeof(off)) == 0 &&
            setsockopt(m_socket, IPPROTO_IP, IP_RECVTTL, &on, sizeof(on)) == 0 &&
            bind(m_socket, reinterpret_cast<sockaddr*>(&local), sizeof(local)) == 0 &&
            setsockopt(m_socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, &membership, sizeof(membership)) ==
                0;
    }
    ~tObserver()
    {
        if (m_socket >= 0)
        {
            close(m_socket);
        }
    }
    bool ready() const { return m_ready; }

    // One datagram, or false after the generous bound.
    bool receive(std::vector<u8>& a_rBytes, u32& a_rSource, int& a_rTtl)
    {
        pollfd wait = {m_socket, POLLIN, 0};
        if (poll(&wait, 1, static_cast<int>(kGenerous.count() * 1000)) != 1)
        {
            return false;
        }
        u8 buffer[2048];
        char control[256];
        sockaddr_in source = {};
        iovec vector = {buffer, sizeof(buffer)};
        msghdr message = {};
        message.msg_name = &source;
        message.msg_namelen = sizeof(source);
        message.msg_iov = &vector;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof(control);
        const ssize_t length = recvmsg(m_socket, &message, 0);
        if (length < 0)
        {
            return false;
        }
        a_rBytes.assign(buffer, buffer + length);
        a_rSource = source.sin_addr.s_addr;
        a_rTtl = -1;
        for (cmsghdr* pHeader = CMSG_FIRSTHDR(&message); pHeader != nullptr;
             pHeader = CMSG_NXTHDR(&message, pHeader))
        {
            if (pHeader->cmsg_level == IPPROTO_IP && pHeader->cmsg_type == IP_TTL)
            {
                std::memcpy(&a_rTtl, CMSG_DATA(pHeader), sizeof(a_rTtl));
            }
        }
        return true;
    }

private:
    int m_socket;
    bool m_ready;
};

class NetnsMessagingTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(inNamespace(environment("ZMPTP_LOCAL_NETNS")))
            << "this program sends PTP traffic: run it inside the test namespace named by "
               "ZMPTP_LOCAL_NETNS (tests/netns/messaging_test.sh does)";
        m_peerNamespace = environment("ZMPTP_PEER_NETNS");
        m_device = environment("ZMPTP_DEVICE");
        m_localAddress = parseAddress(environment("ZMPTP_LOCAL_ADDRESS"));
        m_peerAddress = parseAddress(environment("ZMPTP_PEER_ADDRESS"));
        ASSERT_FALSE(m_peerNamespace.empty()) << "ZMPTP_PEER_NETNS is not set";
        ASSERT_TRUE(parseMac(environment("ZMPTP_LOCAL_MAC"), m_localMac));
        ASSERT_TRUE(parseMac(environment("ZMPTP_PEER_MAC"), m_peerMac));
        ASSERT_NE(0u, m_localAddress);
        ASSERT_NE(0u, m_peerAddress);

        m_pLocal.reset(new tEnd(m_localMac));
        m_pPeer.reset(new tEnd(m_peerMac));
        ASSERT_TRUE(m_pLocal->m_status.isNotFatal());
        ASSERT_TRUE(m_pPeer->m_status.isNotFatal());
        openLocal();
        openPeer();
    }

    void TearDown() override
    {
        for (tEnd* pEnd : {m_pLocal.get(), m_pPeer.get()})
        {
            tStatus status;
            if (pEnd != nullptr)
            {
                pEnd->m_messaging.close(status);
            }
            EXPECT_TRUE(status.isNotFatal()) << status.getCode();
        }
    }

    void openLocal()
    {
        tStatus status;
        m_pLocal->m_messaging.open(status);
        ASSERT_TRUE(status.isNotFatal()) << status.getCode();
    }

    void openPeer()
    {
        tNamespaceVisit visit(m_peerNamespace);
        ASSERT_TRUE(visit.entered()) << "cannot enter " << m_peerNamespace;
        tStatus status;
        m_pPeer->m_messaging.open(status);
        ASSERT_TRUE(status.isNotFatal()) << status.getCode();
    }

    static void send(tEnd& a_rEnd, const std::vector<u8>& a_bytes, bool a_event)
    {
        tStatus status;
        tProtocolDataUnit pdu(status);
        fill(pdu, a_bytes);
        a_event ? a_rEnd.m_messaging.sendEventMessage(pdu, status)
                : a_rEnd.m_messaging.sendGeneralMessage(pdu, status);
        EXPECT_TRUE(status.isNotFatal()) << status.getCode();
    }

    // One receiveMessage; a watchdog cancels it should nothing come within
    // the generous bound.
    static i32 receive(tEnd& a_rEnd, tProtocolDataUnit& a_rPdu)
    {
        std::promise<void> done;
        std::thread watchdog(
            [&a_rEnd, finished = done.get_future()]
            {
                tStatus status;
                if (finished.wait_for(kGenerous) != std::future_status::ready)
                {
                    a_rEnd.m_messaging.cancelReceive(status);
                }
            });
        tStatus status;
        a_rEnd.m_messaging.receiveMessage(a_rPdu, status);
        done.set_value();
        watchdog.join();
        return status.getCode();
    }

    // Receives until the datagram with this sequenceId comes, passing over
    // others (our own looped-back messages, for one).
    static std::vector<u8> receiveSequence(tEnd& a_rEnd, u16 a_sequenceId,
                                           bool* a_pTimestamped = nullptr)
    {
        tStatus status;
        tProtocolDataUnit pdu(status);
        for (int attempt = 0; attempt < 8; ++attempt)
        {
            const i32 code = receive(a_rEnd, pdu);
            if (code != 0)
            {
                ADD_FAILURE() << "receive ended with " << code << " waiting for sequence "
                              << a_sequenceId;
                return std::vector<u8>();
            }
            const std::vector<u8> bytes = bytesOf(pdu);
            if (sequenceOf(bytes) == a_sequenceId)
            {
                if (a_pTimestamped != nullptr)
                {
                    tTimestamp time;
                    *a_pTimestamped = a_rEnd.m_generator.getReceiveTimestamp(pdu, time, status);
                }
                return bytes;
            }
        }
        ADD_FAILURE() << "sequence " << a_sequenceId << " did not come";
        return std::vector<u8>();
    }

    std::string m_peerNamespace;
    std::string m_device;
    u8 m_localMac[6] = {};
    u8 m_peerMac[6] = {};
    u32 m_localAddress = 0;
    u32 m_peerAddress = 0;
    std::unique_ptr<tEnd> m_pLocal;
    std::unique_ptr<tEnd> m_pPeer;
};

} // namespace

TEST_F(NetnsMessagingTest, OpenFindsTheDeviceByItsMacAddressAndNeedsItsIpAddress)
{
    EXPECT_EQ(m_localAddress, m_pLocal->m_messaging.getIpAddress());
    EXPECT_EQ(m_peerAddress, m_pPeer->m_messaging.getIpAddress());
    tStatus status;
    tNetworkDeviceConfig config;
    u8 bare[6];
    u8 shared[6];
    ASSERT_TRUE(parseMac(environment("ZMPTP_BARE_MAC"), bare) &&
                parseMac(environment("ZMPTP_SHARED_MAC"), shared));
    tEnd bareEnd(bare);
    bareEnd.m_messaging.open(status);
    EXPECT_EQ(nOrvTarn000::kStatusNotAvailable, status.getCode()) << "a device without address";
    EXPECT_EQ(0u, bareEnd.m_messaging.getIpAddress());
    tStatus found;
    ASSERT_TRUE(nNetworkDevices::findDeviceByMacAddress(shared, config, found));
    EXPECT_EQ(parseAddress(environment("ZMPTP_SHARED_ADDRESS")), config.m_ipAddress)
        << "of two devices with one MAC address, the later one has the IP address";
}

// The event socket goes first, but not twice in a row while the general one
// waits: a flood of event datagrams must not starve the general ones. Only
// event messages get a receive time; a send time is the later of the two
// readings around the send plus half their span.
TEST_F(NetnsMessagingTest, PeerDatagramsArriveEventFirstButNotTwiceWhileAGeneralOneWaits)
{
    m_pPeer->m_messaging.setTimestamping(tClientUdpNetworkInterface::kTimestampingUser);
    openPeer();
    const u32 device = if_nametoindex(m_device.c_str());
    tObserver events(tClientUdpNetworkInterface::kEventPort, device);
    tObserver general(tClientUdpNetworkInterface::kGeneralPort, device);
    ASSERT_TRUE(events.ready() && general.ready());
    const std::vector<u8> sync = makeMessage(kSync, 42, 0);
    send(*m_pPeer, sync, true);
    send(*m_pPeer, makeMessage(kFollowUp, 41, 2, 76), false);
    send(*m_pPeer, makeMessage(kSync, 43, 0), true);
    // A datagram reaches every socket of its group and port at once: when the
    // observers have all, the network layer's sockets hold them as well. They
    // left the peer's device with the configured TTL.
    for (tObserver* pObserver : {&general, &events, &events})
    {
        std::vector<u8> bytes;
        u32 source = 0;
        int ttl = 0;
        ASSERT_TRUE(pObserver->receive(bytes, source, ttl));
        EXPECT_EQ(m_peerAddress, source);
        EXPECT_EQ(kTtl, ttl);
    }

    tStatus status;
    tProtocolDataUnit pdu(status);
    tTimestamp time;
    for (int expected : {42, 41, 43})
    {
        ASSERT_EQ(0, receive(*m_pLocal, pdu));
        EXPECT_EQ(expected, sequenceOf(bytesOf(pdu)));
        EXPECT_EQ(expected != 41, m_pLocal->m_generator.getReceiveTimestamp(pdu, time, status));
    }
    fill(pdu, sync);
    ASSERT_TRUE(m_pPeer->m_generator.getTransmitTimestamp(pdu, time, status));
    EXPECT_EQ(tCountingTimekeeper::kStep + tCountingTimekeeper::kStep / 2,
              time.getNanoseconds() % 1000000000u)
        << "the first two readings of the peer's clock were taken around its send";
}

TEST_F(NetnsMessagingTest, CancelEndsABlockedReceiveAndIsUsedUp)
{
    std::promise<i32> ended;
    std::future<i32> result = ended.get_future();
    std::thread receiver(
        [&]
        {
            tStatus status;
            tProtocolDataUnit pdu(status);
            m_pLocal->m_messaging.receiveMessage(pdu, status);
            ended.set_value(status.getCode());
        });
    // Give the receiver time to block; it ends the same way if it has not.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    tStatus status;
    m_pLocal->m_messaging.cancelReceive(status);
    const bool finished = result.wait_for(kGenerous) == std::future_status::ready;
    if (!finished)
    {
        // Free the thread before failing: a close wakes it.
        m_pLocal->m_messaging.close(status);
    }
    receiver.join();
    ASSERT_TRUE(finished) << "the cancel did not end the receive";
    EXPECT_EQ(nOrvTarn000::kStatusCancelled, result.get());

    send(*m_pPeer, makeMessage(kSync, 51, 0), true);
    EXPECT_EQ(51, sequenceOf(receiveSequence(*m_pLocal, 51))) << "the next receive works";
}

// Padding from its start to its end at a close is the clock's padding test;
// here: which messages of the peer turn it on, and which of ours it changes.
TEST_F(NetnsMessagingTest, PeerFlagPadsOurShortEventMessages)
{
    const std::vector<u8> delayReq = makeMessage(kDelayReq, 62, 1);
    const struct
    {
        std::vector<u8> m_peer;
        bool m_event;
        u32 m_length;
    } kSteps[] = {
        {makeMessage(kLegacySizeFlag | kFollowUp, 71, 2), false, 44},
        {makeMessage(kLegacySizeFlag | kAnnounce, 72, 5, 64), false, 124},
        {makeMessage(kLegacySizeFlag | kSync, 73, 0), true, 124},
    };
    std::vector<u8> arrived;
    tStatus status;
    for (const auto& step : kSteps)
    {
        m_pLocal->m_messaging.close(status);
        openLocal();
        send(*m_pPeer, step.m_peer, step.m_event);
        receiveSequence(*m_pLocal, sequenceOf(step.m_peer));
        send(*m_pLocal, delayReq, true);
        arrived = receiveSequence(*m_pPeer, 62);
        ASSERT_EQ(step.m_length, arrived.size()) << sequenceOf(step.m_peer);
    }
    // Zero-filled, and its transmit time is found by the unpadded message.
    EXPECT_TRUE(std::equal(delayReq.begin(), delayReq.end(), arrived.begin()));
    EXPECT_EQ(std::vector<u8>(80, 0), std::vector<u8>(arrived.begin() + 44, arrived.end()));
    tProtocolDataUnit pdu(status);
    fill(pdu, delayReq);
    tTimestamp sent;
    EXPECT_TRUE(m_pLocal->m_generator.getTransmitTimestamp(pdu, sent, status));
    // General messages and longer event messages go unchanged.
    send(*m_pLocal, makeMessage(kDelayResp, 63, 3, 54), false);
    EXPECT_EQ(54u, receiveSequence(*m_pPeer, 63).size());
    send(*m_pLocal, makeMessage(kSync, 64, 0, 150), true);
    EXPECT_EQ(150u, receiveSequence(*m_pPeer, 64).size());
}

TEST_F(NetnsMessagingTest, GroupDatagramsOfAnotherDeviceDoNotArrive)
{
    const std::string other = environment("ZMPTP_OTHER_DEVICE");
    if (other.empty())
    {
        GTEST_SKIP() << "no second link in this namespace";
    }
    // Someone else joins the group on the other device here, so that the
    // machine accepts the group's datagrams there.
    tObserver observer(tClientUdpNetworkInterface::kEventPort, if_nametoindex(other.c_str()));
    ASSERT_TRUE(observer.ready());

    // The peer sends a Sync over the other link with a socket of its own.
    const std::vector<u8> stray = makeMessage(kSync, 91, 0);
    {
        tNamespaceVisit visit(m_peerNamespace);
        ASSERT_TRUE(visit.entered());
        const int sender = socket(AF_INET, SOCK_DGRAM, 0);
        ASSERT_GE(sender, 0);
        ip_mreqn device = {};
        device.imr_ifindex = static_cast<int>(if_nametoindex(other.c_str()));
        sockaddr_in group = {};
        group.sin_family = AF_INET;
        group.sin_port = htons(tClientUdpNetworkInterface::kEventPort);
        group.sin_addr.s_addr = parseAddress("224.0.1.129");
        EXPECT_EQ(0, setsockopt(sender, IPPROTO_IP, IP_MULTICAST_IF, &device, sizeof(device)));
        EXPECT_EQ(static_cast<ssize_t>(stray.size()),
                  sendto(sender, stray.data(), stray.size(), 0, reinterpret_cast<sockaddr*>(&group),
                         sizeof(group)));
        close(sender);
    }
    std::vector<u8> bytes;
    u32 source = 0;
    int ttl = 0;
    ASSERT_TRUE(observer.receive(bytes, source, ttl));
    ASSERT_EQ(stray, bytes) << "the stray datagram has been delivered";

    send(*m_pPeer, makeMessage(kSync, 92, 0), true);
    tStatus status;
    tProtocolDataUnit pdu(status);
    ASSERT_EQ(0, receive(*m_pLocal, pdu));
    EXPECT_EQ(92, sequenceOf(bytesOf(pdu))) << "only the PTP device's datagrams arrive";
}

TEST_F(NetnsMessagingTest, KernelStampsBelongToTheirOwnMessageAndALateOrLostOneLeavesTheReading)
{
    tEnd local(m_localMac, true);
    local.m_messaging.setTimestamping(tClientUdpNetworkInterface::kTimestampingKernel);
    tStatus status;
    local.m_messaging.open(status);
    ASSERT_TRUE(status.isNotFatal()) << "a veth device offers the kernel's stamps";

    // Each event message with the local clock's readings before and after its send.
    struct tSent
    {
        std::vector<u8> m_bytes;
        tTimestamp m_before;
        tTimestamp m_after;
    };
    std::vector<tSent> sent;
    const auto sendTimed = [&](u8 a_type, u16 a_sequenceId, u8 a_control)
    {
        tSent one = {makeMessage(a_type, a_sequenceId, a_control), tTimestamp(), tTimestamp()};
        local.m_systemClock.getTime(one.m_before, status);
        send(local, one.m_bytes, true);
        local.m_systemClock.getTime(one.m_after, status);
        sent.push_back(one);
    };

    // Sync and Delay_Req of one sequenceId, interleaved.
    for (u16 sequenceId = 200; sequenceId < 203; ++sequenceId)
    {
        sendTimed(kSync, sequenceId, 0);
        sendTimed(kDelayReq, sequenceId, 1);
    }

    {
        // Our event datagrams leave through a token bucket of 100 bytes at
        // 10 kbit/s with room for 100 bytes: of three 86-byte frames the first
        // passes, the second is held back some 60 ms, the third is dropped.
        const std::string on = " dev " + m_device + " parent 1:";
        ASSERT_EQ(0, std::system(("tc -batch - <<'end'\nqdisc add dev " + m_device +
                                  " root handle 1: htb default 1\nclass add" + on +
                                  " classid 1:1 htb rate 1gbit\nclass add" + on +
                                  " classid 1:2 htb rate 1gbit\nqdisc add" + on +
                                  "2 tbf rate 10kbit burst 100 limit 100\nfilter add" + on +
                                  " protocol ip u32 match ip dport 319 0xffff flowid 1:2\nend")
                                     .c_str()));
        const std::shared_ptr<void> removal(
            nullptr,
            [&](void*) { std::system(("tc qdisc del dev " + m_device + " root").c_str()); });
        sendTimed(kSync, 210, 0);
        sendTimed(kDelayReq, 211, 1);
        sendTimed(kSync, 212, 0);
        // Once the peer has the held datagram, its late stamp waits on our
        // socket, ahead of the next one's.
        receiveSequence(*m_pPeer, 211);
    }
    sendTimed(kDelayReq, 213, 1);
    const tClientUdpNetworkInterface::tTimestampCounts counts =
        local.m_messaging.getTimestampCounts();
    EXPECT_EQ(8u, counts.m_kernelTransmit);
    EXPECT_EQ(2u, counts.m_userTransmit) << "the held and the dropped datagram";

    // Every transmit time lies within its own send: a stamp of another
    // message, or one left in the system clock's time, would not.
    for (const tSent& one : sent)
    {
        tProtocolDataUnit pdu(status);
        fill(pdu, one.m_bytes);
        tTimestamp time;
        ASSERT_TRUE(local.m_generator.getTransmitTimestamp(pdu, time, status));
        EXPECT_TRUE(toTimeValue(one.m_before) <= toTimeValue(time) &&
                    toTimeValue(time) <= toTimeValue(one.m_after))
            << sequenceOf(one.m_bytes);
    }
}
