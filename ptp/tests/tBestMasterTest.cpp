// Best master selection and state decisions over the foreign master records,
// the decision store, and the data-set update that each decision brings.
#include "orvptp/tBMCOutput.h"
#include "orvptp/tCurrentDS.h"
#include "orvptp/tDefaultBestMasterClockAlgorithm.h"
#include "orvptp/tDefaultDS.h"
#include "orvptp/tForeignMasterDS.h"
#include "orvptp/tParentDS.h"
#include "orvptp/tStateDecisionUpdate.h"
#include "orvptp/tTimePropertiesDS.h"

#include "tAnnounceBuilder.h"
#include "tFakeNode.h"

#include <gtest/gtest.h>

using namespace nOrvPTP000;
using nAnnounceTest::clockId;
using nAnnounceTest::tAnnounceBuilder;
using nFakeNode::tFakeNode;
using nOrvTarn000::kStatusInternalError;
using nOrvTarn000::kStatusInvalidArgument;
using nOrvTarn000::tStatus;

namespace
{

void expectDecision(const tStateDecision& a_decision, tDecisionCode a_code, tUpdateCode a_update,
                    const tAnnounceMessage* a_pMessage)
{
    EXPECT_EQ(a_decision.m_decision, a_code);
    EXPECT_EQ(a_decision.m_updateCode, a_update);
    EXPECT_EQ(a_decision.m_pMessage, a_pMessage);
}

// ---------------------------------------------------------------- tBMCOutput

TEST(BMCOutputTest, EntriesByPortNumberFromOne)
{
    tStatus zeroStatus;
    tBMCOutput none(0, zeroStatus);
    EXPECT_EQ(zeroStatus.getCode(), kStatusInvalidArgument);

    tStatus status;
    tBMCOutput output(1, status);
    expectDecision(output.getDecision(1, status), kDecisionListening, kUpdateM1, nullptr);
    auto pMessage = tAnnounceBuilder(clockId(1)).make();
    output.setDecision(1, tStateDecision(kDecisionSlave, kUpdateS1, pMessage.get()), status);
    expectDecision(output.getDecision(1, status), kDecisionSlave, kUpdateS1, pMessage.get());

    for (u16 port : {0, 2})
    {
        tStatus badStatus;
        expectDecision(output.getDecision(port, badStatus), kDecisionListening, kUpdateM1, nullptr);
        EXPECT_EQ(badStatus.getCode(), kStatusInvalidArgument);
        tStatus setStatus;
        output.setDecision(port, tStateDecision(kDecisionMaster, kUpdateM2, nullptr), setStatus);
        EXPECT_EQ(setStatus.getCode(), kStatusInvalidArgument);
    }
    expectDecision(output.getDecision(1, status), kDecisionSlave, kUpdateS1, pMessage.get());

    // A fatal status reads the default and writes nothing.
    ORVTARN_SET_CODE(status, kStatusInternalError);
    expectDecision(output.getDecision(1, status), kDecisionListening, kUpdateM1, nullptr);
    output.setDecision(1, tStateDecision(kDecisionPassive, kUpdateP1, nullptr), status);
    tStatus fresh;
    expectDecision(output.getDecision(1, fresh), kDecisionSlave, kUpdateS1, pMessage.get());
}

TEST(BMCOutputTest, ReplaceMessageTakesOnlyTheSameSendersNewerAnnounce)
{
    tStatus status;
    tBMCOutput output(1, status);
    auto pOld = tAnnounceBuilder(clockId(1)).make();
    auto pNew = tAnnounceBuilder(clockId(1)).stepsRemoved(3).make();
    auto pOther = tAnnounceBuilder(clockId(2)).make();

    output.replaceMessage(pNew.get(), status); // no message held: nothing to replace
    expectDecision(output.getDecision(1, status), kDecisionListening, kUpdateM1, nullptr);

    output.setDecision(1, tStateDecision(kDecisionSlave, kUpdateS1, pOld.get()), status);
    output.replaceMessage(pOther.get(), status);
    output.replaceMessage(nullptr, status);
    expectDecision(output.getDecision(1, status), kDecisionSlave, kUpdateS1, pOld.get());
    output.replaceMessage(pNew.get(), status);
    expectDecision(output.getDecision(1, status), kDecisionSlave, kUpdateS1, pNew.get());
    EXPECT_EQ(status.getCode(), 0);

    ORVTARN_SET_CODE(status, kStatusInternalError);
    output.replaceMessage(pOld.get(), status);
    tStatus fresh;
    EXPECT_EQ(output.getDecision(1, fresh).m_pMessage, pNew.get());
}

TEST(BMCOutputTest, ResetsByPortMessageAndSender)
{
    tStatus status;
    tBMCOutput output(3, status);
    auto pA = tAnnounceBuilder(clockId(1)).make();
    auto pB = tAnnounceBuilder(clockId(2)).make();
    auto fill = [&]
    {
        output.setDecision(1, tStateDecision(kDecisionSlave, kUpdateS1, pA.get()), status);
        output.setDecision(2, tStateDecision(kDecisionPassive, kUpdateP2, pA.get()), status);
        output.setDecision(3, tStateDecision(kDecisionMaster, kUpdateM3, pB.get()), status);
    };
    fill();
    output.resetFrom(tPortIdentity(clockId(1), 1));
    EXPECT_EQ(output.getDecision(1, status).m_pMessage, nullptr);
    EXPECT_EQ(output.getDecision(2, status).m_pMessage, nullptr);
    EXPECT_EQ(output.getDecision(3, status).m_pMessage, pB.get());

    fill();
    output.resetHolding(pB.get());
    EXPECT_EQ(output.getDecision(1, status).m_pMessage, pA.get());
    expectDecision(output.getDecision(3, status), kDecisionListening, kUpdateM1, nullptr);

    fill();
    output.resetDecision(2, status);
    EXPECT_EQ(output.getDecision(2, status).m_pMessage, nullptr);
    output.resetAll();
    for (u16 port = 1; port <= 3; ++port)
    {
        expectDecision(output.getDecision(port, status), kDecisionListening, kUpdateM1, nullptr);
    }
    EXPECT_EQ(status.getCode(), 0);
}

// ----------------------------------------------------- best master selection

class BestMasterTest : public ::testing::Test
{
protected:
    BestMasterTest() : m_node(clockId(0x50)), m_table(m_status), m_output(1, m_status)
    {
        m_node.m_pForeignMasterDS = &m_table;
    }

