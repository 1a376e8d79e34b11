#include "orvptp/tTimedEventGenerator.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace nOrvPTP000
{
// Starts the id sequence near its wrap.
class tTimedEventGeneratorProbe
{
public:
    static void setNextId(tTimedEventGenerator& a_rTimers, u32 a_id) { a_rTimers.setNextId(a_id); }
};
} // namespace nOrvPTP000

using namespace nOrvPTP000;
using namespace nOrvTarn000;

namespace
{

const int kGenerousMs = 10000;
typedef std::chrono::steady_clock tClock;

// What generators and events did, in order, with the time since the test began.
class tLog
{
public:
    void add(const std::string& a_text)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.push_back({a_text, msSince(m_origin)});
        m_changed.notify_all();
    }
    int count(const std::string& a_text)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        int n = 0;
        for (const tEntry& entry : m_entries)
        {
            n += entry.m_text == a_text;
        }
        return n;
    }
    std::vector<double> times(const std::string& a_text)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<double> result;
        for (const tEntry& entry : m_entries)
        {
            if (entry.m_text == a_text)
            {
                result.push_back(entry.m_ms);
            }
        }
        return result;
    }
    // The entries that begin with a_prefix, in order, without it.
    std::vector<std::string> with(const std::string& a_prefix)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<std::string> result;
        for (const tEntry& entry : m_entries)
        {
            if (entry.m_text.rfind(a_prefix, 0) == 0)
            {
                result.push_back(entry.m_text.substr(a_prefix.size()));
            }
        }
        return result;
    }
    bool waitFor(const std::function<bool()>& a_done, int a_ms = kGenerousMs)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::milliseconds(a_ms),
                                  [&]
                                  {
                                      lock.unlock();
                                      const bool done = a_done();
                                      lock.lock();
                                      return done;
                                  });
    }
    bool waitFor(const std::string& a_text, int a_n = 1, int a_ms = kGenerousMs)
    {
        return waitFor([&] { return count(a_text) >= a_n; }, a_ms);
    }
    double now() { return msSince(m_origin); }

    std::atomic<int> m_eventsMade{0};
    std::atomic<int> m_eventsFreed{0};

private:
    struct tEntry
    {
        std::string m_text;
        double m_ms;
    };
    static double msSince(tClock::time_point a_origin)
    {
        return std::chrono::duration<double, std::milli>(tClock::now() - a_origin).count();
    }
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<tEntry> m_entries;
    const tClock::time_point m_origin = tClock::now();
};

// Logs "run <name>" or "abandon <name>"; counts its life in the log.
class tTestEvent : public iPTPEvent
{
public:
    tTestEvent(tLog& a_rLog, const std::string& a_name) : m_rLog(a_rLog), m_name(a_name)
    {
        ++m_rLog.m_eventsMade;
    }
    ~tTestEvent() override { ++m_rLog.m_eventsFreed; }
    void execute(tStatus&) override { m_rLog.add("run " + m_name); }
    void abandon(tStatus&) override { m_rLog.add("abandon " + m_name); }

private:
    tLog& m_rLog;
    std::string m_name;
};

// Runs a function on the dispatcher thread.
class tActionEvent : public iPTPEvent
{
public:
    tActionEvent(std::function<void()> a_action, i32 a_kind = kOtherEvent)
        : m_action(a_action), m_kind(a_kind)
    {
    }
    bool allowedWhenStopped() override { return m_kind == kStartEvent; }
    i32 getEventKind() override { return m_kind; }
    void execute(tStatus&) override { m_action(); }

private:
    std::function<void()> m_action;
    i32 m_kind;
};

enum tMode
{
    kMake,
    kFail,
    kNothing,
    kFailWithEvent
};

// Logs "gen <name>" at each expiry and "free <name>" when deleted. Goes
// through a_modes in a cycle; may hold the timer thread for a while.
class tTestGenerator : public iPTPEventGenerator
{
public:
    tTestGenerator(tLog& a_rLog, const std::string& a_name, std::vector<tMode> a_modes = {kMake},
                   int a_holdMs = 0)
        : m_rLog(a_rLog), m_name(a_name), m_modes(a_modes), m_holdMs(a_holdMs)
    {
    }
    ~tTestGenerator() override
    {
        m_rLog.add("free " + m_name);
        if (m_onDelete)
        {
            m_onDelete();
        }
    }
    void generateEvent(iPTPEvent** a_ppEvent, tStatus& a_status) override
    {
        m_rLog.add("gen " + m_name);
        std::this_thread::sleep_for(std::chrono::milliseconds(m_holdMs));
        const tMode mode = m_modes[m_turn++ % m_modes.size()];
        if (mode == kMake || mode == kFailWithEvent)
        {
            *a_ppEvent = new tTestEvent(m_rLog, m_name);
        }
        if (mode == kFail || mode == kFailWithEvent)
        {
            ORVTARN_SET_CODE(a_status, kStatusInternalError);
        }
    }
    std::function<void()> m_onDelete;

private:
    tLog& m_rLog;
    std::string m_name;
    std::vector<tMode> m_modes;
    int m_holdMs;
    size_t m_turn = 0;
};

