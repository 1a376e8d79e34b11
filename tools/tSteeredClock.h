#pragma once
#include "orvptp/iPortStateObserver.h"
#include "orvptp/tTimestamp.h"
#include "tMonotonicRawTickSource.h"
#include "tServoSimulation.h"
#include "tSoftwareTimeReference.h"
#include "tTimekeeper.h"

#include <mutex>
#include <vector>

namespace nZmptpTool
{

// A software time reference on the system's raw monotonic clock, started off
// the system clock by a chosen offset and frequency error, and steered by a
// tTimekeeper from the node's samples, as the plug-in steers the host's
// reference. Every time that the clock's user reads goes through the
// timekeeper, so that a sample finds the reading of its local time.
//
// It keeps the true error of the reference at every sample: the system
// clock's time minus the reference's, which is the error from the master
// when the master reads the same system clock.
class tSteeredClock : public nOrvPTP000::iPortStateObserver
{
public:
    // The present state, for a report line.
    struct tState
    {
        f64 m_seconds;       // since construction
        i64 m_errorNs;       // the reference's time minus the system clock's
        f64 m_ratePpm;       // how much faster the reference runs than its counter
        i64 m_offsetNs;      // the timekeeper's offset (filtered after a fine sample)
        bool m_synchronized; // the timekeeper's flag
        u32 m_samples;
    };

    // The run so far. The "until" counts are those of tServoSimulation.h
    // (the run's length plus 1 when the condition does not hold at its end);
    // the seconds go with them, negative when it does not hold. The errors
    // are absolute, over the second half of the samples.
    struct tSummary
    {
        u32 m_samples;
        u32 m_failedSamples;
        i32 m_firstFailure;
        u32 m_samplesUntilSynchronized;
        f64 m_secondsUntilSynchronized;
        u32 m_samplesUntilWithin10us;
        f64 m_secondsUntilWithin10us;
        f64 m_medianAbsError; // seconds
        f64 m_p95AbsError;
        f64 m_maxAbsError;
    };

    // The reference starts a_offsetNs ahead of the system clock and runs
    // a_ppm parts per million fast until the timekeeper steers it. -52008 when
    // a system clock cannot be read.
    tSteeredClock(i64 a_offsetNs, f64 a_ppm, nOrvTarn000::tStatus& a_status);

    // What the node's timekeeper does, in the PTP stack's timestamps.
    nOrvPTP000::tTimestamp getTime(nOrvTarn000::tStatus& a_status);
    void stepTime(const nOrvPTP000::tTimestamp& a_rTime, nOrvTarn000::tStatus& a_status);
    void addSample(const nOrvPTP000::tTimestamp& a_rMaster, const nOrvPTP000::tTimestamp& a_rLocal,
                   nOrvTarn000::tStatus& a_status);

    // A master or passive clock runs free, as the plug-in sets it; a slave is
    // steered.
    void portStateChanged(i32 a_newState, i32 a_oldState) override;

    tState readState(nOrvTarn000::tStatus& a_status);
    tSummary summarize();

private:
    f64 secondsSinceStart();
    // The reference's time minus the system clock's, read around it.
    i64 measureError(nOrvTarn000::tStatus& a_status);

    nZelmar::tMonotonicRawTickSource m_ticks;
    nZelmar::tSoftwareTimeReference m_reference;
    zelmarPluginCore_1_0::tTimekeeper m_timekeeper;
    u64 m_startNs; // raw monotonic
    std::mutex m_mutex;
    // Guarded by m_mutex: per sample, the true error (master minus reference,
    // just before the sample), the flag after it, and its time.
    nZelmar::tServoRun m_run;
    std::vector<f64> m_sampleSeconds;
};

} // namespace nZmptpTool
