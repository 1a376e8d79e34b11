#pragma once
#include "orvptp/ports/tPTPRunningPort.h"

namespace nOrvPTP000
{

// UNCALIBRATED: the port follows a new master and waits until the clock is
// steered to it (the master clock selected check). State decisions and
// announce receipt time-outs are not heard here.
class tPTPUncalibratedPort : public tPTPOperationalPort
{
public:
    tPTPUncalibratedPort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                         tPortDS* a_pPortDS, nOrvTarn000::tStatus& a_status);
    iPTPPort* handleMasterClockSelected(nOrvTarn000::tStatus& a_status) override;
};

} // namespace nOrvPTP000
