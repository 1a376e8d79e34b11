#pragma once
#include "orvptp/tPortIdentity.h"
#include "orvptp/tPortStateCodes.h"
#include "orvptp/tResettableDataSet.h"
#include "orvptp/tTimeInterval.h"

namespace nOrvPTP000
{

struct tPortDSValues
{
    tPortIdentity m_portIdentity;
    u8 m_portState;
    i8 m_logMinDelayReqInterval;
    tTimeInterval m_peerMeanPathDelay;
    i8 m_logAnnounceInterval;
    u8 m_announceReceiptTimeout;
    i8 m_logSyncInterval;
    u8 m_delayMechanism;
    i8 m_logMinPdelayReqInterval;
    u8 m_versionNumber;
};

// The clock's one port: its identity (port 1), state and message intervals.
// At construction the port is INITIALIZING, uses the end-to-end delay
// mechanism of version 2, announces every 2 s with a receipt timeout of 3
// intervals, and sends Sync and Delay_Req every 1 s.
//
// Beside the data set the port keeps the handles of its armed timers and the
// sequence counters of the messages it sends. These belong to the running
// port, so resetToInitial leaves them alone.
class tPortDS : public tResettableDataSet<tPortDSValues>
{
public:
    enum : u16
    {
        kPortNumber = 1
    };
    enum : u8
    {
        kDelayMechanismEndToEnd = 1,
        kVersionNumber = 2
    };
    // The timers of the port, by handle index.
    enum : u32
    {
        kAnnounceReceiptTimer = 0,
        kStateDecisionTimer = 1,
        kSendAnnounceTimer = 2,
        kSendSyncTimer = 3,
        kDelayRequestTimer = 4,
        kMasterClockSelectedTimer = 5,
        kTimerCount = 6
    };
    // The handle of a timer slot that holds no timer.
    static constexpr u32 kNoTimer = 0xFFFFFFFF;
    // The kinds of sent message that count their sequenceId.
    enum : u32
    {
        kAnnounceSequence = 0,
        kSyncSequence = 1,
        kDelayReqSequence = 2,
        kSequenceCount = 3
    };

    explicit tPortDS(const tClockIdentity& a_clockIdentity);

    tPortIdentity getPortIdentity() const { return m_values.m_portIdentity; }
    u8 getPortState() const { return m_values.m_portState; }
    i8 getLogMinDelayReqInterval() const { return m_values.m_logMinDelayReqInterval; }
    tTimeInterval getPeerMeanPathDelay() const { return m_values.m_peerMeanPathDelay; }
    i8 getLogAnnounceInterval() const { return m_values.m_logAnnounceInterval; }
    u8 getAnnounceReceiptTimeout() const { return m_values.m_announceReceiptTimeout; }
    i8 getLogSyncInterval() const { return m_values.m_logSyncInterval; }
    u8 getDelayMechanism() const { return m_values.m_delayMechanism; }
    i8 getLogMinPdelayReqInterval() const { return m_values.m_logMinPdelayReqInterval; }
    u8 getVersionNumber() const { return m_values.m_versionNumber; }

    void setPortIdentity(const tPortIdentity& a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tPortDSValues::m_portIdentity, a_value, a_status);
    }
    void setPortState(u8 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tPortDSValues::m_portState, a_value, a_status);
    }
    void setLogMinDelayReqInterval(i8 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tPortDSValues::m_logMinDelayReqInterval, a_value, a_status);
    }
    void setPeerMeanPathDelay(const tTimeInterval& a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tPortDSValues::m_peerMeanPathDelay, a_value, a_status);
    }
    void setLogAnnounceInterval(i8 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tPortDSValues::m_logAnnounceInterval, a_value, a_status);
    }
    void setAnnounceReceiptTimeout(u8 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tPortDSValues::m_announceReceiptTimeout, a_value, a_status);
    }
    void setLogSyncInterval(i8 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tPortDSValues::m_logSyncInterval, a_value, a_status);
    }
    void setDelayMechanism(u8 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tPortDSValues::m_delayMechanism, a_value, a_status);
    }
    void setLogMinPdelayReqInterval(i8 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tPortDSValues::m_logMinPdelayReqInterval, a_value, a_status);
    }
    void setVersionNumber(u8 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tPortDSValues::m_versionNumber, a_value, a_status);
    }

    // kNoTimer for an index beyond kTimerCount, which is reported as a
    // broken contract.
    u32 getTimerId(u32 a_index) const;
    // An index beyond kTimerCount is refused with kStatusInvalidArgument.
    void setTimerId(u32 a_index, u32 a_id, nOrvTarn000::tStatus& a_status);
    // Every slot to kNoTimer.
    void clearTimerIds();

    // The sequenceId that the next message of a_kind carries; 0 for an
    // unknown kind, which is reported as a broken contract.
    u16 getSequenceId(u32 a_kind) const;
    // Steps the counter of a_kind by one, from 65,535 back to 0.
    void nextSequenceId(u32 a_kind);

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;

private:
    u32 m_timerIds[kTimerCount];
    u16 m_sequenceIds[kSequenceCount];
};

} // namespace nOrvPTP000
