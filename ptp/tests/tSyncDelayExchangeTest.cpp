#include "orvptp/tSyncDelayExchange.h"
#include "orvptp/iPTPTimekeeper.h"
#include "orvptp/iPTPTimestampGenerator.h"
#include "orvptp/tCurrentDS.h"
#include "orvptp/tDelayRespMessage.h"
#include "orvptp/tFollowUpMessage.h"
#include "orvptp/tProtocolDataUnit.h"
#include "orvptp/tSyncMessage.h"

#include <gtest/gtest.h>

#include <vector>

using namespace nOrvPTP000;
using nOrvTarn000::tStatus;

namespace
{

const i64 kMax = tTimeInterval::kMaxScaled;
const i64 kMin = tTimeInterval::kMinScaled;

// A time measured from a base of 1000 s, in nanoseconds (may be negative).
tTimestamp at(i64 a_nanoseconds)
{
    const i64 total = 1000LL * 1000000000LL + a_nanoseconds;
    return tTimestamp(static_cast<u64>(total / 1000000000LL),
                      static_cast<u32>(total % 1000000000LL));
}

i64 nanosecondsOf(const tTimeInterval& a_interval)
{
    return a_interval.getNanoseconds();
}

struct tSample
{
    tTimestamp m_master;
    tTimestamp m_local;
};

class tRecordingTimekeeper : public iPTPTimekeeper
{
public:
    void getTime(tTimestamp&, tStatus&) override {}
    void stepTime(const tTimestamp&, tStatus&) override {}
    void addSample(const tTimestamp& a_rMasterTime, const tTimestamp& a_rLocalTime,
                   tStatus& a_status) override
    {
        m_samples.push_back(tSample{a_rMasterTime, a_rLocalTime});
        if (m_fail)
        {
            ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidState);
        }
    }
    bool isPortStateHeld() override { return false; }

    std::vector<tSample> m_samples;
    bool m_fail = false;
};

// Knows the transmit time of one packet: the one last given to it.
class tFakeTimestampGenerator : public iPTPTimestampGenerator
{
public:
    bool getReceiveTimestamp(tProtocolDataUnit&, tTimestamp&, tStatus&) override { return false; }
    bool getTransmitTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime,
                              tStatus& a_status) override
    {
        ++m_queries;
        if (a_status.isFatal() || &a_rPdu != m_pKnownPacket)
        {
            return false;
        }
        a_rTime = m_transmitTime;
        return true;
    }

    const tProtocolDataUnit* m_pKnownPacket = nullptr;
    tTimestamp m_transmitTime;
    int m_queries = 0;
};

// A message or packet that counts its deletion.
template <typename T>
class tTracked : public T
{
public:
    tTracked(int& a_rDeletions, tStatus& a_status) : T(a_status), m_rDeletions(a_rDeletions) {}
    ~tTracked() override { ++m_rDeletions; }

private:
    int& m_rDeletions;
};

class SyncDelayExchangeTest : public ::testing::Test
{
protected:
    std::unique_ptr<tSyncMessage> makeSync(u16 a_sequenceId, bool a_twoStep,
                                           const tTimestamp& a_origin, i64 a_correctionField = 0)
    {
        tStatus build;
        std::unique_ptr<tSyncMessage> pSync(new tTracked<tSyncMessage>(m_deletions, build));
        fillHeader(*pSync, a_sequenceId, a_correctionField);
        pSync->getHeader()->setTwoStepFlag(a_twoStep, build);
        pSync->setOriginTimestamp(a_origin, build);
        return pSync;
    }

    // A one-step Sync sent at a_t1 and received at a_t2.
    void oneStepSync(u16 a_sequenceId, i64 a_t1, i64 a_t2, i64 a_correctionField = 0)
    {
        m_exchange.handleSync(m_currentDS, &m_timekeeper,
                              makeSync(a_sequenceId, false, at(a_t1), a_correctionField), at(a_t2),
                              m_status);
    }

    // A two-step Sync received at a_t2; its origin timestamp is rough and
    // must not be used.
    void twoStepSync(u16 a_sequenceId, i64 a_t2, i64 a_correctionField = 0)
    {
        m_exchange.handleSync(m_currentDS, &m_timekeeper,
                              makeSync(a_sequenceId, true, at(a_t2 - 777777), a_correctionField),
                              at(a_t2), m_status);
    }

