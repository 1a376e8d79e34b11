#include "orvptp/tPTPDispatcher.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace nOrvPTP000;
using nOrvTarn000::tEvent;

namespace
{

const u32 kGenerousMs = 10000;

// Shared record of what happened to the test events, in order.
struct tJournal
{
    void add(const std::string& a_entry)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.push_back(a_entry);
    }
    void clear()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.clear();
    }
    std::vector<std::string> entries()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_entries;
    }
    std::mutex m_mutex;
    std::vector<std::string> m_entries;
};

class tTestEvent : public iPTPEvent
{
public:
    tTestEvent(tJournal& a_rJournal, const std::string& a_name, i32 a_kind = kOtherEvent,
               bool a_allowedWhenStopped = false)
        : m_rJournal(a_rJournal), m_name(a_name), m_kind(a_kind),
          m_allowedWhenStopped(a_allowedWhenStopped)
    {
    }
    ~tTestEvent() override
    {
        m_rJournal.add("delete " + m_name);
        if (m_pDeleted != nullptr)
        {
            m_pDeleted->signal();
        }
    }
    bool allowedWhenStopped() override { return m_allowedWhenStopped; }
    i32 getEventKind() override { return m_kind; }
    void execute(tStatus& a_status) override
    {
        m_rJournal.add("execute " + m_name);
        if (m_failure != 0)
        {
            ORVTARN_SET_CODE(a_status, m_failure);
        }
        if (m_pSignal != nullptr)
        {
            m_pSignal->signal();
        }
        if (m_pGate != nullptr)
        {
            tStatus status;
            m_pGate->wait(kGenerousMs, status);
        }
    }
    void abandon(tStatus&) override { m_rJournal.add("abandon " + m_name); }

    tJournal& m_rJournal;
    std::string m_name;
    i32 m_kind;
    bool m_allowedWhenStopped;
    i32 m_failure = 0;
    tEvent* m_pSignal = nullptr;  // signalled when executed
    tEvent* m_pGate = nullptr;    // execution waits for it
    tEvent* m_pDeleted = nullptr; // signalled when deleted
};

struct DispatcherTest : testing::Test
{
    DispatcherTest() : m_done(m_status), m_entered(m_status), m_gate(m_status) {}

    tTestEvent* event(const std::string& a_name, i32 a_kind = iPTPEvent::kOtherEvent,
                      bool a_allowed = false)
    {
        return new tTestEvent(m_journal, a_name, a_kind, a_allowed);
    }

    // Posts an event that is allowed when stopped and waits until it is gone:
    // every event posted before it has been dealt with by then.
    void drain(tPTPDispatcher& a_rDispatcher)
    {
        tTestEvent* pMarker = event("marker", iPTPEvent::kOtherEvent, true);
        pMarker->m_pDeleted = &m_done;
        tStatus status;
        a_rDispatcher.post(pMarker, status);
        ASSERT_TRUE(status.isNotFatal());
        ASSERT_TRUE(m_done.wait(kGenerousMs, status));
    }

    void start(tPTPDispatcher& a_rDispatcher)
    {
        tStatus status;
        a_rDispatcher.post(event("start", iPTPEvent::kStartEvent, true), status);
        ASSERT_TRUE(status.isNotFatal());
        drain(a_rDispatcher);
    }

    // Holds the dispatcher thread inside one event until m_gate opens, so that
    // everything posted meanwhile arrives as one batch.
    void block(tPTPDispatcher& a_rDispatcher)
    {
        tTestEvent* pBlocker = event("blocker", iPTPEvent::kOtherEvent, true);
        pBlocker->m_pSignal = &m_entered;
        pBlocker->m_pGate = &m_gate;
        tStatus status;
        a_rDispatcher.post(pBlocker, status);
        ASSERT_TRUE(m_entered.wait(kGenerousMs, status));
    }

    tStatus m_status;
    tJournal m_journal;
    tEvent m_done;
    tEvent m_entered;
    tEvent m_gate;
};

std::vector<std::string> without(std::vector<std::string> a_entries, const std::string& a_name)
{
    std::vector<std::string> kept;
    for (const std::string& entry : a_entries)
    {
        if (entry.find(a_name) == std::string::npos)
        {
            kept.push_back(entry);
        }
    }
    return kept;
}

} // namespace

TEST_F(DispatcherTest, RunsEventsInOrderOfArrivalAcrossPosters)
{
    tPTPDispatcher dispatcher(m_status);
    ASSERT_TRUE(m_status.isNotFatal());
    start(dispatcher);

    const int kPerThread = 200;
    std::vector<std::thread> posters;
    for (int t = 0; t < 2; ++t)
    {
        posters.emplace_back(
            [&, t]
            {
                for (int i = 0; i < kPerThread; ++i)
                {
                    tStatus status;
                    dispatcher.post(event(std::to_string(t) + ":" + std::to_string(i)), status);
                    EXPECT_TRUE(status.isNotFatal());
                }
            });
    }
    for (std::thread& poster : posters)
    {
        poster.join();
    }
    drain(dispatcher);

    // Each poster's events run in its own order, each exactly once.
    int next[2] = {0, 0};
    for (const std::string& entry : m_journal.entries())
    {
        if (entry.rfind("execute ", 0) != 0 || entry.find(':') == std::string::npos)
        {
            continue;
        }
        const int t = entry[8] - '0';
        EXPECT_EQ("execute " + std::to_string(t) + ":" + std::to_string(next[t]), entry);
        ++next[t];
    }
    EXPECT_EQ(kPerThread, next[0]);
    EXPECT_EQ(kPerThread, next[1]);
}

