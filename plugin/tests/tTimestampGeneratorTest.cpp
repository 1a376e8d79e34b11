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

    void SetUp() override { ASSERT_TRUE(m_status.isNotFatal()); }

    void recordReceive(u8 a_type, u16 a_sequenceId, u8 a_control, u64 a_seconds)
    {
        fill(m_pdu, makeMessage(a_type, a_sequenceId, a_control));
        m_generator.recordReceiveTimestamp(m_pdu, tTimestamp(a_seconds, 0), m_status);
        ASSERT_TRUE(m_status.isNotFatal());
    }

    // The receive time for this key, or 0 seconds when there is none.
    u64 fetchReceive(u8 a_type, u16 a_sequenceId, u8 a_control)
    {
        fill(m_pdu, makeMessage(a_type, a_sequenceId, a_control));
        tTimestamp time(0, 0);
        const bool found = m_generator.getReceiveTimestamp(m_pdu, time, m_status);
        EXPECT_TRUE(m_status.isNotFatal());
        EXPECT_EQ(found, time.getSeconds() != 0);
        return time.getSeconds();
    }

    tStatus m_status;
    tTimestampGenerator m_generator;
    tProtocolDataUnit m_pdu;
};

} // namespace

TEST_F(TimestampGeneratorTest, FetchFromEmptyIsFalseWithCleanStatusAndLeavesTheTime)
{
    fill(m_pdu, makeMessage(kSync, 1, 0));
    tTimestamp time(77, 5);
    EXPECT_FALSE(m_generator.getReceiveTimestamp(m_pdu, time, m_status));
    EXPECT_FALSE(m_generator.getTransmitTimestamp(m_pdu, time, m_status));
    EXPECT_TRUE(m_status.isNotFatal());
    EXPECT_EQ(tTimestamp(77, 5), time);
}

TEST_F(TimestampGeneratorTest, FetchTakesTheMatchAndEverythingOlder)
{
    recordReceive(kSync, 1, 0, 100);
    recordReceive(kSync, 2, 0, 200);
    recordReceive(kSync, 3, 0, 300);
    EXPECT_EQ(200u, fetchReceive(kSync, 2, 0));
    EXPECT_EQ(0u, fetchReceive(kSync, 1, 0)) << "the older record went with the fetch";
    EXPECT_EQ(0u, fetchReceive(kSync, 3, 0)) << "the failed fetch emptied the FIFO";
}

TEST_F(TimestampGeneratorTest, NewerRecordsStayAfterAMatch)
{
    recordReceive(kSync, 1, 0, 100);
    recordReceive(kSync, 2, 0, 200);
    recordReceive(kSync, 3, 0, 300);
    EXPECT_EQ(200u, fetchReceive(kSync, 2, 0));
    EXPECT_EQ(300u, fetchReceive(kSync, 3, 0));
}

TEST_F(TimestampGeneratorTest, TheOldestGivesWayWhenTenAreHeld)
{
    for (u16 sequence = 1; sequence <= 11; ++sequence)
    {
        recordReceive(kSync, sequence, 0, 100 * sequence);
    }
    EXPECT_EQ(0u, fetchReceive(kSync, 1, 0));
    EXPECT_EQ(0u, fetchReceive(kSync, 2, 0)) << "the failed fetch emptied the FIFO";

    for (u16 sequence = 1; sequence <= 11; ++sequence)
    {
        recordReceive(kSync, sequence, 0, 100 * sequence);
    }
    EXPECT_EQ(200u, fetchReceive(kSync, 2, 0)) << "the second survived the eleventh";
    EXPECT_EQ(1100u, fetchReceive(kSync, 11, 0));
}

TEST_F(TimestampGeneratorTest, EqualKeysComeOutOldestFirst)
{
    recordReceive(kSync, 9, 0, 100);
    recordReceive(kSync, 9, 0, 200);
    EXPECT_EQ(100u, fetchReceive(kSync, 9, 0));
    EXPECT_EQ(200u, fetchReceive(kSync, 9, 0));
}

TEST_F(TimestampGeneratorTest, KeyIsControlAndSequenceFromTheBytes)
{
    recordReceive(kSync, 0x1234, 0, 100);
    EXPECT_EQ(0u, fetchReceive(kSync, 0x1234, 1)) << "another control value";

    recordReceive(kSync, 0x1234, 0, 100);
    EXPECT_EQ(0u, fetchReceive(kSync, 0x3412, 0)) << "the sequenceId is big-endian";

    // The messageType is not part of the key.
    recordReceive(kDelayReq, 0xABCD, 1, 300);
    EXPECT_EQ(300u, fetchReceive(kSync, 0xABCD, 1));
}

// Another clock's event message with the same controlField and sequenceId
// (which the node drops without asking for its time) lends its time to nobody.
TEST_F(TimestampGeneratorTest, TheSenderIsPartOfTheKey)
{
    for (u32 offset : {20u, 29u}) // the clock identity, the port number
    {
        std::vector<u8> stranger = makeMessage(kSync, 7, 0);
        stranger[offset] ^= 0xFF;
        fill(m_pdu, stranger);
        m_generator.recordReceiveTimestamp(m_pdu, tTimestamp(100, 0), m_status);
        recordReceive(kSync, 7, 0, 200);
        EXPECT_EQ(200u, fetchReceive(kSync, 7, 0)) << offset;
    }
}

