#include "tTimeConversion.h"

#include <gtest/gtest.h>

using namespace nZelmarPtpPlugin_1_0;
using nOrvPTP000::tTimestamp;
using zelmarPluginCore_1_0::tTimeValue;

TEST(TimeConversion, TimestampsBecomePositiveTimeValuesAndBack)
{
    const tTimestamp time(1700000000u, 999999999u);
    const tTimeValue value = toTimeValue(time);
    EXPECT_EQ(1, value.getSign());
    EXPECT_EQ(1700000000u, value.getSeconds());
    EXPECT_EQ(999999999u, value.getNanoseconds());
    EXPECT_EQ(time, toTimestamp(value));
    EXPECT_EQ(tTimestamp(0, 0), toTimestamp(toTimeValue(tTimestamp(0, 0))));
}

TEST(TimeConversion, SecondsBeyondTheRangeAreHeldAndNegativeTimesBecomeZero)
{
    const tTimeValue held = toTimeValue(tTimestamp(0xFFFFFFFFFFFFull, 5));
    EXPECT_EQ(1, held.getSign());
    EXPECT_EQ(9223372035u, held.getSeconds());
    EXPECT_EQ(tTimestamp(0, 0), toTimestamp(tTimeValue(i64(-1))));
}
