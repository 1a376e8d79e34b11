// Clocks settling MASTER and SLAVE: two equal clocks by identity, with a
// better latecomer taking over, and a slave-only clock that never masters.
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

} // namespace