TEST_F(DispatcherTest, StoppedDispatcherRefusesAllButStoppableEvents)
{
    tPTPDispatcher dispatcher(m_status);
    tTestEvent* pPacket = event("packet");
    tStatus status;
    dispatcher.post(pPacket, status);
    EXPECT_EQ(nOrvTarn000::kStatusSystemError, status.getCode());
    delete pPacket; // a refused event stays the caller's

    // A get or set event posted before the first start runs at once.
    drain(dispatcher);
    EXPECT_EQ((std::vector<std::string>{"delete packet", "execute marker", "delete marker"}),
              m_journal.entries());

    // postEvent releases a refused event through abandon.
    m_journal.clear();
    tStatus refused;
    EXPECT_FALSE(dispatcher.postEvent(event("late"), refused));
    EXPECT_EQ(nOrvTarn000::kStatusSystemError, refused.getCode());
    EXPECT_EQ((std::vector<std::string>{"abandon late", "delete late"}), m_journal.entries());
}

// A start behind the stop runs, but what stood behind the stop when it ran was
// already abandoned, even behind that start.
TEST_F(DispatcherTest, StopInsideBatchAbandonsWhatFollowsButStoppableEvents)
{
    tPTPDispatcher dispatcher(m_status);
    start(dispatcher);
    block(dispatcher);
    tStatus status;
    for (tTestEvent* pEvent : {event("A"), event("stop", iPTPEvent::kStopEvent, true), event("B"),
                               event("get", iPTPEvent::kOtherEvent, true), event("C"),
                               event("start", iPTPEvent::kStartEvent, true), event("D")})
    {
        dispatcher.post(pEvent, status);
    }
    ASSERT_TRUE(status.isNotFatal());
    m_journal.clear();
    m_gate.signal();
    drain(dispatcher);

    const std::vector<std::string> expected = {
        "delete blocker", "execute A",   "delete A",   "execute stop",  "abandon B",
        "delete B",       "abandon C",   "delete C",   "abandon D",     "delete D",
        "delete stop",    "execute get", "delete get", "execute start", "delete start"};
    EXPECT_EQ(expected, without(m_journal.entries(), "marker"));
}

TEST_F(DispatcherTest, StopThatFailsStillEntersStopped)
{
    tPTPDispatcher dispatcher(m_status);
    start(dispatcher);
    tTestEvent* pStop = event("stop", iPTPEvent::kStopEvent, true);
    pStop->m_failure = nOrvTarn000::kStatusInternalError;
    tStatus status;
    dispatcher.post(pStop, status);
    drain(dispatcher);

    tTestEvent* pLate = event("late");
    dispatcher.post(pLate, status);
    EXPECT_EQ(nOrvTarn000::kStatusSystemError, status.getCode());
    delete pLate;

    // A handler's failure does not stop the dispatcher: later events run.
    tStatus again;
    dispatcher.post(event("start", iPTPEvent::kStartEvent, true), again);
    drain(dispatcher);
    dispatcher.post(event("after"), again);
    EXPECT_TRUE(again.isNotFatal());
    drain(dispatcher);
    const std::vector<std::string> entries = without(m_journal.entries(), "marker");
    EXPECT_EQ("execute after", entries[entries.size() - 2]);
}

TEST_F(DispatcherTest, HandlerMayPostAndItsEventRunsLater)
{
    struct tPostingEvent : tTestEvent
    {
        tPostingEvent(tJournal& a_rJournal, tPTPDispatcher& a_rDispatcher)
            : tTestEvent(a_rJournal, "poster"), m_rDispatcher(a_rDispatcher)
        {
        }
        void execute(tStatus& a_status) override
        {
            tTestEvent::execute(a_status);
            m_rDispatcher.post(new tTestEvent(m_rJournal, "child"), a_status);
            m_rJournal.add(a_status.isFatal() ? "post failed" : "posted");
        }
        tPTPDispatcher& m_rDispatcher;
    };
    tPTPDispatcher dispatcher(m_status);
    start(dispatcher);
    block(dispatcher);
    dispatcher.post(new tPostingEvent(m_journal, dispatcher), m_status);
    dispatcher.post(event("sibling"), m_status);
    m_journal.clear();
    m_gate.signal();
    drain(dispatcher);
    drain(dispatcher);
    const std::vector<std::string> expected = {
        "delete blocker",  "execute poster", "posted",        "delete poster",
        "execute sibling", "delete sibling", "execute child", "delete child"};
    EXPECT_EQ(expected, without(m_journal.entries(), "marker"));
}

