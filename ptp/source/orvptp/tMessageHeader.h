#pragma once
#include "orvptp/tPortIdentity.h"

namespace nOrvPTP000
{

// messageType values on the wire.
enum : u8
{
    kMessageTypeSync = 0,
    kMessageTypeDelayReq = 1,
    kMessageTypePdelayReq = 2,
    kMessageTypePdelayResp = 3,
    kMessageTypeFollowUp = 8,
    kMessageTypeDelayResp = 9,
    kMessageTypePdelayRespFollowUp = 10,
    kMessageTypeAnnounce = 11,
    kMessageTypeSignaling = 12,
    kMessageTypeManagement = 13
};

// The 34-byte header common to every message.
//
// Reserved positions are written as zero and dropped on reading, so a peer's
// reserved bits are neither acted upon nor echoed. messageLength is carried
// but never trusted: the end of the datagram bounds every parse.
class tMessageHeader : public iPTPSerializable
{
public:
    enum : u16
    {
        kLength = 34
    };
    enum : u8
    {
        kVersionPTP = 2,
        // logMessageInterval of messages that have no interval.
        kNoLogMessageInterval = 0x7F
    };

    // An Announce header of version 2, all flags false, source all ones.
    tMessageHeader();
    // Default-constructs, then parses from a_target.
    tMessageHeader(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status);

    // The controlField that goes with a messageType.
    static u8 controlFieldFor(u8 a_messageType);

    u8 getTransportSpecific() const { return m_transportSpecific; }
    u8 getMessageType() const { return m_messageType; }
    u8 getVersionPTP() const { return m_versionPTP; }
    u16 getMessageLength() const { return m_messageLength; }
    u8 getDomainNumber() const { return m_domainNumber; }
    bool getAlternateMasterFlag() const { return m_alternateMasterFlag; }
    bool getTwoStepFlag() const { return m_twoStepFlag; }
    bool getUnicastFlag() const { return m_unicastFlag; }
    bool getProfileSpecific1() const { return m_profileSpecific1; }
    bool getProfileSpecific2() const { return m_profileSpecific2; }
    bool getSecure() const { return m_secure; }
    bool getLeap61() const { return m_leap61; }
    bool getLeap59() const { return m_leap59; }
    bool getCurrentUTCOffsetValid() const { return m_currentUTCOffsetValid; }
    bool getPtpTimescale() const { return m_ptpTimescale; }
    bool getTimeTraceable() const { return m_timeTraceable; }
    bool getFrequencyTraceable() const { return m_frequencyTraceable; }
    i64 getCorrectionField() const { return m_correctionField; }
    const tPortIdentity& getSourcePortIdentity() const { return m_sourcePortIdentity; }
    u16 getSequenceId() const { return m_sequenceId; }
    u8 getControlField() const { return m_controlField; }
    i8 getLogMessageInterval() const { return m_logMessageInterval; }

    // Sets the controlField to match as well.
    void setMessageType(u8 a_messageType, nOrvTarn000::tStatus& a_status);
    void setMessageLength(u16 a_messageLength, nOrvTarn000::tStatus& a_status);
    void setDomainNumber(u8 a_domainNumber, nOrvTarn000::tStatus& a_status);
    void setTwoStepFlag(bool a_value, nOrvTarn000::tStatus& a_status);
    void setLeap61(bool a_value, nOrvTarn000::tStatus& a_status);
    void setLeap59(bool a_value, nOrvTarn000::tStatus& a_status);
    void setCurrentUTCOffsetValid(bool a_value, nOrvTarn000::tStatus& a_status);
    void setPtpTimescale(bool a_value, nOrvTarn000::tStatus& a_status);
    void setTimeTraceable(bool a_value, nOrvTarn000::tStatus& a_status);
    void setFrequencyTraceable(bool a_value, nOrvTarn000::tStatus& a_status);
    // Scaled nanoseconds.
    void setCorrectionField(i64 a_correctionField, nOrvTarn000::tStatus& a_status);
    void setSourcePortIdentity(const tPortIdentity& a_identity, nOrvTarn000::tStatus& a_status);
    void setSequenceId(u16 a_sequenceId, nOrvTarn000::tStatus& a_status);
    void setLogMessageInterval(i8 a_logMessageInterval, nOrvTarn000::tStatus& a_status);

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void serialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    // Leaves the header unchanged when the data runs out.
    void deserialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    u16 getSize() override { return kLength; }

private:
    u8 m_transportSpecific;
    u8 m_messageType;
    u8 m_versionPTP;
    u16 m_messageLength;
    u8 m_domainNumber;
    bool m_alternateMasterFlag;
    bool m_twoStepFlag;
    bool m_unicastFlag;
    bool m_profileSpecific1;
    bool m_profileSpecific2;
    bool m_secure;
    bool m_leap61;
    bool m_leap59;
    bool m_currentUTCOffsetValid;
    bool m_ptpTimescale;
    bool m_timeTraceable;
    bool m_frequencyTraceable;
    i64 m_correctionField;
    tPortIdentity m_sourcePortIdentity;
    u16 m_sequenceId;
    u8 m_controlField;
    i8 m_logMessageInterval;
};

} // namespace nOrvPTP000
