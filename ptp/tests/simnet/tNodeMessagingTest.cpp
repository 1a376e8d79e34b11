// A node's messages on the wire: the fields it fills from its data sets and
// counters, what it takes from its master's messages and which received
// messages it lets count at all. Received messages are edited on their way
// by the network's in-flight hook.
#include "tScenario.h"

#include <algorithm>

using namespace nSimNet;
using namespace nOrvPTP000;

namespace
{

const i64 kScale = 65536;
const i64 kDelayNs = 48000;

enum : u32
{
    kClockNumberOffset = kSourcePortIdentityOffset + 7, // last byte of the clock identity
    kPortNumberOffset = kSourcePortIdentityOffset + 8,
    kTimestampOffset = kHeaderLength, // seconds of the first timestamp of the body
    kRequestingPortNumberOffset = kHeaderLength + 18,
    kUtcOffsetOffset = kHeaderLength + 10, // of an Announce
    kStepsRemovedOffset = kHeaderLength + 27
};

// An edit of a datagram on its way: a_delta added to one field, in its width.
struct tEdit
{
    u32 m_offset;
    u32 m_length;
    u64 m_delta;

    void apply(std::vector<u8>& a_rBytes) const
    {
        setField(a_rBytes, m_offset, m_length, fieldOf(a_rBytes, m_offset, m_length) + m_delta);
    }
};
const tEdit kNoEdit = {0, 0, 0};
const tEdit kOtherClock = {kClockNumberOffset, 1, 0x70};
const tEdit kOtherPort = {kPortNumberOffset, 2, 1};
const tEdit kOtherDomain = {kDomainNumberOffset, 1, 1};
const tEdit kOtherRequester = {kRequestingPortNumberOffset, 2, 6};
const tEdit kEarlierRequest = {kSequenceIdOffset, 2, ~u64(0)};

class NodeMessagingTest : public tScenario
{
protected:
    // Clock 1 serves clock 2 and the path delay is measured. Each starts
    // with every counter one short of its wrap, before it has sent anything;
    // the master first, so that the slave never serves.
    void settlePair(tNodeSettings a_settings = tNodeSettings(), i8 a_masterLogMinDelayReq = -4)
    {
        m_pSlave = &addClock(2, a_settings);
        a_settings.m_priority1 = 100;
        a_settings.m_logMinDelayReqInterval = a_masterLogMinDelayReq;
        m_pMaster = &addClock(1, a_settings);
        m_network.setSymmetricDelay(m_pMaster->getId(), m_pSlave->getId(), kDelayNs);
        for (tSimNode* pNode : {m_pMaster, m_pSlave})
        {
            tStatus status;
            pNode->start(status);
            pNode->runOnDispatcher(
                [](tPTPNode& a_rNode, tStatus&)
                {
                    for (u32 kind = 0; kind < tPortDS::kSequenceCount; ++kind)
                    {
                        while (a_rNode.getPortDS().getSequenceId(kind) != 0xFFFF)
                        {
                            a_rNode.getPortDS().nextSequenceId(kind);
                        }
                    }
                },
                status);
            ASSERT_EQ(status.getCode(), 0);
            ASSERT_TRUE(m_pMaster->waitForState(kPortStateMaster, kSettleBound));
        }
        ASSERT_TRUE(m_network.waitUntil([this] { return m_pSlave->getMeanPathDelay() != 0; },
                                        kSettleBound));
    }

    // Edits the messages of a_types that a_from sends, on their way.
    void editOnTheWay(tSimNode& a_from, u32 a_types,
                      const std::function<void(std::vector<u8>&)>& a_edit)
    {
        const u32 from = a_from.getId();
        m_network.setInFlightHook(
            [from, a_types, a_edit](tInFlight& a_rCopy)
            {
                if (a_rCopy.m_from == from && ((a_types >> messageTypeOf(a_rCopy.m_bytes)) & 1))
                {
                    a_edit(a_rCopy.m_bytes);
                }
            });
    }

