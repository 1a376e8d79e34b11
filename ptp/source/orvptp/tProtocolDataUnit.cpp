#include "orvptp/tProtocolDataUnit.h"

#include "orvtarn/protons/status/tAllocation.h"

#include <cstring>

using namespace nOrvTarn000;

namespace nOrvPTP000
{

tProtocolDataUnit::tProtocolDataUnit(tStatus& a_status)
    : m_pBuffer(nullptr), m_capacity(0), m_writePosition(0), m_readPosition(0)
{
    ensureCapacity(kInitialCapacity, a_status);
}

tProtocolDataUnit::~tProtocolDataUnit()
{
    if (m_pBuffer != nullptr)
    {
        release(m_pBuffer, m_capacity);
    }
}

// ---- Writing ----

void tProtocolDataUnit::writeBoolean(bool a_value, tStatus& a_status)
{
    appendBits(a_value ? 1 : 0, 1, a_status);
}

void tProtocolDataUnit::writeEnumeration4(u8 a_value, tStatus& a_status)
{
    appendBits(a_value, 4, a_status);
}

void tProtocolDataUnit::writeEnumeration8(u8 a_value, tStatus& a_status)
{
    appendBigEndian(a_value, 1, a_status);
}

void tProtocolDataUnit::writeEnumeration16(u16 a_value, tStatus& a_status)
{
    appendBigEndian(a_value, 2, a_status);
}

void tProtocolDataUnit::writeUInteger4(u8 a_value, tStatus& a_status)
{
    appendBits(a_value, 4, a_status);
}

void tProtocolDataUnit::writeUInteger8(u8 a_value, tStatus& a_status)
{
    appendBigEndian(a_value, 1, a_status);
}

void tProtocolDataUnit::writeUInteger16(u16 a_value, tStatus& a_status)
{
    appendBigEndian(a_value, 2, a_status);
}

void tProtocolDataUnit::writeUInteger32(u32 a_value, tStatus& a_status)
{
    appendBigEndian(a_value, 4, a_status);
}

void tProtocolDataUnit::writeUInteger48(u64 a_value, tStatus& a_status)
{
    appendBigEndian(a_value, 6, a_status);
}

// Signed values go out in two's complement: the conversion to u64 keeps the
// low bytes as they are.
void tProtocolDataUnit::writeInteger8(i8 a_value, tStatus& a_status)
{
    appendBigEndian(static_cast<u64>(a_value), 1, a_status);
}

void tProtocolDataUnit::writeInteger16(i16 a_value, tStatus& a_status)
{
    appendBigEndian(static_cast<u64>(a_value), 2, a_status);
}

void tProtocolDataUnit::writeInteger32(i32 a_value, tStatus& a_status)
{
    appendBigEndian(static_cast<u64>(a_value), 4, a_status);
}

void tProtocolDataUnit::writeInteger64(i64 a_value, tStatus& a_status)
{
    appendBigEndian(static_cast<u64>(a_value), 8, a_status);
}

void tProtocolDataUnit::writeNibble(u8 a_value, tStatus& a_status)
{
    appendBits(a_value, 4, a_status);
}

void tProtocolDataUnit::writeOctet(u8 a_value, tStatus& a_status)
{
    appendBigEndian(a_value, 1, a_status);
}

void tProtocolDataUnit::writeOctets(const void* a_pData, u32 a_length, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (a_pData == nullptr && a_length != 0)
    {
        ORVTARN_SET_CODE(a_status, kStatusInvalidArgument);
        return;
    }
    u32 start = 0;
    if (reserveAligned(a_length, start, a_status) && a_length != 0)
    {
        std::memcpy(m_pBuffer + start, a_pData, a_length);
    }
}

// ---- Reading ----
//
// Each read assigns its destination only on success.

void tProtocolDataUnit::readBoolean(bool& a_rValue, tStatus& a_status)
{
    u8 bit = 0;
    fetchBits(bit, 1, a_status);
    if (a_status.isNotFatal())
    {
        a_rValue = bit != 0;
    }
}

void tProtocolDataUnit::readEnumeration4(u8& a_rValue, tStatus& a_status)
{
    fetchBits(a_rValue, 4, a_status);
}

void tProtocolDataUnit::readEnumeration8(u8& a_rValue, tStatus& a_status)
{
    readOctet(a_rValue, a_status);
}

void tProtocolDataUnit::readEnumeration16(u16& a_rValue, tStatus& a_status)
{
    u64 raw = 0;
    if (fetchBigEndian(raw, 2, a_status))
    {
        a_rValue = static_cast<u16>(raw);
    }
}

void tProtocolDataUnit::readUInteger4(u8& a_rValue, tStatus& a_status)
{
    fetchBits(a_rValue, 4, a_status);
}

void tProtocolDataUnit::readUInteger8(u8& a_rValue, tStatus& a_status)
{
    readOctet(a_rValue, a_status);
}

// Narrowing the fetched value reinterprets its two's complement bytes for the
// signed types, which is what the wire carries.
template <typename T>
void tProtocolDataUnit::fetchAs(T& a_rValue, u32 a_width, tStatus& a_status)
{
    u64 raw = 0;
    if (fetchBigEndian(raw, a_width, a_status))
    {
        a_rValue = static_cast<T>(raw);
    }
}

void tProtocolDataUnit::readUInteger16(u16& a_rValue, tStatus& a_status)
{
    fetchAs(a_rValue, 2, a_status);
}

void tProtocolDataUnit::readUInteger32(u32& a_rValue, tStatus& a_status)
{
    fetchAs(a_rValue, 4, a_status);
}

void tProtocolDataUnit::readUInteger48(u64& a_rValue, tStatus& a_status)
{
    // The whole destination is replaced, so its top 2 bytes end up zero.
    fetchBigEndian(a_rValue, 6, a_status);
}

// Signed values: the narrowing conversion reinterprets the two's complement
// bytes, which is what the wire carries.
void tProtocolDataUnit::readInteger8(i8& a_rValue, tStatus& a_status)
{
    u8 octet = 0;
    readOctet(octet, a_status);
    if (a_status.isNotFatal())
    {
        a_rValue = static_cast<i8>(octet);
    }
}

void tProtocolDataUnit::readInteger16(i16& a_rValue, tStatus& a_status)
{
    fetchAs(a_rValue, 2, a_status);
}

void tProtocolDataUnit::readInteger32(i32& a_rValue, tStatus& a_status)
{
    fetchAs(a_rValue, 4, a_status);
}

void tProtocolDataUnit::readInteger64(i64& a_rValue, tStatus& a_status)
{
    fetchAs(a_rValue, 8, a_status);
}

void tProtocolDataUnit::readNibble(u8& a_rValue, tStatus& a_status)
{
    fetchBits(a_rValue, 4, a_status);
}

void tProtocolDataUnit::readOctet(u8& a_rValue, tStatus& a_status)
{
    fetchAs(a_rValue, 1, a_status);
}

void tProtocolDataUnit::readOctets(void* a_pData, u32 a_length, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (a_pData == nullptr && a_length != 0)
    {
        ORVTARN_SET_CODE(a_status, kStatusInvalidArgument);
        return;
    }
    u32 start = 0;
    if (consumeAligned(a_length, start, a_status) && a_length != 0)
    {
        std::memcpy(a_pData, m_pBuffer + start, a_length);
    }
}

// ---- Cursors ----

void tProtocolDataUnit::setReadPositionBits(u32 a_position, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (a_position >= m_writePosition)
    {
        ORVTARN_SET_CODE(a_status, kStatusOutOfBounds);
        return;
    }
    m_readPosition = a_position;
}

void tProtocolDataUnit::setReadPositionBytes(u32 a_offset, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    // An offset whose bit count overflows a u32 lies past any write position.
    if (a_offset > kMaxLength)
    {
        ORVTARN_SET_CODE(a_status, kStatusOutOfBounds);
        return;
    }
    setReadPositionBits(a_offset * 8, a_status);
}

void tProtocolDataUnit::clear()
{
    m_writePosition = 0;
    m_readPosition = 0;
}

// ---- Helpers ----

void tProtocolDataUnit::appendBits(u8 a_value, u32 a_bits, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    const u64 end = static_cast<u64>(m_writePosition) + a_bits;
    if (end > static_cast<u64>(kMaxLength) * 8)
    {
        ORVTARN_SET_CODE(a_status, kStatusOutOfBounds);
        return;
    }
    if (!ensureCapacity((end + 7) / 8, a_status))
    {
        return;
    }
    const u32 index = m_writePosition / 8;
    const u32 freeBits = 8 - m_writePosition % 8;
    const u32 value = a_value & ((1u << a_bits) - 1);
    // A byte is zeroed when the cursor first enters it, so the bits that
    // later fields do not set stay zero even in a reused buffer.
    if (freeBits == 8)
    {
        m_pBuffer[index] = 0;
    }
    if (a_bits <= freeBits)
    {
        m_pBuffer[index] |= static_cast<u8>(value << (freeBits - a_bits));
    }
    else
    {
        const u32 spill = a_bits - freeBits;
        m_pBuffer[index] |= static_cast<u8>(value >> spill);
        m_pBuffer[index + 1] = static_cast<u8>(value << (8 - spill));
    }
    m_writePosition = static_cast<u32>(end);
}

void tProtocolDataUnit::fetchBits(u8& a_rValue, u32 a_bits, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (static_cast<u64>(m_readPosition) + a_bits > m_writePosition)
    {
        ORVTARN_SET_CODE(a_status, kStatusOutOfBounds);
        return;
    }
    const u32 index = m_readPosition / 8;
    const u32 avail = 8 - m_readPosition % 8;
    u32 value = 0;
    if (a_bits < avail)
    {
        value = m_pBuffer[index] >> (avail - a_bits);
    }
    else
    {
        value = static_cast<u32>(m_pBuffer[index]) << (a_bits - avail);
        // A field that ends on the byte boundary must not touch the next
        // byte: it may lie past the written data, or past the buffer.
        if (a_bits > avail)
        {
            value |= m_pBuffer[index + 1] >> (8 - (a_bits - avail));
        }
    }
    a_rValue = static_cast<u8>(value & ((1u << a_bits) - 1));
    m_readPosition += a_bits;
}

void tProtocolDataUnit::appendBigEndian(u64 a_value, u32 a_width, tStatus& a_status)
{
    u32 start = 0;
    if (!reserveAligned(a_width, start, a_status))
    {
        return;
    }
    u8* pField = m_pBuffer + start;
    for (u32 i = a_width; i-- > 0;)
    {
        pField[i] = static_cast<u8>(a_value);
        a_value >>= 8;
    }
}

bool tProtocolDataUnit::fetchBigEndian(u64& a_rValue, u32 a_width, tStatus& a_status)
{
    u32 start = 0;
    if (!consumeAligned(a_width, start, a_status))
    {
        return false;
    }
    const u8* pField = m_pBuffer + start;
    u64 value = 0;
    for (u32 i = 0; i < a_width; ++i)
    {
        value = (value << 8) | pField[i];
    }
    a_rValue = value;
    return true;
}

bool tProtocolDataUnit::reserveAligned(u32 a_length, u32& a_rStart, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return false;
    }
    const u64 start = (static_cast<u64>(m_writePosition) + 7) / 8;
    const u64 end = start + a_length;
    if (end > kMaxLength)
    {
        ORVTARN_SET_CODE(a_status, kStatusOutOfBounds);
        return false;
    }
    if (!ensureCapacity(end, a_status))
    {
        return false;
    }
    a_rStart = static_cast<u32>(start);
    m_writePosition = static_cast<u32>(end * 8);
    return true;
}

