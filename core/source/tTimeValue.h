#pragma once
#include "orvtarn/quarks/tTypes.h"

namespace zelmarPluginCore_1_0
{

// A signed time or time span, held as a magnitude in nanoseconds and a sign of
// +1 or -1. The plug-in core's own time type: the arithmetic goes through
// signed 64-bit nanoseconds, so results that leave that range wrap.
class tTimeValue
{
public:
    static constexpr u64 kNanosecondsPerSecond = 1000000000u;

    // Zero, positive.
    tTimeValue() : m_magnitude(0), m_sign(1) {}
    // A negative a_sign gives -1, any other +1; a zero keeps the sign given.
    tTimeValue(u32 a_seconds, u32 a_nanoseconds, i32 a_sign);
    explicit tTimeValue(i32 a_nanoseconds);
    explicit tTimeValue(i64 a_nanoseconds);
    // Whole seconds and nanoseconds are both truncated; -0.0 counts as
    // positive. A value beyond the magnitude's range is held at its end, and
    // a value that is not a number gives zero.
    explicit tTimeValue(f64 a_seconds);

    f64 toSeconds() const;
    u64 getSeconds() const { return m_magnitude / kNanosecondsPerSecond; }
    u32 getNanoseconds() const { return static_cast<u32>(m_magnitude % kNanosecondsPerSecond); }
    i64 getSignedNanoseconds() const;
    u64 getMagnitude() const { return m_magnitude; }
    i32 getSign() const { return m_sign; }

    tTimeValue operator+(const tTimeValue& a_other) const;
    tTimeValue operator-(const tTimeValue& a_other) const;
    // A divisor of 0 gives zero.
    tTimeValue operator/(i32 a_divisor) const;

    // Equal means equal in magnitude and sign, so a negative zero differs
    // from a positive one and orders below it.
    bool operator==(const tTimeValue& a_other) const
    {
        return m_magnitude == a_other.m_magnitude && m_sign == a_other.m_sign;
    }
    bool operator!=(const tTimeValue& a_other) const { return !(*this == a_other); }
    bool operator<(const tTimeValue& a_other) const;
    bool operator>(const tTimeValue& a_other) const { return a_other < *this; }
    bool operator<=(const tTimeValue& a_other) const { return !(a_other < *this); }
    bool operator>=(const tTimeValue& a_other) const { return !(*this < a_other); }

private:
    u64 m_magnitude;
    i32 m_sign;
};

} // namespace zelmarPluginCore_1_0
