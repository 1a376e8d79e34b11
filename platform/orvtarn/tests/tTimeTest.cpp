#include "orvtarn/protons/timer/tTime.h"

#include <gtest/gtest.h>

#include <limits>

using namespace nOrvTarn000;

namespace
{

u64 convert(u64 a_value, i32 a_from, i32 a_to)
{
    tStatus status;
    const u64 result = convertTime(a_value, a_from, a_to, status);
    EXPECT_EQ(kStatusSuccess, status.getCode());
    return result;
}

TEST(ConvertTimeTest, TowardsSmallerUnitsMultipliesByEachStep)
{
    EXPECT_EQ(3600000000000ull, convert(1, kHours, kNanoseconds));
    EXPECT_EQ(60ull, convert(1, kHours, kMinutes));
    EXPECT_EQ(1000000000000ull, convert(1, kSeconds, kPicoseconds));
    EXPECT_EQ(7000ull, convert(7, kMilliseconds, kMicroseconds));
    EXPECT_EQ(42ull, convert(42, kMinutes, kMinutes));
}

TEST(ConvertTimeTest, TowardsLargerUnitsTruncates)
{
    EXPECT_EQ(0ull, convert(999, kMilliseconds, kSeconds));
    EXPECT_EQ(1ull, convert(1000, kMilliseconds, kSeconds));
    EXPECT_EQ(0ull, convert(1999, kMicroseconds, kSeconds));
    EXPECT_EQ(1ull, convert(1999, kMicroseconds, kMilliseconds));
    EXPECT_EQ(0ull, convert(59, kSeconds, kMinutes));
    EXPECT_EQ(1ull, convert(119, kMinutes, kHours));
    EXPECT_EQ(1ull, convert(3600000000000999ull, kPicoseconds, kHours));
    EXPECT_EQ(0ull, convert(3599999999999999ull, kPicoseconds, kHours));
}

TEST(ConvertTimeTest, MultiplicationWrapsInSixtyFourBits)
{
    const u64 kMax = std::numeric_limits<u64>::max();
    // max * 3.6e15 modulo 2^64 is 2^64 - 3.6e15.
    EXPECT_EQ(0ull - 3600000000000000ull, convert(kMax, kHours, kPicoseconds));
    EXPECT_EQ(kMax * 1000u, convert(kMax, kSeconds, kMilliseconds));
}

TEST(ConvertTimeTest, FatalStatusOrUnknownUnitGivesTheValueBack)
{
    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    EXPECT_EQ(5ull, convertTime(5, kHours, kNanoseconds, failed));
    EXPECT_EQ(kStatusCancelled, failed.getCode());

    tStatus status;
    EXPECT_EQ(5ull, convertTime(5, kHours, 7, status));
    EXPECT_EQ(kStatusInvalidArgument, status.getCode());
    status.clear();
    EXPECT_EQ(5ull, convertTime(5, -1, kSeconds, status));
    EXPECT_EQ(kStatusInvalidArgument, status.getCode());
}

TEST(ClockTableTest, ResolutionOfEachClock)
{
    tStatus status;
    EXPECT_EQ(kMilliseconds, getResolutionUnit(kClockTick, status));
    EXPECT_EQ(1ull, getResolution(kClockTick, status));
    EXPECT_EQ(kPicoseconds, getResolutionUnit(kClockPerformanceCounter, status));
    EXPECT_EQ(1000ull, getResolution(kClockPerformanceCounter, status));
    EXPECT_EQ(kStatusSuccess, status.getCode());

    EXPECT_EQ(0ull, getResolution(2, status));
    EXPECT_EQ(kStatusInvalidArgument, status.getCode());
    status.clear();
    EXPECT_EQ(0, getResolutionUnit(-1, status));
    EXPECT_EQ(kStatusInvalidArgument, status.getCode());

    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    EXPECT_EQ(0ull, getResolution(kClockTick, failed));
    EXPECT_EQ(kStatusCancelled, failed.getCode());
}

TEST(ClockTest, ClocksAdvanceAtLeastAsLongAsASleep)
{
    tStatus status;
    const u64 msBefore = getMilliseconds(status);
    const u64 countBefore = getPerformanceCount(status);
    sleepMilliseconds(20, status);
    const u64 countAfter = getPerformanceCount(status);
    const u64 msAfter = getMilliseconds(status);
    EXPECT_EQ(kStatusSuccess, status.getCode());
    EXPECT_GE(msAfter - msBefore, 20ull);
    // One count per nanosecond.
    EXPECT_GE(countAfter - countBefore, 20000000ull);
}

TEST(ClockTest, FatalStatusReadsNothing)
{
    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    EXPECT_EQ(0ull, getMilliseconds(failed));
    EXPECT_EQ(0ull, getPerformanceCount(failed));
    sleepMilliseconds(1, failed);
    EXPECT_EQ(kStatusCancelled, failed.getCode());
}

} // namespace