    // One more Announce of a_builder's sender; returns the stored message.
    const tAnnounceMessage* receive(const tAnnounceBuilder& a_builder)
    {
        std::unique_ptr<tAnnounceMessage> pMessage = a_builder.make();
        const tAnnounceMessage* pStored = pMessage.get();
        m_table.addAnnounce(std::move(pMessage), m_status);
        return pStored;
    }

    // A qualified foreign master: two Announce messages in the window.
    const tAnnounceMessage* qualified(const tAnnounceBuilder& a_builder)
    {
        receive(a_builder);
        return receive(a_builder);
    }

    tStateDecision run()
    {
        m_algorithm.runBestMasterClock(m_node, m_output, m_status);
        return m_output.getDecision(1, m_status);
    }

    u32 records() { return m_table.getRecordCount(m_status); }

    tFakeNode m_node;
    tStatus m_status;
    tForeignMasterDS m_table;
    tBMCOutput m_output;
    tDefaultBestMasterClockAlgorithm m_algorithm;
};

// Without foreign masters a listening port stays so; any other is master.
TEST_F(BestMasterTest, NoForeignMasterListeningStaysOtherwiseMaster)
{
    m_output.setDecision(1, tStateDecision(kDecisionMaster, kUpdateM2, nullptr), m_status);
    expectDecision(run(), kDecisionListening, kUpdateM1, nullptr);
    m_node.m_portState = kPortStateMaster;
    expectDecision(run(), kDecisionMaster, kUpdateM2, nullptr);
    m_node.m_clockClass = 248;
    expectDecision(run(), kDecisionMaster, kUpdateM2, nullptr);
    m_node.m_clockClass = 6;
    expectDecision(run(), kDecisionMaster, kUpdateM1, nullptr);
    EXPECT_EQ(m_status.getCode(), 0);
}

TEST_F(BestMasterTest, LocalClockAgainstForeignMasters)
{
    m_node.m_priority1 = 100;
    qualified(tAnnounceBuilder(clockId(0x01)).priority1(101));
    qualified(tAnnounceBuilder(clockId(0x02)).priority1(120));
    expectDecision(run(), kDecisionMaster, kUpdateM2, nullptr);
    EXPECT_EQ(records(), 1u);

    // A better one makes the one port slave, in any state.
    const tAnnounceMessage* pBest = qualified(tAnnounceBuilder(clockId(0x03)).priority1(10));
    expectDecision(run(), kDecisionSlave, kUpdateS1, pBest);
    m_node.m_portState = kPortStateSlave;
    expectDecision(run(), kDecisionSlave, kUpdateS1, pBest);
    EXPECT_EQ(m_status.getCode(), 0);
}

TEST_F(BestMasterTest, OneAnnounceIsNotEnoughToTakePart)
{
    const tAnnounceBuilder better = tAnnounceBuilder(clockId(0x01)).priority1(10);
    receive(better);
    expectDecision(run(), kDecisionListening, kUpdateM1, nullptr);
    m_node.m_portState = kPortStateMaster;
    expectDecision(run(), kDecisionMaster, kUpdateM2, nullptr);
    EXPECT_EQ(records(), 1u);

    const tAnnounceMessage* pSecond = receive(better);
    expectDecision(run(), kDecisionSlave, kUpdateS1, pSecond);
}

TEST_F(BestMasterTest, QualifiedLosersLeaveTheTableAndUnqualifiedRecordsStay)
{
    qualified(tAnnounceBuilder(clockId(0x01)).priority1(30));
    const tAnnounceMessage* pWinner = qualified(tAnnounceBuilder(clockId(0x02)).priority1(10));
    receive(tAnnounceBuilder(clockId(0x03)).priority1(1)); // best of all, but heard once
    qualified(tAnnounceBuilder(clockId(0x04)).priority1(20));

    expectDecision(run(), kDecisionSlave, kUpdateS1, pWinner);
    ASSERT_EQ(records(), 2u);
    tForeignMasterDS::tIterator it = m_table.begin();
    EXPECT_EQ((*it)->getLastAnnounce(), pWinner);
    ++it;
    EXPECT_EQ((*it)->getSender().getClockIdentity(), clockId(0x03));
    EXPECT_FALSE((*it)->isQualified());
    EXPECT_EQ(m_status.getCode(), 0);
}

TEST_F(BestMasterTest, MasterOnlyClassesAreMasterOrPassiveNeverSlave)
{
    const tAnnounceMessage* pBetter = qualified(tAnnounceBuilder(clockId(0x01)).clockClass(6));

    m_node.m_clockClass = 13;
    expectDecision(run(), kDecisionPassive, kUpdateP1, pBetter);
    m_node.m_clockClass = 127;
    expectDecision(run(), kDecisionPassive, kUpdateP1, pBetter);
    m_node.m_clockClass = 128;
    expectDecision(run(), kDecisionSlave, kUpdateS1, pBetter);
    // Class 0 is not a master-only class either.
    m_node.m_clockClass = 0;
    expectDecision(run(), kDecisionMaster, kUpdateM2, nullptr);

    m_node.m_clockClass = 1;
    expectDecision(run(), kDecisionMaster, kUpdateM1, nullptr);
    m_node.m_clockClass = 7;
    expectDecision(run(), kDecisionPassive, kUpdateP1, pBetter);
    EXPECT_EQ(m_status.getCode(), 0);
}

// Slave-only is the port states' business: the decision does not read it.
TEST_F(BestMasterTest, SlaveOnlyDoesNotChangeTheDecision)
{
    m_node.m_slaveOnly = true;
    m_node.m_portState = kPortStateMaster;
    expectDecision(run(), kDecisionMaster, kUpdateM2, nullptr);
}

// A run that fails keeps the decisions it found, but none of them may point at
// a record that the run deleted before it failed.
TEST_F(BestMasterTest, AComparisonErrorStopsTheRunWithoutDanglingDecisions)
{
    const tAnnounceMessage* pFirst = qualified(tAnnounceBuilder(clockId(0x01)).priority1(30));
    qualified(tAnnounceBuilder(clockId(0x02)).priority1(10).stepsRemoved(2));
    // Sent from this very port one step further from the same grandmaster.
    qualified(tAnnounceBuilder(clockId(0x02))
                  .priority1(10)
                  .stepsRemoved(3)
                  .sender(tPortIdentity(m_node.m_clockIdentity, 1)));
    m_output.setDecision(1, tStateDecision(kDecisionSlave, kUpdateS1, pFirst), m_status);

    run();
    EXPECT_EQ(m_status.getCode(), kStatusInvalidArgument);
    tStatus status;
    expectDecision(m_output.getDecision(1, status), kDecisionListening, kUpdateM1, nullptr);
    EXPECT_EQ(m_table.getRecordCount(status), 2u);
}

// ------------------------------------------------------ several ports

class tTwoPortNode : public tFakeNode
{
public:
    explicit tTwoPortNode(const tClockIdentity& a_clockIdentity) : tFakeNode(a_clockIdentity)
    {
        m_numberPorts = 2;
    }
    tForeignMasterDS* getForeignMasterDS(u16 a_portNumber) override
    {
        return m_tables[a_portNumber - 1];
    }
    tForeignMasterDS* m_tables[2] = {nullptr, nullptr};
};

class TwoPortTest : public ::testing::Test
{
protected:
    TwoPortTest()
        : m_node(clockId(0x50)), m_table1(m_status), m_table2(m_status), m_output(2, m_status)
    {
        m_node.m_tables[0] = &m_table1;
        m_node.m_tables[1] = &m_table2;
        m_node.m_portState = kPortStateMaster;
    }

