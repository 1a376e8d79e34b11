#include "orvptp/tForeignMasterDS.h"

#include "orvtarn/quarks/tMutexGuard.h"

using nOrvTarn000::kStatusMemoryFull;
using nOrvTarn000::tMutexGuard;
using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

tForeignMasterDS::tForeignMasterDS(tStatus& a_status, u32 a_maximumRecords)
    : m_maximumRecords(a_maximumRecords), m_mutex(a_status)
{
}

tForeignMasterDS::tIterator tForeignMasterDS::find(const tPortIdentity& a_sender)
{
    tIterator it = m_records.begin();
    while (it != m_records.end() && (*it)->getSender() != a_sender)
    {
        ++it;
    }
    return it;
}

void tForeignMasterDS::eraseLocked(tIterator& a_rIterator)
{
    a_rIterator = m_records.erase(a_rIterator);
}

i32 tForeignMasterDS::addAnnounce(std::unique_ptr<tAnnounceMessage> a_pMessage, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isFatal() || a_pMessage == nullptr || a_pMessage->getHeader() == nullptr)
    {
        return 0;
    }

    tIterator it = find(a_pMessage->getHeader()->getSourcePortIdentity());
    if (it != m_records.end())
    {
        (*it)->addAnnounce(std::move(a_pMessage), a_status);
        return 0;
    }
    if (m_records.size() >= m_maximumRecords)
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
    // The list node is made apart, so that a failure leaves the table as it was.
    tRecordList node;
    node.push_back(std::move(pRecord));
    if (!CHECK_ALLOCATION(node, a_status))
    {
        return 0;
    }
    m_records.splice(m_records.end(), node);
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
    return it != m_records.end() ? (*it)->getAnnounceCount() : 0;
}

void tForeignMasterDS::advanceWindow(const tPortIdentity& a_sender, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    for (const std::unique_ptr<tForeignMasterRecord>& pRecord : m_records)
    {
        if (a_status.isNotFatal() && pRecord->getSender() == a_sender)
        {
            pRecord->advanceWindow(a_status);
        }
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
    if (it != m_records.end())
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
    tIterator it = m_records.begin();
    while (it != m_records.end())
    {
        eraseLocked(it);
    }
}

u32 tForeignMasterDS::getRecordCount(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    return a_status.isFatal() ? 0 : static_cast<u32>(m_records.size());
}

void tForeignMasterDS::erase(tIterator& a_rIterator, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isNotFatal() && a_rIterator != m_records.end())
    {
        eraseLocked(a_rIterator);
    }
}

tForeignMasterDS::tIterator tForeignMasterDS::begin()
{
    tStatus status;
    tMutexGuard guard(m_mutex, status);
    return m_records.begin();
}

tForeignMasterDS::tIterator tForeignMasterDS::end()
{
    tStatus status;
    tMutexGuard guard(m_mutex, status);
    return m_records.end();
}

} // namespace nOrvPTP000