struct TimedEventGeneratorTest : testing::Test
{
    TimedEventGeneratorTest() : m_dispatcher(m_status)
    {
        tStatus status;
        tEvent started(status);
        m_dispatcher.postEventAndWait(
            new tActionEvent([&] { started.signal(); }, iPTPEvent::kStartEvent), &started, status);
        EXPECT_TRUE(status.isNotFatal());
    }

    tTestGenerator* gen(const std::string& a_name, std::vector<tMode> a_modes = {kMake},
                        int a_holdMs = 0)
    {
        return new tTestGenerator(m_log, a_name, a_modes, a_holdMs);
    }

    void postAction(std::function<void()> a_action)
    {
        tStatus status;
        m_dispatcher.post(new tActionEvent(a_action), status);
        ASSERT_TRUE(status.isNotFatal());
    }

    // Declared first: it outlives the dispatcher, whose queued events log.
    tLog m_log;
    tStatus m_status;
    tPTPDispatcher m_dispatcher;
};

} // namespace

// --- Order and time of expiry ----------------------------------------------

TEST_F(TimedEventGeneratorTest, DelayZeroFiresAfterRecordsAlreadyDue)
{
    tTimedEventGenerator timers(&m_dispatcher, m_status);
    timers.addOneShot(gen("A"), 20, m_status);
    timers.addOneShot(gen("B"), 20, m_status);
    // Holds the timer thread until A and B are past due.
    timers.addOneShot(gen("hold", {kMake}, 60), 0, m_status);
    ASSERT_TRUE(m_log.waitFor("gen hold"));
    std::thread adder(
        [&]
        {
            tStatus status;
            EXPECT_NE(0u, timers.addOneShot(gen("Z"), 0, status));
        });
    adder.join();
    ASSERT_TRUE(m_log.waitFor("run Z"));
    EXPECT_EQ((std::vector<std::string>{"hold", "A", "B", "Z"}), m_log.with("run "));
    EXPECT_TRUE(m_status.isNotFatal());
}

TEST_F(TimedEventGeneratorTest, EqualExpiriesFireInOrderOfArming)
{
    tTimedEventGenerator timers(&m_dispatcher, m_status);
    for (const char* name : {"A", "B", "C", "D", "E"})
    {
        timers.addOneShot(gen(name), name[0] == 'B' || name[0] == 'E' ? 10 : 30, m_status);
    }
    ASSERT_TRUE(m_log.waitFor("run D"));
    EXPECT_EQ((std::vector<std::string>{"B", "E", "A", "C", "D"}), m_log.with("run "));
}

TEST_F(TimedEventGeneratorTest, RemovedTimerNeverFiresAndFollowersKeepTheirTime)
{
    tTimedEventGenerator timers(&m_dispatcher, m_status);
    const double armed = m_log.now();
    const u32 idA = timers.addOneShot(gen("A"), 40, m_status);
    timers.addOneShot(gen("B"), 80, m_status);
    const u32 idC = timers.addOneShot(gen("C"), 120, m_status);
    timers.addOneShot(gen("D"), 160, m_status);
    timers.remove(idA, m_status);
    EXPECT_EQ(1, m_log.count("free A")); // the generator goes with the timer
    ASSERT_TRUE(m_log.waitFor("run B"));
    timers.remove(idC, m_status);
    ASSERT_TRUE(m_log.waitFor("run D"));
    EXPECT_TRUE(m_status.isNotFatal());

    EXPECT_EQ((std::vector<std::string>{"B", "D"}), m_log.with("gen "));
    EXPECT_GE(m_log.times("gen B")[0] - armed, 80.0);
    EXPECT_GE(m_log.times("gen D")[0] - armed, 160.0);
}

TEST_F(TimedEventGeneratorTest, PeriodZeroFiresOnceThenTheIdIsUnknown)
{
    tTimedEventGenerator timers(&m_dispatcher, m_status);
    const u32 id = timers.add(gen("once"), 5, 0, m_status);
    const u32 clockId = timers.add(gen("clock"), 0, 5, m_status);
    ASSERT_TRUE(m_log.waitFor("gen clock", 10));
    EXPECT_EQ(1, m_log.count("gen once"));
    EXPECT_EQ(1, m_log.count("free once"));

    for (u32 unknown : {id, 0u, 12345u})
    {
        tStatus status;
        timers.remove(unknown, status);
        EXPECT_EQ(kStatusInvalidState, status.getCode()) << unknown;
    }
    timers.remove(clockId, m_status);
    EXPECT_TRUE(m_status.isNotFatal());
}

