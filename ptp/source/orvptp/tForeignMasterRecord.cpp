#include "orvptp/tForeignMasterRecord.h"

#include "orvptp/tAnnounceMessage.h"

using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

tForeignMasterRecord::tForeignMasterRecord(tAnnounceMessage* a_pMessage, tStatus&)
    : m_announceCounts(), m_front(0), m_pLastAnnounce(a_pMessage)
{
    if (a_pMessage != nullptr && a_pMessage->getHeader() != nullptr)
    {
        m_sender = a_pMessage->getHeader()->getSourcePortIdentity();
    }
    m_announceCounts[m_front] = 1;
}

tForeignMasterRecord::~tForeignMasterRecord()
{
    delete m_pLastAnnounce;
}

void tForeignMasterRecord::addAnnounce(tAnnounceMessage* a_pMessage, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        delete a_pMessage;
        return;
    }
    ++m_announceCounts[m_front];
    delete m_pLastAnnounce;
    m_pLastAnnounce = a_pMessage;
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
