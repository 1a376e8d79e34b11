#include "orvptp/tTLVFactory.h"

#include "orvptp/TLVs/tManagementErrorStatusTLV.h"
#include "orvptp/TLVs/tManagementTLVFactory.h"
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

    // The one place where a tlvType chooses its class.
    std::unique_ptr<tTLV> pTLV;
    switch (tlvType)
    {
    case kTlvTypeManagement:
        pTLV = tManagementTLVFactory::createManagementTLV(a_target, a_status);
        break;
    case kTlvTypeManagementErrorStatus:
        pTLV = createErrorStatusTLV(a_target, a_status);
        break;
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

std::unique_ptr<tTLV> tTLVFactory::createErrorStatusTLV(iSerializableTarget& a_target,
                                                        tStatus& a_status)
{
    std::unique_ptr<tManagementErrorStatusTLV> pTLV =
        nOrvTarn000::makeOwned<tManagementErrorStatusTLV>(a_status);
    u16 lengthField = 0;
    a_target.readUInteger16(lengthField, a_status);
    if (pTLV != nullptr)
    {
        pTLV->setLength(lengthField, a_status, 1);
        pTLV->deserializeValue(a_target, a_status);
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
