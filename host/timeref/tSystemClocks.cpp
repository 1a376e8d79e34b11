#include "tSystemClocks.h"

#include "orvtarn/protons/status/tTrace.h"

#include <cerrno>
#include <cstring>
#include <time.h>

namespace nZelmar
{
namespace nSystemClocks
{
namespace
{

enum : u32
{
    kKindInformation = 105 // 'i'
};

bool readClock(clockid_t a_clock, const char* a_name, u64& a_rNanoseconds)
{
    timespec now;
    if (clock_gettime(a_clock, &now) != 0)
    {
        const int error = errno;
        nOrvTarn000::getTrace(0)
            .writeHeader(ORVTARN_COMPONENT, __LINE__, __FILE__, kKindInformation, 0)
            .write("clock_gettime(")
            .write(a_name)
            .write(") failed: ")
            .write(std::strerror(error))
            .endLine();
        return false;
    }
    a_rNanoseconds = static_cast<u64>(now.tv_sec) * 1000000000u + static_cast<u64>(now.tv_nsec);
    return true;
}

} // namespace

bool readRawMonotonic(u64& a_rNanoseconds)
{
    return readClock(CLOCK_MONOTONIC_RAW, "CLOCK_MONOTONIC_RAW", a_rNanoseconds);
}

bool readUtc(u64& a_rNanoseconds)
{
    return readClock(CLOCK_REALTIME, "CLOCK_REALTIME", a_rNanoseconds);
}

} // namespace nSystemClocks
} // namespace nZelmar
