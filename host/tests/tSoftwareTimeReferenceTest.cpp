#include "tSoftwareTimeReference.h"
#include "tMonotonicRawTickSource.h"
#include "tSimulatedTickSource.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <thread>

using nOrvTarn000::tStatus;
using nZelmar::tSimulatedTickSource;
using nZelmar::tSoftwareTimeReference;

namespace
{

const u64 kFrequency = 10000000u;
const u64 kSecond = 1000000000u;
const u64 kEpochOffset = 2082844800ull * kSecond; // 1904 to 1970

u64 utcNow()
{
    return static_cast<u64>(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                std::chrono::system_clock::now().time_since_epoch())
                                .count());
}

u64 timeOf(nZelmar::iTimeReference& a_rReference)
{
    u64 nanoseconds = 0;
    a_rReference.getReferenceTime(nanoseconds);
    return nanoseconds;
}

TEST(SoftwareTimeReference, StartsAtTheSystemsUtcPlusTheOffsetOnTheCounterAtNominalRate)
{
    for (const i64 offset : {i64(0), i64(5 * kSecond), -i64(5 * kSecond)})
    {
        tStatus status;
        tSimulatedTickSource ticks(kFrequency, 250e-6);
        const u64 before = utcNow();
        tSoftwareTimeReference reference(ticks, offset, status);
        const u64 after = utcNow();
        const u64 start = timeOf(reference) - kEpochOffset - static_cast<u64>(offset);
        EXPECT_LE(before, start) << offset;
        EXPECT_GE(after, start) << offset;
        EXPECT_EQ(1e7, reference.getRate());
        EXPECT_EQ(kFrequency, reference.getTickFrequency());
        ticks.advance(4 * kSecond);
        u64 count = 0;
        reference.getReferenceTicks(count);
        EXPECT_EQ(40010000u, count) << "4 s of a counter 250 ppm fast";
        EXPECT_EQ(0, status.getCode());
    }
}

// One second of the counter at a rate relative to the nominal one.
TEST(SoftwareTimeReference, ALowerRateRunsFasterWithinTheLimits)
{
    struct tCase
    {
        f64 m_requested; // relative to the nominal rate
        f64 m_applied;
        u64 m_advance; // nanoseconds in one second of the counter
    };
    const f64 kNaN = std::numeric_limits<f64>::quiet_NaN();
    const f64 kInfinity = std::numeric_limits<f64>::infinity();
    const tCase kCases[] = {
        {1.0, 1.0, 1000000000u},
        {1.0 - 1e-4, 1.0 - 1e-4, 1000100010u},
        {1.0 + 1e-4, 1.0 + 1e-4, 999900010u},
        {0.5, 0.99, 1010101010u},
        {2.0, 1.01, 990099010u},
        {kNaN, 1.0, 1000000000u},
        {kInfinity, 1.0, 1000000000u},
    };
    for (const tCase& testCase : kCases)
    {
        tStatus status;
        tSimulatedTickSource ticks(kFrequency, 0.0);
        tSoftwareTimeReference reference(ticks, 0, status);
        const u64 start = timeOf(reference);
        reference.setRate(1e7 * testCase.m_requested);
        EXPECT_EQ(start, timeOf(reference)) << "a rate change moves no time";
        EXPECT_DOUBLE_EQ(1e7 * testCase.m_applied, reference.getRate()) << testCase.m_requested;
        ticks.advance(kSecond);
        EXPECT_EQ(testCase.m_advance, timeOf(reference) - start) << testCase.m_requested;
    }
}

TEST(SoftwareTimeReference, RateChangesKeepTheFractionsOfANanosecond)
{
    tStatus status;
    tSimulatedTickSource ticks(kFrequency, 0.0);
    tSoftwareTimeReference reference(ticks, 0, status);
    const u64 start = timeOf(reference);
    // 99.990001 ns a tick: rounding each change to whole nanoseconds would
    // make 100 of every tick.
    for (int tick = 0; tick < 1000; ++tick)
    {
        reference.setRate(1e7 * (1.0 + 1e-4));
        ticks.advance(100);
    }
    EXPECT_EQ(99990u, timeOf(reference) - start);
}

TEST(SoftwareTimeReference, RunsOnTheRawMonotonicClock)
{
    tStatus status;
    nZelmar::tMonotonicRawTickSource ticks(status);
    const u64 before = utcNow();
    tSoftwareTimeReference reference(ticks, 0, status);
    const u64 now = timeOf(reference) - kEpochOffset;
    EXPECT_LE(before, now);
    EXPECT_GE(utcNow() + kSecond / 100, now) << "within the span of one read";
    EXPECT_EQ(0, status.getCode());
}

// Readers see a time that never goes back while another thread steers.
TEST(SoftwareTimeReferenceThreads, ReadsStayMonotonicUnderRateChanges)
{
    tStatus status;
    nZelmar::tMonotonicRawTickSource ticks(status);
    tSoftwareTimeReference reference(ticks, 0, status);
    std::thread steering(
        [&reference]
        {
            for (int change = 0; change < 20000; ++change)
            {
                reference.setRate(1e7 * (change % 2 == 0 ? 0.995 : 1.005));
            }
        });
    u64 last = 0;
    u64 backwards = 0;
    for (int read = 0; read < 20000; ++read)
    {
        const u64 now = timeOf(reference);
        backwards += now < last ? 1 : 0;
        last = now;
    }
    steering.join();
    EXPECT_EQ(0u, backwards);
    EXPECT_EQ(0, status.getCode());
}

} // namespace
