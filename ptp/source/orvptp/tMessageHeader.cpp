#include "orvptp/tMessageHeader.h"

#include "orvptp/tSetUnlessFatal.h"
#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{
namespace
{

const char* flagText(bool a_value)
{
    return a_value ? "TRUE" : "FALSE";
}

} // namespace

tMessageHeader::tMessageHeader()
    : m_transportSpecific(0), m_messageType(kMessageTypeAnnounce), m_versionPTP(kVersionPTP),
      m_messageLength(0), m_domainNumber(0), m_alternateMasterFlag(false), m_twoStepFlag(false),
      m_unicastFlag(false), m_profileSpecific1(false), m_profileSpecific2(false), m_secure(false),
      m_leap61(false), m_leap59(false), m_currentUTCOffsetValid(false), m_ptpTimescale(false),
      m_timeTraceable(false), m_frequencyTraceable(false), m_correctionField(0),
      m_sourcePortIdentity(allPortsIdentity()), m_sequenceId(0), m_controlField(0),
      m_logMessageInterval(static_cast<i8>(kNoLogMessageInterval))
{
}

tMessageHeader::tMessageHeader(iSerializableTarget& a_target, tStatus& a_status) : tMessageHeader()
{
    deserialize(a_target, a_status);
}

u8 tMessageHeader::controlFieldFor(u8 a_messageType)
{
    switch (a_messageType)
    {
    case kMessageTypeSync:
        return 0;
    case kMessageTypeDelayReq:
        return 1;
    case kMessageTypeFollowUp:
        return 2;
    case kMessageTypeDelayResp:
        return 3;
    case kMessageTypeManagement:
        return 4;
    default:
        return 5;
    }
}

void tMessageHeader::setMessageType(u8 a_messageType, tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        m_messageType = a_messageType;
        m_controlField = controlFieldFor(a_messageType);
    }
}

void tMessageHeader::setMessageLength(u16 a_messageLength, tStatus& a_status)
{
    setUnlessFatal(m_messageLength, a_messageLength, a_status);
}

void tMessageHeader::setDomainNumber(u8 a_domainNumber, tStatus& a_status)
{
    setUnlessFatal(m_domainNumber, a_domainNumber, a_status);
}

void tMessageHeader::setTwoStepFlag(bool a_value, tStatus& a_status)
{
    setUnlessFatal(m_twoStepFlag, a_value, a_status);
}

void tMessageHeader::setLeap61(bool a_value, tStatus& a_status)
{
    setUnlessFatal(m_leap61, a_value, a_status);
}

void tMessageHeader::setLeap59(bool a_value, tStatus& a_status)
{
    setUnlessFatal(m_leap59, a_value, a_status);
}

void tMessageHeader::setCurrentUTCOffsetValid(bool a_value, tStatus& a_status)
{
    setUnlessFatal(m_currentUTCOffsetValid, a_value, a_status);
}

void tMessageHeader::setPtpTimescale(bool a_value, tStatus& a_status)
{
    setUnlessFatal(m_ptpTimescale, a_value, a_status);
}

void tMessageHeader::setTimeTraceable(bool a_value, tStatus& a_status)
{
    setUnlessFatal(m_timeTraceable, a_value, a_status);
}

void tMessageHeader::setFrequencyTraceable(bool a_value, tStatus& a_status)
{
    setUnlessFatal(m_frequencyTraceable, a_value, a_status);
}

void tMessageHeader::setCorrectionField(i64 a_correctionField, tStatus& a_status)
{
    setUnlessFatal(m_correctionField, a_correctionField, a_status);
}

void tMessageHeader::setSourcePortIdentity(const tPortIdentity& a_identity, tStatus& a_status)
{
    setUnlessFatal(m_sourcePortIdentity, a_identity, a_status);
}

void tMessageHeader::setSequenceId(u16 a_sequenceId, tStatus& a_status)
{
    setUnlessFatal(m_sequenceId, a_sequenceId, a_status);
}

void tMessageHeader::setLogMessageInterval(i8 a_logMessageInterval, tStatus& a_status)
{
    setUnlessFatal(m_logMessageInterval, a_logMessageInterval, a_status);
}

tTrace& tMessageHeader::trace(tTrace& a_trace)
{
    a_trace.write("--- Begin Message Header ---\n");
    // One hexadecimal digit at least, 0x prefixed unless zero.
    a_trace.writeFormatted("transportSpecific: %#.1x\n",
                           static_cast<unsigned>(m_transportSpecific));
    a_trace.writeFormatted("messageType: %#.1x\n", static_cast<unsigned>(m_messageType));
    a_trace.writeFormatted("versionPTP: %u\n", static_cast<unsigned>(m_versionPTP));
    a_trace.writeFormatted("messageLength: %u\n", static_cast<unsigned>(m_messageLength));
    a_trace.writeFormatted("domainNumber: %u\n", static_cast<unsigned>(m_domainNumber));
    a_trace.writeFormatted("alternateMasterFlag: %s\n", flagText(m_alternateMasterFlag));
    a_trace.writeFormatted("twoStepFlag: %s\n", flagText(m_twoStepFlag));
    a_trace.writeFormatted("unicastFlag: %s\n", flagText(m_unicastFlag));
    a_trace.writeFormatted("profileSpecific1: %s\n", flagText(m_profileSpecific1));
    a_trace.writeFormatted("profileSpecific2: %s\n", flagText(m_profileSpecific2));
    a_trace.writeFormatted("SECURE: %s\n", flagText(m_secure));
    a_trace.writeFormatted("leap61: %s\n", flagText(m_leap61));
    a_trace.writeFormatted("leap59: %s\n", flagText(m_leap59));
    a_trace.writeFormatted("currentUTCOffsetValid: %s\n", flagText(m_currentUTCOffsetValid));
    a_trace.writeFormatted("ptpTimescale: %s\n", flagText(m_ptpTimescale));
    a_trace.writeFormatted("timeTraceable: %s\n", flagText(m_timeTraceable));
    a_trace.writeFormatted("frequencyTraceable: %s\n", flagText(m_frequencyTraceable));
    a_trace.writeFormatted("correctionField: %lld\n", static_cast<long long>(m_correctionField));
    a_trace.write("sourcePortIdentity: ").write(m_sourcePortIdentity);
    a_trace.writeFormatted("sequenceId: %u\n", static_cast<unsigned>(m_sequenceId));
    a_trace.writeFormatted("controlField: %u\n", static_cast<unsigned>(m_controlField));
    a_trace.writeFormatted("logMessageInterval: %d\n", static_cast<int>(m_logMessageInterval));
    return a_trace.write("--- End Message Header ---\n");
}

