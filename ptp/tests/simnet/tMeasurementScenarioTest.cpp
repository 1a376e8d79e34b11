// A slave measuring its master over the simulated segment. The simulated
// clocks and delays are exact, so offsetFromMaster and meanPathDelay must be
// exact too: to the nanosecond, with a transparent clock's corrections taken
// out, and with a new parent's delay never mixed with the old one's
// timestamps. With a delay and an offset both nonzero only the mean of the
// two one-way spans gives the delay, so no asymmetric path is needed to pin
// the formula. The arithmetic's edge cases (saturation, negative delays,
// rounding of corrections) are the exchange's unit tests'.
#include "tScenario.h"

#include <atomic>
#include <memory>

using namespace nSimNet;
using namespace nOrvPTP000;

namespace
{

const i64 kScale = 65536;

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

    tSimNode* m_pMaster = nullptr;
    tSimNode* m_pSlave = nullptr;
};

TEST_F(MeasurementScenarioTest, ASlaveAheadIsMeasuredExactlyOverSymmetricDelays)
{
    const i64 offset = 123456789;
    const i64 delay = 48000;
    settlePair(0, offset, delay, delay);
    expectSamples(measuredSamples(4), offset, delay);
    // Before the first delay exchange the path delay counts as 0.
    for (const tSample& sample : m_network.getSamples(m_pSlave->getId()))
    {
        if (sample.m_meanPathDelay == 0)
        {
            EXPECT_EQ(sample.m_offsetFromMaster, (offset + delay) * kScale);
        }
    }
    // The data set says the same.
    EXPECT_EQ(m_pSlave->getOffsetFromMaster(), offset * kScale);
    EXPECT_EQ(m_pSlave->getMeanPathDelay(), delay * kScale);
    // The master measures nothing.
    EXPECT_TRUE(m_network.getSamples(m_pMaster->getId()).empty());
    EXPECT_EQ(m_pMaster->getOffsetFromMaster(), 0);
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

// Entering UNCALIBRATED for a new parent, from SLAVE, MASTER or LISTENING,
// starts the delay exchange afresh. The old master's Syncs are lost after one
// of its delay exchanges has completed, so that the exchange still holds its
// T3 and T4 when the new master's first Sync comes: paired with them, that
// Sync would give a delay of neither master, here (20 + 300 + 1000) / 2 us.
class ParentSwitchTest : public tScenario, public ::testing::WithParamInterface<u8>
{
};

TEST_P(ParentSwitchTest, TheFirstDelayOfANewParentIsItsOwn)
{
    const u8 wayIn = GetParam();
    const i64 kOldDelay = 20000, kNewDelay = 300000, kOwnOffset = 5000000, kNewOffset = -1000000;
    tNodeSettings oldSettings, ownSettings, newSettings;
    oldSettings.m_priority1 = 100;
    newSettings.m_priority1 = 50;
    ownSettings.m_slaveOnly = wayIn == kPortStateListening;
    tSimNode& oldMaster = addClock(1, oldSettings);
    tSimNode& clock = addClock(2, ownSettings, kOwnOffset);
    tSimNode& newMaster = addClock(3, newSettings, kNewOffset);
    m_network.setSymmetricDelay(oldMaster.getId(), clock.getId(), kOldDelay);
    m_network.setSymmetricDelay(newMaster.getId(), clock.getId(), kNewDelay);
    start(oldMaster);
    start(clock);
    ASSERT_TRUE(
        settlesInto({{&oldMaster, kPortStateMaster}, {&clock, kPortStateSlave, &oldMaster}}));
    ASSERT_TRUE(m_network.waitUntil(
        [&clock] { return clock.getMeanPathDelay() == kOldDelay * kScale; }, kSettleBound));

    // The old master's Syncs are lost from now on, and, once two of its
    // delay exchanges are complete, the clock's Delay_Req messages until the
    // new master's first Sync has come.
    const u32 oldId = oldMaster.getId();
    const u32 id = clock.getId();
    std::shared_ptr<std::atomic<bool>> pRequestsPass = std::make_shared<std::atomic<bool>>(true);
    m_network.setInFlightHook(
        [oldId, id, pRequestsPass](tInFlight& a_rCopy)
        {
            const u8 type = messageTypeOf(a_rCopy.m_bytes);
            a_rCopy.m_drop = (a_rCopy.m_from == oldId && (type == kSync || type == kFollowUp)) ||
                             (a_rCopy.m_from == id && type == kDelayReq && !*pRequestsPass);
        });
    const u64 responses = m_network.getDeliveredCount(id, kDelayResp) + 2;
    ASSERT_TRUE(m_network.waitUntil(
        [this, id, responses] { return m_network.getDeliveredCount(id, kDelayResp) >= responses; },
        kSettleBound));
    *pRequestsPass = false;
    if (wayIn != kPortStateSlave)
    {
        m_network.setConnected(oldId, false);
        ASSERT_TRUE(clock.waitForState(wayIn, kSettleBound));
    }
    const size_t from = clock.getSamples().size();
    const size_t transitions = clock.getTransitionCount();

    start(newMaster);
    ASSERT_TRUE(
        settlesInto({{&newMaster, kPortStateMaster}, {&clock, kPortStateSlave, &newMaster}}));
    const std::vector<tTransition> path = clock.getTransitions();
    EXPECT_EQ(path.at(transitions).m_oldState, wayIn);
    EXPECT_EQ(path.at(transitions).m_newState, kPortStateUncalibrated);
    // Until its first delay exchange with the new master the clock keeps the
    // delay it had (the old master's, or 0 after serving or listening).
    auto isOld = [](i64 a_delay) { return a_delay == 0 || a_delay == kOldDelay * kScale; };
    ASSERT_TRUE(
        m_network.waitUntil([&] { return clock.getSamples().size() > from; }, kSettleBound));
    *pRequestsPass = true;
    std::vector<tSample> samples;
    ASSERT_TRUE(m_network.waitUntil(
        [&]
        {
            samples = clock.getSamples();
            return samples.back().m_meanPathDelay == kNewDelay * kScale;
        },
        kSettleBound));
    EXPECT_TRUE(isOld(samples[from].m_meanPathDelay));
    for (size_t i = from; i < samples.size(); ++i)
    {
        EXPECT_TRUE(isOld(samples[i].m_meanPathDelay) ||
                    samples[i].m_meanPathDelay == kNewDelay * kScale)
            << "delay " << samples[i].m_meanPathDelay / kScale << " ns";
        // Every sample is of the new master's Syncs.
        EXPECT_EQ(samples[i].m_offsetFromMaster + samples[i].m_meanPathDelay,
                  (kOwnOffset - kNewOffset + kNewDelay) * kScale);
    }
}

INSTANTIATE_TEST_SUITE_P(WaysIn, ParentSwitchTest,
                         ::testing::Values(kPortStateSlave, kPortStateMaster, kPortStateListening),
                         [](const ::testing::TestParamInfo<u8>& a_info)
                         { return std::string("From") + stateName(a_info.param); });

} // namespace
