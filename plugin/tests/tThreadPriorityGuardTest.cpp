#include "tThreadPriorityGuard.h"

#include <gtest/gtest.h>

#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

using namespace nZelmarPtpPlugin_1_0;
namespace nSystemThread = nOrvTarn000::nSystemThread;

namespace
{

i32 currentPriority()
{
    i32 priority = -100;
    EXPECT_TRUE(nSystemThread::getPriority(nSystemThread::getCurrentHandle(),
                                           nSystemThread::getCurrentId(), priority));
    return priority;
}

// Takes from the calling thread alone its right to raise priorities.
bool dropThreadPriorityPrivilege()
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2] = {};
    if (syscall(SYS_capget, &header, data) != 0)
    {
        return false;
    }
    const unsigned bit = 1u << (CAP_SYS_NICE % 32);
    data[CAP_SYS_NICE / 32].effective &= ~bit;
    data[CAP_SYS_NICE / 32].permitted &= ~bit;
    return syscall(SYS_capset, &header, data) == 0;
}

} // namespace

TEST(ThreadPriorityGuard, RaisesForItsScopeAndRestores)
{
    std::thread worker(
        []
        {
            const i32 before = currentPriority();
            {
                tThreadPriorityGuard guard;
                if (guard.isRaised())
                {
                    EXPECT_EQ(nOrvTarn000::kThreadPriorityHighest, currentPriority());
                }
                else
                {
                    EXPECT_EQ(before, currentPriority()) << "a refused raise changes nothing";
                }
            }
            EXPECT_EQ(before, currentPriority());
        });
    worker.join();
}

TEST(ThreadPriorityGuard, RestoresAPriorityOtherThanTheDefault)
{
    std::thread worker(
        []
        {
            const i32 lowered = nOrvTarn000::kThreadPriorityLow;
            // Lowering needs no privilege.
            ASSERT_TRUE(nSystemThread::setPriority(nSystemThread::getCurrentHandle(),
                                                   nSystemThread::getCurrentId(), lowered));
            {
                tThreadPriorityGuard guard;
            }
            EXPECT_EQ(lowered, currentPriority());
        });
    worker.join();
}

TEST(ThreadPriorityGuard, WithoutThePrivilegeTheScopeRunsAtTheOldPriority)
{
    rlimit saved = {};
    ASSERT_EQ(0, getrlimit(RLIMIT_RTPRIO, &saved));
    const rlimit none = {0, saved.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_RTPRIO, &none));
    std::thread worker(
        []
        {
            ASSERT_TRUE(dropThreadPriorityPrivilege());
            const i32 before = currentPriority();
            {
                tThreadPriorityGuard guard;
                EXPECT_FALSE(guard.isRaised());
                EXPECT_EQ(before, currentPriority());
            }
            EXPECT_EQ(before, currentPriority());
        });
    worker.join();
    setrlimit(RLIMIT_RTPRIO, &saved);
}
