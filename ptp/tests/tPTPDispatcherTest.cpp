#include "orvptp/tPTPDispatcher.h"
#include "tTestEvents.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

using namespace nOrvPTP000;
using namespace nTestEvents;
using nOrvTarn000::tClockedEvent;
using nOrvTarn000::tEvent;

namespace
{

struct DispatcherTest : testing::Test
{
    DispatcherTest()
        : m_journal(m_clock), m_gate(m_clock, true, m_status), m_dispatcher(m_clock, m_status)
    {
    }

    std::unique_ptr<tTestEvent> event(const std::string& a_name,
                                      i32 a_kind = iPTPEvent::kOtherEvent, bool a_allowed = false,
                                      tTestEvent::tAction a_action = nullptr)
    {
        return std::unique_ptr<tTestEvent>(
            new tTestEvent(m_journal, a_name, a_kind, a_allowed, a_action));
    }
    std::unique_ptr<tTestEvent> stoppable(const std::string& a_name,
                                          tTestEvent::tAction a_action = nullptr)
    {
        return event(a_name, iPTPEvent::kOtherEvent, true, a_action);
    }
    // Posts and returns the code.
    i32 post(std::unique_ptr<tTestEvent> a_pEvent, tPTPDispatcher* a_pDispatcher = nullptr)
    {
        tStatus postStatus;
        std::unique_ptr<iPTPEvent> pEvent(std::move(a_pEvent));
        (a_pDispatcher != nullptr ? *a_pDispatcher : m_dispatcher).post(pEvent, postStatus);
        return postStatus.getCode();
    }
    void start()
    {
        ASSERT_EQ(0, post(event("start", iPTPEvent::kStartEvent, true)));
        ASSERT_TRUE(m_clock.settle());
        m_journal.take();
    }
    // An event that holds its dispatcher until m_gate opens, so that what is
    // posted meanwhile arrives as one batch; then it posts a child to a_pPostTo.
    std::unique_ptr<tTestEvent> blocker(tPTPDispatcher* a_pPostTo)
    {
        return stoppable("blocker",
                         [this, a_pPostTo](tStatus&)
                         {
                             tStatus gateStatus;
                             m_gate.wait(tEvent::kInfinite, gateStatus);
                             if (a_pPostTo != nullptr)
                             {
                                 const i32 code = post(event("child"), a_pPostTo);
                                 m_journal.add("posted " + std::to_string(code));
                             }
                         });
    }
    void block(tPTPDispatcher* a_pPostTo = nullptr)
    {
        ASSERT_EQ(0, post(blocker(a_pPostTo)));
        ASSERT_TRUE(m_clock.settle());
    }
    void release()
    {
        m_gate.signal();
        ASSERT_TRUE(m_clock.settle());
    }

    tManualClock m_clock;
    tStatus m_status;
    tJournal m_journal;
    tClockedEvent m_gate;
    tPTPDispatcher m_dispatcher;
};

tTestEvent::tAction failWith(i32 a_code)
{
    return [a_code](tStatus& a_status) { ORVTARN_SET_CODE(a_status, a_code); };
}

} // namespace

TEST_F(DispatcherTest, RunsEventsOfConcurrentPostersEachOnceInTheirOrder)
{
    start();
    const int kPerThread = 200;
    std::vector<std::thread> posters;
    for (int t = 0; t < 2; ++t)
    {
        posters.emplace_back(
            [&, t]
            {
                for (int i = 0; i < kPerThread; ++i)
                {
                    EXPECT_EQ(0, post(event(std::to_string(t) + ":" + std::to_string(i))));
                }
            });
    }
    for (std::thread& poster : posters)
    {
        poster.join();
    }
    ASSERT_TRUE(m_clock.settle());
    int next[2] = {0, 0};
    for (const std::string& entry : m_journal.take())
    {
        if (entry.rfind("execute ", 0) == 0)
        {
            const int t = entry[8] - '0';
            EXPECT_EQ("execute " + std::to_string(t) + ":" + std::to_string(next[t]++), entry);
        }
    }
    EXPECT_EQ(kPerThread, next[0]);
    EXPECT_EQ(kPerThread, next[1]);
}

TEST_F(DispatcherTest, StoppedDispatcherTakesOnlyStoppableEvents)
{
    // A refused event stays the caller's; a get or set event runs before any start.
    EXPECT_EQ(nOrvTarn000::kStatusSystemError, post(event("packet")));
    EXPECT_EQ(0, post(stoppable("get")));
    ASSERT_TRUE(m_clock.settle());
    EXPECT_EQ((tEntries{"delete packet", "execute get", "delete get"}), m_journal.take());

    // postEvent releases a refused event through abandon.
    tStatus refused;
    EXPECT_FALSE(m_dispatcher.postEvent(event("late"), refused));
    EXPECT_EQ(nOrvTarn000::kStatusSystemError, refused.getCode());
    EXPECT_EQ((tEntries{"abandon late", "delete late"}), m_journal.take());

    tStatus nullStatus;
    std::unique_ptr<iPTPEvent> pNull;
    m_dispatcher.post(pNull, nullStatus);
    EXPECT_EQ(nOrvTarn000::kStatusMemoryFull, nullStatus.getCode());
}

