// The foreign master records: qualification over the sliding window, aging by
// the timer chain, the table's limits, and the decisions that must never keep
// a deleted Announce.
#include "orvptp/tForeignMasterAging.h"

#include "tAnnounceBuilder.h"

#include <gtest/gtest.h>

#include <vector>

using namespace nOrvPTP000;
using nAnnounceTest::clockId;
using nAnnounceTest::tAnnounceBuilder;
using nOrvTarn000::kStatusMemoryFull;
using nOrvTarn000::tStatus;

namespace
{

class tRecordingTimer : public iForeignMasterTimer
{
public:
    void armForeignMasterTimeout(const tPortIdentity& a_sender, tStatus& a_status) override
    {
        if (a_status.isNotFatal())
        {
            m_armed.push_back(a_sender);
        }
    }

    std::vector<tPortIdentity> m_armed;
};

class ForeignMasterDSTest : public ::testing::Test
{
protected:
    ForeignMasterDSTest() : m_table(m_status), m_output(1, m_status) {}

    static std::unique_ptr<tAnnounceMessage> announceFrom(const tPortIdentity& a_sender)
    {
        return tAnnounceBuilder(a_sender.getClockIdentity()).sender(a_sender).make();
    }

    // An Announce of a_sender arrives; true when it made a new record.
    bool receive(const tPortIdentity& a_sender)
    {
        return m_table.addAnnounce(announceFrom(a_sender), m_status) == 1;
    }

    // An admitted Announce of a_sender is stored; returns it.
    const tAnnounceMessage* store(const tPortIdentity& a_sender)
    {
        std::unique_ptr<tAnnounceMessage> pMessage = announceFrom(a_sender);
        const tAnnounceMessage* pStored = pMessage.get();
        storeForeignAnnounce(std::move(pMessage), m_table, m_output, m_timer, m_status);
        return pStored;
    }

    // The aging timer of a_sender fires once.
    void fire(const tPortIdentity& a_sender)
    {
        ageForeignMaster(a_sender, m_table, m_output, m_timer, m_status);
    }

    tForeignMasterRecord* recordOf(const tPortIdentity& a_sender)
    {
        for (tForeignMasterDS::tIterator it = m_table.begin(); it != m_table.end(); ++it)
        {
            if ((*it)->getSender() == a_sender)
            {
                return *it;
            }
        }
        return nullptr;
    }

    u32 records() { return m_table.getRecordCount(m_status); }

