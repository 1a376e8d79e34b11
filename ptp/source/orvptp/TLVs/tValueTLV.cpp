#include "orvptp/TLVs/tValueTLV.h"

#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

void tValueKindU8::write(iSerializableTarget& a_target, u8 a_value, tStatus& a_status)
{
    a_target.writeUInteger8(a_value, a_status);
}

void tValueKindU8::read(iSerializableTarget& a_target, u8& a_rValue, tStatus& a_status)
{
    a_target.readUInteger8(a_rValue, a_status);
}

void tValueKindU8::trace(tTrace& a_trace, u8 a_value)
{
    a_trace.writeFormatted("%u", static_cast<unsigned>(a_value));
}

void tValueKindI8::write(iSerializableTarget& a_target, i8 a_value, tStatus& a_status)
{
    a_target.writeInteger8(a_value, a_status);
}

void tValueKindI8::read(iSerializableTarget& a_target, i8& a_rValue, tStatus& a_status)
{
    a_target.readInteger8(a_rValue, a_status);
}

void tValueKindI8::trace(tTrace& a_trace, i8 a_value)
{
    a_trace.writeFormatted("%d", static_cast<int>(a_value));
}

void tValueKindFLAG::write(iSerializableTarget& a_target, bool a_value, tStatus& a_status)
{
    writeFlags(a_target, flagIf(a_value, 0), a_status);
}

void tValueKindFLAG::read(iSerializableTarget& a_target, bool& a_rValue, tStatus& a_status)
{
    const u8 flags = readFlags(a_target, a_status);
    if (a_status.isNotFatal())
    {
        a_rValue = hasFlag(flags, 0);
    }
}

void tValueKindFLAG::trace(tTrace& a_trace, bool a_value)
{
    a_trace.write(a_value);
}

void tValueKindNIBBLE::write(iSerializableTarget& a_target, u8 a_value, tStatus& a_status)
{
    a_target.writeNibble(0, a_status);
    a_target.writeUInteger4(a_value, a_status);
}

void tValueKindNIBBLE::read(iSerializableTarget& a_target, u8& a_rValue, tStatus& a_status)
{
    u8 reserved = 0;
    a_target.readNibble(reserved, a_status);
    a_target.readUInteger4(a_rValue, a_status);
}

void tValueKindNIBBLE::trace(tTrace& a_trace, u8 a_value)
{
    tValueKindU8::trace(a_trace, a_value);
}

void tValueKindHEX::write(iSerializableTarget& a_target, u8 a_value, tStatus& a_status)
{
    a_target.writeEnumeration8(a_value, a_status);
}

void tValueKindHEX::read(iSerializableTarget& a_target, u8& a_rValue, tStatus& a_status)
{
    a_target.readEnumeration8(a_rValue, a_status);
}

void tValueKindHEX::trace(tTrace& a_trace, u8 a_value)
{
    a_trace.writeFormatted("%#.2x", static_cast<unsigned>(a_value));
}

template <typename tRow>
tManagementReply tValueTLV<tRow>::handleGet(iPTPNode& a_node, u16 a_portNumber, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_value = tRow::get(a_node, a_portNumber, a_status);
    return this->itselfUnlessFailed(kFailureGetting, a_status);
}

template <typename tRow>
tManagementReply tValueTLV<tRow>::handleSet(iPTPNode& a_node, u16 a_portNumber, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    if (!tRow::accepts(m_value))
    {
        return this->failure(kManagementErrorWrongValue, tRow::kRefusal, a_status);
    }
    tRow::set(a_node, a_portNumber, m_value, a_status);
    return this->itselfUnlessFailed(kFailureSetting, a_status);
}

template <typename tRow>
tTrace& tValueTLV<tRow>::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    a_trace.write(tRow::kLabel);
    tRow::tKind::trace(a_trace, m_value);
    return a_trace.write("\n");
}

template <typename tRow>
void tValueTLV<tRow>::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    tRow::tKind::read(a_target, m_value, a_status);
    readReserved(a_target, 1, a_status);
}

template <typename tRow>
void tValueTLV<tRow>::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    tRow::tKind::write(a_target, m_value, a_status);
    writeReserved(a_target, 1, a_status);
}

#define ORVPTP_MANAGEMENT_VALUE_TLV(id, NAME, tClass, ...) template class tValueTLV<tClass##Row>;
#include "orvptp/TLVs/tManagementIds.def"

} // namespace nOrvPTP000
