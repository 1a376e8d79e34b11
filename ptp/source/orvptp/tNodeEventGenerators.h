#pragma once
#include "orvptp/iPTPEventGenerator.h"
#include "orvptp/tNodeEvents.h"
#include "orvtarn/protons/status/tAllocation.h"

namespace nOrvPTP000
{

// Makes a fresh event of one class at every expiry of its timer.
template <typename tEventClass>
class tNodeEventGenerator : public iPTPEventGenerator
{
public:
    explicit tNodeEventGenerator(iPTPNode* a_pNode) : m_pNode(a_pNode) {}
    std::unique_ptr<iPTPEvent> generateEvent(tStatus& a_status) override
    {
        return nOrvTarn000::makeOwned<tEventClass>(a_status, m_pNode);
    }

private:
    iPTPNode* m_pNode;
};

#define ORVPTP_NODE_EVENT_GENERATOR(name, event)                                                   \
    class name : public tNodeEventGenerator<event>                                                 \
    {                                                                                              \
    public:                                                                                        \
        using tNodeEventGenerator<event>::tNodeEventGenerator;                                     \
    }

ORVPTP_NODE_EVENT_GENERATOR(tInitializedCheckEventGenerator, tInitializedCheckEvent);
ORVPTP_NODE_EVENT_GENERATOR(tStateDecisionEventGenerator, tStateDecisionEvent);
ORVPTP_NODE_EVENT_GENERATOR(tSendAnnouncePacketEventGenerator, tSendAnnouncePacketEvent);
ORVPTP_NODE_EVENT_GENERATOR(tSendSyncPacketEventGenerator, tSendSyncPacketEvent);
ORVPTP_NODE_EVENT_GENERATOR(tDelayRequestEventGenerator, tDelayRequestEvent);
ORVPTP_NODE_EVENT_GENERATOR(tInitialAnnounceTimeoutEventGenerator, tInitialAnnounceTimeoutEvent);
ORVPTP_NODE_EVENT_GENERATOR(tMasterClockSelectedCheckEventGenerator,
                            tMasterClockSelectedCheckEvent);
ORVPTP_NODE_EVENT_GENERATOR(tNetworkRecoveryEventGenerator, tNetworkRecoveryEvent);

#undef ORVPTP_NODE_EVENT_GENERATOR

// Raises the aging event of one foreign master record.
class tForeignMasterAnnounceTimeoutEventGenerator : public iPTPEventGenerator
{
public:
    tForeignMasterAnnounceTimeoutEventGenerator(iPTPNode* a_pNode, const tPortIdentity& a_sender)
        : m_pNode(a_pNode), m_sender(a_sender)
    {
    }
    std::unique_ptr<iPTPEvent> generateEvent(tStatus& a_status) override
    {
        return nOrvTarn000::makeOwned<tForeignMasterAnnounceTimeoutEvent>(a_status, m_pNode,
                                                                          m_sender);
    }

private:
    iPTPNode* m_pNode;
    tPortIdentity m_sender;
};

} // namespace nOrvPTP000
