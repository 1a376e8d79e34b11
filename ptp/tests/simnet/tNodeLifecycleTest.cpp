// A clock's life outside the normal course: start and stop refused in the
// wrong state, the data sets a start resets, checks held by the timekeeper,
// a clock that loses its time, a network that will not open, intervals
// changed while it serves, and its destruction while it runs.
#include "tScenario.h"

using namespace nSimNet;
using namespace nOrvPTP000;
using nOrvTarn000::kStatusWrongRunState;

namespace
{

typedef tScenario NodeLifecycleTest;

TEST_F(NodeLifecycleTest, StartResetsTheDataSetsAndStartAndStopRefuseTheWrongState)
{
    tSimNode& clock = addClock(1);
    tPTPNode& node = clock.node();
    tStatus status;
    // Written while stopped, as its own grandmaster: in force at once.
    node.writeProperty<PRIORITY1>(5, status);
    node.writeProperty<CURRENT_UTC_OFFSET>(37, status);
    EXPECT_EQ(node.readProperty<CURRENT_UTC_OFFSET>(status), 37);
    node.startClock(status);
    EXPECT_EQ(node.readProperty<PRIORITY1>(status), 128);
    EXPECT_EQ(node.readProperty<CURRENT_UTC_OFFSET>(status), 34);
    EXPECT_EQ(clock.getState(), kPortStateInitializing) << "the observer stays";
    // A port property of another port is refused, and nothing is written.
    tStatus otherPort;
    clock.runOnDispatcher([](tPTPNode& a_rNode, tStatus& a_rStatus)
                          { a_rNode.setLogSyncInterval(2, -3, a_rStatus, 0); },
                          otherPort);
    EXPECT_EQ(otherPort.getCode(), nOrvTarn000::kStatusInvalidArgument);
    EXPECT_EQ(node.readProperty<LOG_SYNC_INTERVAL>(status), 0);
    // What the clock would announce survives the start, and is in force once it serves.
    clock.completeInitialization(status);
    ASSERT_TRUE(clock.waitForState(kPortStateMaster, kSettleBound));
    EXPECT_EQ(node.readProperty<CURRENT_UTC_OFFSET>(status), 37);

    tStatus again;
    node.startClock(again);
    EXPECT_EQ(again.getCode(), kStatusWrongRunState);
    node.stopClock(status);
    node.stopClock(again);
    EXPECT_EQ(again.getCode(), kStatusWrongRunState);
    // The port state reads 0 once stopped; the data set keeps the last one.
    EXPECT_EQ(node.readProperty<PORT_STATE>(status), kPortStateStopped);
    u8 kept = 0;
    clock.runOnDispatcher(
        [&](tPTPNode& a_rNode, tStatus&) { kept = a_rNode.getPortDS().getPortState(); }, status);
    EXPECT_EQ(kept, kPortStateMaster);
    EXPECT_EQ(status.getCode(), 0);
}

TEST_F(NodeLifecycleTest, AHeldPortWaitsForItsOwnChecksAndAClockWithoutTimeGoesFaulty)
{
    tNodeSettings better;
    better.m_priority1 = 100;
    tSimNode& master = addClock(1, better);
    tSimNode& follower = addClock(2);
    follower.setAutoCalibrate(false);
    tStatus status;
    follower.node().writeProperty<EXTERNAL_CHECKS>(false, status);
    m_network.setPortStateHeld(follower.getId(), true);
    startAll();
    // The posted initialized check is held as well as the periodic ones.
    EXPECT_FALSE(reachesWithinQuietBound(follower, kPortStateListening));

    // The periodic checks take it on, through UNCALIBRATED, with nothing from outside.
    m_network.setPortStateHeld(follower.getId(), false);
    EXPECT_TRUE(settlesInto({{&master, kPortStateMaster}, {&follower, kPortStateSlave, &master}}));
    // The first check ended the periodic ones, which would otherwise arm one
    // more Delay_Req timer each: about 16 requests a second, at 2^-4 s.
    const u64 requests = m_network.getSentCount(follower.getId(), kDelayReq);
    ASSERT_TRUE(m_network.getClock().runFor(2000 * nOrvTarn000::tManualClock::kMillisecond));
    EXPECT_LT(m_network.getSentCount(follower.getId(), kDelayReq) - requests, 64u);

    // A clock that loses its time goes FAULTY and sends nothing more: the
    // master at its next Announce or Sync, the slave at its next Delay_Req.
    m_network.setTimeLost(master.getId(), true);
    m_network.setTimeLost(follower.getId(), true);
    ASSERT_TRUE(settlesInto({{&master, kPortStateFaulty}, {&follower, kPortStateFaulty}}));
    const size_t sent = m_network.getSent(master.getId()).size();
    const size_t requested = m_network.getSent(follower.getId()).size();
    ASSERT_TRUE(m_network.getClock().runFor(kQuietBound.count() * 1000000ull));
    EXPECT_EQ(m_network.getSent(master.getId()).size(), sent);
    EXPECT_EQ(m_network.getSent(follower.getId()).size(), requested);
}

TEST_F(NodeLifecycleTest, ANetworkThatWillNotOpenKeepsThePortFaultyUntilItOpens)
{
    tSimNode& clock = addClock(1);
    const u32 id = clock.getId();
    m_network.setOpenFailing(id, true);
    tStatus status;
    clock.node().startClock(status);
    EXPECT_EQ(status.getCode(), nOrvTarn000::kStatusSystemError);
    EXPECT_EQ(clock.getState(), kPortStateFaulty);
    // Clearing the fault initialises again, which fails again: the port stays.
    tStatus cleared;
    clock.node().signalFaultCleared(cleared);
    settle();
    EXPECT_EQ(clock.getState(), kPortStateFaulty);
    m_network.setOpenFailing(id, false);
    clock.node().signalFaultCleared(cleared);
    ASSERT_TRUE(clock.waitForState(kPortStateInitializing, kSettleBound));

    // Recovery retries until the network opens, and a master whose link
    // breaks hears of several failures at once: the later ones find the port
    // FAULTY and must leave its recovery running.
    clock.completeInitialization(cleared);
    clock.node().writeProperty<AUTOMATIC_RECOVERY>(true, cleared);
    m_network.setOpenFailing(id, true);
    clock.runOnDispatcher(
        [](tPTPNode& a_rNode, tStatus& a_rStatus)
        {
            a_rNode.handleNetworkError(a_rStatus);
            a_rNode.handleNetworkError(a_rStatus);
        },
        cleared);
    EXPECT_FALSE(reachesWithinQuietBound(clock, kPortStateInitializing));
    EXPECT_EQ(clock.getState(), kPortStateFaulty);
    m_network.setOpenFailing(id, false);
    EXPECT_TRUE(clock.waitForState(kPortStateInitializing, kSettleBound));
}

TEST_F(NodeLifecycleTest, AMasterSendsAtItsIntervalsAndFollowsNewOnes)
{
    tSimNode& clock = addClock(1);
    start(clock);
    ASSERT_TRUE(clock.waitForState(kPortStateMaster, kSettleBound));
    tStatus status;
    clock.node().writeProperty<LOG_SYNC_INTERVAL>(-1, status);
    clock.node().writeProperty<LOG_ANNOUNCE_INTERVAL>(0, status);
    const u64 syncs = m_network.getSentCount(clock.getId(), kSync);
    const u64 announces = m_network.getSentCount(clock.getId(), kAnnounce);
    ASSERT_TRUE(m_network.getClock().runFor(4000 * nOrvTarn000::tManualClock::kMillisecond));
    EXPECT_EQ(m_network.getSentCount(clock.getId(), kSync) - syncs, 8u);
    EXPECT_EQ(m_network.getSentCount(clock.getId(), kAnnounce) - announces, 4u);
}

// Destroying a master with timers armed and events queued leaks and races
// nothing: this test matters under the sanitizers.
TEST_F(NodeLifecycleTest, ARunningNodeIsDestroyedWithTimersArmedAndEventsQueued)
{
    const u32 id = m_network.addEndpoint();
    tStatus status;
    std::unique_ptr<tPTPNode> pNode(new tPTPNode(
        m_network.getMessaging(id), m_network.getTimestamps(id), m_network.getTimekeeper(id),
        makeClockIdentity(1), m_network.getClock(), status));
    pNode->startClock(status);
    pNode->postEvent(std::unique_ptr<iPTPEvent>(new tInitialAnnounceTimeoutEvent(pNode.get())),
                     status);
    for (int i = 0; i < 50; ++i)
    {
        pNode->postEvent(std::unique_ptr<iPTPEvent>(new tStateDecisionEvent(pNode.get())), status);
        pNode->postEvent(std::unique_ptr<iPTPEvent>(new tSendSyncPacketEvent(pNode.get())), status);
    }
    pNode.reset();
    EXPECT_EQ(status.getCode(), 0);
}

} // namespace
