#include "orvptp/tProtocolDataUnit.h"

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>
#include <vector>

using namespace nOrvPTP000;
using nOrvTarn000::tStatus;

namespace
{

const i32 kOutOfBounds = nOrvTarn000::kStatusOutOfBounds;

std::vector<u8> bytesOf(const tProtocolDataUnit& a_unit)
{
    return std::vector<u8>(a_unit.getData(), a_unit.getData() + a_unit.getLength());
}

u64 maskOf(u32 a_bits)
{
    return a_bits >= 64 ? ~u64(0) : (u64(1) << a_bits) - 1;
}

// One wire type: its width, and its write and read with the value carried as
// the low a_bits of a u64 (two's complement for the signed types).
struct tWireType
{
    const char* m_name;
    u32 m_bits;
    void (*m_write)(tProtocolDataUnit&, u64, tStatus&);
    u64 (*m_read)(tProtocolDataUnit&, tStatus&);
};

template <typename T, u32 kBits, void (tProtocolDataUnit::*kWrite)(T, tStatus&),
          void (tProtocolDataUnit::*kRead)(T&, tStatus&)>
tWireType wireType(const char* a_name)
{
    return {a_name, kBits,
            [](tProtocolDataUnit& a_unit, u64 a_value, tStatus& a_status)
            { (a_unit.*kWrite)(static_cast<T>(a_value), a_status); },
            [](tProtocolDataUnit& a_unit, tStatus& a_status)
            {
                // The destination starts out non-zero: reads must replace it
                // and zero-extend narrow fields.
                T value = static_cast<T>(0xA5A5A5A5A5A5A5A5);
                (a_unit.*kRead)(value, a_status);
                const u64 bits = static_cast<u64>(value);
                return std::is_signed<T>::value ? bits & maskOf(kBits) : bits;
            }};
}

#define WIRE_TYPE(type, bits, name)                                                                \
    wireType<type, bits, &tProtocolDataUnit::write##name, &tProtocolDataUnit::read##name>(#name)

const tWireType kWireTypes[] = {
    WIRE_TYPE(bool, 1, Boolean),       WIRE_TYPE(u8, 4, Enumeration4),
    WIRE_TYPE(u8, 4, UInteger4),       WIRE_TYPE(u8, 4, Nibble),
    WIRE_TYPE(u8, 8, Enumeration8),    WIRE_TYPE(u8, 8, UInteger8),
    WIRE_TYPE(i8, 8, Integer8),        WIRE_TYPE(u8, 8, Octet),
    WIRE_TYPE(u16, 16, Enumeration16), WIRE_TYPE(u16, 16, UInteger16),
    WIRE_TYPE(i16, 16, Integer16),     WIRE_TYPE(u32, 32, UInteger32),
    WIRE_TYPE(i32, 32, Integer32),     WIRE_TYPE(u64, 48, UInteger48),
    WIRE_TYPE(i64, 64, Integer64),
};

} // namespace

// ---- Wire layout ----