    void followUp(u16 a_sequenceId, i64 a_t1, i64 a_correctionField = 0)
    {
        tStatus build;
        std::unique_ptr<tFollowUpMessage> pFollowUp(
            new tTracked<tFollowUpMessage>(m_deletions, build));
        fillHeader(*pFollowUp, a_sequenceId, a_correctionField);
        pFollowUp->setPreciseOriginTimestamp(at(a_t1), build);
        m_exchange.handleFollowUp(m_currentDS, &m_timekeeper, std::move(pFollowUp), m_status);
    }

    // Sends a Delay_Req whose transmit time will be a_t3.
    tProtocolDataUnit* sendDelayReq(i64 a_t3)
    {
        tStatus build;
        std::unique_ptr<tProtocolDataUnit> pPacket(
            new tTracked<tProtocolDataUnit>(m_deletions, build));
        tProtocolDataUnit* pSent = pPacket.get();
        m_generator.m_pKnownPacket = pSent;
        m_generator.m_transmitTime = at(a_t3);
        m_exchange.attachDelayRequest(std::move(pPacket), m_status);
        return pSent;
    }

    void delayResp(i64 a_t4, i64 a_correctionField = 0)
    {
        tStatus build;
        std::unique_ptr<tDelayRespMessage> pResponse(
            new tTracked<tDelayRespMessage>(m_deletions, build));
        fillHeader(*pResponse, 0, a_correctionField);
        pResponse->setReceiveTimestamp(at(a_t4), build);
        m_exchange.handleDelayResp(&m_generator, std::move(pResponse), m_status);
    }

    void delayExchange(i64 a_t3, i64 a_t4, i64 a_correctionField = 0)
    {
        sendDelayReq(a_t3);
        delayResp(a_t4, a_correctionField);
    }

    i64 offset() const { return nanosecondsOf(m_currentDS.getOffsetFromMaster()); }
    i64 delay() const { return nanosecondsOf(m_currentDS.getMeanPathDelay()); }
    size_t samples() const { return m_timekeeper.m_samples.size(); }
    const tSample& lastSample() const { return m_timekeeper.m_samples.back(); }

    static void fillHeader(tPTPMessage& a_message, u16 a_sequenceId, i64 a_correctionField)
    {
        tStatus build;
        a_message.getHeader()->setSequenceId(a_sequenceId, build);
        a_message.getHeader()->setCorrectionField(a_correctionField, build);
    }

    tStatus m_status;
    int m_deletions = 0;
    tCurrentDS m_currentDS;
    tRecordingTimekeeper m_timekeeper;
    tFakeTimestampGenerator m_generator;
    tSyncDelayExchange m_exchange;
};

// ------------------------------------------------------------ measured values

// Master at M, slave at M + 1,000 ns, 500 ns each way.
TEST_F(SyncDelayExchangeTest, SymmetricPathGivesExactOffsetAndDelay)
{
    oneStepSync(1, 0, 1500);
    // No delay measured yet: the whole difference counts as offset.
    EXPECT_EQ(offset(), 1500);
    EXPECT_EQ(delay(), 0);
    ASSERT_EQ(samples(), 1u);
    EXPECT_EQ(lastSample().m_master, at(0));
    EXPECT_EQ(lastSample().m_local, at(1500));

    // Delay_Req leaves at local 0.5 s and arrives at master 0.5 s - 500 ns.
    delayExchange(500000000, 499999500);
    EXPECT_EQ(delay(), 0); // only a finished round computes it

    // The round crosses a second boundary: sent 999,999,900 ns after base.
    oneStepSync(2, 999999900, 1000001400);
    EXPECT_EQ(delay(), 500);
    EXPECT_EQ(offset(), 1000);
    ASSERT_EQ(samples(), 2u);
    EXPECT_EQ(lastSample().m_master, at(999999900));
    EXPECT_EQ(lastSample().m_local, at(1000000900));
    EXPECT_TRUE(m_status.isNotFatal());
}

TEST_F(SyncDelayExchangeTest, AsymmetryMovesOffsetByHalfOfIt)
{
    // True offset -2,000 ns; 700 ns towards the slave, 300 ns back.
    delayExchange(10000, 10000 + 2000 + 300); // t4 = t3 - offset + 300
    oneStepSync(1, 50000, 50000 - 2000 + 700);
    EXPECT_EQ(delay(), 500);
    EXPECT_EQ(offset(), -2000 + 200);
    EXPECT_EQ(lastSample().m_local, at(50000 - 1800));
}

