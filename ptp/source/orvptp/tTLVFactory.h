#pragma once
#include "orvptp/tTLV.h"

namespace nOrvPTP000
{

// Recognises the next TLV of a message suffix.
class tTLVFactory
{
public:
    // Reads one TLV from the read position of a_target and returns it. An unrecognised tlvType is
    // skipped by its lengthField (as far as the data reaches) and refused with
    // kStatusInvalidArgument; a TLV cut short by the end of the data gives kStatusOutOfBounds. On
    // every failure the result is null and nothing is left allocated.
    [[nodiscard]] static std::unique_ptr<tTLV> createTLV(iSerializableTarget& a_target,
                                                         nOrvTarn000::tStatus& a_status);

private:
    // Reads the lengthField and drops the value behind it.
    static void skipUnknownTLV(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status);
};

} // namespace nOrvPTP000
