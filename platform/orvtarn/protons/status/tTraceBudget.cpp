#include "orvtarn/protons/status/tTraceBudget.h"

namespace nOrvTarn000
{
namespace
{

const u64 kSecondNs = 1000000000u;

} // namespace

tTraceBudget::tTraceBudget(iClock& a_rClock, u32 a_linesPerSecond)
    : m_rClock(a_rClock), m_linesPerSecond(a_linesPerSecond), m_secondStartNs(0), m_allowed(0),
      m_suppressed(0)
{
}

bool tTraceBudget::allow(u32& a_rSuppressed)
{
    // An unreadable clock reads 0: the present second then never ends, and
    // what is left of its budget is all there is.
    tStatus clockStatus;
    const u64 now = m_rClock.getNanoseconds(clockStatus);
    u64 start = m_secondStartNs.load();
    if (now >= start + kSecondNs && m_secondStartNs.compare_exchange_strong(start, now))
    {
        m_allowed = 0;
    }
    if (m_allowed.fetch_add(1) >= m_linesPerSecond)
    {
        ++m_suppressed;
        return false;
    }
    a_rSuppressed = m_suppressed.exchange(0);
    return true;
}

} // namespace nOrvTarn000
