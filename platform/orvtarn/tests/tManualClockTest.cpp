#include "tManualClock.h"
#include "orvtarn/protons/timer/tClockedEvent.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace nOrvTarn000;

// A thread that wakes every 100 ms of clock time, or at once when signalled,
// and counts both. Its work at each wake is seen through the clock.
TEST(tManualClock, StepsThreadsThroughVirtualTimeAndKnowsWhenTheyAreDone)
{
    tManualClock clock(5 * tManualClock::kMillisecond);
    tStatus status;
    tClockedEvent event(clock, true, status);
    std::atomic<int> timeouts(0);
    std::atomic<int> signals(0);
    std::atomic<bool> stop(false);
    std::atomic<u64> lastWake(0);
    // The clock sees a thread from its first wait; a signal before the start
    // is pending work that the clock waits for until the thread takes it.
    event.signal();
    std::thread sleeper(
        [&]
        {
            while (!stop)
            {
                tStatus waitStatus;
                if (event.wait(100, waitStatus))
                {
                    ++signals;
                }
                else if (waitStatus.getCode() == kStatusTimedOut)
                {
                    ++timeouts;
                }
                lastWake = clock.now();
            }
        });

    ASSERT_TRUE(clock.runFor(1000 * tManualClock::kMillisecond));
    EXPECT_EQ(timeouts.load(), 10);
    EXPECT_EQ(lastWake.load(), 1005 * tManualClock::kMillisecond);
    EXPECT_EQ(clock.getNextDeadline(), 1105 * tManualClock::kMillisecond);

    // A signal is work at the present instant: settle waits for it.
    event.signal();
    ASSERT_TRUE(clock.settle());
    EXPECT_EQ(signals.load(), 2);
    EXPECT_EQ(clock.now(), 1005 * tManualClock::kMillisecond);

    EXPECT_TRUE(
        clock.runUntil([&] { return timeouts.load() == 13; }, 1000 * tManualClock::kMillisecond));
    EXPECT_EQ(clock.now(), 1305 * tManualClock::kMillisecond);
    EXPECT_FALSE(clock.runUntil([] { return false; }, 50 * tManualClock::kMillisecond));
    EXPECT_EQ(clock.now(), 1355 * tManualClock::kMillisecond);

    stop = true;
    event.signal();
    sleeper.join();
    EXPECT_TRUE(clock.settle());
}
