#include "orvptp/ports/tPTPPassivePort.h"

#include "orvptp/ports/tPTPMasterPort.h"
#include "orvptp/tPTPNode.h"

namespace nOrvPTP000
{

using nOrvTarn000::tStatus;

tPTPPassivePort::tPTPPassivePort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                                 tPortDS* a_pPortDS, tStatus& a_status)
    : tPTPOperationalPort(a_pNode, a_pNetworkMaintainer, a_pPortDS)
{
    watchAnnounces(kPortStatePassive, a_status);
}

iPTPPort* tPTPPassivePort::handleStateDecision(tStatus& a_status)
{
    const tStateDecision decision = m_pNode->getStateDecision(a_status);
    if (a_status.isFatal())
    {
        return this;
    }
    switch (decision.m_decision)
    {
    case kDecisionSlave:
        m_pNode->applyStateDecision(decision.m_updateCode, decision.m_pMessage, a_status);
        return recalibrate(a_status);
    case kDecisionMaster:
        m_pNode->applyStateDecision(decision.m_updateCode, decision.m_pMessage, a_status);
        return enter<tPTPMasterPort>(a_status);
    default:
        return this;
    }
}

// The master that silenced this port is gone: the port serves.
iPTPPort* tPTPPassivePort::handleAnnounceReceiptTimeout(tStatus& a_status)
{
    m_pNode->applyStateDecision(kUpdateM1, nullptr, a_status);
    m_pNode->dropBestForeignMaster(tPortDS::kPortNumber, a_status);
    return enter<tPTPMasterPort>(a_status);
}

} // namespace nOrvPTP000
