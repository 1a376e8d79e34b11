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

struct tCounted
{
    static int s_constructed;
    explicit tCounted(int a_value) : m_value(a_value) { ++s_constructed; }
    int m_value;
};
int tCounted::s_constructed = 0;

} // namespace

TEST(tAllocation, StatusNewConstructsOnlyWhenItCanAllocateAndNothingThrows)
{
    tStatus status;
    std::unique_ptr<tCounted> pObject = makeOwned<tCounted>(status, 5);
    ASSERT_NE(nullptr, pObject);
    EXPECT_EQ(5, pObject->m_value);

    tStatus fatal;
    fatal.setCode(kStatusCancelled, "c", "c.cpp", 1);
    EXPECT_EQ(nullptr, new (fatal) tCounted(6));
    EXPECT_EQ(nullptr, allocate(16, fatal));
    EXPECT_EQ(kStatusCancelled, fatal.getCode());
    EXPECT_EQ(1, tCounted::s_constructed) << "no constructor runs without memory";
    tStatus huge;
    EXPECT_EQ(nullptr, operator new[](g_impossible, huge, true));
    EXPECT_EQ(kStatusMemoryFull, huge.getCode());
    EXPECT_EQ(nullptr, ::operator new(g_impossible)) << "plain new yields null too";
    delete static_cast<tCounted*>(nullptr);
    EXPECT_FALSE(isSimulator());
}

TEST(tAllocator, FailureSetsAFlagThatTravelsAndCheckTurnsItIntoMemoryFullAtItsPlace)
{
    std::list<int, tAllocator<int>> values(100, 1);
    tStatus status;
    EXPECT_TRUE(CHECK_ALLOCATION(values, status));
    tString text("orvptp3p");
    text += " trace";
    EXPECT_TRUE(CHECK_ALLOCATION(text, status));
    EXPECT_TRUE(status.isNotFatal());

    tAllocator<u64> allocator;
    EXPECT_EQ(nullptr, allocator.allocate(0));
    EXPECT_FALSE(allocator.hasFailed()) << "zero-size requests are no failure";
    EXPECT_EQ(nullptr, allocator.allocate(g_impossible / 8));
    struct tFailedContainer
    {
        tAllocator<char> m_allocator;
        // The flag survives a rebind, as inside a node-based container.
        tAllocator<char> get_allocator() const { return m_allocator; }
    } container{tAllocator<char>(allocator)};
    const int line = __LINE__ + 1;
    EXPECT_FALSE(CHECK_ALLOCATION(container, status));
    EXPECT_EQ(kStatusMemoryFull, status.getCode());
    EXPECT_EQ(line, status.getLine());
    EXPECT_STREQ("test", status.getComponent());
    container.m_allocator.resetFailure();
    EXPECT_FALSE(container.m_allocator.hasFailed());
}
