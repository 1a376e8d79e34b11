#include "orvtarn/protons/timer/tTimer.h"
#include "orvtarn/protons/timer/tTimeout.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>

using namespace nOrvTarn000;

namespace
{

const u32 kGenerousMs = 10000;

struct TimerTest : testing::TestWithParam<u32>
{
};

TEST_P(TimerTest, StartAndStopAlternate)
{
    tStatus status;
    tTimer timer(GetParam());
    timer.stop(status);
    EXPECT_EQ(kStatusWrongRunState, status.getCode());
    EXPECT_FALSE(timer.isRunning());

    status.clear();
    timer.start(status);
    EXPECT_TRUE(timer.isRunning());
    timer.start(status);
    EXPECT_EQ(kStatusWrongRunState, status.getCode());
    EXPECT_TRUE(timer.isRunning());

    status.clear();
    timer.stop(status);
    EXPECT_EQ(kStatusSuccess, status.getCode());
    timer.stop(status);
    EXPECT_EQ(kStatusWrongRunState, status.getCode());
}

TEST_P(TimerTest, AccumulatesOverSpansAndHoldsWhileStopped)
{
    tStatus status;
    tTimer timer(GetParam());
    EXPECT_EQ(0ull, timer.getElapsed(kNanoseconds, status));

    timer.start(status);
    sleepMilliseconds(10, status);
    const u64 whileRunning = timer.getElapsed(kMicroseconds, status);
    EXPECT_GE(whileRunning, 10000ull);
    timer.stop(status);
    const u64 first = timer.getElapsed(kMicroseconds, status);
    EXPECT_GE(first, whileRunning);

    sleepMilliseconds(10, status);
    EXPECT_EQ(first, timer.getElapsed(kMicroseconds, status)) << "a stopped timer moved";

    timer.start(status);
    sleepMilliseconds(10, status);
    timer.stop(status);
    EXPECT_GE(timer.getElapsed(kMicroseconds, status), first + 10000u);
    EXPECT_GE(timer.getElapsed(kMilliseconds, status), 20ull);
    EXPECT_EQ(kStatusSuccess, status.getCode());

    timer.reset();
    EXPECT_EQ(0ull, timer.getElapsed(kPicoseconds, status));
    EXPECT_FALSE(timer.isRunning());
}

TEST_P(TimerTest, FatalStatusLeavesTheTimerAlone)
{
    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    tTimer timer(GetParam());
    timer.start(failed);
    EXPECT_FALSE(timer.isRunning());
    EXPECT_EQ(0ull, timer.now(kMilliseconds, failed));

    tStatus status;
    timer.start(status);
    timer.stop(failed);
    EXPECT_TRUE(timer.isRunning());
    EXPECT_EQ(0ull, timer.getElapsed(kNanoseconds, failed));
    EXPECT_EQ(kStatusCancelled, failed.getCode());
}

INSTANTIATE_TEST_SUITE_P(EachClock, TimerTest,
                         testing::Values(u32(kClockTick), u32(kClockPerformanceCounter)));

TEST(TimerNowTest, ReadingsOfBothClocksAgreeInEveryUnit)
{
    tStatus status;
    tTimer tick(kClockTick);
    tTimer counter(kClockPerformanceCounter);
    const u64 tickMs = tick.now(kMilliseconds, status);
    const u64 counterUs = counter.now(kMicroseconds, status);
    const u64 tickMsAgain = tick.now(kMilliseconds, status);
    EXPECT_LE(tickMs, counterUs / 1000u);
    EXPECT_LE(counterUs / 1000u, tickMsAgain);
    EXPECT_EQ(kStatusSuccess, status.getCode());
}

TEST(TimeoutTest, NeverArmedTimeoutIsExpired)
{
    tStatus status;
    tTimeout timeout;
    EXPECT_TRUE(timeout.isExpired(status));
    EXPECT_EQ(0ull, timeout.getRemainingMilliseconds(status));

    timeout.start(0, status);
    EXPECT_TRUE(timeout.isExpired(status));
    EXPECT_EQ(0ull, timeout.getRemaining(kNanoseconds, status));
    EXPECT_FALSE(timeout.isRunning());
    EXPECT_EQ(kStatusSuccess, status.getCode());
}

TEST(TimeoutTest, ArmedValueHasOneTickMore)
{
    tStatus status;
    tTimeout timeout;
    timeout.setTimeout(5, kMilliseconds, status);
    // Not started, so nothing has elapsed.
    EXPECT_EQ(6ull, timeout.getRemainingMilliseconds(status));
    EXPECT_EQ(6000ull, timeout.getRemaining(kMicroseconds, status));
    EXPECT_FALSE(timeout.isExpired(status));

    timeout.setTimeout(2, kSeconds, status);
    EXPECT_EQ(2001ull, timeout.getRemainingMilliseconds(status));
    // Below one tick, the value truncates to nothing and keeps the extra tick.
    timeout.setTimeout(999, kMicroseconds, status);
    EXPECT_EQ(1ull, timeout.getRemainingMilliseconds(status));
    EXPECT_EQ(kStatusSuccess, status.getCode());
}

TEST(TimeoutTest, ExtraTickIsLeftOutWhereItWouldWrap)
{
    tStatus status;
    tTimeout timeout;
    const u64 kMax = std::numeric_limits<u64>::max();
    timeout.setTimeout(kMax, kMilliseconds, status);
    EXPECT_EQ(kMax, timeout.getRemainingMilliseconds(status));
    EXPECT_FALSE(timeout.isExpired(status));
}

TEST(TimeoutTest, TimeoutNeverEndsEarly)
{
    tStatus status;
    tTimeout timeout;
    const auto begin = std::chrono::steady_clock::now();
    timeout.start(5, status);
    EXPECT_TRUE(timeout.isRunning());
    EXPECT_LE(timeout.getRemainingMilliseconds(status), 6ull);
    const auto limit = begin + std::chrono::milliseconds(kGenerousMs);
    while (!timeout.isExpired(status) && std::chrono::steady_clock::now() < limit)
    {
        sleepMilliseconds(1, status);
    }
    const auto ended = std::chrono::steady_clock::now();
    ASSERT_TRUE(timeout.isExpired(status));
    EXPECT_GE(ended - begin, std::chrono::milliseconds(5)) << "the timeout ended early";
    EXPECT_EQ(0ull, timeout.getRemaining(kPicoseconds, status));
    EXPECT_EQ(kStatusSuccess, status.getCode());
}

TEST(TimeoutTest, SetWhileRunningIsRefused)
{
    tStatus status;
    tTimeout timeout;
    timeout.start(kGenerousMs, status);
    timeout.setTimeout(1, kMilliseconds, status);
    EXPECT_EQ(kStatusWrongRunState, status.getCode());
    status.clear();
    EXPECT_GT(timeout.getRemainingMilliseconds(status), 1ull) << "the refused value was taken";
    EXPECT_FALSE(timeout.isExpired(status));
}

TEST(TimeoutTest, StartRestartsAnExpiredTimeout)
{
    tStatus status;
    tTimeout timeout;
    timeout.setTimeout(0, kMilliseconds, status);
    timeout.tTimer::start(status);
    const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(kGenerousMs);
    while (!timeout.isExpired(status) && std::chrono::steady_clock::now() < limit)
    {
        sleepMilliseconds(1, status);
    }
    ASSERT_TRUE(timeout.isExpired(status));

    // A running timer is restarted from nothing elapsed.
    timeout.start(kGenerousMs, status);
    EXPECT_FALSE(timeout.isExpired(status));
    EXPECT_GT(timeout.getRemainingMilliseconds(status), 0ull);
    EXPECT_EQ(kStatusSuccess, status.getCode());
}

TEST(TimeoutTest, StartWithZeroKeepsAnEarlierArmingButStopsTheClock)
{
    tStatus status;
    tTimeout timeout;
    timeout.start(kGenerousMs, status);
    timeout.start(0, status);
    EXPECT_FALSE(timeout.isRunning());
    EXPECT_EQ(u64(kGenerousMs) + 1u, timeout.getRemainingMilliseconds(status));
    EXPECT_FALSE(timeout.isExpired(status));
    EXPECT_EQ(kStatusSuccess, status.getCode());
}

TEST(TimeoutTest, FatalStatusChangesNothing)
{
    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    tTimeout timeout;
    timeout.setTimeout(5, kMilliseconds, failed);
    timeout.start(5, failed);
    EXPECT_FALSE(timeout.isRunning());
    EXPECT_EQ(0ull, timeout.getRemainingMilliseconds(failed));
    EXPECT_FALSE(timeout.isExpired(failed));

    tStatus status;
    EXPECT_TRUE(timeout.isExpired(status)) << "the fatal calls armed the timeout";
}

} // namespace
