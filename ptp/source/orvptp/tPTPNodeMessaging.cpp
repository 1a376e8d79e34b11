#include "orvptp/tAnnounceMessage.h"
#include "orvptp/tDelayReqMessage.h"
#include "orvptp/tDelayRespMessage.h"
#include "orvptp/tFollowUpMessage.h"
#include "orvptp/tForeignMasterAging.h"
#include "orvptp/tLogInterval.h"
#include "orvptp/tManagementMessage.h"
#include "orvptp/tPTPMessageFactory.h"
#include "orvptp/tPTPNode.h"
#include "orvptp/tProtocolDataUnit.h"
#include "orvptp/tSyncMessage.h"
#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tAssertion.h"
#include "orvtarn/protons/timer/tTime.h"

// Reception and transmission of messages. Everything here runs on the
// dispatcher thread. A received datagram is parsed, filtered and acted upon
// according to the port state at its arrival; a message that is not acted
// upon is dropped without a word. Sent messages take their fields from the
// data sets at the moment of sending.

namespace nOrvPTP000
{

using namespace nOrvTarn000;

namespace
{

// The states in which the port follows a master and measures against it.
bool followsMaster(u8 a_state)
{
    return a_state == kPortStateSlave || a_state == kPortStateUncalibrated;
}

// The factory makes the class that the messageType names, so the cast is safe.
template <typename tMessage>
std::unique_ptr<tMessage> downcast(std::unique_ptr<tPTPMessage> a_pMessage)
{
    return std::unique_ptr<tMessage>(static_cast<tMessage*>(a_pMessage.release()));
}

// The sequenceId that the message sent last of a kind carried: the counter
// has already moved on, and wraps from 0 back to 65,535.
u16 lastSentSequenceId(const tPortDS& a_portDS, u32 a_kind)
{
    return static_cast<u16>(a_portDS.getSequenceId(a_kind) - 1);
}

} // namespace

// ---- reception ----

void tPTPNode::handlePacketReceived(std::unique_ptr<tProtocolDataUnit> a_pPacket, tStatus& a_status)
{
    // The packet goes when this returns.
    const std::unique_ptr<tProtocolDataUnit> pPacket = std::move(a_pPacket);
    if (pPacket == nullptr)
    {
        return;
    }
    std::unique_ptr<tPTPMessage> pMessage = tPTPMessageFactory::createMessage(*pPacket, a_status);
    if (pMessage == nullptr || a_status.isFatal())
    {
        // A datagram that does not parse has no further effect.
        a_status.clear();
        return;
    }
    const tMessageHeader& header = *pMessage->getHeader();
    // Our own multicast comes back to us; other domains are other clocks' business.
    if (header.getSourcePortIdentity() == m_portDS.getPortIdentity() ||
        header.getDomainNumber() != m_defaultDS.getDomainNumber())
    {
        return;
    }

    // Messages that are acted upon pass on; all others go with pMessage.
    const u8 state = currentState();
    switch (header.getMessageType())
    {
    case kMessageTypeSync:
        if (followsMaster(state))
        {
            receiveSync(downcast<tSyncMessage>(std::move(pMessage)), *pPacket, a_status);
        }
        break;
    case kMessageTypeFollowUp:
        if (followsMaster(state))
        {
            receiveFollowUp(downcast<tFollowUpMessage>(std::move(pMessage)), a_status);
        }
        break;
    case kMessageTypeDelayReq:
        if (state == kPortStateMaster)
        {
            sendDelayResp(*pPacket, static_cast<const tDelayReqMessage&>(*pMessage), a_status);
        }
        break;
    case kMessageTypeDelayResp:
        if (followsMaster(state))
        {
            receiveDelayResp(downcast<tDelayRespMessage>(std::move(pMessage)), a_status);
        }
        break;
    case kMessageTypeAnnounce:
        receiveAnnounce(downcast<tAnnounceMessage>(std::move(pMessage)), state, a_status);
        break;
    case kMessageTypeManagement:
        if (state != kPortStateInitializing)
        {
            receiveManagement(static_cast<tManagementMessage&>(*pMessage), a_status);
        }
        break;
    default:
        // Signaling.
        break;
    }
}

bool tPTPNode::isFromParentClock(const tPTPMessage& a_message) const
{
    // Any port of the parent clock will do.
    return a_message.getHeader()->getSourcePortIdentity().getClockIdentity() ==
           m_parentDS.getParentPortIdentity().getClockIdentity();
}

void tPTPNode::receiveSync(std::unique_ptr<tSyncMessage> a_pMessage, tProtocolDataUnit& a_rPacket,
                           tStatus& a_status)
{
    if (isFromParentClock(*a_pMessage) &&
        m_pTimestampGenerator->getReceiveTimestamp(a_rPacket, m_syncReceiptTime, a_status))
    {
        m_syncDelayExchange.handleSync(m_currentDS, m_pTimekeeper, std::move(a_pMessage),
                                       m_syncReceiptTime, a_status);
    }
}

void tPTPNode::receiveFollowUp(std::unique_ptr<tFollowUpMessage> a_pMessage, tStatus& a_status)
{
    if (isFromParentClock(*a_pMessage))
    {
        m_syncDelayExchange.handleFollowUp(m_currentDS, m_pTimekeeper, std::move(a_pMessage),
                                           a_status);
    }
}

void tPTPNode::receiveDelayResp(std::unique_ptr<tDelayRespMessage> a_pMessage, tStatus& a_status)
{
    const tMessageHeader& header = *a_pMessage->getHeader();
    if (!isFromParentClock(*a_pMessage) ||
        a_pMessage->getRequestingPortIdentity() != m_portDS.getPortIdentity())
    {
        return;
    }
    // The master tells its slaves how often they may ask; this is no change
    // of a property, so nobody is told. A shorter interval counts from now:
    // the timer drawn from a longer one could keep the requests silent for
    // up to twice that long (hours, after a single response that said 12).
    const u32 previousMs = logIntervalToMilliseconds(m_portDS.getLogMinDelayReqInterval());
    m_portDS.setLogMinDelayReqInterval(header.getLogMessageInterval(), a_status);
    if (logIntervalToMilliseconds(header.getLogMessageInterval()) < previousMs)
    {
        redrawDelayRequestTimer(a_status);
    }
    if (header.getSequenceId() == lastSentSequenceId(m_portDS, tPortDS::kDelayReqSequence))
    {
        m_syncDelayExchange.handleDelayResp(m_pTimestampGenerator, std::move(a_pMessage), a_status);
    }
}

void tPTPNode::receiveAnnounce(std::unique_ptr<tAnnounceMessage> a_pMessage, u8 a_state,
                               tStatus& a_status)
{
    const tPortIdentity& sender = a_pMessage->getHeader()->getSourcePortIdentity();
    switch (a_state)
    {
    case kPortStateInitializing:
    case kPortStateFaulty:
    case kPortStateDisabled:
        return;
    case kPortStateListening:
    case kPortStateMaster:
        break;
    case kPortStatePassive:
    case kPortStateUncalibrated:
    case kPortStateSlave:
    {
        // The announce receipt time-out watches the master that the port
        // follows (its parent), or, in PASSIVE, the master that silenced it.
        const bool fromParent =
            followsMaster(a_state) && sender == m_parentDS.getParentPortIdentity();
        if (fromParent && a_state == kPortStateSlave)
        {
            // A SLAVE takes over at once what its master announces.
            applyStateDecision(kUpdateS1, a_pMessage.get(), a_status);
        }
        const tAnnounceMessage* pBest = getStateDecision(a_status).m_pMessage;
        const bool fromBest = pBest != nullptr && pBest->getHeader() != nullptr &&
                              pBest->getHeader()->getSourcePortIdentity() == sender;
        if (fromParent || fromBest)
        {
            restartAnnounceReceiptTimeout(a_status);
        }
        break;
    }
    default:
        // Packets reach the node only while the clock runs.
        EXCEPTION("Unknown port state!\n");
        return;
    }
    if (a_pMessage->isQualified(m_defaultDS.getClockIdentity()))
    {
        storeForeignAnnounce(std::move(a_pMessage), *m_pForeignMasterDS, m_bmcOutput, *this,
                             a_status);
    }
}

void tPTPNode::receiveManagement(tManagementMessage& a_rMessage, tStatus& a_status)
{
    // A target of all clocks means this one, from here on and in the response.
    tPortIdentity target = a_rMessage.getTargetPortIdentity();
    const tClockIdentity& own = m_defaultDS.getClockIdentity();
    if (target.getClockIdentity() == kAllOnesClockIdentity)
    {
        target.setClockIdentity(own, a_status);
        a_rMessage.setTargetPortIdentity(target, a_status);
    }
    if (target.getClockIdentity() != own)
    {
        return;
    }
    const u16 numberPorts = m_defaultDS.getNumberPorts();
    const u16 portNumber = target.getPortNumber();
    if (portNumber == tPortIdentity::kAllPorts)
    {
        // Every port answers; the last one with the message itself.
        for (u16 other = 1; other < numberPorts; ++other)
        {
            std::unique_ptr<tManagementMessage> pCopy = a_rMessage.clone(a_status);
            if (pCopy == nullptr)
            {
                return;
            }
            pCopy->setTargetPortIdentity(tPortIdentity(own, other), a_status);
            answerManagement(*pCopy, a_status);
        }
        a_rMessage.setTargetPortIdentity(tPortIdentity(own, numberPorts), a_status);
        answerManagement(a_rMessage, a_status);
    }
    else if (portNumber >= 1 && portNumber <= numberPorts)
    {
        answerManagement(a_rMessage, a_status);
    }
}

void tPTPNode::answerManagement(tManagementMessage& a_rMessage, tStatus& a_status)
{
    tManagementMessage* pResponse = a_rMessage.processRequest(*this, a_status);
    if (pResponse == nullptr)
    {
        return;
    }
    // Whatever the request's work left in a_status, the answer goes out.
    tStatus sendStatus;
    tProtocolDataUnit packet(sendStatus);
    pResponse->serialize(packet, sendStatus);
    m_networkMaintainer.sendGeneral(packet, sendStatus);
}

// ---- transmission ----

void tPTPNode::handleSendAnnouncePacket(tStatus& a_status)
{
    if (getPortState(tPortDS::kPortNumber, a_status) == kPortStateMaster)
    {
        sendAnnounce(a_status);
    }
}

void tPTPNode::handleSendSyncPacket(tStatus& a_status)
{
    if (getPortState(tPortDS::kPortNumber, a_status) != kPortStateMaster)
    {
        return;
    }
    tProtocolDataUnit packet(a_status);
    sendSync(packet, a_status);
    if (m_defaultDS.getTwoStepFlag())
    {
        sendFollowUp(packet, a_status);
    }
}

void tPTPNode::handleDelayRequestTimer(tStatus& a_status)
{
    const u8 state = getPortState(tPortDS::kPortNumber, a_status);
    if (followsMaster(state) &&
        getDelayMechanism(tPortDS::kPortNumber, a_status) == tPortDS::kDelayMechanismEndToEnd)
    {
        sendDelayReq(a_status);
    }
    // The timer runs in every state and is re-armed from here, even after a
    // failed request, so that one failure does not end the requests for good.
    tStatus armStatus;
    armDelayRequestTimer(armStatus);
    a_status.mergeFrom(armStatus);
}

void tPTPNode::fillHeader(tPTPMessage& a_rMessage, u16 a_sequenceId, i8 a_logMessageInterval,
                          tStatus& a_status)
{
    tMessageHeader* pHeader = a_rMessage.getHeader();
    if (a_status.isFatal() || pHeader == nullptr)
    {
        return;
    }
    pHeader->setDomainNumber(m_defaultDS.getDomainNumber(), a_status);
    pHeader->setSourcePortIdentity(m_portDS.getPortIdentity(), a_status);
    pHeader->setSequenceId(a_sequenceId, a_status);
    pHeader->setLogMessageInterval(a_logMessageInterval, a_status);
}

bool tPTPNode::readTimeForSending(tTimestamp& a_rNow, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return false;
    }
    m_pTimekeeper->getTime(a_rNow, a_status);
    if (a_status.isNotFatal())
    {
        return true;
    }
    tStatus faultStatus;
    stopPortTimers(faultStatus);
    transition(&iPTPPort::handleFaultDetected, faultStatus);
    return false;
}

