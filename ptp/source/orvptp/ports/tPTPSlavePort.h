#pragma once
#include "orvptp/ports/tPTPRunningPort.h"

namespace nOrvPTP000
{

// SLAVE: the port follows its master until a state decision, the master's
// silence or a synchronisation fault ends it.
class tPTPSlavePort : public tPTPOperationalPort
{
public:
    tPTPSlavePort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                  tPortDS* a_pPortDS, nOrvTarn000::tStatus& a_status);
    iPTPPort* handleStateDecision(nOrvTarn000::tStatus& a_status) override;
    iPTPPort* handleAnnounceReceiptTimeout(nOrvTarn000::tStatus& a_status) override;
    iPTPPort* handleSyncFault(nOrvTarn000::tStatus& a_status) override;
};

} // namespace nOrvPTP000
