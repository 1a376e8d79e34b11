#include "orvtarn/quarks/tEvent.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace nOrvTarn000;

namespace
{

TEST(EventTest, AutoResetTakesOneSignalAndManualResetKeepsIt)
{
    for (const bool autoReset : {true, false})
    {
        tStatus status;
        tEvent event(autoReset, true, "named", status);
        EXPECT_TRUE(event.wait(0, status)) << "built signalled";
        EXPECT_EQ(!autoReset, event.wait(0, status)) << autoReset;
        status.clear();
        event.signal();
        event.signal(); // signals do not add up
        EXPECT_TRUE(event.wait(0, status));
        event.reset(status);
        EXPECT_FALSE(event.wait(0, status));
        EXPECT_EQ(kStatusTimedOut, status.getCode()) << "a zero wait times out, it does not fail";

        tStatus failed;
        ORVTARN_SET_CODE(failed, kStatusCancelled);
        event.signal();
        EXPECT_FALSE(event.wait(0, failed));
        event.reset(failed);
        EXPECT_EQ(kStatusCancelled, failed.getCode());
        status.clear();
        EXPECT_TRUE(event.wait(0, status)) << "the fatal wait and reset left the signal";
    }
}

// True once the thread sleeps in the system, as a waiter on an event does.
bool sleeps(long a_thread)
{
    std::ifstream stat("/proc/self/task/" + std::to_string(a_thread) + "/stat");
    const std::string text((std::istreambuf_iterator<char>(stat)),
                           std::istreambuf_iterator<char>());
    return text.find(") S ") != std::string::npos;
}

TEST(EventTest, ManualResetReleasesEveryWaiter)
{
    tStatus status;
    tEvent event(false, false, nullptr, status);
    tEvent progress(status);
    std::atomic<long> ids[3] = {};
    std::atomic<int> released(0);
    std::vector<std::thread> waiters;
    for (std::atomic<long>& id : ids)
    {
        waiters.emplace_back(
            [&]
            {
                id = syscall(SYS_gettid);
                tStatus waitStatus;
                released += event.wait(20000, waitStatus) ? 1 : 0;
                progress.signal();
            });
    }
    // Every waiter waits before the one signal.
    for (std::atomic<long>& id : ids)
    {
        while (id.load() == 0 || !sleeps(id.load()))
        {
            std::this_thread::yield();
        }
    }
    event.signal();
    // Released waiters report at once; one left behind would wait out its bound.
    while (released.load() < 3 && progress.wait(5000, status))
    {
    }
    EXPECT_EQ(3, released.load());
    for (std::thread& waiter : waiters)
    {
        waiter.join();
    }
}

TEST(EventTest, FiniteWaitNeverEndsEarly)
{
    tStatus status;
    tEvent event(status);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(event.wait(30, status));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(30));
    EXPECT_EQ(kStatusTimedOut, status.getCode());
}

TEST(EventTest, EventBuiltOnFatalStatusFailsItsWaits)
{
    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    tEvent event(failed);
    event.signal();
    tStatus status;
    EXPECT_FALSE(event.wait(0, status));
    EXPECT_EQ(kStatusWaitFailed, status.getCode());
    tStatus resetStatus;
    event.reset(resetStatus);
    EXPECT_EQ(kStatusSystemError, resetStatus.getCode());
}

} // namespace
