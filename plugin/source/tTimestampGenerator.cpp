#include "tTimestampGenerator.h"

#include "orvtarn/quarks/tMutexGuard.h"

using nOrvPTP000::tProtocolDataUnit;
using nOrvPTP000::tTimestamp;
using nOrvTarn000::tMutexGuard;
using nOrvTarn000::tStatus;

namespace nZelmarPtpPlugin_1_0
{
namespace
{

// The control values the record keeps as they are; all others become -1.
i32 controlKey(u8 a_controlField)
{
    switch (a_controlField)
    {
    case 0:
    case 1:
    case 2:
    case 3:
    case 5:
        return a_controlField;
    default:
        return -1;
    }
}

// Reads the key from the message's bytes and puts the read cursor back to 0.
// False when the datagram is too short to hold it.
bool readKey(tProtocolDataUnit& a_rPdu, tTimestampRecord& a_rRecord)
{
    tStatus status;
    u16 sequenceId = 0;
    u8 controlField = 0;
    a_rPdu.setReadPositionBytes(tTimestampGenerator::kSourcePortIdentityOffset, status);
    a_rRecord.m_sender.deserialize(a_rPdu, status);
    a_rPdu.setReadPositionBytes(tTimestampGenerator::kSequenceIdOffset, status);
    a_rPdu.readUInteger16(sequenceId, status);
    a_rPdu.setReadPositionBytes(tTimestampGenerator::kControlFieldOffset, status);
    a_rPdu.readUInteger8(controlField, status);
    a_rPdu.rewind();
    if (status.isFatal())
    {
        return false;
    }
    a_rRecord.m_sequenceId = sequenceId;
    a_rRecord.m_control = controlKey(controlField);
    return true;
}

} // namespace

tTimestampGenerator::tTimestampGenerator(tStatus& a_status)
    : m_receiveRecords(kCapacity, a_status), m_transmitRecords(kCapacity, a_status),
      m_mutex(a_status)
{
}

bool tTimestampGenerator::getReceiveTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime,
                                              tStatus& a_status)
{
    return fetch(m_receiveRecords, a_rPdu, a_rTime, a_status);
}

bool tTimestampGenerator::getTransmitTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime,
                                               tStatus& a_status)
{
    return fetch(m_transmitRecords, a_rPdu, a_rTime, a_status);
}

void tTimestampGenerator::recordReceiveTimestamp(tProtocolDataUnit& a_rPdu,
                                                 const tTimestamp& a_rTime, tStatus& a_status)
{
    record(m_receiveRecords, a_rPdu, a_rTime, a_status);
}

void tTimestampGenerator::recordTransmitTimestamp(tProtocolDataUnit& a_rPdu,
                                                  const tTimestamp& a_rTime, tStatus& a_status)
{
    record(m_transmitRecords, a_rPdu, a_rTime, a_status);
}

void tTimestampGenerator::record(tRecords& a_rRecords, tProtocolDataUnit& a_rPdu,
                                 const tTimestamp& a_rTime, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    tTimestampRecord entry;
    if (!readKey(a_rPdu, entry))
    {
        return;
    }
    entry.m_time = a_rTime;

    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    if (a_rRecords.getCount() == kCapacity)
    {
        a_rRecords.drop(1);
    }
    a_rRecords.push(entry, a_status);
}

bool tTimestampGenerator::fetch(tRecords& a_rRecords, tProtocolDataUnit& a_rPdu,
                                tTimestamp& a_rTime, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return false;
    }
    tTimestampRecord key;
    if (!readKey(a_rPdu, key))
    {
        return false;
    }

    tMutexGuard guard(m_mutex, a_status);
    while (a_status.isNotFatal() && a_rRecords.getCount() > 0)
    {
        const tTimestampRecord entry = a_rRecords.pop(a_status);
        if (a_status.isNotFatal() && entry.m_control == key.m_control &&
            entry.m_sequenceId == key.m_sequenceId && entry.m_sender == key.m_sender)
        {
            a_rTime = entry.m_time;
            return true;
        }
    }
    return false;
}

} // namespace nZelmarPtpPlugin_1_0
