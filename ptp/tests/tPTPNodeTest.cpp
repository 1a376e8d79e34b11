#include "tNodeHarness.h"

#include "orvptp/tNodeEvents.h"

#include <thread>

using namespace nOrvPTP000;
using namespace nOrvPTP000::nTest;
using nOrvTarn000::kStatusWrongRunState;

namespace
{

typedef tNodeFixture NodeTest;

// Lets the periodic checks (200 ms) come round a few times.
void letChecksRun()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
}

} // namespace

TEST_F(NodeTest, StartAndStopTravelAsEventsAndRefuseTheWrongState)
{
    EXPECT_EQ(kPortStateStopped, portState());
    setExternalChecks(true);

    tStatus start;
    m_node.startClock(start);
    EXPECT_TRUE(start.isNotFatal());
    EXPECT_EQ(kPortStateInitializing, portState());
    EXPECT_EQ(1, m_messaging.opens()) << "initialising opens the network";

    tStatus again;
    m_node.startClock(again);
    EXPECT_EQ(kStatusWrongRunState, again.getCode()) << "the done event still came";
    EXPECT_EQ(kPortStateInitializing, portState());

    tStatus stop;
    m_node.stopClock(stop);
    EXPECT_TRUE(stop.isNotFatal());
    EXPECT_EQ(kPortStateStopped, portState());
    u8 kept = 0;
    runOnDispatcher([&](tStatus&) { kept = m_node.getPortDS().getPortState(); });
    EXPECT_EQ(kPortStateInitializing, kept) << "the data set keeps the last state";

    tStatus stopAgain;
    m_node.stopClock(stopAgain);
    EXPECT_EQ(kStatusWrongRunState, stopAgain.getCode());

    const std::vector<std::pair<i32, i32>> expected = {{kPortStateInitializing, kPortStateStopped},
                                                       {kPortStateStopped, kPortStateInitializing}};
    EXPECT_EQ(expected, m_states.changes());
}

TEST_F(NodeTest, StartResetsDataSetsButKeepsLocalTimePropertiesAndObservers)
{
    setExternalChecks(true);
    runOnDispatcher(
        [&](tStatus& a_status)
        {
            m_node.setPriority1(5, a_status, 0);
            m_node.setDomainNumber(3, a_status, 0);
            m_node.setCurrentUtcOffset(37, a_status, 0);
            m_node.setLogSyncInterval(1, -2, a_status, 0);
        });
    EXPECT_EQ(37, m_node.getCurrentUtcOffset()) << "its own grandmaster: in force at once";

    tStatus status;
    m_node.startClock(status);
    i32 priority1 = 0, domain = 0, utcInForce = 0, utcLocal = 0, logSync = 0;
    runOnDispatcher(
        [&](tStatus& a_status)
        {
            priority1 = m_node.getPriority1();
            domain = m_node.getDomainNumber();
            utcInForce = m_node.getCurrentUtcOffset();
            utcLocal = m_node.getLocalTimePropertiesDS().getCurrentUtcOffset();
            logSync = m_node.getLogSyncInterval(1, a_status);
        });
    EXPECT_EQ(128, priority1);
    EXPECT_EQ(0, domain);
    EXPECT_EQ(0, logSync);
    EXPECT_EQ(34, utcInForce);
    EXPECT_EQ(37, utcLocal) << "what the clock would announce survives";
    EXPECT_EQ(1u, m_states.count()) << "observers added before the start still hear";
}

TEST_F(NodeTest, ExternalChecksHoldInitializingUntilPosted)
{
    setExternalChecks(true);
    tStatus status;
    m_node.startClock(status);
    letChecksRun();
    EXPECT_EQ(kPortStateInitializing, portState());

    m_node.postInitializedCheck(status);
    ASSERT_TRUE(m_states.waitFor(kPortStateListening));
    EXPECT_NE(tPortDS::kNoTimer, timerId(tPortDS::kStateDecisionTimer));
    EXPECT_NE(tPortDS::kNoTimer, timerId(tPortDS::kDelayRequestTimer));
    EXPECT_NE(tPortDS::kNoTimer, timerId(tPortDS::kAnnounceReceiptTimer));
}

