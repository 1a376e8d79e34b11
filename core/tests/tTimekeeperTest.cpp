#include "tTimekeeper.h"
#include "tSimulatedTickSource.h"
#include "tSoftwareTimeReference.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <vector>

using namespace zelmarPluginCore_1_0;
using nOrvTarn000::kStatusInternalError;
using nOrvTarn000::tStatus;

namespace
{

const u64 kSecond = 1000000000u;
const i64 kMillisecond = 1000000;
const f64 kNominalRate = 1e7; // the simulated counter's frequency

// A timekeeper attached to a software reference on a simulated counter that
// starts at tick 0 and has no frequency error.
struct tRig
{
    tRig() : m_ticks(10000000u, 0.0), m_reference(m_ticks, 0, m_status), m_timekeeper(m_status)
    {
        m_timekeeper.attach(&m_reference, m_status);
    }

    // A second passes and the time is read, as for a received Sync.
    tTimeValue read()
    {
        m_ticks.advance(kSecond);
        return m_timekeeper.getTime(m_status);
    }
    // One sample a second after the last, master ahead of local by a_offset.
    void sample(i64 a_offset, tStatus& a_status)
    {
        const tTimeValue local = read();
        m_timekeeper.addTimeSample(local + tTimeValue(a_offset), local, a_status);
    }

