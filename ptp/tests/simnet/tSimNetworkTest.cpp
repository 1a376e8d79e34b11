// The simulated segment on its own, without nodes: who hears what and when,
// the exactness of the timestamps, loss, disconnection, cancellation, the
// in-flight hook and the simulated clocks.
#include "tSimNetwork.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

using namespace nSimNet;
using nOrvPTP000::tProtocolDataUnit;
using nOrvPTP000::tTimestamp;
using nOrvTarn000::tStatus;

namespace
{

const std::chrono::seconds kBound(5);

// A datagram of 44 bytes with a header that the network recognises.
std::vector<u8> makeDatagram(u8 a_messageType, u16 a_sequenceId, u8 a_sender)
{
    std::vector<u8> bytes(44, 0);
    bytes[0] = a_messageType;
    bytes[1] = 2;
    bytes[kSourcePortIdentityOffset + 7] = a_sender;
    bytes[kSourcePortIdentityOffset + 9] = 1;
    bytes[kSequenceIdOffset] = static_cast<u8>(a_sequenceId >> 8);
    bytes[kSequenceIdOffset + 1] = static_cast<u8>(a_sequenceId);
    bytes[kControlFieldOffset] = a_messageType == 0 ? 0 : (a_messageType == 1 ? 1 : 5);
    return bytes;
}

class tPdu
{
public:
    tPdu() : m_pdu(m_status) {}
    explicit tPdu(const std::vector<u8>& a_bytes) : m_pdu(m_status)
    {
        m_pdu.writeOctets(a_bytes.data(), static_cast<u32>(a_bytes.size()), m_status);
    }
    tProtocolDataUnit& get() { return m_pdu; }
    std::vector<u8> bytes() const
    {
        return std::vector<u8>(m_pdu.getData(), m_pdu.getData() + m_pdu.getLength());
    }

private:
    tStatus m_status;
    tProtocolDataUnit m_pdu;
};

class SimNetworkTest : public ::testing::Test
{
protected:
    void openAll()
    {
        for (u32 id = 0; id < m_network.getEndpointCount(); ++id)
        {
            tStatus status;
            m_network.getMessaging(id)->open(status);
            ASSERT_EQ(status.getCode(), 0);
        }
    }
    void send(u32 a_from, const std::vector<u8>& a_bytes, bool a_event)
    {
        tPdu pdu(a_bytes);
        tStatus status;
        if (a_event)
        {
            m_network.getMessaging(a_from)->sendEventMessage(pdu.get(), status);
        }
        else
        {
            m_network.getMessaging(a_from)->sendGeneralMessage(pdu.get(), status);
        }
        ASSERT_EQ(status.getCode(), 0);
    }
    std::vector<u8> receive(u32 a_at)
    {
        tPdu pdu;
        tStatus status;
        m_network.getMessaging(a_at)->receiveMessage(pdu.get(), status);
        EXPECT_EQ(status.getCode(), 0);
        return pdu.bytes();
    }
    bool receiveTime(u32 a_at, const std::vector<u8>& a_bytes, tTimestamp& a_rTime)
    {
        tPdu pdu(a_bytes);
        tStatus status;
        return m_network.getTimestamps(a_at)->getReceiveTimestamp(pdu.get(), a_rTime, status);
    }
    bool transmitTime(u32 a_at, const std::vector<u8>& a_bytes, tTimestamp& a_rTime)
    {
        tPdu pdu(a_bytes);
        tStatus status;
        return m_network.getTimestamps(a_at)->getTransmitTimestamp(pdu.get(), a_rTime, status);
    }

