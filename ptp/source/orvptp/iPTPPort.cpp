#include "orvptp/iPTPPort.h"

#include "orvptp/tPortDS.h"

using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

u8 iPTPPort::getState()
{
    return m_pPortDS->getPortState();
}

iPTPPort* iPTPPort::handleStartClock(tStatus&)
{
    return this;
}

iPTPPort* iPTPPort::handleStopClock(tStatus&)
{
    return this;
}

iPTPPort* iPTPPort::handleInitialize(tStatus&)
{
    return this;
}

iPTPPort* iPTPPort::handleInitializedCheck(tStatus&)
{
    return this;
}

iPTPPort* iPTPPort::handleFaultCleared(tStatus&)
{
    return this;
}

iPTPPort* iPTPPort::handleFaultDetected(tStatus&)
{
    return this;
}

iPTPPort* iPTPPort::handleNetworkError(tStatus&)
{
    return this;
}

iPTPPort* iPTPPort::handleDesignatedEnabled(tStatus&)
{
    return this;
}

iPTPPort* iPTPPort::handleDesignatedDisabled(tStatus&)
{
    return this;
}

iPTPPort* iPTPPort::handleStateDecision(tStatus&)
{
    return this;
}

iPTPPort* iPTPPort::handleAnnounceReceiptTimeout(tStatus&)
{
    return this;
}

iPTPPort* iPTPPort::handleSyncFault(tStatus&)
{
    return this;
}

iPTPPort* iPTPPort::handleMasterClockSelected(tStatus&)
{
    return this;
}

iPTPPort* iPTPPort::transitionTo(std::unique_ptr<iPTPPort> a_pNext, tStatus& a_status)
{
    if (a_pNext != nullptr && a_status.isNotFatal())
    {
        return a_pNext.release();
    }
    // Offered only: an earlier code stays and this one is dropped.
    ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusMemoryFull);
    return this;
}

} // namespace nOrvPTP000
