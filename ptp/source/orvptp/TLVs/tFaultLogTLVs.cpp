#include "orvptp/TLVs/tFaultLogTLVs.h"

#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

namespace
{

const u8 kSeverityDebug = 7;

} // namespace

// ---- tFaultRecord ----

tFaultRecord::tFaultRecord() : m_faultRecordLength(0), m_severityCode(kSeverityDebug)
{
    m_faultRecordLength =
        static_cast<u16>(m_faultTime.getSize() + m_faultName.getSize() + m_faultValue.getSize() +
                         m_faultDescription.getSize() + 1);
}

tFaultRecord::tFaultRecord(const tFaultRecord& a_other, tStatus& a_status)
    : iPTPSerializable(a_other), m_faultRecordLength(a_other.m_faultRecordLength),
      m_faultTime(a_other.m_faultTime), m_severityCode(a_other.m_severityCode)
{
    m_faultName.assign(a_other.m_faultName, a_status);
    m_faultValue.assign(a_other.m_faultValue, a_status);
    m_faultDescription.assign(a_other.m_faultDescription, a_status);
}

tTrace& tFaultRecord::trace(tTrace& a_trace)
{
    a_trace.writeFormatted("faultRecordLength: %u ", static_cast<unsigned>(m_faultRecordLength));
    a_trace.write("faultTime: ").write(m_faultTime).write(" ");
    a_trace.writeFormatted("severityCode: %#.2x ", static_cast<unsigned>(m_severityCode));
    a_trace.write("faultName: ").write(m_faultName).write(" ");
    a_trace.write("faultValue: ").write(m_faultValue).write(" ");
    return a_trace.write("faultDescription: ").write(m_faultDescription);
}

void tFaultRecord::serialize(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeUInteger16(m_faultRecordLength, a_status);
    m_faultTime.serialize(a_target, a_status);
    a_target.writeEnumeration8(m_severityCode, a_status);
    m_faultName.serialize(a_target, a_status);
    m_faultValue.serialize(a_target, a_status);
    m_faultDescription.serialize(a_target, a_status);
}

void tFaultRecord::deserialize(iSerializableTarget& a_target, tStatus& a_status)
{
    u8 severityCode = m_severityCode;
    a_target.readUInteger16(m_faultRecordLength, a_status);
    m_faultTime.deserialize(a_target, a_status);
    a_target.readEnumeration8(severityCode, a_status);
    m_severityCode = severityCode;
    m_faultName.deserialize(a_target, a_status);
    m_faultValue.deserialize(a_target, a_status);
    m_faultDescription.deserialize(a_target, a_status);
}

// ---- FAULT_LOG ----

tFaultLogTLV::tFaultLogTLV()
    : tCloneable(nManagementId::FAULT_LOG), m_numberOfFaultRecords(0), m_pad(false)
{
    tStatus status;
    updateLength(status);
}

tFaultLogTLV::tFaultLogTLV(const tFaultLogTLV& a_other, tStatus& a_status)
    : tCloneable(a_other), m_numberOfFaultRecords(a_other.m_numberOfFaultRecords), m_pad(false)
{
    for (const std::unique_ptr<tFaultRecord>& pRecord : a_other.m_records)
    {
        addRecord(nOrvTarn000::makeOwned<tFaultRecord>(a_status, *pRecord, a_status), a_status);
    }
    updateLength(a_status);
}

void tFaultLogTLV::addRecord(std::unique_ptr<tFaultRecord> a_pRecord, tStatus& a_status)
{
    if (a_status.isFatal() || a_pRecord == nullptr)
    {
        return;
    }
    m_records.push_back(std::move(a_pRecord));
    if (!CHECK_ALLOCATION(m_records, a_status))
    {
        m_records.get_allocator().resetFailure();
    }
}

void tFaultLogTLV::updateLength(tStatus& a_status)
{
    u32 length = 2;
    for (const std::unique_ptr<tFaultRecord>& pRecord : m_records)
    {
        length += pRecord->getSize();
    }
    m_pad = setLength(length, a_status, 2) != 0;
}

tManagementReply tFaultLogTLV::handleGet(iPTPNode&, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_numberOfFaultRecords = 0;
    m_pad = setLength(2, a_status, 2) != 0;
    return tManagementReply::itself();
}

void tFaultLogTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.readUInteger16(m_numberOfFaultRecords, a_status);
    m_records.clear();
    for (u32 i = 0; i < m_numberOfFaultRecords && a_status.isNotFatal(); ++i)
    {
        std::unique_ptr<tFaultRecord> pRecord = nOrvTarn000::makeOwned<tFaultRecord>(a_status);
        if (pRecord != nullptr)
        {
            pRecord->deserialize(a_target, a_status);
        }
        addRecord(std::move(pRecord), a_status);
    }
    updateLength(a_status);
    readPad(m_pad, a_target, a_status);
}

void tFaultLogTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeUInteger16(m_numberOfFaultRecords, a_status);
    for (u32 i = 0; i < m_numberOfFaultRecords && i < m_records.size(); ++i)
    {
        m_records[i]->serialize(a_target, a_status);
    }
    writePad(m_pad, a_target, a_status);
}

// ---- FAULT_LOG_RESET ----

tManagementReply tFaultLogResetTLV::handleCommand(iPTPNode&, u16, tStatus& a_status)
{
    return itselfUnlessFatal(a_status);
}

} // namespace nOrvPTP000
