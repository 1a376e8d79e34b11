#include "orvptp/tPTPText.h"

#include "orvtarn/protons/status/tTrace.h"

#include <cstring>

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tPTPText::tPTPText(const char* a_text, tStatus& a_status)
{
    if (a_text == nullptr || a_status.isFatal())
    {
        return;
    }
    const std::size_t length = std::strlen(a_text);
    if (length > kMaxLength)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidArgument);
        return;
    }
    m_text.assign(a_text, static_cast<u32>(length), a_status);
}

tPTPText::tPTPText(const tPTPText& a_other) : iPTPSerializable(a_other)
{
    tStatus status;
    m_text.assign(a_other.m_text, status);
}

tPTPText& tPTPText::operator=(const tPTPText& a_other)
{
    tStatus status;
    assign(a_other, status);
    return *this;
}

void tPTPText::assign(const tPTPText& a_other, tStatus& a_status)
{
    if (this != &a_other)
    {
        m_text.assign(a_other.m_text, a_status);
    }
}

void tPTPText::setText(const void* a_pData, u8 a_length, tStatus& a_status)
{
    m_text.assign(a_pData, a_length, a_status);
}

bool tPTPText::operator==(const tPTPText& a_other) const
{
    return m_text.getLength() == a_other.m_text.getLength() &&
           (m_text.getLength() == 0 ||
            std::memcmp(m_text.getData(), a_other.m_text.getData(), m_text.getLength()) == 0);
}

tTrace& tPTPText::trace(tTrace& a_trace)
{
    if (m_text.getLength() != 0)
    {
        a_trace.write(getText(), m_text.getLength());
    }
    return a_trace;
}

void tPTPText::serialize(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeUInteger8(getLength(), a_status);
    m_text.writeTo(a_target, a_status);
}

void tPTPText::deserialize(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    u8 length = 0;
    a_target.readUInteger8(length, a_status);
    m_text.readFrom(a_target, length, a_status);
}

} // namespace nOrvPTP000
