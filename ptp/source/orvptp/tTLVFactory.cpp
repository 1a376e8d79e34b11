#include "orvptp/tTLVFactory.h"

#include "orvptp/tOctetBlock.h"
#include "orvptp/tOrganizationExtensionTLVFactory.h"

using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

std::unique_ptr<tTLV> tTLVFactory::createTLV(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return nullptr;
    }
    u16 tlvType = 0;
    a_target.readEnumeration16(tlvType, a_status);
    if (a_status.isFatal())
    {
        return nullptr;
    }

    // The one place where a tlvType chooses its class. The management family
    // (kTlvTypeManagement, kTlvTypeManagementErrorStatus) belongs here too;
    // until its classes exist, its TLVs are skipped like any unknown type.
    std::unique_ptr<tTLV> pTLV;
    switch (tlvType)
    {
    case kTlvTypeOrganizationExtension:
        pTLV = tOrganizationExtensionTLVFactory::createOrganizationExtensionTLV(a_target, a_status);
        break;
    default:
        skipUnknownTLV(a_target, a_status);
        break;
    }

    if (a_status.isFatal())
    {
        return nullptr;
    }
    return pTLV;
}

void tTLVFactory::skipUnknownTLV(iSerializableTarget& a_target, tStatus& a_status)
{
    u16 lengthField = 0;
    a_target.readUInteger16(lengthField, a_status);
    tOctetBlock::skip(a_target, lengthField, a_status);
    ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidArgument);
}

} // namespace nOrvPTP000
