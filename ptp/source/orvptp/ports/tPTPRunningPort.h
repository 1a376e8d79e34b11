#pragma once
#include "orvptp/iPTPPort.h"
#include "orvptp/tStateDecision.h"

namespace nOrvPTP000
{

// What every state but Stopped shares: a stop returns to Stopped.
class tPTPRunningPort : public iPTPPort
{
public:
    using iPTPPort::iPTPPort;
    iPTPPort* handleStopClock(nOrvTarn000::tStatus& a_status) override;

protected:
    // Back to INITIALIZING through a re-initialisation of the port.
    iPTPPort* reinitialize(nOrvTarn000::tStatus& a_status);
    // The network failed: it is closed and the timers stopped; then tState.
    template <typename tState>
    iPTPPort* failNetwork(nOrvTarn000::tStatus& a_status);
    // All timers stopped, then tState.
    template <typename tState>
    iPTPPort* stopTimersAndEnter(nOrvTarn000::tStatus& a_status);
};

// The states of a port at work (LISTENING, MASTER, PASSIVE, UNCALIBRATED,
// SLAVE) react alike to re-initialisation, faults, network errors and being
// disabled.
class tPTPOperationalPort : public tPTPRunningPort
{
public:
    using tPTPRunningPort::tPTPRunningPort;
    iPTPPort* handleInitialize(nOrvTarn000::tStatus& a_status) override;
    iPTPPort* handleFaultDetected(nOrvTarn000::tStatus& a_status) override;
    iPTPPort* handleNetworkError(nOrvTarn000::tStatus& a_status) override;
    iPTPPort* handleDesignatedDisabled(nOrvTarn000::tStatus& a_status) override;

protected:
    // The constructor step of the states that watch their master's Announce
    // messages: the receipt time-out restarts, then the state is set.
    void watchAnnounces(u8 a_state, nOrvTarn000::tStatus& a_status);
    // A state decision names a master to follow: its data sets are taken,
    // measurement starts anew, and the port calibrates first.
    iPTPPort* followMaster(const tStateDecision& a_decision, nOrvTarn000::tStatus& a_status);
    // To UNCALIBRATED with the master clock selected check armed whatever the
    // external checks say, and the measurement kept.
    iPTPPort* recalibrate(nOrvTarn000::tStatus& a_status);
};

} // namespace nOrvPTP000
