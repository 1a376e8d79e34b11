// Thread priorities in a process that may not raise them. The test program
// gives up that privilege before its first test, so it stands alone.
#include "orvtarn/protons/thread/tThreadController.h"
#include "orvtarn/quarks/tEvent.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

using namespace nOrvTarn000;

namespace
{

const u32 kGenerousMs = 10000;

// Drops the calling thread's right to raise scheduling priorities (the
// capability of a privileged user, and the resource limits of any user).
// Threads started afterwards inherit the loss.
bool dropPriorityPrivilege()
{
    const rlimit none = {0, 0};
    if (setrlimit(RLIMIT_RTPRIO, &none) != 0 || setrlimit(RLIMIT_NICE, &none) != 0)
    {
        return false;
    }
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2] = {};
    if (syscall(SYS_capget, &header, data) != 0)
    {
        return false;
    }
    const unsigned bit = 1u << (CAP_SYS_NICE % 32);
    data[CAP_SYS_NICE / 32].effective &= ~bit;
    data[CAP_SYS_NICE / 32].permitted &= ~bit;
    data[CAP_SYS_NICE / 32].inheritable &= ~bit;
    return syscall(SYS_capset, &header, data) == 0;
}

class tHeld : public iThread
{
public:
    tHeld() : m_release(m_status), m_started(m_status) {}
    void run(tStatus& a_status) override
    {
        ++m_runs;
        m_started.signal();
        m_release.wait(tEvent::kInfinite, a_status);
    }
    tStatus m_status;
    tEvent m_release;
    tEvent m_started;
    std::atomic<int> m_runs{0};
};

// The nice value of the calling thread; Linux keeps one per thread.
int ownNice()
{
    errno = 0;
    return getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
}

class tNiceProbe : public iThread
{
public:
    void run(tStatus&) override { m_nice = ownNice(); }
    int m_nice = -100;
};

struct UnprivilegedThreadTest : testing::Test
{
    static void SetUpTestSuite() { s_dropped = dropPriorityPrivilege(); }
    void SetUp() override { ASSERT_TRUE(s_dropped); }
    static bool s_dropped;
};
bool UnprivilegedThreadTest::s_dropped = false;

TEST_F(UnprivilegedThreadTest, StartAtRaisedPriorityFailsAndLeavesNoThread)
{
    tStatus status;
    tHeld body;
    tThreadController controller;
    EXPECT_FALSE(controller.start(&body, kThreadPriorityHighest, "raised", status));
    EXPECT_EQ(kStatusSystemError, status.getCode());
    EXPECT_FALSE(controller.isRunning());
    controller.join();
    EXPECT_EQ(0, body.m_runs.load()) << "a thread whose start failed ran its body";

    // The caller carries on: the same controller starts at default priority.
    status.clear();
    ASSERT_TRUE(controller.start(&body, kThreadPriorityDefault, "default", status));
    tStatus waitStatus;
    EXPECT_TRUE(body.m_started.wait(kGenerousMs, waitStatus));
    body.m_release.signal();
    controller.join();
    EXPECT_EQ(1, body.m_runs.load());
}

TEST_F(UnprivilegedThreadTest, RaisingARunningThreadFailsAndChangesNothing)
{
    tStatus status;
    tHeld body;
    tThreadController controller;
    ASSERT_TRUE(controller.start(&body, kThreadPriorityDefault, "held", status));
    // The default or, when the test itself runs at a nice value, lower.
    const i32 inherited = controller.getPriority();

    const i32 kRaised[] = {kThreadPriorityHighest, kThreadPrioritySecondaryIsr,
                           kThreadPriorityHigh};
    for (i32 priority : kRaised)
    {
        controller.setPriority(priority, status);
        EXPECT_EQ(kStatusSystemError, status.getCode()) << priority;
        EXPECT_EQ(inherited, controller.getPriority());
        status.clear();
    }
    // Lowering needs no privilege; going back up again does.
    controller.setPriority(kThreadPriorityLowest, status);
    EXPECT_EQ(kStatusSuccess, status.getCode());
    EXPECT_EQ(kThreadPriorityLowest, controller.getPriority());
    controller.setPriority(kThreadPriorityLow, status);
    EXPECT_EQ(kStatusSystemError, status.getCode());
    EXPECT_EQ(kThreadPriorityLowest, controller.getPriority());

    EXPECT_TRUE(controller.isRunning());
    body.m_release.signal();
    controller.join();
    EXPECT_EQ(kStatusSuccess, controller.getExitStatus().getCode());
}

// A process started at a nice value of 5 or more: its threads inherit it, and
// the default priority must not count as a raise above it.
TEST_F(UnprivilegedThreadTest, ThreadsOfANiceCreatorStartAndKeepWhatTheyInherit)
{
    // A creator of its own, so that the nice value stays with it.
    std::thread creator(
        [&]
        {
            const int nice = std::max(5, ownNice());
            ASSERT_EQ(0, setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), nice));
            struct tCase
            {
                i32 m_priority;
                int m_nice;
            };
            const tCase kCases[] = {{kThreadPriorityDefault, nice}, {kThreadPriorityLowest, 19}};
            for (const tCase& entry : kCases)
            {
                tStatus status;
                tNiceProbe probe;
                tThreadController controller;
                EXPECT_TRUE(controller.start(&probe, entry.m_priority, "nice", status))
                    << entry.m_priority;
                EXPECT_EQ(kStatusSuccess, status.getCode()) << entry.m_priority;
                controller.join();
                EXPECT_EQ(entry.m_nice, probe.m_nice) << entry.m_priority;
            }
        });
    creator.join();
}

} // namespace
