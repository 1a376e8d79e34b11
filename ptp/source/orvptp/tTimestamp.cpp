#include "orvptp/tTimestamp.h"

#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tTimeInterval tTimestamp::operator-(const tTimestamp& a_other) const
{
    // An interval holds at most 2^47 ns, about 140,737 s. Seconds differences
    // well beyond that saturate at once, which also keeps the 64-bit total
    // below from overflowing (48-bit wire seconds would overflow it).
    const i64 kSaturatingSeconds = 200000;
    const i64 seconds = static_cast<i64>(m_secondsField - a_other.m_secondsField);
    if (seconds > kSaturatingSeconds)
    {
        return tTimeInterval(tTimeInterval::kMaxScaled);
    }
    if (seconds < -kSaturatingSeconds)
    {
        return tTimeInterval(tTimeInterval::kMinScaled);
    }
    const i64 nanoseconds =
        static_cast<i64>(m_nanosecondsField) - static_cast<i64>(a_other.m_nanosecondsField);
    return tTimeInterval(nanoseconds + seconds * static_cast<i64>(kNanosecondsPerSecond));
}

tTimestamp tTimestamp::movedBack(i64 a_nanoseconds) const
{
    tTimestamp result(*this);
    if (a_nanoseconds > 0)
    {
        const u64 whole = static_cast<u64>(a_nanoseconds) / kNanosecondsPerSecond;
        const u32 rest = static_cast<u32>(static_cast<u64>(a_nanoseconds) % kNanosecondsPerSecond);
        result.m_secondsField -= whole;
        if (rest <= result.m_nanosecondsField)
        {
            result.m_nanosecondsField -= rest;
        }
        else
        {
            result.m_secondsField -= 1;
            result.m_nanosecondsField += kNanosecondsPerSecond - rest;
        }
    }
    else if (a_nanoseconds < 0)
    {
        const u64 magnitude = 0 - static_cast<u64>(a_nanoseconds);
        result.m_secondsField += magnitude / kNanosecondsPerSecond;
        result.m_nanosecondsField += static_cast<u32>(magnitude % kNanosecondsPerSecond);
        if (result.m_nanosecondsField >= kNanosecondsPerSecond)
        {
            result.m_nanosecondsField -= kNanosecondsPerSecond;
            result.m_secondsField += 1;
        }
    }
    return result;
}

tTimestamp tTimestamp::operator-(const tTimeInterval& a_interval) const
{
    return movedBack(a_interval.getNanoseconds());
}

tTimestamp tTimestamp::operator+(const tTimeInterval& a_interval) const
{
    // Whole nanoseconds of an interval lie within +-2^47, so negation is safe.
    return movedBack(-a_interval.getNanoseconds());
}

tTrace& tTimestamp::trace(tTrace& a_trace)
{
    a_trace.writeFormatted("secondsField: %llu", static_cast<unsigned long long>(m_secondsField));
    return a_trace.writeFormatted(" nanosecondsField: %u",
                                  static_cast<unsigned>(m_nanosecondsField));
}

void tTimestamp::serialize(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeUInteger48(m_secondsField, a_status);
    a_target.writeUInteger32(m_nanosecondsField, a_status);
}

void tTimestamp::deserialize(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    u64 seconds = 0;
    u32 nanoseconds = 0;
    a_target.readUInteger48(seconds, a_status);
    a_target.readUInteger32(nanoseconds, a_status);
    if (a_status.isNotFatal())
    {
        m_secondsField = seconds;
        m_nanosecondsField = nanoseconds;
    }
}

} // namespace nOrvPTP000