    tSimNetwork m_network;
};

TEST_F(SimNetworkTest, EveryOtherOpenEndpointHearsADatagramWithExactTimes)
{
    const u32 a = m_network.addEndpoint(0);
    const u32 b = m_network.addEndpoint(1000);
    const u32 c = m_network.addEndpoint(-5000);
    m_network.setDelay(a, b, 700);
    m_network.setDelay(a, c, 1100);
    openAll();

    const std::vector<u8> sync = makeDatagram(0, 7, 1);
    send(a, sync, true);
    EXPECT_EQ(receive(b), sync);
    EXPECT_EQ(receive(c), sync);
    EXPECT_EQ(m_network.getPendingCount(a), 0u);

    tTimestamp sent, atB, atC;
    ASSERT_TRUE(transmitTime(a, sync, sent));
    ASSERT_TRUE(receiveTime(b, sync, atB));
    ASSERT_TRUE(receiveTime(c, sync, atC));
    // The delay plus the difference of the two clocks, to the nanosecond.
    EXPECT_EQ(toNanoseconds(atB) - toNanoseconds(sent), 700 + 1000);
    EXPECT_EQ(toNanoseconds(atC) - toNanoseconds(sent), 1100 - 5000);
    EXPECT_EQ(m_network.getSentCount(a, 0), 1u);
    EXPECT_EQ(m_network.getDeliveredCount(b, 0), 1u);
    EXPECT_EQ(m_network.getDeliveredCount(a, 0), 0u);
}

TEST_F(SimNetworkTest, TimesAreKeptForEventMessagesOnlyAndFetchedOnce)
{
    const u32 a = m_network.addEndpoint();
    const u32 b = m_network.addEndpoint();
    openAll();
    const std::vector<u8> announce = makeDatagram(11, 3, 1);
    const std::vector<u8> delayReq = makeDatagram(1, 3, 1);
    send(a, announce, false);
    send(a, delayReq, true);
    EXPECT_EQ(receive(b), announce);
    EXPECT_EQ(receive(b), delayReq);

    tTimestamp time;
    EXPECT_FALSE(receiveTime(b, announce, time));
    EXPECT_FALSE(transmitTime(a, announce, time));
    EXPECT_TRUE(receiveTime(b, delayReq, time));
    EXPECT_FALSE(receiveTime(b, delayReq, time));
    EXPECT_TRUE(transmitTime(a, delayReq, time));
    EXPECT_FALSE(transmitTime(a, delayReq, time));
}

TEST_F(SimNetworkTest, RecordsOfTwoSendersWithOneSequenceIdStayApart)
{
    const u32 a = m_network.addEndpoint(0);
    const u32 b = m_network.addEndpoint(0);
    const u32 c = m_network.addEndpoint(0);
    m_network.setDelay(a, c, 100);
    m_network.setDelay(b, c, 300);
    openAll();
    const std::vector<u8> fromA = makeDatagram(1, 9, 1);
    const std::vector<u8> fromB = makeDatagram(1, 9, 2);
    send(a, fromA, true);
    send(b, fromB, true);
    receive(c);
    receive(c);

    tTimestamp sentA, sentB, atC;
    ASSERT_TRUE(transmitTime(a, fromA, sentA));
    ASSERT_TRUE(transmitTime(b, fromB, sentB));
    // Asked for in the other order, each still gets its own.
    ASSERT_TRUE(receiveTime(c, fromB, atC));
    EXPECT_EQ(toNanoseconds(atC) - toNanoseconds(sentB), 300);
    ASSERT_TRUE(receiveTime(c, fromA, atC));
    EXPECT_EQ(toNanoseconds(atC) - toNanoseconds(sentA), 100);
}

TEST_F(SimNetworkTest, ADatagramArrivesNoEarlierThanItsDelay)
{
    const u32 a = m_network.addEndpoint();
    const u32 b = m_network.addEndpoint();
    m_network.setDelay(a, b, 30000000);
    openAll();
    const i64 before = m_network.now();
    send(a, makeDatagram(0, 1, 1), true);
    receive(b);
    EXPECT_GE(m_network.now(), before + 30000000);
}

TEST_F(SimNetworkTest, ArrivalsAreOrderedByArrivalTimeAndOneSendersOrderIsKept)
{
    const u32 a = m_network.addEndpoint();
    const u32 b = m_network.addEndpoint();
    const u32 c = m_network.addEndpoint();
    m_network.setDelay(a, c, 10000000000LL);
    openAll();
    const std::vector<u8> slow = makeDatagram(11, 1, 1);
    send(a, slow, false);
    const std::vector<u8> first = makeDatagram(11, 1, 2);
    const std::vector<u8> second = makeDatagram(11, 2, 2);
    send(b, first, false);
    send(b, second, false);
    EXPECT_EQ(receive(c), first);
    EXPECT_EQ(receive(c), second);
    EXPECT_EQ(m_network.getPendingCount(c), 1u);
}

TEST_F(SimNetworkTest, LossDropsCopiesPerDirection)
{
    const u32 a = m_network.addEndpoint();
    const u32 b = m_network.addEndpoint();
    const u32 c = m_network.addEndpoint();
    openAll();
    m_network.setLoss(a, b, 1.0);
    m_network.setLoss(a, c, 0.5);
    for (u16 i = 0; i < 200; ++i)
    {
        send(a, makeDatagram(11, i, 1), false);
    }
    send(b, makeDatagram(11, 0, 2), false);
    EXPECT_EQ(m_network.getPendingCount(b), 0u);
    EXPECT_GT(m_network.getPendingCount(c), 50u);
    EXPECT_LT(m_network.getPendingCount(c), 151u);
    EXPECT_EQ(m_network.getPendingCount(a), 1u);
}

TEST_F(SimNetworkTest, ADisconnectedEndpointNeitherHearsNorIsHeard)
{
    const u32 a = m_network.addEndpoint();
    const u32 b = m_network.addEndpoint();
    openAll();
    m_network.setConnected(a, false);
    send(a, makeDatagram(11, 1, 1), false);
    send(b, makeDatagram(11, 1, 2), false);
    EXPECT_EQ(m_network.getPendingCount(a), 0u);
    EXPECT_EQ(m_network.getPendingCount(b), 0u);
    EXPECT_EQ(m_network.getSentCount(a, 11), 1u);

    m_network.setConnected(a, true);
    send(b, makeDatagram(11, 2, 2), false);
    EXPECT_EQ(m_network.getPendingCount(a), 1u);
}

TEST_F(SimNetworkTest, AClosedEndpointHearsNothingAndCannotSend)
{
    const u32 a = m_network.addEndpoint();
    const u32 b = m_network.addEndpoint();
    openAll();
    send(a, makeDatagram(11, 1, 1), false);
    tStatus status;
    m_network.getMessaging(b)->close(status);
    EXPECT_FALSE(m_network.isOpen(b));
    EXPECT_EQ(m_network.getPendingCount(b), 0u);
    send(a, makeDatagram(11, 2, 1), false);
    EXPECT_EQ(m_network.getPendingCount(b), 0u);

    tPdu pdu(makeDatagram(11, 3, 2));
    m_network.getMessaging(b)->sendGeneralMessage(pdu.get(), status);
    EXPECT_EQ(status.getCode(), nOrvTarn000::kStatusInternalError);

    tStatus reopen;
    m_network.getMessaging(b)->open(reopen);
    EXPECT_EQ(m_network.getOpenCount(b), 2u);
    send(a, makeDatagram(11, 4, 1), false);
    EXPECT_EQ(sequenceIdOf(receive(b)), 4);
}

TEST_F(SimNetworkTest, CancelEndsAWaitingReceive)
{
    const u32 a = m_network.addEndpoint();
    const u32 b = m_network.addEndpoint();
    openAll();
    std::promise<i32> result;
    std::future<i32> done = result.get_future();
    std::thread receiver(
        [this, b, &result]
        {
            tPdu pdu;
            tStatus status;
            m_network.getMessaging(b)->receiveMessage(pdu.get(), status);
            result.set_value(status.getCode());
        });
    ASSERT_TRUE(m_network.waitUntil([this, b] { return m_network.isReceiving(b); }, kBound));
    tStatus status;
    m_network.getMessaging(b)->cancelReceive(status);
    const bool ended = done.wait_for(kBound) == std::future_status::ready;
    if (!ended)
    {
        // Let the thread go before failing, so that the test can end.
        send(a, makeDatagram(11, 1, 1), false);
    }
    receiver.join();
    ASSERT_TRUE(ended);
    EXPECT_EQ(done.get(), nOrvTarn000::kStatusCancelled);
    EXPECT_FALSE(m_network.isReceiving(b));
}

TEST_F(SimNetworkTest, CancelBeforeAReceiveEndsItAtOnceAndIsSpent)
{
    const u32 a = m_network.addEndpoint();
    const u32 b = m_network.addEndpoint();
    openAll();
    send(a, makeDatagram(11, 4, 1), false);
    tStatus status;
    m_network.getMessaging(b)->cancelReceive(status);
    tPdu pdu;
    m_network.getMessaging(b)->receiveMessage(pdu.get(), status);
    EXPECT_EQ(status.getCode(), nOrvTarn000::kStatusCancelled);
    EXPECT_EQ(pdu.get().getLength(), 0u);

    // The next receive takes the datagram that waited.
    EXPECT_EQ(sequenceIdOf(receive(b)), 4);
}

TEST_F(SimNetworkTest, AReceiveCanBeMadeToFailOnce)
{
    const u32 a = m_network.addEndpoint();
    const u32 b = m_network.addEndpoint();
    openAll();
    m_network.failNextReceive(b);
    tPdu pdu;
    tStatus status;
    m_network.getMessaging(b)->receiveMessage(pdu.get(), status);
    EXPECT_EQ(status.getCode(), nOrvTarn000::kStatusSystemError);
    send(a, makeDatagram(11, 6, 1), false);
    EXPECT_EQ(sequenceIdOf(receive(b)), 6);
}

TEST_F(SimNetworkTest, TheHookEditsDelaysAndDropsSingleCopies)
{
    const u32 a = m_network.addEndpoint();
    const u32 b = m_network.addEndpoint();
    const u32 c = m_network.addEndpoint();
    m_network.setDelay(a, b, 1000);
    openAll();
    m_network.setInFlightHook(
        [b, c](tInFlight& a_rCopy)
        {
            if (a_rCopy.m_to == b)
            {
                setCorrectionField(a_rCopy.m_bytes, 250 * 65536 + 0x8000);
                a_rCopy.m_extraDelayNs = 250;
            }
            a_rCopy.m_drop = a_rCopy.m_to == c;
        });
    const std::vector<u8> sync = makeDatagram(0, 1, 1);
    send(a, sync, true);
    const std::vector<u8> atB = receive(b);
    EXPECT_EQ(correctionFieldOf(atB), 250 * 65536 + 0x8000);
    EXPECT_EQ(correctionFieldOf(sync), 0);
    EXPECT_EQ(m_network.getPendingCount(c), 0u);

    tTimestamp sent, arrived;
    ASSERT_TRUE(transmitTime(a, sync, sent));
    ASSERT_TRUE(receiveTime(b, atB, arrived));
    EXPECT_EQ(toNanoseconds(arrived) - toNanoseconds(sent), 1250);
}

TEST_F(SimNetworkTest, ClocksFollowOffsetRateAndSteps)
{
    const u32 a = m_network.addEndpoint(-300, 1000);
    const i64 epoch = kClockEpochSeconds * kNanosecondsPerSecond;
    EXPECT_EQ(toNanoseconds(m_network.clockAt(a, 0)), epoch - 300);
    EXPECT_EQ(toNanoseconds(m_network.clockAt(a, 2000000000)), epoch - 300 + 2000000000 + 2000);
    EXPECT_EQ(toNanoseconds(m_network.clockAt(a, 1500)), epoch - 300 + 1500);

    nOrvPTP000::iPTPTimekeeper* pTimekeeper = m_network.getTimekeeper(a);
    tStatus status;
    tTimestamp first, second;
    pTimekeeper->getTime(first, status);
    pTimekeeper->getTime(second, status);
    EXPECT_LE(toNanoseconds(first), toNanoseconds(second));

    const tTimestamp target(kClockEpochSeconds + 3600, 5);
    pTimekeeper->stepTime(target, status);
    tTimestamp after;
    pTimekeeper->getTime(after, status);
    EXPECT_GE(toNanoseconds(after), toNanoseconds(target));
    EXPECT_LT(toNanoseconds(after), toNanoseconds(target) + kNanosecondsPerSecond);
    ASSERT_EQ(m_network.getSteps(a).size(), 1u);
    EXPECT_EQ(m_network.getSteps(a)[0], target);

    pTimekeeper->addSample(tTimestamp(1, 2), tTimestamp(3, 4), status);
    ASSERT_EQ(m_network.getSamples(a).size(), 1u);
    EXPECT_EQ(m_network.getSamples(a)[0].m_localTime, tTimestamp(3, 4));
    EXPECT_EQ(status.getCode(), 0);

    EXPECT_FALSE(pTimekeeper->isPortStateHeld());
    m_network.setPortStateHeld(a, true);
    EXPECT_TRUE(pTimekeeper->isPortStateHeld());
}

TEST_F(SimNetworkTest, WaitingEndsAtAChangeOrAtItsBound)
{
    EXPECT_FALSE(m_network.waitUntil([] { return false; }, std::chrono::milliseconds(20)));
    std::atomic<bool> flag(false);
    std::thread other(
        [this, &flag]
        {
            flag = true;
            m_network.touch();
        });
    EXPECT_TRUE(m_network.waitUntil([&flag] { return flag.load(); }, kBound));
    other.join();
}

TEST(SimNetworkHelpersTest, HeaderFieldsAndTimesConvert)
{
    std::vector<u8> bytes = makeDatagram(9, 0xABCD, 1);
    EXPECT_EQ(messageTypeOf(bytes), 9);
    EXPECT_EQ(sequenceIdOf(bytes), 0xABCD);
    setCorrectionField(bytes, -1);
    EXPECT_EQ(correctionFieldOf(bytes), -1);
    EXPECT_EQ(bytes[kCorrectionFieldOffset], 0xFF);
    EXPECT_EQ(messageTypeOf(std::vector<u8>(10, 0)), 0xFF);
    EXPECT_EQ(toTimestamp(1500000000), tTimestamp(1, 500000000));
    EXPECT_EQ(toNanoseconds(tTimestamp(2, 7)), 2000000007);
    EXPECT_EQ(toTimestamp(toNanoseconds(tTimestamp(kClockEpochSeconds, 999999999))),
              tTimestamp(kClockEpochSeconds, 999999999));
}

} // namespace
