// Clocks that go away, lose their link, fail and come back: the next best
// clock takes over after the announce receipt timeout, and a clock that
// returns finds its place again.
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

TEST_F(FailureScenarioTest, ADisconnectedMasterIsReplacedAndWinsAgainWhenReconnected)
{
    settleThree();
    tSimNode& first = *m_pFirst;
    tSimNode& second = *m_pSecond;
    tSimNode& third = *m_pThird;

    m_network.setConnected(first.getId(), false);
    ASSERT_TRUE(settlesInto({{&first, kPortStateMaster},
                             {&second, kPortStateMaster},
                             {&third, kPortStateSlave, &second}}));
    const size_t firstTransitions = first.getTransitionCount();

    // Two masters meet again: the worse one gives way, the better one stays.
    m_network.setConnected(first.getId(), true);
    ASSERT_TRUE(settlesInto({{&first, kPortStateMaster},
                             {&second, kPortStateSlave, &first},
                             {&third, kPortStateSlave, &first}}));
    EXPECT_EQ(first.getTransitionCount(), firstTransitions);
    EXPECT_TRUE(staysSettledFor(first, 6));
}

TEST_F(FailureScenarioTest, AFaultySlaveReturnsThroughInitializing)
{
    settleThree();
    tSimNode& first = *m_pFirst;
    tSimNode& second = *m_pSecond;
    const size_t before = second.getTransitionCount();

    tStatus status;
    EXPECT_TRUE(second.node().signalFaultDetected(status));
    ASSERT_TRUE(second.waitForState(kPortStateFaulty, kSettleBound));
    // A faulty port sends nothing and does not come back by itself.
    EXPECT_FALSE(reachesWithinQuietBound(second, kPortStateInitializing));
    EXPECT_EQ(first.getState(), kPortStateMaster);

    EXPECT_TRUE(second.node().signalFaultCleared(status));
    ASSERT_TRUE(second.waitForState(kPortStateInitializing, kSettleBound));
    // The checks come from outside: it waits there for its settings.
    EXPECT_FALSE(reachesWithinQuietBound(second, kPortStateListening));
    second.completeInitialization(status);
    ASSERT_EQ(status.getCode(), 0);
    ASSERT_TRUE(settlesInto({{&first, kPortStateMaster}, {&second, kPortStateSlave, &first}}));

    const std::vector<tTransition> transitions = second.getTransitions();
    ASSERT_GE(transitions.size(), before + 4);
    EXPECT_EQ(transitions[before].m_oldState, kPortStateSlave);
    EXPECT_EQ(transitions[before].m_newState, kPortStateFaulty);
    EXPECT_EQ(transitions[before + 1].m_newState, kPortStateInitializing);
    EXPECT_EQ(transitions[before + 2].m_newState, kPortStateListening);
    // The settings written after the re-initialisation are in force again.
    EXPECT_EQ(second.node().readProperty<PRIORITY1>(status), 110);
}

TEST_F(FailureScenarioTest, AFaultyMasterIsReplacedAndTakesOverWhenCleared)
{
    settleThree();
    tSimNode& first = *m_pFirst;
    tSimNode& second = *m_pSecond;
    tSimNode& third = *m_pThird;

    tStatus status;
    EXPECT_TRUE(first.node().signalFaultDetected(status));
    ASSERT_TRUE(settlesInto({{&first, kPortStateFaulty},
                             {&second, kPortStateMaster},
                             {&third, kPortStateSlave, &second}}));
    // A faulty master stops sending.
    const u64 announces = m_network.getSentCount(first.getId(), kAnnounce);
    EXPECT_TRUE(staysSettledFor(second, 4));
    EXPECT_EQ(m_network.getSentCount(first.getId(), kAnnounce), announces);

    EXPECT_TRUE(first.node().signalFaultCleared(status));
    ASSERT_TRUE(first.waitForState(kPortStateInitializing, kSettleBound));
    first.completeInitialization(status);
    ASSERT_EQ(status.getCode(), 0);
    ASSERT_TRUE(settlesInto({{&first, kPortStateMaster},
                             {&second, kPortStateSlave, &first},
                             {&third, kPortStateSlave, &first}}));
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