void tPTPNode::sendAnnounce(tStatus& a_status)
{
    tTimestamp now;
    if (!readTimeForSending(now, a_status))
    {
        return;
    }
    tAnnounceMessage message(a_status);
    fillHeader(message, m_portDS.getSequenceId(tPortDS::kAnnounceSequence),
               m_portDS.getLogAnnounceInterval(), a_status);
    m_portDS.nextSequenceId(tPortDS::kAnnounceSequence);
    if (a_status.isFatal())
    {
        return;
    }
    // The time properties in force; the grandmaster is this clock itself.
    tMessageHeader& header = *message.getHeader();
    header.setLeap59(m_timePropertiesDS.getLeap59(), a_status);
    header.setLeap61(m_timePropertiesDS.getLeap61(), a_status);
    header.setCurrentUTCOffsetValid(m_timePropertiesDS.getCurrentUtcOffsetValid(), a_status);
    header.setPtpTimescale(m_timePropertiesDS.getPtpTimescale(), a_status);
    header.setTimeTraceable(m_timePropertiesDS.getTimeTraceable(), a_status);
    header.setFrequencyTraceable(m_timePropertiesDS.getFrequencyTraceable(), a_status);
    message.setOriginTimestamp(now, a_status);
    message.setCurrentUTCOffset(m_timePropertiesDS.getCurrentUtcOffset(), a_status);
    message.setTimeSource(m_timePropertiesDS.getTimeSource(), a_status);
    message.setStepsRemoved(0, a_status);
    message.setGrandmasterIdentity(m_defaultDS.getClockIdentity(), a_status);
    message.setGrandmasterClockQuality(m_defaultDS.getClockQuality(), a_status);
    message.setGrandmasterPriority1(m_defaultDS.getPriority1(), a_status);
    message.setGrandmasterPriority2(m_defaultDS.getPriority2(), a_status);

    tProtocolDataUnit packet(a_status);
    message.serialize(packet, a_status);
    m_networkMaintainer.sendGeneral(packet, a_status);
}

