#include "tTimeConversion.h"

using nOrvPTP000::tTimestamp;
using zelmarPluginCore_1_0::tTimeValue;

namespace nZelmarPtpPlugin_1_0
{

tTimeValue toTimeValue(const tTimestamp& a_time)
{
    const u64 kMaxSeconds = 9223372035ull; // the last whole second below 2^63 ns
    const u64 seconds = a_time.getSeconds();
    if (seconds > kMaxSeconds)
    {
        return tTimeValue(static_cast<i64>(kMaxSeconds * tTimeValue::kNanosecondsPerSecond));
    }
    return tTimeValue(
        static_cast<i64>(seconds * tTimeValue::kNanosecondsPerSecond + a_time.getNanoseconds()));
}

tTimestamp toTimestamp(const tTimeValue& a_time)
{
    if (a_time.getSign() < 0)
    {
        return tTimestamp();
    }
    return tTimestamp(a_time.getSeconds(), a_time.getNanoseconds());
}

tTimestamp systemToTimekeeperTime(const tTimeValue& a_systemTime, const tTimeValue& a_systemBefore,
                                  const tTimestamp& a_timekeeper, const tTimeValue& a_systemAfter)
{
    const tTimeValue systemMidpoint = a_systemBefore + (a_systemAfter - a_systemBefore) / 2;
    return toTimestamp(a_systemTime + (toTimeValue(a_timekeeper) - systemMidpoint));
}

} // namespace nZelmarPtpPlugin_1_0