    tStatus m_status;
    tForeignMasterDS m_table;
    tBMCOutput m_output;
    tRecordingTimer m_timer;
    const tPortIdentity m_senderA{clockId(0x0A), 1};
    const tPortIdentity m_senderB{clockId(0x0B), 1};
};

// A record qualifies with two Announce messages in its window of four slots.
TEST_F(ForeignMasterDSTest, TheWindowQualifiesAndSlides)
{
    EXPECT_TRUE(receive(m_senderA));
    EXPECT_EQ(m_table.getAnnounceCount(m_senderA, m_status), 1);
    EXPECT_FALSE(recordOf(m_senderA)->isQualified());
    for (int i = 0; i < 3; ++i)
    {
        m_table.advanceWindow(m_senderA, m_status);
    }
    // Still inside the window: the first Announce is in the oldest slot.
    EXPECT_FALSE(receive(m_senderA));
    EXPECT_EQ(m_table.getAnnounceCount(m_senderA, m_status), 2);
    EXPECT_TRUE(recordOf(m_senderA)->isQualified());
    EXPECT_EQ(records(), 1u);

    m_table.advanceWindow(m_senderA, m_status);
    EXPECT_EQ(m_table.getAnnounceCount(m_senderA, m_status), 1);
    EXPECT_FALSE(recordOf(m_senderA)->isQualified());
    for (int i = 0; i < 3; ++i)
    {
        m_table.advanceWindow(m_senderA, m_status);
    }
    EXPECT_EQ(m_table.getAnnounceCount(m_senderA, m_status), 0);
    EXPECT_EQ(m_status.getCode(), 0);
}

TEST_F(ForeignMasterDSTest, RecordsKeepTheirOrderAndGoOneByOne)
{
    const tPortIdentity senderC(clockId(0x0C), 1);
    receive(m_senderB);
    receive(m_senderA);
    receive(senderC);
    receive(m_senderA);

    tForeignMasterDS::tIterator it = m_table.begin();
    ASSERT_EQ((*it)->getSender(), m_senderB);
    ++it;
    ASSERT_EQ((*it)->getSender(), m_senderA);
    m_table.erase(it, m_status);
    ASSERT_NE(it, m_table.end());
    EXPECT_EQ((*it)->getSender(), senderC);
    m_table.erase(it, m_status);
    EXPECT_EQ(it, m_table.end());
    EXPECT_EQ(records(), 1u);

    // An unknown sender counts 0 and is no failure.
    EXPECT_EQ(m_table.getAnnounceCount(m_senderA, m_status), 0);
    m_table.advanceWindow(m_senderA, m_status);
    m_table.removeRecord(m_senderA, m_status);
    EXPECT_EQ(m_status.getCode(), 0);
    m_table.removeRecord(m_senderB, m_status);
    EXPECT_EQ(records(), 0u);
    receive(m_senderA);
    receive(m_senderB);
    m_table.clear(m_status);
    EXPECT_EQ(m_table.begin(), m_table.end());
}

// A full table refuses a new sender and still counts the known ones. The
// clock's table holds 64 records; a smaller one shows the rule.
TEST_F(ForeignMasterDSTest, AFullTableRefusesNewSendersOnly)
{
    EXPECT_EQ(u32(tForeignMasterDS::kMaximumRecords), 64u);
    tForeignMasterDS table(m_status, 3);
    for (u16 port = 1; port <= 3; ++port)
    {
        EXPECT_EQ(table.addAnnounce(announceFrom(tPortIdentity(clockId(0x01), port)), m_status), 1);
    }
    EXPECT_EQ(table.addAnnounce(announceFrom(m_senderA), m_status), 0);
    EXPECT_EQ(m_status.getCode(), kStatusMemoryFull);

    tStatus status;
    const tPortIdentity known(clockId(0x01), 2);
    EXPECT_EQ(table.addAnnounce(announceFrom(known), status), 0);
    EXPECT_EQ(status.getCode(), 0);
    EXPECT_EQ(table.getAnnounceCount(known, status), 2);

    table.removeRecord(known, status);
    EXPECT_EQ(table.addAnnounce(announceFrom(m_senderA), status), 1);
    EXPECT_EQ(status.getCode(), 0);
}

// Aging: a new record arms the timer once; each firing moves the window and
// re-arms while Announce messages remain; the fourth silent firing ends the
// record and the decision that named its sender.
TEST_F(ForeignMasterDSTest, SilentMasterGoesAtTheFourthFiring)
{
    store(m_senderA);
    store(m_senderA);
    ASSERT_EQ(m_timer.m_armed.size(), 1u);
    EXPECT_EQ(m_timer.m_armed[0], m_senderA);
    m_output.setDecision(
        1, tStateDecision(kDecisionSlave, kUpdateS1, recordOf(m_senderA)->getLastAnnounce()),
        m_status);

    for (int firing = 1; firing <= 3; ++firing)
    {
        fire(m_senderA);
        EXPECT_EQ(records(), 1u) << firing;
        EXPECT_EQ(m_timer.m_armed.size(), 1u + firing);
    }
    fire(m_senderA);
    EXPECT_EQ(records(), 0u);
    EXPECT_EQ(m_timer.m_armed.size(), 4u);
    const tStateDecision decision = m_output.getDecision(1, m_status);
    EXPECT_EQ(decision.m_decision, kDecisionListening);
    EXPECT_EQ(decision.m_updateCode, kUpdateM1);
    EXPECT_EQ(decision.m_pMessage, nullptr);
    EXPECT_EQ(m_status.getCode(), 0);
}

// The timer of an already removed record still fires; a record of the same
// sender made since then counts both chains.
TEST_F(ForeignMasterDSTest, ARemovedRecordsTimerFindsNothingOrTheNewRecord)
{
    store(m_senderA);
    m_table.removeRecord(m_senderA, m_status);
    fire(m_senderA);
    EXPECT_EQ(records(), 0u);
    EXPECT_EQ(m_timer.m_armed.size(), 1u);

    store(m_senderA);
    EXPECT_EQ(m_timer.m_armed.size(), 2u);
    fire(m_senderA);
    fire(m_senderA);
    EXPECT_EQ(m_table.getAnnounceCount(m_senderA, m_status), 1);
    EXPECT_EQ(m_status.getCode(), 0);
}

// The record keeps only its sender's newest Announce, and a decision that
// names the sender follows it there; other senders' Announce messages leave
// the decision alone.
TEST_F(ForeignMasterDSTest, ADecisionFollowsItsSendersNewestAnnounce)
{
    store(m_senderA);
    store(m_senderB);
    m_output.setDecision(
        1, tStateDecision(kDecisionPassive, kUpdateP1, recordOf(m_senderA)->getLastAnnounce()),
        m_status);
    store(m_senderB);
    EXPECT_EQ(m_output.getDecision(1, m_status).m_pMessage, recordOf(m_senderA)->getLastAnnounce());

    const tAnnounceMessage* pNewest = store(m_senderA);
    const tStateDecision decision = m_output.getDecision(1, m_status);
    EXPECT_EQ(decision.m_pMessage, pNewest);
    EXPECT_EQ(decision.m_decision, kDecisionPassive);
    EXPECT_EQ(decision.m_updateCode, kUpdateP1);
    EXPECT_EQ(recordOf(m_senderA)->getLastAnnounce(), pNewest);
    EXPECT_EQ(recordOf(m_senderA)->getSender(), m_senderA);
}

TEST_F(ForeignMasterDSTest, ARefusedAnnounceLeavesTheDecisionOnTheStoredOne)
{
    tForeignMasterDS table(m_status, 1);
    table.addAnnounce(announceFrom(m_senderA), m_status);
    const tAnnounceMessage* pStored = (*table.begin())->getLastAnnounce();
    m_output.setDecision(1, tStateDecision(kDecisionSlave, kUpdateS1, pStored), m_status);

    storeForeignAnnounce(announceFrom(m_senderB), table, m_output, m_timer, m_status);
    EXPECT_EQ(m_status.getCode(), kStatusMemoryFull);
    tStatus status;
    EXPECT_EQ(m_output.getDecision(1, status).m_pMessage, pStored);
    EXPECT_EQ(m_output.getDecision(1, status).m_decision, kDecisionSlave);
    EXPECT_EQ((*table.begin())->getLastAnnounce(), pStored);
    EXPECT_EQ(table.getAnnounceCount(m_senderB, status), 0);
    EXPECT_TRUE(m_timer.m_armed.empty());
}

TEST_F(ForeignMasterDSTest, DroppingTheBestRemovesItsRecordAndDecision)
{
    store(m_senderA);
    store(m_senderB);
    dropBestForeignMaster(1, m_table, m_output, m_status);
    EXPECT_EQ(records(), 2u);

    m_output.setDecision(
        1, tStateDecision(kDecisionSlave, kUpdateS1, recordOf(m_senderB)->getLastAnnounce()),
        m_status);
    dropBestForeignMaster(1, m_table, m_output, m_status);
    EXPECT_EQ(records(), 1u);
    EXPECT_EQ(recordOf(m_senderB), nullptr);
    EXPECT_EQ(m_output.getDecision(1, m_status).m_pMessage, nullptr);
    EXPECT_EQ(m_output.getDecision(1, m_status).m_decision, kDecisionListening);
    EXPECT_EQ(m_status.getCode(), 0);
}

} // namespace
