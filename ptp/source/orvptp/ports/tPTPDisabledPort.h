#pragma once
#include "orvptp/ports/tPTPRunningPort.h"

namespace nOrvPTP000
{

// DISABLED: the port takes no part until it is enabled or re-initialised.
class tPTPDisabledPort : public tPTPRunningPort
{
public:
    tPTPDisabledPort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                     tPortDS* a_pPortDS, nOrvTarn000::tStatus& a_status);
    iPTPPort* handleInitialize(nOrvTarn000::tStatus& a_status) override;
    iPTPPort* handleDesignatedEnabled(nOrvTarn000::tStatus& a_status) override;
    iPTPPort* handleNetworkError(nOrvTarn000::tStatus& a_status) override;
};

} // namespace nOrvPTP000
