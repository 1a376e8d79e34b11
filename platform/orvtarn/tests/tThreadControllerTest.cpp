#include "orvtarn/protons/thread/tThreadController.h"
#include "orvtarn/quarks/tEvent.h"
#include "tTraceCapture.h"

#include <gtest/gtest.h>

#include <atomic>
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

// A thread body that reports what it sees of itself, fails when told to, and
// optionally holds until told to end.
struct tProbe : iThread
{
    explicit tProbe(bool a_hold = false) : m_hold(a_hold), m_started(m_status), m_finish(m_status)
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
    }
    bool awaitStarted()
    {
        tStatus status;
        return m_started.wait(10000, status);
    }

    bool m_hold;
    i32 m_failWith = 0;
    i32 m_failLine = 0;
    std::atomic<int> m_runs{0};
    // Written by the thread; read once it has signalled or been joined.
    u32 m_id = 0;
    char m_name[32] = {};
    tStatus m_status;
    tEvent m_started;
    tEvent m_finish;
};

TEST(ThreadControllerTest, StartRunsTheBodyAndAnUnjoinedThreadBlocksTheNext)
{
    tProbe probe;
    tThreadController controller;
    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    EXPECT_FALSE(controller.start(&probe, kThreadPriorityDefault, "probe", failed));
    controller.join(); // no thread: returns at once

    tStatus status;
    probe.m_failWith = kStatusCancelled;
    ASSERT_TRUE(controller.start(&probe, kThreadPriorityDefault, "zelmarPluginCorep", status));
    const u32 idAtStart = controller.getId();
    EXPECT_NE(static_cast<u32>(syscall(SYS_gettid)), idAtStart);
    ASSERT_TRUE(probe.awaitStarted());
    // The thread has ended by itself, but until it is joined it still counts.
    EXPECT_FALSE(controller.start(&probe, kThreadPriorityDefault, "probe", status));
    EXPECT_EQ(kStatusAlreadyRunning, status.getCode());
    EXPECT_TRUE(controller.isRunning());
    controller.join();
    EXPECT_FALSE(controller.isRunning());
    EXPECT_EQ(probe.m_id, idAtStart) << "the id known at start is not the thread's own";
    EXPECT_STREQ("zelmarPluginCor", probe.m_name) << "names are cut to 15 characters";

    const tStatus& exit = controller.getExitStatus();
    EXPECT_EQ(kStatusCancelled, exit.getCode());
    EXPECT_STREQ("test", exit.getComponent());
    EXPECT_NE(nullptr, std::strstr(exit.getFile(), "tThreadControllerTest.cpp"));
    EXPECT_EQ(probe.m_failLine, exit.getLine());

    // After the join the controller starts again, from a clean final status.
    status.clear();
    probe.m_failWith = 0;
    ASSERT_TRUE(controller.start(&probe, kThreadPriorityDefault, "orvptp3p", status));
    controller.join();
    controller.join();
    EXPECT_EQ(2, probe.m_runs.load());
    EXPECT_STREQ("orvptp3p", probe.m_name);
    EXPECT_EQ(kStatusSuccess, controller.getExitStatus().getCode());
    EXPECT_EQ(kStatusSuccess, status.getCode()) << "the thread's failure leaked to the starter";
    EXPECT_EQ(kStatusCancelled, failed.getCode());
}

// Lowering a priority never needs privilege; raising does, so the rest of the
// table runs only where the test may raise (the unprivileged test program
// covers the refusal).
TEST(ThreadControllerTest, PrioritiesRoundTripAndReachTheSystem)
{
    const int niceOfStarter = getpriority(PRIO_PROCESS, 0);
    tStatus status;
    tProbe probe(true);
    tThreadController controller;
    ASSERT_TRUE(controller.start(&probe, kThreadPriorityLow, "probe", status));
    ASSERT_TRUE(probe.awaitStarted());
    const id_t id = static_cast<id_t>(controller.getId());
    EXPECT_EQ(kThreadPriorityLow, controller.getPriority());
    const int niceLow = getpriority(PRIO_PROCESS, id);
    controller.setPriority(kThreadPriorityLowest, status);
    EXPECT_EQ(kThreadPriorityLowest, controller.getPriority());
    EXPECT_LT(0, niceLow);
    EXPECT_LT(niceLow, getpriority(PRIO_PROCESS, id));
    EXPECT_EQ(niceOfStarter, getpriority(PRIO_PROCESS, 0)) << "only the started thread changed";
    EXPECT_NE(std::string::npos, traceLine(controller).find("is running at lowest priority.\n"));

    controller.setPriority(5, status);
    EXPECT_EQ(kStatusSystemError, status.getCode()) << "no such priority";
    EXPECT_EQ(kThreadPriorityLowest, controller.getPriority());

    status.clear();
    controller.setPriority(kThreadPriorityHighest, status);
    if (status.getCode() == kStatusSuccess)
    {
        EXPECT_EQ(SCHED_FIFO, sched_getscheduler(static_cast<pid_t>(id)));
        for (i32 priority : {kThreadPrioritySecondaryIsr, kThreadPriorityHigh, kThreadPriorityLow,
                             kThreadPriorityHighest, kThreadPriorityDefault})
        {
            controller.setPriority(priority, status);
            EXPECT_EQ(priority, controller.getPriority());
        }
        EXPECT_EQ(SCHED_OTHER, sched_getscheduler(static_cast<pid_t>(id)));
        EXPECT_EQ(kStatusSuccess, status.getCode());
    }
    probe.m_finish.signal();
    controller.join();
    EXPECT_NE(std::string::npos, traceLine(controller).find("is not running.\n"));
    status.clear();
    controller.setPriority(kThreadPriorityLow, status);
    EXPECT_EQ(kStatusInvalidState, status.getCode()) << "a joined thread can no longer be changed";

    tThreadRecord record;
    getCurrentThread(record, status);
    EXPECT_EQ(0u, record.m_id) << "a fatal status leaves the record alone";
    status.clear();
    getCurrentThread(record, status);
    EXPECT_EQ(static_cast<u32>(syscall(SYS_gettid)), record.m_id);
    EXPECT_TRUE(pthread_equal(pthread_self(), record.m_handle));
}

} // namespace