    static const tAnnounceMessage* qualified(tForeignMasterDS& a_table,
                                             const tAnnounceBuilder& a_builder, tStatus& a_status)
    {
        a_table.addAnnounce(a_builder.make(), a_status);
        std::unique_ptr<tAnnounceMessage> pMessage = a_builder.make();
        const tAnnounceMessage* pStored = pMessage.get();
        a_table.addAnnounce(std::move(pMessage), a_status);
        return pStored;
    }

    void run() { m_algorithm.runBestMasterClock(m_node, m_output, m_status); }

    tTwoPortNode m_node;
    tStatus m_status;
    tForeignMasterDS m_table1;
    tForeignMasterDS m_table2;
    tBMCOutput m_output;
    tDefaultBestMasterClockAlgorithm m_algorithm;
};

TEST_F(TwoPortTest, EbestPortIsSlaveAndAPortWithAWorseMasterIsMaster)
{
    qualified(m_table1, tAnnounceBuilder(clockId(1)).priority1(20), m_status);
    const tAnnounceMessage* pOn2 =
        qualified(m_table2, tAnnounceBuilder(clockId(2)).priority1(10), m_status);
    run();
    expectDecision(m_output.getDecision(1, m_status), kDecisionMaster, kUpdateM3, pOn2);
    expectDecision(m_output.getDecision(2, m_status), kDecisionSlave, kUpdateS1, pOn2);
    EXPECT_EQ(m_status.getCode(), 0);
}

// The same grandmaster reached over two ports at equal distance: the sender's
// identity decides by topology, and the losing port becomes passive.
TEST_F(TwoPortTest, SameGrandmasterOnAnotherPortMakesItPassive)
{
    const tAnnounceBuilder viaLow = tAnnounceBuilder(clockId(9))
                                        .priority1(10)
                                        .sender(tPortIdentity(clockId(0x20), 1))
                                        .stepsRemoved(1);
    const tAnnounceBuilder viaHigh = tAnnounceBuilder(clockId(9))
                                         .priority1(10)
                                         .sender(tPortIdentity(clockId(0x30), 1))
                                         .stepsRemoved(1);
    const tAnnounceMessage* pOn1 = qualified(m_table1, viaHigh, m_status);
    const tAnnounceMessage* pOn2 = qualified(m_table2, viaLow, m_status);
    run();
    expectDecision(m_output.getDecision(1, m_status), kDecisionPassive, kUpdateP2, pOn1);
    expectDecision(m_output.getDecision(2, m_status), kDecisionSlave, kUpdateS1, pOn2);
    EXPECT_EQ(m_status.getCode(), 0);
}

// One sender heard on both ports: a tie goes to the earlier port.
TEST_F(TwoPortTest, OnATieTheEarlierPortKeepsEbest)
{
    const tAnnounceBuilder master = tAnnounceBuilder(clockId(3)).priority1(10);
    const tAnnounceMessage* pOn1 = qualified(m_table1, master, m_status);
    const tAnnounceMessage* pOn2 = qualified(m_table2, master, m_status);
    run();
    expectDecision(m_output.getDecision(1, m_status), kDecisionSlave, kUpdateS1, pOn1);
    expectDecision(m_output.getDecision(2, m_status), kDecisionPassive, kUpdateP2, pOn2);
}

// ------------------------------------------------------ data-set update

class StateDecisionUpdateTest : public ::testing::Test
{
protected:
    StateDecisionUpdateTest() : m_defaultDS(clockId(0x50)), m_parentDS(clockId(0x50))
    {
        m_defaultDS.setClockQuality(tClockQuality(13, 0x21, 0x4E5D), m_status);
        m_defaultDS.setPriority1(11, m_status);
        m_defaultDS.setPriority2(22, m_status);
    }