TEST_F(NodeTest, HeldTimekeeperStopsThePeriodicCheckFromActing)
{
    m_timekeeper.m_held = true;
    tStatus status;
    m_node.startClock(status);
    letChecksRun();
    EXPECT_EQ(kPortStateInitializing, portState());

    m_timekeeper.m_held = false;
    EXPECT_TRUE(m_states.waitFor(kPortStateListening)) << "the 200 ms check went on";
}

TEST_F(NodeTest, SameObjectCallsNoObserver)
{
    startListening();
    const size_t before = m_states.count();
    tStatus status;
    m_node.designatePortEnabled(status); // ignored outside DISABLED
    m_node.signalSyncFault(status);      // ignored outside SLAVE
    EXPECT_EQ(kPortStateListening, portState());
    EXPECT_EQ(before, m_states.count());
}

TEST_F(NodeTest, LeavingMasterCancelsTheSendTimers)
{
    startListening();
    // No master heard: the receipt time-out makes this clock the master.
    tStatus status;
    m_node.postEvent(std::unique_ptr<iPTPEvent>(new tInitialAnnounceTimeoutEvent(&m_node)), status);
    ASSERT_TRUE(m_states.waitFor(kPortStateMaster));
    EXPECT_NE(tPortDS::kNoTimer, timerId(tPortDS::kSendAnnounceTimer));
    EXPECT_NE(tPortDS::kNoTimer, timerId(tPortDS::kSendSyncTimer));
    EXPECT_EQ(tPortDS::kNoTimer, timerId(tPortDS::kAnnounceReceiptTimer));

    // A better master appears: MASTER gives way through UNCALIBRATED.
    hearBetterMaster();
    m_node.postEvent(std::unique_ptr<iPTPEvent>(new tStateDecisionEvent(&m_node)), status);
    ASSERT_TRUE(m_states.waitFor(kPortStateUncalibrated));
    EXPECT_EQ(tPortDS::kNoTimer, timerId(tPortDS::kSendAnnounceTimer));
    EXPECT_EQ(tPortDS::kNoTimer, timerId(tPortDS::kSendSyncTimer));
    EXPECT_NE(tPortDS::kNoTimer, timerId(tPortDS::kAnnounceReceiptTimer));

    m_node.postMasterClockSelectedCheck(status);
    ASSERT_TRUE(m_states.waitFor(kPortStateSlave));
    tPortIdentity parent;
    runOnDispatcher([&](tStatus&) { parent = m_node.getParentPortIdentity(); });
    const u8 bytes[8] = {0, 0, 0, 0, 0, 0, 0, 9};
    EXPECT_EQ(tPortIdentity(tClockIdentity(bytes), 1), parent);
}

TEST_F(NodeTest, ReceiveFailureMakesThePortFaultyAndRecoveryBringsItBack)
{
    setAutomaticRecovery(true);
    startListening();
    const int opensBefore = m_messaging.opens();
    m_messaging.failReceive();
    ASSERT_TRUE(m_states.waitFor(kPortStateFaulty));
    // The recovery timer reopens the network and re-initialises the port.
    ASSERT_TRUE(m_states.waitFor(kPortStateInitializing));
    EXPECT_GT(m_messaging.opens(), opensBefore);
}

// A master whose link fails sees several failures at once; the ones that find
// the port FAULTY already must not cancel its recovery.
TEST_F(NodeTest, FurtherNetworkErrorsKeepTheRecoveryRunning)
{
    setAutomaticRecovery(true);
    startListening();
    runOnDispatcher(
        [&](tStatus& a_status)
        {
            m_node.handleNetworkError(a_status);
            m_node.handleNetworkError(a_status);
        });
    EXPECT_TRUE(m_states.waitFor(kPortStateInitializing));
}

