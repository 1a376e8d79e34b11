#include "orvptp/tMessageSuffix.h"

#include "orvptp/tTLVFactory.h"
#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tMessageSuffix::tMessageSuffix(const tMessageSuffix& a_other) : iPTPSerializable(a_other)
{
    tStatus status;
    appendClonesOf(a_other, status);
}

tMessageSuffix::~tMessageSuffix()
{
    deleteAll();
}

void tMessageSuffix::deleteAll()
{
    // From the last to the first.
    while (!m_tlvs.empty())
    {
        m_tlvs.pop_back();
    }
}

tTLV* tMessageSuffix::getTLV(u32 a_index, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return nullptr;
    }
    if (a_index >= m_tlvs.size())
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusOutOfBounds);
        return nullptr;
    }
    return m_tlvs[a_index].get();
}

void tMessageSuffix::addTLV(std::unique_ptr<tTLV> a_pTLV, tStatus& a_status)
{
    if (a_status.isFatal() || a_pTLV == nullptr)
    {
        return;
    }
    m_tlvs.push_back(std::move(a_pTLV));
    if (!CHECK_ALLOCATION(m_tlvs, a_status))
    {
        // The vector stays as it was when its growth failed.
        m_tlvs.get_allocator().resetFailure();
    }
}

void tMessageSuffix::appendClonesOf(const tMessageSuffix& a_other, tStatus& a_status)
{
    // Counted first, so that appending a suffix to itself ends.
    const std::size_t count = a_other.m_tlvs.size();
    for (std::size_t i = 0; i < count && a_status.isNotFatal(); ++i)
    {
        if (a_other.m_tlvs[i] != nullptr)
        {
            addTLV(a_other.m_tlvs[i]->clone(a_status), a_status);
        }
    }
}

void tMessageSuffix::clear(tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        deleteAll();
    }
}

tTrace& tMessageSuffix::trace(tTrace& a_trace)
{
    for (std::size_t i = 0; i < m_tlvs.size(); ++i)
    {
        const unsigned index = static_cast<unsigned>(i);
        if (m_tlvs[i] == nullptr)
        {
            a_trace.writeFormatted("TLV at index %u is NULL!\n", index);
            continue;
        }
        a_trace.writeFormatted("--- Begin TLV %u ---", index);
        a_trace.write(*m_tlvs[i]);
        a_trace.writeFormatted("--- End TLV %u ---", index);
    }
    return a_trace;
}

void tMessageSuffix::serialize(iSerializableTarget& a_target, tStatus& a_status)
{
    for (std::size_t i = 0; i < m_tlvs.size() && a_status.isNotFatal(); ++i)
    {
        m_tlvs[i]->serialize(a_target, a_status);
    }
}

void tMessageSuffix::deserialize(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    deleteAll();
    // Each round consumes at least the two octets of a tlvType, so the loop
    // ends when a read passes the end of the data.
    while (a_status.isNotFatal())
    {
        std::unique_ptr<tTLV> pTLV = tTLVFactory::createTLV(a_target, a_status);
        if (a_status.getCode() == nOrvTarn000::kStatusInvalidArgument)
        {
            a_status.clear();
        }
        if (pTLV != nullptr)
        {
            addTLV(std::move(pTLV), a_status);
        }
    }
    if (a_status.getCode() == nOrvTarn000::kStatusOutOfBounds)
    {
        a_status.clear();
    }
}

u16 tMessageSuffix::getSize()
{
    u32 size = 0;
    for (const std::unique_ptr<tTLV>& pTLV : m_tlvs)
    {
        if (pTLV != nullptr)
        {
            size += pTLV->getSize();
        }
    }
    return static_cast<u16>(size);
}

} // namespace nOrvPTP000
