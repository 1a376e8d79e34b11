#include "tTimeValue.h"

#include <gtest/gtest.h>

#include <limits>

using zelmarPluginCore_1_0::tTimeValue;

namespace
{

struct tExpected
{
    u64 m_magnitude;
    i32 m_sign;
};

void expectValue(const tTimeValue& a_value, tExpected a_expected, int a_row)
{
    EXPECT_EQ(a_expected.m_magnitude, a_value.getMagnitude()) << "row " << a_row;
    EXPECT_EQ(a_expected.m_sign, a_value.getSign()) << "row " << a_row;
}

TEST(TimeValue, EachConstructionAndArithmeticGivesMagnitudeAndSign)
{
    const i64 kLowest = std::numeric_limits<i64>::min();
    const std::pair<tTimeValue, tExpected> kRows[] = {
        {tTimeValue(), {0, 1}},
        {tTimeValue(3u, 250u, -1), {3000000250ull, -1}},
        {tTimeValue(0u, 0u, -1), {0, -1}},
        {tTimeValue(0u, 7u, -5), {7, -1}},
        {tTimeValue(std::numeric_limits<i32>::min()), {2147483648ull, -1}},
        {tTimeValue(i64(-5000000000ll)), {5000000000ull, -1}},
        {tTimeValue(kLowest), {0x8000000000000000ull, -1}},
        // Seconds as floating point: both parts truncate, -0 is positive.
        {tTimeValue(-0.5), {500000000ull, -1}},
        {tTimeValue(-0.0), {0, 1}},
        {tTimeValue(2.5e-9), {2, 1}},
        {tTimeValue(-1.0000000019), {1000000001ull, -1}},
        {tTimeValue(std::numeric_limits<f64>::quiet_NaN()), {0, 1}},
        // The sign of a sum or difference is the result's; equal values give +0.
        {tTimeValue(i64(3)) - tTimeValue(i64(5)), {2, -1}},
        {tTimeValue(i64(-3)) + tTimeValue(i64(5)), {2, 1}},
        {tTimeValue(i64(-3)) + tTimeValue(i64(-5)), {8, -1}},
        {tTimeValue(2u, 600000000u, 1) + tTimeValue(1u, 700000000u, 1), {4300000000ull, 1}},
        {tTimeValue(i64(-42)) - tTimeValue(i64(-42)), {0, 1}},
        {tTimeValue(0u, 0u, -1) - tTimeValue(0u, 0u, -1), {0, 1}},
        // Division truncates towards zero; a divisor of 0 gives zero.
        {tTimeValue(i64(-7)) / 2, {3, -1}},
        {tTimeValue(i64(7)) / -2, {3, -1}},
        {tTimeValue(i64(-7)) / -2, {3, 1}},
        {tTimeValue(i64(1)) / 2, {0, 1}},
        {tTimeValue(i64(-99)) / 0, {0, 1}},
        {tTimeValue(i64(-99)) / -1, {99, 1}},
    };
    int row = 0;
    for (const auto& entry : kRows)
    {
        expectValue(entry.first, entry.second, row++);
    }
    EXPECT_EQ(kLowest, tTimeValue(kLowest).getSignedNanoseconds());
    EXPECT_EQ(-0.5, tTimeValue(-0.5).toSeconds());
    EXPECT_GT(tTimeValue(1e30).getMagnitude(), 18000000000000000000ull) << "held at the end";
    EXPECT_EQ(-1, tTimeValue(-std::numeric_limits<f64>::infinity()).getSign());

    const tTimeValue value(i64(-12345678901ll));
    EXPECT_EQ(12u, value.getSeconds());
    EXPECT_EQ(345678901u, value.getNanoseconds());
    EXPECT_EQ(-12345678901ll, value.getSignedNanoseconds());
    EXPECT_DOUBLE_EQ(-12.345678901, value.toSeconds());
    const tTimeValue largest(0xFFFFFFFFu, 999999999u, 1);
    EXPECT_EQ(0xFFFFFFFFull, largest.getSeconds()) << "seconds beyond 32 bits of nanoseconds";
}

TEST(TimeValue, OrderFollowsTheSignedValueAndEqualityAllFields)
{
    const tTimeValue ordered[] = {tTimeValue(i64(-10)), tTimeValue(i64(-2)), tTimeValue(0u, 0u, -1),
                                  tTimeValue(),         tTimeValue(i64(1)),  tTimeValue(i64(10))};
    for (std::size_t low = 0; low < 6; ++low)
    {
        for (std::size_t high = 0; high < 6; ++high)
        {
            EXPECT_EQ(low < high, ordered[low] < ordered[high]) << low << " " << high;
            EXPECT_EQ(low == high, ordered[low] == ordered[high]) << low << " " << high;
        }
    }
    EXPECT_LE(tTimeValue(i64(1)), tTimeValue(i64(1)));
    EXPECT_GE(tTimeValue(i64(1)), tTimeValue(i64(1)));
    EXPECT_EQ(tTimeValue(1u, 5u, 1), tTimeValue(i64(1000000005)));
}

} // namespace
