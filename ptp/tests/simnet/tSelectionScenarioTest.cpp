// Many clocks on one segment choosing their grandmaster: losers of class 1 to
// 127 are PASSIVE and all others SLAVE, and the next best takes over when the
// grandmaster goes. The order of the comparison is the comparison's unit
// tests'.
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

} // namespace