TEST_F(SyncDelayExchangeTest, NegativeDelayIsStoredAsZeroAndHalvingTruncates)
{
    // t2 - t3 = 1,000 and t4 - t1 = 3,000: 2,000 ns.
    delayExchange(0, 8000);
    oneStepSync(1, 5000, 1000);
    EXPECT_EQ(delay(), 2000);

    // t2 - t3 = -5,000 and t4 - t1 = 3,000: 0, not -1,000.
    delayExchange(10000, 8000);
    oneStepSync(2, 5000, 5000);
    EXPECT_EQ(delay(), 0);
    EXPECT_EQ(offset(), 0);

    // A sum of 1,001 ns halves to 500 ns; each exchange replaces the delay.
    delayExchange(0, 6001);
    oneStepSync(3, 5000, 0);
    EXPECT_EQ(delay(), 500);
}

TEST_F(SyncDelayExchangeTest, OneStepCorrectionsCountInWholeNanosecondsRoundedDown)
{
    // 1.5 ns counts as 1 ns.
    oneStepSync(1, 0, 1000, 0x00018000);
    EXPECT_EQ(offset(), 999);
    EXPECT_EQ(lastSample().m_local, at(999));
    // -1 (scaled) counts as -1 ns.
    oneStepSync(2, 0, 1000, -1);
    EXPECT_EQ(offset(), 1001);

    // The Delay_Resp's correction shortens the delay as the Sync's does.
    delayExchange(0, 1000, 40LL << 16);
    oneStepSync(3, 0, 1000, 100LL << 16);
    EXPECT_EQ(delay(), (1000 + 1000 - 100 - 40) / 2);
    EXPECT_EQ(offset(), 1000 - 930 - 100);
}

TEST_F(SyncDelayExchangeTest, TwoStepCountsAllThreeCorrections)
{
    delayExchange(0, 3000, 60LL << 16);
    twoStepSync(1, 2000, 100LL << 16);
    followUp(1, 1000, -(40LL << 16));
    // sum = (2000 - 0) + (3000 - 1000) - 100 + 40 - 60 = 3880
    EXPECT_EQ(delay(), 1940);
    EXPECT_EQ(offset(), 2000 - 1000 - 1940 - 100 + 40);
}

// ------------------------------------------------------------------ two-step

TEST_F(SyncDelayExchangeTest, TwoStepSampleWaitsForFollowUpAndUsesItsTimestamp)
{
    twoStepSync(7, 5000);
    EXPECT_EQ(samples(), 0u);
    EXPECT_EQ(offset(), 0);

    followUp(7, 1000);
    EXPECT_EQ(offset(), 4000);
    ASSERT_EQ(samples(), 1u);
    EXPECT_EQ(lastSample().m_master, at(1000));
    EXPECT_EQ(lastSample().m_local, at(5000));

    // The same Follow_Up again finds the round already finished.
    followUp(7, 1000);
    EXPECT_EQ(samples(), 1u);
}

TEST_F(SyncDelayExchangeTest, TwoStepDelayTakesT1FromFollowUp)
{
    delayExchange(100000, 100000 + 300 - 1000); // slave 1,000 ns ahead, 300 ns path
    twoStepSync(1, 200000 + 300 + 1000);
    followUp(1, 200000);
    EXPECT_EQ(delay(), 300);
    EXPECT_EQ(offset(), 1000);
}

TEST_F(SyncDelayExchangeTest, FollowUpWithOtherSequenceIdIsDroppedAndEndsTheRound)
{
    twoStepSync(10, 5000);
    followUp(11, 1000);
    EXPECT_EQ(samples(), 0u);
    // Even the right one comes too late now.
    followUp(10, 1000);
    EXPECT_EQ(samples(), 0u);
    EXPECT_EQ(m_deletions, 2);
    EXPECT_TRUE(m_status.isNotFatal());
}

TEST_F(SyncDelayExchangeTest, SecondSyncReplacesFirstSoOnlyItsFollowUpMatches)
{
    twoStepSync(1, 5000);
    twoStepSync(2, 9000);
    EXPECT_EQ(m_deletions, 1); // the first Sync
    followUp(2, 1000);
    ASSERT_EQ(samples(), 1u);
    EXPECT_EQ(offset(), 8000); // t2 of the second Sync

    twoStepSync(3, 5000);
    twoStepSync(4, 9000);
    followUp(3, 1000);
    EXPECT_EQ(samples(), 1u);
}

