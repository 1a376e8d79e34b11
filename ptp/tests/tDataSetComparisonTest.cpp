// The data set comparison: which of two Announce messages, or the local clock
// and an Announce, names the better master.
#include "orvptp/tDefaultDataSetComparisonAlgorithm.h"

#include "tAnnounceBuilder.h"
#include "tFakeNode.h"

#include <gtest/gtest.h>

using namespace nOrvPTP000;
using nAnnounceTest::clockId;
using nAnnounceTest::tAnnounceBuilder;
using nFakeNode::tFakeNode;
using nOrvTarn000::kStatusInvalidArgument;
using nOrvTarn000::tStatus;

namespace
{

const u16 kPort = 1;

class DataSetComparisonTest : public ::testing::Test
{
protected:
    DataSetComparisonTest() : m_node(clockId(0x50)) {}

    tDataSetComparison compare(const tAnnounceBuilder& a_a, const tAnnounceBuilder& a_b,
                               u16 a_portA = kPort, u16 a_portB = kPort)
    {
        auto pA = a_a.make();
        auto pB = a_b.make();
        return m_comparison.compareForeignMasters(m_node, pA.get(), a_portA, pB.get(), a_portB,
                                                  m_status);
    }

    tDataSetComparison compareLocal(const tAnnounceBuilder& a_foreign, u16 a_port = kPort)
    {
        auto pForeign = a_foreign.make();
        return m_comparison.compareWithLocalClock(m_node, pForeign.get(), a_port, m_status);
    }

    // The same grandmaster, heard from a_sender at a_steps.
    static tAnnounceBuilder path(const tPortIdentity& a_sender, u16 a_steps)
    {
        tAnnounceBuilder builder(clockId(0x01));
        builder.sender(a_sender).stepsRemoved(a_steps);
        return builder;
    }

