#include "orvptp/ports/tPTPRunningPort.h"

#include "orvptp/ports/tPTPDisabledPort.h"
#include "orvptp/ports/tPTPFaultyPort.h"
#include "orvptp/ports/tPTPInitializingPort.h"
#include "orvptp/ports/tPTPStoppedPort.h"
#include "orvptp/ports/tPTPUncalibratedPort.h"
#include "orvptp/tNodeEventGenerators.h"
#include "orvptp/tPTPNode.h"

namespace nOrvPTP000
{

using nOrvTarn000::makeOwned;
using nOrvTarn000::tStatus;

iPTPPort* tPTPRunningPort::handleStopClock(tStatus& a_status)
{
    return enter<tPTPStoppedPort>(a_status);
}

iPTPPort* tPTPRunningPort::reinitialize(tStatus& a_status)
{
    m_pNode->reinitializePort(a_status);
    return enter<tPTPInitializingPort>(a_status);
}

template <typename tState>
iPTPPort* tPTPRunningPort::failNetwork(tStatus& a_status)
{
    m_pNode->handleNetworkFailure(a_status);
    return enter<tState>(a_status);
}

template <typename tState>
iPTPPort* tPTPRunningPort::stopTimersAndEnter(tStatus& a_status)
{
    m_pNode->stopPortTimers(a_status);
    return enter<tState>(a_status);
}

template iPTPPort* tPTPRunningPort::failNetwork<tPTPFaultyPort>(tStatus&);
template iPTPPort* tPTPRunningPort::stopTimersAndEnter<tPTPDisabledPort>(tStatus&);

iPTPPort* tPTPOperationalPort::handleInitialize(tStatus& a_status)
{
    return reinitialize(a_status);
}

iPTPPort* tPTPOperationalPort::handleFaultDetected(tStatus& a_status)
{
    return stopTimersAndEnter<tPTPFaultyPort>(a_status);
}

iPTPPort* tPTPOperationalPort::handleNetworkError(tStatus& a_status)
{
    return failNetwork<tPTPFaultyPort>(a_status);
}

iPTPPort* tPTPOperationalPort::handleDesignatedDisabled(tStatus& a_status)
{
    return stopTimersAndEnter<tPTPDisabledPort>(a_status);
}

void tPTPOperationalPort::watchAnnounces(u8 a_state, tStatus& a_status)
{
    m_pNode->restartAnnounceReceiptTimeout(a_status);
    m_pPortDS->setPortState(a_state, a_status);
}

iPTPPort* tPTPOperationalPort::followMaster(const tStateDecision& a_decision, tStatus& a_status)
{
    m_pNode->applyStateDecision(a_decision.m_updateCode, a_decision.m_pMessage, a_status);
    m_pNode->prepareSlaveEntry(a_status);
    return enter<tPTPUncalibratedPort>(a_status);
}

iPTPPort* tPTPOperationalPort::recalibrate(tStatus& a_status)
{
    std::unique_ptr<iPTPEventGenerator> pCheck =
        makeOwned<tMasterClockSelectedCheckEventGenerator>(a_status, m_pNode);
    if (pCheck == nullptr)
    {
        return this;
    }
    const u32 id =
        m_pNode->schedulePeriodic(std::move(pCheck), 0, tPTPNode::kCheckPeriodMs, a_status);
    m_pPortDS->setTimerId(tPortDS::kMasterClockSelectedTimer, id, a_status);
    return enter<tPTPUncalibratedPort>(a_status);
}

} // namespace nOrvPTP000
