#pragma once
#include "orvtarn/quarks/tTypes.h"

namespace nOrvPTP000
{

class tAnnounceMessage;

// The state that the best master selection recommends for a port.
enum tDecisionCode : i32
{
    kDecisionMaster = 0,
    kDecisionSlave = 1,
    kDecisionPassive = 2,
    // No recommendation: the port stays in LISTENING.
    kDecisionListening = 3
};

// The data-set update that goes with a decision, by the names of the state
// decision algorithm of IEEE 1588-2008.
enum tUpdateCode : i32
{
    // The local clock is grandmaster: M1 by its class, M2 by the comparison.
    kUpdateM1 = 0,
    kUpdateM2 = 1,
    // Master towards a better clock seen on another port.
    kUpdateM3 = 2,
    // The sender of Erbest becomes the parent.
    kUpdateS1 = 3,
    kUpdateP1 = 4,
    kUpdateP2 = 5
};

// One port's decision. The message is the Announce that the update reads
// (Erbest for S1, P1 and P2, Ebest for M3, none for M1 and M2); it belongs to
// a foreign master record and is not owned here.
struct tStateDecision
{
    tStateDecision() : m_decision(kDecisionListening), m_updateCode(kUpdateM1), m_pMessage(nullptr)
    {
    }
    tStateDecision(tDecisionCode a_decision, tUpdateCode a_updateCode,
                   const tAnnounceMessage* a_pMessage)
        : m_decision(a_decision), m_updateCode(a_updateCode), m_pMessage(a_pMessage)
    {
    }

    tDecisionCode m_decision;
    tUpdateCode m_updateCode;
    const tAnnounceMessage* m_pMessage;
};

} // namespace nOrvPTP000
