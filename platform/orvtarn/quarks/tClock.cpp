#include "orvtarn/quarks/tClock.h"

#include "orvtarn/protons/status/tSystemError.h"

#include <cerrno>
#include <sched.h>
#include <time.h>

namespace nOrvTarn000
{
namespace nClock
{
namespace
{

bool readSinceBoot(u64& a_rNanoseconds)
{
    timespec now;
    if (clock_gettime(CLOCK_MONOTONIC, &now) != 0)
    {
        ORVTARN_TRACE_SYSTEM_ERROR("clock_gettime(CLOCK_MONOTONIC)", errno);
        return false;
    }
    a_rNanoseconds = static_cast<u64>(now.tv_sec) * 1000000000u + static_cast<u64>(now.tv_nsec);
    return true;
}

// Readings count from the first one in the process, so that they do not
// depend on how long the machine has been up.
bool readNanoseconds(u64& a_rNanoseconds)
{
    static const u64 s_origin = []
    {
        u64 origin = 0;
        readSinceBoot(origin);
        return origin;
    }();
    u64 sinceBoot = 0;
    if (!readSinceBoot(sinceBoot))
    {
        return false;
    }
    a_rNanoseconds = sinceBoot - s_origin;
    return true;
}

} // namespace

u64 readMilliseconds()
{
    u64 nanoseconds = 0;
    readNanoseconds(nanoseconds);
    return nanoseconds / 1000000u;
}

bool readCounter(u64& a_rCount)
{
    return readNanoseconds(a_rCount);
}

bool makeDeadline(u32 a_milliseconds, timespec& a_rDeadline)
{
    if (clock_gettime(CLOCK_MONOTONIC, &a_rDeadline) != 0)
    {
        return false;
    }
    const u64 nanoseconds =
        static_cast<u64>(a_rDeadline.tv_nsec) + static_cast<u64>(a_milliseconds % 1000u) * 1000000u;
    a_rDeadline.tv_sec += static_cast<time_t>(a_milliseconds / 1000u + nanoseconds / 1000000000u);
    a_rDeadline.tv_nsec = static_cast<long>(nanoseconds % 1000000000u);
    return true;
}

void sleep(u32 a_milliseconds)
{
    if (a_milliseconds == 0)
    {
        sched_yield();
        return;
    }
    // An absolute end time keeps the total right when a signal interrupts the
    // sleep and it has to be resumed.
    timespec end;
    if (!makeDeadline(a_milliseconds, end))
    {
        return;
    }
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR)
    {
    }
}

} // namespace nClock
} // namespace nOrvTarn000
