#include "orvtarn/protons/timer/tTime.h"

#include "orvtarn/quarks/tClock.h"

namespace nOrvTarn000
{
namespace
{

// What one count of each clock stands for. The counter's frequency is fixed,
// so the table is known when the program is built.
struct tClockResolution
{
    i32 m_unit;
    u64 m_value;
};

const tClockResolution kClocks[] = {
    {kMilliseconds, 1},
    {kPicoseconds, 1000000000000ull / nClock::kCounterFrequency},
};

const u32 kClockCount = sizeof(kClocks) / sizeof(kClocks[0]);

static_assert(1000000000000ull / nClock::kCounterFrequency != 0,
              "the counter must not tick faster than once a picosecond");

// The step from a_unit to the next larger unit.
u64 stepAbove(i32 a_unit)
{
    return a_unit < kSeconds ? 1000u : 60u;
}

bool isUnit(i32 a_unit)
{
    return a_unit >= kPicoseconds && a_unit <= kHours;
}

} // namespace

u64 convertTime(u64 a_value, i32 a_from, i32 a_to, tStatus& a_status)
{
    if (a_status.isFatal() || a_from == a_to)
    {
        return a_value;
    }
    if (!isUnit(a_from) || !isUnit(a_to))
    {
        ORVTARN_SET_CODE(a_status, kStatusInvalidArgument);
        return a_value;
    }
    u64 value = a_value;
    for (i32 unit = a_from; unit < a_to; ++unit)
    {
        value /= stepAbove(unit);
    }
    for (i32 unit = a_from; unit > a_to; --unit)
    {
        value *= stepAbove(unit - 1);
    }
    return value;
}

i32 getResolutionUnit(i32 a_source, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return 0;
    }
    if (a_source < 0 || static_cast<u32>(a_source) >= kClockCount)
    {
        ORVTARN_SET_CODE(a_status, kStatusInvalidArgument);
        return 0;
    }
    return kClocks[a_source].m_unit;
}

u64 getResolution(u32 a_source, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return 0;
    }
    if (a_source >= kClockCount)
    {
        ORVTARN_SET_CODE(a_status, kStatusInvalidArgument);
        return 0;
    }
    return kClocks[a_source].m_value;
}

u64 getMilliseconds(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return 0;
    }
    // The 64-bit monotonic count cannot wrap, so no rollover needs carrying.
    return nClock::readMilliseconds();
}

u64 getPerformanceCount(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return 0;
    }
    u64 count = 0;
    if (!nClock::readCounter(count))
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return 0;
    }
    return count;
}

void sleepMilliseconds(u32 a_milliseconds, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    nClock::sleep(a_milliseconds);
}

} // namespace nOrvTarn000