    tStatus m_status;
    nZelmar::tSimulatedTickSource m_ticks;
    nZelmar::tSoftwareTimeReference m_reference;
    tTimekeeper m_timekeeper;
};

TEST(Timekeeper, TimeCountsFromTheUnixEpochAndStepTimeSetsIt)
{
    tRig rig;
    const i64 utc = std::chrono::duration_cast<std::chrono::nanoseconds>(
                        std::chrono::system_clock::now().time_since_epoch())
                        .count();
    const tTimeValue now = rig.m_timekeeper.getTime(rig.m_status);
    EXPECT_LT(std::llabs(now.getSignedNanoseconds() - utc), 10 * i64(kSecond));

    const tTimeValue target(1234567890u, 5u, 1);
    rig.m_timekeeper.stepTime(target, rig.m_status);
    EXPECT_EQ(target, rig.m_timekeeper.getTime(rig.m_status));
    EXPECT_EQ(0, rig.m_status.getCode());
}

TEST(Timekeeper, OffsetsFromTheMacroThresholdOnStepTheReference)
{
    struct tCase
    {
        f64 m_threshold; // seconds; 0 keeps the default of 0.1 s
        i64 m_offset;
        bool m_steps;
    };
    const tCase kCases[] = {
        {0.0, 100 * kMillisecond, true},
        {0.0, -100 * kMillisecond, true},
        {0.0, 100 * kMillisecond - 1, false},
        {0.0, 200 * kMillisecond, true},
        {0.0, 50 * kMillisecond, false},
        {0.0200000009, 20 * kMillisecond, true},
        {0.0200000009, 20 * kMillisecond - 1, false},
    };
    for (const tCase& testCase : kCases)
    {
        tRig rig;
        if (testCase.m_threshold != 0.0)
        {
            rig.m_timekeeper.setMacroPhaseAdjustThreshold(testCase.m_threshold, rig.m_status);
        }
        const tTimeValue local = rig.read();
        u64 before = 0;
        u64 after = 0;
        rig.m_reference.getReferenceTime(before);
        rig.m_timekeeper.addTimeSample(local + tTimeValue(testCase.m_offset), local, rig.m_status);
        rig.m_reference.getReferenceTime(after);
        const i64 moved = static_cast<i64>(after - before);
        EXPECT_EQ(testCase.m_steps ? testCase.m_offset : 0, moved) << testCase.m_offset;
        // The first fine sample passes the filters unchanged.
        EXPECT_EQ(tTimeValue(testCase.m_offset).toSeconds(),
                  rig.m_timekeeper.getOffset(rig.m_status));
        EXPECT_EQ(kNominalRate, rig.m_reference.getRate()) << "neither a step nor a first sample";
        EXPECT_EQ(0, rig.m_status.getCode());
    }
}

TEST(Timekeeper, OffsetIsTheFilteredOneAfterAFineSampleAndTheMeasuredOneAfterAStep)
{
    tRig rig;
    rig.sample(kMillisecond, rig.m_status);
    rig.sample(kMillisecond, rig.m_status);
    EXPECT_DOUBLE_EQ(0.0015, rig.m_timekeeper.getOffset(rig.m_status)) << "y = x + x' - y'/2";
    rig.sample(-300 * kMillisecond, rig.m_status);
    EXPECT_DOUBLE_EQ(-0.3, rig.m_timekeeper.getOffset(rig.m_status));
    rig.m_timekeeper.setFreeRunning(true, rig.m_status);
    EXPECT_EQ(0.0, rig.m_timekeeper.getOffset(rig.m_status));
    EXPECT_EQ(0, rig.m_status.getCode());
}

enum tAction
{
    kWithin,        // a first fine sample, or one after kWithin, that ends within 1 ms
    kAtThreshold,   // a first fine sample of exactly 1 ms
    kPastThreshold, // a first fine sample of 1 ms and 1 ns
    kBeyond,        // a fine sample that ends beyond 1 ms
    kStep,          // a macro phase adjustment
    kDetach,
    kAttach,
    kFreeRun, // setFreeRunning(true)
    kSlave,   // setFreeRunning(false)
};

struct tFlagCase
{
    std::vector<tAction> m_actions;
    bool m_synchronized;
    bool m_changed;
};

const tFlagCase kFlagCases[] = {
    {{kWithin}, true, false},
    {{kAtThreshold}, true, false},
    {{kPastThreshold}, false, false},
    {{kBeyond}, false, false},
    {{kStep}, false, false},
    {{kWithin, kBeyond}, false, true},
    {{kWithin, kStep}, false, true},
    {{kWithin, kDetach}, false, true},
    {{kWithin, kFreeRun}, true, true},
    {{kWithin, kSlave}, true, false},
    {{kFreeRun}, true, false},
    {{kFreeRun, kFreeRun}, true, false},
    {{kFreeRun, kSlave}, false, true},
    {{kFreeRun, kBeyond}, false, true},
    {{kWithin, kBeyond, kAttach}, false, false},
};

TEST(Timekeeper, SynchronizationFlagsFollowTheirEvents)
{
    for (std::size_t row = 0; row < sizeof(kFlagCases) / sizeof(kFlagCases[0]); ++row)
    {
        const tFlagCase& testCase = kFlagCases[row];
        tRig rig;
        for (const tAction action : testCase.m_actions)
        {
            switch (action)
            {
            case kWithin:
                rig.sample(900000, rig.m_status); // spike limit after it: 4.5 ms
                break;
            case kAtThreshold:
            case kPastThreshold:
                rig.sample(kMillisecond + (action == kPastThreshold ? 1 : 0), rig.m_status);
                break;
            case kBeyond:
                rig.sample(4 * kMillisecond, rig.m_status);
                break;
            case kStep:
                rig.sample(150 * kMillisecond, rig.m_status);
                break;
            case kDetach:
                rig.m_timekeeper.detach();
                break;
            case kAttach:
                rig.m_timekeeper.attach(&rig.m_reference, rig.m_status);
                break;
            case kFreeRun:
            case kSlave:
                rig.m_timekeeper.setFreeRunning(action == kFreeRun, rig.m_status);
                break;
            }
        }
        EXPECT_EQ(testCase.m_synchronized, rig.m_timekeeper.isSynchronized(rig.m_status))
            << "row " << row;
        tStatus warning;
        warning.setCode(1, "test", __FILE__, __LINE__);
        EXPECT_EQ(testCase.m_changed, rig.m_timekeeper.takeSynchronizationChanged(warning))
            << "row " << row;
        EXPECT_EQ(testCase.m_changed, rig.m_timekeeper.takeSynchronizationChanged(rig.m_status))
            << "row " << row << ": a non-zero code left the flag";
        EXPECT_FALSE(rig.m_timekeeper.takeSynchronizationChanged(rig.m_status)) << "row " << row;
        EXPECT_EQ(0, rig.m_status.getCode()) << "row " << row;
    }
}

struct tRateCase
{
    const char* m_name;
    f64 m_gainBeforeAttach; // 0: the default 0.001
    f64 m_gainAfterAttach;  // 0: none
    std::vector<i64> m_offsets;
    f64 m_rateChange;
};

// Two samples of 100 us a second apart filter to 100 and 150 us: slope
// 5e-5, intercept 5e4 ns, mean interval 1 s, span 2 s. The line 28 mean
// intervals beyond the newest sample predicts 1.55 ms, and the step is
// -rate * gain * 1.55e6 / 1e9.
const tRateCase kRateCases[] = {
    {"warm-up: one sample leaves the rate", 0.0, 0.0, {100000}, 0.0},
    {"master ahead: lower rate, faster", 0.0, 0.0, {100000, 100000}, -15.5},
    {"master behind: higher rate, slower", 0.0, 0.0, {-100000, -100000}, 15.5},
    {"a gain set after attach waits", 0.0, 0.002, {100000, 100000}, -15.5},
    {"a gain set before attach counts", 0.002, 0.0, {100000, 100000}, -31.0},
    {"a step is held to 0.1 % of the rate", 0.0, 0.0, {90000000, 90000000}, -1e4},
    {"in both directions", 0.0, 0.0, {-90000000, -90000000}, 1e4},
};

TEST(Timekeeper, RateStepsByThePredictedOffset)
{
    for (const tRateCase& testCase : kRateCases)
    {
        tRig rig;
        if (testCase.m_gainBeforeAttach != 0.0)
        {
            rig.m_timekeeper.setGain(testCase.m_gainBeforeAttach, rig.m_status);
            rig.m_timekeeper.attach(&rig.m_reference, rig.m_status);
        }
        if (testCase.m_gainAfterAttach != 0.0)
        {
            rig.m_timekeeper.setGain(testCase.m_gainAfterAttach, rig.m_status);
            EXPECT_EQ(testCase.m_gainAfterAttach, rig.m_timekeeper.getGain(rig.m_status));
        }
        for (const i64 offset : testCase.m_offsets)
        {
            rig.sample(offset, rig.m_status);
        }
        EXPECT_NEAR(testCase.m_rateChange, rig.m_reference.getRate() - kNominalRate, 1e-6)
            << testCase.m_name;
        EXPECT_EQ(0, rig.m_status.getCode()) << testCase.m_name;
    }
}

// The rate after a run of samples at 1 ms, with something else at second 3.
f64 rateAfter(void (*a_atThirdSecond)(tRig&))
{
    tRig rig;
    rig.sample(kMillisecond, rig.m_status);
    rig.sample(kMillisecond, rig.m_status);
    a_atThirdSecond(rig);
    rig.sample(kMillisecond, rig.m_status);
    EXPECT_EQ(0, rig.m_status.getCode());
    return rig.m_reference.getRate();
}

TEST(Timekeeper, AStepLeavesTheFiltersAndTheLastUsedTickCount)
{
    const f64 withoutSample = rateAfter([](tRig& a_rig) { a_rig.read(); });
    const f64 withStep =
        rateAfter([](tRig& a_rig) { a_rig.sample(-500 * kMillisecond, a_rig.m_status); });
    const f64 withFineSample = rateAfter([](tRig& a_rig) { a_rig.sample(0, a_rig.m_status); });
    EXPECT_EQ(withoutSample, withStep);
    EXPECT_NE(withoutSample, withFineSample);
}

TEST(Timekeeper, SamplesWithoutAUsableReadingFailAndAreDropped)
{
    tRig rig;
    tStatus status;
    // A local time after every reading empties the readings.
    const tTimeValue first = rig.read();
    rig.m_timekeeper.addTimeSample(first, first + tTimeValue(i64(1)), status);
    EXPECT_EQ(kStatusInternalError, status.getCode());
    status.clear();
    rig.m_timekeeper.addTimeSample(first, first, status);
    EXPECT_EQ(kStatusInternalError, status.getCode()) << "the readings were emptied";

    // Older readings go with the one a sample uses; later ones stay.
    status.clear();
    rig.read();
    const tTimeValue second = rig.read();
    const tTimeValue third = rig.read();
    rig.m_timekeeper.addTimeSample(second, second, status);
    rig.m_timekeeper.addTimeSample(third, third, status);
    EXPECT_EQ(0, status.getCode());

    // A reading at the tick count of the last used one gives no time.
    const tTimeValue again = rig.m_timekeeper.getTime(status);
    rig.m_timekeeper.addTimeSample(again, again, status);
    EXPECT_EQ(kStatusInternalError, status.getCode());
    status.clear();
    rig.sample(0, status);
    EXPECT_EQ(0, status.getCode());
}

} // namespace
