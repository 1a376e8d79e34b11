#include "orvptp/tAnnounceMessage.h"

#include "orvptp/tSetUnlessFatal.h"
#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tAnnounceMessage::tAnnounceMessage(tStatus& a_status)
    : tPTPMessage(a_status), m_currentUTCOffset(0), m_grandmasterPriority1(0),
      m_grandmasterPriority2(0), m_stepsRemoved(0), m_timeSource(kDefaultTimeSource)
{
    prepareForSending(kMessageTypeAnnounce, a_status);
}

tAnnounceMessage::tAnnounceMessage(std::unique_ptr<tMessageHeader> a_pHeader,
                                   iSerializableTarget& a_target, tStatus& a_status)
    : tPTPMessage(std::move(a_pHeader), a_status), m_currentUTCOffset(0), m_grandmasterPriority1(0),
      m_grandmasterPriority2(0), m_stepsRemoved(0), m_timeSource(kDefaultTimeSource)
{
    parseBodyAndSuffix(a_target, a_status);
}

void tAnnounceMessage::setOriginTimestamp(const tTimestamp& a_timestamp, tStatus& a_status)
{
    setUnlessFatal(m_originTimestamp, a_timestamp, a_status);
}

void tAnnounceMessage::setCurrentUTCOffset(i16 a_currentUTCOffset, tStatus& a_status)
{
    setUnlessFatal(m_currentUTCOffset, a_currentUTCOffset, a_status);
}

void tAnnounceMessage::setGrandmasterPriority1(u8 a_priority, tStatus& a_status)
{
    setUnlessFatal(m_grandmasterPriority1, a_priority, a_status);
}

void tAnnounceMessage::setGrandmasterClockQuality(const tClockQuality& a_quality, tStatus& a_status)
{
    setUnlessFatal(m_grandmasterClockQuality, a_quality, a_status);
}

void tAnnounceMessage::setGrandmasterPriority2(u8 a_priority, tStatus& a_status)
{
    setUnlessFatal(m_grandmasterPriority2, a_priority, a_status);
}

void tAnnounceMessage::setGrandmasterIdentity(const tClockIdentity& a_identity, tStatus& a_status)
{
    setUnlessFatal(m_grandmasterIdentity, a_identity, a_status);
}

void tAnnounceMessage::setStepsRemoved(u16 a_stepsRemoved, tStatus& a_status)
{
    setUnlessFatal(m_stepsRemoved, a_stepsRemoved, a_status);
}

void tAnnounceMessage::setTimeSource(u8 a_timeSource, tStatus& a_status)
{
    setUnlessFatal(m_timeSource, a_timeSource, a_status);
}

bool tAnnounceMessage::isQualified(const tClockIdentity& a_rOwnIdentity) const
{
    const tMessageHeader* pHeader = getHeader();
    if (pHeader == nullptr || pHeader->getAlternateMasterFlag())
    {
        return false;
    }
    if (pHeader->getSourcePortIdentity().getClockIdentity() == a_rOwnIdentity)
    {
        return false;
    }
    return m_stepsRemoved < kMaxStepsRemoved;
}

tTrace& tAnnounceMessage::trace(tTrace& a_trace)
{
    openTrace(a_trace, "--- Begin Announce Message ---\n");
    a_trace.write("originTimestamp: ").write(m_originTimestamp).write("\n");
    // The offset prints unsigned, so a negative one shows as its 32-bit pattern.
    a_trace.writeFormatted("currentUTCOffset: %u\n",
                           static_cast<unsigned>(static_cast<i32>(m_currentUTCOffset)));
    a_trace.writeFormatted("timeSource: %u\n", static_cast<unsigned>(m_timeSource));
    a_trace.writeFormatted("stepsRemoved: %u\n", static_cast<unsigned>(m_stepsRemoved));
    a_trace.write("grandmasterIdentity: ").write(m_grandmasterIdentity).write("\n");
    a_trace.write("grandmasterClockQuality: ").write(m_grandmasterClockQuality).write("\n");
    a_trace.writeFormatted("grandmasterPriority1: %u\n",
                           static_cast<unsigned>(m_grandmasterPriority1));
    a_trace.writeFormatted("grandmasterPriority2: %u\n",
                           static_cast<unsigned>(m_grandmasterPriority2));
    return closeTrace(a_trace, "--- End Announce Message ---\n");
}

void tAnnounceMessage::deserializeBody(iSerializableTarget& a_target, tStatus& a_status)
{
    u8 reserved = 0;
    m_originTimestamp.deserialize(a_target, a_status);
    a_target.readInteger16(m_currentUTCOffset, a_status);
    a_target.readOctet(reserved, a_status);
    a_target.readUInteger8(m_grandmasterPriority1, a_status);
    m_grandmasterClockQuality.deserialize(a_target, a_status);
    a_target.readUInteger8(m_grandmasterPriority2, a_status);
    m_grandmasterIdentity.deserialize(a_target, a_status);
    a_target.readUInteger16(m_stepsRemoved, a_status);
    a_target.readEnumeration8(m_timeSource, a_status);
}

void tAnnounceMessage::serializeBody(iSerializableTarget& a_target, tStatus& a_status)
{
    m_originTimestamp.serialize(a_target, a_status);
    a_target.writeInteger16(m_currentUTCOffset, a_status);
    a_target.writeOctet(0, a_status);
    a_target.writeUInteger8(m_grandmasterPriority1, a_status);
    m_grandmasterClockQuality.serialize(a_target, a_status);
    a_target.writeUInteger8(m_grandmasterPriority2, a_status);
    m_grandmasterIdentity.serialize(a_target, a_status);
    a_target.writeUInteger16(m_stepsRemoved, a_status);
    a_target.writeEnumeration8(m_timeSource, a_status);
}

} // namespace nOrvPTP000