// Sub-byte fields pack most significant bit first and only their low bits
// count; wider fields are big-endian and start at the next byte boundary.
TEST(tProtocolDataUnitLayout, WritesByteByByte)
{
    const struct
    {
        void (*m_write)(tProtocolDataUnit&, tStatus&);
        std::vector<u8> m_bytes;
    } cases[] = {
        {[](tProtocolDataUnit& a_unit, tStatus& a_status)
         {
             a_unit.writeNibble(0xA, a_status);
             a_unit.writeUInteger16(0x1234, a_status);
         },
         {0xA0, 0x12, 0x34}},
        {[](tProtocolDataUnit& a_unit, tStatus& a_status)
         {
             for (bool bit : {true, false, false, false, false, false, false, true})
             {
                 a_unit.writeBoolean(bit, a_status);
             }
             a_unit.writeNibble(0x05, a_status);
             a_unit.writeUInteger4(0xFA, a_status);
         },
         {0x81, 0x5A}},
        {[](tProtocolDataUnit& a_unit, tStatus& a_status)
         {
             a_unit.writeEnumeration16(0x0102, a_status);
             a_unit.writeUInteger32(0x03040506, a_status);
             a_unit.writeInteger64(0x0708090A0B0C0D0E, a_status);
             a_unit.writeInteger32(-0x10000000, a_status);
             a_unit.writeUInteger48(0xFFFF123456789ABC, a_status);
         },
         {1,  2,  3,    4, 5, 6, 7,    8,    9,    10,   11,   12,
          13, 14, 0xF0, 0, 0, 0, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC}},
    };
    for (const auto& entry : cases)
    {
        tStatus status;
        tProtocolDataUnit unit(status);
        entry.m_write(unit, status);
        EXPECT_EQ(status.getCode(), 0);
        EXPECT_EQ(bytesOf(unit), entry.m_bytes);
    }
}

// ---- Round trips ----

TEST(tProtocolDataUnitRoundTrip, EveryWireTypeKeepsItsExtremes)
{
    for (const tWireType& type : kWireTypes)
    {
        // Zero, all ones (the maximum, or -1), the signed maximum, the top bit
        // alone (the signed minimum), and a pattern.
        const u64 mask = maskOf(type.m_bits);
        const u64 top = u64(1) << (type.m_bits - 1);
        const u64 values[] = {0, mask, mask >> 1, top, 0x0123456789ABCDEF & mask};
        tStatus status;
        tProtocolDataUnit unit(status);
        for (u64 value : values)
        {
            type.m_write(unit, value, status);
        }
        EXPECT_EQ(unit.getLength(), (5 * type.m_bits + 7) / 8) << type.m_name;
        for (u64 value : values)
        {
            EXPECT_EQ(type.m_read(unit, status), value) << type.m_name;
        }
        EXPECT_EQ(status.getCode(), 0) << type.m_name;
    }
}

TEST(tProtocolDataUnitRoundTrip, OctetsAreCopiedUnchangedFromTheNextByteBoundary)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    const u8 data[5] = {0xDE, 0xAD, 0x00, 0xBE, 0xEF};
    unit.writeBoolean(true, status);
    unit.writeOctets(data, sizeof(data), status);
    unit.writeOctets(nullptr, 0, status);
    EXPECT_EQ(unit.getLength(), 6u);

    bool flag = false;
    u8 read[5] = {};
    unit.readBoolean(flag, status);
    unit.readOctets(read, sizeof(read), status);
    EXPECT_EQ(status.getCode(), 0);
    EXPECT_TRUE(flag);
    EXPECT_EQ(std::memcmp(read, data, sizeof(data)), 0);
}

// ---- Growth and reuse ----

TEST(tProtocolDataUnitBuffer, GrowsByDoublingAndKeepsContent)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    EXPECT_EQ(unit.getCapacity(), 256u);
    std::vector<u8> data(300);
    for (u32 i = 0; i < data.size(); ++i)
    {
        data[i] = static_cast<u8>(i * 7 + 1);
    }
    unit.writeOctets(data.data(), 200, status);
    unit.writeOctets(data.data() + 200, 100, status);
    EXPECT_EQ(status.getCode(), 0);
    EXPECT_EQ(unit.getCapacity(), 512u);
    EXPECT_EQ(bytesOf(unit), data);

    // A single large write doubles as often as it must.
    unit.writeOctets(std::vector<u8>(5000).data(), 5000, status);
    EXPECT_EQ(unit.getCapacity(), 8192u);
    EXPECT_EQ(std::memcmp(unit.getData(), data.data(), data.size()), 0);

    unit.clear();
    EXPECT_EQ(unit.getLength(), 0u);
    EXPECT_EQ(unit.getCapacity(), 8192u);
}