    tFakeNode m_node;
    tDefaultDataSetComparisonAlgorithm m_comparison;
    tStatus m_status;
};

TEST_F(DataSetComparisonTest, AMissingMessageLosesAndTwoMissingGoToA)
{
    auto pMessage = tAnnounceBuilder(clockId(1)).make();
    EXPECT_EQ(m_comparison.compareForeignMasters(m_node, nullptr, 1, nullptr, 1, m_status),
              kABetter);
    EXPECT_EQ(m_comparison.compareForeignMasters(m_node, pMessage.get(), 1, nullptr, 1, m_status),
              kABetter);
    EXPECT_EQ(m_comparison.compareForeignMasters(m_node, nullptr, 1, pMessage.get(), 1, m_status),
              kBBetter);
    EXPECT_EQ(m_comparison.compareWithLocalClock(m_node, nullptr, 1, m_status), kABetter);
    EXPECT_EQ(m_status.getCode(), 0);
}

// Each field, the smaller value winning, decides only when all fields before
// it are equal: the loser is better in every later field, and that must not count.
TEST_F(DataSetComparisonTest, GrandmastersRankFieldByFieldInOrder)
{
    const tClockIdentity a = clockId(0x02);
    const tClockIdentity b = clockId(0x01);
    // B's smaller identity would win a full tie; every case below is decided earlier.
    EXPECT_EQ(compare(tAnnounceBuilder(a).priority1(127), tAnnounceBuilder(b)
                                                              .priority1(128)
                                                              .clockClass(6)
                                                              .clockAccuracy(0x20)
                                                              .variance(0)
                                                              .priority2(0)),
              kABetter);
    EXPECT_EQ(
        compare(tAnnounceBuilder(a).clockClass(6),
                tAnnounceBuilder(b).clockClass(7).clockAccuracy(0x20).variance(0).priority2(0)),
        kABetter);
    EXPECT_EQ(compare(tAnnounceBuilder(a).clockAccuracy(0x20),
                      tAnnounceBuilder(b).clockAccuracy(0x21).variance(0).priority2(0)),
              kABetter);
    EXPECT_EQ(compare(tAnnounceBuilder(a).variance(0x4000),
                      tAnnounceBuilder(b).variance(0x4001).priority2(0)),
              kABetter);
    EXPECT_EQ(compare(tAnnounceBuilder(a).priority2(9), tAnnounceBuilder(b).priority2(10)),
              kABetter);

    EXPECT_EQ(compare(tAnnounceBuilder(b).priority1(128), tAnnounceBuilder(a).priority1(127)),
              kBBetter);
    EXPECT_EQ(compare(tAnnounceBuilder(b).clockClass(7), tAnnounceBuilder(a).clockClass(6)),
              kBBetter);
    EXPECT_EQ(compare(tAnnounceBuilder(b).variance(0x4001), tAnnounceBuilder(a).variance(0x4000)),
              kBBetter);
    EXPECT_EQ(compare(tAnnounceBuilder(b).priority2(10), tAnnounceBuilder(a).priority2(9)),
              kBBetter);
    EXPECT_EQ(m_status.getCode(), 0);
}

// 0xFE is -2 and 0x80 is -128: as signed values they are smaller than the
// listed accuracies 0x20 to 0x31, and 0x7F.
TEST_F(DataSetComparisonTest, ClockAccuracyComparesAsSigned)
{
    EXPECT_EQ(compare(tAnnounceBuilder(clockId(2)).clockAccuracy(0xFE),
                      tAnnounceBuilder(clockId(1)).clockAccuracy(0x21)),
              kABetter);
    EXPECT_EQ(compare(tAnnounceBuilder(clockId(1)).clockAccuracy(0x7F),
                      tAnnounceBuilder(clockId(2)).clockAccuracy(0x80)),
              kBBetter);
}

TEST_F(DataSetComparisonTest, IdentitySettlesAFullTieAsBytes)
{
    EXPECT_EQ(compare(tAnnounceBuilder(clockId(0x01, 0x10)), tAnnounceBuilder(clockId(0x02))),
              kABetter);
    EXPECT_EQ(compare(tAnnounceBuilder(clockId(0x02)), tAnnounceBuilder(clockId(0x01))), kBBetter);
    // The first octet outweighs the last, and octets are unsigned.
    EXPECT_EQ(compare(tAnnounceBuilder(clockId(0x00, 0x90)), tAnnounceBuilder(clockId(0xFF, 0x10))),
              kBBetter);
}

TEST_F(DataSetComparisonTest, SameGrandmasterMoreThanOneStepApartShorterPathWins)
{
    // Identical senders and ports would be an error if the senders were looked at.
    const tPortIdentity sender(clockId(0x40), 1);
    EXPECT_EQ(compare(path(sender, 3), path(sender, 5)), kABetter);
    EXPECT_EQ(compare(path(sender, 5), path(sender, 3)), kBBetter);
    EXPECT_EQ(compare(path(sender, 65535), path(sender, 0)), kBBetter);
    EXPECT_EQ(compare(path(sender, 0), path(sender, 65535)), kABetter);
    EXPECT_EQ(m_status.getCode(), 0);
}

// One step further: a message that passed through the receiving port
// R = (local clock, port) loses by topology; one that came from a port
// ordered above R simply loses.
TEST_F(DataSetComparisonTest, SameGrandmasterOneStepApartComparesReceiverWithSender)
{
    const tPortIdentity lowSender(clockId(0x40), 7);  // below R = (0x50, 1)
    const tPortIdentity highSender(clockId(0x60), 1); // above R
    const tPortIdentity other(clockId(0x30), 1);

    EXPECT_EQ(compare(path(lowSender, 3), path(other, 2)), kBBetterByTopology);
    EXPECT_EQ(compare(path(highSender, 3), path(other, 2)), kBBetter);
    EXPECT_EQ(compare(path(other, 2), path(lowSender, 3)), kABetterByTopology);
    EXPECT_EQ(compare(path(other, 2), path(highSender, 3)), kABetter);

    // Same clock as R: the port numbers order receiver and sender.
    EXPECT_EQ(compare(path(tPortIdentity(clockId(0x50), 1), 3), path(other, 2), 2, 1),
              kBBetterByTopology);
    EXPECT_EQ(compare(path(other, 2), path(tPortIdentity(clockId(0x50), 3), 3), 1, 2), kABetter);
    EXPECT_EQ(m_status.getCode(), 0);
}

TEST_F(DataSetComparisonTest, AMessageFromTheReceivingPortItselfIsError1)
{
    const tPortIdentity receiver(clockId(0x50), 2);
    const tPortIdentity other(clockId(0x30), 1);

    EXPECT_EQ(compare(path(receiver, 4), path(other, 3), 2, 1), kError1);
    EXPECT_EQ(m_status.getCode(), kStatusInvalidArgument);

    tStatus status;
    auto pA = path(other, 3).make();
    auto pB = path(receiver, 4).make();
    EXPECT_EQ(m_comparison.compareForeignMasters(m_node, pA.get(), 1, pB.get(), 2, status),
              kError1);
    EXPECT_EQ(status.getCode(), kStatusInvalidArgument);
    EXPECT_FALSE(isAPreferred(kError1));
}

TEST_F(DataSetComparisonTest, SameGrandmasterAtEqualStepsSenderThenPortDecides)
{
    const tPortIdentity low(clockId(0x40), 9);
    const tPortIdentity high(clockId(0x41), 1);
    EXPECT_EQ(compare(path(high, 2), path(low, 2)), kBBetterByTopology);
    EXPECT_EQ(compare(path(low, 2), path(high, 2)), kABetterByTopology);
    // Same clock, the sender's port number decides.
    EXPECT_EQ(
        compare(path(tPortIdentity(clockId(0x40), 2), 2), path(tPortIdentity(clockId(0x40), 1), 2)),
        kBBetterByTopology);
    // The same sender heard on two local ports: the lower port wins.
    EXPECT_EQ(compare(path(low, 2), path(low, 2), 2, 1), kBBetterByTopology);
    EXPECT_EQ(compare(path(low, 2), path(low, 2), 1, 2), kABetterByTopology);
    EXPECT_EQ(m_status.getCode(), 0);

    EXPECT_EQ(compare(path(low, 2), path(low, 2), 1, 1), kError2);
    EXPECT_EQ(m_status.getCode(), kStatusInvalidArgument);
    EXPECT_FALSE(isAPreferred(kError2));
}

TEST_F(DataSetComparisonTest, LocalClockRanksByItsDefaultDataSet)
{
    m_node.m_priority1 = 100;
    m_node.m_clockClass = 13;
    m_node.m_clockAccuracy = 0x22;
    m_node.m_offsetScaledLogVariance = 0x5000;
    m_node.m_priority2 = 50;
    const tAnnounceBuilder same = tAnnounceBuilder(clockId(0x01))
                                      .priority1(100)
                                      .clockClass(13)
                                      .clockAccuracy(0x22)
                                      .variance(0x5000)
                                      .priority2(50);

    EXPECT_EQ(compareLocal(tAnnounceBuilder(same).priority1(99).clockClass(255)), kBBetter);
    EXPECT_EQ(compareLocal(tAnnounceBuilder(same).priority1(101).clockClass(0)), kABetter);
    EXPECT_EQ(compareLocal(tAnnounceBuilder(same).clockClass(6)), kBBetter);
    EXPECT_EQ(compareLocal(tAnnounceBuilder(same).clockAccuracy(0xFE)), kBBetter);
    EXPECT_EQ(compareLocal(tAnnounceBuilder(same).clockAccuracy(0x23)), kABetter);
    EXPECT_EQ(compareLocal(tAnnounceBuilder(same).variance(0x4FFF)), kBBetter);
    EXPECT_EQ(compareLocal(tAnnounceBuilder(same).priority2(51)), kABetter);
    // Full tie: the local identity 0x50 against 0x01 and 0x60.
    EXPECT_EQ(compareLocal(same), kBBetter);
    EXPECT_EQ(compareLocal(tAnnounceBuilder(same).grandmaster(clockId(0x60))), kABetter);
    EXPECT_EQ(m_status.getCode(), 0);
}

// A foreign clock that relays this very clock as its grandmaster.
TEST_F(DataSetComparisonTest, LocalClockAgainstItsOwnAnnounceRelayed)
{
    const tClockIdentity local = m_node.m_clockIdentity;
    auto relayed = [&](const tPortIdentity& a_sender, u16 a_steps)
    {
        tAnnounceBuilder builder(local);
        builder.sender(a_sender).stepsRemoved(a_steps).priority1(0);
        return builder;
    };
    // Two or more steps: the local clock wins outright, whatever the sender.
    EXPECT_EQ(compareLocal(relayed(tPortIdentity(clockId(0x60), 1), 2)), kABetter);
    EXPECT_EQ(compareLocal(relayed(tPortIdentity(clockId(0x40), 1), 7)), kABetter);
    // One step: R = (local clock, port) against the sender.
    EXPECT_EQ(compareLocal(relayed(tPortIdentity(clockId(0x40), 1), 1)), kABetterByTopology);
    EXPECT_EQ(compareLocal(relayed(tPortIdentity(clockId(0x60), 1), 1)), kABetter);
    // Zero steps: the clock identities alone.
    EXPECT_EQ(compareLocal(relayed(tPortIdentity(clockId(0x40), 1), 0)), kBBetterByTopology);
    EXPECT_EQ(compareLocal(relayed(tPortIdentity(clockId(0x60), 1), 0)), kABetterByTopology);
    EXPECT_EQ(compareLocal(relayed(tPortIdentity(local, 9), 0)), kABetterByTopology);
    EXPECT_EQ(m_status.getCode(), 0);

    EXPECT_EQ(compareLocal(relayed(tPortIdentity(local, 3), 1), 3), kError1);
    EXPECT_EQ(m_status.getCode(), kStatusInvalidArgument);
}

} // namespace
