#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tAllocator.h"

#include <gtest/gtest.h>

#include <limits>
#include <list>
#include <new>

using namespace nOrvTarn000;

namespace
{

// More than any process can hold, on 32 and 64 bits alike; read at run time so
// that the compiler does not refuse the request itself.
volatile std::size_t g_impossible = std::numeric_limits<std::size_t>::max() - 4096;
#define kImpossible static_cast<std::size_t>(g_impossible)

struct tCounted
{
    static int s_constructed;
    explicit tCounted(int a_value) : m_value(a_value) { ++s_constructed; }
    int m_value;
};
int tCounted::s_constructed = 0;

} // namespace

TEST(tAllocation, WrappersReportExhaustionAndRefuseFatalStatus)
{
    tStatus status;
    void* pBlock = allocate(64, status);
    ASSERT_NE(nullptr, pBlock);
    release(pBlock, 64);
    pBlock = allocateLocked(64, status);
    ASSERT_NE(nullptr, pBlock);
    releaseLocked(pBlock, 64);
    EXPECT_TRUE(status.isNotFatal());

    // A fatal status allocates nothing and keeps its first code.
    tStatus fatal;
    fatal.setCode(kStatusTimedOut, "t", "t.cpp", 1);
    EXPECT_EQ(nullptr, allocate(16, fatal));
    EXPECT_EQ(kStatusTimedOut, fatal.getCode());
    EXPECT_FALSE(isSimulator());
}

TEST(tAllocation, StatusNewConstructsOnlyWhenItCanAllocate)
{
    tCounted::s_constructed = 0;
    tStatus status;
    tCounted* pObject = new (status) tCounted(5);
    ASSERT_NE(nullptr, pObject);
    EXPECT_EQ(5, pObject->m_value);
    delete pObject;

    tStatus fatal;
    fatal.setCode(kStatusCancelled, "c", "c.cpp", 1);
    EXPECT_EQ(nullptr, new (fatal) tCounted(6));
    EXPECT_EQ(1, tCounted::s_constructed) << "no constructor runs without memory";

    tStatus huge;
    EXPECT_EQ(nullptr, operator new[](kImpossible, huge, true));
    EXPECT_EQ(kStatusMemoryFull, huge.getCode());

    delete static_cast<tCounted*>(nullptr); // null is ignored
}

TEST(tAllocation, PlainNewYieldsNullInsteadOfThrowing)
{
    void* pBlock = ::operator new(kImpossible);
    EXPECT_EQ(nullptr, pBlock);
}

TEST(tAllocator, FailureSetsTheFlagAndCheckReportsIt)
{
    tAllocator<u64> allocator;
    EXPECT_EQ(nullptr, allocator.allocate(0));
    EXPECT_FALSE(allocator.hasFailed()) << "zero-size requests are no failure";
    EXPECT_EQ(nullptr, allocator.allocate(kImpossible / 8));
    EXPECT_TRUE(allocator.hasFailed());

    // The flag survives a rebind, as inside a node-based container.
    tAllocator<char> rebound(allocator);
    EXPECT_TRUE(rebound.hasFailed());
    rebound.resetFailure();
    EXPECT_FALSE(rebound.hasFailed());
}

TEST(tAllocator, ContainersWorkAndCheckPassesWhileMemoryLasts)
{
    std::list<int, tAllocator<int>> values;
    for (int i = 0; i < 100; ++i)
    {
        values.push_back(i);
    }
    tStatus status;
    EXPECT_TRUE(CHECK_ALLOCATION(values, status));
    EXPECT_TRUE(status.isNotFatal());

    tString text("orvptp3p");
    text += " trace";
    EXPECT_TRUE(CHECK_ALLOCATION(text, status));
    EXPECT_EQ("orvptp3p trace", std::string(text.c_str()));
}

TEST(tAllocator, CheckTurnsFlagIntoMemoryFullAtItsPlace)
{
    struct tFailedContainer
    {
        tAllocator<int> get_allocator() const
        {
            tAllocator<int> allocator;
            allocator.allocate(kImpossible / 4);
            return allocator;
        }
    } container;
    tStatus status;
    const int line = __LINE__ + 1;
    EXPECT_FALSE(CHECK_ALLOCATION(container, status));
    EXPECT_EQ(kStatusMemoryFull, status.getCode());
    EXPECT_EQ(line, status.getLine());
    EXPECT_STREQ("test", status.getComponent());
}
