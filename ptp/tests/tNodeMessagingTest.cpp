// The node's traffic seen from outside: which datagrams a real node sends in
// each state, with which fields, and what it does with the datagrams it
// receives.
#include "tNodeTestSupport.h"

#include "orvptp/tNodeEvents.h"

using namespace nOrvPTP000;
using namespace nOrvPTP000::nTest;

namespace
{

typedef tMessagingFixture NodeMessagingTest;

template <typename tMessage>
std::unique_ptr<tMessage> parsed(const tSentDatagram& a_datagram)
{
    return std::unique_ptr<tMessage>(static_cast<tMessage*>(a_datagram.parse().release()));
}

// ---- what a master sends ----

TEST_F(NodeMessagingTest, MasterAnnouncesItselfWithTheTimePropertiesInForce)
{
    startListening();
    setProperty(DOMAIN_NUMBER, u8(3));
    setProperty(PRIORITY1, u8(77));
    setProperty(PRIORITY2, u8(88));
    setProperty(CURRENT_UTC_OFFSET, i16(37));
    setProperty(CURRENT_UTC_OFFSET_VALID, true);
    setProperty(LEAP61, true);
    setProperty(TIME_SOURCE, u8(0x20));
    post(new tInitialAnnounceTimeoutEvent(&m_node));
    ASSERT_TRUE(m_messaging.waitForSent(3));

    const std::vector<tSentDatagram> announces = m_messaging.sentOfType(kMessageTypeAnnounce);
    ASSERT_EQ(1u, announces.size());
    EXPECT_FALSE(announces[0].m_event);
    std::unique_ptr<tAnnounceMessage> announce = parsed<tAnnounceMessage>(announces[0]);
    ASSERT_TRUE(announce != nullptr);
    const tMessageHeader& header = *announce->getHeader();
    EXPECT_EQ(3, header.getDomainNumber());
    EXPECT_EQ(m_own, header.getSourcePortIdentity());
    EXPECT_EQ(0, header.getSequenceId());
    EXPECT_EQ(kQuietLogInterval, header.getLogMessageInterval());
    EXPECT_FALSE(header.getTwoStepFlag());
    EXPECT_TRUE(header.getCurrentUTCOffsetValid());
    EXPECT_TRUE(header.getLeap61());
    EXPECT_FALSE(header.getLeap59());
    EXPECT_TRUE(header.getPtpTimescale());
    EXPECT_EQ(37, announce->getCurrentUTCOffset());
    EXPECT_EQ(0x20, announce->getTimeSource());
    EXPECT_EQ(0, announce->getStepsRemoved());
    EXPECT_EQ(m_own.getClockIdentity(), announce->getGrandmasterIdentity());
    EXPECT_EQ(77, announce->getGrandmasterPriority1());
    EXPECT_EQ(88, announce->getGrandmasterPriority2());
    EXPECT_EQ(187, announce->getGrandmasterClockQuality().getClockClass());
    EXPECT_EQ(tRecordingTimekeeper::now(), announce->getOriginTimestamp());

    post(new tSendAnnouncePacketEvent(&m_node));
    ASSERT_EQ(2u, m_messaging.sentOfType(kMessageTypeAnnounce).size());
    EXPECT_EQ(
        1, m_messaging.sentOfType(kMessageTypeAnnounce)[1].parse()->getHeader()->getSequenceId());
}

TEST_F(NodeMessagingTest, TwoStepMasterFollowsEachSyncWithItsTransmitTime)
{
    becomeMaster();
    post(new tSendSyncPacketEvent(&m_node));

    const std::vector<tSentDatagram> syncs = m_messaging.sentOfType(kMessageTypeSync);
    const std::vector<tSentDatagram> followUps = m_messaging.sentOfType(kMessageTypeFollowUp);
    ASSERT_EQ(2u, syncs.size());
    ASSERT_EQ(2u, followUps.size());
    for (u16 i = 0; i < 2; ++i)
    {
        EXPECT_TRUE(syncs[i].m_event);
        EXPECT_FALSE(followUps[i].m_event);
        std::unique_ptr<tSyncMessage> sync = parsed<tSyncMessage>(syncs[i]);
        std::unique_ptr<tFollowUpMessage> followUp = parsed<tFollowUpMessage>(followUps[i]);
        EXPECT_EQ(i, sync->getHeader()->getSequenceId());
        EXPECT_TRUE(sync->getHeader()->getTwoStepFlag());
        EXPECT_EQ(m_own, sync->getHeader()->getSourcePortIdentity());
        EXPECT_EQ(kQuietLogInterval, sync->getHeader()->getLogMessageInterval());
        EXPECT_EQ(tRecordingTimekeeper::now(), sync->getOriginTimestamp());
        EXPECT_EQ(i, followUp->getHeader()->getSequenceId());
        EXPECT_FALSE(followUp->getHeader()->getTwoStepFlag());
        EXPECT_EQ(kQuietLogInterval, followUp->getHeader()->getLogMessageInterval());
        EXPECT_EQ(tKeyedTimestamps::transmitTime(0, i), followUp->getPreciseOriginTimestamp());
    }
}

TEST_F(NodeMessagingTest, FollowUpCarriesTheSyncSequenceIdAcrossTheWrap)
{
    becomeMaster();
    runOnDispatcher(
        [&](tStatus&)
        {
            while (m_node.getPortDS().getSequenceId(tPortDS::kSyncSequence) != 0xFFFF)
            {
                m_node.getPortDS().nextSequenceId(tPortDS::kSyncSequence);
            }
        });
    post(new tSendSyncPacketEvent(&m_node));
    post(new tSendSyncPacketEvent(&m_node));

    const std::vector<tSentDatagram> syncs = m_messaging.sentOfType(kMessageTypeSync);
    const std::vector<tSentDatagram> followUps = m_messaging.sentOfType(kMessageTypeFollowUp);
    ASSERT_EQ(3u, followUps.size());
    EXPECT_EQ(0xFFFF, syncs[1].parse()->getHeader()->getSequenceId());
    EXPECT_EQ(0xFFFF, followUps[1].parse()->getHeader()->getSequenceId());
    EXPECT_EQ(0, syncs[2].parse()->getHeader()->getSequenceId());
    EXPECT_EQ(0, followUps[2].parse()->getHeader()->getSequenceId());
}

TEST_F(NodeMessagingTest, LateTransmitTimeIsAwaitedOnceThenTheFollowUpIsSkipped)
{
    becomeMaster();
    m_timestamps.m_transmitMisses = 1;
    post(new tSendSyncPacketEvent(&m_node));
    EXPECT_EQ(2u, m_messaging.sentOfType(kMessageTypeFollowUp).size()) << "second look found it";

    m_timestamps.m_transmitMisses = 2;
    post(new tSendSyncPacketEvent(&m_node));
    EXPECT_EQ(2u, m_messaging.sentOfType(kMessageTypeFollowUp).size()) << "no third look";

    post(new tSendSyncPacketEvent(&m_node));
    const std::vector<tSentDatagram> followUps = m_messaging.sentOfType(kMessageTypeFollowUp);
    ASSERT_EQ(3u, followUps.size()) << "the next Sync is unaffected";
    EXPECT_EQ(3, followUps[2].parse()->getHeader()->getSequenceId());
}

TEST_F(NodeMessagingTest, OneStepMasterSendsNoFollowUp)
{
    becomeMaster();
    runOnDispatcher([&](tStatus& a_status)
                    { m_node.getDefaultDS().setTwoStepFlag(false, a_status); });
    post(new tSendSyncPacketEvent(&m_node));

    const std::vector<tSentDatagram> syncs = m_messaging.sentOfType(kMessageTypeSync);
    ASSERT_EQ(2u, syncs.size());
    EXPECT_FALSE(syncs[1].parse()->getHeader()->getTwoStepFlag());
    EXPECT_EQ(1u, m_messaging.sentOfType(kMessageTypeFollowUp).size());
}

TEST_F(NodeMessagingTest, SendTimersOutsideMasterSendNothing)
{
    becomeSlave();
    post(new tSendAnnouncePacketEvent(&m_node));
    post(new tSendSyncPacketEvent(&m_node));
    EXPECT_TRUE(m_messaging.sent().empty());
}

// ---- Delay_Req and its answer ----

TEST_F(NodeMessagingTest, MasterAnswersDelayReqWithItsReceiveTime)
{
    becomeMaster();
    const size_t before = m_messaging.sent().size();
    const tPortIdentity slave(identity(0x44), 3);
    receive(delayReqFrom(slave, 42, 0x123456));

    const std::vector<tSentDatagram> sent = m_messaging.sent();
    ASSERT_EQ(before + 1, sent.size());
    EXPECT_FALSE(sent.back().m_event);
    std::unique_ptr<tDelayRespMessage> response = parsed<tDelayRespMessage>(sent.back());
    ASSERT_EQ(kMessageTypeDelayResp, response->getHeader()->getMessageType());
    EXPECT_EQ(42, response->getHeader()->getSequenceId());
    EXPECT_EQ(0x123456, response->getHeader()->getCorrectionField());
    EXPECT_EQ(m_own, response->getHeader()->getSourcePortIdentity());
    EXPECT_EQ(kQuietLogInterval, response->getHeader()->getLogMessageInterval());
    EXPECT_EQ(slave, response->getRequestingPortIdentity());
    EXPECT_EQ(tKeyedTimestamps::receiveTime(1, 42), response->getReceiveTimestamp());

    m_timestamps.m_receiveKnown = false;
    receive(delayReqFrom(slave, 43));
    EXPECT_EQ(before + 1, m_messaging.sent().size()) << "no receive time, no answer";
}

TEST_F(NodeMessagingTest, DelayReqIsAnsweredOnlyByAMaster)
{
    const tPortIdentity slave(identity(0x44), 1);
    startListening();
    receive(delayReqFrom(slave, 1));
    post(new tInitialAnnounceTimeoutEvent(&m_node));
    ASSERT_TRUE(m_messaging.waitForSent(3));
    receive(delayReqFrom(slave, 2));
    EXPECT_EQ(1u, m_messaging.sentOfType(kMessageTypeDelayResp).size());
    EXPECT_EQ(
        2, m_messaging.sentOfType(kMessageTypeDelayResp)[0].parse()->getHeader()->getSequenceId());
}

TEST_F(NodeMessagingTest, OwnEchoesOtherDomainsAndGarbageAreDropped)
{
    becomeMaster();
    const size_t before = m_messaging.sent().size();
    receive(delayReqFrom(m_own, 1));
    receive(delayReqFrom(tPortIdentity(identity(0x44), 1), 2, 0, 1));
    receive(std::vector<u8>(20, 0xAB));
    EXPECT_EQ(before, m_messaging.sent().size());

    // Another port of this very clock is not this port.
    receive(delayReqFrom(tPortIdentity(m_own.getClockIdentity(), 2), 3));
    EXPECT_EQ(before + 1, m_messaging.sent().size());
}

TEST_F(NodeMessagingTest, PaddedDatagramsOfAPeerAreTakenAsAnyOther)
{
    becomeMaster();
    std::vector<u8> request = delayReqFrom(tPortIdentity(identity(0x44), 1), 5);
    request[0] |= 0x10; // the peer asks for padding
    request.resize(124, 0);
    receive(request);

    const std::vector<tSentDatagram> responses = m_messaging.sentOfType(kMessageTypeDelayResp);
    ASSERT_EQ(1u, responses.size());
    EXPECT_EQ(54u, responses[0].m_bytes.size()) << "padding is the messaging's business";
    EXPECT_EQ(tKeyedTimestamps::receiveTime(1, 5),
              parsed<tDelayRespMessage>(responses[0])->getReceiveTimestamp());
}

TEST_F(NodeMessagingTest, DelayReqGoesOutOnlyWhileFollowingAMaster)
{
    startListening();
    post(new tDelayRequestEvent(&m_node));
    EXPECT_TRUE(m_messaging.sent().empty());

    followMaster();
    post(new tDelayRequestEvent(&m_node));
    tStatus status;
    m_node.postMasterClockSelectedCheck(status);
    ASSERT_TRUE(m_states.waitFor(kPortStateSlave));
    post(new tDelayRequestEvent(&m_node));

    const std::vector<tSentDatagram> requests = m_messaging.sentOfType(kMessageTypeDelayReq);
    ASSERT_EQ(2u, requests.size());
    for (u16 i = 0; i < 2; ++i)
    {
        EXPECT_TRUE(requests[i].m_event);
        std::unique_ptr<tDelayReqMessage> request = parsed<tDelayReqMessage>(requests[i]);
        EXPECT_EQ(i, request->getHeader()->getSequenceId());
        EXPECT_EQ(m_own, request->getHeader()->getSourcePortIdentity());
        EXPECT_EQ(0x7F, request->getHeader()->getLogMessageInterval());
        EXPECT_EQ(tRecordingTimekeeper::now(), request->getOriginTimestamp());
    }
    EXPECT_NE(tPortDS::kNoTimer, timerId(tPortDS::kDelayRequestTimer)) << "re-armed";

    setProperty(DELAY_MECHANISM, u8(2));
    post(new tDelayRequestEvent(&m_node));
    EXPECT_EQ(2u, m_messaging.sentOfType(kMessageTypeDelayReq).size()) << "not end to end";
}

// ---- what a slave does with its master's messages ----

TEST_F(NodeMessagingTest, SlaveMeasuresSyncOfItsParentClockOnly)
{
    becomeSlave();
    const tTimestamp origin(900, 0);
    receive(syncFrom(tPortIdentity(identity(0x55), 1), 7, false, origin));
    EXPECT_TRUE(m_timekeeper.samples().empty());

    // Another port of the parent clock is still the parent clock.
    receive(syncFrom(tPortIdentity(m_master.getClockIdentity(), 2), 8, false, origin));
    ASSERT_EQ(1u, m_timekeeper.samples().size());
    EXPECT_EQ(origin, m_timekeeper.samples()[0].first);
    EXPECT_EQ(tKeyedTimestamps::receiveTime(0, 8), m_timekeeper.samples()[0].second);

    m_timestamps.m_receiveKnown = false;
    receive(syncFrom(m_master, 9, false, origin));
    EXPECT_EQ(1u, m_timekeeper.samples().size()) << "no receive time, no sample";
}

TEST_F(NodeMessagingTest, TwoStepSyncCompletesAtTheParentsFollowUp)
{
    becomeUncalibrated();
    receive(syncFrom(m_master, 3, true, tTimestamp()));
    receive(followUpFrom(tPortIdentity(identity(0x55), 1), 3, tTimestamp(900, 0)));
    EXPECT_TRUE(m_timekeeper.samples().empty());
    receive(followUpFrom(m_master, 3, tTimestamp(900, 0)));
    ASSERT_EQ(1u, m_timekeeper.samples().size());
    EXPECT_EQ(tTimestamp(900, 0), m_timekeeper.samples()[0].first);
    EXPECT_EQ(tKeyedTimestamps::receiveTime(0, 3), m_timekeeper.samples()[0].second);
}

TEST_F(NodeMessagingTest, SyncIsIgnoredUnlessFollowingAMaster)
{
    startListening();
    receive(syncFrom(m_master, 1, false, tTimestamp(900, 0)));
    post(new tInitialAnnounceTimeoutEvent(&m_node));
    ASSERT_TRUE(m_states.waitFor(kPortStateMaster));
    receive(syncFrom(m_master, 2, false, tTimestamp(900, 0)));
    EXPECT_TRUE(m_timekeeper.samples().empty());
}

TEST_F(NodeMessagingTest, DelayRespToTheLastRequestCompletesThePathDelay)
{
    becomeSlave();
    post(new tDelayRequestEvent(&m_node)); // sequenceId 0, sent at transmitTime(1, 0)
    auto logMinDelayReqInterval = [&]
    {
        i8 value = 0;
        runOnDispatcher([&](tStatus& a_status)
                        { value = m_node.getLogMinDelayReqInterval(1, a_status); });
        return value;
    };
    const tTimestamp t1(900, 0);
    const tTimestamp t4(900, 2600);

    receive(delayRespFrom(m_master, tPortIdentity(identity(0x66), 1), 0, 5, t4));
    EXPECT_EQ(kQuietLogInterval, logMinDelayReqInterval()) << "for another requester";
    receive(delayRespFrom(m_master, m_own, 9, 15, t4));
    EXPECT_EQ(15, logMinDelayReqInterval()) << "the master's interval counts even if stale";
    receive(delayRespFrom(m_master, m_own, 0, 14, t4));
    EXPECT_EQ(14, logMinDelayReqInterval());

    // t2 - t3 = 600 - 1200 ns and t4 - t1 = 2600 ns: the path takes 1000 ns.
    receive(syncFrom(m_master, 0, false, t1));
    tTimeInterval meanPathDelay;
    runOnDispatcher([&](tStatus&) { meanPathDelay = m_node.getMeanPathDelay(); });
    EXPECT_EQ(1000 * 65536, meanPathDelay.getScaledNanoseconds());
    ASSERT_EQ(1u, m_timekeeper.samples().size());
    EXPECT_EQ(tTimestamp(999, 999999600), m_timekeeper.samples()[0].second);
}

// A master that shortens the interval is followed at once, not after the
// timer that was drawn from the longer one (here up to 2 * 2^12 s).
TEST_F(NodeMessagingTest, AShorterDelayReqIntervalRearmsTheRequestTimer)
{
    becomeSlave();
    post(new tDelayRequestEvent(&m_node));
    const u32 armed = timerId(tPortDS::kDelayRequestTimer);
    receive(delayRespFrom(m_master, m_own, 0, 12, tTimestamp(900, 0)));
    EXPECT_EQ(armed, timerId(tPortDS::kDelayRequestTimer)) << "2^16 s counts as 2^12 s";
    receive(delayRespFrom(m_master, m_own, 0, 11, tTimestamp(900, 0)));
    EXPECT_NE(armed, timerId(tPortDS::kDelayRequestTimer));
    EXPECT_NE(tPortDS::kNoTimer, timerId(tPortDS::kDelayRequestTimer));

    // A timer that has fired (its id is armed no more) has its event under
    // way, which arms the next one: a second timer would double the requests.
    const u32 fired = 0x7FFFFF00;
    runOnDispatcher(
        [&](tStatus& a_status)
        { m_node.getPortDS().setTimerId(tPortDS::kDelayRequestTimer, fired, a_status); });
    receive(delayRespFrom(m_master, m_own, 0, 12, tTimestamp(900, 0)));
    receive(delayRespFrom(m_master, m_own, 0, 10, tTimestamp(900, 0)));
    EXPECT_EQ(fired, timerId(tPortDS::kDelayRequestTimer));
}

TEST_F(NodeMessagingTest, DelayRespMatchesAcrossTheCounterWrap)
{
    becomeSlave();
    runOnDispatcher(
        [&](tStatus&)
        {
            while (m_node.getPortDS().getSequenceId(tPortDS::kDelayReqSequence) != 0xFFFF)
            {
                m_node.getPortDS().nextSequenceId(tPortDS::kDelayReqSequence);
            }
        });
    post(new tDelayRequestEvent(&m_node)); // 65,535; the counter stands at 0
    // t2 - t3 = -65,535 s - 600 ns, t4 - t1 = 65,535 s + 2,600 ns.
    receive(delayRespFrom(m_master, m_own, 0xFFFF, 14, tTimestamp(66435, 2600)));
    receive(syncFrom(m_master, 0, false, tTimestamp(900, 0)));
    tTimeInterval meanPathDelay;
    runOnDispatcher([&](tStatus&) { meanPathDelay = m_node.getMeanPathDelay(); });
    EXPECT_EQ(1000 * 65536, meanPathDelay.getScaledNanoseconds());
}

// ---- Announce ----

TEST_F(NodeMessagingTest, AnnounceOfTheParentKeepsTheSlaveAndUpdatesItOnlyInSlave)
{
    becomeUncalibrated();
    auto utcOffset = [&]
    {
        i16 value = 0;
        runOnDispatcher([&](tStatus&) { value = m_node.getCurrentUtcOffset(); });
        return value;
    };
    ASSERT_EQ(37, utcOffset());

    u32 timeout = timerId(tPortDS::kAnnounceReceiptTimer);
    receive(announceFrom(m_master.getClockIdentity(), 2, 1, 40));
    EXPECT_NE(timeout, timerId(tPortDS::kAnnounceReceiptTimer)) << "restarted";
    EXPECT_EQ(37, utcOffset()) << "UNCALIBRATED takes nothing over";

    tStatus status;
    m_node.postMasterClockSelectedCheck(status);
    ASSERT_TRUE(m_states.waitFor(kPortStateSlave));
    timeout = timerId(tPortDS::kAnnounceReceiptTimer);
    receive(announceFrom(m_master.getClockIdentity(), 3, 1, 41));
    EXPECT_NE(timeout, timerId(tPortDS::kAnnounceReceiptTimer));
    EXPECT_EQ(41, utcOffset());

    // Another port of the parent clock, or another clock, is not the parent.
    timeout = timerId(tPortDS::kAnnounceReceiptTimer);
    receive(announceFrom(m_master.getClockIdentity(), 4, 2, 42));
    receive(announceFrom(identity(0x55), 0, 1, 43, 200));
    EXPECT_EQ(timeout, timerId(tPortDS::kAnnounceReceiptTimer));
    EXPECT_EQ(41, utcOffset());
    u16 heard = 0;
    runOnDispatcher(
        [&](tStatus& a_status)
        {
            heard = m_node.getForeignMasterDS(1)->getAnnounceCount(tPortIdentity(identity(0x55), 1),
                                                                   a_status);
        });
    EXPECT_EQ(1, heard) << "still a foreign master for the next decision";
}

TEST_F(NodeMessagingTest, PassivePortWatchesTheMasterThatSilencedIt)
{
    startListening();
    setProperty(CLOCK_CLASS, u8(100)); // may not be a slave: PASSIVE
    receive(announceFrom(m_master.getClockIdentity(), 0));
    receive(announceFrom(m_master.getClockIdentity(), 1));
    post(new tStateDecisionEvent(&m_node));
    ASSERT_TRUE(m_states.waitFor(kPortStatePassive));

    u32 timeout = timerId(tPortDS::kAnnounceReceiptTimer);
    receive(announceFrom(identity(0x55), 0, 1, 37, 200));
    EXPECT_EQ(timeout, timerId(tPortDS::kAnnounceReceiptTimer));
    receive(announceFrom(m_master.getClockIdentity(), 2));
    EXPECT_NE(timeout, timerId(tPortDS::kAnnounceReceiptTimer));
}

TEST_F(NodeMessagingTest, OnlyQualifiedAnnounceReachesTheForeignMasters)
{
    startListening();
    receive(announceFrom(m_own.getClockIdentity(), 0, 2));
    receive(announceFrom(identity(0x55), 0, 1, 37, 1, 255));
    receive(announceFrom(identity(0x56), 0, 1, 37, 1, 254));
    u32 records = 0;
    runOnDispatcher(
        [&](tStatus&)
        {
            tForeignMasterDS& table = *m_node.getForeignMasterDS(1);
            for (tForeignMasterDS::tIterator it = table.begin(); it != table.end(); ++it)
            {
                ++records;
            }
        });
    EXPECT_EQ(1u, records);
}

// ---- a clock that loses its time ----

TEST_F(NodeMessagingTest, MasterWithoutTimeGoesFaultyInsteadOfAnnouncing)
{
    becomeMaster();
    const size_t before = m_messaging.sent().size();
    m_timekeeper.m_timeLost = true;
    post(new tSendAnnouncePacketEvent(&m_node));
    EXPECT_TRUE(m_states.waitFor(kPortStateFaulty));
    EXPECT_EQ(before, m_messaging.sent().size());
    EXPECT_EQ(tPortDS::kNoTimer, timerId(tPortDS::kSendSyncTimer));
}

TEST_F(NodeMessagingTest, MasterWithoutTimeGoesFaultyInsteadOfSynchronising)
{
    becomeMaster();
    const size_t before = m_messaging.sent().size();
    m_timekeeper.m_timeLost = true;
    post(new tSendSyncPacketEvent(&m_node));
    EXPECT_TRUE(m_states.waitFor(kPortStateFaulty));
    EXPECT_EQ(before, m_messaging.sent().size());
}

TEST_F(NodeMessagingTest, SlaveWithoutTimeGoesFaultyInsteadOfRequesting)
{
    becomeSlave();
    m_timekeeper.m_timeLost = true;
    post(new tDelayRequestEvent(&m_node));
    EXPECT_TRUE(m_states.waitFor(kPortStateFaulty));
    EXPECT_TRUE(m_messaging.sentOfType(kMessageTypeDelayReq).empty());
}

} // namespace
