#pragma once
#include "orvptp/TLVs/tManagementTLV.h"
#include "orvptp/tCurrentDS.h"
#include "orvptp/tDefaultDS.h"
#include "orvptp/tParentDS.h"
#include "orvptp/tPortDS.h"
#include "orvptp/tTimePropertiesDS.h"

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

class tDefaultDataSetTLV : public tCloneable<tDefaultDataSetTLV, tManagementTLV>
{
public:
    tDefaultDataSetTLV();

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    tDefaultDSValues m_values;
};

class tCurrentDataSetTLV : public tCloneable<tCurrentDataSetTLV, tManagementTLV>
{
public:
    tCurrentDataSetTLV();

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    tCurrentDSValues m_values;
};

class tParentDataSetTLV : public tCloneable<tParentDataSetTLV, tManagementTLV>
{
public:
    tParentDataSetTLV();

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    tParentDSValues m_values;
};

class tTimePropertiesDataSetTLV : public tCloneable<tTimePropertiesDataSetTLV, tManagementTLV>
{
public:
    tTimePropertiesDataSetTLV();

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    tTimePropertiesDSValues m_values;
};

class tPortDataSetTLV : public tCloneable<tPortDataSetTLV, tManagementTLV>
{
public:
    tPortDataSetTLV();

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    tPortDSValues m_values;
};

} // namespace nOrvPTP000
