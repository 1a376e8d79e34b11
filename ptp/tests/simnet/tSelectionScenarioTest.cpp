// Many clocks on one segment choosing their grandmaster: priority1,
// clockClass, clockAccuracy, offsetScaledLogVariance, priority2 and the
// identity decide in this order, losers of class 1 to 127 are PASSIVE and all
// others SLAVE, and the next best takes over when the grandmaster goes.
#include "tScenario.h"

using namespace nSimNet;
using namespace nOrvPTP000;

namespace
{

typedef tScenario SelectionScenarioTest;

tNodeSettings withPriority1(u8 a_priority1)
{
    tNodeSettings settings;
    settings.m_priority1 = a_priority1;
    return settings;
}

TEST_F(SelectionScenarioTest, ManyClocksSettleIntoMasterPassiveAndSlave)
{
    // priority1 beats every quality; among the rest, clocks of class 1 to 127
    // that lose to the grandmaster are PASSIVE, the others SLAVE.
    tNodeSettings grandmaster = withPriority1(127);
    tNodeSettings primary;
    primary.m_clockClass = 6;
    primary.m_clockAccuracy = 0x20;
    primary.m_offsetScaledLogVariance = 0x4E5D;
    tNodeSettings secondary = primary;
    secondary.m_clockClass = 13;
    tNodeSettings ordinary;
    ordinary.m_clockClass = 135;
    tNodeSettings plain;

    tSimNode& gm = addClock(20, grandmaster);
    tSimNode& first = addClock(1, primary);
    tSimNode& second = addClock(2, secondary);
    tSimNode& third = addClock(3, ordinary);
    tSimNode& fourth = addClock(4, plain);
    startAll();
    ASSERT_TRUE(settlesInto({{&gm, kPortStateMaster},
                             {&first, kPortStatePassive},
                             {&second, kPortStatePassive},
                             {&third, kPortStateSlave, &gm},
                             {&fourth, kPortStateSlave, &gm}}));

    // A passive clock sends nothing, and a slave nothing but its Delay_Req
    // messages, which all clocks hear and only the grandmaster answers.
    const std::vector<tSimNode*> clocks = all();
    std::vector<size_t> sent, requests;
    for (tSimNode* pNode : clocks)
    {
        sent.push_back(m_network.getSent(pNode->getId()).size());
        requests.push_back(m_network.getSentCount(pNode->getId(), kDelayReq));
    }
    EXPECT_TRUE(staysSettledFor(gm, 6));
    for (size_t i = 1; i < clocks.size(); ++i)
    {
        const u32 id = clocks[i]->getId();
        const bool slave = clocks[i]->getState() == kPortStateSlave;
        EXPECT_EQ(m_network.getSent(id).size() - sent[i],
                  slave ? m_network.getSentCount(id, kDelayReq) - requests[i] : 0u);
    }
    // Without the grandmaster the best passive clock takes over; the other
    // class-13 clock stays passive behind it.
    const size_t before = first.getTransitionCount();
    stop(gm);
    ASSERT_TRUE(settlesInto({{&first, kPortStateMaster},
                             {&second, kPortStatePassive},
                             {&third, kPortStateSlave, &first},
                             {&fourth, kPortStateSlave, &first}}));
    EXPECT_EQ(fourth.getGrandmasterIdentity(), first.getIdentity());
    EXPECT_TRUE(staysSettledFor(first, 6));
    // It dropped the silent grandmaster, which would silence it again otherwise.
    EXPECT_TRUE(movedOnce(first, before, kPortStatePassive, kPortStateMaster));
}

TEST_F(SelectionScenarioTest, GrandmastersFollowOneAnotherInTheOrderOfTheComparison)
{
    // Each clock beats all after it by exactly one attribute, in the order in
    // which the comparison tries them; the identities run the other way, so
    // that only the last pair is decided by identity. The accuracies stay
    // below 0x80, where the signed comparison of accuracy agrees with the
    // order of the accuracy codes.
    tNodeSettings plain;
    plain.m_clockAccuracy = 0x31;
    tNodeSettings byPriority1 = plain;
    byPriority1.m_priority1 = 100;
    tNodeSettings byClass = plain;
    byClass.m_clockClass = 187;
    tNodeSettings byAccuracy = plain;
    byAccuracy.m_clockAccuracy = 0x21;
    tNodeSettings byVariance = plain;
    byVariance.m_offsetScaledLogVariance = 0x4000;
    tNodeSettings byPriority2 = plain;
    byPriority2.m_priority2 = 100;

    std::vector<tSimNode*> ranking = {&addClock(10, byPriority1), &addClock(9, byClass),
                                      &addClock(8, byAccuracy),   &addClock(7, byVariance),
                                      &addClock(6, byPriority2),  &addClock(4, plain),
                                      &addClock(5, plain)};
    startAll();

    for (size_t leader = 0; leader + 1 < ranking.size(); ++leader)
    {
        std::vector<tExpect> expected = {{ranking[leader], kPortStateMaster}};
        for (size_t i = leader + 1; i < ranking.size(); ++i)
        {
            expected.push_back({ranking[i], kPortStateSlave, ranking[leader]});
        }
        ASSERT_TRUE(settlesInto(expected)) << "with grandmaster number " << leader;
        stop(*ranking[leader]);
    }
    ASSERT_TRUE(settlesInto({{ranking.back(), kPortStateMaster}}));
}

} // namespace
