#include "tTimeValue.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

using zelmarPluginCore_1_0::tTimeValue;

namespace
{

void expectValue(const tTimeValue& a_value, u64 a_magnitude, i32 a_sign)
{
    EXPECT_EQ(a_magnitude, a_value.getMagnitude());
    EXPECT_EQ(a_sign, a_value.getSign());
}

} // namespace

TEST(TimeValueConstruction, DefaultIsPositiveZero)
{
    expectValue(tTimeValue(), 0, 1);
    EXPECT_EQ(0, tTimeValue().getSignedNanoseconds());
}

TEST(TimeValueConstruction, SecondsAndNanosecondsKeepTheSignGiven)
{
    expectValue(tTimeValue(3u, 250u, -1), 3000000250ull, -1);
    expectValue(tTimeValue(3u, 250u, 1), 3000000250ull, 1);
    expectValue(tTimeValue(0u, 0u, -1), 0, -1);
    expectValue(tTimeValue(0u, 7u, -5), 7, -1);

    const tTimeValue largest(0xFFFFFFFFu, 999999999u, 1);
    EXPECT_EQ(0xFFFFFFFFull, largest.getSeconds()) << "seconds beyond 32 bits of nanoseconds";
    EXPECT_EQ(999999999u, largest.getNanoseconds());
}

TEST(TimeValueConstruction, SignedNanosecondsGiveMagnitudeAndSign)
{
    expectValue(tTimeValue(i32(-1500)), 1500, -1);
    expectValue(tTimeValue(i32(1500)), 1500, 1);
    expectValue(tTimeValue(std::numeric_limits<i32>::min()), 2147483648ull, -1);
    expectValue(tTimeValue(i64(-5000000000ll)), 5000000000ull, -1);
    expectValue(tTimeValue(i64(0)), 0, 1);

    const tTimeValue lowest(std::numeric_limits<i64>::min());
    expectValue(lowest, 0x8000000000000000ull, -1);
    EXPECT_EQ(std::numeric_limits<i64>::min(), lowest.getSignedNanoseconds());
}

TEST(TimeValueConstruction, SecondsAsFloatingPointTruncateBothParts)
{
    const tTimeValue half(-0.5);
    expectValue(half, 500000000ull, -1);
    EXPECT_EQ(-0.5, half.toSeconds());

    expectValue(tTimeValue(-0.0), 0, 1);
    expectValue(tTimeValue(2.75), 2750000000ull, 1);
    // The fraction is truncated, not rounded.
    expectValue(tTimeValue(2.5e-9), 2, 1);
    expectValue(tTimeValue(-1.0000000019), 1000000001ull, -1);
    EXPECT_EQ(1u, tTimeValue(1.0000000019).getSeconds());
}

TEST(TimeValueConstruction, FloatingPointOutsideTheRangeIsHeldAtItsEnd)
{
    expectValue(tTimeValue(std::numeric_limits<f64>::quiet_NaN()), 0, 1);
    const tTimeValue huge(1e30);
    EXPECT_EQ(1, huge.getSign());
    EXPECT_GT(huge.getMagnitude(), 18000000000000000000ull);
    EXPECT_EQ(-1, tTimeValue(-std::numeric_limits<f64>::infinity()).getSign());
}

TEST(TimeValueConversion, PartsAndSignedNanoseconds)
{
    const tTimeValue value(i64(-12345678901ll));
    EXPECT_EQ(12u, value.getSeconds());
    EXPECT_EQ(345678901u, value.getNanoseconds());
    EXPECT_EQ(-12345678901ll, value.getSignedNanoseconds());
    EXPECT_DOUBLE_EQ(-12.345678901, value.toSeconds());
    EXPECT_DOUBLE_EQ(4.000000001, tTimeValue(4u, 1u, 1).toSeconds());
}

TEST(TimeValueArithmetic, AddAndSubtractTakeTheSignOfTheResult)
{
    const tTimeValue three(i64(3));
    const tTimeValue five(i64(5));
    expectValue(three - five, 2, -1);
    expectValue(five - three, 2, 1);
    expectValue(tTimeValue(i64(-3)) + five, 2, 1);
    expectValue(tTimeValue(i64(-3)) + tTimeValue(i64(-5)), 8, -1);
    expectValue(tTimeValue(2u, 600000000u, 1) + tTimeValue(1u, 700000000u, 1), 4300000000ull, 1);
}

TEST(TimeValueArithmetic, SubtractingEqualValuesGivesPositiveZero)
{
    const tTimeValue negative(i64(-42));
    expectValue(negative - negative, 0, 1);
    expectValue(tTimeValue(0u, 0u, -1) - tTimeValue(0u, 0u, -1), 0, 1);
}

TEST(TimeValueArithmetic, DivisionTruncatesTowardsZeroAndZeroDivisorGivesZero)
{
    expectValue(tTimeValue(i64(-7)) / 2, 3, -1);
    expectValue(tTimeValue(i64(7)) / -2, 3, -1);
    expectValue(tTimeValue(i64(-7)) / -2, 3, 1);
    expectValue(tTimeValue(i64(1)) / 2, 0, 1);
    expectValue(tTimeValue(i64(-99)) / 0, 0, 1);
    expectValue(tTimeValue(i64(-99)) / -1, 99, 1);
}

TEST(TimeValueArithmetic, TransmitTimeFormulaIsAfterPlusHalfTheSpan)
{
    // The messaging's send time: the later reading plus half the time the
    // send call took.
    const tTimeValue before(100u, 999999000u, 1);
    const tTimeValue after(101u, 1000u, 1);
    const tTimeValue sent = after + (after - before) / 2;
    EXPECT_EQ(101u, sent.getSeconds());
    EXPECT_EQ(2000u, sent.getNanoseconds());
}

TEST(TimeValueComparison, OrderFollowsTheSignedValue)
{
    const tTimeValue minusTen(i64(-10));
    const tTimeValue minusTwo(i64(-2));
    const tTimeValue plusOne(i64(1));
    const tTimeValue plusTen(i64(10));

    EXPECT_LT(minusTen, minusTwo) << "negative magnitudes compare inverted";
    EXPECT_GT(minusTwo, minusTen);
    EXPECT_LT(minusTwo, plusOne);
    EXPECT_GT(plusOne, minusTen) << "a positive value beats a larger negative magnitude";
    EXPECT_LT(plusOne, plusTen);
    EXPECT_LE(plusOne, tTimeValue(i64(1)));
    EXPECT_GE(plusOne, tTimeValue(i64(1)));
    EXPECT_FALSE(plusOne < plusOne);
}

TEST(TimeValueComparison, EqualityMeansAllFieldsSoNegativeZeroDiffers)
{
    const tTimeValue negativeZero(0u, 0u, -1);
    EXPECT_NE(negativeZero, tTimeValue());
    EXPECT_LT(negativeZero, tTimeValue());
    EXPECT_EQ(tTimeValue(1u, 5u, 1), tTimeValue(i64(1000000005)));
}
