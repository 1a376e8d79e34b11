#pragma once
#include "orvptp/ports/tPTPRunningPort.h"

namespace nOrvPTP000
{

// PASSIVE: another master serves this network; the port sends nothing and
// watches that master's Announce messages.
class tPTPPassivePort : public tPTPOperationalPort
{
public:
    tPTPPassivePort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                    tPortDS* a_pPortDS, nOrvTarn000::tStatus& a_status);
    iPTPPort* handleStateDecision(nOrvTarn000::tStatus& a_status) override;
    iPTPPort* handleAnnounceReceiptTimeout(nOrvTarn000::tStatus& a_status) override;
};

} // namespace nOrvPTP000
