#pragma once
#include "orvtarn/quarks/tTypes.h"

namespace nOrvPTP000
{

// Three-octet organisation identifiers (IEEE OUIs), as 24-bit numbers whose
// highest octet comes first on the wire.
enum : u32
{
    // The LXI Consortium.
    kLXIConsortiumOrganizationId = 0x0021D6,
    // The manufacturer of this product: its clock description's
    // manufacturerIdentity and the owner of its organisation extensions.
    kOrvOrganizationId = 0x00A0C5
};

} // namespace nOrvPTP000
