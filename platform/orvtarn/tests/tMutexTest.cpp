#include "orvtarn/quarks/tMutex.h"
#include "orvtarn/quarks/tEvent.h"
#include "orvtarn/quarks/tMutexGuard.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace nOrvTarn000;

namespace
{

const u32 kGenerousMs = 10000;
// Long enough for a thread that could take the lock to have taken it.
const u32 kSettleMs = 50;

// A second thread that tries to take the mutex and reports when it has it.
class tContender
{
public:
    tContender(tMutex& a_rMutex, tStatus& a_status) : m_acquired(a_status), m_release(a_status)
    {
        m_thread = std::thread(
            [this, &a_rMutex]
            {
                tStatus status;
                if (a_rMutex.lock(status))
                {
                    m_acquired.signal();
                    m_release.wait(tEvent::kInfinite, status);
                    a_rMutex.unlock();
                }
            });
    }
    ~tContender()
    {
        m_release.signal();
        m_thread.join();
    }

    // True when the contender holds the lock within a_timeoutMs.
    bool gotLockWithin(u32 a_timeoutMs)
    {
        tStatus status;
        const bool acquired = m_acquired.wait(a_timeoutMs, status);
        EXPECT_EQ(acquired ? kStatusSuccess : kStatusTimedOut, status.getCode());
        return acquired;
    }

private:
    tEvent m_acquired;
    tEvent m_release;
    std::thread m_thread;
};

TEST(MutexTest, OwnerLocksAgainAndNeedsAsManyUnlocks)
{
    tStatus status;
    tMutex mutex(status);
    ASSERT_TRUE(mutex.lock(status));
    ASSERT_TRUE(mutex.lock(status));
    mutex.unlock();

    tContender contender(mutex, status);
    EXPECT_FALSE(contender.gotLockWithin(kSettleMs)) << "one unlock released a twice-taken lock";
    mutex.unlock();
    EXPECT_TRUE(contender.gotLockWithin(kGenerousMs));
    EXPECT_EQ(kStatusSuccess, status.getCode());
}

TEST(MutexTest, GuardExcludesOtherThreads)
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
                    tMutexGuard guard(mutex, local);
                    ASSERT_TRUE(guard.isLocked());
                    counter = counter + 1;
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(static_cast<long>(kThreads) * kRounds, counter);
}

TEST(MutexTest, FatalStatusLocksNothingAndDoesNotWait)
{
    tStatus status;
    tMutex mutex(status);
    tContender holder(mutex, status);
    ASSERT_TRUE(holder.gotLockWithin(kGenerousMs));

    // Were the lock attempted, this would block on the contender's hold.
    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    EXPECT_FALSE(mutex.lock(failed));
    EXPECT_EQ(kStatusCancelled, failed.getCode());
}

TEST(MutexTest, GuardOnFatalStatusUnlocksNothing)
{
    tStatus status;
    tMutex mutex(status);
    ASSERT_TRUE(mutex.lock(status));
    {
        tStatus failed;
        ORVTARN_SET_CODE(failed, kStatusCancelled);
        tMutexGuard guard(mutex, failed);
        EXPECT_FALSE(guard.isLocked());
    }
    // The owner's single hold must still stand.
    tContender contender(mutex, status);
    EXPECT_FALSE(contender.gotLockWithin(kSettleMs)) << "the guard released a lock it never took";
    mutex.unlock();
    EXPECT_TRUE(contender.gotLockWithin(kGenerousMs));
}

TEST(MutexTest, MutexBuiltOnFatalStatusRefusesToLock)
{
    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    tMutex mutex(failed);
    EXPECT_EQ(kStatusCancelled, failed.getCode());

    tStatus status;
    EXPECT_FALSE(mutex.lock(status));
    EXPECT_EQ(kStatusWaitFailed, status.getCode());
    mutex.unlock();
}

} // namespace