void tMessageHeader::serialize(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeNibble(m_transportSpecific, a_status);
    a_target.writeEnumeration4(m_messageType, a_status);
    a_target.writeNibble(0, a_status);
    a_target.writeUInteger4(m_versionPTP, a_status);
    a_target.writeUInteger16(m_messageLength, a_status);
    a_target.writeUInteger8(m_domainNumber, a_status);
    a_target.writeOctet(0, a_status);

    a_target.writeBoolean(m_secure, a_status);
    a_target.writeBoolean(m_profileSpecific2, a_status);
    a_target.writeBoolean(m_profileSpecific1, a_status);
    a_target.writeBoolean(false, a_status);
    a_target.writeBoolean(false, a_status);
    a_target.writeBoolean(m_unicastFlag, a_status);
    a_target.writeBoolean(m_twoStepFlag, a_status);
    a_target.writeBoolean(m_alternateMasterFlag, a_status);

    a_target.writeBoolean(false, a_status);
    a_target.writeBoolean(false, a_status);
    a_target.writeBoolean(m_frequencyTraceable, a_status);
    a_target.writeBoolean(m_timeTraceable, a_status);
    a_target.writeBoolean(m_ptpTimescale, a_status);
    a_target.writeBoolean(m_currentUTCOffsetValid, a_status);
    a_target.writeBoolean(m_leap59, a_status);
    a_target.writeBoolean(m_leap61, a_status);

    a_target.writeInteger64(m_correctionField, a_status);
    for (u32 i = 0; i < 4; ++i)
    {
        a_target.writeOctet(0, a_status);
    }
    m_sourcePortIdentity.serialize(a_target, a_status);
    a_target.writeUInteger16(m_sequenceId, a_status);
    a_target.writeUInteger8(m_controlField, a_status);
    a_target.writeInteger8(m_logMessageInterval, a_status);
}

void tMessageHeader::deserialize(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    // Parsed into a copy that replaces this header only when complete.
    tMessageHeader parsed(*this);
    u8 reservedNibble = 0;
    bool reservedBit = false;
    u8 reservedOctet = 0;

    a_target.readNibble(parsed.m_transportSpecific, a_status);
    a_target.readEnumeration4(parsed.m_messageType, a_status);
    a_target.readNibble(reservedNibble, a_status);
    a_target.readUInteger4(parsed.m_versionPTP, a_status);
    a_target.readUInteger16(parsed.m_messageLength, a_status);
    a_target.readUInteger8(parsed.m_domainNumber, a_status);
    a_target.readOctet(reservedOctet, a_status);

    a_target.readBoolean(parsed.m_secure, a_status);
    a_target.readBoolean(parsed.m_profileSpecific2, a_status);
    a_target.readBoolean(parsed.m_profileSpecific1, a_status);
    a_target.readBoolean(reservedBit, a_status);
    a_target.readBoolean(reservedBit, a_status);
    a_target.readBoolean(parsed.m_unicastFlag, a_status);
    a_target.readBoolean(parsed.m_twoStepFlag, a_status);
    a_target.readBoolean(parsed.m_alternateMasterFlag, a_status);

    a_target.readBoolean(reservedBit, a_status);
    a_target.readBoolean(reservedBit, a_status);
    a_target.readBoolean(parsed.m_frequencyTraceable, a_status);
    a_target.readBoolean(parsed.m_timeTraceable, a_status);
    a_target.readBoolean(parsed.m_ptpTimescale, a_status);
    a_target.readBoolean(parsed.m_currentUTCOffsetValid, a_status);
    a_target.readBoolean(parsed.m_leap59, a_status);
    a_target.readBoolean(parsed.m_leap61, a_status);

    a_target.readInteger64(parsed.m_correctionField, a_status);
    for (u32 i = 0; i < 4; ++i)
    {
        a_target.readOctet(reservedOctet, a_status);
    }
    parsed.m_sourcePortIdentity.deserialize(a_target, a_status);
    a_target.readUInteger16(parsed.m_sequenceId, a_status);
    a_target.readUInteger8(parsed.m_controlField, a_status);
    a_target.readInteger8(parsed.m_logMessageInterval, a_status);

    if (a_status.isNotFatal())
    {
        *this = parsed;
    }
}

} // namespace nOrvPTP000
