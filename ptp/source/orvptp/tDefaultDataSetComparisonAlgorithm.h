#pragma once
#include "orvptp/iDataSetComparisonAlgorithm.h"

namespace nOrvPTP000
{

// The two stages of the comparison: different grandmasters are ranked by
// priority1, clockClass, clockAccuracy (as a signed number), the scaled log
// variance, priority2 and finally their identity, the smaller value winning;
// the same grandmaster seen over two paths is ranked by stepsRemoved and, at
// equal or neighbouring distance, by the port identities on the path. The
// errors offer kStatusInvalidArgument.
class tDefaultDataSetComparisonAlgorithm : public iDataSetComparisonAlgorithm
{
public:
    tDataSetComparison compareForeignMasters(iPTPNode& a_node, const tAnnounceMessage* a_pA,
                                             u16 a_portA, const tAnnounceMessage* a_pB, u16 a_portB,
                                             nOrvTarn000::tStatus& a_status) override;
    tDataSetComparison compareWithLocalClock(iPTPNode& a_node, const tAnnounceMessage* a_pForeign,
                                             u16 a_foreignPort,
                                             nOrvTarn000::tStatus& a_status) override;
};

} // namespace nOrvPTP000
