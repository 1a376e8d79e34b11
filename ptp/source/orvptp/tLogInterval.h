#pragma once
#include "orvtarn/quarks/tTypes.h"

namespace nOrvPTP000
{

// The bounds within which a log interval sets a timer. A peer or a
// management message can send any value; beyond these it counts as the
// nearest bound, so that no timer runs in a tight loop (2^-7 s is 7 ms, as
// fast as the fastest profiles send) and none outgrows its milliseconds, even
// times an announceReceiptTimeout of 255 (2^12 s is 68 minutes).
enum : i8
{
    kShortestLogInterval = -7,
    kLongestLogInterval = 12
};

// The period of a log interval n, 2^n seconds, in whole milliseconds: 1000
// shifted left by n, or right by -n.
inline u32 logIntervalToMilliseconds(i8 a_logInterval)
{
    const i8 n = a_logInterval < kShortestLogInterval  ? static_cast<i8>(kShortestLogInterval)
                 : a_logInterval > kLongestLogInterval ? static_cast<i8>(kLongestLogInterval)
                                                       : a_logInterval;
    return n >= 0 ? 1000u << n : 1000u >> -n;
}

} // namespace nOrvPTP000