TEST(tProtocolDataUnitBuffer, SubByteFieldsAtTheEndOfTheBuffer)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    unit.writeOctets(std::vector<u8>(255, 0x11).data(), 255, status);
    unit.writeNibble(0x2, status);
    unit.writeNibble(0x3, status);
    EXPECT_EQ(unit.getCapacity(), 256u);
    // The last nibble ends on the last byte of the buffer.
    unit.setReadPositionBits(255 * 8 + 4, status);
    u8 nibble = 0;
    unit.readNibble(nibble, status);
    EXPECT_EQ(nibble, 0x3);

    unit.writeBoolean(true, status);
    EXPECT_EQ(unit.getCapacity(), 512u);
    EXPECT_EQ(unit.getData()[255], 0x23);
    EXPECT_EQ(unit.getData()[256], 0x80);
    EXPECT_EQ(status.getCode(), 0);
}

TEST(tProtocolDataUnitBuffer, StaleBytesDoNotLeakIntoSubByteFieldsAfterClear)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    unit.writeOctets(std::vector<u8>(8, 0xFF).data(), 8, status);
    unit.clear();
    unit.writeNibble(0x3, status);
    unit.writeUInteger8(0x44, status);
    unit.writeBoolean(true, status);
    unit.writeBoolean(false, status);
    unit.writeBoolean(true, status);
    unit.writeNibble(0x1, status);
    unit.writeNibble(0xF, status); // straddles into the fourth byte
    EXPECT_EQ(bytesOf(unit), (std::vector<u8>{0x30, 0x44, 0xA3, 0xE0}));

    // Read back, the straddling nibble too.
    u8 values[4] = {};
    bool bits[3] = {};
    unit.readNibble(values[0], status);
    unit.readUInteger8(values[1], status);
    for (bool& bit : bits)
    {
        unit.readBoolean(bit, status);
    }
    unit.readNibble(values[2], status);
    unit.readNibble(values[3], status);
    EXPECT_EQ(std::vector<u8>(values, values + 4), (std::vector<u8>{0x3, 0x44, 0x1, 0xF}));
    EXPECT_TRUE(bits[0] && !bits[1] && bits[2]);
    EXPECT_EQ(status.getCode(), 0);
}

TEST(tProtocolDataUnitBuffer, FailedConstructionLeavesNoBufferButLaterWritesAllocate)
{
    tStatus failed;
    ORVTARN_SET_CODE(failed, nOrvTarn000::kStatusMemoryFull);
    tProtocolDataUnit unit(failed);
    EXPECT_EQ(unit.getCapacity(), 0u);
    EXPECT_EQ(unit.getData(), nullptr);

    tStatus status;
    u8 octet = 0;
    unit.readOctet(octet, status);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
    status.clear();
    unit.writeUInteger16(0xBEEF, status);
    EXPECT_EQ(status.getCode(), 0);
    EXPECT_EQ(unit.getCapacity(), 256u);
    EXPECT_EQ(bytesOf(unit), (std::vector<u8>{0xBE, 0xEF}));
}

// ---- Bounds ----

TEST(tProtocolDataUnitBounds, EveryReadOnAnEmptyUnitIsOutOfBounds)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    EXPECT_EQ(unit.getLength(), 0u);
    for (const tWireType& type : kWireTypes)
    {
        tStatus readStatus;
        type.m_read(unit, readStatus);
        EXPECT_EQ(readStatus.getCode(), kOutOfBounds) << type.m_name;
    }
    u8 octets[2];
    unit.readOctets(octets, sizeof(octets), status);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
    EXPECT_EQ(unit.getReadPositionBits(), 0u);
}

