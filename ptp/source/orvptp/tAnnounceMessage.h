#pragma once
#include "orvptp/tClockQuality.h"
#include "orvptp/tPTPMessage.h"
#include "orvptp/tTimestamp.h"

namespace nOrvPTP000
{

// Announce: the grandmaster that a port offers, and how far away it is.
// 64 octets without TLVs.
class tAnnounceMessage : public tPTPMessage
{
public:
    enum : u16
    {
        kBodyLength = 30
    };
    enum : u8
    {
        // timeSource INTERNAL_OSCILLATOR.
        kDefaultTimeSource = 0xA0
    };
    enum : u16
    {
        // A received Announce from this many steps away or more is refused.
        kMaxStepsRemoved = 255
    };

    // Offset 0, timeSource 0xA0, stepsRemoved 0, grandmaster identity zero,
    // default clock quality, both priorities 0.
    explicit tAnnounceMessage(nOrvTarn000::tStatus& a_status);
    tAnnounceMessage(std::unique_ptr<tMessageHeader> a_pHeader, iSerializableTarget& a_target,
                     nOrvTarn000::tStatus& a_status);

    const tTimestamp& getOriginTimestamp() const { return m_originTimestamp; }
    i16 getCurrentUTCOffset() const { return m_currentUTCOffset; }
    u8 getGrandmasterPriority1() const { return m_grandmasterPriority1; }
    const tClockQuality& getGrandmasterClockQuality() const { return m_grandmasterClockQuality; }
    u8 getGrandmasterPriority2() const { return m_grandmasterPriority2; }
    const tClockIdentity& getGrandmasterIdentity() const { return m_grandmasterIdentity; }
    u16 getStepsRemoved() const { return m_stepsRemoved; }
    u8 getTimeSource() const { return m_timeSource; }

    void setOriginTimestamp(const tTimestamp& a_timestamp, nOrvTarn000::tStatus& a_status);
    void setCurrentUTCOffset(i16 a_currentUTCOffset, nOrvTarn000::tStatus& a_status);
    void setGrandmasterPriority1(u8 a_priority, nOrvTarn000::tStatus& a_status);
    void setGrandmasterClockQuality(const tClockQuality& a_quality, nOrvTarn000::tStatus& a_status);
    void setGrandmasterPriority2(u8 a_priority, nOrvTarn000::tStatus& a_status);
    void setGrandmasterIdentity(const tClockIdentity& a_identity, nOrvTarn000::tStatus& a_status);
    void setStepsRemoved(u16 a_stepsRemoved, nOrvTarn000::tStatus& a_status);
    void setTimeSource(u8 a_timeSource, nOrvTarn000::tStatus& a_status);

    // Whether a received Announce may go on to the best master selection: not
    // from an alternate master, not from this clock (a_rOwnIdentity), and
    // fewer than kMaxStepsRemoved steps away.
    bool isQualified(const tClockIdentity& a_rOwnIdentity) const;

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    u16 getSize() override { return sizeWithBody(kBodyLength); }
    void deserializeBody(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeBody(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    tTimestamp m_originTimestamp;
    i16 m_currentUTCOffset;
    u8 m_grandmasterPriority1;
    tClockQuality m_grandmasterClockQuality;
    u8 m_grandmasterPriority2;
    tClockIdentity m_grandmasterIdentity;
    u16 m_stepsRemoved;
    u8 m_timeSource;
};

} // namespace nOrvPTP000
