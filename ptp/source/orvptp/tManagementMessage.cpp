#include "orvptp/tManagementMessage.h"

#include "orvptp/TLVs/tManagementMessagePayload.h"
#include "orvptp/tSetUnlessFatal.h"
#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tManagementMessage::tManagementMessage(std::unique_ptr<tMessageHeader> a_pHeader,
                                       iSerializableTarget& a_target, tStatus& a_status)
    : tPTPMessage(std::move(a_pHeader), a_status), m_targetPortIdentity(allPortsIdentity()),
      m_startingBoundaryHops(0), m_boundaryHops(0), m_actionField(kActionGet)
{
    parseBodyAndSuffix(a_target, a_status);
}

tManagementMessage::tManagementMessage(const tManagementMessage& a_original,
                                       std::unique_ptr<tMessageHeader> a_pHeader, tStatus& a_status)
    : tPTPMessage(std::move(a_pHeader), a_status),
      m_targetPortIdentity(a_original.m_targetPortIdentity),
      m_startingBoundaryHops(a_original.m_startingBoundaryHops),
      m_boundaryHops(a_original.m_boundaryHops), m_actionField(a_original.m_actionField)
{
    if (getSuffix() != nullptr && a_original.getSuffix() != nullptr)
    {
        getSuffix()->appendClonesOf(*a_original.getSuffix(), a_status);
    }
}

std::unique_ptr<tManagementMessage> tManagementMessage::clone(tStatus& a_status) const
{
    if (a_status.isFatal() || getHeader() == nullptr)
    {
        return nullptr;
    }
    // The constructor is private: makeOwned cannot reach it.
    std::unique_ptr<tManagementMessage> pCopy(new (a_status) tManagementMessage(
        *this, nOrvTarn000::makeOwned<tMessageHeader>(a_status, *getHeader()), a_status));
    if (a_status.isFatal())
    {
        return nullptr;
    }
    return pCopy;
}

void tManagementMessage::setTargetPortIdentity(const tPortIdentity& a_identity, tStatus& a_status)
{
    setUnlessFatal(m_targetPortIdentity, a_identity, a_status);
}

tManagementMessage* tManagementMessage::processRequest(iPTPNode& a_node, tStatus& a_status)
{
    tMessageSuffix* pSuffix = getSuffix();
    if (pSuffix == nullptr || getHeader() == nullptr || a_status.isFatal())
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidState);
        return nullptr;
    }
    const u8 action = m_actionField;
    if (action != kActionGet && action != kActionSet && action != kActionCommand)
    {
        // A RESPONSE or ACKNOWLEDGE is no request.
        return nullptr;
    }
    // Only a management TLV in front is a payload; a request with none, or
    // with an organisation's TLV in front, is answered without TLV.
    tTLV* pFirst = pSuffix->getTLVCount() != 0 ? pSuffix->getTLV(0, a_status) : nullptr;
    tManagementMessagePayload* pPayload =
        pFirst != nullptr ? pFirst->asManagementPayload() : nullptr;
    tManagementReply reply;
    if (pPayload != nullptr)
    {
        reply = answer(*pPayload, action, a_node, m_targetPortIdentity.getPortNumber(), a_status);
    }

    // The response goes out even when the node failed: the error status in
    // it tells so. So the message is edited with a status of its own.
    tStatus responseStatus;
    m_actionField = action == kActionCommand ? kActionAcknowledge : kActionResponse;
    turnAround(responseStatus);
    if (pPayload == nullptr || !reply.isItself())
    {
        std::unique_ptr<tManagementMessagePayload> pReplacement = reply.takeReplacement();
        pSuffix->clear(responseStatus);
        if (pPayload != nullptr && pReplacement == nullptr)
        {
            return nullptr;
        }
        pSuffix->addTLV(std::move(pReplacement), responseStatus);
    }
    a_status.mergeFrom(responseStatus);
    return responseStatus.isFatal() ? nullptr : this;
}

tManagementReply tManagementMessage::answer(tManagementMessagePayload& a_payload, u8 a_action,
                                            iPTPNode& a_node, u16 a_portNumber, tStatus& a_status)
{
    if (!a_payload.offers(a_action))
    {
        return a_payload.refusal(a_status);
    }
    switch (a_action)
    {
    case kActionGet:
        return a_payload.handleGet(a_node, a_portNumber, a_status);
    case kActionSet:
        return a_payload.handleSet(a_node, a_portNumber, a_status);
    default:
        return a_payload.handleCommand(a_node, a_portNumber, a_status);
    }
}

void tManagementMessage::turnAround(tStatus& a_status)
{
    const tPortIdentity target = m_targetPortIdentity;
    m_targetPortIdentity = getHeader()->getSourcePortIdentity();
    getHeader()->setSourcePortIdentity(target, a_status);
    m_startingBoundaryHops = static_cast<u8>(m_startingBoundaryHops - m_boundaryHops);
}

tTrace& tManagementMessage::trace(tTrace& a_trace)
{
    openTrace(a_trace, "--- Begin Management Message ---\n");
    a_trace.write("targetPortIdentity: ").write(m_targetPortIdentity);
    a_trace.writeFormatted("startingBoundaryHops: %u ",
                           static_cast<unsigned>(m_startingBoundaryHops));
    a_trace.writeFormatted("boundaryHops: %u ", static_cast<unsigned>(m_boundaryHops));
    a_trace.writeFormatted("actionField: %#.1x ", static_cast<unsigned>(m_actionField));
    return closeTrace(a_trace, "--- End Management Message ---\n");
}

void tManagementMessage::deserializeBody(iSerializableTarget& a_target, tStatus& a_status)
{
    u8 reserved = 0;
    u8 actionField = 0;
    m_targetPortIdentity.deserialize(a_target, a_status);
    a_target.readUInteger8(m_startingBoundaryHops, a_status);
    a_target.readUInteger8(m_boundaryHops, a_status);
    a_target.readEnumeration4(reserved, a_status);
    a_target.readEnumeration4(actionField, a_status);
    if (a_status.isNotFatal() && actionField > kActionAcknowledge)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusNotSupported);
        return;
    }
    setUnlessFatal(m_actionField, actionField, a_status);
    a_target.readOctet(reserved, a_status);
}

void tManagementMessage::serializeBody(iSerializableTarget& a_target, tStatus& a_status)
{
    m_targetPortIdentity.serialize(a_target, a_status);
    a_target.writeUInteger8(m_startingBoundaryHops, a_status);
    a_target.writeUInteger8(m_boundaryHops, a_status);
    a_target.writeEnumeration4(0, a_status);
    a_target.writeEnumeration4(m_actionField, a_status);
    a_target.writeOctet(0, a_status);
}

} // namespace nOrvPTP000
