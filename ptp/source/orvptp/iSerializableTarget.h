#pragma once
#include "orvtarn/protons/status/tStatus.h"
#include "orvtarn/quarks/tTypes.h"

namespace nOrvPTP000
{

// The byte sink and source that every wire form is written to and read from.
//
// Wire conventions: integers of two or more bytes are big-endian; fields
// narrower than a byte are packed most significant bit first; 8-bit and wider
// fields begin at the next byte boundary, the unused bits of a partly filled
// byte being zero on writing and skipped on reading.
//
// Every operation does nothing when a_status is already fatal, so a run of
// calls needs one test of the status at its end. After a failed read the
// destination holds no meaningful value.
class iSerializableTarget
{
public:
    virtual ~iSerializableTarget() {}

    virtual void writeBoolean(bool a_value, nOrvTarn000::tStatus& a_status) = 0;
    virtual void writeEnumeration4(u8 a_value, nOrvTarn000::tStatus& a_status) = 0;
    virtual void writeEnumeration8(u8 a_value, nOrvTarn000::tStatus& a_status) = 0;
    virtual void writeEnumeration16(u16 a_value, nOrvTarn000::tStatus& a_status) = 0;
    virtual void writeUInteger4(u8 a_value, nOrvTarn000::tStatus& a_status) = 0;
    virtual void writeUInteger8(u8 a_value, nOrvTarn000::tStatus& a_status) = 0;
    virtual void writeUInteger16(u16 a_value, nOrvTarn000::tStatus& a_status) = 0;
    virtual void writeUInteger32(u32 a_value, nOrvTarn000::tStatus& a_status) = 0;
    // Writes the low 6 bytes of a_value.
    virtual void writeUInteger48(u64 a_value, nOrvTarn000::tStatus& a_status) = 0;
    virtual void writeInteger8(i8 a_value, nOrvTarn000::tStatus& a_status) = 0;
    virtual void writeInteger16(i16 a_value, nOrvTarn000::tStatus& a_status) = 0;
    virtual void writeInteger32(i32 a_value, nOrvTarn000::tStatus& a_status) = 0;
    virtual void writeInteger64(i64 a_value, nOrvTarn000::tStatus& a_status) = 0;
    virtual void writeNibble(u8 a_value, nOrvTarn000::tStatus& a_status) = 0;
    virtual void writeOctet(u8 a_value, nOrvTarn000::tStatus& a_status) = 0;
    virtual void writeOctets(const void* a_pData, u32 a_length, nOrvTarn000::tStatus& a_status) = 0;

    virtual void readBoolean(bool& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    virtual void readEnumeration4(u8& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    virtual void readEnumeration8(u8& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    virtual void readEnumeration16(u16& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    virtual void readUInteger4(u8& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    virtual void readUInteger8(u8& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    virtual void readUInteger16(u16& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    virtual void readUInteger32(u32& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    // Reads 6 bytes into the low part of a_rValue; its top 2 bytes become zero.
    virtual void readUInteger48(u64& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    virtual void readInteger8(i8& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    virtual void readInteger16(i16& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    virtual void readInteger32(i32& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    virtual void readInteger64(i64& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    virtual void readNibble(u8& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    virtual void readOctet(u8& a_rValue, nOrvTarn000::tStatus& a_status) = 0;
    virtual void readOctets(void* a_pData, u32 a_length, nOrvTarn000::tStatus& a_status) = 0;
};

} // namespace nOrvPTP000
