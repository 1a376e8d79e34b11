#pragma once
#include "orvptp/ports/tPTPRunningPort.h"

namespace nOrvPTP000
{

// FAULTY: the port waits until the fault is cleared, the network recovers or
// the port is re-initialised.
class tPTPFaultyPort : public tPTPRunningPort
{
public:
    tPTPFaultyPort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                   tPortDS* a_pPortDS, nOrvTarn000::tStatus& a_status);
    iPTPPort* handleInitialize(nOrvTarn000::tStatus& a_status) override;
    iPTPPort* handleFaultCleared(nOrvTarn000::tStatus& a_status) override;
    iPTPPort* handleNetworkError(nOrvTarn000::tStatus& a_status) override;
    iPTPPort* handleDesignatedDisabled(nOrvTarn000::tStatus& a_status) override;
};

} // namespace nOrvPTP000
