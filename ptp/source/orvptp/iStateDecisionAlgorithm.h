#pragma once
#include "orvptp/tStateDecision.h"
#include "orvtarn/protons/status/tStatus.h"

namespace nOrvPTP000
{

class iPTPNode;

// The state decision of one port, from the best Announce that port received
// (Erbest) and the best Announce of the whole clock (Ebest), each with the
// number of the port that received it.
class iStateDecisionAlgorithm
{
public:
    virtual ~iStateDecisionAlgorithm() {}
    virtual tStateDecision& decideState(tStateDecision& a_decision, iPTPNode& a_node,
                                        const tAnnounceMessage* a_pErbest, u16 a_erbestPort,
                                        const tAnnounceMessage* a_pEbest, u16 a_ebestPort,
                                        nOrvTarn000::tStatus& a_status) = 0;
};

} // namespace nOrvPTP000
