#pragma once
#include "orvptp/TLVs/tCommandTLVs.h"
#include "orvptp/tPTPText.h"
#include "orvptp/tTimestamp.h"
#include "orvtarn/protons/status/tAllocator.h"

#include <vector>

// The fault log. The clock keeps none: a GET reports an empty log and a reset
// is acknowledged. The records serve to parse, copy and trace a log that a
// peer sent.

namespace nOrvPTP000
{

// One fault:
//   faultRecordLength (2, the octets behind itself), faultTime (10),
//   severityCode (1), faultName, faultValue, faultDescription (texts).
// faultRecordLength is kept as received and not compared with the parts.
class tFaultRecord : public iPTPSerializable
{
public:
    // Time zero, severity 7 (debug), empty texts: faultRecordLength 14.
    tFaultRecord();
    tFaultRecord(const tFaultRecord& a_other, nOrvTarn000::tStatus& a_status);
    tFaultRecord& operator=(const tFaultRecord&) = delete;

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void serialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void deserialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    u16 getSize() override { return static_cast<u16>(m_faultRecordLength + 2); }

private:
    u16 m_faultRecordLength;
    tTimestamp m_faultTime;
    u8 m_severityCode;
    tPTPText m_faultName;
    tPTPText m_faultValue;
    tPTPText m_faultDescription;
};

// FAULT_LOG: numberOfFaultRecords (2), the records, and a zero octet when
// that makes an odd length. A received count is believed only as far as
// the records that the data holds: records are made as they are read, so
// that a count the datagram cannot hold ends in kStatusOutOfBounds before it
// costs memory.
class tFaultLogTLV : public tCloneable<tFaultLogTLV, tManagementTLV>
{
public:
    tFaultLogTLV();
    tFaultLogTLV(const tFaultLogTLV& a_other, nOrvTarn000::tStatus& a_status);

    u16 getNumberOfFaultRecords() const { return m_numberOfFaultRecords; }

    // An empty log: the count is 0; records that the request carried stay
    // but are not written.
    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    typedef std::vector<std::unique_ptr<tFaultRecord>,
                        nOrvTarn000::tAllocator<std::unique_ptr<tFaultRecord>>>
        tRecords;

    // Appends a_pRecord; one that cannot be stored is deleted.
    void addRecord(std::unique_ptr<tFaultRecord> a_pRecord, nOrvTarn000::tStatus& a_status);
    // The lengthField of the count and the records held, and the pad.
    void updateLength(nOrvTarn000::tStatus& a_status);

    u16 m_numberOfFaultRecords;
    tRecords m_records;
    bool m_pad;
};

// FAULT_LOG_RESET: a COMMAND is acknowledged with the TLV itself; there is
// no log to clear.
class tFaultLogResetTLV : public tCloneable<tFaultLogResetTLV, tEmptyManagementTLV>
{
public:
    tFaultLogResetTLV() : tCloneable(nManagementId::FAULT_LOG_RESET) {}

    [[nodiscard]] tManagementReply handleCommand(iPTPNode& a_node, u16 a_portNumber,
                                                 nOrvTarn000::tStatus& a_status) override;
};

} // namespace nOrvPTP000
