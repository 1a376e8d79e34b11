#include "orvptp/tTimedEventGenerator.h"
#include "tTestEvents.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
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
using namespace nTestEvents;

namespace
{

const u64 kMs = tManualClock::kMillisecond;

enum tMode
{
    kMake,
    kFail,
    kNothing,
    kFailWithEvent
};

// Logs "gen <name>" at each expiry and "free <name>" when deleted. Goes
// through its modes in a cycle; may hold the timer thread at a gate.
class tTestGenerator : public iPTPEventGenerator
{
public:
    tTestGenerator(tJournal& a_rLog, const std::string& a_name, std::vector<tMode> a_modes)
        : m_rLog(a_rLog), m_name(a_name), m_modes(a_modes)
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
    std::unique_ptr<iPTPEvent> generateEvent(tStatus& a_status) override
    {
        m_rLog.add("gen " + m_name);
        if (m_pGate != nullptr)
        {
            tStatus gateStatus;
            m_pGate->wait(tEvent::kInfinite, gateStatus);
        }
        const tMode mode = m_modes[m_turn++ % m_modes.size()];
        std::unique_ptr<iPTPEvent> pEvent;
        if (mode == kMake || mode == kFailWithEvent)
        {
            pEvent.reset(new tTestEvent(m_rLog, m_name));
        }
        if (mode == kFail || mode == kFailWithEvent)
        {
            ORVTARN_SET_CODE(a_status, kStatusInternalError);
        }
        return pEvent;
    }
    std::function<void()> m_onDelete;
    tClockedEvent* m_pGate = nullptr;

private:
    tJournal& m_rLog;
    std::string m_name;
    std::vector<tMode> m_modes;
    size_t m_turn = 0;
};

struct TimedEventGeneratorTest : testing::Test
{
    TimedEventGeneratorTest()
        : m_log(m_clock), m_dispatcher(m_clock, m_status),
          m_timers(&m_dispatcher, m_clock, m_status)
    {
        post(m_dispatcher, "start");
        EXPECT_TRUE(m_clock.settle());
        // The start is done with: the log begins after it.
        m_log.take();
        m_log.m_eventsMade = 0;
    }

    std::unique_ptr<tTestGenerator> gen(const std::string& a_name,
                                        std::vector<tMode> a_modes = {kMake})
    {
        return std::unique_ptr<tTestGenerator>(new tTestGenerator(m_log, a_name, a_modes));
    }
    void post(tPTPDispatcher& a_rDispatcher, const std::string& a_name,
              tTestEvent::tAction a_action = nullptr)
    {
        const bool start = a_name == "start";
        std::unique_ptr<iPTPEvent> pEvent(
            new tTestEvent(m_log, a_name, start ? iPTPEvent::kStartEvent : iPTPEvent::kOtherEvent,
                           start, a_action));
        tStatus postStatus;
        a_rDispatcher.post(pEvent, postStatus);
        EXPECT_TRUE(postStatus.isNotFatal());
    }
    void runFor(u64 a_ms) { ASSERT_TRUE(m_clock.runFor(a_ms * kMs)); }

    tManualClock m_clock;
    tStatus m_status;
    // Before the dispatcher: it outlives the events that log.
    tJournal m_log;
    tPTPDispatcher m_dispatcher;
    tTimedEventGenerator m_timers;
};

} // namespace

// --- Order and time of expiry ----------------------------------------------

TEST_F(TimedEventGeneratorTest, ExpiriesComeAtTheirTimeAndEqualOnesInOrderOfArming)
{
    for (const char* name : {"A", "B", "C", "D", "E"})
    {
        m_timers.addOneShot(gen(name), name[0] == 'B' || name[0] == 'E' ? 10 : 30, m_status);
    }
    runFor(40);
    EXPECT_EQ((tEntries{"B", "E", "A", "C", "D"}), m_log.with("execute "));
    EXPECT_EQ((std::vector<u64>{10}), m_log.times("execute E"));
    EXPECT_EQ((std::vector<u64>{30}), m_log.times("execute D"));
}

