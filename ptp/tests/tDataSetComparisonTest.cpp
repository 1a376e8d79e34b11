// The data set comparison: which of two Announce messages, or the local clock
// and an Announce, names the better master. The local clock is 0x50 with one
// port R = (0x50, 1).
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

// A grandmaster of identity a_id.
tAnnounceBuilder gm(u8 a_id, u8 a_first = 0x10)
{
    return tAnnounceBuilder(clockId(a_id, a_first));
}

// The grandmaster 0x01, heard from a_sender at a_steps.
tAnnounceBuilder path(u8 a_senderClock, u16 a_senderPort, u16 a_steps)
{
    return gm(0x01)
        .sender(tPortIdentity(clockId(a_senderClock), a_senderPort))
        .stepsRemoved(a_steps);
}

struct tForeignCase
{
    tAnnounceBuilder m_a;
    tAnnounceBuilder m_b;
    tDataSetComparison m_expected;
    u16 m_portA = 1;
    u16 m_portB = 1;
};

class DataSetComparisonTest : public ::testing::Test
{
protected:
    DataSetComparisonTest() : m_node(clockId(0x50)) {}

    void expectForeign(const std::vector<tForeignCase>& a_cases, i32 a_code = 0)
    {
        for (std::size_t i = 0; i < a_cases.size(); ++i)
        {
            auto pA = a_cases[i].m_a.make();
            auto pB = a_cases[i].m_b.make();
            tStatus status;
            EXPECT_EQ(m_comparison.compareForeignMasters(m_node, pA.get(), a_cases[i].m_portA,
                                                         pB.get(), a_cases[i].m_portB, status),
                      a_cases[i].m_expected)
                << "case " << i;
            EXPECT_EQ(status.getCode(), a_code) << "case " << i;
        }
    }

    void expectLocal(const std::vector<std::pair<tAnnounceBuilder, tDataSetComparison>>& a_cases)
    {
        for (std::size_t i = 0; i < a_cases.size(); ++i)
        {
            auto pForeign = a_cases[i].first.make();
            EXPECT_EQ(m_comparison.compareWithLocalClock(m_node, pForeign.get(), 1, m_status),
                      a_cases[i].second)
                << "case " << i;
        }
        EXPECT_EQ(m_status.getCode(), 0);
    }

    tFakeNode m_node;
    tDefaultDataSetComparisonAlgorithm m_comparison;
    tStatus m_status;
};

TEST_F(DataSetComparisonTest, AMissingMessageLosesAndTwoMissingGoToA)
{
    auto pMessage = gm(1).make();
    EXPECT_EQ(m_comparison.compareForeignMasters(m_node, nullptr, 1, nullptr, 1, m_status),
              kABetter);
    EXPECT_EQ(m_comparison.compareForeignMasters(m_node, pMessage.get(), 1, nullptr, 1, m_status),
              kABetter);
    EXPECT_EQ(m_comparison.compareForeignMasters(m_node, nullptr, 1, pMessage.get(), 1, m_status),
              kBBetter);
    EXPECT_EQ(m_comparison.compareWithLocalClock(m_node, nullptr, 1, m_status), kABetter);
    EXPECT_EQ(m_status.getCode(), 0);
}

// Different grandmasters: each field, the smaller value winning, decides only
// when all fields before it are equal; the loser is better in every later
// field, and that must not count. clockAccuracy compares as a signed number
// (0xFE is -2, 0x80 is -128); identities compare as unsigned bytes, the
// first outweighing the last.
TEST_F(DataSetComparisonTest, GrandmastersRankFieldByFieldInOrder)
{
    const tAnnounceBuilder best =
        gm(0x01).priority1(128).clockClass(6).clockAccuracy(0x20).variance(0).priority2(0);
    expectForeign({
        {gm(2).priority1(127), best, kABetter},
        {gm(2).clockClass(6), gm(1).clockClass(7).clockAccuracy(0x20).variance(0).priority2(0),
         kABetter},
        {gm(2).clockAccuracy(0x20), gm(1).clockAccuracy(0x21).variance(0).priority2(0), kABetter},
        {gm(2).variance(0x4000), gm(1).variance(0x4001).priority2(0), kABetter},
        {gm(2).priority2(9), gm(1).priority2(10), kABetter},
        {gm(1).priority1(128), gm(2).priority1(127), kBBetter},
        {gm(1).clockClass(7), gm(2).clockClass(6), kBBetter},
        {gm(1).variance(0x4001), gm(2).variance(0x4000), kBBetter},
        {gm(1).priority2(10), gm(2).priority2(9), kBBetter},
        {gm(2).clockAccuracy(0xFE), gm(1).clockAccuracy(0x21), kABetter},
        {gm(1).clockAccuracy(0x7F), gm(2).clockAccuracy(0x80), kBBetter},
        {gm(0x01, 0x10), gm(0x02), kABetter},
        {gm(0x02), gm(0x01), kBBetter},
        {gm(0x00, 0x90), gm(0xFF), kBBetter},
    });
}

