#include "orvptp/tPTPMessage.h"

#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

using nOrvTarn000::makeOwned;

tPTPMessage::tPTPMessage(tStatus& a_status)
    : m_pHeader(makeOwned<tMessageHeader>(a_status)), m_pSuffix(makeOwned<tMessageSuffix>(a_status))
{
    if (m_pSuffix == nullptr)
    {
        m_pHeader.reset();
    }
}

tPTPMessage::tPTPMessage(std::unique_ptr<tMessageHeader> a_pHeader, tStatus& a_status)
    : m_pHeader(std::move(a_pHeader)), m_pSuffix(makeOwned<tMessageSuffix>(a_status))
{
}

tPTPMessage::~tPTPMessage() = default;

void tPTPMessage::serialize(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (m_pHeader == nullptr || m_pSuffix == nullptr)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidState);
        return;
    }
    m_pHeader->setMessageLength(getSize(), a_status);
    serializeHeader(a_target, a_status);
    serializeBody(a_target, a_status);
    serializeSuffix(a_target, a_status);
}

void tPTPMessage::deserialize(iSerializableTarget& a_target, tStatus& a_status)
{
    deserializeHeader(a_target, a_status);
    deserializeBody(a_target, a_status);
    deserializeSuffix(a_target, a_status);
}

tPTPMessage& tPTPMessage::operator=(const tPTPMessage& a_other)
{
    if (this == &a_other)
    {
        return *this;
    }
    if (m_pHeader != nullptr && a_other.m_pHeader != nullptr)
    {
        *m_pHeader = *a_other.m_pHeader;
    }
    if (m_pSuffix != nullptr && a_other.m_pSuffix != nullptr)
    {
        tStatus status;
        m_pSuffix->appendClonesOf(*a_other.m_pSuffix, status);
    }
    return *this;
}

void tPTPMessage::deserializeHeader(iSerializableTarget& a_target, tStatus& a_status)
{
    if (m_pHeader != nullptr)
    {
        m_pHeader->deserialize(a_target, a_status);
    }
}

void tPTPMessage::deserializeSuffix(iSerializableTarget& a_target, tStatus& a_status)
{
    if (m_pSuffix != nullptr)
    {
        m_pSuffix->deserialize(a_target, a_status);
    }
}

void tPTPMessage::serializeHeader(iSerializableTarget& a_target, tStatus& a_status)
{
    if (m_pHeader != nullptr)
    {
        m_pHeader->serialize(a_target, a_status);
    }
}

void tPTPMessage::serializeSuffix(iSerializableTarget& a_target, tStatus& a_status)
{
    if (m_pSuffix != nullptr)
    {
        m_pSuffix->serialize(a_target, a_status);
    }
}

void tPTPMessage::prepareForSending(u8 a_messageType, tStatus& a_status)
{
    if (m_pHeader == nullptr)
    {
        return;
    }
    m_pHeader->setMessageType(a_messageType, a_status);
    m_pHeader->setMessageLength(getSize(), a_status);
}

void tPTPMessage::parseBodyAndSuffix(iSerializableTarget& a_target, tStatus& a_status)
{
    deserializeBody(a_target, a_status);
    deserializeSuffix(a_target, a_status);
}

u16 tPTPMessage::sizeWithBody(u16 a_bodyLength) const
{
    if (m_pHeader == nullptr || m_pSuffix == nullptr)
    {
        return 0;
    }
    return static_cast<u16>(m_pHeader->getSize() + a_bodyLength + m_pSuffix->getSize());
}

void tPTPMessage::openTrace(tTrace& a_trace, const char* a_beginText)
{
    a_trace.write(a_beginText);
    if (m_pHeader != nullptr)
    {
        a_trace.write(*m_pHeader);
    }
}

tTrace& tPTPMessage::closeTrace(tTrace& a_trace, const char* a_endText)
{
    if (m_pSuffix != nullptr)
    {
        a_trace.write(*m_pSuffix);
    }
    return a_trace.write(a_endText);
}

} // namespace nOrvPTP000
