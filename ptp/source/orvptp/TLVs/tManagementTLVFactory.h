#pragma once
#include "orvptp/TLVs/tManagementTLV.h"

namespace nOrvPTP000
{

// Recognises a MANAGEMENT TLV by its managementId.
class tManagementTLVFactory
{
public:
    // Reads lengthField and managementId from the read position of a_target
    // (just behind the tlvType), makes the class of tManagementIds.def and
    // lets it read its whole data field, whatever lengthField says; the TLV
    // keeps the received lengthField unless its class recomputes its own.
    // Null with:
    //   kStatusInvalidArgument  a managementId of no class; its data field is
    //                           not skipped, so the suffix goes on from there;
    //   kStatusOutOfBounds      the data ends within the TLV;
    //   kStatusMemoryFull.
    [[nodiscard]] static std::unique_ptr<tManagementTLV>
    createManagementTLV(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status);

private:
    static std::unique_ptr<tManagementTLV> newTLVOf(u16 a_managementId,
                                                    nOrvTarn000::tStatus& a_status);
};

} // namespace nOrvPTP000
