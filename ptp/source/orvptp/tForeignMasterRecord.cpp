#include "orvptp/tForeignMasterRecord.h"

using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

tForeignMasterRecord::tForeignMasterRecord(std::unique_ptr<tAnnounceMessage> a_pMessage, tStatus&)
    : m_announceCounts(), m_front(0), m_pLastAnnounce(std::move(a_pMessage))
{
    if (m_pLastAnnounce != nullptr && m_pLastAnnounce->getHeader() != nullptr)
    {
        m_sender = m_pLastAnnounce->getHeader()->getSourcePortIdentity();
    }
    m_announceCounts[m_front] = 1;
}

void tForeignMasterRecord::addAnnounce(std::unique_ptr<tAnnounceMessage> a_pMessage,
                                       tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    ++m_announceCounts[m_front];
    m_pLastAnnounce = std::move(a_pMessage);
}

void tForeignMasterRecord::advanceWindow(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    // The oldest slot sits just before the current one in the ring; it becomes
    // the new, empty current slot.
    m_front = static_cast<u16>((m_front + kWindowSlots - 1) % kWindowSlots);
    m_announceCounts[m_front] = 0;
}

u16 tForeignMasterRecord::getAnnounceCount() const
{
    u16 sum = 0;
    for (u16 count : m_announceCounts)
    {
        sum = static_cast<u16>(sum + count);
    }
    return sum;
}

} // namespace nOrvPTP000
