#include "orvptp/TLVs/tManagementFields.h"

#include "orvtarn/protons/status/tTrace.h"

#include <cstring>

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

void writeFlags(iSerializableTarget& a_target, u8 a_flags, tStatus& a_status)
{
    for (int bit = 7; bit >= 0; --bit)
    {
        a_target.writeBoolean(hasFlag(a_flags, static_cast<u8>(bit)), a_status);
    }
}

u8 readFlags(iSerializableTarget& a_target, tStatus& a_status)
{
    u8 flags = 0;
    for (int bit = 7; bit >= 0; --bit)
    {
        bool value = false;
        a_target.readBoolean(value, a_status);
        flags = static_cast<u8>(flags | flagIf(value, static_cast<u8>(bit)));
    }
    return flags;
}

void writeReserved(iSerializableTarget& a_target, u32 a_count, tStatus& a_status)
{
    for (u32 i = 0; i < a_count; ++i)
    {
        a_target.writeOctet(0, a_status);
    }
}

void readReserved(iSerializableTarget& a_target, u32 a_count, tStatus& a_status)
{
    u8 reserved = 0;
    for (u32 i = 0; i < a_count; ++i)
    {
        a_target.readOctet(reserved, a_status);
    }
}

void readPad(bool a_pad, iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_pad)
    {
        readReserved(a_target, 1, a_status);
    }
}

void writePad(bool a_pad, iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_pad)
    {
        writeReserved(a_target, 1, a_status);
    }
}

tTrace& traceLabelled(tTrace& a_trace, const char* a_label, nOrvTarn000::iTraceable& a_value)
{
    a_trace.write(a_label);
    const std::size_t length = std::strlen(a_label);
    if (length == 0 || a_label[length - 1] != ' ')
    {
        a_trace.write(": ");
    }
    return a_trace.write(a_value);
}

bool isClockAccuracy(u8 a_value)
{
    return (a_value >= 0x20 && a_value <= 0x31) || a_value == 0xFE;
}

bool isDelayMechanism(u8 a_value)
{
    return a_value == 1 || a_value == 2 || a_value == 0xFE;
}

bool isTimeSource(u8 a_value)
{
    switch (a_value)
    {
    case 0x10: // atomic clock
    case 0x20: // GPS
    case 0x30: // terrestrial radio
    case 0x40: // PTP
    case 0x50: // NTP
    case 0x60: // hand set
    case 0x90: // other
    case 0xA0: // internal oscillator
        return true;
    default:
        return false;
    }
}

} // namespace nOrvPTP000
