#include "orvptp/TLVs/tManagementMessagePayload.h"

#include "orvptp/TLVs/tManagementErrorStatusTLV.h"
#include "orvtarn/protons/status/tAllocation.h"

using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

tManagementReply::tManagementReply(std::unique_ptr<tManagementMessagePayload> a_pReplacement)
    : m_itself(false), m_pReplacement(std::move(a_pReplacement))
{
}

tManagementReply tManagementReply::itself()
{
    tManagementReply reply;
    reply.m_itself = true;
    return reply;
}

std::unique_ptr<tManagementMessagePayload> tManagementReply::takeReplacement()
{
    return std::move(m_pReplacement);
}

tManagementReply tManagementMessagePayload::handleGet(iPTPNode&, u16, tStatus& a_status)
{
    return refusal(a_status);
}

tManagementReply tManagementMessagePayload::handleSet(iPTPNode&, u16, tStatus& a_status)
{
    return refusal(a_status);
}

tManagementReply tManagementMessagePayload::handleCommand(iPTPNode&, u16, tStatus& a_status)
{
    return refusal(a_status);
}

bool tManagementMessagePayload::offers(u8) const
{
    return false;
}

tManagementReply tManagementMessagePayload::failure(u16 a_managementErrorId,
                                                    const char* a_displayData,
                                                    tStatus& a_status) const
{
    // Made on a status of its own: the caller's may hold the failure reported.
    tStatus errorStatus;
    std::unique_ptr<tManagementMessagePayload> pError =
        nOrvTarn000::makeOwned<tManagementErrorStatusTLV>(
            errorStatus, getManagementId(), a_managementErrorId, a_displayData, errorStatus);
    a_status.mergeFrom(errorStatus);
    if (errorStatus.isFatal())
    {
        return tManagementReply();
    }
    return tManagementReply(std::move(pError));
}

tManagementReply tManagementMessagePayload::refusal(tStatus& a_status) const
{
    return failure(kManagementErrorNotSupported, "Unsupported actionField", a_status);
}

} // namespace nOrvPTP000
