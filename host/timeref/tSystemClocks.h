#pragma once
#include "orvtarn/quarks/tTypes.h"

namespace nZelmar
{

// The host side's readings of the system's clocks, in nanoseconds. Each
// reports a failure to the trace with the system's reason and returns false.
namespace nSystemClocks
{

// The raw monotonic clock: the hardware's own pace, never slewed or stepped.
bool readRawMonotonic(u64& a_rNanoseconds);
// The system's UTC time, from 1970-01-01 00:00:00.
bool readUtc(u64& a_rNanoseconds);

} // namespace nSystemClocks
} // namespace nZelmar
