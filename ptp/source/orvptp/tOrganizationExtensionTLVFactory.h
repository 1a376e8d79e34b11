#pragma once
#include "orvptp/tOrganizationExtensionTLV.h"

namespace nOrvPTP000
{

// Recognises an organisation extension TLV on the wire.
class tOrganizationExtensionTLVFactory
{
public:
    // a_target stands behind the tlvType. Reads lengthField and both
    // identifiers, then the data of a known extension, and returns the new
    // TLV. An unknown organisation or subtype is traced and
    // refused with kStatusInvalidArgument; its data is not skipped, so the
    // reader goes on behind the six identifying octets.
    [[nodiscard]] static std::unique_ptr<tOrganizationExtensionTLV>
    createOrganizationExtensionTLV(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status);
};

} // namespace nOrvPTP000