    void apply(i32 a_code, const tAnnounceMessage* a_pMessage)
    {
        applyStateDecisionUpdate(a_code, a_pMessage, m_defaultDS, m_currentDS, m_parentDS,
                                 m_timePropertiesDS, m_localTimePropertiesDS, m_status);
    }

    // The state a slave is in after following some other master.
    void followSomeMaster()
    {
        auto pMessage = tAnnounceBuilder(clockId(0x77)).stepsRemoved(4).utcOffset(99).make();
        apply(kUpdateS1, pMessage.get());
        m_currentDS.setOffsetFromMaster(tTimeInterval(1234), m_status);
        m_currentDS.setMeanPathDelay(tTimeInterval(567), m_status);
    }

    void expectFollowingSomeMaster()
    {
        EXPECT_EQ(m_currentDS.getStepsRemoved(), 5);
        EXPECT_EQ(m_currentDS.getOffsetFromMaster().getNanoseconds(), 1234);
        EXPECT_EQ(m_parentDS.getGrandmasterIdentity(), clockId(0x77));
        EXPECT_EQ(m_timePropertiesDS.getCurrentUtcOffset(), 99);
    }

    tStatus m_status;
    tDefaultDS m_defaultDS;
    tCurrentDS m_currentDS;
    tParentDS m_parentDS;
    tTimePropertiesDS m_timePropertiesDS;
    tTimePropertiesDS m_localTimePropertiesDS;
};

TEST_F(StateDecisionUpdateTest, SlaveTakesParentGrandmasterAndTimeFromTheAnnounce)
{
    const tPortIdentity sender(clockId(0x31), 4);
    auto pMessage = tAnnounceBuilder(clockId(0x30))
                        .sender(sender)
                        .stepsRemoved(2)
                        .priority1(5)
                        .clockClass(6)
                        .clockAccuracy(0x22)
                        .variance(0x1234)
                        .priority2(7)
                        .utcOffset(37)
                        .timeSource(0x10)
                        .flags(true, false, true, true, false, true)
                        .make();
    apply(kUpdateS1, pMessage.get());

    EXPECT_EQ(m_currentDS.getStepsRemoved(), 3);
    EXPECT_EQ(m_parentDS.getParentPortIdentity(), sender);
    EXPECT_EQ(m_parentDS.getGrandmasterIdentity(), clockId(0x30));
    EXPECT_EQ(m_parentDS.getGrandmasterClockQuality(), tClockQuality(6, 0x22, 0x1234));
    EXPECT_EQ(m_parentDS.getGrandmasterPriority1(), 5);
    EXPECT_EQ(m_parentDS.getGrandmasterPriority2(), 7);
    EXPECT_EQ(m_timePropertiesDS.getCurrentUtcOffset(), 37);
    EXPECT_EQ(m_timePropertiesDS.getTimeSource(), 0x10);
    EXPECT_TRUE(m_timePropertiesDS.getCurrentUtcOffsetValid());
    EXPECT_FALSE(m_timePropertiesDS.getLeap59());
    EXPECT_TRUE(m_timePropertiesDS.getLeap61());
    EXPECT_TRUE(m_timePropertiesDS.getTimeTraceable());
    EXPECT_FALSE(m_timePropertiesDS.getFrequencyTraceable());
    EXPECT_TRUE(m_timePropertiesDS.getPtpTimescale());
    EXPECT_EQ(m_status.getCode(), 0);
}

TEST_F(StateDecisionUpdateTest, GrandmasterCodesMakeTheLocalClockItsOwnParent)
{
    for (i32 code : {kUpdateM1, kUpdateM2})
    {
        followSomeMaster();
        m_localTimePropertiesDS.setCurrentUtcOffset(36, m_status);
        m_localTimePropertiesDS.setCurrentUtcOffsetValid(true, m_status);
        m_localTimePropertiesDS.setLeap59(true, m_status);
        m_localTimePropertiesDS.setFrequencyTraceable(true, m_status);
        m_localTimePropertiesDS.setTimeSource(0x40, m_status);

        apply(code, nullptr);
        EXPECT_EQ(m_currentDS.getStepsRemoved(), 0) << code;
        EXPECT_EQ(m_currentDS.getOffsetFromMaster().getScaledNanoseconds(), 0);
        EXPECT_EQ(m_currentDS.getMeanPathDelay().getScaledNanoseconds(), 0);
        EXPECT_EQ(m_parentDS.getParentPortIdentity(), tPortIdentity(clockId(0x50), 0));
        EXPECT_EQ(m_parentDS.getGrandmasterIdentity(), clockId(0x50));
        EXPECT_EQ(m_parentDS.getGrandmasterClockQuality(), tClockQuality(13, 0x21, 0x4E5D));
        EXPECT_EQ(m_parentDS.getGrandmasterPriority1(), 11);
        EXPECT_EQ(m_parentDS.getGrandmasterPriority2(), 22);
        EXPECT_EQ(m_timePropertiesDS.getCurrentUtcOffset(), 36);
        EXPECT_TRUE(m_timePropertiesDS.getCurrentUtcOffsetValid());
        EXPECT_TRUE(m_timePropertiesDS.getLeap59());
        EXPECT_FALSE(m_timePropertiesDS.getLeap61());
        EXPECT_FALSE(m_timePropertiesDS.getTimeTraceable());
        EXPECT_TRUE(m_timePropertiesDS.getFrequencyTraceable());
        EXPECT_TRUE(m_timePropertiesDS.getPtpTimescale());
        EXPECT_EQ(m_timePropertiesDS.getTimeSource(), 0x40);
    }
    EXPECT_EQ(m_status.getCode(), 0);
}

TEST_F(StateDecisionUpdateTest, ArbitraryTimescaleAnnouncesNoLeapSecond)
{
    m_localTimePropertiesDS.setPtpTimescale(false, m_status);
    m_localTimePropertiesDS.setLeap59(true, m_status);
    m_localTimePropertiesDS.setLeap61(true, m_status);
    m_localTimePropertiesDS.setTimeTraceable(true, m_status);
    m_localTimePropertiesDS.setCurrentUtcOffset(-3, m_status);
    apply(kUpdateM1, nullptr);
    EXPECT_FALSE(m_timePropertiesDS.getPtpTimescale());
    EXPECT_FALSE(m_timePropertiesDS.getLeap59());
    EXPECT_FALSE(m_timePropertiesDS.getLeap61());
    EXPECT_TRUE(m_timePropertiesDS.getTimeTraceable());
    EXPECT_EQ(m_timePropertiesDS.getCurrentUtcOffset(), -3);
}

TEST_F(StateDecisionUpdateTest, OtherCodesChangeNothing)
{
    auto pMessage = tAnnounceBuilder(clockId(0x01)).stepsRemoved(9).make();
    for (i32 code : {i32(kUpdateM3), i32(kUpdateP1), i32(kUpdateP2), 6, -1})
    {
        followSomeMaster();
        apply(code, pMessage.get());
        expectFollowingSomeMaster();
    }
    EXPECT_EQ(m_status.getCode(), 0);

    // S1 without its Announce is refused; a fatal status changes nothing.
    apply(kUpdateS1, nullptr);
    EXPECT_EQ(m_status.getCode(), kStatusInvalidArgument);
    apply(kUpdateM1, nullptr);
    expectFollowingSomeMaster();
}

} // namespace
