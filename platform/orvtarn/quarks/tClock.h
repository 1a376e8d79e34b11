#pragma once
#include "orvtarn/quarks/tTypes.h"

#include <time.h>

namespace nOrvTarn000
{

// Readings of the system's monotonic clock, counted from the first reading in
// the process. It never goes back and is not moved by changes of the wall
// clock. Its 64-bit count of nanoseconds lasts for centuries, so no reading
// here ever wraps.
namespace nClock
{

enum : u64
{
    // Counts per second of readCounter().
    kCounterFrequency = 1000000000u
};

// Milliseconds on the monotonic clock.
u64 readMilliseconds();

// The high-resolution count, kCounterFrequency per second. False when the
// clock cannot be read.
bool readCounter(u64& a_rCount);

// The monotonic time a_milliseconds from now, as an absolute end for the
// system's timed waits. False when the clock cannot be read.
bool makeDeadline(u32 a_milliseconds, timespec& a_rDeadline);

// Suspends the calling thread for at least a_milliseconds; 0 only offers the
// processor to other ready threads.
void sleep(u32 a_milliseconds);

} // namespace nClock
} // namespace nOrvTarn000
