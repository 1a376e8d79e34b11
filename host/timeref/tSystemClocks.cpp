#include "tSystemClocks.h"

#include "orvtarn/protons/status/tSystemError.h"

#include <cerrno>
#include <time.h>

namespace nZelmar
{
namespace nSystemClocks
{
namespace
{

// a_call names the reading in the trace of a failure.
bool readClock(clockid_t a_clock, const char* a_call, u64& a_rNanoseconds)
{
    timespec now;
    if (clock_gettime(a_clock, &now) != 0)
    {
        ORVTARN_TRACE_SYSTEM_ERROR(a_call, errno);
        return false;
    }
    a_rNanoseconds = static_cast<u64>(now.tv_sec) * 1000000000u + static_cast<u64>(now.tv_nsec);
    return true;
}

} // namespace

bool readRawMonotonic(u64& a_rNanoseconds)
{
    return readClock(CLOCK_MONOTONIC_RAW, "clock_gettime(CLOCK_MONOTONIC_RAW)", a_rNanoseconds);
}

bool readUtc(u64& a_rNanoseconds)
{
    return readClock(CLOCK_REALTIME, "clock_gettime(CLOCK_REALTIME)", a_rNanoseconds);
}

} // namespace nSystemClocks
} // namespace nZelmar
