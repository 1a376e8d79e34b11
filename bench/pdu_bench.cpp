// The cost of writing and reading back a 44-byte message (a header followed by
// a timestamp) in a reused protocol data unit: the work of every sent and
// received Sync.
#include "orvptp/tProtocolDataUnit.h"

#include <benchmark/benchmark.h>

using namespace nOrvPTP000;
using nOrvTarn000::tStatus;

namespace
{

void writeMessage(tProtocolDataUnit& a_unit, u32 a_sequence, tStatus& a_status)
{
    static const u8 kReserved[4] = {};
    static const u8 kIdentity[10] = {0x00, 0x1B, 0x21, 0xFF, 0xFE, 0x12, 0x34, 0x56, 0x00, 0x01};
    a_unit.writeNibble(0x0, a_status);
    a_unit.writeEnumeration4(0x0, a_status);
    a_unit.writeUInteger8(2, a_status);
    a_unit.writeUInteger16(44, a_status);
    a_unit.writeUInteger8(0, a_status);
    a_unit.writeUInteger8(0, a_status);
    a_unit.writeUInteger16(0x0200, a_status);
    a_unit.writeInteger64(-123456789, a_status);
    a_unit.writeOctets(kReserved, sizeof(kReserved), a_status);
    a_unit.writeOctets(kIdentity, sizeof(kIdentity), a_status);
    a_unit.writeUInteger16(static_cast<u16>(a_sequence), a_status);
    a_unit.writeUInteger8(0, a_status);
    a_unit.writeInteger8(-3, a_status);
    a_unit.writeUInteger48(0x0000123456789ABC, a_status);
    a_unit.writeUInteger32(999999999, a_status);
}

u64 readMessage(tProtocolDataUnit& a_unit, tStatus& a_status)
{
    u8 nibble = 0, version = 0, domain = 0, reserved = 0, control = 0;
    u16 length = 0, flags = 0, sequence = 0;
    i64 correction = 0;
    u8 reserved4[4], identity[10];
    i8 logInterval = 0;
    u64 seconds = 0;
    u32 nanoseconds = 0;
    a_unit.readNibble(nibble, a_status);
    a_unit.readEnumeration4(nibble, a_status);
    a_unit.readUInteger8(version, a_status);
    a_unit.readUInteger16(length, a_status);
    a_unit.readUInteger8(domain, a_status);
    a_unit.readUInteger8(reserved, a_status);
    a_unit.readUInteger16(flags, a_status);
    a_unit.readInteger64(correction, a_status);
    a_unit.readOctets(reserved4, sizeof(reserved4), a_status);
    a_unit.readOctets(identity, sizeof(identity), a_status);
    a_unit.readUInteger16(sequence, a_status);
    a_unit.readUInteger8(control, a_status);
    a_unit.readInteger8(logInterval, a_status);
    a_unit.readUInteger48(seconds, a_status);
    a_unit.readUInteger32(nanoseconds, a_status);
    return seconds + nanoseconds + sequence + static_cast<u64>(correction) + identity[9];
}

void BM_WriteAndReadMessage44(benchmark::State& a_state)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    u32 sequence = 0;
    for (auto _ : a_state)
    {
        unit.clear();
        writeMessage(unit, ++sequence, status);
        benchmark::DoNotOptimize(readMessage(unit, status));
    }
    if (status.isFatal() || unit.getLength() != 44)
    {
        a_state.SkipWithError("the message did not round-trip");
    }
    a_state.SetBytesProcessed(static_cast<i64>(a_state.iterations()) * 44);
}
BENCHMARK(BM_WriteAndReadMessage44);

} // namespace

BENCHMARK_MAIN();
