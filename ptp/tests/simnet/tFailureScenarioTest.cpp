// Clocks that go away or fail and come back, and networks that break: the
// next best clock takes over after the announce receipt timeout, and a clock
// that returns finds its place again.
#include "tScenario.h"

using namespace nSimNet;
using namespace nOrvPTP000;

namespace
{

class FailureScenarioTest : public tScenario
{
protected:
    // Settles the three clocks, ranked by priority1, with the first as grandmaster.
    void settleThree()
    {
        startAll();
        ASSERT_TRUE(settlesInto({{&m_first, kPortStateMaster},
                                 {&m_second, kPortStateSlave, &m_first},
                                 {&m_third, kPortStateSlave, &m_first}}));
    }

    static tNodeSettings settingsWith(u8 a_priority1)
    {
        tNodeSettings settings;
        settings.m_priority1 = a_priority1;
        return settings;
    }

    tSimNode& m_first = addClock(3, settingsWith(100));
    tSimNode& m_second = addClock(2, settingsWith(110));
    tSimNode& m_third = addClock(1, settingsWith(120));
};

TEST_F(FailureScenarioTest, AStoppedMasterIsReplacedByTheNextBestAndTakesOverOnItsReturn)
{
    settleThree();
    const size_t before = m_second.getTransitionCount();
    stop(m_first);
    ASSERT_TRUE(settlesInto({{&m_first, kPortStateStopped},
                             {&m_second, kPortStateMaster},
                             {&m_third, kPortStateSlave, &m_second}}));
    EXPECT_TRUE(staysSettledFor(m_second, 6));
    // The second clock left SLAVE for MASTER on its own receipt timeout, and
    // dropped the silent master, which it would follow again otherwise.
    EXPECT_TRUE(movedOnce(m_second, before, kPortStateSlave, kPortStateMaster));
    EXPECT_EQ(m_third.getGrandmasterIdentity(), m_second.getIdentity());

    start(m_first);
    ASSERT_TRUE(settlesInto({{&m_first, kPortStateMaster},
                             {&m_second, kPortStateSlave, &m_first},
                             {&m_third, kPortStateSlave, &m_first}}));
    EXPECT_TRUE(staysSettledFor(m_first, 6));
}

TEST_F(FailureScenarioTest, AFaultyMasterIsReplacedAndReturnsThroughInitializing)
{
    settleThree();
    const size_t before = m_first.getTransitionCount();
    tStatus status;
    EXPECT_TRUE(m_first.node().signalFaultDetected(status));
    ASSERT_TRUE(settlesInto({{&m_first, kPortStateFaulty},
                             {&m_second, kPortStateMaster},
                             {&m_third, kPortStateSlave, &m_second}}));
    // A faulty port sends nothing and does not come back by itself.
    const u64 announces = m_network.getSentCount(m_first.getId(), kAnnounce);
    EXPECT_FALSE(reachesWithinQuietBound(m_first, kPortStateInitializing));
    EXPECT_EQ(m_network.getSentCount(m_first.getId(), kAnnounce), announces);

    EXPECT_TRUE(m_first.node().signalFaultCleared(status));
    ASSERT_TRUE(m_first.waitForState(kPortStateInitializing, kSettleBound));
    // The checks come from outside: it waits there for its settings.
    EXPECT_FALSE(reachesWithinQuietBound(m_first, kPortStateListening));
    m_first.completeInitialization(status);
    ASSERT_EQ(status.getCode(), 0);
    ASSERT_TRUE(settlesInto({{&m_first, kPortStateMaster},
                             {&m_second, kPortStateSlave, &m_first},
                             {&m_third, kPortStateSlave, &m_first}}));

    const std::vector<tTransition> transitions = m_first.getTransitions();
    ASSERT_GE(transitions.size(), before + 4);
    EXPECT_EQ(transitions[before].m_oldState, kPortStateMaster);
    EXPECT_EQ(transitions[before].m_newState, kPortStateFaulty);
    EXPECT_EQ(transitions[before + 1].m_newState, kPortStateInitializing);
    EXPECT_EQ(transitions[before + 2].m_newState, kPortStateListening);
    // The settings written after the re-initialisation are in force again.
    EXPECT_EQ(m_first.node().readProperty<PRIORITY1>(status), 100);
}

// A broken network makes a port FAULTY. Without automatic recovery it stays
// so, closed, until told. With it, the recovery brings the port back even
// when closing the network failed too; its timers stopped all the same.
TEST_F(FailureScenarioTest, ABrokenNetworkMakesThePortFaultyUntilClearedOrRecovered)
{
    settleThree();
    const u32 opened = m_network.getOpenCount(m_third.getId());
    m_network.failNextReceive(m_third.getId());
    ASSERT_TRUE(m_third.waitForState(kPortStateFaulty, kSettleBound));
    EXPECT_FALSE(reachesWithinQuietBound(m_third, kPortStateInitializing));
    EXPECT_FALSE(m_network.isOpen(m_third.getId()));
    tStatus status;
    EXPECT_TRUE(m_third.node().signalFaultCleared(status));
    ASSERT_TRUE(m_third.waitForState(kPortStateInitializing, kSettleBound));
    EXPECT_EQ(m_network.getOpenCount(m_third.getId()), opened + 1);
    m_third.completeInitialization(status);

    m_second.node().writeProperty<AUTOMATIC_RECOVERY>(true, status);
    const size_t before = m_second.getTransitionCount();
    m_network.failNextClose(m_second.getId());
    m_network.failNextReceive(m_second.getId());
    // The recovery timer fires at once, so FAULTY may be brief.
    ASSERT_TRUE(m_second.waitForEntry(kPortStateFaulty, before, kSettleBound));
    ASSERT_TRUE(m_second.waitForState(kPortStateInitializing, kSettleBound));
    const std::vector<tTransition> transitions = m_second.getTransitions();
    EXPECT_EQ(transitions[before].m_oldState, kPortStateSlave);
    EXPECT_EQ(transitions[before].m_newState, kPortStateFaulty);
    EXPECT_TRUE(m_network.isOpen(m_second.getId()));
    m_second.completeInitialization(status);
    ASSERT_TRUE(settlesInto({{&m_first, kPortStateMaster},
                             {&m_second, kPortStateSlave, &m_first},
                             {&m_third, kPortStateSlave, &m_first}}));
}

// A master sets the slave's Delay_Req interval through its Delay_Resp. One far
// too short is held to the shortest the clock runs at (about 128 a second),
// instead of a request loop that never lets time pass.
TEST_F(FailureScenarioTest, AMastersExtremeDelayRequestIntervalIsBounded)
{
    m_first.settings().m_logMinDelayReqInterval = -10;
    settleThree();
    const u64 before = m_network.getSentCount(m_third.getId(), kDelayReq);
    ASSERT_TRUE(m_network.getClock().runFor(1000 * nOrvTarn000::tManualClock::kMillisecond));
    const u64 requests = m_network.getSentCount(m_third.getId(), kDelayReq) - before;
    EXPECT_GE(requests, 64u);
    EXPECT_LE(requests, 2u * 128u);
}

} // namespace