// A thread held in a generator leaves the records behind it unbrought up to
// date; an arming brings them up to date, and its delay 0 goes behind them.
TEST_F(TimedEventGeneratorTest, DelayZeroFiresAfterRecordsAlreadyDue)
{
    m_timers.addOneShot(gen("A"), 20, m_status);
    m_timers.addOneShot(gen("B"), 20, m_status);
    tClockedEvent gate(m_clock, true, m_status);
    std::unique_ptr<tTestGenerator> pHold = gen("hold");
    pHold->m_pGate = &gate;
    m_timers.addOneShot(std::move(pHold), 0, m_status);
    ASSERT_TRUE(m_clock.settle());
    m_clock.advanceTo(60 * kMs);
    gate.signal();
    ASSERT_TRUE(m_clock.settle());
    EXPECT_NE(0u, m_timers.addOneShot(gen("Z"), 0, m_status));
    runFor(0);
    EXPECT_EQ((tEntries{"hold", "A", "B", "Z"}), m_log.with("execute "));
    EXPECT_EQ((std::vector<u64>{60}), m_log.times("execute Z"));
    EXPECT_TRUE(m_status.isNotFatal());
}

TEST_F(TimedEventGeneratorTest, RemovedTimerNeverFiresAndFollowersKeepTheirTime)
{
    const u32 idA = m_timers.addOneShot(gen("A"), 40, m_status);
    m_timers.addOneShot(gen("B"), 80, m_status);
    const u32 idC = m_timers.addOneShot(gen("C"), 120, m_status);
    m_timers.addOneShot(gen("D"), 160, m_status);
    m_timers.remove(idA, m_status);
    EXPECT_EQ(1, m_log.count("free A")); // the generator goes with the timer
    runFor(100);
    m_timers.remove(idC, m_status);
    runFor(100);
    EXPECT_TRUE(m_status.isNotFatal());
    EXPECT_EQ((tEntries{"B", "D"}), m_log.with("gen "));
    EXPECT_EQ((std::vector<u64>{80}), m_log.times("gen B"));
    EXPECT_EQ((std::vector<u64>{160}), m_log.times("gen D"));
}

TEST_F(TimedEventGeneratorTest, PeriodicTimerRunsUntilRemovedAndPeriodZeroOnce)
{
    const u32 onceId = m_timers.add(gen("once"), 5, 0, m_status);
    const u32 id = m_timers.add(gen("P"), 0, 5, m_status);
    runFor(22);
    EXPECT_EQ((std::vector<u64>{0, 5, 10, 15, 20}), m_log.times("execute P"));
    EXPECT_EQ(1, m_log.count("execute once"));
    EXPECT_EQ(1, m_log.count("free once"));
    m_timers.remove(id, m_status);
    EXPECT_TRUE(m_status.isNotFatal());
    EXPECT_EQ(1, m_log.count("free P"));
    runFor(20);
    EXPECT_EQ(5, m_log.count("execute P"));

    for (u32 unknown : {onceId, id, 0u, 12345u})
    {
        tStatus removeStatus;
        m_timers.remove(unknown, removeStatus);
        EXPECT_EQ(kStatusInvalidState, removeStatus.getCode()) << unknown;
    }
}

TEST_F(TimedEventGeneratorTest, IdsWrapToOneAndAreNeverZero)
{
    tTimedEventGeneratorProbe::setNextId(m_timers, 0x7FFFFFFEu);
    std::vector<u32> ids;
    for (int i = 0; i < 3; ++i)
    {
        ids.push_back(m_timers.addOneShot(gen("t" + std::to_string(i)), 10000, m_status));
    }
    EXPECT_EQ((std::vector<u32>{0x7FFFFFFEu, 0x7FFFFFFFu, 1u}), ids);

    // A refused arming gives 0, consumes no id and frees the generator.
    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusInternalError);
    EXPECT_EQ(0u, m_timers.addOneShot(gen("refused"), 0, failed));
    EXPECT_EQ(1, m_log.count("free refused"));
    EXPECT_EQ(2u, m_timers.addOneShot(gen("next"), 10000, m_status));
}

TEST_F(TimedEventGeneratorTest, ArmingFromAHandlerWakesTheThreadAndBringsTheHeadUpToDate)
{
    // The empty list lets the thread sleep 10 s; only the wake brings M sooner.
    post(m_dispatcher, "arm", [&](tStatus&) { m_timers.addOneShot(gen("M"), 10, m_status); });
    runFor(20);
    EXPECT_EQ((std::vector<u64>{10}), m_log.times("execute M"));

    // L's delta must lose the time that passed before N is placed behind it.
    m_timers.addOneShot(gen("L"), 300, m_status);
    runFor(150);
    post(m_dispatcher, "arm", [&](tStatus&) { m_timers.addOneShot(gen("N"), 200, m_status); });
    runFor(400);
    EXPECT_EQ((tEntries{"M", "L", "N"}), m_log.with("gen "));
    EXPECT_EQ((std::vector<u64>{320}), m_log.times("execute L"));
    EXPECT_EQ((std::vector<u64>{370}), m_log.times("execute N"));
}

