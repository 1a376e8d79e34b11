// A slave measuring its master over the simulated segment. The simulated
// clocks and delays are exact, so offsetFromMaster and meanPathDelay must be
// exact too: to the nanosecond with symmetric delays, off by half the
// asymmetry otherwise, with corrections taken out as the correctionField
// gives them, and with offsets too large to hold saturated.
#include "tScenario.h"

using namespace nSimNet;
using namespace nOrvPTP000;

namespace
{

const i64 kScale = 65536;
const i64 kThreeDays = 3LL * 24 * 3600 * kNanosecondsPerSecond;

class MeasurementScenarioTest : public tScenario
{
protected:
    // A master and a slave whose clocks differ by the given offsets, with a
    // one-way delay in each direction, settled.
    void settlePair(i64 a_masterOffset, i64 a_slaveOffset, i64 a_delayToSlave, i64 a_delayToMaster)
    {
        tNodeSettings master;
        master.m_priority1 = 100;
        m_pMaster = &addClock(1, master, a_masterOffset);
        m_pSlave = &addClock(2, tNodeSettings(), a_slaveOffset);
        m_network.setDelay(m_pMaster->getId(), m_pSlave->getId(), a_delayToSlave);
        m_network.setDelay(m_pSlave->getId(), m_pMaster->getId(), a_delayToMaster);
        startAll();
        ASSERT_TRUE(
            settlesInto({{m_pMaster, kPortStateMaster}, {m_pSlave, kPortStateSlave, m_pMaster}}));
    }

    // Waits for a_count samples that were taken with a measured path delay,
    // and returns them.
    std::vector<tSample> measuredSamples(size_t a_count)
    {
        std::vector<tSample> measured;
        const u32 id = m_pSlave->getId();
        const bool enough = m_network.waitUntil(
            [this, id, a_count, &measured]
            {
                measured.clear();
                for (const tSample& sample : m_network.getSamples(id))
                {
                    if (sample.m_meanPathDelay != 0)
                    {
                        measured.push_back(sample);
                    }
                }
                return measured.size() >= a_count;
            },
            kSettleBound);
        EXPECT_TRUE(enough) << "only " << measured.size() << " measured samples\n"
                            << describeAll(all());
        return measured;
    }

    // Waits for a_count samples after the slave has received a_responses
    // Delay_Resp messages, and returns those samples.
    std::vector<tSample> samplesAfterResponses(u64 a_responses, size_t a_count)
    {
        const u32 id = m_pSlave->getId();
        EXPECT_TRUE(m_network.waitUntil(
            [this, id, a_responses]
            { return m_network.getDeliveredCount(id, kDelayResp) >= a_responses; },
            kSettleBound));
        const size_t from = m_network.getSamples(id).size();
        EXPECT_TRUE(m_network.waitUntil(
            [this, id, from, a_count] { return m_network.getSamples(id).size() >= from + a_count; },
            kSettleBound));
        const std::vector<tSample> all = m_network.getSamples(id);
        return std::vector<tSample>(all.begin() + static_cast<std::ptrdiff_t>(from), all.end());
    }

    // Every sample: the node's offset and delay as given, and the corrected
    // local time the master's time plus that offset.
    static void expectSamples(const std::vector<tSample>& a_samples, i64 a_offsetNs, i64 a_delayNs)
    {
        ASSERT_FALSE(a_samples.empty());
        for (const tSample& sample : a_samples)
        {
            EXPECT_EQ(sample.m_offsetFromMaster, a_offsetNs * kScale);
            EXPECT_EQ(sample.m_meanPathDelay, a_delayNs * kScale);
            EXPECT_EQ(toNanoseconds(sample.m_localTime) - toNanoseconds(sample.m_masterTime),
                      a_offsetNs);
        }
    }

    void expectExactMeasurement(i64 a_masterOffset, i64 a_slaveOffset, i64 a_delay)
    {
        settlePair(a_masterOffset, a_slaveOffset, a_delay, a_delay);
        const i64 offset = a_slaveOffset - a_masterOffset;
        expectSamples(measuredSamples(4), offset, a_delay);
        // Before the first delay exchange the path delay counts as 0.
        for (const tSample& sample : m_network.getSamples(m_pSlave->getId()))
        {
            if (sample.m_meanPathDelay == 0)
            {
                EXPECT_EQ(sample.m_offsetFromMaster, (offset + a_delay) * kScale);
            }
        }
        // The data set says the same.
        EXPECT_EQ(m_pSlave->getOffsetFromMaster(), offset * kScale);
        EXPECT_EQ(m_pSlave->getMeanPathDelay(), a_delay * kScale);
        // The master measures nothing.
        EXPECT_TRUE(m_network.getSamples(m_pMaster->getId()).empty());
        EXPECT_EQ(m_pMaster->getOffsetFromMaster(), 0);
    }

