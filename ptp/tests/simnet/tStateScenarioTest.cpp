// Clocks settling MASTER and SLAVE: by priority1 and by identity, with
// accuracy compared as a signed number, a slave-only clock that never
// masters, an UNCALIBRATED port that waits for its check, and nothing heard
// from another domain.
#include "tScenario.h"

using namespace nSimNet;
using namespace nOrvPTP000;

namespace
{

typedef tScenario StateScenarioTest;

tNodeSettings withPriority1(u8 a_priority1)
{
    tNodeSettings settings;
    settings.m_priority1 = a_priority1;
    return settings;
}

TEST_F(StateScenarioTest, ALoneClockWaitsForTheInitializedCheckThenBecomesMaster)
{
    tSimNode& clock = addClock(1);
    tStatus status;
    clock.node().startClock(status);
    ASSERT_EQ(status.getCode(), 0);
    ASSERT_TRUE(clock.waitForState(kPortStateInitializing, kSettleBound));
    // With the checks from outside, nothing leaves INITIALIZING on its own.
    EXPECT_FALSE(reachesWithinQuietBound(clock, kPortStateListening));

    clock.completeInitialization(status);
    ASSERT_EQ(status.getCode(), 0);
    ASSERT_TRUE(settlesInto({{&clock, kPortStateMaster}}));
    const std::vector<tTransition> transitions = clock.getTransitions();
    ASSERT_EQ(transitions.size(), 3u);
    EXPECT_EQ(transitions[1].m_newState, kPortStateListening);
    EXPECT_EQ(transitions[2].m_oldState, kPortStateListening);
    EXPECT_EQ(clock.getGrandmasterIdentity(), clock.getIdentity());
    // As master it announces itself.
    EXPECT_TRUE(m_network.waitUntil(
        [this, &clock] { return m_network.getSentCount(clock.getId(), kAnnounce) > 0; },
        kSettleBound));
}

TEST_F(StateScenarioTest, TwoClocksSettleByPriority1)
{
    // The lower identity would win a tie; priority1 must decide first.
    tSimNode& worse = addClock(1, withPriority1(128));
    tSimNode& better = addClock(2, withPriority1(100));
    startAll();
    ASSERT_TRUE(settlesInto({{&better, kPortStateMaster}, {&worse, kPortStateSlave, &better}}));

    EXPECT_EQ(worse.getGrandmasterIdentity(), better.getIdentity());
    EXPECT_EQ(worse.getStepsRemoved(), 1);
    EXPECT_EQ(better.getGrandmasterIdentity(), better.getIdentity());
    // A slave comes through UNCALIBRATED.
    const std::vector<tTransition> transitions = worse.getTransitions();
    ASSERT_GE(transitions.size(), 2u);
    EXPECT_EQ(transitions.back().m_oldState, kPortStateUncalibrated);
    EXPECT_TRUE(staysSettledFor(better, 6));
}

TEST_F(StateScenarioTest, TwoEqualClocksSettleByIdentityAndABetterLatecomerTakesOver)
{
    tSimNode& higher = addClock(5);
    tSimNode& lower = addClock(3);
    start(higher);
    ASSERT_TRUE(settlesInto({{&higher, kPortStateMaster}}));

    start(lower);
    ASSERT_TRUE(settlesInto({{&lower, kPortStateMaster}, {&higher, kPortStateSlave, &lower}}));
    EXPECT_TRUE(staysSettledFor(lower, 6));
    // The former master's send timers went with its MASTER state; a master
    // runs no announce receipt timer.
    auto timer = [](tSimNode& a_node, u32 a_index)
    {
        u32 id = 0;
        tStatus status;
        a_node.runOnDispatcher([&](tPTPNode& a_rNode, tStatus&)
                               { id = a_rNode.getPortDS().getTimerId(a_index); },
                               status);
        return id;
    };
    EXPECT_EQ(timer(higher, tPortDS::kSendAnnounceTimer), tPortDS::kNoTimer);
    EXPECT_EQ(timer(higher, tPortDS::kSendSyncTimer), tPortDS::kNoTimer);
    EXPECT_EQ(timer(lower, tPortDS::kAnnounceReceiptTimer), tPortDS::kNoTimer);
}

TEST_F(StateScenarioTest, AnUncalibratedPortMeasuresAndWaitsForTheSelectedCheck)
{
    tSimNode& master = addClock(1, withPriority1(100));
    tSimNode& follower = addClock(2);
    follower.setAutoCalibrate(false);
    startAll();
    ASSERT_TRUE(
        settlesInto({{&master, kPortStateMaster}, {&follower, kPortStateUncalibrated, &master}}));

    // It measures already, and stays until the check comes from outside.
    const u32 id = follower.getId();
    EXPECT_TRUE(m_network.waitUntil([this, id] { return m_network.getSamples(id).size() >= 3; },
                                    kSettleBound));
    EXPECT_EQ(follower.getState(), kPortStateUncalibrated);
    EXPECT_FALSE(reachesWithinQuietBound(follower, kPortStateSlave));

    tStatus status;
    follower.node().postMasterClockSelectedCheck(status);
    EXPECT_TRUE(settlesInto({{&master, kPortStateMaster}, {&follower, kPortStateSlave, &master}}));
}

TEST_F(StateScenarioTest, ASlaveOnlyClockNeverBecomesMaster)
{
    tNodeSettings slaveOnly = withPriority1(1);
    slaveOnly.m_slaveOnly = true;
    slaveOnly.m_clockClass = 255;
    // A shorter receipt timeout, so that several pass while it is watched.
    slaveOnly.m_logAnnounceInterval = -4;
    tSimNode& follower = addClock(1, slaveOnly);
    tSimNode& master = addClock(2, withPriority1(200));

    // Alone, it listens through one receipt timeout after another.
    start(follower);
    ASSERT_TRUE(follower.waitForState(kPortStateListening, kSettleBound));
    EXPECT_FALSE(reachesWithinQuietBound(follower, kPortStateMaster));

    // Better than the only master there is by priority1, it is told MASTER
    // by the state decision, and keeps listening instead.
    start(master);
    ASSERT_TRUE(settlesInto({{&master, kPortStateMaster}, {&follower, kPortStateListening}}));
    EXPECT_TRUE(staysSettledFor(master, 6));

    // Worse than the master, it follows it.
    follower.settings().m_priority1 = 250;
    tStatus status;
    follower.configure(status);
    ASSERT_EQ(status.getCode(), 0);
    ASSERT_TRUE(settlesInto({{&master, kPortStateMaster}, {&follower, kPortStateSlave, &master}}));

    // When the master goes, it listens again, and takes its own clock's data
    // sets as nobody announces.
    stop(master);
    ASSERT_TRUE(follower.waitForState(kPortStateListening, kSettleBound));
    // It keeps the silent master's record: only a clock that serves drops it.
    u32 records = 0;
    tStatus recordStatus;
    follower.runOnDispatcher(
        [&records](tPTPNode& a_rNode, tStatus& a_rStatus)
        { records = a_rNode.getForeignMasterDS(1)->getRecordCount(a_rStatus); },
        recordStatus);
    EXPECT_EQ(records, 1u);
    EXPECT_FALSE(reachesWithinQuietBound(follower, kPortStateMaster));
    EXPECT_EQ(follower.getGrandmasterIdentity(), follower.getIdentity());
    EXPECT_FALSE(everEntered(follower, kPortStateMaster));
    EXPECT_FALSE(everEntered(follower, kPortStatePassive));
    EXPECT_EQ(m_network.getSentCount(follower.getId(), kAnnounce), 0u);
    EXPECT_EQ(m_network.getSentCount(follower.getId(), kSync), 0u);
}

TEST_F(StateScenarioTest, ClocksOfAnotherDomainAreNotHeard)
{
    tSimNode& master = addClock(1, withPriority1(200));
    tNodeSettings otherDomain = withPriority1(1);
    otherDomain.m_domainNumber = 1;
    tSimNode& stranger = addClock(2, otherDomain);
    tSimNode& follower = addClock(3, withPriority1(250));
    startAll();
    ASSERT_TRUE(settlesInto({{&master, kPortStateMaster},
                             {&stranger, kPortStateMaster},
                             {&follower, kPortStateSlave, &master}}));
    EXPECT_EQ(master.getGrandmasterIdentity(), master.getIdentity());

    // The stranger's messages do arrive, and change nothing.
    const u64 heard = m_network.getDeliveredCount(master.getId(), kAnnounce);
    EXPECT_TRUE(staysSettledFor(stranger, 6));
    EXPECT_GT(m_network.getDeliveredCount(master.getId(), kAnnounce), heard);
    EXPECT_EQ(follower.getGrandmasterIdentity(), master.getIdentity());
}

} // namespace
