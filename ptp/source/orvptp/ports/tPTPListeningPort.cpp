#include "orvptp/ports/tPTPListeningPort.h"

#include "orvptp/ports/tPTPMasterPort.h"
#include "orvptp/ports/tPTPPassivePort.h"
#include "orvptp/tPTPNode.h"

namespace nOrvPTP000
{

using nOrvTarn000::tStatus;

tPTPListeningPort::tPTPListeningPort(tPTPNode* a_pNode,
                                     tPortNetworkMaintainer* a_pNetworkMaintainer,
                                     tPortDS* a_pPortDS, tStatus& a_status)
    : tPTPOperationalPort(a_pNode, a_pNetworkMaintainer, a_pPortDS)
{
    watchAnnounces(kPortStateListening, a_status);
}

// A slave-only clock stays on decisions for MASTER or PASSIVE.
iPTPPort* tPTPListeningPort::handleStateDecision(tStatus& a_status)
{
    const tStateDecision decision = m_pNode->getStateDecision(a_status);
    const bool mayServe = !m_pNode->isSlaveOnly();
    switch (decision.m_decision)
    {
    case kDecisionSlave:
        return followMaster(decision, a_status);
    case kDecisionMaster:
        if (!mayServe)
        {
            return this;
        }
        m_pNode->applyStateDecision(decision.m_updateCode, decision.m_pMessage, a_status);
        return enter<tPTPMasterPort>(a_status);
    case kDecisionPassive:
        if (!mayServe)
        {
            return this;
        }
        m_pNode->applyStateDecision(decision.m_updateCode, decision.m_pMessage, a_status);
        return enter<tPTPPassivePort>(a_status);
    default:
        return this;
    }
}

// Nobody announced in time: the local clock takes over its data sets, and
// serves unless it is slave-only.
iPTPPort* tPTPListeningPort::handleAnnounceReceiptTimeout(tStatus& a_status)
{
    m_pNode->applyStateDecision(kUpdateM1, nullptr, a_status);
    if (m_pNode->isSlaveOnly())
    {
        return this;
    }
    return enter<tPTPMasterPort>(a_status);
}

} // namespace nOrvPTP000