// A start behind the stop runs, but what stood behind the stop when it ran was
// already abandoned, even behind that start.
TEST_F(DispatcherTest, StopInsideBatchAbandonsWhatFollowsButStoppableEvents)
{
    start();
    block();
    post(event("A"));
    post(event("stop", iPTPEvent::kStopEvent, true));
    post(event("B"));
    post(stoppable("get"));
    post(event("C"));
    post(event("start", iPTPEvent::kStartEvent, true));
    post(event("D"));
    m_journal.take();
    release();
    EXPECT_EQ((tEntries{"delete blocker", "execute A", "delete A", "execute stop", "abandon B",
                        "delete B", "abandon C", "delete C", "abandon D", "delete D", "delete stop",
                        "execute get", "delete get", "execute start", "delete start"}),
              m_journal.take());
}

TEST_F(DispatcherTest, FailuresOfHandlersEndWithTheirEvent)
{
    start();
    post(event("stop", iPTPEvent::kStopEvent, true, failWith(nOrvTarn000::kStatusInternalError)));
    ASSERT_TRUE(m_clock.settle());
    // A failed stop still enters Stopped.
    EXPECT_EQ(nOrvTarn000::kStatusSystemError, post(event("late")));

    post(stoppable("failing", failWith(nOrvTarn000::kStatusInternalError)));
    post(event("start", iPTPEvent::kStartEvent, true));
    ASSERT_TRUE(m_clock.settle());
    post(event("after"));
    ASSERT_TRUE(m_clock.settle());
    const tEntries entries = m_journal.take();
    EXPECT_EQ("execute after", entries[entries.size() - 2]);
}

TEST_F(DispatcherTest, EventPostedByAHandlerRunsInTheNextBatch)
{
    start();
    block(&m_dispatcher);
    post(event("sibling"));
    m_journal.take();
    release();
    EXPECT_EQ((tEntries{"posted 0", "delete blocker", "execute sibling", "delete sibling",
                        "execute child", "delete child"}),
              m_journal.take());
}

TEST_F(DispatcherTest, DestructionDeletesQueuedEventsUnrunAndRefusesLatePosts)
{
    std::unique_ptr<tPTPDispatcher> pDispatcher(new tPTPDispatcher(m_clock, m_status));
    ASSERT_EQ(0, post(blocker(pDispatcher.get()), pDispatcher.get()));
    ASSERT_TRUE(m_clock.settle());
    for (const char* name : {"queued1", "queued2"})
    {
        ASSERT_EQ(0, post(stoppable(name), pDispatcher.get()));
    }

    // The destructor empties the queue, then waits for the batch in progress,
    // whose post comes too late.
    std::thread destroyer([&] { pDispatcher.reset(); });
    ASSERT_TRUE(m_journal.waitFor("delete queued2"));
    m_gate.signal();
    destroyer.join();
    const std::string cancelled = "posted " + std::to_string(nOrvTarn000::kStatusCancelled);
    EXPECT_EQ((tEntries{"execute blocker", "delete queued1", "delete queued2", "delete child",
                        cancelled, "delete blocker"}),
              m_journal.take());
}

TEST_F(DispatcherTest, PostEventAndWaitReturnsAfterTheHandlerRan)
{
    start();
    tEvent done(m_status);
    tStatus waitStatus;
    m_dispatcher.postEventAndWait(
        event("get", iPTPEvent::kOtherEvent, false, [&done](tStatus&) { done.signal(); }), &done,
        waitStatus);
    EXPECT_TRUE(waitStatus.isNotFatal());
    EXPECT_EQ("execute get", m_journal.take().front());

    // A refused post reaches the caller's status; the event is released.
    post(event("stop", iPTPEvent::kStopEvent, true));
    ASSERT_TRUE(m_clock.settle());
    m_journal.take();
    tStatus refused;
    m_dispatcher.postEventAndWait(event("packet"), &done, refused);
    EXPECT_EQ(nOrvTarn000::kStatusSystemError, refused.getCode());
    EXPECT_EQ((tEntries{"abandon packet", "delete packet"}), m_journal.take());

    // A caller that already failed keeps its own code; the event is deleted unrun.
    tStatus failed;
    failed.setCode(nOrvTarn000::kStatusTimedOut, "t", "t.cpp", 1);
    m_dispatcher.postEventAndWait(stoppable("ignored"), &done, failed);
    EXPECT_EQ(nOrvTarn000::kStatusTimedOut, failed.getCode());
    EXPECT_EQ((tEntries{"delete ignored"}), m_journal.take());
}
