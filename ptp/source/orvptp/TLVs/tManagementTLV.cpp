#include "orvptp/TLVs/tManagementTLV.h"

#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

namespace
{

// clang-format off
const tManagementIdInfo kManagementIds[] = {
#define ORVPTP_MANAGEMENT_TLV(id, NAME, tClass, offers, dataLength) {id, #NAME, offers, dataLength},
#include "orvptp/TLVs/tManagementIds.def"
};
// clang-format on

const u32 kManagementIdCount = sizeof(kManagementIds) / sizeof(kManagementIds[0]);

} // namespace

const char kFailureGetting[] = "Failure getting value";
const char kFailureSetting[] = "Failure setting value";

const tManagementIdInfo* findManagementId(u16 a_managementId)
{
    for (const tManagementIdInfo& info : kManagementIds)
    {
        if (info.m_managementId == a_managementId)
        {
            return &info;
        }
    }
    return nullptr;
}

const tManagementIdInfo* managementIds(u32& a_rCount)
{
    a_rCount = kManagementIdCount;
    return kManagementIds;
}

tManagementTLV::tManagementTLV(u16 a_managementId)
    : tManagementMessagePayload(kTlvTypeManagement), m_managementId(a_managementId)
{
    const tManagementIdInfo* pInfo = findManagementId(a_managementId);
    if (pInfo != nullptr && pInfo->m_dataLength != kVariableLength)
    {
        tStatus status;
        setLength(pInfo->m_dataLength, status, 1);
    }
}

void tManagementTLV::setManagementId(u16 a_managementId, tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        m_managementId = a_managementId;
    }
}

bool tManagementTLV::offers(u8 a_action) const
{
    const tManagementIdInfo* pInfo = findManagementId(m_managementId);
    if (pInfo == nullptr)
    {
        return false;
    }
    switch (a_action)
    {
    case kActionGet:
        return (pInfo->m_offers & kOfferGet) != 0;
    case kActionSet:
        return (pInfo->m_offers & kOfferSet) != 0;
    case kActionCommand:
        return (pInfo->m_offers & kOfferCommand) != 0;
    default:
        return false;
    }
}

u16 tManagementTLV::setLength(u32 a_valueLength, tStatus& a_status, u32 a_alignment)
{
    // The managementId counts, and counts in the alignment.
    return tTLV::setLength(a_valueLength + 2, a_status, a_alignment);
}

tTrace& tManagementTLV::trace(tTrace& a_trace)
{
    tTLV::trace(a_trace);
    return a_trace.writeFormatted("managementId: %#.4x ", static_cast<unsigned>(m_managementId));
}

void tManagementTLV::deserializeValue(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.readEnumeration16(m_managementId, a_status);
    deserializeData(a_target, a_status);
}

void tManagementTLV::serializeValue(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeEnumeration16(m_managementId, a_status);
    serializeData(a_target, a_status);
}

tManagementReply tManagementTLV::itselfUnlessFatal(const tStatus& a_status)
{
    return a_status.isFatal() ? tManagementReply() : tManagementReply::itself();
}

tManagementReply tManagementTLV::itselfUnlessFailed(const char* a_failureText, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return failure(kManagementErrorGeneral, a_failureText, a_status);
    }
    return tManagementReply::itself();
}

} // namespace nOrvPTP000