TEST_F(TimestampGeneratorTest, UnlistedControlValuesAllBecomeMinusOne)
{
    // A management message has controlField 4; 6 and 255 are unlisted too.
    recordReceive(kManagement, 5, 4, 100);
    EXPECT_EQ(100u, fetchReceive(kSync, 5, 255));
    recordReceive(kManagement, 5, 6, 200);
    EXPECT_EQ(200u, fetchReceive(kManagement, 5, 4));
    recordReceive(kSync, 5, 5, 300);
    EXPECT_EQ(0u, fetchReceive(kSync, 5, 4)) << "5 is a listed value of its own";
}

TEST_F(TimestampGeneratorTest, PaddingDoesNotChangeTheKey)
{
    fill(m_pdu, makeMessage(kDelayReq, 42, 1));
    const u8 zeros[80] = {};
    m_pdu.writeOctets(zeros, sizeof(zeros), m_status);
    ASSERT_EQ(124u, m_pdu.getLength());
    m_generator.recordTransmitTimestamp(m_pdu, tTimestamp(555, 1), m_status);

    tProtocolDataUnit unpadded(m_status);
    fill(unpadded, makeMessage(kDelayReq, 42, 1));
    tTimestamp time;
    EXPECT_TRUE(m_generator.getTransmitTimestamp(unpadded, time, m_status));
    EXPECT_EQ(tTimestamp(555, 1), time);
}

TEST_F(TimestampGeneratorTest, ReceiveAndTransmitAreSeparate)
{
    fill(m_pdu, makeMessage(kDelayReq, 3, 1));
    m_generator.recordTransmitTimestamp(m_pdu, tTimestamp(10, 0), m_status);
    EXPECT_EQ(0u, fetchReceive(kDelayReq, 3, 1));
    fill(m_pdu, makeMessage(kDelayReq, 3, 1));
    tTimestamp time;
    EXPECT_TRUE(m_generator.getTransmitTimestamp(m_pdu, time, m_status));
    EXPECT_EQ(10u, time.getSeconds());
}

TEST_F(TimestampGeneratorTest, ReadCursorIsBackAtTheStart)
{
    fill(m_pdu, makeMessage(kSync, 3, 0));
    m_generator.recordReceiveTimestamp(m_pdu, tTimestamp(10, 0), m_status);
    EXPECT_EQ(0u, m_pdu.getReadPositionBits());
    tTimestamp time;
    m_generator.getReceiveTimestamp(m_pdu, time, m_status);
    EXPECT_EQ(0u, m_pdu.getReadPositionBits());
    u8 first = 0xFF;
    m_pdu.readUInteger8(first, m_status);
    EXPECT_EQ(kSync, first) << "a parse after the lookup starts at the first byte";
}

TEST_F(TimestampGeneratorTest, DatagramTooShortForTheKeyIsNeitherRecordedNorFound)
{
    // 33 bytes reach the controlField; 32 do not.
    fill(m_pdu, makeMessage(kSync, 8, 0, 32));
    m_generator.recordReceiveTimestamp(m_pdu, tTimestamp(10, 0), m_status);
    EXPECT_TRUE(m_status.isNotFatal());
    tTimestamp time;
    EXPECT_FALSE(m_generator.getReceiveTimestamp(m_pdu, time, m_status));
    EXPECT_TRUE(m_status.isNotFatal());

    recordReceive(kSync, 8, 0, 100);
    fill(m_pdu, makeMessage(kSync, 8, 0, 32));
    EXPECT_FALSE(m_generator.getReceiveTimestamp(m_pdu, time, m_status));
    EXPECT_EQ(100u, fetchReceive(kSync, 8, 0)) << "a short key consumes nothing";

    fill(m_pdu, makeMessage(kSync, 8, 0, 33));
    m_generator.recordReceiveTimestamp(m_pdu, tTimestamp(200, 0), m_status);
    EXPECT_EQ(200u, fetchReceive(kSync, 8, 0));
}

TEST_F(TimestampGeneratorTest, FatalStatusRecordsAndFindsNothing)
{
    tStatus broken;
    ORVTARN_SET_CODE(broken, nOrvTarn000::kStatusInvalidArgument);
    fill(m_pdu, makeMessage(kSync, 4, 0));
    m_generator.recordReceiveTimestamp(m_pdu, tTimestamp(10, 0), broken);
    tTimestamp time;
    EXPECT_FALSE(m_generator.getReceiveTimestamp(m_pdu, time, m_status));

    recordReceive(kSync, 4, 0, 100);
    fill(m_pdu, makeMessage(kSync, 4, 0));
    EXPECT_FALSE(m_generator.getReceiveTimestamp(m_pdu, time, broken));
    EXPECT_EQ(100u, fetchReceive(kSync, 4, 0)) << "the refused fetch consumed nothing";
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