TEST_F(SyncDelayExchangeTest, FollowUpWithoutTwoStepSyncIsDropped)
{
    followUp(1, 1000); // nothing held yet
    oneStepSync(2, 0, 100);
    followUp(2, 1000); // its Sync was one-step and is finished
    EXPECT_EQ(samples(), 1u);
    EXPECT_EQ(offset(), 100);
    EXPECT_EQ(m_deletions, 2);

    // A one-step Sync that is still held (its round could not finish under a
    // failed status) does not take a Follow_Up either.
    ORVTARN_SET_CODE(m_status, nOrvTarn000::kStatusInternalError);
    oneStepSync(3, 0, 200);
    m_status.clear();
    followUp(3, 1000);
    EXPECT_EQ(samples(), 1u);
    EXPECT_EQ(offset(), 100);
}

TEST_F(SyncDelayExchangeTest, StrayFollowUpForgetsAMatchedDelayResponse)
{
    delayExchange(0, 2000);
    followUp(5, 1000); // no Sync held: dropped, round ends
    twoStepSync(6, 1000);
    followUp(6, 1000);
    EXPECT_EQ(delay(), 0);
    EXPECT_EQ(samples(), 1u);
}

// ------------------------------------------------------------ delay exchange

TEST_F(SyncDelayExchangeTest, DelayRespWithoutPendingRequestIsDropped)
{
    delayResp(2000);
    EXPECT_EQ(m_deletions, 1);
    EXPECT_EQ(m_generator.m_queries, 0);
    oneStepSync(1, 0, 0);
    EXPECT_EQ(delay(), 0);
}

TEST_F(SyncDelayExchangeTest, DelayRespAfterTheRoundEndedIsDropped)
{
    sendDelayReq(0);
    oneStepSync(1, 1000, 1000); // finishes while the request is unanswered
    delayResp(2000);
    // Not even a later request revives it.
    sendDelayReq(0);
    oneStepSync(2, 1000, 1000);
    EXPECT_EQ(delay(), 0);
}

TEST_F(SyncDelayExchangeTest, NewRequestKeepsHeldSyncAndLastMatchedExchange)
{
    delayExchange(0, 2000);
    twoStepSync(1, 1000);
    sendDelayReq(5000); // still unanswered when the round finishes
    followUp(1, 1000);
    ASSERT_EQ(samples(), 1u);
    EXPECT_EQ(delay(), 1000); // from t3 = 0 and t4 = 2000
}

TEST_F(SyncDelayExchangeTest, DelayRespWithoutTransmitTimeIsDropped)
{
    sendDelayReq(0);
    m_generator.m_pKnownPacket = nullptr;
    delayResp(2000);
    EXPECT_EQ(m_generator.m_queries, 1);
    oneStepSync(1, 1000, 1000);
    EXPECT_EQ(delay(), 0);
    EXPECT_TRUE(m_status.isNotFatal());
}

TEST_F(SyncDelayExchangeTest, TransmitTimeIsThatOfTheLatestRequest)
{
    sendDelayReq(0);
    EXPECT_EQ(m_deletions, 0);
    sendDelayReq(400); // the generator now knows only this packet
    EXPECT_EQ(m_deletions, 1);
    delayResp(2000);
    oneStepSync(1, 1000, 1000);
    EXPECT_EQ(delay(), (600 + 1000) / 2);
}

TEST_F(SyncDelayExchangeTest, RequestAttachedWithFatalStatusIsDeletedAndNotPending)
{
    ORVTARN_SET_CODE(m_status, nOrvTarn000::kStatusMemoryFull);
    sendDelayReq(0);
    EXPECT_EQ(m_deletions, 1);
    m_status.clear();
    delayResp(2000);
    EXPECT_EQ(m_generator.m_queries, 0);
    EXPECT_EQ(m_deletions, 2);
}

// ---------------------------------------------------------------- saturation

TEST_F(SyncDelayExchangeTest, OffsetBeyondRangeSaturatesAndSampleUsesPlainReceiptTime)
{
    // Give the delay and the correction a value: neither may move the limit.
    delayExchange(0, 2000);
    oneStepSync(1, 1000, 1000);
    ASSERT_EQ(delay(), 1000);

    // 140,738 s is more than 2^47 ns.
    const i64 farAway = 140738LL * 1000000000LL;
    oneStepSync(2, 0, farAway, 5LL << 16);
    EXPECT_EQ(m_currentDS.getOffsetFromMaster().getScaledNanoseconds(), kMax);
    EXPECT_EQ(lastSample().m_master, at(0));
    EXPECT_EQ(lastSample().m_local, at(farAway));

    // The master far ahead: the other limit, again with plain T2.
    twoStepSync(3, 0, 5LL << 16);
    followUp(3, farAway, -(5LL << 16));
    EXPECT_EQ(m_currentDS.getOffsetFromMaster().getScaledNanoseconds(), kMin);
    EXPECT_EQ(lastSample().m_master, at(farAway));
    EXPECT_EQ(lastSample().m_local, at(0));
    EXPECT_EQ(delay(), 1000);
    EXPECT_TRUE(m_status.isNotFatal());
}

