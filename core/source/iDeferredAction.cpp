#include "iDeferredAction.h"

#include "orvtarn/quarks/tEvent.h"

namespace zelmarPluginCore_1_0
{

using namespace nOrvTarn000;

void iDeferredAction::arm(u32 a_delayMs, iClock& a_rClock, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    // A timeout never armed is expired, so 0 leaves a fresh one due at once.
    m_timeout = tTimeout(a_rClock);
    m_timeout.start(a_delayMs, a_status);
}

u32 iDeferredAction::getRemainingMilliseconds(tStatus& a_status)
{
    const u64 remaining = m_timeout.getRemainingMilliseconds(a_status);
    return remaining < tEvent::kInfinite ? static_cast<u32>(remaining) : tEvent::kInfinite - 1;
}

bool iDeferredAction::isDue(tStatus& a_status)
{
    return m_timeout.isExpired(a_status);
}

} // namespace zelmarPluginCore_1_0
