#pragma once
#include "orvptp/ports/tPTPRunningPort.h"

namespace nOrvPTP000
{

// MASTER: the port sends Announce and Sync at their intervals, the first of
// each at once, and answers Delay_Req. Its two send timers live exactly as
// long as the state.
class tPTPMasterPort : public tPTPOperationalPort
{
public:
    tPTPMasterPort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                   tPortDS* a_pPortDS, nOrvTarn000::tStatus& a_status);
    iPTPPort* handleStateDecision(nOrvTarn000::tStatus& a_status) override;
};

} // namespace nOrvPTP000
