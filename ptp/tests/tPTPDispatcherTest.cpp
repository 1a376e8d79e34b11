#include "orvptp/tPTPDispatcher.h"
#include "tManualClock.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace nOrvPTP000;
using nOrvTarn000::tClockedEvent;
using nOrvTarn000::tEvent;
using nOrvTarn000::tManualClock;
using tEntries = std::vector<std::string>;

namespace
{

// What happened to the test events, in order.
class tJournal
{
public:
    void add(const std::string& a_entry)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.push_back(a_entry);
        m_changed.notify_all();
    }
    tEntries take()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        tEntries entries;
        entries.swap(m_entries);
        return entries;
    }
    // For what a thread outside the clock's view does.
    bool waitFor(const std::string& a_entry)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(10),
                                  [&]
                                  {
                                      for (const std::string& entry : m_entries)
                                      {
                                          if (entry == a_entry)
                                          {
                                              return true;
                                          }
                                      }
                                      return false;
                                  });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    tEntries m_entries;
};

class tTestEvent : public iPTPEvent
{
public:
    tTestEvent(tJournal& a_rJournal, const std::string& a_name, i32 a_kind, bool a_allowed)
        : m_rJournal(a_rJournal), m_name(a_name), m_kind(a_kind), m_allowed(a_allowed)
    {
    }
    ~tTestEvent() override { m_rJournal.add("delete " + m_name); }
    bool allowedWhenStopped() override { return m_allowed; }
    i32 getEventKind() override { return m_kind; }
    void execute(tStatus& a_status) override
    {
        m_rJournal.add("execute " + m_name);
        if (m_failure != 0)
        {
            ORVTARN_SET_CODE(a_status, m_failure);
        }
        if (m_pDone != nullptr)
        {
            m_pDone->signal();
        }
        if (m_pGate != nullptr)
        {
            tStatus gateStatus;
            m_pGate->wait(tEvent::kInfinite, gateStatus);
        }
        if (m_pPostTo != nullptr)
        {
            tStatus postStatus;
            std::unique_ptr<iPTPEvent> pChild(
                new tTestEvent(m_rJournal, "child", kOtherEvent, false));
            m_pPostTo->post(pChild, postStatus);
            m_rJournal.add("posted " + std::to_string(postStatus.getCode()));
        }
    }
    void abandon(tStatus&) override { m_rJournal.add("abandon " + m_name); }

    tJournal& m_rJournal;
    std::string m_name;
    i32 m_kind;
    bool m_allowed;
    i32 m_failure = 0;
    tEvent* m_pDone = nullptr;           // signalled when executed
    tClockedEvent* m_pGate = nullptr;    // execution waits for it
    tPTPDispatcher* m_pPostTo = nullptr; // posts a child after the gate
};

struct DispatcherTest : testing::Test
{
    DispatcherTest() : m_gate(m_clock, true, m_status), m_dispatcher(m_clock, m_status) {}

    std::unique_ptr<tTestEvent> event(const std::string& a_name,
                                      i32 a_kind = iPTPEvent::kOtherEvent, bool a_allowed = false)
    {
        return std::unique_ptr<tTestEvent>(new tTestEvent(m_journal, a_name, a_kind, a_allowed));
    }
    std::unique_ptr<tTestEvent> stoppable(const std::string& a_name)
    {
        return event(a_name, iPTPEvent::kOtherEvent, true);
    }
    // Posts and returns the code.
    i32 post(std::unique_ptr<tTestEvent> a_pEvent)
    {
        tStatus postStatus;
        std::unique_ptr<iPTPEvent> pEvent(std::move(a_pEvent));
        m_dispatcher.post(pEvent, postStatus);
        return postStatus.getCode();
    }
    void start()
    {
        ASSERT_EQ(0, post(event("start", iPTPEvent::kStartEvent, true)));
        ASSERT_TRUE(m_clock.settle());
        m_journal.take();
    }
    // Holds the dispatcher inside one event until m_gate opens, so that what
    // is posted meanwhile arrives as one batch.
    void block(tPTPDispatcher* a_pPostTo = nullptr)
    {
        std::unique_ptr<tTestEvent> pBlocker = stoppable("blocker");
        pBlocker->m_pGate = &m_gate;
        pBlocker->m_pPostTo = a_pPostTo;
        ASSERT_EQ(0, post(std::move(pBlocker)));
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
    std::unique_ptr<tTestEvent> pStop = event("stop", iPTPEvent::kStopEvent, true);
    pStop->m_failure = nOrvTarn000::kStatusInternalError;
    post(std::move(pStop));
    ASSERT_TRUE(m_clock.settle());
    // A failed stop still enters Stopped.
    EXPECT_EQ(nOrvTarn000::kStatusSystemError, post(event("late")));

    std::unique_ptr<tTestEvent> pFailing = stoppable("failing");
    pFailing->m_failure = nOrvTarn000::kStatusInternalError;
    post(std::move(pFailing));
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
    std::unique_ptr<tTestEvent> pBlocker = stoppable("blocker");
    pBlocker->m_pGate = &m_gate;
    pBlocker->m_pPostTo = pDispatcher.get();
    std::unique_ptr<iPTPEvent> pEvent(std::move(pBlocker));
    pDispatcher->post(pEvent, m_status);
    ASSERT_TRUE(m_clock.settle());
    for (const char* name : {"queued1", "queued2"})
    {
        std::unique_ptr<iPTPEvent> pQueued(stoppable(name));
        pDispatcher->post(pQueued, m_status);
    }
    ASSERT_TRUE(m_status.isNotFatal());

    // The destructor empties the queue, then waits for the batch in progress,
    // whose post comes too late.
    std::thread destroyer([&] { pDispatcher.reset(); });
    ASSERT_TRUE(m_journal.waitFor("delete queued2"));
    m_gate.signal();
    destroyer.join();
    const std::string cancelled = "posted " + std::to_string(nOrvTarn000::kStatusCancelled);
    EXPECT_EQ((tEntries{"execute blocker", "delete queued1", "delete queued2", cancelled,
                        "delete child", "delete blocker"}),
              m_journal.take());
}

TEST_F(DispatcherTest, PostEventAndWaitReturnsAfterTheHandlerRan)
{
    start();
    tEvent done(m_status);
    std::unique_ptr<tTestEvent> pGet = event("get");
    pGet->m_pDone = &done;
    tStatus waitStatus;
    m_dispatcher.postEventAndWait(std::move(pGet), &done, waitStatus);
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
