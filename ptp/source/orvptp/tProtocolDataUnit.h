#pragma once
#include "orvptp/iSerializableTarget.h"

namespace nOrvPTP000
{

// A growing byte buffer with a write cursor and a read cursor, both in bits.
// The same unit carries outgoing datagrams (serialised into it, then sent from
// getData()) and incoming ones (appended with writeOctets, then parsed from
// read position 0).
//
// Invariants: the read cursor never passes the write cursor, and the write
// cursor never passes the capacity. The write cursor is the end of the
// readable data, so a received datagram's own length bounds every parse: a
// read past it fails with kStatusOutOfBounds and moves no cursor, which makes
// that code an ordinary outcome of parsing. Reads never allocate; writes grow
// the buffer by doubling, and the capacity is never reduced.
class tProtocolDataUnit : public iSerializableTarget
{
public:
    enum : u32
    {
        kInitialCapacity = 256,
        // The largest length in bytes whose bit count a u32 cursor still holds.
        kMaxLength = 0xFFFFFFFFu / 8
    };

    // A failed allocation leaves the unit empty with capacity 0; a later write
    // allocates the initial buffer again.
    explicit tProtocolDataUnit(nOrvTarn000::tStatus& a_status);
    ~tProtocolDataUnit() override;

    tProtocolDataUnit(const tProtocolDataUnit&) = delete;
    tProtocolDataUnit& operator=(const tProtocolDataUnit&) = delete;

    void writeBoolean(bool a_value, nOrvTarn000::tStatus& a_status) override;
    void writeEnumeration4(u8 a_value, nOrvTarn000::tStatus& a_status) override;
    void writeEnumeration8(u8 a_value, nOrvTarn000::tStatus& a_status) override;
    void writeEnumeration16(u16 a_value, nOrvTarn000::tStatus& a_status) override;
    void writeUInteger4(u8 a_value, nOrvTarn000::tStatus& a_status) override;
    void writeUInteger8(u8 a_value, nOrvTarn000::tStatus& a_status) override;
    void writeUInteger16(u16 a_value, nOrvTarn000::tStatus& a_status) override;
    void writeUInteger32(u32 a_value, nOrvTarn000::tStatus& a_status) override;
    void writeUInteger48(u64 a_value, nOrvTarn000::tStatus& a_status) override;
    void writeInteger8(i8 a_value, nOrvTarn000::tStatus& a_status) override;
    void writeInteger16(i16 a_value, nOrvTarn000::tStatus& a_status) override;
    void writeInteger32(i32 a_value, nOrvTarn000::tStatus& a_status) override;
    void writeInteger64(i64 a_value, nOrvTarn000::tStatus& a_status) override;
    void writeNibble(u8 a_value, nOrvTarn000::tStatus& a_status) override;
    void writeOctet(u8 a_value, nOrvTarn000::tStatus& a_status) override;
    void writeOctets(const void* a_pData, u32 a_length, nOrvTarn000::tStatus& a_status) override;

    void readBoolean(bool& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readEnumeration4(u8& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readEnumeration8(u8& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readEnumeration16(u16& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readUInteger4(u8& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readUInteger8(u8& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readUInteger16(u16& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readUInteger32(u32& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readUInteger48(u64& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readInteger8(i8& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readInteger16(i16& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readInteger32(i32& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readInteger64(i64& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readNibble(u8& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readOctet(u8& a_rValue, nOrvTarn000::tStatus& a_status) override;
    void readOctets(void* a_pData, u32 a_length, nOrvTarn000::tStatus& a_status) override;

    // The written length in bytes, a partly written last byte included.
    u32 getLength() const { return (m_writePosition + 7) / 8; }
    u32 getCapacity() const { return m_capacity; }
    // The first byte of the buffer; null only while the capacity is 0.
    const u8* getData() const { return m_pBuffer; }
    u32 getReadPositionBits() const { return m_readPosition; }

    void rewind() { m_readPosition = 0; }
    // Refuses, with kStatusOutOfBounds, any position at or past the write
    // cursor, even the one that reading in order reaches at the end.
    void setReadPositionBits(u32 a_position, nOrvTarn000::tStatus& a_status);
    void setReadPositionBytes(u32 a_offset, nOrvTarn000::tStatus& a_status);
    // Empties the unit for reuse; the buffer and its capacity stay.
    void clear();

private:
    // Appends the low a_bits (1 or 4) of a_value, most significant bit first.
    void appendBits(u8 a_value, u32 a_bits, nOrvTarn000::tStatus& a_status);
    // Reads a_bits (1 or 4) into the low bits of a_rValue.
    void fetchBits(u8& a_rValue, u32 a_bits, nOrvTarn000::tStatus& a_status);
    // Appends the low a_width bytes of a_value, most significant first.
    void appendBigEndian(u64 a_value, u32 a_width, nOrvTarn000::tStatus& a_status);
    // Reads a_width bytes, most significant first, into a_rValue, whose
    // higher bytes become zero. Assigns a_rValue only on success.
    bool fetchBigEndian(u64& a_rValue, u32 a_width, nOrvTarn000::tStatus& a_status);
    // fetchBigEndian into a destination of type T, written only on success.
    template <typename T>
    void fetchAs(T& a_rValue, u32 a_width, nOrvTarn000::tStatus& a_status);
    // Claims a_length bytes from the next byte boundary, growing as needed, and
    // moves the write cursor past them. Returns the offset of the first one, or
    // false when the status is or becomes fatal.
    bool reserveAligned(u32 a_length, u32& a_rStart, nOrvTarn000::tStatus& a_status);
    // Consumes a_length bytes from the next byte boundary of the read cursor.
    bool consumeAligned(u32 a_length, u32& a_rStart, nOrvTarn000::tStatus& a_status);
    // Makes the capacity at least a_needed bytes by doubling, in one allocation.
    // On failure nothing changes.
    bool ensureCapacity(u64 a_needed, nOrvTarn000::tStatus& a_status);

    u8* m_pBuffer;
    u32 m_capacity;
    u32 m_writePosition;
    u32 m_readPosition;
};

} // namespace nOrvPTP000
