// The slave's measurement rounds: which Sync, Follow_Up and Delay_Resp belong
// together, the offset and delay worked out from them, and the samples that
// go to the timekeeper. Times are nanoseconds from a base of 1000 s.
#include "orvptp/tSyncDelayExchange.h"
#include "orvptp/iPTPTimekeeper.h"
#include "orvptp/iPTPTimestampGenerator.h"
#include "orvptp/tCurrentDS.h"

#include <gtest/gtest.h>

#include <vector>

using namespace nOrvPTP000;
using nOrvTarn000::tStatus;

namespace
{

const i64 kMax = tTimeInterval::kMaxScaled;
const i64 kMin = tTimeInterval::kMinScaled;

tTimestamp at(i64 a_nanoseconds)
{
    const i64 total = 1000LL * 1000000000LL + a_nanoseconds;
    return tTimestamp(static_cast<u64>(total / 1000000000LL),
                      static_cast<u32>(total % 1000000000LL));
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

class SyncDelayExchangeTest : public ::testing::Test
{
protected:
    template <typename tMessage>
    static std::unique_ptr<tMessage> make(u16 a_sequenceId, i64 a_correctionField)
    {
        tStatus build;
        auto pMessage = std::make_unique<tMessage>(build);
        pMessage->getHeader()->setSequenceId(a_sequenceId, build);
        pMessage->getHeader()->setCorrectionField(a_correctionField, build);
        return pMessage;
    }

    void sync(u16 a_sequenceId, bool a_twoStep, i64 a_t1, i64 a_t2, i64 a_correctionField)
    {
        auto pSync = make<tSyncMessage>(a_sequenceId, a_correctionField);
        tStatus build;
        pSync->getHeader()->setTwoStepFlag(a_twoStep, build);
        pSync->setOriginTimestamp(at(a_t1), build);
        m_exchange.handleSync(m_currentDS, &m_timekeeper, std::move(pSync), at(a_t2), m_status);
    }

    // A one-step Sync sent at a_t1 and received at a_t2.
    void oneStepSync(u16 a_sequenceId, i64 a_t1, i64 a_t2, i64 a_correctionField = 0)
    {
        sync(a_sequenceId, false, a_t1, a_t2, a_correctionField);
    }

    // A two-step Sync received at a_t2; its origin timestamp is rough and
    // must not be used.
    void twoStepSync(u16 a_sequenceId, i64 a_t2, i64 a_correctionField = 0)
    {
        sync(a_sequenceId, true, a_t2 - 777777, a_t2, a_correctionField);
    }

    void followUp(u16 a_sequenceId, i64 a_t1, i64 a_correctionField = 0)
    {
        auto pFollowUp = make<tFollowUpMessage>(a_sequenceId, a_correctionField);
        tStatus build;
        pFollowUp->setPreciseOriginTimestamp(at(a_t1), build);
        m_exchange.handleFollowUp(m_currentDS, &m_timekeeper, std::move(pFollowUp), m_status);
    }

    // Sends a Delay_Req whose transmit time will be a_t3.
    void sendDelayReq(i64 a_t3)
    {
        tStatus build;
        auto pPacket = std::make_unique<tProtocolDataUnit>(build);
        m_generator.m_pKnownPacket = pPacket.get();
        m_generator.m_transmitTime = at(a_t3);
        m_exchange.attachDelayRequest(std::move(pPacket), m_status);
    }

    void delayResp(i64 a_t4, i64 a_correctionField = 0)
    {
        auto pResponse = make<tDelayRespMessage>(0, a_correctionField);
        tStatus build;
        pResponse->setReceiveTimestamp(at(a_t4), build);
        m_exchange.handleDelayResp(&m_generator, std::move(pResponse), m_status);
    }

    void delayExchange(i64 a_t3, i64 a_t4, i64 a_correctionField = 0)
    {
        sendDelayReq(a_t3);
        delayResp(a_t4, a_correctionField);
    }

    i64 offset() const { return m_currentDS.getOffsetFromMaster().getNanoseconds(); }
    i64 delay() const { return m_currentDS.getMeanPathDelay().getNanoseconds(); }
    size_t samples() const { return m_timekeeper.m_samples.size(); }
    const tSample& lastSample() const { return m_timekeeper.m_samples.back(); }

    tStatus m_status;
    tCurrentDS m_currentDS;
    tRecordingTimekeeper m_timekeeper;
    tFakeTimestampGenerator m_generator;
    tSyncDelayExchange m_exchange;
};

// ------------------------------------------------------------ measured values

// Exact offsets and delays over symmetric and asymmetric paths are the
// measurement scenarios'; here the rounds' rules and the arithmetic's edges.
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

// T1 comes from the Follow_Up, and all three corrections count.
TEST_F(SyncDelayExchangeTest, TwoStepTakesT1FromTheFollowUpAndCountsThreeCorrections)
{
    delayExchange(0, 3000, 60LL << 16);
    twoStepSync(1, 2000, 100LL << 16);
    EXPECT_EQ(samples(), 0u);
    followUp(1, 1000, -(40LL << 16));
    // sum = (2000 - 0) + (3000 - 1000) - 100 + 40 - 60 = 3880
    EXPECT_EQ(delay(), 1940);
    EXPECT_EQ(offset(), 2000 - 1000 - 1940 - 100 + 40);
    ASSERT_EQ(samples(), 1u);
    EXPECT_EQ(lastSample().m_master, at(1000));
    EXPECT_EQ(lastSample().m_local, at(1000 + offset()));

    // The same Follow_Up again finds the round already finished.
    followUp(1, 1000);
    EXPECT_EQ(samples(), 1u);
}

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

// ------------------------------------------------------------------ two-step

// A Follow_Up of another sequenceId, or one with no two-step Sync held, is
// dropped and ends the round: even the right one comes too late then, and a
// Delay_Resp matched in that round is forgotten.
TEST_F(SyncDelayExchangeTest, AFollowUpThatDoesNotFitEndsTheRound)
{
    twoStepSync(10, 5000);
    followUp(11, 1000);
    followUp(10, 1000);
    EXPECT_EQ(samples(), 0u);

    followUp(1, 1000); // nothing held
    oneStepSync(2, 0, 100);
    followUp(2, 1000); // its Sync was one-step and is finished
    EXPECT_EQ(samples(), 1u);
    EXPECT_EQ(offset(), 100);

    delayExchange(0, 2000);
    followUp(5, 1000);
    twoStepSync(6, 1000);
    followUp(6, 1000);
    EXPECT_EQ(delay(), 0);
    EXPECT_EQ(samples(), 2u);

    // A one-step Sync still held (its round could not finish under a failed
    // status) takes no Follow_Up either.
    ORVTARN_SET_CODE(m_status, nOrvTarn000::kStatusInternalError);
    oneStepSync(3, 0, 200);
    m_status.clear();
    followUp(3, 1000);
    EXPECT_EQ(samples(), 2u);
    EXPECT_TRUE(m_status.isNotFatal());
}

TEST_F(SyncDelayExchangeTest, SecondSyncReplacesFirstSoOnlyItsFollowUpMatches)
{
    twoStepSync(1, 5000);
    twoStepSync(2, 9000);
    followUp(2, 1000);
    ASSERT_EQ(samples(), 1u);
    EXPECT_EQ(offset(), 8000); // t2 of the second Sync

    twoStepSync(3, 5000);
    twoStepSync(4, 9000);
    followUp(3, 1000);
    EXPECT_EQ(samples(), 1u);
}

// ------------------------------------------------------------ delay exchange

// A Delay_Resp counts only while its request is pending in the current round:
// not without a request, not after the round ended, not for a request that
// could not be attached, and not without the request's transmit time.
TEST_F(SyncDelayExchangeTest, DelayRespWithoutAPendingRequestIsDropped)
{
    delayResp(2000);
    EXPECT_EQ(m_generator.m_queries, 0);

    sendDelayReq(0);
    oneStepSync(1, 1000, 1000); // finishes while the request is unanswered
    delayResp(2000);

    ORVTARN_SET_CODE(m_status, nOrvTarn000::kStatusMemoryFull);
    sendDelayReq(0);
    m_status.clear();
    delayResp(2000);
    EXPECT_EQ(m_generator.m_queries, 0);

    sendDelayReq(0);
    m_generator.m_pKnownPacket = nullptr;
    delayResp(2000);
    EXPECT_EQ(m_generator.m_queries, 1);

    oneStepSync(2, 1000, 1000);
    EXPECT_EQ(delay(), 0);
    EXPECT_EQ(samples(), 2u);
    EXPECT_TRUE(m_status.isNotFatal());
}

TEST_F(SyncDelayExchangeTest, ARoundUsesTheLatestRequestAndTheLastMatchedExchange)
{
    sendDelayReq(0);
    sendDelayReq(400); // the generator now knows only this packet
    delayResp(2000);
    oneStepSync(1, 1000, 1000);
    EXPECT_EQ(delay(), (600 + 1000) / 2);

    delayExchange(0, 2000);
    twoStepSync(2, 1000);
    sendDelayReq(5000); // still unanswered when the round finishes
    followUp(2, 1000);
    EXPECT_EQ(delay(), 1000); // from t3 = 0 and t4 = 2000
}

// ---------------------------------------------------------------- reset

// Entering UNCALIBRATED resets the exchange, so that a new parent's first
// round never mixes in the old master's times: a held Sync, a pending
// Delay_Req and a matched Delay_Resp all count as never seen.
TEST_F(SyncDelayExchangeTest, ResetForgetsTheHeldSyncAndBothHalvesOfTheDelayExchange)
{
    twoStepSync(1, 5000);
    m_exchange.reset(m_status);
    followUp(1, 1000);
    EXPECT_EQ(samples(), 0u);

    delayExchange(0, 2000);
    m_exchange.reset(m_status);
    twoStepSync(2, 7000);
    followUp(2, 1000);
    ASSERT_EQ(samples(), 1u);
    EXPECT_EQ(delay(), 0);
    EXPECT_EQ(offset(), 6000);

    sendDelayReq(0);
    m_exchange.reset(m_status);
    delayResp(2000);
    oneStepSync(3, 1000, 1000);
    EXPECT_EQ(delay(), 0);
    EXPECT_EQ(samples(), 2u);

    // With a fatal status nothing is forgotten.
    twoStepSync(4, 5000);
    tStatus failed;
    ORVTARN_SET_CODE(failed, nOrvTarn000::kStatusInternalError);
    m_exchange.reset(failed);
    followUp(4, 1000);
    EXPECT_EQ(samples(), 3u);
}

// ---------------------------------------------------------------- failures

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

TEST_F(SyncDelayExchangeTest, FatalStatusMissingMessageOrTimekeeper)
{
    ORVTARN_SET_CODE(m_status, nOrvTarn000::kStatusInternalError);
    oneStepSync(1, 0, 1000);
    EXPECT_EQ(samples(), 0u);
    EXPECT_EQ(offset(), 0);
    EXPECT_EQ(m_status.getCode(), nOrvTarn000::kStatusInternalError);

    m_status.clear();
    m_exchange.handleSync(m_currentDS, &m_timekeeper, nullptr, at(0), m_status);
    EXPECT_EQ(m_status.getCode(), nOrvTarn000::kStatusInvalidArgument);
    m_status.clear();
    auto pSync = make<tSyncMessage>(1, 0);
    pSync->setOriginTimestamp(at(0), m_status);
    m_exchange.handleSync(m_currentDS, nullptr, std::move(pSync), at(10), m_status);
    EXPECT_EQ(m_status.getCode(), nOrvTarn000::kStatusInvalidArgument);
    EXPECT_EQ(offset(), 10);
}

} // namespace
