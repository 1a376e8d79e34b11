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

TEST(FixedSizeFifo, KeepsTheOrderAcrossTheWrapAndRefusesWhenFullOrEmpty)
{
    tStatus status;
    tFixedSizeFifo<int> fifo(3, status);
    for (int round = 0; round < 4; ++round)
    {
        for (int item = 1; item <= 3; ++item)
        {
            fifo.push(10 * round + item, status);
        }
        ASSERT_TRUE(status.isNotFatal()) << "round " << round;
        fifo.push(99, status);
        EXPECT_EQ(kStatusInternalError, status.getCode()) << "full";
        status.clear();
        EXPECT_EQ(10 * round + 1, fifo.pop(status));
        fifo.push(10 * round + 4, status);
        EXPECT_EQ((std::vector<int>{10 * round + 2, 10 * round + 3, 10 * round + 4}), popAll(fifo));
        // Leave the indices one place further on for the next round.
        fifo.push(0, status);
        fifo.pop(status);
    }
    EXPECT_EQ(0, fifo.pop(status));
    EXPECT_EQ(kStatusInternalError, status.getCode()) << "empty";

    tStatus one;
    tFixedSizeFifo<int> single(1, one);
    single.push(1, one);
    EXPECT_EQ(1, single.pop(one));
    single.push(2, one);
    EXPECT_EQ(2, single.pop(one));
    EXPECT_TRUE(one.isNotFatal());
}

TEST(FixedSizeFifo, DropDiscardsTheOldestAndAllOrMoreEmptyIt)
{
    for (u32 count : {3u, 4u, 5u})
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
        fifo.drop(count);
        EXPECT_EQ(count == 3 ? std::vector<int>{6} : std::vector<int>{}, popAll(fifo)) << count;
        for (int item = 7; item <= 10; ++item)
        {
            fifo.push(item, status);
        }
        EXPECT_EQ((std::vector<int>{7, 8, 9, 10}), popAll(fifo)) << count;
        fifo.push(1, status);
        fifo.clear();
        EXPECT_EQ(0u, fifo.getCount());
        EXPECT_TRUE(status.isNotFatal());
    }
}

TEST(FixedSizeFifo, EntriesAreBuiltUpFrontAndAFatalStatusChangesNothing)
{
    tCounted::s_constructed = 0;
    tStatus status;
    tFixedSizeFifo<tCounted> counted(4, status);
    counted.push(tCounted(7), status);
    EXPECT_EQ(7, counted.pop(status).m_value);
    EXPECT_EQ(4, tCounted::s_constructed) << "push and pop copy into the existing entries";

    tStatus broken;
    ORVTARN_SET_CODE(broken, nOrvTarn000::kStatusInvalidArgument);
    tFixedSizeFifo<int> unbuilt(4, broken);
    EXPECT_EQ(0u, unbuilt.getCapacity()) << "no storage on a fatal status";
    unbuilt.push(1, status);
    EXPECT_EQ(kStatusInternalError, status.getCode()) << "a FIFO without storage takes nothing";

    tStatus fresh;
    tFixedSizeFifo<int> fifo(2, fresh);
    fifo.push(5, fresh);
    fifo.push(6, broken);
    EXPECT_EQ(0, fifo.pop(broken));
    EXPECT_EQ(std::vector<int>{5}, popAll(fifo));
    EXPECT_EQ(nOrvTarn000::kStatusInvalidArgument, broken.getCode()) << "the first code stays";
}
