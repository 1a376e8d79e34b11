#include "orvtarn/quarks/tEvent.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

using namespace nOrvTarn000;

namespace
{

const u32 kGenerousMs = 10000;
// Long enough for a waiter that could leave to have left.
const u32 kSettleMs = 50;

// Threads that each wait once on an event and count themselves out.
class tWaiters
{
public:
    tWaiters(tEvent& a_rEvent, int a_count) : m_progress(m_status)
    {
        for (int i = 0; i < a_count; ++i)
        {
            m_threads.emplace_back(
                [this, &a_rEvent]
                {
                    tStatus status;
                    if (a_rEvent.wait(tEvent::kInfinite, status))
                    {
                        ++m_released;
                    }
                    else
                    {
                        ++m_failed;
                    }
                    m_progress.signal();
                });
        }
    }
    ~tWaiters()
    {
        for (std::thread& thread : m_threads)
        {
            thread.join();
        }
    }

    // Waits until at least a_count waiters have left; false when they do not.
    bool awaitReleased(int a_count)
    {
        while (m_released.load() < a_count)
        {
            tStatus status;
            if (!m_progress.wait(kGenerousMs, status))
            {
                return false;
            }
        }
        return true;
    }
    int released() const { return m_released.load(); }
    int failed() const { return m_failed.load(); }

private:
    tStatus m_status;
    tEvent m_progress;
    std::atomic<int> m_released{0};
    std::atomic<int> m_failed{0};
    std::vector<std::thread> m_threads;
};

TEST(EventTest, AutoResetReleasesOneWaiterPerSignal)
{
    tStatus status;
    tEvent event(status);
    const int kCount = 3;
    tWaiters waiters(event, kCount);
    for (int round = 1; round <= kCount; ++round)
    {
        event.signal();
        ASSERT_TRUE(waiters.awaitReleased(round));
        std::this_thread::sleep_for(std::chrono::milliseconds(kSettleMs));
        EXPECT_EQ(round, waiters.released()) << "one signal released more than one waiter";
    }
    EXPECT_EQ(0, waiters.failed());
}

TEST(EventTest, AutoResetWaitConsumesTheSignal)
{
    tStatus status;
    tEvent event(status);
    event.signal();
    event.signal(); // signals do not add up
    EXPECT_TRUE(event.wait(0, status));
    EXPECT_FALSE(event.wait(0, status));
    EXPECT_EQ(kStatusTimedOut, status.getCode());
}

TEST(EventTest, ManualResetReleasesAllWaitersAndStaysSignalled)
{
    tStatus status;
    tEvent event(false, false, nullptr, status);
    const int kCount = 3;
    {
        tWaiters waiters(event, kCount);
        event.signal();
        ASSERT_TRUE(waiters.awaitReleased(kCount));
        EXPECT_EQ(0, waiters.failed());
    }
    EXPECT_TRUE(event.wait(0, status));
    EXPECT_TRUE(event.wait(0, status));
    event.reset(status);
    EXPECT_EQ(kStatusSuccess, status.getCode());
    EXPECT_FALSE(event.wait(0, status));
    EXPECT_EQ(kStatusTimedOut, status.getCode());
}

TEST(EventTest, InitialStateAndResetOfAutoResetEvent)
{
    tStatus status;
    tEvent event(true, true, "named", status);
    EXPECT_TRUE(event.wait(0, status));
    EXPECT_FALSE(event.wait(0, status));
    status.clear();

    event.signal();
    event.reset(status);
    EXPECT_FALSE(event.wait(0, status));
    EXPECT_EQ(kStatusTimedOut, status.getCode());
}

TEST(EventTest, FiniteWaitRunsOutWithTimedOut)
{
    tStatus status;
    tEvent event(status);
    const u32 kTimeoutMs = 30;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(event.wait(kTimeoutMs, status));
    const auto waited = std::chrono::steady_clock::now() - begin;
    EXPECT_EQ(kStatusTimedOut, status.getCode());
    EXPECT_GE(waited, std::chrono::milliseconds(kTimeoutMs)) << "the wait ended early";
}

TEST(EventTest, ZeroWaitOnUnsignalledEventIsATimeOutNotAFailure)
{
    tStatus status;
    tEvent event(status);
    EXPECT_FALSE(event.wait(0, status));
    EXPECT_EQ(kStatusTimedOut, status.getCode());
}

TEST(EventTest, TimedWaitWakesOnSignalFromAnotherThread)
{
    tStatus status;
    tEvent event(status);
    std::thread signaller([&event] { event.signal(); });
    EXPECT_TRUE(event.wait(kGenerousMs, status));
    EXPECT_EQ(kStatusSuccess, status.getCode());
    signaller.join();
}

TEST(EventTest, FatalStatusDoesNothing)
{
    tStatus status;
    tEvent event(status);
    event.signal();

    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    EXPECT_FALSE(event.wait(0, failed));
    event.reset(failed);
    EXPECT_EQ(kStatusCancelled, failed.getCode());
    // Neither the wait nor the reset touched the signal.
    EXPECT_TRUE(event.wait(0, status));
}

TEST(EventTest, EventBuiltOnFatalStatusFailsItsWaits)
{
    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    tEvent event(failed);
    EXPECT_EQ(kStatusCancelled, failed.getCode());

    event.signal();
    tStatus status;
    EXPECT_FALSE(event.wait(0, status));
    EXPECT_EQ(kStatusWaitFailed, status.getCode());

    tStatus resetStatus;
    event.reset(resetStatus);
    EXPECT_EQ(kStatusSystemError, resetStatus.getCode());
}

} // namespace