    size_t countSince(tSimNode& a_node, size_t a_from, u8 a_type)
    {
        const std::vector<tSentDatagram> sent = m_network.getSent(a_node.getId());
        return std::count_if(sent.begin() + static_cast<std::ptrdiff_t>(a_from), sent.end(),
                             [a_type](const tSentDatagram& a_datagram)
                             { return messageTypeOf(a_datagram.m_bytes) == a_type; });
    }

    tSimNode* m_pMaster = nullptr;
    tSimNode* m_pSlave = nullptr;
};

// ---- what a node sends ----

TEST_F(NodeMessagingTest, MessagesCarryThePortsFieldsAndTheirCountersWrap)
{
    // The header of each message type as a node fills it.
    struct tForm
    {
        u8 m_type;
        bool m_byMaster;
        bool m_event;
        i8 m_logMessageInterval;
    };
    const tForm kForms[] = {{kSync, true, true, -4},
                            {kFollowUp, true, false, -4},
                            {kAnnounce, true, false, -3},
                            {kDelayResp, true, false, -2},
                            {kDelayReq, false, true, 0x7F}};
    // Only the answer to Delay_Req 65535 gets through, and Syncs come late
    // enough that no round ends between a request and its answer.
    m_network.setInFlightHook(
        [](tInFlight& a_rCopy)
        {
            const u8 type = messageTypeOf(a_rCopy.m_bytes);
            a_rCopy.m_drop =
                type == kDelayResp && fieldOf(a_rCopy.m_bytes, kSequenceIdOffset, 2) != 0xFFFF;
            a_rCopy.m_extraDelayNs = type == kSync || type == kFollowUp ? 500000 : 0;
        });
    tNodeSettings settings;
    settings.m_domainNumber = 3;
    settlePair(settings, -2);
    // The answer to 65535 was matched when the counter stood at 0: the delay
    // has half the Sync's lateness in it.
    EXPECT_EQ(m_pSlave->getMeanPathDelay(), (kDelayNs + 250000) * kScale);
    ASSERT_TRUE(sends(*m_pMaster, kAnnounce, 2) && sends(*m_pSlave, kDelayReq, 2));

    for (tSimNode* pNode : all())
    {
        u16 next[16];
        std::fill(next, next + 16, 0xFFFF);
        for (const tSentDatagram& sent : m_network.getSent(pNode->getId()))
        {
            const std::vector<u8>& bytes = sent.m_bytes;
            const u8 type = messageTypeOf(bytes);
            const tForm* pForm =
                std::find_if(std::begin(kForms), std::end(kForms),
                             [type](const tForm& a_f) { return a_f.m_type == type; });
            ASSERT_NE(pForm, std::end(kForms)) << "type " << int(type);
            EXPECT_EQ(pForm->m_byMaster, pNode == m_pMaster) << "type " << int(type);
            EXPECT_EQ(sent.m_event, pForm->m_event);
            EXPECT_EQ(bytes[kDomainNumberOffset], 3);
            EXPECT_TRUE(std::equal(pNode->getIdentity().getBytes(),
                                   pNode->getIdentity().getBytes() + 8,
                                   bytes.begin() + kSourcePortIdentityOffset));
            EXPECT_EQ(fieldOf(bytes, kPortNumberOffset, 2), 1u);
            EXPECT_EQ(static_cast<i8>(bytes[kLogMessageIntervalOffset]),
                      pForm->m_logMessageInterval);
            EXPECT_EQ((bytes[kFlagsOffset] & 0x02) != 0, type == kSync) << "twoStepFlag";
            // Each counter runs on through its wrap; a Follow_Up takes its Sync's.
            const u16 sequenceId = static_cast<u16>(fieldOf(bytes, kSequenceIdOffset, 2));
            EXPECT_EQ(sequenceId, type == kFollowUp ? u16(next[kSync] - 1) : next[type]);
            if (type != kFollowUp)
            {
                next[type] = static_cast<u16>(sequenceId + 1);
            }
        }
    }
}

TEST_F(NodeMessagingTest, WhatIsSentFollowsTransmitTimesTheStepsTheStateAndTheMechanism)
{
    settlePair();
    tSimNode& master = *m_pMaster;
    const u32 id = master.getId();
    // The first look misses: the second, a moment later, finds the time.
    size_t from = m_network.getSent(id).size();
    m_network.loseTimestamps(id, false, 1);
    ASSERT_TRUE(sends(master, kSync, 3));
    EXPECT_EQ(countSince(master, from, kFollowUp), countSince(master, from, kSync));
    // Both looks miss: that Sync goes without its Follow_Up, the next one not.
    from = m_network.getSent(id).size();
    m_network.loseTimestamps(id, false, 2);
    ASSERT_TRUE(sends(master, kSync, 3));
    EXPECT_EQ(countSince(master, from, kFollowUp), countSince(master, from, kSync) - 1);

    // One step: the Sync carries its time, and the slave measures it as exactly.
    tStatus status;
    master.runOnDispatcher([](tPTPNode& a_rNode, tStatus& a_rStatus)
                           { a_rNode.setTwoStepFlag(false, a_rStatus, 0); },
                           status);
    from = m_network.getSent(id).size();
    ASSERT_TRUE(sends(master, kSync, 4));
    EXPECT_EQ(countSince(master, from, kFollowUp), 0u);
    const tSample last = m_pSlave->getSamples().back();
    EXPECT_EQ(last.m_offsetFromMaster, 0);
    EXPECT_EQ(last.m_meanPathDelay, kDelayNs * kScale);

    // Send events that were under way when a master left find a slave; and a
    // slave that is to measure by peer delay sends no Delay_Req.
    tPTPNode& slave = m_pSlave->node();
    slave.writeProperty<DELAY_MECHANISM>(2, status);
    const size_t sent = m_network.getSent(m_pSlave->getId()).size();
    slave.postEvent(std::unique_ptr<iPTPEvent>(new tSendAnnouncePacketEvent(&slave)), status);
    slave.postEvent(std::unique_ptr<iPTPEvent>(new tSendSyncPacketEvent(&slave)), status);
    ASSERT_TRUE(sends(master, kSync, 20));
    EXPECT_EQ(m_network.getSent(m_pSlave->getId()).size(), sent);
}

TEST_F(NodeMessagingTest, ASlaveTakesOverWhatItsMasterAnnouncesAndAnUncalibratedPortOnlyMeasures)
{
    tNodeSettings grandmaster;
    grandmaster.m_priority1 = 100;
    grandmaster.m_clockClass = 6;
    tSimNode& master = addClock(1, grandmaster);
    tSimNode& follower = addClock(2);
    follower.setAutoCalibrate(false);
    startAll();
    ASSERT_TRUE(
        settlesInto({{&master, kPortStateMaster}, {&follower, kPortStateUncalibrated, &master}}));
    tPTPNode& m = master.node();
    tPTPNode& f = follower.node();
    tStatus status;
    // Its own grandmaster, the master puts what it writes in force at once.
    m.writeProperty<PRIORITY2>(77, status);
    m.writeProperty<CURRENT_UTC_OFFSET>(37, status);
    m.writeProperty<LEAP61>(true, status);
    ASSERT_TRUE(sends(master, kAnnounce, 3));
    EXPECT_EQ(f.readProperty<GRANDMASTER_PRIORITY2>(status), 128);
    EXPECT_EQ(f.readProperty<CURRENT_UTC_OFFSET>(status), 34);
    EXPECT_FALSE(follower.getSamples().empty()) << "it measures all the same";

    f.postMasterClockSelectedCheck(status);
    ASSERT_TRUE(follower.waitForState(kPortStateSlave, kSettleBound));
    ASSERT_TRUE(sends(master, kAnnounce, 2));
    EXPECT_EQ(f.readProperty<GRANDMASTER_PRIORITY1>(status), 100);
    EXPECT_EQ(f.readProperty<GRANDMASTER_PRIORITY2>(status), 77);
    EXPECT_EQ(f.readProperty<GRANDMASTER_CLOCK_CLASS>(status), 6);
    EXPECT_EQ(f.readProperty<STEPS_REMOVED>(status), 1);
    EXPECT_EQ(f.readProperty<CURRENT_UTC_OFFSET>(status), 37);
    EXPECT_TRUE(f.readProperty<LEAP61>(status));

    // What a follower writes is what it would announce: in force once it serves.
    f.writeProperty<CURRENT_UTC_OFFSET>(40, status);
    EXPECT_EQ(f.readProperty<CURRENT_UTC_OFFSET>(status), 37);
    stop(master);
    ASSERT_TRUE(follower.waitForState(kPortStateMaster, kSettleBound));
    EXPECT_EQ(f.readProperty<CURRENT_UTC_OFFSET>(status), 40);
    EXPECT_EQ(status.getCode(), 0);
}

// ---- which received messages count ----

TEST_F(NodeMessagingTest, OnlyQualifiedAnnouncesOfTheParentPortKeepASlave)
{
    settlePair();
    tSimNode& slave = *m_pSlave;
    // One from another port of the parent clock is not the parent's: the new
    // UTC offset in it is not taken over, nor is that port the new parent.
    const size_t before = slave.getTransitionCount();
    editOnTheWay(*m_pMaster, 1u << kAnnounce,
                 [](std::vector<u8>& a_rBytes)
                 {
                     kOtherPort.apply(a_rBytes);
                     tEdit{kUtcOffsetOffset, 2, 3}.apply(a_rBytes);
                 });
    ASSERT_TRUE(sends(*m_pMaster, kAnnounce, 1));
    m_network.setInFlightHook(tInFlightHook());
    const u64 heard = m_network.getDeliveredCount(slave.getId(), kAnnounce) + 1;
    ASSERT_TRUE(m_network.waitUntil(
        [&] { return m_network.getDeliveredCount(slave.getId(), kAnnounce) >= heard; },
        kSettleBound));
    tStatus status;
    EXPECT_EQ(slave.node().readProperty<CURRENT_UTC_OFFSET>(status), 34);
    ASSERT_TRUE(sends(*m_pMaster, kAnnounce, 3));
    EXPECT_EQ(slave.getTransitionCount(), before) << describeAll(all());
    // 255 steps removed: the parent's, but not qualified, so its record ages
    // out and the next state decision finds no master to follow.
    editOnTheWay(*m_pMaster, 1u << kAnnounce,
                 [](std::vector<u8>& a_rBytes) {
                     tEdit{kStepsRemovedOffset, 2, 255}.apply(a_rBytes);
                 });
    EXPECT_TRUE(slave.waitForEntry(kPortStateMaster, before, kSettleBound));
}

TEST_F(NodeMessagingTest, AMasterAnswersTheDelayRequestsOfOthersOnly)
{
    settlePair();
    // The master is clock 1, the slave clock 2.
    struct tCase
    {
        const char* m_name;
        tEdit m_edits[2];
        u32 m_length; // cut or padded to this length, unless 0
        bool m_loseReceiveTimes;
        bool m_answered;
    };
    const tEdit masterClock = {kClockNumberOffset, 1, ~u64(0)};
    const tCase kCases[] = {
        {"as sent", {kNoEdit, kNoEdit}, 0, false, true},
        {"the master's own, looped back", {masterClock, kNoEdit}, 0, false, false},
        {"from another port of the master's clock", {masterClock, kOtherPort}, 0, false, true},
        {"of another domain", {kOtherDomain, kNoEdit}, 0, false, false},
        {"padded by its sender", {{0, 1, 0x10}, kNoEdit}, 124, false, true},
        {"cut short", {kNoEdit, kNoEdit}, 20, false, false},
        {"without a receive time", {kNoEdit, kNoEdit}, 0, true, false},
    };
    const u32 master = m_pMaster->getId();
    for (const tCase& c : kCases)
    {
        editOnTheWay(*m_pSlave, 1u << kDelayReq,
                     [&c](std::vector<u8>& a_rBytes)
                     {
                         c.m_edits[0].apply(a_rBytes);
                         c.m_edits[1].apply(a_rBytes);
                         a_rBytes.resize(c.m_length != 0 ? c.m_length : a_rBytes.size(), 0);
                     });
        m_network.loseTimestamps(master, true, c.m_loseReceiveTimes ? 1000000 : 0);
        // What was under way has been answered by now.
        ASSERT_TRUE(sends(*m_pSlave, kDelayReq, 1));
        const u64 answers = m_network.getSentCount(master, kDelayResp);
        ASSERT_TRUE(sends(*m_pSlave, kDelayReq, 3));
        EXPECT_EQ(m_network.getSentCount(master, kDelayResp) > answers, c.m_answered) << c.m_name;
    }
}

// One edit of the master's messages to the slave, and what the slave then
// still takes: samples from its Syncs, a path delay from its Delay_Resp
// messages, and the master's logMinDelayReqInterval that these carry.
struct tReceptionCase
{
    const char* m_name;
    u32 m_types;
    tEdit m_edit;
    bool m_loseReceiveTimes;
    bool m_samples;
    bool m_delayChanges;
    bool m_intervalTaken;
};

const tReceptionCase kReceptionCases[] = {
    {"DelayRespOfTheParent", 1u << kDelayResp, kNoEdit, false, true, true, true},
    {"DelayRespFromAnotherClock", 1u << kDelayResp, kOtherClock, false, true, false, false},
    {"DelayRespFromAnotherPortOfTheParentClock", 1u << kDelayResp, kOtherPort, false, true, true,
     true},
    {"DelayRespForAnotherRequester", 1u << kDelayResp, kOtherRequester, false, true, false, false},
    {"DelayRespToAnEarlierRequest", 1u << kDelayResp, kEarlierRequest, false, true, false, true},
    {"DelayRespOfAnotherDomain", 1u << kDelayResp, kOtherDomain, false, true, false, false},
    {"SyncFromAnotherClock", 1u << kSync, kOtherClock, false, false, false, true},
    {"FollowUpFromAnotherClock", 1u << kFollowUp, kOtherClock, false, false, false, true},
    {"SyncAndFollowUpFromAnotherPortOfTheParentClock", 1u << kSync | 1u << kFollowUp, kOtherPort,
     false, true, false, true},
    {"SyncOfAnotherDomain", 1u << kSync, kOtherDomain, false, false, false, true},
    {"SyncWithoutReceiveTime", 0, kNoEdit, true, false, false, true},
};

class ReceptionTest : public NodeMessagingTest, public ::testing::WithParamInterface<tReceptionCase>
{
};

TEST_P(ReceptionTest, TheSlaveTakesWhatComesFromItsParentOnly)
{
    const tReceptionCase& c = GetParam();
    settlePair();
    tSimNode& master = *m_pMaster;
    tSimNode& slave = *m_pSlave;
    const i64 delay = slave.getMeanPathDelay();
    // Every edited Delay_Resp tells of a receipt one second later, which
    // would lengthen the path by half a second if it were taken.
    editOnTheWay(master, c.m_types,
                 [&c](std::vector<u8>& a_rBytes)
                 {
                     c.m_edit.apply(a_rBytes);
                     if (messageTypeOf(a_rBytes) == kDelayResp)
                     {
                         tEdit{kTimestampOffset, 6, 1}.apply(a_rBytes);
                     }
                 });
    m_network.loseTimestamps(slave.getId(), true, c.m_loseReceiveTimes ? 1000000 : 0);
    tStatus status;
    master.node().writeProperty<LOG_MIN_DELAY_REQ_INTERVAL>(-2, status);
    // What was under way has arrived by now.
    ASSERT_TRUE(sends(master, kSync, 2));
    const size_t samples = slave.getSamples().size();
    ASSERT_TRUE(sends(slave, kDelayReq, 4) && sends(master, kSync, 4));

    EXPECT_EQ(slave.getSamples().size() > samples, c.m_samples);
    EXPECT_EQ(slave.getMeanPathDelay() != delay, c.m_delayChanges);
    EXPECT_EQ(slave.node().readProperty<LOG_MIN_DELAY_REQ_INTERVAL>(status) == -2,
              c.m_intervalTaken);
    EXPECT_EQ(slave.getState(), kPortStateSlave);
}

INSTANTIATE_TEST_SUITE_P(Edits, ReceptionTest, ::testing::ValuesIn(kReceptionCases),
                         [](const ::testing::TestParamInfo<tReceptionCase>& a_info)
                         { return std::string(a_info.param.m_name); });

} // namespace