TEST_F(NodeTest, WithoutRecoveryAFaultyPortWaitsForOutsideHelp)
{
    startListening();
    tStatus status;
    m_node.postEvent(std::unique_ptr<iPTPEvent>(new tNetworkRecoveryEvent(&m_node)), status);
    EXPECT_EQ(kPortStateListening, portState()) << "recovery acts only in FAULTY";

    m_messaging.failReceive();
    ASSERT_TRUE(m_states.waitFor(kPortStateFaulty));
    m_node.signalFaultDetected(status); // ignored in FAULTY
    letChecksRun();
    EXPECT_EQ(kPortStateFaulty, portState()) << "no recovery timer was armed";

    m_node.signalFaultCleared(status);
    EXPECT_TRUE(m_states.waitFor(kPortStateInitializing));
}

TEST_F(NodeTest, NetworkThatCannotOpenMakesStartFaulty)
{
    m_messaging.setFailOpen(true);
    tStatus status;
    m_node.startClock(status);
    EXPECT_EQ(nOrvTarn000::kStatusNotAvailable, status.getCode());
    EXPECT_EQ(kPortStateFaulty, portState());
}

TEST_F(NodeTest, CancellingWhatFiredOrNeverExistedIsNoFailure)
{
    const i32 code = runOnDispatcher(
        [&](tStatus& a_status)
        {
            m_node.cancelScheduled(tPortDS::kNoTimer, a_status);
            m_node.cancelScheduled(0, a_status);
            m_node.cancelScheduled(12345, a_status);
        });
    EXPECT_EQ(0, code);
}

TEST_F(NodeTest, IntervalsFollowTheShiftRule)
{
    u32 announce = 0, sync = 0, slow = 0;
    runOnDispatcher(
        [&](tStatus& a_status)
        {
            m_node.setLogAnnounceInterval(1, -10, a_status, 0);
            m_node.setLogSyncInterval(1, -1, a_status, 0);
            announce = m_node.getAnnounceIntervalMs();
            sync = m_node.getSyncIntervalMs();
            m_node.setLogSyncInterval(1, 40, a_status, 0);
            slow = m_node.getSyncIntervalMs();
        });
    // Beyond their bounds the intervals count as the shortest and the longest.
    EXPECT_EQ(7u, announce);
    EXPECT_EQ(500u, sync);
    EXPECT_EQ(4096000u, slow);
}

TEST_F(NodeTest, PortPropertiesRefuseOtherPortNumbers)
{
    const i32 code =
        runOnDispatcher([&](tStatus& a_status) { m_node.setLogSyncInterval(2, -3, a_status, 0); });
    EXPECT_EQ(nOrvTarn000::kStatusInvalidArgument, code);
    i8 logSync = 0;
    runOnDispatcher([&](tStatus& a_status) { logSync = m_node.getLogSyncInterval(1, a_status); });
    EXPECT_EQ(0, logSync) << "a refused write writes nothing";
}

// Destroying a running master with timers armed and events queued leaks and
// races nothing (this test matters under the sanitizers).
TEST(NodeLifetime, DestroyWhileRunningWithTimersAndEvents)
{
    for (int round = 0; round < 3; ++round)
    {
        tQuietMessaging messaging;
        tQuietTimestamps timestamps;
        tFixedTimekeeper timekeeper;
        tStatus status;
        const u8 bytes[8] = {1, 2, 3, 4, 5, 6, 7, static_cast<u8>(round)};
        tPTPNode* pNode =
            new tPTPNode(&messaging, &timestamps, &timekeeper, tClockIdentity(bytes), status);
        pNode->startClock(status);
        pNode->postEvent(std::unique_ptr<iPTPEvent>(new tInitialAnnounceTimeoutEvent(pNode)),
                         status);
        for (int i = 0; i < 50; ++i)
        {
            pNode->postEvent(std::unique_ptr<iPTPEvent>(new tStateDecisionEvent(pNode)), status);
            pNode->postEvent(std::unique_ptr<iPTPEvent>(new tSendSyncPacketEvent(pNode)), status);
        }
        delete pNode;
        EXPECT_TRUE(status.isNotFatal());
    }
}