TEST_F(TimedEventGeneratorTest, PeriodicTimerIsReArmedFromEachFiringUntilRemoved)
{
    tTimedEventGenerator timers(&m_dispatcher, m_status);
    const u32 id = timers.add(gen("P"), 0, 5, m_status);
    ASSERT_TRUE(m_log.waitFor("run P", 20));
    timers.remove(id, m_status);
    EXPECT_TRUE(m_status.isNotFatal());
    EXPECT_EQ(1, m_log.count("free P"));
    const std::vector<double> fired = m_log.times("gen P");
    // Whole milliseconds are counted from each firing: never early. The 1 ms
    // allows for the moment of logging within a turn.
    EXPECT_GE(fired.back() - fired.front(), 5.0 * (fired.size() - 1) - 1.0);

    timers.addOneShot(gen("later"), 20, m_status);
    ASSERT_TRUE(m_log.waitFor("run later"));
    EXPECT_EQ(fired.size(), m_log.times("gen P").size());
}

// --- Ids -------------------------------------------------------------------

TEST_F(TimedEventGeneratorTest, IdsWrapToOneAndAreNeverZero)
{
    tTimedEventGenerator timers(&m_dispatcher, m_status);
    tTimedEventGeneratorProbe::setNextId(timers, 0x7FFFFFFEu);
    std::vector<u32> ids;
    for (int i = 0; i < 3; ++i)
    {
        ids.push_back(timers.addOneShot(gen("t" + std::to_string(i)), 10000, m_status));
    }
    EXPECT_EQ((std::vector<u32>{0x7FFFFFFEu, 0x7FFFFFFFu, 1u}), ids);

    // A refused arming gives 0, consumes no id and frees the generator.
    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusInternalError);
    EXPECT_EQ(0u, timers.addOneShot(gen("refused"), 0, failed));
    EXPECT_EQ(1, m_log.count("free refused"));
    EXPECT_EQ(2u, timers.addOneShot(gen("next"), 10000, m_status));

    timers.remove(0x7FFFFFFFu, m_status);
    timers.remove(1u, m_status);
    EXPECT_TRUE(m_status.isNotFatal());
}

// --- Arming from a handler -------------------------------------------------

TEST_F(TimedEventGeneratorTest, AddFromHandlerWakesTheIdleThread)
{
    tTimedEventGenerator timers(&m_dispatcher, m_status);
    // The empty list lets the thread sleep 10 s; only the wake brings this sooner.
    postAction(
        [&]
        {
            m_log.add("armed");
            tStatus status;
            timers.addOneShot(gen("M"), 10, status);
        });
    ASSERT_TRUE(m_log.waitFor("run M", 1, 5000));
    EXPECT_GE(m_log.times("gen M")[0] - m_log.times("armed")[0], 10.0);
}

TEST_F(TimedEventGeneratorTest, AddFromHandlerBringsTheHeadUpToDate)
{
    tTimedEventGenerator timers(&m_dispatcher, m_status);
    const double armed = m_log.now();
    timers.addOneShot(gen("L"), 300, m_status);
    // Lets time pass: L's delta must lose it before M is placed behind L.
    while (m_log.now() - armed < 150)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    postAction(
        [&]
        {
            tStatus status;
            timers.addOneShot(gen("M"), 200, status);
        });
    ASSERT_TRUE(m_log.waitFor("run M"));
    EXPECT_EQ((std::vector<std::string>{"L", "M"}), m_log.with("run "));
}

// --- Failures and lost expiries ----------------------------------------------

TEST_F(TimedEventGeneratorTest, FailedGenerationLosesOnlyThatExpiry)
{
    tTimedEventGenerator timers(&m_dispatcher, m_status);
    const u32 id = timers.add(gen("G", {kFail, kNothing, kFailWithEvent, kMake}), 0, 2, m_status);
    ASSERT_TRUE(m_log.waitFor("run G", 3));
    timers.remove(id, m_status);
    EXPECT_TRUE(m_status.isNotFatal());

    const int generated = m_log.count("gen G");
    EXPECT_EQ((generated + 1) / 4, m_log.count("abandon G")); // the third of each four
    ASSERT_TRUE(m_log.waitFor("run G", generated / 4));
    EXPECT_EQ(generated / 4, m_log.count("run G"));
}

