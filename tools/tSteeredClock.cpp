#include "tSteeredClock.h"

#include "orvptp/tPortStateCodes.h"
#include "tSystemClocks.h"
#include "tTimeConversion.h"

#include <cmath>

using nOrvPTP000::tTimestamp;
using nOrvTarn000::tStatus;
using nZelmarPtpPlugin_1_0::toTimestamp;
using nZelmarPtpPlugin_1_0::toTimeValue;

namespace nZmptpTool
{
namespace
{

const u64 kUnixEpochInReferenceNs = nZelmar::kReferenceEpochToUnixEpochSeconds * 1000000000u;
const f64 kTenMicroseconds = 10e-6;

} // namespace

tSteeredClock::tSteeredClock(i64 a_offsetNs, f64 a_ppm, tStatus& a_status)
    : m_ticks(a_status), m_reference(m_ticks, a_offsetNs, a_status), m_timekeeper(a_status),
      m_startNs(0), m_run{{}, {}, 0, 0}
{
    if (a_status.isNotFatal() && !nZelmar::nSystemClocks::readRawMonotonic(m_startNs))
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusSystemError);
    }
    // Fewer ticks to the reference's second make it run faster. The
    // timekeeper takes the rate in force at attach as its starting point.
    m_reference.setRate(m_reference.getNominalRate() / (1.0 + a_ppm * 1e-6));
    m_timekeeper.attach(&m_reference, a_status);
}

tTimestamp tSteeredClock::getTime(tStatus& a_status)
{
    return toTimestamp(m_timekeeper.getTime(a_status));
}

void tSteeredClock::stepTime(const tTimestamp& a_rTime, tStatus& a_status)
{
    m_timekeeper.stepTime(toTimeValue(a_rTime), a_status);
}

void tSteeredClock::addSample(const tTimestamp& a_rMaster, const tTimestamp& a_rLocal,
                              tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    tStatus measureStatus;
    const i64 error = measureError(measureStatus);
    m_timekeeper.addTimeSample(toTimeValue(a_rMaster), toTimeValue(a_rLocal), a_status);
    const bool synchronized = m_timekeeper.isSynchronized(measureStatus);
    const f64 seconds = secondsSinceStart();
    if (measureStatus.isFatal())
    {
        return; // no true error to record (the trace says why)
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    m_run.m_errors.push_back(static_cast<f64>(-error) * 1e-9);
    m_run.m_synchronized.push_back(synchronized);
    m_sampleSeconds.push_back(seconds);
    if (a_status.isFatal() && m_run.m_failedSamples++ == 0)
    {
        m_run.m_firstFailure = a_status.getCode();
    }
}

void tSteeredClock::portStateChanged(i32 a_newState, i32)
{
    tStatus status;
    if (a_newState == nOrvPTP000::kPortStateMaster || a_newState == nOrvPTP000::kPortStatePassive)
    {
        m_timekeeper.setFreeRunning(true, status);
    }
    else if (a_newState == nOrvPTP000::kPortStateSlave)
    {
        m_timekeeper.setFreeRunning(false, status);
    }
}

tSteeredClock::tState tSteeredClock::readState(tStatus& a_status)
{
    tState state;
    state.m_seconds = secondsSinceStart();
    state.m_errorNs = measureError(a_status);
    state.m_ratePpm = (m_reference.getNominalRate() / m_reference.getRate() - 1.0) * 1e6;
    state.m_offsetNs = std::llround(m_timekeeper.getOffset(a_status) * 1e9);
    state.m_synchronized = m_timekeeper.isSynchronized(a_status);
    std::lock_guard<std::mutex> lock(m_mutex);
    state.m_samples = static_cast<u32>(m_run.m_errors.size());
    return state;
}

tSteeredClock::tSummary tSteeredClock::summarize()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    // The time of the sample from which a condition holds, or -1.
    const auto secondsAt = [this](u32 a_samples)
    { return a_samples <= m_sampleSeconds.size() ? m_sampleSeconds[a_samples - 1] : -1.0; };
    tSummary summary;
    summary.m_samples = static_cast<u32>(m_run.m_errors.size());
    summary.m_failedSamples = m_run.m_failedSamples;
    summary.m_firstFailure = m_run.m_firstFailure;
    summary.m_samplesUntilSynchronized = nZelmar::samplesUntilSynchronized(m_run);
    summary.m_secondsUntilSynchronized = secondsAt(summary.m_samplesUntilSynchronized);
    summary.m_samplesUntilWithin10us = nZelmar::samplesUntilWithin(m_run, kTenMicroseconds);
    summary.m_secondsUntilWithin10us = secondsAt(summary.m_samplesUntilWithin10us);
    summary.m_medianAbsError = nZelmar::steadyStateQuantile(m_run, 0.5);
    summary.m_p95AbsError = nZelmar::steadyStateQuantile(m_run, 0.95);
    summary.m_maxAbsError = nZelmar::steadyStateQuantile(m_run, 1.0);
    return summary;
}

f64 tSteeredClock::secondsSinceStart()
{
    u64 now = m_startNs;
    nZelmar::nSystemClocks::readRawMonotonic(now);
    return static_cast<f64>(now - m_startNs) * 1e-9;
}

i64 tSteeredClock::measureError(tStatus& a_status)
{
    u64 before = 0;
    u64 after = 0;
    u64 reference = 0;
    const bool readBefore = nZelmar::nSystemClocks::readUtc(before);
    m_reference.getReferenceTime(reference);
    if (!readBefore || !nZelmar::nSystemClocks::readUtc(after))
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusSystemError);
        return 0;
    }
    return static_cast<i64>(reference - kUnixEpochInReferenceNs - (before + (after - before) / 2));
}

} // namespace nZmptpTool
