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
#include "tWireTestSupport.h"

#include <gtest/gtest.h>

using namespace nOrvPTP000;
using nAnnounceTest::clockId;
using nAnnounceTest::tAnnounceBuilder;
using nFakeNode::tFakeNode;
using nOrvTarn000::kStatusInternalError;
using nOrvTarn000::kStatusInvalidArgument;
using nOrvTarn000::tStatus;
using nWireTest::traceText;

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
    const tStateDecision slave(kDecisionSlave, kUpdateS1, pMessage.get());
    output.setDecision(1, slave, status);
    for (u16 port : {0, 2})
    {
        tStatus badStatus;
        expectDecision(output.getDecision(port, badStatus), kDecisionListening, kUpdateM1, nullptr);
        output.setDecision(port, tStateDecision(kDecisionMaster, kUpdateM2, nullptr), badStatus);
        EXPECT_EQ(badStatus.getCode(), kStatusInvalidArgument);
    }
    // A fatal status reads the default and writes nothing.
    tStatus fatal;
    ORVTARN_SET_CODE(fatal, kStatusInternalError);
    expectDecision(output.getDecision(1, fatal), kDecisionListening, kUpdateM1, nullptr);
    output.setDecision(1, tStateDecision(kDecisionPassive, kUpdateP1, nullptr), fatal);
    output.replaceMessage(tAnnounceBuilder(clockId(1)).make().get(), fatal);
    expectDecision(output.getDecision(1, status), kDecisionSlave, kUpdateS1, pMessage.get());
    output.resetAll();
    expectDecision(output.getDecision(1, status), kDecisionListening, kUpdateM1, nullptr);
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

TEST_F(BestMasterTest, LocalClockAgainstForeignMasters)
{
    m_node.put<PRIORITY1>(100);
    qualified(tAnnounceBuilder(clockId(0x01)).priority1(101));
    qualified(tAnnounceBuilder(clockId(0x02)).priority1(120));
    expectDecision(run(), kDecisionMaster, kUpdateM2, nullptr);
    EXPECT_EQ(records(), 1u);

    // A better one makes the one port slave, in any state.
    const tAnnounceMessage* pBest = qualified(tAnnounceBuilder(clockId(0x03)).priority1(10));
    expectDecision(run(), kDecisionSlave, kUpdateS1, pBest);
    m_node.put<PORT_STATE>(kPortStateSlave);
    expectDecision(run(), kDecisionSlave, kUpdateS1, pBest);
    EXPECT_EQ(m_status.getCode(), 0);
}

TEST_F(BestMasterTest, OneAnnounceIsNotEnoughToTakePart)
{
    const tAnnounceBuilder better = tAnnounceBuilder(clockId(0x01)).priority1(10);
    receive(better);
    expectDecision(run(), kDecisionListening, kUpdateM1, nullptr);
    m_node.put<PORT_STATE>(kPortStateMaster);
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

    m_node.put<CLOCK_CLASS>(13);
    expectDecision(run(), kDecisionPassive, kUpdateP1, pBetter);
    m_node.put<CLOCK_CLASS>(127);
    expectDecision(run(), kDecisionPassive, kUpdateP1, pBetter);
    m_node.put<CLOCK_CLASS>(128);
    expectDecision(run(), kDecisionSlave, kUpdateS1, pBetter);
    // Class 0 is not a master-only class either.
    m_node.put<CLOCK_CLASS>(0);
    expectDecision(run(), kDecisionMaster, kUpdateM2, nullptr);

    m_node.put<CLOCK_CLASS>(1);
    expectDecision(run(), kDecisionMaster, kUpdateM1, nullptr);
    m_node.put<CLOCK_CLASS>(7);
    expectDecision(run(), kDecisionPassive, kUpdateP1, pBetter);
    EXPECT_EQ(m_status.getCode(), 0);
}

// Slave-only is the port states' business: the decision does not read it.
TEST_F(BestMasterTest, SlaveOnlyDoesNotChangeTheDecision)
{
    m_node.put<SLAVE_ONLY>(true);
    m_node.put<PORT_STATE>(kPortStateMaster);
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
                  .sender(tPortIdentity(m_node.getClockIdentity(), 1)));
    m_output.setDecision(1, tStateDecision(kDecisionSlave, kUpdateS1, pFirst), m_status);

    run();
    EXPECT_EQ(m_status.getCode(), kStatusInvalidArgument);
    tStatus status;
    expectDecision(m_output.getDecision(1, status), kDecisionListening, kUpdateM1, nullptr);
    EXPECT_EQ(m_table.getRecordCount(status), 2u);
}

