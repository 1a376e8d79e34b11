#pragma once
#include "orvptp/tTLV.h"
#include "orvtarn/protons/status/tAllocator.h"

#include <vector>

namespace nOrvPTP000
{

// The TLVs behind a message body, in order, owned.
//
// Reading takes TLVs until the data ends: the datagram's end, not any length
// field, ends the suffix. Unrecognised TLVs are skipped and a TLV cut short by
// the end is dropped, both without error; zero padding reads as a run of
// skipped empty TLVs.
class tMessageSuffix : public iPTPSerializable
{
public:
    tMessageSuffix() {}
    // Clones each TLV; those that cannot be cloned for want of memory are left
    // out. copyFrom reports that case.
    tMessageSuffix(const tMessageSuffix& a_other);
    tMessageSuffix& operator=(const tMessageSuffix&) = delete;
    ~tMessageSuffix() override;

    u32 getTLVCount() const { return static_cast<u32>(m_tlvs.size()); }
    // Borrowed from the suffix. An index at or past the end gives
    // kStatusOutOfBounds and null.
    tTLV* getTLV(u32 a_index, nOrvTarn000::tStatus& a_status);
    // Appends a_pTLV; one that cannot be stored (fatal status, no memory) is
    // deleted.
    void addTLV(std::unique_ptr<tTLV> a_pTLV, nOrvTarn000::tStatus& a_status);
    // Appends clones of all TLVs of a_other.
    void appendClonesOf(const tMessageSuffix& a_other, nOrvTarn000::tStatus& a_status);
    // Deletes every TLV, the last first.
    void clear(nOrvTarn000::tStatus& a_status);

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void serialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void deserialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    // The sum of the TLVs' sizes.
    u16 getSize() override;

private:
    void deleteAll();

    std::vector<std::unique_ptr<tTLV>, nOrvTarn000::tAllocator<std::unique_ptr<tTLV>>> m_tlvs;
};

} // namespace nOrvPTP000
