#include "orvtarn/protons/timer/tTime.h"

#include <gtest/gtest.h>

#include <limits>

using namespace nOrvTarn000;

namespace
{

TEST(ConvertTimeTest, EachStepMultipliesWithWrapOrDividesAndTruncates)
{
    const u64 kMax = std::numeric_limits<u64>::max();
    const struct
    {
        u64 m_value;
        i32 m_from;
        i32 m_to;
        u64 m_expected;
    } kCases[] = {
        {1, kHours, kNanoseconds, 3600000000000ull},
        {1, kHours, kMinutes, 60},
        {1, kSeconds, kPicoseconds, 1000000000000ull},
        {42, kMinutes, kMinutes, 42},
        {999, kMilliseconds, kSeconds, 0},
        {1000, kMilliseconds, kSeconds, 1},
        {1999, kMicroseconds, kSeconds, 0},
        {1999, kMicroseconds, kMilliseconds, 1},
        {119, kMinutes, kHours, 1},
        {3600000000000999ull, kPicoseconds, kHours, 1},
        {3599999999999999ull, kPicoseconds, kHours, 0},
        {kMax, kHours, kPicoseconds, 0ull - 3600000000000000ull},
        {5, kHours, 7, 5},
        {5, -1, kSeconds, 5},
    };
    for (const auto& testCase : kCases)
    {
        tStatus status;
        EXPECT_EQ(testCase.m_expected,
                  convertTime(testCase.m_value, testCase.m_from, testCase.m_to, status))
            << testCase.m_value << " from " << testCase.m_from << " to " << testCase.m_to;
        const bool known = testCase.m_to != 7 && testCase.m_from != -1;
        EXPECT_EQ(known ? kStatusSuccess : kStatusInvalidArgument, status.getCode());
    }
    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    EXPECT_EQ(5ull, convertTime(5, kHours, kNanoseconds, failed));
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
}

TEST(ClockTest, ClocksAdvanceAtLeastAsLongAsASleepAndAFatalStatusReadsNothing)
{
    tStatus status;
    const u64 msBefore = getMilliseconds(status);
    const u64 countBefore = getPerformanceCount(status);
    sleepMilliseconds(20, status);
    const u64 countAfter = getPerformanceCount(status);
    EXPECT_GE(getMilliseconds(status) - msBefore, 20ull);
    EXPECT_GE(countAfter - countBefore, 20000000ull) << "one count per nanosecond";
    EXPECT_EQ(kStatusSuccess, status.getCode());

    tStatus failed;
    ORVTARN_SET_CODE(failed, kStatusCancelled);
    EXPECT_EQ(0ull, getMilliseconds(failed));
    EXPECT_EQ(0ull, getPerformanceCount(failed));
}

} // namespace
