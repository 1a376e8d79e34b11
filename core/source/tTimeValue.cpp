#include "tTimeValue.h"

#include <cmath>

namespace zelmarPluginCore_1_0
{
namespace
{

// Two's complement by hand: the results of the arithmetic wrap instead of
// overflowing a signed type.
i64 toSigned(u64 a_bits)
{
    return static_cast<i64>(a_bits);
}

u64 toBits(i64 a_value)
{
    return static_cast<u64>(a_value);
}

} // namespace

tTimeValue::tTimeValue(u32 a_seconds, u32 a_nanoseconds, i32 a_sign)
    : m_magnitude(static_cast<u64>(a_seconds) * kNanosecondsPerSecond + a_nanoseconds),
      m_sign(a_sign < 0 ? -1 : 1)
{
}

tTimeValue::tTimeValue(i32 a_nanoseconds) : tTimeValue(static_cast<i64>(a_nanoseconds)) {}

tTimeValue::tTimeValue(i64 a_nanoseconds)
    : m_magnitude(a_nanoseconds < 0 ? 0u - toBits(a_nanoseconds) : toBits(a_nanoseconds)),
      m_sign(a_nanoseconds < 0 ? -1 : 1)
{
}

tTimeValue::tTimeValue(f64 a_seconds) : m_magnitude(0), m_sign(a_seconds < 0.0 ? -1 : 1)
{
    if (std::isnan(a_seconds))
    {
        return;
    }
    const f64 absolute = std::fabs(a_seconds);
    const f64 whole = std::trunc(absolute);
    const u64 kMaxSeconds = ~u64(0) / kNanosecondsPerSecond;
    if (whole >= static_cast<f64>(kMaxSeconds))
    {
        m_magnitude = kMaxSeconds * kNanosecondsPerSecond;
        return;
    }
    u64 nanoseconds = static_cast<u64>((absolute - whole) * 1e9);
    if (nanoseconds >= kNanosecondsPerSecond)
    {
        nanoseconds = kNanosecondsPerSecond - 1;
    }
    m_magnitude = static_cast<u64>(whole) * kNanosecondsPerSecond + nanoseconds;
}

f64 tTimeValue::toSeconds() const
{
    // Each step is rounded to a double through memory: the x87 unit of 32-bit
    // builds would otherwise keep extra precision, and -0.5 s would not come
    // back as exactly -0.5.
    volatile f64 fraction = static_cast<f64>(getNanoseconds()) * 1e-9;
    volatile f64 seconds = static_cast<f64>(getSeconds()) + fraction;
    return m_sign < 0 ? -seconds : seconds;
}

i64 tTimeValue::getSignedNanoseconds() const
{
    return toSigned(m_sign < 0 ? 0u - m_magnitude : m_magnitude);
}

tTimeValue tTimeValue::operator+(const tTimeValue& a_other) const
{
    return tTimeValue(
        toSigned(toBits(getSignedNanoseconds()) + toBits(a_other.getSignedNanoseconds())));
}

tTimeValue tTimeValue::operator-(const tTimeValue& a_other) const
{
    return tTimeValue(
        toSigned(toBits(getSignedNanoseconds()) - toBits(a_other.getSignedNanoseconds())));
}

tTimeValue tTimeValue::operator/(i32 a_divisor) const
{
    if (a_divisor == 0)
    {
        return tTimeValue();
    }
    const i64 dividend = getSignedNanoseconds();
    // The one quotient that leaves the signed range wraps like the rest.
    if (a_divisor == -1)
    {
        return tTimeValue(toSigned(0u - toBits(dividend)));
    }
    return tTimeValue(dividend / a_divisor);
}

bool tTimeValue::operator<(const tTimeValue& a_other) const
{
    if (m_sign != a_other.m_sign)
    {
        return m_sign < a_other.m_sign;
    }
    return m_sign > 0 ? m_magnitude < a_other.m_magnitude : m_magnitude > a_other.m_magnitude;
}

} // namespace zelmarPluginCore_1_0
