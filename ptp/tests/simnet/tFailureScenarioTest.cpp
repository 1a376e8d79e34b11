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
    // Three clocks, ranked by priority1; settled with the first as grandmaster.
    void settleThree()
    {
        m_pFirst = &addClock(3, settingsWith(100));
        m_pSecond = &addClock(2, settingsWith(110));
        m_pThird = &addClock(1, settingsWith(120));
        startAll();
        ASSERT_TRUE(settlesInto({{m_pFirst, kPortStateMaster},
                                 {m_pSecond, kPortStateSlave, m_pFirst},
                                 {m_pThird, kPortStateSlave, m_pFirst}}));
    }

    static tNodeSettings settingsWith(u8 a_priority1)
    {
        tNodeSettings settings;
        settings.m_priority1 = a_priority1;
        return settings;
    }

    tSimNode* m_pFirst = nullptr;
    tSimNode* m_pSecond = nullptr;
    tSimNode* m_pThird = nullptr;
};

TEST_F(FailureScenarioTest, AStoppedMasterIsReplacedByTheNextBestAndTakesOverOnItsReturn)
{
    settleThree();
    tSimNode& first = *m_pFirst;
    tSimNode& second = *m_pSecond;
    tSimNode& third = *m_pThird;

    const size_t before = second.getTransitionCount();
    stop(first);
    ASSERT_TRUE(settlesInto({{&first, kPortStateStopped},
                             {&second, kPortStateMaster},
                             {&third, kPortStateSlave, &second}}));
    EXPECT_TRUE(staysSettledFor(second, 6));
    // The second clock left SLAVE for MASTER on its own receipt timeout, and
    // dropped the silent master, which it would follow again otherwise.
    EXPECT_TRUE(movedOnce(second, before, kPortStateSlave, kPortStateMaster));
    EXPECT_EQ(third.getGrandmasterIdentity(), second.getIdentity());

    start(first);
    ASSERT_TRUE(settlesInto({{&first, kPortStateMaster},
                             {&second, kPortStateSlave, &first},
                             {&third, kPortStateSlave, &first}}));
    EXPECT_TRUE(staysSettledFor(first, 6));
}

TEST_F(FailureScenarioTest, AFaultyMasterIsReplacedAndReturnsThroughInitializing)
{
    settleThree();
    tSimNode& first = *m_pFirst;
    tSimNode& second = *m_pSecond;
    tSimNode& third = *m_pThird;
    const size_t before = first.getTransitionCount();

    tStatus status;
    EXPECT_TRUE(first.node().signalFaultDetected(status));
    ASSERT_TRUE(settlesInto({{&first, kPortStateFaulty},
                             {&second, kPortStateMaster},
                             {&third, kPortStateSlave, &second}}));
    // A faulty port sends nothing and does not come back by itself.
    const u64 announces = m_network.getSentCount(first.getId(), kAnnounce);
    EXPECT_FALSE(reachesWithinQuietBound(first, kPortStateInitializing));
    EXPECT_EQ(m_network.getSentCount(first.getId(), kAnnounce), announces);

    EXPECT_TRUE(first.node().signalFaultCleared(status));
    ASSERT_TRUE(first.waitForState(kPortStateInitializing, kSettleBound));
    // The checks come from outside: it waits there for its settings.
    EXPECT_FALSE(reachesWithinQuietBound(first, kPortStateListening));
    first.completeInitialization(status);
    ASSERT_EQ(status.getCode(), 0);
    ASSERT_TRUE(settlesInto({{&first, kPortStateMaster},
                             {&second, kPortStateSlave, &first},
                             {&third, kPortStateSlave, &first}}));

    const std::vector<tTransition> transitions = first.getTransitions();
    ASSERT_GE(transitions.size(), before + 4);
    EXPECT_EQ(transitions[before].m_oldState, kPortStateMaster);
    EXPECT_EQ(transitions[before].m_newState, kPortStateFaulty);
    EXPECT_EQ(transitions[before + 1].m_newState, kPortStateInitializing);
    EXPECT_EQ(transitions[before + 2].m_newState, kPortStateListening);
    // The settings written after the re-initialisation are in force again.
    EXPECT_EQ(first.node().readProperty<PRIORITY1>(status), 100);
}

