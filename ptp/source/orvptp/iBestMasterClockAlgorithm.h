#pragma once
#include "orvtarn/protons/status/tStatus.h"

namespace nOrvPTP000
{

class iPTPNode;
class tBMCOutput;

// One best master selection over the node's foreign master records, ending
// in a decision for every port.
class iBestMasterClockAlgorithm
{
public:
    virtual ~iBestMasterClockAlgorithm() {}
    virtual void runBestMasterClock(iPTPNode& a_node, tBMCOutput& a_output,
                                    nOrvTarn000::tStatus& a_status) = 0;
};

} // namespace nOrvPTP000