// The same grandmaster: more than one step apart the shorter path wins (the
// senders are not looked at, so identical ones are no error); one step apart
// a message that passed through R loses by topology, one from a port ordered
// above R simply loses; at equal steps the sender, then its port, then the
// receiving port decides.
TEST_F(DataSetComparisonTest, SameGrandmasterByPathAndTopology)
{
    expectForeign({
        {path(0x40, 1, 3), path(0x40, 1, 5), kABetter},
        {path(0x40, 1, 5), path(0x40, 1, 3), kBBetter},
        {path(0x40, 1, 65535), path(0x40, 1, 0), kBBetter},
        {path(0x40, 1, 0), path(0x40, 1, 65535), kABetter},
        {path(0x40, 7, 3), path(0x30, 1, 2), kBBetterByTopology},
        {path(0x60, 1, 3), path(0x30, 1, 2), kBBetter},
        {path(0x30, 1, 2), path(0x40, 7, 3), kABetterByTopology},
        {path(0x30, 1, 2), path(0x60, 1, 3), kABetter},
        {path(0x50, 1, 3), path(0x30, 1, 2), kBBetterByTopology, 2, 1},
        {path(0x30, 1, 2), path(0x50, 3, 3), kABetter, 1, 2},
        {path(0x41, 1, 2), path(0x40, 9, 2), kBBetterByTopology},
        {path(0x40, 9, 2), path(0x41, 1, 2), kABetterByTopology},
        {path(0x40, 2, 2), path(0x40, 1, 2), kBBetterByTopology},
        {path(0x40, 9, 2), path(0x40, 9, 2), kBBetterByTopology, 2, 1},
        {path(0x40, 9, 2), path(0x40, 9, 2), kABetterByTopology, 1, 2},
    });
}

// A message from the receiving port itself, one step further, is error 1;
// the same sender on the same port at equal steps is error 2. Neither
// prefers A.
TEST_F(DataSetComparisonTest, ImpossibleTopologiesAreErrors)
{
    expectForeign({{path(0x50, 2, 4), path(0x30, 1, 3), kError1, 2, 1},
                   {path(0x30, 1, 3), path(0x50, 2, 4), kError1, 1, 2},
                   {path(0x40, 9, 2), path(0x40, 9, 2), kError2}},
                  kStatusInvalidArgument);
    EXPECT_FALSE(isAPreferred(kError1));
    EXPECT_FALSE(isAPreferred(kError2));
}

TEST_F(DataSetComparisonTest, LocalClockRanksByItsDefaultDataSet)
{
    m_node.put<PRIORITY1>(100);
    m_node.put<CLOCK_CLASS>(13);
    m_node.put<CLOCK_ACCURACY>(0x22);
    m_node.put<OFFSET_SCALED_LOG_VARIANCE>(0x5000);
    m_node.put<PRIORITY2>(50);
    const tAnnounceBuilder same =
        gm(0x01).priority1(100).clockClass(13).clockAccuracy(0x22).variance(0x5000).priority2(50);
    expectLocal({
        {tAnnounceBuilder(same).priority1(99).clockClass(255), kBBetter},
        {tAnnounceBuilder(same).priority1(101).clockClass(0), kABetter},
        {tAnnounceBuilder(same).clockClass(6), kBBetter},
        {tAnnounceBuilder(same).clockAccuracy(0xFE), kBBetter},
        {tAnnounceBuilder(same).clockAccuracy(0x23), kABetter},
        {tAnnounceBuilder(same).variance(0x4FFF), kBBetter},
        {tAnnounceBuilder(same).priority2(51), kABetter},
        // Full tie: the local identity 0x50 against 0x01 and 0x60.
        {same, kBBetter},
        {tAnnounceBuilder(same).grandmaster(clockId(0x60)), kABetter},
    });
}

// A foreign clock that relays this very clock as its grandmaster: two or more
// steps and the local clock wins outright; one step and R is compared with
// the sender; zero steps and the clock identities alone decide.
TEST_F(DataSetComparisonTest, LocalClockAgainstItsOwnAnnounceRelayed)
{
    const tClockIdentity local = m_node.getClockIdentity();
    auto relayed = [&](const tPortIdentity& a_sender, u16 a_steps)
    { return tAnnounceBuilder(local).sender(a_sender).stepsRemoved(a_steps).priority1(0); };
    expectLocal({
        {relayed(tPortIdentity(clockId(0x60), 1), 2), kABetter},
        {relayed(tPortIdentity(clockId(0x40), 1), 7), kABetter},
        {relayed(tPortIdentity(clockId(0x40), 1), 1), kABetterByTopology},
        {relayed(tPortIdentity(clockId(0x60), 1), 1), kABetter},
        {relayed(tPortIdentity(clockId(0x40), 1), 0), kBBetterByTopology},
        {relayed(tPortIdentity(clockId(0x60), 1), 0), kABetterByTopology},
        {relayed(tPortIdentity(local, 9), 0), kABetterByTopology},
    });
    auto pOwn = relayed(tPortIdentity(local, 3), 1).make();
    EXPECT_EQ(m_comparison.compareWithLocalClock(m_node, pOwn.get(), 3, m_status), kError1);
    EXPECT_EQ(m_status.getCode(), kStatusInvalidArgument);
}

} // namespace
