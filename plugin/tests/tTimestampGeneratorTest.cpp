#include "tTimestampGenerator.h"
#include "tPluginTestSupport.h"

#include <gtest/gtest.h>

#include <thread>

using namespace nZelmarPtpPlugin_1_0;
using namespace nZelmarPtpPlugin_1_0::nTest;
using nOrvPTP000::tProtocolDataUnit;
using nOrvPTP000::tTimestamp;
using nOrvTarn000::tStatus;

namespace
{

class TimestampGeneratorTest : public testing::Test
{
protected:
    TimestampGeneratorTest() : m_generator(m_status), m_pdu(m_status) {}

    void recordReceive(const std::vector<u8>& a_bytes, u64 a_seconds)
    {
        fill(m_pdu, a_bytes);
        m_generator.recordReceiveTimestamp(m_pdu, tTimestamp(a_seconds, 0), m_status);
    }
    void recordReceive(u16 a_sequenceId, u64 a_seconds)
    {
        recordReceive(makeMessage(kSync, a_sequenceId, 0), a_seconds);
    }
    // The receive time for this message, or 0 seconds when there is none.
    u64 fetchReceive(const std::vector<u8>& a_bytes)
    {
        fill(m_pdu, a_bytes);
        tTimestamp time(0, 0);
        const bool found = m_generator.getReceiveTimestamp(m_pdu, time, m_status);
        EXPECT_TRUE(m_status.isNotFatal());
        EXPECT_EQ(found, time.getSeconds() != 0);
        EXPECT_EQ(0u, m_pdu.getReadPositionBits()) << "a parse after the lookup starts at 0";
        return time.getSeconds();
    }
    u64 fetchReceive(u16 a_sequenceId) { return fetchReceive(makeMessage(kSync, a_sequenceId, 0)); }

    tStatus m_status;
    tTimestampGenerator m_generator;
    tProtocolDataUnit m_pdu;
};

} // namespace

TEST_F(TimestampGeneratorTest, FetchTakesTheMatchAndEverythingOlderAndTheNewerStay)
{
    EXPECT_EQ(0u, fetchReceive(1)) << "empty";
    recordReceive(1, 100);
    recordReceive(2, 200);
    recordReceive(3, 300);
    recordReceive(3, 301);
    EXPECT_EQ(200u, fetchReceive(2));
    EXPECT_EQ(300u, fetchReceive(3)) << "equal keys come out oldest first";
    EXPECT_EQ(301u, fetchReceive(3));
    recordReceive(4, 400);
    EXPECT_EQ(0u, fetchReceive(1)) << "the older record went with the fetch";
    EXPECT_EQ(0u, fetchReceive(4)) << "a failed fetch empties the FIFO";

    for (u16 sequence = 1; sequence <= 11; ++sequence)
    {
        recordReceive(sequence, 100 * sequence);
    }
    EXPECT_EQ(200u, fetchReceive(2)) << "the second survived the eleventh";
    EXPECT_EQ(0u, fetchReceive(1)) << "the first gave way to it";
    recordReceive(1, 100);
    EXPECT_EQ(100u, fetchReceive(1));
}