void tPTPNode::sendSync(tProtocolDataUnit& a_rPacket, tStatus& a_status)
{
    tTimestamp now;
    if (!readTimeForSending(now, a_status))
    {
        return;
    }
    tSyncMessage message(a_status);
    fillHeader(message, m_portDS.getSequenceId(tPortDS::kSyncSequence),
               m_portDS.getLogSyncInterval(), a_status);
    m_portDS.nextSequenceId(tPortDS::kSyncSequence);
    if (a_status.isFatal())
    {
        return;
    }
    message.getHeader()->setTwoStepFlag(m_defaultDS.getTwoStepFlag(), a_status);
    message.setOriginTimestamp(now, a_status);

    a_rPacket.clear();
    message.serialize(a_rPacket, a_status);
    m_networkMaintainer.sendEvent(a_rPacket, a_status);
}

void tPTPNode::sendFollowUp(tProtocolDataUnit& a_rPacket, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    // The messaging records the transmit time just after the datagram left,
    // which may be a moment after we ask: one more try after a short pause.
    tTimestamp sent;
    bool known = m_pTimestampGenerator->getTransmitTimestamp(a_rPacket, sent, a_status);
    if (!known && a_status.isNotFatal())
    {
        sleepMilliseconds(1, a_status);
        known = m_pTimestampGenerator->getTransmitTimestamp(a_rPacket, sent, a_status);
    }
    if (!known || a_status.isFatal())
    {
        return;
    }
    tFollowUpMessage message(a_status);
    fillHeader(message, lastSentSequenceId(m_portDS, tPortDS::kSyncSequence),
               m_portDS.getLogSyncInterval(), a_status);
    message.setPreciseOriginTimestamp(sent, a_status);

    tProtocolDataUnit packet(a_status);
    message.serialize(packet, a_status);
    m_networkMaintainer.sendGeneral(packet, a_status);
}

