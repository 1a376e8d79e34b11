// The deferred-action queue on a manual clock (delays, order, re-queueing,
// stop), and under real threads that queue while it stops.
#include "tDeferredActionQueue.h"
#include "tManualClock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace zelmarPluginCore_1_0;
using nOrvTarn000::kStatusSuccess;
using nOrvTarn000::tEvent;
using nOrvTarn000::tManualClock;

namespace
{

const u64 kMs = tManualClock::kMillisecond;

class tCallAction : public iDeferredAction
{
public:
    explicit tCallAction(std::function<void()> a_call) : m_call(std::move(a_call)) {}
    void execute() override { m_call(); }

private:
    std::function<void()> m_call;
};

typedef std::vector<std::pair<std::string, u64>> tRuns;

struct DeferredActionQueueTest : testing::Test
{
    void SetUp() override
    {
        m_queue.start(m_status);
        ASSERT_EQ(kStatusSuccess, m_status.getCode());
    }
    // Records a run at the clock's time; called on the worker.
    void ran(const std::string& a_name)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_runs.emplace_back(a_name, m_clock.now());
    }
    tRuns takeRuns()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return std::move(m_runs);
    }
    iDeferredAction* action(const char* a_name)
    {
        m_actions.emplace_back([this, a_name] { ran(a_name); });
        return &m_actions.back();
    }

    // Declared before the queue, so that they outlive its worker.
    tManualClock m_clock;
    std::mutex m_mutex;
    tRuns m_runs;
    std::deque<tCallAction> m_actions;
    tStatus m_status;
    tDeferredActionQueue m_queue{m_clock, m_status};
};

// Delays end one tick after their length; among the due actions the first
// queued runs first; an action armed again with 0 is due at once.
TEST_F(DeferredActionQueueTest, DueActionsRunByTheirTimeThenInQueueingOrder)
{
    iDeferredAction* pAgain = action("b");
    m_queue.queueAfter(action("a"), 50, m_status);
    m_queue.queueAfter(pAgain, 10, m_status);
    m_queue.queueAfter(action("c"), 20, m_status);
    m_queue.queueAfter(action("d"), 20, m_status);
    m_queue.queue(action("e"), m_status);
    ASSERT_TRUE(m_clock.runFor(15 * kMs));
    m_queue.queue(pAgain, m_status);
    ASSERT_TRUE(m_clock.runFor(100 * kMs));
    EXPECT_EQ(tRuns({{"e", 0},
                     {"b", 11 * kMs},
                     {"b", 15 * kMs},
                     {"c", 21 * kMs},
                     {"d", 21 * kMs},
                     {"a", 51 * kMs}}),
              takeRuns());
    EXPECT_EQ(tManualClock::kNever, m_clock.getNextDeadline()) << "an idle worker sleeps";
    EXPECT_EQ(kStatusSuccess, m_status.getCode());
    // Left waiting for the destructor, which ends the worker before the
    // queue's parts go; the action stays the test's.
    m_queue.queueAfter(action("never"), 1000, m_status);
    ASSERT_TRUE(m_clock.settle());
}

TEST_F(DeferredActionQueueTest, StopEndsTheSleepingWorkerAndDropsWhatWaitsAndWhatComesLater)
{
    m_queue.queueAfter(action("waiting"), 1000, m_status);
    ASSERT_TRUE(m_clock.settle());
    m_queue.stop();
    EXPECT_EQ(0u, m_clock.now()) << "stop waited for the clock";

    // Queueing while stopped is no failure and leaves nothing for a restart.
    m_queue.queue(action("after stop"), m_status);
    EXPECT_EQ(kStatusSuccess, m_status.getCode());
    m_queue.start(m_status);
    ASSERT_TRUE(m_clock.runFor(2000 * kMs));
    EXPECT_TRUE(takeRuns().empty());

    m_queue.queue(action("restarted"), m_status);
    ASSERT_TRUE(m_clock.settle());
    EXPECT_EQ(tRuns({{"restarted", 2000 * kMs}}), takeRuns());
    // A worker in a wait without limit ends at once too.
    m_queue.stop();
    EXPECT_EQ(2000 * kMs, m_clock.now());
}

// Counts its runs against its queueings: each run must answer one queueing.
struct tTrackedAction : iDeferredAction
{
    tTrackedAction(tDeferredActionQueue& a_rQueue, bool a_requeue, std::atomic<int>& a_rFirstRuns,
                   tEvent& a_rAllRan)
        : m_rQueue(a_rQueue), m_requeue(a_requeue), m_rFirstRuns(a_rFirstRuns), m_rAllRan(a_rAllRan)
    {
    }
    // Queues the action unless it is queued already.
    void tryQueue(u32 a_delayMs)
    {
        if (!m_queued.exchange(true))
        {
            ++m_queueings;
            tStatus status;
            m_rQueue.queueAfter(this, a_delayMs, status);
            EXPECT_EQ(kStatusSuccess, status.getCode());
        }
    }
    void execute() override
    {
        m_unqueuedRuns += m_queued.exchange(false) ? 0 : 1;
        if (++m_runs == 1 && --m_rFirstRuns == 0)
        {
            m_rAllRan.signal();
        }
        if (m_requeue)
        {
            tryQueue(1);
        }
    }

    tDeferredActionQueue& m_rQueue;
    const bool m_requeue;
    std::atomic<int>& m_rFirstRuns;
    tEvent& m_rAllRan;
    std::atomic<bool> m_queued{false};
    std::atomic<int> m_queueings{0};
    std::atomic<int> m_runs{0};
    std::atomic<int> m_unqueuedRuns{0};
};

TEST(DeferredActionQueueThreadsTest, PostersWhileTheQueueRunsStopsAndIsDestroyed)
{
    const int kPosters = 4;
    const int kActions = 100;
    tStatus status;
    tEvent allRan(status);
    std::atomic<int> notRunYet{kActions};
    std::unique_ptr<tDeferredActionQueue> pQueue(new tDeferredActionQueue(status));
    pQueue->start(status);
    ASSERT_EQ(kStatusSuccess, status.getCode());

    // Every fourth action queues itself again from its own run.
    std::deque<tTrackedAction> actions;
    for (int i = 0; i < kActions; ++i)
    {
        actions.emplace_back(*pQueue, i % 4 == 0, notRunYet, allRan);
    }
    std::atomic<bool> end{false};
    std::vector<std::thread> posters;
    for (int p = 0; p < kPosters; ++p)
    {
        posters.emplace_back(
            [&, p]
            {
                while (!end)
                {
                    for (int i = p; i < kActions; i += kPosters)
                    {
                        actions[i].tryQueue(static_cast<u32>(i % 3));
                    }
                }
            });
    }
    // Once every action has run, the queue stops while the posters go on.
    tStatus waitStatus;
    EXPECT_TRUE(allRan.wait(20000, waitStatus)) << "a queued action never ran";
    pQueue->stop();
    int runsAtStop = 0;
    for (const tTrackedAction& action : actions)
    {
        runsAtStop += action.m_runs;
    }
    end = true;
    for (std::thread& poster : posters)
    {
        poster.join();
    }
    pQueue.reset();

    int runs = 0;
    for (const tTrackedAction& action : actions)
    {
        EXPECT_EQ(0, action.m_unqueuedRuns.load()) << "an action ran more often than queued";
        EXPECT_LE(action.m_runs.load(), action.m_queueings.load());
        runs += action.m_runs;
    }
    EXPECT_EQ(runsAtStop, runs) << "an action ran after stop returned";
}

} // namespace
