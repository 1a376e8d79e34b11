#pragma once
// A stand-in for the PTP node in tests and benchmarks: the node's own data
// sets and typed accessors (tNodeDataSets), without its threads. A test sets
// the clock up with put<ID>(value), as a set by id would, and reads back what
// the code under test wrote. Handlers, posting, properties by id and time do
// nothing; the foreign master table is whatever m_pForeignMasterDS points at.
#include "orvptp/tLogInterval.h"
#include "orvptp/tNodeDataSets.h"
#include "orvptp/tNodeProperty.h"
#include "orvptp/tPortStateCodes.h"
#include "orvtarn/protons/status/tTrace.h"

namespace nFakeNode
{

using nOrvPTP000::tClockIdentity;
using nOrvTarn000::tStatus;

class tFakeNode : public nOrvPTP000::tNodeDataSets
{
public:
    explicit tFakeNode(const tClockIdentity& a_clockIdentity = tClockIdentity())
        : tNodeDataSets(a_clockIdentity, m_constructionStatus)
    {
        put<nOrvPTP000::PORT_STATE>(nOrvPTP000::kPortStateListening);
    }

    template <i32 kId>
    void put(const typename nOrvPTP000::tNodeProperty<kId>::tValue& a_value)
    {
        tStatus putStatus;
        nOrvPTP000::tNodeProperty<kId>::set(*this, 1, a_value, putStatus);
    }

    u32 getAnnounceIntervalMs() override
    {
        return nOrvPTP000::logIntervalToMilliseconds(m_portDS.getLogAnnounceInterval());
    }
    u32 getSyncIntervalMs() override
    {
        return nOrvPTP000::logIntervalToMilliseconds(m_portDS.getLogSyncInterval());
    }
    nOrvPTP000::tForeignMasterDS* getForeignMasterDS(u16) override { return m_pForeignMasterDS; }
    nOrvPTP000::tPTPDispatcher* getDispatcher() override { return nullptr; }
    nOrvPTP000::tTimedEventGenerator* getTimedEventGenerator() override { return nullptr; }
    void getCurrentTime(nOrvPTP000::tTimestamp&, tStatus&) override {}
    void setCurrentTime(const nOrvPTP000::tTimestamp&, tStatus&, i32) override {}
    void handlePacketReceived(std::unique_ptr<nOrvPTP000::tProtocolDataUnit>, tStatus&) override {}
    void handleStateDecisionEvent(tStatus&) override {}
    void handleInitialAnnounceTimeout(tStatus&) override {}
    void handleSendAnnouncePacket(tStatus&) override {}
    void handleSendSyncPacket(tStatus&) override {}
    void handleDelayRequestTimer(tStatus&) override {}
    void handleMasterClockSelectedCheck(tStatus&) override {}
    void handleStartClock(nOrvTarn000::tEvent*, tStatus*) override {}
    void handleStopClock(nOrvTarn000::tEvent*, tStatus*) override {}
    void handleInitializedCheck(tStatus&) override {}
    void handleDesignatedDisabled(u16, tStatus&) override {}
    void handleInitializePort(u16, tStatus&) override {}
    void handleSyncFault(tStatus&) override {}
    void handleFaultCleared(tStatus&) override {}
    void handleFaultDetected(tStatus&) override {}
    void handleDesignatedEnabled(u16, tStatus&) override {}
    void handleNetworkError(tStatus&) override {}
    void handleNetworkRecovery(tStatus&) override {}
    void getProperty(i32, void**, u16, nOrvTarn000::tEvent*, tStatus*) override {}
    void setProperty(i32, void**, u16, nOrvTarn000::tEvent*, tStatus*) override {}
    void notifyPortStateChange(i32, i32) override {}
    bool designatePortDisabled(tStatus&) override { return false; }
    bool designatePortEnabled(tStatus&) override { return false; }
    bool signalFaultDetected(tStatus&) override { return false; }
    bool signalFaultCleared(tStatus&) override { return false; }
    bool signalSyncFault(tStatus&) override { return false; }
    bool initializePort(tStatus&) override { return false; }
    void handleForeignMasterAnnounceTimeout(const nOrvPTP000::tPortIdentity&, tStatus&) override {}
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override
    {
        return a_trace.write("tFakeNode");
    }

    nOrvPTP000::tForeignMasterDS* m_pForeignMasterDS = nullptr;

protected:
    void propertyWritten(i32, tStatus&, i32) override {}

private:
    tStatus m_constructionStatus;
};

} // namespace nFakeNode
