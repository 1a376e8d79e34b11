#pragma once
#include "orvptp/iPTPPort.h"

namespace nOrvPTP000
{

// Below INITIALIZING: the clock is not running. Only a start leaves it. The
// port data set keeps its last state; only getState says 0.
class tPTPStoppedPort : public iPTPPort
{
public:
    tPTPStoppedPort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                    tPortDS* a_pPortDS, nOrvTarn000::tStatus& a_status);
    u8 getState() override { return kPortStateStopped; }
    // INITIALIZING, or FAULTY when the port cannot be initialised; the
    // caller's status keeps that failure.
    iPTPPort* handleStartClock(nOrvTarn000::tStatus& a_status) override;
};

} // namespace nOrvPTP000
