#include "orvptp/tPTPMessageFactory.h"

#include "orvptp/tAnnounceMessage.h"
#include "orvptp/tDelayReqMessage.h"
#include "orvptp/tDelayRespMessage.h"
#include "orvptp/tFollowUpMessage.h"
#include "orvptp/tManagementMessage.h"
#include "orvptp/tSignalingMessage.h"
#include "orvptp/tSyncMessage.h"
#include "orvtarn/protons/status/tAllocation.h"

using nOrvTarn000::makeOwned;
using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

std::unique_ptr<tPTPMessage> tPTPMessageFactory::createMessage(iSerializableTarget& a_target,
                                                               tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return nullptr;
    }
    std::unique_ptr<tMessageHeader> pHeader =
        makeOwned<tMessageHeader>(a_status, a_target, a_status);
    if (pHeader != nullptr && pHeader->getVersionPTP() != tMessageHeader::kVersionPTP)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusNotSupported);
    }
    if (a_status.isFatal())
    {
        return nullptr;
    }
    std::unique_ptr<tPTPMessage> pMessage =
        newMessageOfType(std::move(pHeader), a_target, a_status);
    if (a_status.isFatal())
    {
        return nullptr;
    }
    return pMessage;
}

std::unique_ptr<tPTPMessage>
tPTPMessageFactory::newMessageOfType(std::unique_ptr<tMessageHeader> a_pHeader,
                                     iSerializableTarget& a_target, tStatus& a_status)
{
    // Peer delay messages and unassigned types are refused here.
    switch (a_pHeader->getMessageType())
    {
    case kMessageTypeSync:
        return makeOwned<tSyncMessage>(a_status, std::move(a_pHeader), a_target, a_status);
    case kMessageTypeDelayReq:
        return makeOwned<tDelayReqMessage>(a_status, std::move(a_pHeader), a_target, a_status);
    case kMessageTypeFollowUp:
        return makeOwned<tFollowUpMessage>(a_status, std::move(a_pHeader), a_target, a_status);
    case kMessageTypeDelayResp:
        return makeOwned<tDelayRespMessage>(a_status, std::move(a_pHeader), a_target, a_status);
    case kMessageTypeAnnounce:
        return makeOwned<tAnnounceMessage>(a_status, std::move(a_pHeader), a_target, a_status);
    case kMessageTypeSignaling:
        return makeOwned<tSignalingMessage>(a_status, std::move(a_pHeader), a_target, a_status);
    case kMessageTypeManagement:
        return makeOwned<tManagementMessage>(a_status, std::move(a_pHeader), a_target, a_status);
    default:
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidArgument);
        return nullptr;
    }
}

} // namespace nOrvPTP000
