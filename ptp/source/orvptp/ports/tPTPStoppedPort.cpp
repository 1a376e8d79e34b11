#include "orvptp/ports/tPTPStoppedPort.h"

#include "orvptp/ports/tPTPFaultyPort.h"
#include "orvptp/ports/tPTPInitializingPort.h"
#include "orvptp/tPTPNode.h"

namespace nOrvPTP000
{

using nOrvTarn000::tStatus;

tPTPStoppedPort::tPTPStoppedPort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                                 tPortDS* a_pPortDS, tStatus&)
    : iPTPPort(a_pNode, a_pNetworkMaintainer, a_pPortDS)
{
}

iPTPPort* tPTPStoppedPort::handleStartClock(tStatus& a_status)
{
    m_pNode->reinitializePort(a_status);
    if (a_status.isNotFatal())
    {
        return enter<tPTPInitializingPort>(a_status);
    }
    tStatus faultStatus;
    return enter<tPTPFaultyPort>(faultStatus);
}

} // namespace nOrvPTP000
