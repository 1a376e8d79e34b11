#pragma once
#include "orvptp/iPTPEvent.h"
#include "orvptp/iPTPNode.h"
#include "orvptp/tPortIdentity.h"

namespace nOrvPTP000
{

class tProtocolDataUnit;

// An event that calls one handler of the node, with the dispatcher's status.
template <void (iPTPNode::*kHandler)(tStatus&)>
class tNodeHandlerEvent : public iPTPEvent
{
public:
    explicit tNodeHandlerEvent(iPTPNode* a_pNode) : m_pNode(a_pNode) {}
    void execute(tStatus& a_status) override { (m_pNode->*kHandler)(a_status); }

private:
    iPTPNode* m_pNode;
};

// An event for a handler that names the port, always port 1.
template <void (iPTPNode::*kHandler)(u16, tStatus&)>
class tNodePortHandlerEvent : public iPTPEvent
{
public:
    explicit tNodePortHandlerEvent(iPTPNode* a_pNode) : m_pNode(a_pNode) {}
    void execute(tStatus& a_status) override { (m_pNode->*kHandler)(1, a_status); }

private:
    iPTPNode* m_pNode;
};

// Start and stop: the caller waits on the done event, and the handler reports
// into the caller's status, not the dispatcher's.
template <void (iPTPNode::*kHandler)(nOrvTarn000::tEvent*, tStatus*), i32 kKind>
class tClockRunEvent : public iPTPEvent
{
public:
    tClockRunEvent(iPTPNode* a_pNode, nOrvTarn000::tEvent* a_pDone, tStatus* a_pCallerStatus)
        : m_pNode(a_pNode), m_pDone(a_pDone), m_pCallerStatus(a_pCallerStatus)
    {
    }
    bool allowedWhenStopped() override { return true; }
    i32 getEventKind() override { return kKind; }
    void execute(tStatus&) override { (m_pNode->*kHandler)(m_pDone, m_pCallerStatus); }

private:
    iPTPNode* m_pNode;
    nOrvTarn000::tEvent* m_pDone;
    tStatus* m_pCallerStatus;
};

// Property access from another thread: the value pointers point into the
// waiting caller's frame; the event owns only its copy of the list.
template <void (iPTPNode::*kHandler)(i32, void**, u16, nOrvTarn000::tEvent*, tStatus*)>
class tDatasetEvent : public iPTPEvent
{
public:
    enum : u32
    {
        kMaxValues = 3
    };
    tDatasetEvent(iPTPNode* a_pNode, i32 a_id, void* const* a_pValues, u32 a_count,
                  u16 a_portNumber, nOrvTarn000::tEvent* a_pDone, tStatus* a_pCallerStatus)
        : m_pNode(a_pNode), m_id(a_id), m_values(), m_portNumber(a_portNumber), m_pDone(a_pDone),
          m_pCallerStatus(a_pCallerStatus)
    {
        for (u32 i = 0; i < a_count && i < kMaxValues; ++i)
        {
            m_values[i] = a_pValues[i];
        }
    }
    bool allowedWhenStopped() override { return true; }
    void execute(tStatus&) override
    {
        (m_pNode->*kHandler)(m_id, m_values, m_portNumber, m_pDone, m_pCallerStatus);
    }

private:
    iPTPNode* m_pNode;
    i32 m_id;
    void* m_values[kMaxValues];
    u16 m_portNumber;
    nOrvTarn000::tEvent* m_pDone;
    tStatus* m_pCallerStatus;
};

// Each event class is a named instance of one of the templates above.
#define ORVPTP_NODE_EVENT(name, base, ...)                                                         \
    class name : public base<__VA_ARGS__>                                                          \
    {                                                                                              \
    public:                                                                                        \
        using base<__VA_ARGS__>::base;                                                             \
    }

ORVPTP_NODE_EVENT(tStartClockEvent, tClockRunEvent, &iPTPNode::handleStartClock,
                  iPTPEvent::kStartEvent);
ORVPTP_NODE_EVENT(tStopClockEvent, tClockRunEvent, &iPTPNode::handleStopClock,
                  iPTPEvent::kStopEvent);
ORVPTP_NODE_EVENT(tGetDatasetEvent, tDatasetEvent, &iPTPNode::getProperty);
ORVPTP_NODE_EVENT(tSetDatasetEvent, tDatasetEvent, &iPTPNode::setProperty);
ORVPTP_NODE_EVENT(tStateDecisionEvent, tNodeHandlerEvent, &iPTPNode::handleStateDecisionEvent);
ORVPTP_NODE_EVENT(tSendAnnouncePacketEvent, tNodeHandlerEvent, &iPTPNode::handleSendAnnouncePacket);
ORVPTP_NODE_EVENT(tSendSyncPacketEvent, tNodeHandlerEvent, &iPTPNode::handleSendSyncPacket);
ORVPTP_NODE_EVENT(tDelayRequestEvent, tNodeHandlerEvent, &iPTPNode::handleDelayRequestTimer);
ORVPTP_NODE_EVENT(tInitializedCheckEvent, tNodeHandlerEvent, &iPTPNode::handleInitializedCheck);
ORVPTP_NODE_EVENT(tMasterClockSelectedCheckEvent, tNodeHandlerEvent,
                  &iPTPNode::handleMasterClockSelectedCheck);
ORVPTP_NODE_EVENT(tInitialAnnounceTimeoutEvent, tNodeHandlerEvent,
                  &iPTPNode::handleInitialAnnounceTimeout);
ORVPTP_NODE_EVENT(tNetworkRecoveryEvent, tNodeHandlerEvent, &iPTPNode::handleNetworkRecovery);
ORVPTP_NODE_EVENT(tSignalNetworkErrorEvent, tNodeHandlerEvent, &iPTPNode::handleNetworkError);
ORVPTP_NODE_EVENT(tSignalFaultDetectedEvent, tNodeHandlerEvent, &iPTPNode::handleFaultDetected);
ORVPTP_NODE_EVENT(tSignalFaultClearedEvent, tNodeHandlerEvent, &iPTPNode::handleFaultCleared);
ORVPTP_NODE_EVENT(tSignalSyncFaultEvent, tNodeHandlerEvent, &iPTPNode::handleSyncFault);
ORVPTP_NODE_EVENT(tInitializePortEvent, tNodePortHandlerEvent, &iPTPNode::handleInitializePort);
ORVPTP_NODE_EVENT(tDesignatePortEnabledEvent, tNodePortHandlerEvent,
                  &iPTPNode::handleDesignatedEnabled);
ORVPTP_NODE_EVENT(tDesignatePortDisabledEvent, tNodePortHandlerEvent,
                  &iPTPNode::handleDesignatedDisabled);

#undef ORVPTP_NODE_EVENT

// Ages the record of one foreign master.
class tForeignMasterAnnounceTimeoutEvent : public iPTPEvent
{
public:
    tForeignMasterAnnounceTimeoutEvent(iPTPNode* a_pNode, const tPortIdentity& a_sender)
        : m_pNode(a_pNode), m_sender(a_sender)
    {
    }
    void execute(tStatus& a_status) override
    {
        m_pNode->handleForeignMasterAnnounceTimeout(m_sender, a_status);
    }

private:
    iPTPNode* m_pNode;
    tPortIdentity m_sender;
};

// One received datagram. The event owns the packet until it hands it to the
// node; a packet that is never handed on goes with the event.
class tPTPPacketReceivedEvent : public iPTPEvent
{
public:
    tPTPPacketReceivedEvent(iPTPNode* a_pNode, std::unique_ptr<tProtocolDataUnit> a_pPacket);
    ~tPTPPacketReceivedEvent() override;
    void execute(tStatus& a_status) override;
    void abandon(tStatus& a_status) override;

private:
    iPTPNode* m_pNode;
    std::unique_ptr<tProtocolDataUnit> m_pPacket;
};

} // namespace nOrvPTP000
