#pragma once
#include "orvptp/TLVs/tManagementTLV.h"
#include "orvptp/tClockIdentity.h"
#include "orvptp/tClockQuality.h"
#include "orvptp/tPortIdentity.h"
#include "orvptp/tTimeInterval.h"

// The five data sets as GET reads them, each in one TLV. The data fields, by
// offset:
//   DEFAULT_DATA_SET (20): 0 flags (bit 1 slaveOnly, bit 0 twoStepFlag);
//     1 res.; 2 numberPorts; 4 priority1; 5 clockQuality; 9 priority2;
//     10 clockIdentity; 18 domainNumber; 19 res.
//   CURRENT_DATA_SET (18): 0 stepsRemoved; 2 offsetFromMaster;
//     10 meanPathDelay
//   PARENT_DATA_SET (32): 0 parentPortIdentity; 10 flags (bit 0
//     parentStats); 11 res.; 12 observedParentOffsetScaledLogVariance;
//     14 observedParentClockPhaseChangeRate; 18 grandmasterPriority1;
//     19 grandmasterClockQuality; 23 grandmasterPriority2;
//     24 grandmasterIdentity
//   TIME_PROPERTIES_DATA_SET (4): 0 currentUtcOffset; 2 flags (bit 5
//     frequencyTraceable, 4 timeTraceable, 3 ptpTimescale,
//     2 currentUtcOffsetValid, 1 leap59, 0 leap61); 3 timeSource
//   PORT_DATA_SET (26): 0 portIdentity (this clock, the addressed port);
//     10 portState; 11 logMinDelayReqInterval; 12 peerMeanPathDelay;
//     20 logAnnounceInterval; 21 announceReceiptTimeout; 22 logSyncInterval;
//     23 delayMechanism; 24 logMinPdelayReqInterval; 25 versionNumber in the
//     low four bits

namespace nOrvPTP000
{

class tDefaultDataSetTLV : public tManagementTLV
{
public:
    tDefaultDataSetTLV();

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    std::unique_ptr<tTLV> clone(nOrvTarn000::tStatus& a_status) const override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    bool m_slaveOnly;
    bool m_twoStepFlag;
    u16 m_numberPorts;
    u8 m_priority1;
    tClockQuality m_clockQuality;
    u8 m_priority2;
    tClockIdentity m_clockIdentity;
    u8 m_domainNumber;
};

class tCurrentDataSetTLV : public tManagementTLV
{
public:
    tCurrentDataSetTLV();

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    std::unique_ptr<tTLV> clone(nOrvTarn000::tStatus& a_status) const override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    u16 m_stepsRemoved;
    tTimeInterval m_offsetFromMaster;
    tTimeInterval m_meanPathDelay;
};

class tParentDataSetTLV : public tManagementTLV
{
public:
    tParentDataSetTLV();

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    std::unique_ptr<tTLV> clone(nOrvTarn000::tStatus& a_status) const override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    tPortIdentity m_parentPortIdentity;
    bool m_parentStats;
    u16 m_observedParentOffsetScaledLogVariance;
    i32 m_observedParentClockPhaseChangeRate;
    u8 m_grandmasterPriority1;
    tClockQuality m_grandmasterClockQuality;
    u8 m_grandmasterPriority2;
    tClockIdentity m_grandmasterIdentity;
};

class tTimePropertiesDataSetTLV : public tManagementTLV
{
public:
    tTimePropertiesDataSetTLV();

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    std::unique_ptr<tTLV> clone(nOrvTarn000::tStatus& a_status) const override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    i16 m_currentUtcOffset;
    // Bits as on the wire.
    u8 m_flags;
    u8 m_timeSource;
};

class tPortDataSetTLV : public tManagementTLV
{
public:
    tPortDataSetTLV();

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    std::unique_ptr<tTLV> clone(nOrvTarn000::tStatus& a_status) const override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
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

} // namespace nOrvPTP000