// The selection runs over every port: the best of the ports' masters (Ebest)
// makes the port that heard it slave, and a port that heard a worse one
// master (M3).
TEST(TwoPortBestMasterTest, EbestPortIsSlaveAndTheOtherIsMaster)
{
    struct tTwoPortNode : tFakeNode
    {
        using tFakeNode::tFakeNode;
        tForeignMasterDS* getForeignMasterDS(u16 a_portNumber) override
        {
            return m_tables[a_portNumber - 1];
        }
        tForeignMasterDS* m_tables[2] = {};
    } node(clockId(0x50));
    tStatus status;
    tForeignMasterDS table1(status);
    tForeignMasterDS table2(status);
    tBMCOutput output(2, status);
    node.put<NUMBER_PORTS>(2);
    node.put<PORT_STATE>(kPortStateMaster);
    node.m_tables[0] = &table1;
    node.m_tables[1] = &table2;
    const tAnnounceBuilder worse = tAnnounceBuilder(clockId(1)).priority1(20);
    const tAnnounceBuilder better = tAnnounceBuilder(clockId(2)).priority1(10);
    table1.addAnnounce(worse.make(), status);
    table1.addAnnounce(worse.make(), status);
    table2.addAnnounce(better.make(), status);
    table2.addAnnounce(better.make(), status);
    const tAnnounceMessage* pOn2 = (*table2.begin())->getLastAnnounce();

    tDefaultBestMasterClockAlgorithm().runBestMasterClock(node, output, status);
    expectDecision(output.getDecision(1, status), kDecisionMaster, kUpdateM3, pOn2);
    expectDecision(output.getDecision(2, status), kDecisionSlave, kUpdateS1, pOn2);
    EXPECT_EQ(status.getCode(), 0);
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
        m_localTimePropertiesDS.setCurrentUtcOffset(36, m_status);
        m_localTimePropertiesDS.setCurrentUtcOffsetValid(true, m_status);
        m_localTimePropertiesDS.setLeap59(true, m_status);
        m_localTimePropertiesDS.setFrequencyTraceable(true, m_status);
        m_localTimePropertiesDS.setTimeSource(0x40, m_status);
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

    // The three data sets that an update writes, as traced.
    std::string traces()
    {
        return traceText(m_currentDS) + "|" + traceText(m_parentDS) + "|" +
               traceText(m_timePropertiesDS);
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
    auto pMessage = tAnnounceBuilder(clockId(0x30))
                        .sender(tPortIdentity(clockId(0x31), 4))
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
    EXPECT_EQ(traces(),
              "stepsRemoved: 3 offsetFromMaster: scaledNanoseconds: 0 meanPathDelay: "
              "scaledNanoseconds: 0|parentPortIdentity: clockIdentity: 100000fffe000031 "
              "portNumber: 4\n parentStats: 0  observedParentOffsetScaledLogVariance: 65535  "
              "observedParentClockPhaseChangeRate: 2147483647  grandmasterIdentity: "
              "100000fffe000030 grandmasterClockQuality: clockClass: 6 clockAccuracy: 0x22 "
              "offsetScaledLogVariance: 0x1234 grandmasterPriority1: 5  grandmasterPriority2: 7 "
              "|currentUtcOffset: 37  currentUtcOffsetValid: 1  leap59: 0  leap61: 1  "
              "timeTraceable: 1  frequencyTraceable: 0  ptpTimescale: 1  timeSource: 16 ");
    EXPECT_EQ(m_status.getCode(), 0);
}

// The local clock becomes its own parent and grandmaster, zero steps away and
// with nothing measured, under the local time properties.
TEST_F(StateDecisionUpdateTest, GrandmasterCodesMakeTheLocalClockItsOwnParent)
{
    for (i32 code : {kUpdateM1, kUpdateM2})
    {
        followSomeMaster();
        apply(code, nullptr);
        EXPECT_EQ(traces(),
                  "stepsRemoved: 0 offsetFromMaster: scaledNanoseconds: 0 meanPathDelay: "
                  "scaledNanoseconds: 0|parentPortIdentity: clockIdentity: 100000fffe000050 "
                  "portNumber: 0\n parentStats: 0  observedParentOffsetScaledLogVariance: 65535  "
                  "observedParentClockPhaseChangeRate: 2147483647  grandmasterIdentity: "
                  "100000fffe000050 grandmasterClockQuality: clockClass: 13 clockAccuracy: 0x21 "
                  "offsetScaledLogVariance: 0x4e5d grandmasterPriority1: 11  "
                  "grandmasterPriority2: 22 |" +
                      traceText(m_localTimePropertiesDS))
            << code;
    }
    EXPECT_EQ(m_status.getCode(), 0);

    // A clock that does not keep the PTP timescale announces no leap second.
    m_localTimePropertiesDS.setPtpTimescale(false, m_status);
    m_localTimePropertiesDS.setLeap61(true, m_status);
    apply(kUpdateM1, nullptr);
    EXPECT_EQ(traceText(m_timePropertiesDS),
              "currentUtcOffset: 36  currentUtcOffsetValid: 1  leap59: 0  leap61: 0  "
              "timeTraceable: 0  frequencyTraceable: 1  ptpTimescale: 0  timeSource: 64 ");
}

TEST_F(StateDecisionUpdateTest, OtherCodesChangeNothing)
{
    followSomeMaster();
    const std::string following = traces();
    auto pMessage = tAnnounceBuilder(clockId(0x01)).stepsRemoved(9).make();
    for (i32 code : {i32(kUpdateM3), i32(kUpdateP1), i32(kUpdateP2), 6, -1})
    {
        apply(code, pMessage.get());
        EXPECT_EQ(traces(), following) << code;
    }
    EXPECT_EQ(m_status.getCode(), 0);

    // S1 without its Announce is refused; a fatal status changes nothing.
    apply(kUpdateS1, nullptr);
    EXPECT_EQ(m_status.getCode(), kStatusInvalidArgument);
    apply(kUpdateM1, nullptr);
    EXPECT_EQ(traces(), following);
}

} // namespace
