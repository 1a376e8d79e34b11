#pragma once
#include "orvtarn/protons/status/tStatus.h"

namespace nOrvPTP000
{

class iPTPNode;
class tAnnounceMessage;

// The outcome of comparing two clocks A and B as masters. Only kABetter and
// kABetterByTopology count as a win of A; everything else, the errors
// included, counts as a win of B.
enum tDataSetComparison : i32
{
    kABetter = 0,
    kBBetter = 1,
    // The same grandmaster; A is preferred by its place in the topology.
    kABetterByTopology = 2,
    kBBetterByTopology = 3,
    // A message that the receiving port itself sent.
    kError1 = 4,
    // Sender and receiver of both messages are the same.
    kError2 = 5
};

inline bool isAPreferred(tDataSetComparison a_result)
{
    return a_result == kABetter || a_result == kABetterByTopology;
}

// The data set comparison of IEEE 1588-2008: which of two clocks is the better
// master. It works on the received Announce messages themselves and holds no
// state. Ports are the numbers of the local ports that received the messages.
// The status is written only on an error result, and is not tested on entry.
class iDataSetComparisonAlgorithm
{
public:
    virtual ~iDataSetComparisonAlgorithm() {}

    // A null message loses; with both null A wins.
    virtual tDataSetComparison compareForeignMasters(iPTPNode& a_node, const tAnnounceMessage* a_pA,
                                                     u16 a_portA, const tAnnounceMessage* a_pB,
                                                     u16 a_portB,
                                                     nOrvTarn000::tStatus& a_status) = 0;

    // The local clock, as its default data set describes it at zero steps, is
    // A; the foreign clock is B. A null foreign message loses.
    virtual tDataSetComparison compareWithLocalClock(iPTPNode& a_node,
                                                     const tAnnounceMessage* a_pForeign,
                                                     u16 a_foreignPort,
                                                     nOrvTarn000::tStatus& a_status) = 0;
};

} // namespace nOrvPTP000
