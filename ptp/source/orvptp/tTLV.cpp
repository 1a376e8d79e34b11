#include "orvptp/tTLV.h"

#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

void tTLV::setTlvType(u16 a_tlvType, tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        m_tlvType = a_tlvType;
    }
}

u16 tTLV::setLength(u32 a_valueLength, tStatus& a_status, u32 a_alignment)
{
    if (a_status.isFatal())
    {
        return 0;
    }
    u16 pad = 0;
    const u16 length = static_cast<u16>(a_valueLength);
    if (a_alignment > 1 && length % a_alignment != 0)
    {
        pad = static_cast<u16>(a_alignment - length % a_alignment);
    }
    m_lengthField = static_cast<u16>(a_valueLength + pad);
    return pad;
}

tTrace& tTLV::trace(tTrace& a_trace)
{
    a_trace.writeFormatted("tlvType %u ", static_cast<unsigned>(m_tlvType));
    return a_trace.writeFormatted("lengthField %u ", static_cast<unsigned>(m_lengthField));
}

void tTLV::serialize(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeEnumeration16(m_tlvType, a_status);
    a_target.writeUInteger16(m_lengthField, a_status);
    serializeValue(a_target, a_status);
}

void tTLV::deserialize(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    u16 tlvType = 0;
    u16 lengthField = 0;
    a_target.readEnumeration16(tlvType, a_status);
    a_target.readUInteger16(lengthField, a_status);
    if (a_status.isNotFatal())
    {
        m_tlvType = tlvType;
        m_lengthField = lengthField;
        deserializeValue(a_target, a_status);
    }
}

} // namespace nOrvPTP000
