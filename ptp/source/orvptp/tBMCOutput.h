#pragma once
#include "orvptp/tPortIdentity.h"
#include "orvptp/tStateDecision.h"
#include "orvtarn/protons/status/tStatus.h"

#include <memory>

namespace nOrvPTP000
{

// The decisions of the last best master run, one per port, for the port
// states to read. An entry never outlives its message: whoever deletes a
// foreign master's Announce first resets or redirects the entries that hold it.
class tBMCOutput
{
public:
    // 0 ports is refused with kStatusInvalidArgument and leaves no entries.
    tBMCOutput(u16 a_numberPorts, nOrvTarn000::tStatus& a_status);

    tBMCOutput(const tBMCOutput&) = delete;
    tBMCOutput& operator=(const tBMCOutput&) = delete;

    u16 getNumberPorts() const { return m_numberPorts; }

    // Port numbers count from 1; 0 or one beyond the ports is refused with
    // kStatusInvalidArgument. A fatal status gives the no-recommendation entry.
    tStateDecision getDecision(u16 a_portNumber, nOrvTarn000::tStatus& a_status) const;
    void setDecision(u16 a_portNumber, const tStateDecision& a_decision,
                     nOrvTarn000::tStatus& a_status);

    // A newer Announce of the sender of the first port's message takes that
    // message's place; to be called before the foreign master record frees the
    // older one.
    void replaceMessage(const tAnnounceMessage* a_pNew, nOrvTarn000::tStatus& a_status);

    // Back to no recommendation: one port, every port, every port whose message
    // is a_pMessage, every port whose message came from a_sender.
    void resetDecision(u16 a_portNumber, nOrvTarn000::tStatus& a_status);
    void resetAll();
    void resetHolding(const tAnnounceMessage* a_pMessage);
    void resetFrom(const tPortIdentity& a_sender);

private:
    bool isPort(u16 a_portNumber, nOrvTarn000::tStatus& a_status) const;

    u16 m_numberPorts;
    std::unique_ptr<tStateDecision[]> m_pDecisions;
};

} // namespace nOrvPTP000