TEST_F(FailureScenarioTest, ABrokenNetworkMakesThePortFaultyUntilRecovery)
{
    settleThree();
    tSimNode& first = *m_pFirst;
    tSimNode& second = *m_pSecond;
    tSimNode& third = *m_pThird;

    // Without automatic recovery the port stays FAULTY, closed, until told.
    const u32 opened = m_network.getOpenCount(third.getId());
    m_network.failNextReceive(third.getId());
    ASSERT_TRUE(third.waitForState(kPortStateFaulty, kSettleBound));
    EXPECT_FALSE(reachesWithinQuietBound(third, kPortStateInitializing));
    EXPECT_FALSE(m_network.isOpen(third.getId()));
    tStatus status;
    EXPECT_TRUE(third.node().signalFaultCleared(status));
    ASSERT_TRUE(third.waitForState(kPortStateInitializing, kSettleBound));
    EXPECT_EQ(m_network.getOpenCount(third.getId()), opened + 1);
    third.completeInitialization(status);
    ASSERT_TRUE(settlesInto({{&first, kPortStateMaster}, {&third, kPortStateSlave, &first}}));

    // With automatic recovery the network is reopened by itself.
    second.node().writeProperty<AUTOMATIC_RECOVERY>(true, status);
    ASSERT_EQ(status.getCode(), 0);
    const size_t before = second.getTransitionCount();
    m_network.failNextReceive(second.getId());
    // The recovery timer fires at once, so FAULTY may be brief.
    ASSERT_TRUE(second.waitForEntry(kPortStateFaulty, before, kSettleBound));
    ASSERT_TRUE(second.waitForState(kPortStateInitializing, kSettleBound));
    const std::vector<tTransition> transitions = second.getTransitions();
    ASSERT_GE(transitions.size(), before + 2);
    EXPECT_EQ(transitions[before].m_newState, kPortStateFaulty);
    EXPECT_EQ(transitions[before + 1].m_oldState, kPortStateFaulty);
    EXPECT_EQ(transitions[before + 1].m_newState, kPortStateInitializing);
    EXPECT_TRUE(m_network.isOpen(second.getId()));
    second.completeInitialization(status);
    ASSERT_TRUE(settlesInto({{&first, kPortStateMaster},
                             {&second, kPortStateSlave, &first},
                             {&third, kPortStateSlave, &first}}));
}

// A master sets the slave's Delay_Req interval through its Delay_Resp. One far
// too short is held to the shortest the clock runs at (about 128 a second),
// instead of a request loop that never lets time pass.
TEST_F(FailureScenarioTest, AMastersExtremeDelayRequestIntervalIsBounded)
{
    tNodeSettings masterSettings = settingsWith(100);
    masterSettings.m_logMinDelayReqInterval = -10;
    tSimNode& master = addClock(1, masterSettings);
    tSimNode& slave = addClock(2, settingsWith(120));
    startAll();
    ASSERT_TRUE(settlesInto({{&master, kPortStateMaster}, {&slave, kPortStateSlave, &master}}));
    const u64 before = m_network.getSentCount(slave.getId(), kDelayReq);
    ASSERT_TRUE(m_network.getClock().runFor(1000 * nOrvTarn000::tManualClock::kMillisecond));
    const u64 requests = m_network.getSentCount(slave.getId(), kDelayReq) - before;
    EXPECT_GE(requests, 64u);
    EXPECT_LE(requests, 2u * 128u);
}

// The network fails, and closing it fails too: the port still ends FAULTY with
// its timers stopped (no Delay_Req leaves), and the recovery that is armed
// brings it back.
TEST_F(FailureScenarioTest, AFailingCloseStillEndsInFaultyWithTheRecoveryArmed)
{
    settleThree();
    tSimNode& slave = *m_pThird;
    tStatus status;
    slave.node().writeProperty<AUTOMATIC_RECOVERY>(true, status);
    slave.setAutoCalibrate(true);
    const size_t before = slave.getTransitionCount();
    m_network.failNextClose(slave.getId());
    m_network.failNextReceive(slave.getId());
    ASSERT_TRUE(slave.waitForEntry(kPortStateFaulty, before, kSettleBound));
    ASSERT_TRUE(slave.waitForState(kPortStateInitializing, kSettleBound));
    const std::vector<tTransition> transitions = slave.getTransitions();
    EXPECT_EQ(transitions[before].m_oldState, kPortStateSlave);
    EXPECT_EQ(transitions[before].m_newState, kPortStateFaulty);
    EXPECT_TRUE(m_network.isOpen(slave.getId()));
    slave.completeInitialization(status);
    ASSERT_TRUE(settlesInto({{m_pFirst, kPortStateMaster}, {&slave, kPortStateSlave, m_pFirst}}));
}

} // namespace