TEST_F(TimestampGeneratorTest, KeyIsSenderControlAndSequenceFromTheBytesOfAnyLongEnoughMessage)
{
    std::vector<u8> padded = makeMessage(kDelayReq, 42, 1);
    padded.resize(124, 0);
    // Another clock's message with the same controlField and sequenceId (which
    // the node drops without asking for its time) lends its time to nobody.
    std::vector<u8> otherClock = makeMessage(kSync, 7, 0);
    std::vector<u8> otherPort = otherClock;
    otherClock[20] ^= 0xFF;
    otherPort[29] ^= 0xFF;
    const struct
    {
        std::vector<u8> m_recorded;
        std::vector<u8> m_fetched;
        bool m_found;
    } kCases[] = {
        {makeMessage(kSync, 0x1234, 0), makeMessage(kSync, 0x1234, 1), false},
        {makeMessage(kSync, 0x1234, 0), makeMessage(kSync, 0x3412, 0), false},
        {otherClock, makeMessage(kSync, 7, 0), false},
        {otherPort, makeMessage(kSync, 7, 0), false},
        {makeMessage(kDelayReq, 0xABCD, 1), makeMessage(kSync, 0xABCD, 1), true},
        // Unlisted control values, a management message's 4 among them, all
        // become -1; 5 is listed.
        {makeMessage(kManagement, 5, 4), makeMessage(kSync, 5, 255), true},
        {makeMessage(kManagement, 5, 6), makeMessage(kManagement, 5, 4), true},
        {makeMessage(kSync, 5, 5), makeMessage(kSync, 5, 4), false},
        {padded, makeMessage(kDelayReq, 42, 1), true},
        // 33 bytes reach the controlField; 32 do not.
        {makeMessage(kSync, 8, 0, 33), makeMessage(kSync, 8, 0), true},
        {makeMessage(kSync, 8, 0, 32), makeMessage(kSync, 8, 0), false},
        {makeMessage(kSync, 8, 0), makeMessage(kSync, 8, 0, 32), false},
    };
    for (const auto& testCase : kCases)
    {
        recordReceive(testCase.m_recorded, 100);
        EXPECT_EQ(testCase.m_found ? 100u : 0u, fetchReceive(testCase.m_fetched))
            << &testCase - kCases;
        fetchReceive(testCase.m_recorded);
    }
    // A key too short, or a fatal status, consumes nothing.
    recordReceive(8, 100);
    fetchReceive(makeMessage(kSync, 8, 0, 32));
    tStatus broken;
    ORVTARN_SET_CODE(broken, nOrvTarn000::kStatusInvalidArgument);
    tTimestamp time;
    EXPECT_FALSE(m_generator.getReceiveTimestamp(m_pdu, time, broken));
    EXPECT_EQ(100u, fetchReceive(8));
    m_generator.recordReceiveTimestamp(m_pdu, tTimestamp(10, 0), broken);
    EXPECT_EQ(0u, fetchReceive(8));
}

TEST_F(TimestampGeneratorTest, ReceiveAndTransmitAreSeparate)
{
    fill(m_pdu, makeMessage(kDelayReq, 3, 1));
    m_generator.recordTransmitTimestamp(m_pdu, tTimestamp(10, 0), m_status);
    EXPECT_EQ(0u, fetchReceive(makeMessage(kDelayReq, 3, 1)));
    fill(m_pdu, makeMessage(kDelayReq, 3, 1));
    tTimestamp time;
    EXPECT_TRUE(m_generator.getTransmitTimestamp(m_pdu, time, m_status));
    EXPECT_EQ(10u, time.getSeconds());
}

TEST(TimestampGeneratorThreads, RecordingAndFetchingOnTwoThreadsLoseNothingInOrder)
{
    // The sender records while the node fetches; each fetch asks for the
    // oldest key not yet found, so every record must be found exactly once.
    tStatus status;
    tTimestampGenerator generator(status);
    const u16 kMessages = 2000;
    std::atomic<u16> recorded{0};
    std::thread sender(
        [&]
        {
            tStatus sendStatus;
            tProtocolDataUnit pdu(sendStatus);
            for (u16 sequence = 1; sequence <= kMessages; ++sequence)
            {
                // Stay within the FIFO's room, so that nothing gives way.
                while (sequence - recorded.load() >
                       static_cast<int>(tTimestampGenerator::kCapacity))
                {
                    std::this_thread::yield();
                }
                fill(pdu, makeMessage(kDelayReq, sequence, 1));
                generator.recordTransmitTimestamp(pdu, tTimestamp(sequence, 0), sendStatus);
            }
            EXPECT_TRUE(sendStatus.isNotFatal());
        });
    tProtocolDataUnit pdu(status);
    u16 next = 1;
    while (next <= kMessages)
    {
        fill(pdu, makeMessage(kDelayReq, next, 1));
        tTimestamp time;
        if (generator.getTransmitTimestamp(pdu, time, status))
        {
            ASSERT_EQ(next, time.getSeconds());
            recorded = next;
            ++next;
        }
        else
        {
            std::this_thread::yield();
        }
    }
    sender.join();
    EXPECT_TRUE(status.isNotFatal());
}
