#include "orvtarn/protons/thread/tThreadController.h"
#include "orvtarn/protons/status/tTrace.h"
#include "orvtarn/quarks/tEvent.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <pthread.h>
#include <sched.h>
#include <string>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace nOrvTarn000;

namespace
{

const u32 kGenerousMs = 10000;

// A thread body that reports what it sees of itself, and optionally holds
// until told to end.
class tProbe : public iThread
{
public:
    explicit tProbe(bool a_hold = false)
        : m_hold(a_hold), m_started(m_status), m_finish(m_status), m_finished(m_status)
    {
    }

    void run(tStatus& a_status) override
    {
        ++m_runs;
        m_id = static_cast<u32>(syscall(SYS_gettid));
        pthread_getname_np(pthread_self(), m_name, sizeof(m_name));
        m_started.signal();
        if (m_hold)
        {
            m_finish.wait(tEvent::kInfinite, a_status);
        }
        if (m_failWith != 0)
        {
            m_failLine = __LINE__ + 1;
            ORVTARN_SET_CODE(a_status, m_failWith);
        }
        m_finished.signal();
    }

    bool awaitStarted()
    {
        tStatus status;
        return m_started.wait(kGenerousMs, status);
    }
    bool awaitFinished()
    {
        tStatus status;
        return m_finished.wait(kGenerousMs, status);
    }
    void finish() { m_finish.signal(); }

