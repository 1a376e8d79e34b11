#include "tMonotonicRawTickSource.h"

#include "tSystemClocks.h"

namespace nZelmar
{
namespace
{

const u64 kNanosecondsPerTick = 1000000000u / tMonotonicRawTickSource::kFrequency;

} // namespace

tMonotonicRawTickSource::tMonotonicRawTickSource(nOrvTarn000::tStatus& a_status)
    : m_originNanoseconds(0)
{
    if (a_status.isNotFatal() && !nSystemClocks::readRawMonotonic(m_originNanoseconds))
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusSystemError);
    }
}

bool tMonotonicRawTickSource::readTicks(u64& a_rTicks)
{
    u64 now = 0;
    if (!nSystemClocks::readRawMonotonic(now))
    {
        return false;
    }
    a_rTicks = (now - m_originNanoseconds) / kNanosecondsPerTick;
    return true;
}

} // namespace nZelmar