// A read that does not fit fails and moves nothing, so the next read that
// fits still succeeds; a partly written byte is no octet.
TEST(tProtocolDataUnitBounds, ShortReadsMoveNothing)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    unit.writeOctet(0x01, status);
    unit.writeOctet(0x02, status);
    unit.writeNibble(0xC, status);
    u8 octet = 0;
    unit.readOctet(octet, status);

    u16 value = 0x5555;
    unit.readUInteger16(value, status);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
    EXPECT_EQ(unit.getReadPositionBits(), 8u);
    status.clear();
    unit.readOctet(octet, status);
    EXPECT_EQ(octet, 0x02);
    unit.readOctet(octet, status);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
    status.clear();
    unit.readNibble(octet, status);
    EXPECT_EQ(octet, 0xC);
    EXPECT_EQ(status.getCode(), 0);
}

TEST(tProtocolDataUnitBounds, ReadPositionIsSetOnlyInsideTheWrittenData)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    unit.writeUInteger32(0xA1B2C3D4, status);

    // Peek a field, then rewind.
    u16 field = 0;
    unit.setReadPositionBytes(2, status);
    unit.readUInteger16(field, status);
    EXPECT_EQ(field, 0xC3D4);
    EXPECT_EQ(status.getCode(), 0);

    // Reading reached the write position, but setting it is refused.
    unit.setReadPositionBits(32, status);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
    EXPECT_EQ(unit.getReadPositionBits(), 32u);
    for (u32 offset : {4u, 0x20000000u, 0xFFFFFFFFu})
    {
        tStatus refused;
        unit.setReadPositionBytes(offset, refused);
        EXPECT_EQ(refused.getCode(), kOutOfBounds) << offset;
    }

    status.clear();
    unit.setReadPositionBits(31, status);
    EXPECT_EQ(status.getCode(), 0);
    unit.rewind();
    u8 octet = 0;
    unit.readOctet(octet, status);
    EXPECT_EQ(octet, 0xA1);
}

TEST(tProtocolDataUnitBounds, UnaddressableLengthsAndMissingDataAreRefused)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    unit.writeOctet(0x42, status);
    u8 small[4] = {};

    unit.writeOctets(small, 0xFFFFFFFF, status);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
    status.clear();
    unit.readOctets(small, 0xFFFFFFFF, status);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
    status.clear();
    unit.writeOctets(nullptr, 4, status);
    EXPECT_EQ(status.getCode(), nOrvTarn000::kStatusInvalidArgument);
    status.clear();
    unit.readOctets(nullptr, 1, status);
    EXPECT_EQ(status.getCode(), nOrvTarn000::kStatusInvalidArgument);

    EXPECT_EQ(unit.getCapacity(), 256u);
    EXPECT_EQ(bytesOf(unit), std::vector<u8>{0x42});
    EXPECT_EQ(unit.getReadPositionBits(), 0u);
}

// ---- Fatal status ----

TEST(tProtocolDataUnitFatalStatus, EveryOperationIsANoOp)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    unit.writeOctets("\x01\x02\x03\x04\x05\x06\x07\x08", 8, status);
    u8 first = 0;
    unit.readOctet(first, status);

    tStatus fatal;
    ORVTARN_SET_CODE(fatal, nOrvTarn000::kStatusInternalError);
    for (const tWireType& type : kWireTypes)
    {
        type.m_write(unit, 1, fatal);
        type.m_read(unit, fatal);
    }
    unit.writeOctets("x", 1, fatal);
    u8 octets[2] = {0x55, 0x55};
    unit.readOctets(octets, sizeof(octets), fatal);
    unit.setReadPositionBits(0, fatal);
    unit.setReadPositionBytes(0, fatal);
    u64 wide = 0x77;
    unit.readUInteger48(wide, fatal);

    EXPECT_EQ(bytesOf(unit), (std::vector<u8>{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(unit.getReadPositionBits(), 8u);
    EXPECT_EQ(octets[0], 0x55);
    EXPECT_EQ(wide, 0x77u);
    EXPECT_EQ(fatal.getCode(), nOrvTarn000::kStatusInternalError);
    EXPECT_EQ(status.getCode(), 0);
}
