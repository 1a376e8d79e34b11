#include "orvptp/ports/tPTPInitializingPort.h"

#include "orvptp/ports/tPTPFaultyPort.h"
#include "orvptp/ports/tPTPListeningPort.h"
#include "orvptp/tNodeEventGenerators.h"
#include "orvptp/tPTPNode.h"

namespace nOrvPTP000
{

using nOrvTarn000::makeOwned;
using nOrvTarn000::tStatus;

tPTPInitializingPort::tPTPInitializingPort(tPTPNode* a_pNode,
                                           tPortNetworkMaintainer* a_pNetworkMaintainer,
                                           tPortDS* a_pPortDS, tStatus& a_status)
    : tPTPRunningPort(a_pNode, a_pNetworkMaintainer, a_pPortDS)
{
    m_pPortDS->setPortState(kPortStateInitializing, a_status);
}

// The clock is ready: the state decisions start, at the announce interval.
iPTPPort* tPTPInitializingPort::handleInitializedCheck(tStatus& a_status)
{
    std::unique_ptr<iPTPEventGenerator> pGenerator =
        makeOwned<tStateDecisionEventGenerator>(a_status, m_pNode);
    if (pGenerator == nullptr)
    {
        return this;
    }
    const u32 interval = m_pNode->getAnnounceIntervalMs();
    const u32 id = m_pNode->schedulePeriodic(std::move(pGenerator), interval, interval, a_status);
    m_pPortDS->setTimerId(tPortDS::kStateDecisionTimer, id, a_status);
    return enter<tPTPListeningPort>(a_status);
}

iPTPPort* tPTPInitializingPort::handleNetworkError(tStatus& a_status)
{
    return failNetwork<tPTPFaultyPort>(a_status);
}

} // namespace nOrvPTP000
