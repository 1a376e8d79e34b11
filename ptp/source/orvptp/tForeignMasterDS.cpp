#include "orvptp/tForeignMasterDS.h"

#include "orvtarn/quarks/tMutexGuard.h"

using nOrvTarn000::kStatusMemoryFull;
using nOrvTarn000::tMutexGuard;
using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

tForeignMasterDS::tForeignMasterDS(tStatus& a_status, u32 a_maximumRecords)
    : m_pLast(nullptr), m_count(0), m_maximumRecords(a_maximumRecords), m_mutex(a_status)
{
}

// Unlinked from the back, so that a long table does not unwind recursively.
tForeignMasterDS::~tForeignMasterDS()
{
    while (m_pLast != nullptr)
    {
        tIterator last(m_pLast);
        eraseLocked(last);
    }
}

tForeignMasterDS::tIterator tForeignMasterDS::find(const tPortIdentity& a_sender)
{
    tIterator it = begin();
    while (it != end() && (*it)->getSender() != a_sender)
    {
        ++it;
    }
    return it;
}

void tForeignMasterDS::eraseLocked(tIterator& a_rIterator)
{
    tForeignMasterRecord* pRecord = a_rIterator.m_pRecord;
    tForeignMasterRecord* pPrevious = pRecord->m_pPrevious;
    std::unique_ptr<tForeignMasterRecord>& rLink =
        pPrevious != nullptr ? pPrevious->m_pNext : m_pFirst;
    std::unique_ptr<tForeignMasterRecord> pDoomed = std::move(rLink);
    rLink = std::move(pDoomed->m_pNext);
    if (rLink != nullptr)
    {
        rLink->m_pPrevious = pPrevious;
    }
    else
    {
        m_pLast = pPrevious;
    }
    --m_count;
    a_rIterator = tIterator(rLink.get());
}

i32 tForeignMasterDS::addAnnounce(std::unique_ptr<tAnnounceMessage> a_pMessage, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isFatal() || a_pMessage == nullptr || a_pMessage->getHeader() == nullptr)
    {
        return 0;
    }

    tIterator it = find(a_pMessage->getHeader()->getSourcePortIdentity());
    if (it != end())
    {
        (*it)->addAnnounce(std::move(a_pMessage), a_status);
        return 0;
    }
    if (m_count >= m_maximumRecords)
    {
        ORVTARN_SET_CODE(a_status, kStatusMemoryFull);
        return 0;
    }

    std::unique_ptr<tForeignMasterRecord> pRecord =
        nOrvTarn000::makeOwned<tForeignMasterRecord>(a_status, std::move(a_pMessage), a_status);
    if (pRecord == nullptr)
    {
        return 0;
    }
    pRecord->m_pPrevious = m_pLast;
    std::unique_ptr<tForeignMasterRecord>& rLink = m_pLast != nullptr ? m_pLast->m_pNext : m_pFirst;
    rLink = std::move(pRecord);
    m_pLast = rLink.get();
    ++m_count;
    return 1;
}

u16 tForeignMasterDS::getAnnounceCount(const tPortIdentity& a_sender, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isFatal())
    {
        return 0;
    }
    tIterator it = find(a_sender);
    return it != end() ? (*it)->getAnnounceCount() : 0;
}

void tForeignMasterDS::advanceWindow(const tPortIdentity& a_sender, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    tIterator it = find(a_sender);
    if (it != end())
    {
        (*it)->advanceWindow(a_status);
    }
}

void tForeignMasterDS::removeRecord(const tPortIdentity& a_sender, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    tIterator it = find(a_sender);
    if (it != end())
    {
        eraseLocked(it);
    }
}

void tForeignMasterDS::clear(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    tIterator it = begin();
    while (it != end())
    {
        eraseLocked(it);
    }
}

u32 tForeignMasterDS::getRecordCount(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    return a_status.isFatal() ? 0 : m_count;
}

void tForeignMasterDS::erase(tIterator& a_rIterator, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isNotFatal() && a_rIterator != end())
    {
        eraseLocked(a_rIterator);
    }
}

tForeignMasterDS::tIterator tForeignMasterDS::begin()
{
    tStatus lockStatus;
    tMutexGuard guard(m_mutex, lockStatus);
    return tIterator(m_pFirst.get());
}

} // namespace nOrvPTP000