void tPTPNode::sendDelayReq(tStatus& a_status)
{
    tTimestamp now;
    if (!readTimeForSending(now, a_status))
    {
        return;
    }
    // The measurement keeps the packet: its transmit time is looked up by it
    // when the response arrives.
    std::unique_ptr<tProtocolDataUnit> pPacket = makeOwned<tProtocolDataUnit>(a_status, a_status);
    if (pPacket == nullptr)
    {
        return;
    }
    tDelayReqMessage message(a_status);
    fillHeader(message, m_portDS.getSequenceId(tPortDS::kDelayReqSequence),
               tMessageHeader::kNoLogMessageInterval, a_status);
    m_portDS.nextSequenceId(tPortDS::kDelayReqSequence);
    message.setOriginTimestamp(now, a_status);
    message.serialize(*pPacket, a_status);
    m_networkMaintainer.sendEvent(*pPacket, a_status);
    m_syncDelayExchange.attachDelayRequest(std::move(pPacket), a_status);
}

void tPTPNode::sendDelayResp(tProtocolDataUnit& a_rRequestPacket,
                             const tDelayReqMessage& a_rRequest, tStatus& a_status)
{
    tTimestamp received;
    if (a_status.isFatal() ||
        !m_pTimestampGenerator->getReceiveTimestamp(a_rRequestPacket, received, a_status))
    {
        return;
    }
    const tMessageHeader& request = *a_rRequest.getHeader();
    tDelayRespMessage message(a_status);
    fillHeader(message, request.getSequenceId(), m_portDS.getLogMinDelayReqInterval(), a_status);
    if (a_status.isFatal())
    {
        return;
    }
    message.getHeader()->setCorrectionField(request.getCorrectionField(), a_status);
    message.setReceiveTimestamp(received, a_status);
    message.setRequestingPortIdentity(request.getSourcePortIdentity(), a_status);

    tProtocolDataUnit packet(a_status);
    message.serialize(packet, a_status);
    m_networkMaintainer.sendGeneral(packet, a_status);
}

} // namespace nOrvPTP000
