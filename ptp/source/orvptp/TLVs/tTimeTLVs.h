#pragma once
#include "orvptp/TLVs/tManagementTLV.h"
#include "orvptp/tTimestamp.h"

// The clock's time and the time properties it would announce, GET and SET.
// Data fields, by offset:
//   TIME (10): 0 currentTime
//   UTC_PROPERTIES (4): 0 currentUtcOffset; 2 flags (bit 2
//     currentUtcOffsetValid, 1 leap59, 0 leap61); 3 res.
//   TRACEABILITY_PROPERTIES (2): 0 flags (bit 5 frequencyTraceable, 4
//     timeTraceable); 1 res.
//   TIMESCALE_PROPERTIES (2): 0 flags (bit 3 ptpTimescale); 1 timeSource

namespace nOrvPTP000
{

// Setting the time steps the clock, and only a clock that is its own
// grandmaster may be set: any other answers NOT_SUPPORTED.
class tTimeTLV : public tCloneable<tTimeTLV, tManagementTLV>
{
public:
    tTimeTLV() : tCloneable(nManagementId::TIME) {}

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    [[nodiscard]] tManagementReply handleSet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    tTimestamp m_currentTime;
};

// A TLV whose data field is one flag octet of time properties, with the
// octet before or after it (the offset, the timeSource or reserved). The
// flags are kept as bits of the wire.
class tTimePropertyFlagsTLV : public tManagementTLV
{
protected:
    explicit tTimePropertyFlagsTLV(u16 a_managementId) : tManagementTLV(a_managementId), m_flags(0)
    {
    }
    // The flags of the named bits, read from the node's getters.
    u8 m_flags;
};

class tUTCPropertiesTLV : public tCloneable<tUTCPropertiesTLV, tTimePropertyFlagsTLV>
{
public:
    tUTCPropertiesTLV() : tCloneable(nManagementId::UTC_PROPERTIES), m_currentUtcOffset(0) {}

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    [[nodiscard]] tManagementReply handleSet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    i16 m_currentUtcOffset;
};

class tTraceabilityPropertiesTLV
    : public tCloneable<tTraceabilityPropertiesTLV, tTimePropertyFlagsTLV>
{
public:
    tTraceabilityPropertiesTLV() : tCloneable(nManagementId::TRACEABILITY_PROPERTIES) {}

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    [[nodiscard]] tManagementReply handleSet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
};

// A SET with an unknown timeSource keeps the clock's timeSource, still sets
// the ptpTimescale flag, and answers WRONG_VALUE.
class tTimescalePropertiesTLV : public tCloneable<tTimescalePropertiesTLV, tTimePropertyFlagsTLV>
{
public:
    tTimescalePropertiesTLV() : tCloneable(nManagementId::TIMESCALE_PROPERTIES), m_timeSource(0) {}

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    [[nodiscard]] tManagementReply handleSet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    u8 m_timeSource;
};

} // namespace nOrvPTP000
