#pragma once
#include "orvptp/tPortStateCodes.h"
#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tStatus.h"

namespace nOrvPTP000
{

class tPTPNode;
class tPortNetworkMaintainer;
class tPortDS;

// The behaviour of the port in one state. The node holds exactly one such
// object and hands each port event to it; the handler returns the object for
// the next state, or this one to stay. State objects hold no data of their
// own: node, maintainer and port data set pass unchanged from one to the next.
// A handler that a state does not override ignores its event.
class iPTPPort
{
public:
    iPTPPort(tPTPNode* a_pNode, tPortNetworkMaintainer* a_pNetworkMaintainer, tPortDS* a_pPortDS)
        : m_pNode(a_pNode), m_pNetworkMaintainer(a_pNetworkMaintainer), m_pPortDS(a_pPortDS)
    {
    }
    virtual ~iPTPPort() {}

    iPTPPort(const iPTPPort&) = delete;
    iPTPPort& operator=(const iPTPPort&) = delete;

    // One of the port state codes: the port data set's portState.
    virtual u8 getState();
    virtual iPTPPort* handleStartClock(nOrvTarn000::tStatus& a_status);
    virtual iPTPPort* handleStopClock(nOrvTarn000::tStatus& a_status);
    virtual iPTPPort* handleInitialize(nOrvTarn000::tStatus& a_status);
    virtual iPTPPort* handleInitializedCheck(nOrvTarn000::tStatus& a_status);
    virtual iPTPPort* handleFaultCleared(nOrvTarn000::tStatus& a_status);
    virtual iPTPPort* handleFaultDetected(nOrvTarn000::tStatus& a_status);
    virtual iPTPPort* handleNetworkError(nOrvTarn000::tStatus& a_status);
    virtual iPTPPort* handleDesignatedEnabled(nOrvTarn000::tStatus& a_status);
    virtual iPTPPort* handleDesignatedDisabled(nOrvTarn000::tStatus& a_status);
    virtual iPTPPort* handleStateDecision(nOrvTarn000::tStatus& a_status);
    virtual iPTPPort* handleAnnounceReceiptTimeout(nOrvTarn000::tStatus& a_status);
    virtual iPTPPort* handleSyncFault(nOrvTarn000::tStatus& a_status);
    virtual iPTPPort* handleMasterClockSelected(nOrvTarn000::tStatus& a_status);

    // Where every change of state ends. A null a_pNext (its allocation failed)
    // or a fatal status keeps the present state: kStatusMemoryFull is offered
    // to the status, a_pNext goes, and this is returned. Otherwise the result
    // is a_pNext, handed to the caller, who owns it from now on.
    iPTPPort* transitionTo(std::unique_ptr<iPTPPort> a_pNext, nOrvTarn000::tStatus& a_status);

protected:
    // Builds the object of the next state, whose constructor is part of the
    // transition, and passes it through transitionTo.
    template <typename tState>
    iPTPPort* enter(nOrvTarn000::tStatus& a_status);

    tPTPNode* m_pNode;
    tPortNetworkMaintainer* m_pNetworkMaintainer;
    tPortDS* m_pPortDS;
};

template <typename tState>
iPTPPort* iPTPPort::enter(nOrvTarn000::tStatus& a_status)
{
    return transitionTo(nOrvTarn000::makeOwned<tState>(a_status, m_pNode, m_pNetworkMaintainer,
                                                       m_pPortDS, a_status),
                        a_status);
}

} // namespace nOrvPTP000
