#pragma once
#include "orvptp/iDataSetComparisonAlgorithm.h"
#include "orvptp/iPTPNode.h"
#include "orvptp/iStateDecisionAlgorithm.h"
#include "orvptp/tPortStateCodes.h"

namespace nOrvPTP000
{

// The state decision algorithm of IEEE 1588-2008 for an ordinary clock, on
// the comparison tComparison:
//
// - a LISTENING port that has heard no qualified master makes no
//   recommendation;
// - a clock of class 1 to 127 never follows another clock: it is master
//   where it is better than Erbest (M1), passive otherwise (P1);
// - a clock better than Ebest is master (M2);
// - the port that received Ebest makes the clock slave (S1);
// - any other port is passive where Ebest wins over its Erbest by topology
//   only (P2), and master towards its Erbest otherwise (M3).
//
// Whether the clock is slave-only does not enter here: the port states
// refuse MASTER and PASSIVE for such a clock.
template <typename tComparison>
class tDefaultStateDecisionAlgorithm : public iStateDecisionAlgorithm
{
public:
    enum : u8
    {
        kLowestMasterOnlyClass = 1,
        kHighestMasterOnlyClass = 127
    };

    tStateDecision& decideState(tStateDecision& a_decision, iPTPNode& a_node,
                                const tAnnounceMessage* a_pErbest, u16 a_erbestPort,
                                const tAnnounceMessage* a_pEbest, u16 a_ebestPort,
                                nOrvTarn000::tStatus& a_status) override
    {
        if (a_pErbest == nullptr &&
            a_node.getPortState(a_erbestPort, a_status) == kPortStateListening)
        {
            a_decision = tStateDecision(kDecisionListening, kUpdateM1, nullptr);
            return a_decision;
        }

        const u8 clockClass = a_node.getClockClass();
        if (clockClass >= kLowestMasterOnlyClass && clockClass <= kHighestMasterOnlyClass)
        {
            if (isAPreferred(
                    m_comparison.compareWithLocalClock(a_node, a_pErbest, a_erbestPort, a_status)))
            {
                a_decision = tStateDecision(kDecisionMaster, kUpdateM1, nullptr);
            }
            else
            {
                a_decision = tStateDecision(kDecisionPassive, kUpdateP1, a_pErbest);
            }
            return a_decision;
        }

        if (isAPreferred(
                m_comparison.compareWithLocalClock(a_node, a_pEbest, a_ebestPort, a_status)))
        {
            a_decision = tStateDecision(kDecisionMaster, kUpdateM2, nullptr);
            return a_decision;
        }

        if (a_ebestPort == a_erbestPort)
        {
            a_decision = tStateDecision(kDecisionSlave, kUpdateS1, a_pErbest);
            return a_decision;
        }

        if (m_comparison.compareForeignMasters(a_node, a_pEbest, a_ebestPort, a_pErbest,
                                               a_erbestPort, a_status) == kABetterByTopology)
        {
            a_decision = tStateDecision(kDecisionPassive, kUpdateP2, a_pErbest);
        }
        else
        {
            a_decision = tStateDecision(kDecisionMaster, kUpdateM3, a_pEbest);
        }
        return a_decision;
    }

private:
    tComparison m_comparison;
};

} // namespace nOrvPTP000
