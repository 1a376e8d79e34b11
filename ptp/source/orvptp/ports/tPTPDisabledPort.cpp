#include "orvptp/ports/tPTPDisabledPort.h"

#include "orvptp/tPTPNode.h"

namespace nOrvPTP000
{

using nOrvTarn000::tStatus;

tPTPDisabledPort::tPTPDisabledPort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                                   tPortDS* a_pPortDS, tStatus& a_status)
    : tPTPRunningPort(a_pNode, a_pNetworkMaintainer, a_pPortDS)
{
    m_pPortDS->setPortState(kPortStateDisabled, a_status);
}

iPTPPort* tPTPDisabledPort::handleInitialize(tStatus& a_status)
{
    return reinitialize(a_status);
}

iPTPPort* tPTPDisabledPort::handleDesignatedEnabled(tStatus& a_status)
{
    return handleInitialize(a_status);
}

// Disabled stays disabled; the network is closed and no recovery is armed.
iPTPPort* tPTPDisabledPort::handleNetworkError(tStatus& a_status)
{
    m_pNode->handleNetworkFailure(a_status);
    return this;
}

} // namespace nOrvPTP000