    bool m_hold;
    i32 m_failWith = 0;
    i32 m_failLine = 0;
    std::atomic<int> m_runs{0};
    // Written by the thread; read once it has signalled or been joined.
    u32 m_id = 0;
    char m_name[32] = {};

private:
    tStatus m_status;
    tEvent m_started;
    tEvent m_finish;
    tEvent m_finished;
};

// Ends a held probe and joins it, however the test leaves.
struct tJoinAtEnd
{
    tThreadController& m_rController;
    tProbe& m_rProbe;
    ~tJoinAtEnd()
    {
        m_rProbe.finish();
        m_rController.join();
    }
};

TEST(ThreadControllerTest, StartRunsTheBodyAndKnowsItsIdAtOnce)
{
    tStatus status;
    tProbe probe;
    tThreadController controller;
    ASSERT_TRUE(controller.start(&probe, kThreadPriorityDefault, "probe", status));
    EXPECT_TRUE(controller.isRunning());
    const u32 idAtStart = controller.getId();
    EXPECT_NE(0u, idAtStart);
    EXPECT_NE(static_cast<u32>(syscall(SYS_gettid)), idAtStart);

    controller.join();
    EXPECT_FALSE(controller.isRunning());
    EXPECT_EQ(1, probe.m_runs.load());
    EXPECT_EQ(probe.m_id, idAtStart) << "the id known at start is not the thread's own";
    EXPECT_EQ(kStatusSuccess, status.getCode());
}

TEST(ThreadControllerTest, SecondStartWhileRunningIsRefusedAndLeavesTheThreadAlone)
{
    tStatus status;
    tProbe probe(true);
    tThreadController controller;
    tJoinAtEnd end{controller, probe};
    ASSERT_TRUE(controller.start(&probe, kThreadPriorityDefault, "probe", status));
    ASSERT_TRUE(probe.awaitStarted());
    const u32 id = controller.getId();

    tProbe other;
    EXPECT_FALSE(controller.start(&other, kThreadPriorityDefault, "other", status));
    EXPECT_EQ(kStatusAlreadyRunning, status.getCode());
    EXPECT_TRUE(controller.isRunning());
    EXPECT_EQ(id, controller.getId());

    probe.finish();
    EXPECT_TRUE(probe.awaitFinished());
    controller.join();
    EXPECT_EQ(0, other.m_runs.load());
}

TEST(ThreadControllerTest, ThreadThatEndedByItselfStillBlocksStartUntilJoined)
{
    tStatus status;
    tProbe probe;
    tThreadController controller;
    ASSERT_TRUE(controller.start(&probe, kThreadPriorityDefault, "probe", status));
    ASSERT_TRUE(probe.awaitFinished());

    EXPECT_FALSE(controller.start(&probe, kThreadPriorityDefault, "probe", status));
    EXPECT_EQ(kStatusAlreadyRunning, status.getCode());
    EXPECT_TRUE(controller.isRunning());
    status.clear();

    controller.join();
    ASSERT_TRUE(controller.start(&probe, kThreadPriorityDefault, "probe", status));
    controller.join();
    EXPECT_EQ(2, probe.m_runs.load());
    EXPECT_EQ(kStatusSuccess, status.getCode());
}

// A fatal status starts nothing, and joining without a thread, or twice,
// returns at once.
TEST(ThreadControllerTest, FatalStatusStartsNothingAndJoinWithoutThreadReturns)
{
    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    tProbe probe;
    tThreadController controller;
    EXPECT_FALSE(controller.start(&probe, kThreadPriorityDefault, "probe", failed));
    EXPECT_FALSE(controller.isRunning());
    EXPECT_EQ(kStatusCancelled, failed.getCode());
    controller.join();
    EXPECT_EQ(0, probe.m_runs.load());

    tStatus status;
    ASSERT_TRUE(controller.start(&probe, kThreadPriorityDefault, "probe", status));
    controller.join();
    controller.join();
    EXPECT_FALSE(controller.isRunning());
}

TEST(ThreadControllerTest, FinalStatusOfTheThreadIsKeptWhole)
{
    tStatus status;
    tProbe probe;
    probe.m_failWith = kStatusCancelled;
    tThreadController controller;
    ASSERT_TRUE(controller.start(&probe, kThreadPriorityDefault, "probe", status));
    controller.join();

    const tStatus& exit = controller.getExitStatus();
    EXPECT_EQ(kStatusCancelled, exit.getCode());
    EXPECT_STREQ("test", exit.getComponent());
    EXPECT_NE(nullptr, std::strstr(exit.getFile(), "tThreadControllerTest.cpp"));
    EXPECT_EQ(probe.m_failLine, exit.getLine());
    EXPECT_EQ(kStatusSuccess, status.getCode()) << "the thread's failure leaked to the starter";

    // The next run starts from a clean status.
    probe.m_failWith = 0;
    ASSERT_TRUE(controller.start(&probe, kThreadPriorityDefault, "probe", status));
    controller.join();
    EXPECT_EQ(kStatusSuccess, controller.getExitStatus().getCode());
}

TEST(ThreadControllerTest, DebugNameIsVisibleAndCutToFifteenCharacters)
{
    tStatus status;
    tThreadController controller;
    tProbe shortName;
    ASSERT_TRUE(controller.start(&shortName, kThreadPriorityDefault, "orvptp3p", status));
    controller.join();
    EXPECT_STREQ("orvptp3p", shortName.m_name);

    tProbe longName;
    ASSERT_TRUE(controller.start(&longName, kThreadPriorityDefault, "zelmarPluginCorep", status));
    controller.join();
    EXPECT_STREQ("zelmarPluginCor", longName.m_name);
    EXPECT_EQ(kStatusSuccess, status.getCode());
}

TEST(ThreadControllerTest, SetPriorityWithoutThreadIsInvalidState)
{
    tStatus status;
    tThreadController controller;
    controller.setPriority(kThreadPriorityLow, status);
    EXPECT_EQ(kStatusInvalidState, status.getCode());
    EXPECT_EQ(kThreadPriorityDefault, controller.getPriority());

    status.clear();
    tProbe probe;
    ASSERT_TRUE(controller.start(&probe, kThreadPriorityDefault, "probe", status));
    controller.join();
    controller.setPriority(kThreadPriorityLow, status);
    EXPECT_EQ(kStatusInvalidState, status.getCode()) << "a joined thread can no longer be changed";
}

// Lowering a priority never needs privilege, so these hold for every user.
TEST(ThreadControllerTest, LowerPrioritiesRoundTripAndReachTheSystem)
{
    const int niceOfStarter = getpriority(PRIO_PROCESS, 0);
    tStatus status;
    tProbe probe(true);
    tThreadController controller;
    tJoinAtEnd end{controller, probe};
    ASSERT_TRUE(controller.start(&probe, kThreadPriorityLow, "probe", status));
    ASSERT_TRUE(probe.awaitStarted());
    EXPECT_EQ(kThreadPriorityLow, controller.getPriority());
    const int niceLow = getpriority(PRIO_PROCESS, static_cast<id_t>(controller.getId()));

    controller.setPriority(kThreadPriorityLowest, status);
    EXPECT_EQ(kStatusSuccess, status.getCode());
    EXPECT_EQ(kThreadPriorityLowest, controller.getPriority());
    const int niceLowest = getpriority(PRIO_PROCESS, static_cast<id_t>(controller.getId()));
    EXPECT_LT(0, niceLow);
    EXPECT_LT(niceLow, niceLowest);
    // Only the started thread changed.
    EXPECT_EQ(niceOfStarter, getpriority(PRIO_PROCESS, 0));
}

TEST(ThreadControllerTest, UnknownPriorityIsRefusedAndChangesNothing)
{
    tStatus status;
    tProbe probe(true);
    tThreadController controller;
    tJoinAtEnd end{controller, probe};
    ASSERT_TRUE(controller.start(&probe, kThreadPriorityDefault, "probe", status));
    const i32 inherited = controller.getPriority();
    controller.setPriority(5, status);
    EXPECT_EQ(kStatusSystemError, status.getCode());
    EXPECT_EQ(inherited, controller.getPriority());
}

// Raising priorities needs privilege; without it the refusal is covered by
// the unprivileged test program.
TEST(ThreadControllerTest, EveryPriorityRoundTripsWhenPrivileged)
{
    tStatus status;
    tProbe probe(true);
    tThreadController controller;
    tJoinAtEnd end{controller, probe};
    const bool started = controller.start(&probe, kThreadPriorityHighest, "probe", status);
    if (!started && status.getCode() == kStatusSystemError)
    {
        GTEST_SKIP() << "no privilege to raise thread priorities";
    }
    ASSERT_TRUE(started);
    ASSERT_TRUE(probe.awaitStarted());
    EXPECT_EQ(kThreadPriorityHighest, controller.getPriority());
    // The thread is held, so its identifier is stable for the system query.
    EXPECT_EQ(SCHED_FIFO, sched_getscheduler(static_cast<pid_t>(controller.getId())));

    const i32 kPriorities[] = {kThreadPrioritySecondaryIsr, kThreadPriorityHigh,
                               kThreadPriorityDefault,      kThreadPriorityLow,
                               kThreadPriorityLowest,       kThreadPriorityHighest,
                               kThreadPriorityDefault};
    for (i32 priority : kPriorities)
    {
        controller.setPriority(priority, status);
        EXPECT_EQ(kStatusSuccess, status.getCode()) << priority;
        EXPECT_EQ(priority, controller.getPriority());
    }
    EXPECT_EQ(SCHED_OTHER, sched_getscheduler(static_cast<pid_t>(controller.getId())));
}

// The dispatcher raises and lowers itself through its own controller.
class tSelfPrioritising : public iThread
{
public:
    explicit tSelfPrioritising(tThreadController& a_rController) : m_rController(a_rController) {}
    void run(tStatus& a_status) override
    {
        m_rController.setPriority(kThreadPriorityLowest, a_status);
        m_seen = m_rController.getPriority();
    }
    tThreadController& m_rController;
    i32 m_seen = 0;
};

TEST(ThreadControllerTest, ThreadCanChangeItsOwnPriority)
{
    tStatus status;
    tThreadController controller;
    tSelfPrioritising body(controller);
    ASSERT_TRUE(controller.start(&body, kThreadPriorityDefault, "self", status));
    controller.join();
    EXPECT_EQ(kStatusSuccess, controller.getExitStatus().getCode());
    EXPECT_EQ(kThreadPriorityLowest, body.m_seen);
}

TEST(ThreadControllerTest, CurrentThreadRecord)
{
    tStatus status;
    tThreadRecord record;
    getCurrentThread(record, status);
    EXPECT_EQ(static_cast<u32>(syscall(SYS_gettid)), record.m_id);
    EXPECT_TRUE(pthread_equal(pthread_self(), record.m_handle));
    EXPECT_TRUE(record.m_running);
    EXPECT_TRUE(record.m_created);

    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    tThreadRecord untouched;
    getCurrentThread(untouched, failed);
    EXPECT_EQ(0u, untouched.m_id);
    EXPECT_FALSE(untouched.m_created);
}

class tTextDestination : public iTraceDestination
{
public:
    iTraceDestination& writeCount(const char* a_text, u32 a_length) override
    {
        m_text.append(a_text, a_length);
        return *this;
    }
    iTraceDestination& write(const char* a_text) override
    {
        m_text += a_text;
        return *this;
    }
    void control(u32, u32) override {}
    char* getOptionText(char*, u32, u32*) override { return nullptr; }
    bool isReady() override { return true; }
    void flush() override {}
    const char* getName() override { return "text"; }
    std::string m_text;
};

std::string traced(tThreadController& a_rController)
{
    tTextDestination destination;
    {
        tTrace trace(destination);
        trace.write(a_rController).endLine();
    }
    return destination.m_text;
}

std::string expectedHead(const tThreadController& a_rController)
{
    char text[96];
    std::snprintf(text, sizeof(text), "tThreadController (*0x%08llx) ID 0x%08x is ",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(&a_rController)),
                  static_cast<unsigned int>(a_rController.getId()));
    return text;
}

TEST(ThreadControllerTest, TraceTellsStateAndPriority)
{
    tThreadController controller;
    EXPECT_EQ(expectedHead(controller) + "not running.\n", traced(controller));
    EXPECT_NE(std::string::npos, traced(controller).find("ID 0x00000000 "));

    tStatus status;
    tProbe probe(true);
    {
        tJoinAtEnd end{controller, probe};
        ASSERT_TRUE(controller.start(&probe, kThreadPriorityDefault, "probe", status));
        // The thread inherits the test's scheduling, the default one at nice 0.
        if (getpriority(PRIO_PROCESS, 0) == 0)
        {
            EXPECT_EQ(expectedHead(controller) + "running at default priority.\n",
                      traced(controller));
        }
        controller.setPriority(kThreadPriorityLow, status);
        EXPECT_EQ(expectedHead(controller) + "running at low priority.\n", traced(controller));
        controller.setPriority(kThreadPriorityLowest, status);
        EXPECT_EQ(expectedHead(controller) + "running at lowest priority.\n", traced(controller));
    }
    EXPECT_EQ(expectedHead(controller) + "not running.\n", traced(controller));
    EXPECT_EQ(kStatusSuccess, status.getCode());
}

} // namespace
