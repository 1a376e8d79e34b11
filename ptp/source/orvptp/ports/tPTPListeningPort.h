#pragma once
#include "orvptp/ports/tPTPRunningPort.h"

namespace nOrvPTP000
{

// LISTENING: the port hears Announce messages and waits for a state decision
// or for the announce receipt time-out.
class tPTPListeningPort : public tPTPOperationalPort
{
public:
    tPTPListeningPort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer,
                      tPortDS* a_pPortDS, nOrvTarn000::tStatus& a_status);
    iPTPPort* handleStateDecision(nOrvTarn000::tStatus& a_status) override;
    iPTPPort* handleAnnounceReceiptTimeout(nOrvTarn000::tStatus& a_status) override;
};

} // namespace nOrvPTP000