// ------------------------------------------------------------- reset, status

TEST_F(SyncDelayExchangeTest, ResetForgetsHeldSyncAndPendingExchange)
{
    twoStepSync(1, 5000);
    delayExchange(0, 2000);
    m_exchange.reset(m_status);
    followUp(1, 1000);
    EXPECT_EQ(samples(), 0u);

    sendDelayReq(0);
    m_exchange.reset(m_status);
    delayResp(2000);
    oneStepSync(2, 1000, 1000);
    EXPECT_EQ(delay(), 0);
    EXPECT_EQ(samples(), 1u);
}

TEST_F(SyncDelayExchangeTest, ResetWithFatalStatusKeepsTheRound)
{
    twoStepSync(1, 5000);
    tStatus failed;
    ORVTARN_SET_CODE(failed, nOrvTarn000::kStatusInternalError);
    m_exchange.reset(failed);
    followUp(1, 1000);
    EXPECT_EQ(samples(), 1u);
}

TEST_F(SyncDelayExchangeTest, FailedSampleReachesCallerAndStillEndsTheRound)
{
    delayExchange(0, 2000);
    m_timekeeper.m_fail = true;
    oneStepSync(1, 1000, 1000);
    EXPECT_EQ(m_status.getCode(), nOrvTarn000::kStatusInvalidState);
    EXPECT_EQ(delay(), 1000);

    // Had the round survived, this Sync would recompute the delay from its t2.
    m_status.clear();
    m_timekeeper.m_fail = false;
    oneStepSync(2, 1000, 3000);
    EXPECT_EQ(delay(), 1000);
    EXPECT_EQ(offset(), 1000);
}

TEST_F(SyncDelayExchangeTest, FatalStatusOnEntryDeliversNoSample)
{
    ORVTARN_SET_CODE(m_status, nOrvTarn000::kStatusInternalError);
    oneStepSync(1, 0, 1000);
    EXPECT_EQ(samples(), 0u);
    EXPECT_EQ(offset(), 0);
    EXPECT_EQ(m_status.getCode(), nOrvTarn000::kStatusInternalError);
}

TEST_F(SyncDelayExchangeTest, MissingMessageOrTimekeeperIsReported)
{
    m_exchange.handleSync(m_currentDS, &m_timekeeper, nullptr, at(0), m_status);
    EXPECT_EQ(m_status.getCode(), nOrvTarn000::kStatusInvalidArgument);
    m_status.clear();

    m_exchange.handleSync(m_currentDS, nullptr, makeSync(1, false, at(0)), at(10), m_status);
    EXPECT_EQ(m_status.getCode(), nOrvTarn000::kStatusInvalidArgument);
    EXPECT_EQ(offset(), 10);
}

// ----------------------------------------------------------------- ownership

TEST_F(SyncDelayExchangeTest, KeptObjectsAreDeletedOnReplacementAndDestruction)
{
    int deletions = 0;
    {
        tSyncDelayExchange exchange;
        std::unique_ptr<tSyncMessage> pSync(new tTracked<tSyncMessage>(deletions, m_status));
        pSync->getHeader()->setTwoStepFlag(true, m_status);
        exchange.handleSync(m_currentDS, &m_timekeeper, std::move(pSync), at(0), m_status);
        exchange.handleFollowUp(
            m_currentDS, &m_timekeeper,
            std::unique_ptr<tFollowUpMessage>(new tTracked<tFollowUpMessage>(deletions, m_status)),
            m_status);
        std::unique_ptr<tProtocolDataUnit> pPacket(
            new tTracked<tProtocolDataUnit>(deletions, m_status));
        m_generator.m_pKnownPacket = pPacket.get();
        exchange.attachDelayRequest(std::move(pPacket), m_status);
        exchange.handleDelayResp(&m_generator,
                                 std::unique_ptr<tDelayRespMessage>(
                                     new tTracked<tDelayRespMessage>(deletions, m_status)),
                                 m_status);
        EXPECT_EQ(deletions, 0);
        exchange.reset(m_status); // keeps them
        EXPECT_EQ(deletions, 0);
    }
    EXPECT_EQ(deletions, 4);
    EXPECT_EQ(samples(), 1u);
}

} // namespace
