#include "tFixedSizeFifo.h"

#include <gtest/gtest.h>

#include <vector>

using nOrvTarn000::kStatusInternalError;
using nOrvTarn000::tStatus;
using zelmarPluginCore_1_0::tFixedSizeFifo;

namespace
{

// Counts default constructions, which all happen when the FIFO is built.
struct tCounted
{
    static int s_constructed;
    tCounted() : m_value(-1) { ++s_constructed; }
    explicit tCounted(int a_value) : m_value(a_value) {}
    int m_value;
};
int tCounted::s_constructed = 0;

std::vector<int> popAll(tFixedSizeFifo<int>& a_fifo)
{
    std::vector<int> items;
    tStatus status;
    while (a_fifo.getCount() > 0)
    {
        items.push_back(a_fifo.pop(status));
    }
    EXPECT_TRUE(status.isNotFatal());
    return items;
}

} // namespace

TEST(FixedSizeFifo, EntriesAreBuiltUpFrontAndNeverAfterwards)
{
    tCounted::s_constructed = 0;
    tStatus status;
    tFixedSizeFifo<tCounted> fifo(4, status);
    EXPECT_EQ(4, tCounted::s_constructed);
    fifo.push(tCounted(7), status);
    fifo.push(tCounted(8), status);
    EXPECT_EQ(7, fifo.pop(status).m_value);
    EXPECT_EQ(4, tCounted::s_constructed) << "push and pop copy into the existing entries";
    EXPECT_TRUE(status.isNotFatal());
}

TEST(FixedSizeFifo, CapacityOneTakesOneEntryAtATime)
{
    tStatus status;
    tFixedSizeFifo<int> fifo(1, status);
    fifo.push(1, status);
    EXPECT_EQ(1, fifo.pop(status));
    fifo.push(2, status);
    ASSERT_TRUE(status.isNotFatal());

    fifo.push(3, status);
    EXPECT_EQ(kStatusInternalError, status.getCode());
    status.clear();
    EXPECT_EQ(1u, fifo.getCount());
    EXPECT_EQ(2, fifo.pop(status)) << "the refused entry was not stored";
}

TEST(FixedSizeFifo, PopFromEmptyGivesDefaultAndFails)
{
    tStatus status;
    tFixedSizeFifo<int> fifo(2, status);
    EXPECT_EQ(0, fifo.pop(status));
    EXPECT_EQ(kStatusInternalError, status.getCode());
    EXPECT_EQ(0u, fifo.getCount());
}

TEST(FixedSizeFifo, IndicesWrapAtTheCapacity)
{
    tStatus status;
    tFixedSizeFifo<int> fifo(3, status);
    for (int round = 0; round < 4; ++round)
    {
        fifo.push(10 * round + 1, status);
        fifo.push(10 * round + 2, status);
        fifo.push(10 * round + 3, status);
        ASSERT_TRUE(status.isNotFatal()) << "round " << round;
        EXPECT_EQ(3u, fifo.getCount());
        EXPECT_EQ(10 * round + 1, fifo.pop(status));
        fifo.push(10 * round + 4, status);
        EXPECT_EQ((std::vector<int>{10 * round + 2, 10 * round + 3, 10 * round + 4}), popAll(fifo));
        // Leave the indices one place further on for the next round.
        fifo.push(0, status);
        fifo.pop(status);
    }
    EXPECT_EQ(3u, fifo.getCapacity());
}

TEST(FixedSizeFifo, DropDiscardsTheOldestAcrossTheWrap)
{
    tStatus status;
    tFixedSizeFifo<int> fifo(4, status);
    for (int item = 1; item <= 4; ++item)
    {
        fifo.push(item, status);
    }
    fifo.pop(status);
    fifo.pop(status);
    fifo.push(5, status);
    fifo.push(6, status);
    fifo.drop(3);
    EXPECT_EQ(1u, fifo.getCount());
    EXPECT_EQ(std::vector<int>{6}, popAll(fifo));
    EXPECT_TRUE(status.isNotFatal());
}

TEST(FixedSizeFifo, DropOfAllOrMoreEmptiesAndLeavesFullCapacity)
{
    for (u32 excess = 0; excess < 2; ++excess)
    {
        tStatus status;
        tFixedSizeFifo<int> fifo(3, status);
        fifo.push(1, status);
        fifo.push(2, status);
        fifo.pop(status);
        fifo.drop(1 + excess);
        EXPECT_EQ(0u, fifo.getCount());
        fifo.push(7, status);
        fifo.push(8, status);
        fifo.push(9, status);
        EXPECT_TRUE(status.isNotFatal());
        EXPECT_EQ((std::vector<int>{7, 8, 9}), popAll(fifo));
    }
}

TEST(FixedSizeFifo, ClearEmpties)
{
    tStatus status;
    tFixedSizeFifo<int> fifo(2, status);
    fifo.push(1, status);
    fifo.push(2, status);
    fifo.clear();
    EXPECT_EQ(0u, fifo.getCount());
    fifo.push(3, status);
    fifo.push(4, status);
    EXPECT_EQ((std::vector<int>{3, 4}), popAll(fifo));
}

TEST(FixedSizeFifo, FatalStatusLeavesEverythingAlone)
{
    tStatus broken;
    ORVTARN_SET_CODE(broken, nOrvTarn000::kStatusInvalidArgument);
    tFixedSizeFifo<int> unbuilt(4, broken);
    EXPECT_EQ(0u, unbuilt.getCapacity()) << "no storage on a fatal status";

    tStatus status;
    unbuilt.push(1, status);
    EXPECT_EQ(kStatusInternalError, status.getCode()) << "a FIFO without storage takes nothing";

    tStatus fresh;
    tFixedSizeFifo<int> fifo(2, fresh);
    fifo.push(5, fresh);
    fifo.push(6, broken);
    EXPECT_EQ(1u, fifo.getCount());
    EXPECT_EQ(0, fifo.pop(broken));
    EXPECT_EQ(1u, fifo.getCount());
    EXPECT_EQ(nOrvTarn000::kStatusInvalidArgument, broken.getCode()) << "the first code stays";
}
