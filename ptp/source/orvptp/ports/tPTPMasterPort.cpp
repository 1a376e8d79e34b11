#include "orvptp/ports/tPTPMasterPort.h"

#include "orvptp/ports/tPTPPassivePort.h"
#include "orvptp/tNodeEventGenerators.h"
#include "orvptp/tPTPNode.h"

namespace nOrvPTP000
{

using nOrvTarn000::makeOwned;
using nOrvTarn000::tStatus;

tPTPMasterPort::tPTPMasterPort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                               tPortDS* a_pPortDS, tStatus& a_status)
    : tPTPOperationalPort(a_pNode, a_pNetworkMaintainer, a_pPortDS)
{
    const u32 announceMs = m_pNode->getAnnounceIntervalMs();
    const u32 syncMs = m_pNode->getSyncIntervalMs();
    if (a_status.isFatal())
    {
        return;
    }
    std::unique_ptr<iPTPEventGenerator> pAnnounce =
        makeOwned<tSendAnnouncePacketEventGenerator>(a_status, m_pNode);
    std::unique_ptr<iPTPEventGenerator> pSync =
        makeOwned<tSendSyncPacketEventGenerator>(a_status, m_pNode);
    if (a_status.isFatal())
    {
        return;
    }
    // The first Announce and the first Sync go out at once.
    const u32 announceId = m_pNode->schedulePeriodic(std::move(pAnnounce), 0, announceMs, a_status);
    if (a_status.isFatal() || announceId == tPTPNode::kNotScheduled)
    {
        return;
    }
    m_pPortDS->setTimerId(tPortDS::kSendAnnounceTimer, announceId, a_status);
    const u32 syncId = m_pNode->schedulePeriodic(std::move(pSync), 0, syncMs, a_status);
    if (a_status.isFatal() || syncId == tPTPNode::kNotScheduled)
    {
        tStatus cleanUpStatus;
        m_pNode->cancelScheduled(announceId, cleanUpStatus);
        m_pPortDS->setTimerId(tPortDS::kSendAnnounceTimer, tPortDS::kNoTimer, cleanUpStatus);
        return;
    }
    m_pPortDS->setTimerId(tPortDS::kSendSyncTimer, syncId, a_status);
    m_pNode->cancelScheduled(m_pPortDS->getTimerId(tPortDS::kAnnounceReceiptTimer), a_status);
    m_pPortDS->setTimerId(tPortDS::kAnnounceReceiptTimer, tPortDS::kNoTimer, a_status);
    m_pPortDS->setPortState(kPortStateMaster, a_status);
}

// The data sets follow every decision; the state only SLAVE and PASSIVE ones.
iPTPPort* tPTPMasterPort::handleStateDecision(tStatus& a_status)
{
    const tStateDecision decision = m_pNode->getStateDecision(a_status);
    if (decision.m_decision == kDecisionSlave)
    {
        return followMaster(decision, a_status);
    }
    m_pNode->applyStateDecision(decision.m_updateCode, decision.m_pMessage, a_status);
    if (decision.m_decision == kDecisionPassive && a_status.isNotFatal())
    {
        return enter<tPTPPassivePort>(a_status);
    }
    return this;
}

} // namespace nOrvPTP000
