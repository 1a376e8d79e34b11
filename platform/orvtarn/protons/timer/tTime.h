#pragma once
#include "orvtarn/protons/status/tStatus.h"

namespace nOrvTarn000
{

// Units of time, each a fixed step above the one before.
enum : i32
{
    kPicoseconds = 0,
    kNanoseconds = 1,
    kMicroseconds = 2,
    kMilliseconds = 3,
    kSeconds = 4,
    kMinutes = 5,
    kHours = 6
};

// The clocks a tTimer can read.
enum : u32
{
    kClockTick = 0,              // milliseconds
    kClockPerformanceCounter = 1 // the high-resolution counter
};

// Converts one unit step at a time: towards larger units each step divides
// and truncates, towards smaller ones each step multiplies with 64-bit wrap.
// An unknown unit gives kStatusInvalidArgument and the value unchanged.
u64 convertTime(u64 a_value, i32 a_from, i32 a_to, tStatus& a_status);

// The unit, and the number of those units, that one count of a clock stands
// for. An unknown clock gives kStatusInvalidArgument and 0.
i32 getResolutionUnit(i32 a_source, tStatus& a_status);
u64 getResolution(u32 a_source, tStatus& a_status);

// The monotonic millisecond count.
u64 getMilliseconds(tStatus& a_status);

// The high-resolution count; 0 and kStatusSystemError when it cannot be read.
u64 getPerformanceCount(tStatus& a_status);

void sleepMilliseconds(u32 a_milliseconds, tStatus& a_status);

} // namespace nOrvTarn000
