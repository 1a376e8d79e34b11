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
    // MANAGEMENT_ERROR_STATUS, which keeps what it got of a value cut short.
    static std::unique_ptr<tTLV> createErrorStatusTLV(iSerializableTarget& a_target,
                                                      nOrvTarn000::tStatus& a_status);
    // Reads the lengthField and drops the value behind it.
    static void skipUnknownTLV(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status);
};

} // namespace nOrvPTP000
