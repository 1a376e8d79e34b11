#include "orvptp/tTimeInterval.h"

#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{
namespace
{

// a + b at 64 bits, stuck at the ends of the range instead of wrapping.
i64 saturatingAdd(i64 a_left, i64 a_right)
{
    if (a_right > 0 && a_left > tTimeInterval::kMaxScaled - a_right)
    {
        return tTimeInterval::kMaxScaled;
    }
    if (a_right < 0 && a_left < tTimeInterval::kMinScaled - a_right)
    {
        return tTimeInterval::kMinScaled;
    }
    return a_left + a_right;
}

i64 saturatingSubtract(i64 a_left, i64 a_right)
{
    if (a_right < 0 && a_left > tTimeInterval::kMaxScaled + a_right)
    {
        return tTimeInterval::kMaxScaled;
    }
    if (a_right > 0 && a_left < tTimeInterval::kMinScaled + a_right)
    {
        return tTimeInterval::kMinScaled;
    }
    return a_left - a_right;
}

} // namespace

tTimeInterval::tTimeInterval(i64 a_nanoseconds)
{
    // The high 32-bit word decides whether the product fits: at most 2^47 - 1
    // and at least -2^47 nanoseconds do.
    const i64 highWord = a_nanoseconds >> 32;
    if (highWord > 0x7FFF)
    {
        m_scaledNanoseconds = kMaxScaled;
    }
    else if (highWord < -0x8000)
    {
        m_scaledNanoseconds = kMinScaled;
    }
    else
    {
        m_scaledNanoseconds = a_nanoseconds * kScale;
    }
}

tTimeInterval tTimeInterval::operator+(const tTimeInterval& a_other) const
{
    return tTimeInterval(saturatingAdd(m_scaledNanoseconds, a_other.m_scaledNanoseconds) / kScale);
}

tTimeInterval tTimeInterval::operator-(const tTimeInterval& a_other) const
{
    return tTimeInterval(saturatingSubtract(m_scaledNanoseconds, a_other.m_scaledNanoseconds) /
                         kScale);
}

tTimeInterval tTimeInterval::operator/(const tTimeInterval& a_divisor) const
{
    const i64 divisor = a_divisor.m_scaledNanoseconds;
    if (divisor == 0)
    {
        tTimeInterval result;
        result.m_scaledNanoseconds =
            m_scaledNanoseconds > 0 ? kMaxScaled : (m_scaledNanoseconds < 0 ? kMinScaled : 0);
        return result;
    }
    if (divisor == -1 && m_scaledNanoseconds == kMinScaled)
    {
        return tTimeInterval(kMaxScaled);
    }
    return tTimeInterval(m_scaledNanoseconds / divisor);
}

tTrace& tTimeInterval::trace(tTrace& a_trace)
{
    return a_trace.writeFormatted("scaledNanoseconds: %lld",
                                  static_cast<long long>(m_scaledNanoseconds));
}

void tTimeInterval::serialize(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeInteger64(m_scaledNanoseconds, a_status);
}

void tTimeInterval::deserialize(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    i64 received = 0;
    a_target.readInteger64(received, a_status);
    if (a_status.isNotFatal())
    {
        m_scaledNanoseconds = received;
    }
}

} // namespace nOrvPTP000
