#include "orvptp/tOctetBlock.h"

#include "orvtarn/protons/status/tAllocation.h"

#include <cstring>

using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

void tOctetBlock::take(u8* a_pData, u32 a_length)
{
    reset();
    m_pData = a_pData;
    m_length = a_pData != nullptr ? a_length : 0;
}

void tOctetBlock::reset()
{
    if (m_pData != nullptr)
    {
        nOrvTarn000::release(m_pData, m_length);
    }
    m_pData = nullptr;
    m_length = 0;
}

void tOctetBlock::assign(const void* a_pData, u32 a_length, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (a_pData == nullptr || a_length == 0)
    {
        reset();
        return;
    }
    if (a_length == m_length)
    {
        // memmove: the source may be this very block.
        std::memmove(m_pData, a_pData, a_length);
        return;
    }
    u8* pNew = static_cast<u8*>(nOrvTarn000::allocate(a_length, a_status));
    if (pNew == nullptr)
    {
        return;
    }
    std::memcpy(pNew, a_pData, a_length);
    take(pNew, a_length);
}

void tOctetBlock::readFrom(iSerializableTarget& a_target, u32 a_length, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (a_length == 0)
    {
        reset();
        return;
    }
    u8* pNew = static_cast<u8*>(nOrvTarn000::allocate(a_length, a_status));
    if (pNew == nullptr)
    {
        return;
    }
    a_target.readOctets(pNew, a_length, a_status);
    if (a_status.isFatal())
    {
        nOrvTarn000::release(pNew, a_length);
        return;
    }
    take(pNew, a_length);
}

void tOctetBlock::writeTo(iSerializableTarget& a_target, tStatus& a_status) const
{
    if (m_pData != nullptr && m_length != 0)
    {
        a_target.writeOctets(m_pData, m_length, a_status);
    }
}

void tOctetBlock::skip(iSerializableTarget& a_target, u32 a_count, tStatus& a_status)
{
    u8 dropped = 0;
    for (u32 i = 0; i < a_count && a_status.isNotFatal(); ++i)
    {
        a_target.readOctet(dropped, a_status);
    }
}

} // namespace nOrvPTP000