// --- Failures and lost expiries ----------------------------------------------

TEST_F(TimedEventGeneratorTest, FailedGenerationOrPostLosesOnlyThatExpiry)
{
    const u32 id = m_timers.add(gen("G", {kFail, kNothing, kFailWithEvent, kMake}), 0, 2, m_status);
    runFor(15);
    m_timers.remove(id, m_status);
    EXPECT_TRUE(m_status.isNotFatal());
    EXPECT_EQ(8, m_log.count("gen G"));
    EXPECT_EQ(2, m_log.count("execute G"));
    EXPECT_EQ(0, m_log.count("abandon G")); // a fatal status deletes before the post

    // A refused post abandons the event and the timer goes on.
    tPTPDispatcher stopped(m_clock, m_status);
    tTimedEventGenerator timers(&stopped, m_clock, m_status);
    const u32 stoppedId = timers.add(gen("S"), 0, 2, m_status);
    runFor(9);
    timers.remove(stoppedId, m_status);
    EXPECT_TRUE(m_status.isNotFatal());
    EXPECT_EQ(5, m_log.count("gen S"));
    EXPECT_EQ(5, m_log.count("abandon S"));
    EXPECT_EQ(0, m_log.count("execute S"));
}

TEST_F(TimedEventGeneratorTest, WithoutItsThreadEveryCallFails)
{
    tStatus status;
    tTimedEventGenerator timers(nullptr, m_clock, status);
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
    const u32 id = m_timers.add(gen("P"), 0, 2, m_status);
    m_timers.addOneShot(gen("A"), 100000, m_status);
    runFor(5);
    m_timers.clear(m_status);
    EXPECT_EQ((tEntries{"P", "A"}), m_log.with("free "));
    runFor(200000);
    EXPECT_EQ(3, m_log.count("gen P"));
    EXPECT_EQ(0, m_log.count("gen A"));
    tStatus removeStatus;
    m_timers.remove(id, removeStatus);
    EXPECT_EQ(kStatusInvalidState, removeStatus.getCode());
}

TEST_F(TimedEventGeneratorTest, DestructionWithTimersArmedAndEventsQueuedFreesAll)
{
    u32 lateId = 99;
    i32 lateCode = 1;
    {
        // Keeps the dispatcher busy, so that expiries pile up in its queue.
        tClockedEvent gate(m_clock, true, m_status);
        tPTPDispatcher dispatcher(m_clock, m_status);
        post(dispatcher, "start");
        EXPECT_TRUE(m_clock.settle());
        post(dispatcher, "blocker",
             [&](tStatus&)
             {
                 tStatus gateStatus;
                 gate.wait(tEvent::kInfinite, gateStatus);
             });
        std::unique_ptr<tTimedEventGenerator> pTimers(
            new tTimedEventGenerator(&dispatcher, m_clock, m_status));
        for (const char* name : {"P1", "P2", "P3"})
        {
            pTimers->add(gen(name), 0, 1, m_status);
        }
        pTimers->addOneShot(gen("far1"), 100000, m_status);
        std::unique_ptr<tTestGenerator> pReentrant = gen("far2");
        // Arming while being destroyed gives 0 without a failure.
        tTimedEventGenerator* pDying = pTimers.get();
        pReentrant->m_onDelete = [&]
        {
            tStatus lateStatus;
            lateId = pDying->addOneShot(gen("late"), 0, lateStatus);
            lateCode = lateStatus.getCode();
        };
        pTimers->addOneShot(std::move(pReentrant), 100000, m_status);
        runFor(4);
        EXPECT_EQ(5, m_log.count("gen P3"));
        pTimers.reset();

        EXPECT_EQ(6u, m_log.with("free ").size());
        EXPECT_EQ(0u, lateId);
        EXPECT_EQ(0, lateCode);
        EXPECT_TRUE(m_status.isNotFatal());
        gate.signal();
    }
    // The dispatcher freed what it still held.
    EXPECT_EQ(static_cast<size_t>(m_log.m_eventsMade.load()), m_log.with("delete ").size());
}
