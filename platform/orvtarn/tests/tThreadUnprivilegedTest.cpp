// Thread priorities in a process that may not raise them. The test program
// gives up that privilege before its first test, so it stands alone.
#include "orvtarn/protons/thread/tThreadController.h"
#include "orvtarn/quarks/tEvent.h"
#include "tPriorityPrivilege.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <thread>

using namespace nOrvTarn000;

namespace
{

// The nice value of the calling thread; Linux keeps one per thread.
int ownNice()
{
    errno = 0;
    return getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
}

struct tNiceProbe : iThread
{
    tNiceProbe() : m_release(m_status) {}
    void run(tStatus& a_status) override
    {
        m_nice = ownNice();
        m_release.wait(tEvent::kInfinite, a_status);
    }
    int m_nice = -100;
    tStatus m_status;
    tEvent m_release;
};

struct UnprivilegedThreadTest : testing::Test
{
    static void SetUpTestSuite()
    {
        static tNoPriorityRaises s_limits;
        s_dropped = s_limits.isSet() && dropNiceCapability();
    }
    void SetUp() override { ASSERT_TRUE(s_dropped); }
    static bool s_dropped;
};
bool UnprivilegedThreadTest::s_dropped = false;

TEST_F(UnprivilegedThreadTest, RaisesFailAndChangeNothingWhileTheCallerCarriesOn)
{
    tStatus status;
    tNiceProbe body;
    tThreadController controller;
    EXPECT_FALSE(controller.start(&body, kThreadPriorityHighest, "raised", status));
    EXPECT_EQ(kStatusSystemError, status.getCode());
    EXPECT_FALSE(controller.isRunning());
    EXPECT_EQ(-100, body.m_nice) << "a thread whose start failed ran its body";

    status.clear();
    ASSERT_TRUE(controller.start(&body, kThreadPriorityDefault, "held", status));
    // The default or, when the test itself runs at a nice value, lower.
    const i32 inherited = controller.getPriority();
    for (i32 priority : {kThreadPriorityHighest, kThreadPrioritySecondaryIsr, kThreadPriorityHigh})
    {
        controller.setPriority(priority, status);
        EXPECT_EQ(kStatusSystemError, status.getCode()) << priority;
        EXPECT_EQ(inherited, controller.getPriority());
        status.clear();
    }
    // Lowering needs no privilege; going back up again does.
    controller.setPriority(kThreadPriorityLowest, status);
    EXPECT_EQ(kStatusSuccess, status.getCode());
    controller.setPriority(kThreadPriorityLow, status);
    EXPECT_EQ(kStatusSystemError, status.getCode());
    EXPECT_EQ(kThreadPriorityLowest, controller.getPriority());
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
            const std::pair<i32, int> kCases[] = {{kThreadPriorityDefault, nice},
                                                  {kThreadPriorityLowest, 19}};
            for (const auto& entry : kCases)
            {
                tStatus status;
                tNiceProbe probe;
                tThreadController controller;
                EXPECT_TRUE(controller.start(&probe, entry.first, "nice", status)) << entry.first;
                EXPECT_EQ(kStatusSuccess, status.getCode()) << entry.first;
                probe.m_release.signal();
                controller.join();
                EXPECT_EQ(entry.second, probe.m_nice) << entry.first;
            }
        });
    creator.join();
}

} // namespace
