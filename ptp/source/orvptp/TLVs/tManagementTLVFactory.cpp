#include "orvptp/TLVs/tManagementTLVFactory.h"

#include "orvptp/TLVs/tCommandTLVs.h"
#include "orvptp/TLVs/tDataSetTLVs.h"
#include "orvptp/TLVs/tDescriptionTLVs.h"
#include "orvptp/TLVs/tFaultLogTLVs.h"
#include "orvptp/TLVs/tTimeTLVs.h"
#include "orvptp/TLVs/tValueTLV.h"

using nOrvTarn000::makeOwned;
using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

std::unique_ptr<tManagementTLV>
tManagementTLVFactory::createManagementTLV(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return nullptr;
    }
    u16 lengthField = 0;
    u16 managementId = 0;
    a_target.readUInteger16(lengthField, a_status);
    a_target.readEnumeration16(managementId, a_status);
    std::unique_ptr<tManagementTLV> pTLV = newTLVOf(managementId, a_status);
    if (pTLV == nullptr)
    {
        return nullptr;
    }
    // The lengthField counts the managementId; setLength adds it back.
    pTLV->setLength(static_cast<u16>(lengthField - 2), a_status, 1);
    pTLV->deserializeData(a_target, a_status);
    if (a_status.isFatal())
    {
        return nullptr;
    }
    return pTLV;
}

std::unique_ptr<tManagementTLV> tManagementTLVFactory::newTLVOf(u16 a_managementId,
                                                                tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return nullptr;
    }
    switch (a_managementId)
    {
#define ORVPTP_MANAGEMENT_TLV(id, NAME, tClass, ...)                                               \
    case id:                                                                                       \
        return makeOwned<tClass>(a_status);
#include "orvptp/TLVs/tManagementIds.def"
    default:
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidArgument);
        return nullptr;
    }
}

} // namespace nOrvPTP000
