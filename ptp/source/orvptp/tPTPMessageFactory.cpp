#include "orvptp/tPTPMessageFactory.h"

#include "orvptp/tAnnounceMessage.h"
#include "orvptp/tDelayReqMessage.h"
#include "orvptp/tDelayRespMessage.h"
#include "orvptp/tFollowUpMessage.h"
#include "orvptp/tSignalingMessage.h"
#include "orvptp/tSyncMessage.h"
#include "orvtarn/protons/status/tAllocation.h"

using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

tPTPMessage* tPTPMessageFactory::createMessage(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return nullptr;
    }
    tMessageHeader* pHeader = new (a_status) tMessageHeader(a_target, a_status);
    if (pHeader != nullptr && pHeader->getVersionPTP() != tMessageHeader::kVersionPTP)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusNotSupported);
    }
    tPTPMessage* pMessage = nullptr;
    if (a_status.isNotFatal())
    {
        pMessage = newMessageOfType(pHeader, a_target, a_status);
    }
    if (a_status.isFatal())
    {
        if (pMessage != nullptr)
        {
            delete pMessage;
        }
        else
        {
            delete pHeader;
        }
        return nullptr;
    }
    return pMessage;
}

tPTPMessage* tPTPMessageFactory::newMessageOfType(tMessageHeader* a_pHeader,
                                                  iSerializableTarget& a_target, tStatus& a_status)
{
    // Peer delay messages and unassigned types are refused here. Management
    // messages belong in this switch as well; until they exist they are
    // refused like unassigned types.
    switch (a_pHeader->getMessageType())
    {
    case kMessageTypeSync:
        return new (a_status) tSyncMessage(a_pHeader, a_target, a_status);
    case kMessageTypeDelayReq:
        return new (a_status) tDelayReqMessage(a_pHeader, a_target, a_status);
    case kMessageTypeFollowUp:
        return new (a_status) tFollowUpMessage(a_pHeader, a_target, a_status);
    case kMessageTypeDelayResp:
        return new (a_status) tDelayRespMessage(a_pHeader, a_target, a_status);
    case kMessageTypeAnnounce:
        return new (a_status) tAnnounceMessage(a_pHeader, a_target, a_status);
    case kMessageTypeSignaling:
        return new (a_status) tSignalingMessage(a_pHeader, a_target, a_status);
    default:
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidArgument);
        return nullptr;
    }
}

} // namespace nOrvPTP000
