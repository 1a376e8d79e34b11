#pragma once
#include "orvptp/iSerializableTarget.h"

namespace nOrvPTP000
{

// An owned heap block of octets with its length: the storage of variable-length
// wire fields (texts, organisation data). Every change is all or nothing: a
// failed allocation or a read that runs out of data leaves the old content.
// An empty block holds a null pointer.
class tOctetBlock
{
public:
    tOctetBlock() : m_pData(nullptr), m_length(0) {}
    ~tOctetBlock() { reset(); }

    // Copying needs a status; use assign.
    tOctetBlock(const tOctetBlock&) = delete;
    tOctetBlock& operator=(const tOctetBlock&) = delete;

    // Replaces the content by a copy of a_length bytes at a_pData. An equal
    // length reuses the present block. A null a_pData empties the block.
    void assign(const void* a_pData, u32 a_length, nOrvTarn000::tStatus& a_status);
    void assign(const tOctetBlock& a_other, nOrvTarn000::tStatus& a_status)
    {
        assign(a_other.m_pData, a_other.m_length, a_status);
    }
    // Replaces the content by the next a_length octets of a_target.
    void readFrom(iSerializableTarget& a_target, u32 a_length, nOrvTarn000::tStatus& a_status);
    // Writes the octets, nothing when empty.
    void writeTo(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) const;
    void reset();

    const u8* getData() const { return m_pData; }
    u32 getLength() const { return m_length; }

    // Reads and drops a_count octets one by one, stopping at the first failure,
    // so that a count beyond the end of the data consumes what is there.
    static void skip(iSerializableTarget& a_target, u32 a_count, nOrvTarn000::tStatus& a_status);

private:
    void take(u8* a_pData, u32 a_length);

    u8* m_pData;
    u32 m_length;
};

} // namespace nOrvPTP000
