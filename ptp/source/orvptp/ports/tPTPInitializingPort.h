#pragma once
#include "orvptp/ports/tPTPRunningPort.h"

namespace nOrvPTP000
{

// INITIALIZING: the port waits for the clock to be ready (the initialized
// check), then listens.
class tPTPInitializingPort : public tPTPRunningPort
{
public:
    tPTPInitializingPort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                         tPortDS* a_pPortDS, nOrvTarn000::tStatus& a_status);
    iPTPPort* handleInitializedCheck(nOrvTarn000::tStatus& a_status) override;
    iPTPPort* handleNetworkError(nOrvTarn000::tStatus& a_status) override;
};

} // namespace nOrvPTP000
