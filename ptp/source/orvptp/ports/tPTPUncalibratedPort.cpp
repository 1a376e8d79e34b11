#include "orvptp/ports/tPTPUncalibratedPort.h"

#include "orvptp/ports/tPTPSlavePort.h"
#include "orvptp/tPTPNode.h"

namespace nOrvPTP000
{

using nOrvTarn000::tStatus;

tPTPUncalibratedPort::tPTPUncalibratedPort(tPTPNode* a_pNode,
                                           tPortNetworkMaintainer* a_pNetworkMaintainer,
                                           tPortDS* a_pPortDS, tStatus& a_status)
    : tPTPOperationalPort(a_pNode, a_pNetworkMaintainer, a_pPortDS)
{
    watchAnnounces(kPortStateUncalibrated, a_status);
}

// The clock follows the new master: the periodic check ends (its handle
// stays in the port data set) and the port is a slave.
iPTPPort* tPTPUncalibratedPort::handleMasterClockSelected(tStatus& a_status)
{
    if (!m_pNode->hasExternalChecks())
    {
        m_pNode->cancelScheduled(m_pPortDS->getTimerId(tPortDS::kMasterClockSelectedTimer),
                                 a_status);
    }
    return enter<tPTPSlavePort>(a_status);
}

} // namespace nOrvPTP000