TEST_F(DispatcherTest, DestructionDeletesQueuedEventsWithoutRunningOrAbandoning)
{
    tPTPDispatcher* pDispatcher = new tPTPDispatcher(m_status);
    start(*pDispatcher);
    block(*pDispatcher);
    tStatus status;
    pDispatcher->post(event("queued1"), status);
    pDispatcher->post(event("queued2"), status);

    // The destructor waits for the blocked batch; release it once the queue is gone.
    std::thread destroyer([&] { delete pDispatcher; });
    for (int i = 0; i < 10000 && m_journal.entries().back() != "delete queued2"; ++i)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    m_gate.signal();
    destroyer.join();

    const std::vector<std::string> entries = m_journal.entries();
    const std::vector<std::string> tail(entries.end() - 3, entries.end());
    EXPECT_EQ((std::vector<std::string>{"delete queued1", "delete queued2", "delete blocker"}),
              tail);
}

TEST_F(DispatcherTest, PostAfterDestructorBeganIsCancelled)
{
    // Exiting is observable only while the destructor waits for a running batch.
    tPTPDispatcher* pDispatcher = new tPTPDispatcher(m_status);
    start(*pDispatcher);
    std::atomic<i32> code(0);
    struct tLatePoster : tTestEvent
    {
        tLatePoster(tJournal& a_rJournal, tPTPDispatcher& a_rDispatcher, std::atomic<i32>& a_rCode,
                    tEvent& a_rEntered, tEvent& a_rGate)
            : tTestEvent(a_rJournal, "late poster"), m_rDispatcher(a_rDispatcher), m_rCode(a_rCode)
        {
            m_pSignal = &a_rEntered;
            m_pGate = &a_rGate;
        }
        void execute(tStatus& a_status) override
        {
            tTestEvent::execute(a_status);
            tStatus status;
            tTestEvent* pEvent = new tTestEvent(m_rJournal, "refused");
            m_rDispatcher.post(pEvent, status);
            m_rCode = status.getCode();
            delete pEvent;
        }
        tPTPDispatcher& m_rDispatcher;
        std::atomic<i32>& m_rCode;
    };
    tStatus status;
    pDispatcher->post(new tLatePoster(m_journal, *pDispatcher, code, m_entered, m_gate), status);
    ASSERT_TRUE(m_entered.wait(kGenerousMs, status));
    std::thread destroyer([&] { delete pDispatcher; });
    // Probe until the destructor has marked Exiting; probes accepted before that
    // are deleted with the queue.
    i32 probeCode = 0;
    for (int i = 0; i < 10000 && probeCode != nOrvTarn000::kStatusCancelled; ++i)
    {
        tStatus probeStatus;
        tTestEvent* pProbe = event("probe");
        pDispatcher->post(pProbe, probeStatus);
        probeCode = probeStatus.getCode();
        if (probeStatus.isFatal())
        {
            delete pProbe;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(nOrvTarn000::kStatusCancelled, probeCode);
    m_gate.signal();
    destroyer.join();
    EXPECT_EQ(nOrvTarn000::kStatusCancelled, code.load());
}

TEST_F(DispatcherTest, PostEventAndWaitReturnsAfterTheHandlerRan)
{
    tPTPDispatcher dispatcher(m_status);
    start(dispatcher);
    tEvent done(m_status);
    tTestEvent* pEvent = event("get");
    pEvent->m_pSignal = &done;
    tStatus status;
    dispatcher.postEventAndWait(pEvent, &done, status);
    EXPECT_TRUE(status.isNotFatal());
    const std::vector<std::string> afterWait = m_journal.entries();
    EXPECT_NE(afterWait.end(), std::find(afterWait.begin(), afterWait.end(), "execute get"));

    // A refused post reaches the caller's status; the event is released.
    tStatus stopStatus;
    dispatcher.post(event("stop", iPTPEvent::kStopEvent, true), stopStatus);
    drain(dispatcher);
    tStatus refused;
    dispatcher.postEventAndWait(event("packet"), &done, refused);
    EXPECT_EQ(nOrvTarn000::kStatusSystemError, refused.getCode());
    const std::vector<std::string> entries = m_journal.entries();
    EXPECT_EQ((std::vector<std::string>{"abandon packet", "delete packet"}),
              std::vector<std::string>(entries.end() - 2, entries.end()));

    // A caller that already failed keeps its own code; the event is deleted unrun.
    tStatus failed;
    failed.setCode(nOrvTarn000::kStatusTimedOut, "t", "t.cpp", 1);
    dispatcher.postEventAndWait(event("ignored", iPTPEvent::kOtherEvent, true), &done, failed);
    EXPECT_EQ(nOrvTarn000::kStatusTimedOut, failed.getCode());
    EXPECT_EQ("delete ignored", m_journal.entries().back());
}

TEST_F(DispatcherTest, NullEventIsRefused)
{
    tPTPDispatcher dispatcher(m_status);
    tStatus status;
    dispatcher.post(nullptr, status);
    EXPECT_EQ(nOrvTarn000::kStatusMemoryFull, status.getCode());
    drain(dispatcher);
}
