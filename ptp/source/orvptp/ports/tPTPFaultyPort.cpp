#include "orvptp/ports/tPTPFaultyPort.h"

#include "orvptp/ports/tPTPDisabledPort.h"
#include "orvptp/tPTPNode.h"

namespace nOrvPTP000
{

using nOrvTarn000::tStatus;

tPTPFaultyPort::tPTPFaultyPort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                               tPortDS* a_pPortDS, tStatus& a_status)
    : tPTPRunningPort(a_pNode, a_pNetworkMaintainer, a_pPortDS)
{
    m_pPortDS->setPortState(kPortStateFaulty, a_status);
}

iPTPPort* tPTPFaultyPort::handleInitialize(tStatus& a_status)
{
    return reinitialize(a_status);
}

iPTPPort* tPTPFaultyPort::handleFaultCleared(tStatus& a_status)
{
    return handleInitialize(a_status);
}

// Already faulty: the network is closed again, and no recovery is armed.
iPTPPort* tPTPFaultyPort::handleNetworkError(tStatus& a_status)
{
    m_pNode->handleNetworkFailure(a_status);
    return this;
}

iPTPPort* tPTPFaultyPort::handleDesignatedDisabled(tStatus& a_status)
{
    return stopTimersAndEnter<tPTPDisabledPort>(a_status);
}

} // namespace nOrvPTP000
