#include "orvptp/ports/tPTPSlavePort.h"

#include "orvptp/ports/tPTPListeningPort.h"
#include "orvptp/ports/tPTPMasterPort.h"
#include "orvptp/ports/tPTPPassivePort.h"
#include "orvptp/tAnnounceMessage.h"
#include "orvptp/tPTPNode.h"

namespace nOrvPTP000
{

using nOrvTarn000::tStatus;

tPTPSlavePort::tPTPSlavePort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                             tPortDS* a_pPortDS, tStatus& a_status)
    : tPTPOperationalPort(a_pNode, a_pNetworkMaintainer, a_pPortDS)
{
    watchAnnounces(kPortStateSlave, a_status);
}

// Announce reception keeps the parent's data current, so a decision for the
// same parent changes nothing. A slave-only clock that is told to serve
// listens instead.
iPTPPort* tPTPSlavePort::handleStateDecision(tStatus& a_status)
{
    const tStateDecision decision = m_pNode->getStateDecision(a_status);
    if (a_status.isFatal())
    {
        return this;
    }
    switch (decision.m_decision)
    {
    case kDecisionSlave:
        if (decision.m_pMessage == nullptr ||
            decision.m_pMessage->getHeader()->getSourcePortIdentity() ==
                m_pNode->getParentPortIdentity())
        {
            return this;
        }
        return followMaster(decision, a_status);
    case kDecisionMaster:
        if (m_pNode->isSlaveOnly())
        {
            return enter<tPTPListeningPort>(a_status);
        }
        m_pNode->applyStateDecision(decision.m_updateCode, nullptr, a_status);
        return enter<tPTPMasterPort>(a_status);
    case kDecisionPassive:
        if (m_pNode->isSlaveOnly())
        {
            return enter<tPTPListeningPort>(a_status);
        }
        m_pNode->applyStateDecision(decision.m_updateCode, nullptr, a_status);
        return enter<tPTPPassivePort>(a_status);
    default:
        return this;
    }
}

// The master fell silent: a clock that may serve drops it and serves; a
// slave-only clock keeps its record and listens.
iPTPPort* tPTPSlavePort::handleAnnounceReceiptTimeout(tStatus& a_status)
{
    if (m_pNode->isSlaveOnly())
    {
        return enter<tPTPListeningPort>(a_status);
    }
    m_pNode->applyStateDecision(kUpdateM1, nullptr, a_status);
    m_pNode->dropBestForeignMaster(tPortDS::kPortNumber, a_status);
    return enter<tPTPMasterPort>(a_status);
}

iPTPPort* tPTPSlavePort::handleSyncFault(tStatus& a_status)
{
    return recalibrate(a_status);
}

} // namespace nOrvPTP000