bool tProtocolDataUnit::consumeAligned(u32 a_length, u32& a_rStart, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return false;
    }
    // A partly consumed byte is skipped; a partly written one is not readable.
    const u64 start = (static_cast<u64>(m_readPosition) + 7) / 8;
    const u64 end = start + a_length;
    if (end > m_writePosition / 8)
    {
        ORVTARN_SET_CODE(a_status, kStatusOutOfBounds);
        return false;
    }
    a_rStart = static_cast<u32>(start);
    m_readPosition = static_cast<u32>(end * 8);
    return true;
}

bool tProtocolDataUnit::ensureCapacity(u64 a_needed, tStatus& a_status)
{
    if (a_needed <= m_capacity)
    {
        return true;
    }
    // a_needed never exceeds kMaxLength, so the doubled size fits a u32.
    u64 capacity = m_capacity != 0 ? m_capacity : static_cast<u64>(kInitialCapacity);
    while (capacity < a_needed)
    {
        capacity *= 2;
    }
    u8* pBuffer = static_cast<u8*>(allocate(static_cast<u32>(capacity), a_status));
    if (pBuffer == nullptr)
    {
        return false;
    }
    if (m_pBuffer != nullptr)
    {
        // Only the written bytes carry anything.
        std::memcpy(pBuffer, m_pBuffer, getLength());
        release(m_pBuffer, m_capacity);
    }
    m_pBuffer = pBuffer;
    m_capacity = static_cast<u32>(capacity);
    return true;
}

} // namespace nOrvPTP000
