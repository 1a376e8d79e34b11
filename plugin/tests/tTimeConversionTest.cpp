#include "tTimeConversion.h"
#include "tKernelTimestamps.h"
#include "tPluginTestSupport.h"

#include <gtest/gtest.h>

using namespace nZelmarPtpPlugin_1_0;
using nOrvPTP000::tTimestamp;
using nOrvTarn000::tStatus;
using zelmarPluginCore_1_0::tTimeValue;

// Positive time values and back; seconds beyond the range are held, negative
// times become zero.
TEST(TimeConversion, TimestampsBecomePositiveTimeValuesAndBack)
{
    const tTimestamp time(1700000000u, 999999999u);
    const tTimeValue value = toTimeValue(time);
    EXPECT_EQ(1, value.getSign());
    EXPECT_EQ(999999999u, value.getNanoseconds());
    EXPECT_EQ(time, toTimestamp(value));
    EXPECT_EQ(9223372035u, toTimeValue(tTimestamp(0xFFFFFFFFFFFFull, 5)).getSeconds());
    EXPECT_EQ(tTimestamp(0, 0), toTimestamp(tTimeValue(i64(-1))));
}

TEST(TimeConversion, SystemTimeMovesByTheSpanToTheTimekeeperAtTheMidpointOfTheSystemReadings)
{
    const i64 kSecond = 1000000000;
    struct tCase
    {
        i64 m_stamp;
        i64 m_before;
        tTimestamp m_timekeeper;
        i64 m_after;
        tTimestamp m_expected;
    };
    const tCase cases[] = {
        // 1000 s ahead, read in the middle of a 100 ns window.
        {100 * kSecond, 200 * kSecond, tTimestamp(1200, 50), 200 * kSecond + 100,
         tTimestamp(1100, 0)},
        // 37 ms behind, across a second.
        {5 * kSecond + 10, 6 * kSecond, tTimestamp(5, 963000000), 6 * kSecond,
         tTimestamp(4, 963000010)},
        // An odd window's midpoint rounds down.
        {9 * kSecond, 10 * kSecond, tTimestamp(20, 0), 10 * kSecond + 3, tTimestamp(18, 999999999)},
        // Before the timekeeper's epoch.
        {1 * kSecond, 100 * kSecond, tTimestamp(50, 0), 100 * kSecond, tTimestamp(0, 0)},
    };
    for (const tCase& item : cases)
    {
        EXPECT_EQ(item.m_expected,
                  systemToTimekeeperTime(tTimeValue(item.m_stamp), tTimeValue(item.m_before),
                                         item.m_timekeeper, tTimeValue(item.m_after)))
            << "stamp " << item.m_stamp;
    }
}

TEST(TimeConversion, KernelStampsAreCarriedIntoARunningTimekeepersTime)
{
    for (const i64 offset : {i64(-37000000), i64(1000000000000)})
    {
        nTest::tSystemTimekeeper timekeeper(offset);
        timespec stamp;
        ASSERT_EQ(0, clock_gettime(CLOCK_REALTIME, &stamp));
        tStatus status;
        tTimestamp time;
        ASSERT_TRUE(nKernelTimestamps::toTimekeeperTime(stamp, timekeeper, time, status));
        const i64 converted =
            static_cast<i64>(time.getSeconds()) * 1000000000 + time.getNanoseconds();
        // Off by at most half the span between the two system readings; the bound
        // only has to catch an offset that is missing or has the wrong sign.
        EXPECT_NEAR(stamp.tv_sec * i64(1000000000) + stamp.tv_nsec + offset, converted, 1e8)
            << "offset " << offset;
    }
}
