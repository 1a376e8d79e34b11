#include "orvtarn/quarks/tMutex.h"
#include "orvtarn/quarks/tMutexGuard.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using namespace nOrvTarn000;

namespace
{

// Each thread takes the lock twice and changes the count after the inner
// hold ends: were one unlock enough, another thread would get in.
TEST(MutexTest, OwnerTakesTheLockAgainAndOthersWaitForEveryUnlock)
{
    tStatus status;
    tMutex mutex(status);
    const int kThreads = 4;
    const int kRounds = 20000;
    long counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
    {
        threads.emplace_back(
            [&]
            {
                for (int i = 0; i < kRounds; ++i)
                {
                    tStatus local;
                    tMutexGuard outer(mutex, local);
                    {
                        tMutexGuard inner(mutex, local);
                        ASSERT_TRUE(inner.isLocked());
                    }
                    const long seen = counter;
                    std::this_thread::yield();
                    counter = seen + 1;
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(static_cast<long>(kThreads) * kRounds, counter);
}

TEST(MutexTest, FatalStatusOrAFailedBuildLocksNothing)
{
    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    tStatus status;
    tMutex mutex(status);
    EXPECT_FALSE(mutex.lock(failed));
    EXPECT_FALSE(tMutexGuard(mutex, failed).isLocked());

    tMutex unbuilt(failed);
    EXPECT_EQ(kStatusCancelled, failed.getCode());
    EXPECT_FALSE(unbuilt.lock(status));
    EXPECT_EQ(kStatusWaitFailed, status.getCode());
    unbuilt.unlock();
}

} // namespace
