#pragma once
#include "orvptp/iBestMasterClockAlgorithm.h"
#include "orvptp/tDefaultDataSetComparisonAlgorithm.h"
#include "orvptp/tDefaultStateDecisionAlgorithm.h"

namespace nOrvPTP000
{

// The best master clock algorithm of IEEE 1588-2008 for the node's ports.
// For each port, Erbest is the best qualified record of its table; the
// qualified records that lose to it are deleted from the table as the run
// goes, so that afterwards a table holds at most one qualified record beside
// the ones not yet qualified. Ebest is the best Erbest, an earlier port
// keeping it on a tie. Each port's decision then goes to the output.
//
// A failure (a comparison error, no memory) ends the run with the decisions
// as they were, except that none is left pointing at a deleted record.
class tDefaultBestMasterClockAlgorithm : public iBestMasterClockAlgorithm
{
public:
    void runBestMasterClock(iPTPNode& a_node, tBMCOutput& a_output,
                            nOrvTarn000::tStatus& a_status) override;

private:
    // The best qualified record of port a_port's table, after the losers went.
    const tAnnounceMessage* selectErbest(iPTPNode& a_node, u16 a_port, tBMCOutput& a_output,
                                         nOrvTarn000::tStatus& a_status);

    tDefaultDataSetComparisonAlgorithm m_comparison;
    tDefaultStateDecisionAlgorithm<tDefaultDataSetComparisonAlgorithm> m_stateDecision;
};

} // namespace nOrvPTP000
