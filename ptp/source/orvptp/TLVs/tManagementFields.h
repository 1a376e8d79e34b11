#pragma once
#include "orvptp/iSerializableTarget.h"
#include "orvtarn/protons/status/iTraceable.h"

// The small pieces that the data fields of management TLVs share.

namespace nOrvPTP000
{

// A flag octet travels as eight booleans, bit 7 first; a_flags holds them
// as bits. Unnamed bits are written as 0 and dropped when read.
void writeFlags(iSerializableTarget& a_target, u8 a_flags, nOrvTarn000::tStatus& a_status);
u8 readFlags(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status);
inline u8 flagIf(bool a_value, u8 a_bit)
{
    return a_value ? static_cast<u8>(1u << a_bit) : 0;
}
inline bool hasFlag(u8 a_flags, u8 a_bit)
{
    return (a_flags >> a_bit & 1u) != 0;
}
// The zero octets of a reserved field; dropped when read.
void writeReserved(iSerializableTarget& a_target, u32 a_count, nOrvTarn000::tStatus& a_status);
void readReserved(iSerializableTarget& a_target, u32 a_count, nOrvTarn000::tStatus& a_status);
// The pad octet behind a variable data field, when a_pad says there is one.
void readPad(bool a_pad, iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status);
void writePad(bool a_pad, iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status);
// The label, ": " unless it ends in a blank, and the object's trace.
nOrvTarn000::tTrace& traceLabelled(nOrvTarn000::tTrace& a_trace, const char* a_label,
                                   nOrvTarn000::iTraceable& a_value);

// The flag bits of the time properties, as every data field carries them.
enum : u8
{
    kFrequencyTraceableBit = 5,
    kTimeTraceableBit = 4,
    kPtpTimescaleBit = 3,
    kUtcOffsetValidBit = 2,
    kLeap59Bit = 1,
    kLeap61Bit = 0
};

// The values that a SET takes.
template <typename tValue>
bool acceptsAny(tValue)
{
    return true;
}
// 0x20 to 0x31, and 0xFE (unknown).
bool isClockAccuracy(u8 a_value);
// End-to-end (1), peer-to-peer (2), disabled (254).
bool isDelayMechanism(u8 a_value);
// The time sources of the standard's table.
bool isTimeSource(u8 a_value);

} // namespace nOrvPTP000