    tSimNode* m_pMaster = nullptr;
    tSimNode* m_pSlave = nullptr;
};

TEST_F(MeasurementScenarioTest, ASlaveAheadIsMeasuredExactlyOverSymmetricDelays)
{
    expectExactMeasurement(0, 123456789, 48000);
}

TEST_F(MeasurementScenarioTest, ASlaveBehindIsMeasuredExactlyOverSymmetricDelays)
{
    expectExactMeasurement(5000000, -987654321, 250000);
}

TEST_F(MeasurementScenarioTest, AsymmetryShiftsTheOffsetByHalfOfIt)
{
    // 70 us out, 30 us back: the mean delay is 50 us, and the offset comes
    // out 20 us too large, half the asymmetry of 40 us.
    settlePair(0, 777777, 70000, 30000);
    expectSamples(measuredSamples(4), 777777 + 20000, 50000);
}

TEST_F(MeasurementScenarioTest, ATransparentClocksResidenceTimeIsTakenOut)
{
    // A transparent clock between the two holds each Sync for 5000.5 ns and
    // each Delay_Req for 3000 ns, and adds that to their correctionField.
    // The half nanosecond is dropped, as corrections count whole nanoseconds
    // rounded down; the master copies the Delay_Req's correction into its
    // Delay_Resp. The Follow_Up is held as long: it never overtakes its Sync.
    m_network.setInFlightHook(
        [](tInFlight& a_rCopy)
        {
            const u8 type = messageTypeOf(a_rCopy.m_bytes);
            if (type == 0)
            {
                setCorrectionField(a_rCopy.m_bytes,
                                   correctionFieldOf(a_rCopy.m_bytes) + 5000 * kScale + kScale / 2);
                a_rCopy.m_extraDelayNs = 5000;
            }
            else if (type == 8)
            {
                a_rCopy.m_extraDelayNs = 5000;
            }
            else if (type == 1)
            {
                setCorrectionField(a_rCopy.m_bytes,
                                   correctionFieldOf(a_rCopy.m_bytes) + 3000 * kScale);
                a_rCopy.m_extraDelayNs = 3000;
            }
        });
    settlePair(0, 400000, 60000, 60000);
    expectSamples(measuredSamples(4), 400000, 60000);
}

TEST_F(MeasurementScenarioTest, CorrectionsOfSyncAndFollowUpAreSubtracted)
{
    // 4 us on the Sync and 6 us on the Follow_Up that took no time on the
    // wire: both are taken out of the delay exchange and the offset alike,
    // which leaves each 5 us lower.
    m_network.setInFlightHook(
        [](tInFlight& a_rCopy)
        {
            const u8 type = messageTypeOf(a_rCopy.m_bytes);
            if (type == 0 || type == 8)
            {
                setCorrectionField(a_rCopy.m_bytes, (type == 0 ? 4000 : 6000) * kScale);
            }
        });
    settlePair(0, -200000, 48000, 48000);
    expectSamples(measuredSamples(4), -200000 - 5000, 48000 - 5000);
}

TEST_F(MeasurementScenarioTest, ANegativePathDelayCountsAsZero)
{
    // A Delay_Req correction of four times the delay makes the computed path
    // delay negative; it is stored as 0, and the offset then carries the
    // whole delay.
    m_network.setInFlightHook(
        [](tInFlight& a_rCopy)
        {
            if (messageTypeOf(a_rCopy.m_bytes) == 1)
            {
                setCorrectionField(a_rCopy.m_bytes, 4 * 48000 * kScale);
            }
        });
    settlePair(0, 300000, 48000, 48000);
    expectSamples(samplesAfterResponses(3, 4), 300000 + 48000, 0);
}

TEST_F(MeasurementScenarioTest, LostMessagesLeaveTheMeasurementExact)
{
    // Every third Sync, every fourth Follow_Up and every second Delay_Resp
    // is lost, and half of the Delay_Req messages: whatever round completes
    // is still exact.
    std::shared_ptr<std::vector<u32>> pCount = std::make_shared<std::vector<u32>>(16, 0);
    m_network.setInFlightHook(
        [pCount](tInFlight& a_rCopy)
        {
            const u8 type = messageTypeOf(a_rCopy.m_bytes);
            const u32 every = type == 0 ? 3 : (type == 8 ? 4 : (type == 9 ? 2 : 0));
            if (every != 0)
            {
                a_rCopy.m_drop = ++(*pCount)[type] % every == 0;
            }
        });
    settlePair(0, 31415926, 27000, 27000);
    m_network.setLoss(m_pSlave->getId(), m_pMaster->getId(), 0.5);
    expectSamples(measuredSamples(6), 31415926, 27000);
}

TEST_F(MeasurementScenarioTest, AnOffsetBeyondRangeSaturatesAndTheSampleKeepsTheReceiveTime)
{
    // Three days apart: more than an interval can hold. The path delay is
    // measured all the same, within each clock.
    settlePair(0, kThreeDays, 48000, 48000);
    const std::vector<tSample> samples = measuredSamples(4);
    for (const tSample& sample : samples)
    {
        EXPECT_EQ(sample.m_offsetFromMaster, tTimeInterval::kMaxScaled);
        EXPECT_EQ(sample.m_meanPathDelay, 48000 * kScale);
        // The local time is the Sync's plain receive time.
        EXPECT_EQ(toNanoseconds(sample.m_localTime) - toNanoseconds(sample.m_masterTime),
                  kThreeDays + 48000);
    }
}

TEST_F(MeasurementScenarioTest, AnOffsetBeyondRangeBelowSaturatesAtTheLowerEnd)
{
    settlePair(kThreeDays, 0, 48000, 48000);
    const std::vector<tSample> samples = measuredSamples(4);
    for (const tSample& sample : samples)
    {
        EXPECT_EQ(sample.m_offsetFromMaster, tTimeInterval::kMinScaled);
        EXPECT_EQ(sample.m_meanPathDelay, 48000 * kScale);
        EXPECT_EQ(toNanoseconds(sample.m_localTime) - toNanoseconds(sample.m_masterTime),
                  -kThreeDays + 48000);
    }
}

} // namespace
