#pragma once
#include "iTimeReference.h"
#include "orvtarn/quarks/tMutex.h"
#include "tDigitalFilter.h"
#include "tFixedSizeFifo.h"
#include "tLinearRegressionFilter.h"
#include "tSpuriousSpikeFilter.h"
#include "tTimeValue.h"

namespace zelmarPluginCore_1_0
{

// The servo of a time source. Each sample of (master time, local time) either
// steps the host's time reference, when the offset reaches the macro phase
// adjustment threshold, or passes through the spike filter, the digital
// filter and the linear regression into a small change of the reference's
// rate. It also decides whether the source counts as synchronised.
//
// Times on this interface count from 1970-01-01; the reference counts from
// 1904-01-01. Every read of the time leaves a reading (time, tick count)
// behind, in which a later sample finds the tick count of its local time.
//
// All operations lock the timekeeper's mutex, except on a fatal status, when
// the getters read unlocked and the rest do nothing. The reference is called
// under the lock, so it must not call back.
class tTimekeeper
{
public:
    explicit tTimekeeper(nOrvTarn000::tStatus& a_status);

    tTimekeeper(const tTimekeeper&) = delete;
    tTimekeeper& operator=(const tTimekeeper&) = delete;

    // Takes a_pReference (not owned) and starts the filters, the readings and
    // the flags afresh; the gain in force is scaled by the reference's rate.
    void attach(nZelmar::iTimeReference* a_pReference, nOrvTarn000::tStatus& a_status);
    // Lets go of the reference; the filters stay as they are.
    void detach();

    // The reference's time; -52010 and zero without a reference.
    tTimeValue getTime(nOrvTarn000::tStatus& a_status);
    // Moves the reference so that it reads a_rTime; -52010 without one.
    void stepTime(const tTimeValue& a_rTime, nOrvTarn000::tStatus& a_status);
    // One servo sample. -52010 without a reference; -52003 when no reading
    // lies at or after a_rLocal, when the time since the last used sample is
    // not positive, or when the regression finds no slope (the sample then
    // leaves the rate alone).
    void addTimeSample(const tTimeValue& a_rMaster, const tTimeValue& a_rLocal,
                       nOrvTarn000::tStatus& a_status);

    bool isSynchronized(nOrvTarn000::tStatus& a_status);
    // The changed flag; cleared only when a_status holds code 0.
    bool takeSynchronizationChanged(nOrvTarn000::tStatus& a_status);
    // Free-running is the state of a source that is itself the master: it
    // counts as synchronised with offset zero. Samples do not look at it.
    void setFreeRunning(bool a_freeRunning, nOrvTarn000::tStatus& a_status);
    // The latest offset in seconds: filtered after a fine sample, as measured
    // after a step.
    f64 getOffset(nOrvTarn000::tStatus& a_status);

    // The gain takes effect at the next attach.
    f64 getGain(nOrvTarn000::tStatus& a_status);
    void setGain(f64 a_gain, nOrvTarn000::tStatus& a_status);
    // Thresholds in seconds, held in whole nanoseconds (truncated).
    f64 getMacroPhaseAdjustThreshold(nOrvTarn000::tStatus& a_status);
    void setMacroPhaseAdjustThreshold(f64 a_seconds, nOrvTarn000::tStatus& a_status);
    f64 getSynchronizationThreshold(nOrvTarn000::tStatus& a_status);
    void setSynchronizationThreshold(f64 a_seconds, nOrvTarn000::tStatus& a_status);

private:
    struct tReferenceReading
    {
        tTimeValue m_time; // as getTime returned it
        u64 m_ticks = 0;   // the reference's count read straight after
    };

    // False, with -52010 when the reference is missing, unless the status
    // is fatal already.
    bool hasReference(nOrvTarn000::tStatus& a_status);
    tTimeValue readTime();
    void loseSynchronization();
    // The time in nanoseconds from the last used sample to the reading of
    // a_rLocal, which it consumes with every older reading; 0 with -52003.
    i64 takeElapsed(const tTimeValue& a_rLocal, nOrvTarn000::tStatus& a_status);
    // Moves the rate by the regression's prediction of the filtered offset.
    void steerRate(f64 a_filteredOffset, i64 a_elapsed, nOrvTarn000::tStatus& a_status);

    nOrvTarn000::tMutex m_mutex;
    nZelmar::iTimeReference* m_pTimeReference;
    tSpuriousSpikeFilter m_spikeFilter;
    tDigitalFilter m_offsetFilter;
    tLinearRegressionFilter m_regressionFilter;
    f64 m_gain;
    f64 m_rate;
    f64 m_scaledGain;
    f64 m_maximumRateStep;
    u64 m_macroPhaseAdjustThreshold; // ns
    bool m_synchronized;
    bool m_synchronizationChanged;
    i64 m_synchronizationThreshold; // ns
    bool m_freeRunning;
    u64 m_tickFrequency;
    u64 m_lastTicks;
    tTimeValue m_offset;
    tFixedSizeFifo<tReferenceReading> m_readings;
};

} // namespace zelmarPluginCore_1_0
