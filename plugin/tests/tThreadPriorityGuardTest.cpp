#include "tThreadPriorityGuard.h"
#include "tPriorityPrivilege.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

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

// The guard raises the thread to the highest priority for its scope where it
// may, and leaves the old priority, the default or another, in place after
// it; where it may not, the scope runs at the old priority.
TEST(ThreadPriorityGuard, RaisesForItsScopeWhereItMayAndRestores)
{
    for (const bool privileged : {true, false})
    {
        std::optional<nOrvTarn000::tNoPriorityRaises> limits;
        if (!privileged)
        {
            limits.emplace();
        }
        std::thread worker(
            [privileged, &limits]
            {
                if (!privileged)
                {
                    ASSERT_TRUE(limits->isSet() && nOrvTarn000::dropNiceCapability());
                }
                for (const i32 before :
                     {nOrvTarn000::kThreadPriorityLow, nOrvTarn000::kThreadPriorityLowest})
                {
                    // Lowering needs no privilege.
                    ASSERT_TRUE(nSystemThread::setPriority(nSystemThread::getCurrentHandle(),
                                                           nSystemThread::getCurrentId(), before));
                    {
                        tThreadPriorityGuard guard;
                        EXPECT_EQ(guard.isRaised() ? nOrvTarn000::kThreadPriorityHighest : before,
                                  currentPriority());
                        EXPECT_FALSE(!privileged && guard.isRaised());
                    }
                    EXPECT_EQ(before, currentPriority());
                }
            });
        worker.join();
    }
}

} // namespace
