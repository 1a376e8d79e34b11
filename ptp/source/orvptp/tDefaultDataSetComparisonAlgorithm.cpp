#include "orvptp/tDefaultDataSetComparisonAlgorithm.h"

#include "orvptp/iPTPNode.h"
#include "orvptp/tAnnounceMessage.h"

using nOrvTarn000::kStatusInvalidArgument;
using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

namespace
{

// What the grandmaster comparison reads of a clock.
struct tGrandmasterValues
{
    u8 m_priority1;
    u8 m_clockClass;
    i8 m_clockAccuracy;
    u16 m_offsetScaledLogVariance;
    u8 m_priority2;
    tClockIdentity m_identity;
};

tGrandmasterValues grandmasterOf(const tAnnounceMessage& a_message)
{
    const tClockQuality& quality = a_message.getGrandmasterClockQuality();
    return tGrandmasterValues{
        a_message.getGrandmasterPriority1(),         quality.getClockClass(),
        static_cast<i8>(quality.getClockAccuracy()), quality.getOffsetScaledLogVariance(),
        a_message.getGrandmasterPriority2(),         a_message.getGrandmasterIdentity()};
}

tGrandmasterValues grandmasterOf(iPTPNode& a_node)
{
    return tGrandmasterValues{a_node.getPriority1(),
                              a_node.getClockClass(),
                              static_cast<i8>(a_node.getClockAccuracy()),
                              a_node.getOffsetScaledLogVariance(),
                              a_node.getPriority2(),
                              a_node.getClockIdentity()};
}

// The smaller value wins, field by field; the identity settles a full tie.
tDataSetComparison compareGrandmasters(const tGrandmasterValues& a_a, const tGrandmasterValues& a_b)
{
    if (a_a.m_priority1 != a_b.m_priority1)
    {
        return a_a.m_priority1 < a_b.m_priority1 ? kABetter : kBBetter;
    }
    if (a_a.m_clockClass != a_b.m_clockClass)
    {
        return a_a.m_clockClass < a_b.m_clockClass ? kABetter : kBBetter;
    }
    if (a_a.m_clockAccuracy != a_b.m_clockAccuracy)
    {
        return a_a.m_clockAccuracy < a_b.m_clockAccuracy ? kABetter : kBBetter;
    }
    if (a_a.m_offsetScaledLogVariance != a_b.m_offsetScaledLogVariance)
    {
        return a_a.m_offsetScaledLogVariance < a_b.m_offsetScaledLogVariance ? kABetter : kBBetter;
    }
    if (a_a.m_priority2 != a_b.m_priority2)
    {
        return a_a.m_priority2 < a_b.m_priority2 ? kABetter : kBBetter;
    }
    return a_a.m_identity > a_b.m_identity ? kBBetter : kABetter;
}

// A message without a header (its construction failed) has no known sender.
tPortIdentity senderOf(const tAnnounceMessage& a_message)
{
    const tMessageHeader* pHeader = a_message.getHeader();
    return pHeader != nullptr ? pHeader->getSourcePortIdentity() : tPortIdentity();
}

// The message on the longer path by one step went through the receiving port
// R = (local clock, a_port) or came straight from its sender S. a_nearerWins
// and a_nearerWinsByTopology name the win of the nearer clock.
tDataSetComparison compareNeighbouringPaths(iPTPNode& a_node, u16 a_port,
                                            const tAnnounceMessage& a_further,
                                            tDataSetComparison a_nearerWins,
                                            tDataSetComparison a_nearerWinsByTopology,
                                            tStatus& a_status)
{
    const tPortIdentity receiver(a_node.getClockIdentity(), a_port);
    const tPortIdentity sender = senderOf(a_further);
    if (receiver > sender)
    {
        return a_nearerWinsByTopology;
    }
    if (receiver < sender)
    {
        return a_nearerWins;
    }
    ORVTARN_SET_CODE(a_status, kStatusInvalidArgument);
    return kError1;
}

} // namespace

tDataSetComparison tDefaultDataSetComparisonAlgorithm::compareForeignMasters(
    iPTPNode& a_node, const tAnnounceMessage* a_pA, u16 a_portA, const tAnnounceMessage* a_pB,
    u16 a_portB, tStatus& a_status)
{
    if (a_pB == nullptr)
    {
        return kABetter;
    }
    if (a_pA == nullptr)
    {
        return kBBetter;
    }
    if (a_pA->getGrandmasterIdentity() != a_pB->getGrandmasterIdentity())
    {
        return compareGrandmasters(grandmasterOf(*a_pA), grandmasterOf(*a_pB));
    }

    // The same grandmaster: the shorter path wins. Widened, so that 65,535
    // steps are not one step short of 0.
    const u32 stepsA = a_pA->getStepsRemoved();
    const u32 stepsB = a_pB->getStepsRemoved();
    if (stepsA > stepsB + 1)
    {
        return kBBetter;
    }
    if (stepsA + 1 < stepsB)
    {
        return kABetter;
    }
    if (stepsA == stepsB + 1)
    {
        return compareNeighbouringPaths(a_node, a_portA, *a_pA, kBBetter, kBBetterByTopology,
                                        a_status);
    }
    if (stepsB == stepsA + 1)
    {
        return compareNeighbouringPaths(a_node, a_portB, *a_pB, kABetter, kABetterByTopology,
                                        a_status);
    }

    const tPortIdentity senderA = senderOf(*a_pA);
    const tPortIdentity senderB = senderOf(*a_pB);
    if (senderA != senderB)
    {
        return senderA > senderB ? kBBetterByTopology : kABetterByTopology;
    }
    if (a_portA != a_portB)
    {
        return a_portA > a_portB ? kBBetterByTopology : kABetterByTopology;
    }
    ORVTARN_SET_CODE(a_status, kStatusInvalidArgument);
    return kError2;
}

tDataSetComparison tDefaultDataSetComparisonAlgorithm::compareWithLocalClock(
    iPTPNode& a_node, const tAnnounceMessage* a_pForeign, u16 a_foreignPort, tStatus& a_status)
{
    if (a_pForeign == nullptr)
    {
        return kABetter;
    }
    const tGrandmasterValues local = grandmasterOf(a_node);
    if (local.m_identity != a_pForeign->getGrandmasterIdentity())
    {
        return compareGrandmasters(local, grandmasterOf(*a_pForeign));
    }

    // The foreign clock relays this very clock as its grandmaster.
    const u16 steps = a_pForeign->getStepsRemoved();
    if (steps > 1)
    {
        return kABetter;
    }
    if (steps == 1)
    {
        return compareNeighbouringPaths(a_node, a_foreignPort, *a_pForeign, kABetter,
                                        kABetterByTopology, a_status);
    }
    return local.m_identity > senderOf(*a_pForeign).getClockIdentity() ? kBBetterByTopology
                                                                       : kABetterByTopology;
}

} // namespace nOrvPTP000