TEST_F(TimedEventGeneratorTest, RefusedPostAbandonsTheEventAndTheTimerGoesOn)
{
    tPTPDispatcher stopped(m_status);
    tTimedEventGenerator timers(&stopped, m_status);
    const u32 id = timers.add(gen("G"), 0, 2, m_status);
    ASSERT_TRUE(m_log.waitFor("gen G", 5));
    timers.remove(id, m_status);
    EXPECT_TRUE(m_status.isNotFatal());
    EXPECT_EQ(m_log.count("gen G"), m_log.count("abandon G"));
    EXPECT_EQ(m_log.m_eventsMade.load(), m_log.m_eventsFreed.load());
    EXPECT_EQ(0, m_log.count("run G"));
}

TEST_F(TimedEventGeneratorTest, WithoutItsThreadEveryCallFails)
{
    tStatus status;
    tTimedEventGenerator timers(nullptr, status);
    EXPECT_EQ(kStatusInvalidArgument, status.getCode());

    tStatus addStatus, removeStatus, clearStatus;
    EXPECT_EQ(0u, timers.addOneShot(gen("G"), 0, addStatus));
    EXPECT_EQ(kStatusSystemError, addStatus.getCode());
    EXPECT_EQ(1, m_log.count("free G"));
    timers.remove(1, removeStatus);
    EXPECT_EQ(kStatusSystemError, removeStatus.getCode());
    timers.clear(clearStatus);
    EXPECT_EQ(kStatusSystemError, clearStatus.getCode());
}

// --- Emptying and destruction ------------------------------------------------

TEST_F(TimedEventGeneratorTest, ClearDisarmsEverything)
{
    tTimedEventGenerator timers(&m_dispatcher, m_status);
    const u32 id = timers.add(gen("P"), 0, 2, m_status);
    timers.addOneShot(gen("A"), 100000, m_status);
    ASSERT_TRUE(m_log.waitFor("gen P", 3));
    timers.clear(m_status);
    EXPECT_EQ((std::vector<std::string>{"P", "A"}), m_log.with("free "));
    const int generated = m_log.count("gen P");

    timers.addOneShot(gen("later"), 60, m_status);
    ASSERT_TRUE(m_log.waitFor("run later"));
    EXPECT_EQ(generated, m_log.count("gen P"));
    EXPECT_EQ(0, m_log.count("gen A"));
    tStatus status;
    timers.remove(id, status);
    EXPECT_EQ(kStatusInvalidState, status.getCode());
}

TEST_F(TimedEventGeneratorTest, DestructionWithTimersArmedAndEventsQueuedFreesAll)
{
    std::atomic<u32> lateId(99);
    std::atomic<i32> lateCode(1);
    {
        // Declared first: the dispatcher thread may still be leaving gate.wait.
        tEvent started(m_status), entered(m_status), gate(m_status);
        tPTPDispatcher dispatcher(m_status);
        dispatcher.postEventAndWait(
            new tActionEvent([&] { started.signal(); }, iPTPEvent::kStartEvent), &started,
            m_status);
        // Keeps the dispatcher busy, so that expiries pile up in its queue.
        dispatcher.post(new tActionEvent(
                            [&]
                            {
                                entered.signal();
                                tStatus status;
                                gate.wait(kGenerousMs, status);
                            }),
                        m_status);
        ASSERT_TRUE(entered.wait(kGenerousMs, m_status));

        tTimedEventGenerator* pTimers = new tTimedEventGenerator(&dispatcher, m_status);
        for (const char* name : {"P1", "P2", "P3"})
        {
            pTimers->add(gen(name), 0, 1, m_status);
        }
        pTimers->addOneShot(gen("far1"), 100000, m_status);
        tTestGenerator* pReentrant = gen("far2");
        // Arming while being destroyed gives 0 without a failure.
        pReentrant->m_onDelete = [&]
        {
            tStatus status;
            lateId = pTimers->addOneShot(gen("late"), 0, status);
            lateCode = status.getCode();
        };
        pTimers->addOneShot(pReentrant, 100000, m_status);
        ASSERT_TRUE(m_log.waitFor("gen P3", 5));
        delete pTimers;

        EXPECT_EQ(6, static_cast<int>(m_log.with("free ").size()));
        EXPECT_EQ(0u, lateId.load());
        EXPECT_EQ(0, lateCode.load());
        EXPECT_TRUE(m_status.isNotFatal());
        gate.signal();
    }
    // The dispatcher freed what it still held.
    EXPECT_EQ(m_log.m_eventsMade.load(), m_log.m_eventsFreed.load());
    EXPECT_GT(m_log.m_eventsMade.load(), 0);
}
