// Timers and time-outs on a manual clock, to the nanosecond.
#include "orvtarn/protons/timer/tTimer.h"
#include "orvtarn/protons/timer/tTimeout.h"
#include "tManualClock.h"

#include <gtest/gtest.h>

#include <limits>

using namespace nOrvTarn000;

namespace
{

const u64 kMs = tManualClock::kMillisecond;

struct TimerTest : testing::TestWithParam<u32>
{
    tManualClock m_clock{5 * kMs};
};

TEST_P(TimerTest, AccumulatesOverItsSpansWhileStartAndStopAlternate)
{
    tStatus status;
    tTimer timer(GetParam(), m_clock);
    timer.stop(status);
    EXPECT_EQ(kStatusWrongRunState, status.getCode());
    status.clear();
    timer.start(status);
    timer.start(status);
    EXPECT_EQ(kStatusWrongRunState, status.getCode());
    EXPECT_TRUE(timer.isRunning());

    status.clear();
    m_clock.advance(10 * kMs);
    EXPECT_EQ(10000ull, timer.getElapsed(kMicroseconds, status));
    timer.stop(status);
    m_clock.advance(10 * kMs);
    EXPECT_EQ(10ull, timer.getElapsed(kMilliseconds, status)) << "a stopped timer moved";
    timer.start(status);
    m_clock.advance(10 * kMs);
    timer.stop(status);
    EXPECT_EQ(20000000ull, timer.getElapsed(kNanoseconds, status));
    EXPECT_EQ(kStatusSuccess, status.getCode());
    timer.reset();
    EXPECT_EQ(0ull, timer.getElapsed(kPicoseconds, status));
    EXPECT_FALSE(timer.isRunning());

    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    timer.start(failed);
    EXPECT_FALSE(timer.isRunning());
    timer.start(status);
    timer.stop(failed);
    EXPECT_TRUE(timer.isRunning());
    EXPECT_EQ(0ull, timer.getElapsed(kNanoseconds, failed));
    EXPECT_EQ(0ull, timer.now(kMilliseconds, failed));
}

INSTANTIATE_TEST_SUITE_P(EachClock, TimerTest,
                         testing::Values(u32(kClockTick), u32(kClockPerformanceCounter)));

TEST(TimerClockTest, TheTickCountsWholeMillisecondsAndTheCounterWrapsInPicoseconds)
{
    tManualClock clock(6500 * 1000);
    tStatus status;
    EXPECT_EQ(6000ull, tTimer(kClockTick, clock).now(kMicroseconds, status));
    EXPECT_EQ(6500ull, tTimer(kClockPerformanceCounter, clock).now(kMicroseconds, status));

    // A span across the wrap of 2^64 ps adds nothing and fails.
    clock.advanceTo(std::numeric_limits<u64>::max() / 1000 - kMs);
    tTimer counter(kClockPerformanceCounter, clock);
    counter.start(status);
    clock.advance(2 * kMs);
    counter.stop(status);
    EXPECT_EQ(kStatusSystemError, status.getCode());
    EXPECT_FALSE(counter.isRunning());
    EXPECT_EQ(0ull, counter.getElapsed(kNanoseconds, status));
}

TEST(TimeoutTest, EndsOneTickAfterItsLengthAndNeverEarly)
{
    tManualClock clock;
    tStatus status;
    tTimeout timeout(clock);
    EXPECT_TRUE(timeout.isExpired(status)) << "never armed";
    timeout.start(0, status);
    EXPECT_TRUE(timeout.isExpired(status));
    EXPECT_EQ(0ull, timeout.getRemainingMilliseconds(status));
    EXPECT_FALSE(timeout.isRunning());

    timeout.start(5, status);
    EXPECT_EQ(6000ull, timeout.getRemaining(kMicroseconds, status));
    clock.advance(5 * kMs);
    EXPECT_FALSE(timeout.isExpired(status));
    EXPECT_EQ(1ull, timeout.getRemainingMilliseconds(status));
    timeout.setTimeout(1, kSeconds, status);
    EXPECT_EQ(kStatusWrongRunState, status.getCode()) << "a running timeout keeps its value";
    status.clear();
    clock.advance(kMs);
    EXPECT_TRUE(timeout.isExpired(status));
    EXPECT_EQ(0ull, timeout.getRemaining(kPicoseconds, status));

    // start restarts from nothing elapsed; a start with 0 keeps the arming
    // but stops the clock.
    timeout.start(20, status);
    clock.advance(10 * kMs);
    timeout.start(0, status);
    EXPECT_FALSE(timeout.isRunning());
    EXPECT_EQ(21ull, timeout.getRemainingMilliseconds(status));
    EXPECT_EQ(kStatusSuccess, status.getCode());
}

TEST(TimeoutTest, ValueIsArmedWithOneTickMoreUnlessThatWouldWrap)
{
    const u64 kMax = std::numeric_limits<u64>::max();
    const struct
    {
        u64 m_value;
        i32 m_unit;
        u64 m_milliseconds;
    } kCases[] = {{5, kMilliseconds, 6},
                  {2, kSeconds, 2001},
                  {999, kMicroseconds, 1},
                  {kMax, kMilliseconds, kMax}};
    tManualClock clock;
    for (const auto& testCase : kCases)
    {
        tStatus status;
        tTimeout timeout(clock);
        timeout.setTimeout(testCase.m_value, testCase.m_unit, status);
        EXPECT_EQ(testCase.m_milliseconds, timeout.getRemainingMilliseconds(status));
        EXPECT_FALSE(timeout.isExpired(status));
    }

    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    tTimeout timeout(clock);
    timeout.setTimeout(5, kMilliseconds, failed);
    timeout.start(5, failed);
    EXPECT_FALSE(timeout.isRunning());
    EXPECT_FALSE(timeout.isExpired(failed));
    tStatus status;
    EXPECT_TRUE(timeout.isExpired(status)) << "the fatal calls armed the timeout";
}

} // namespace
