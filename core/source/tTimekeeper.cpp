#include "tTimekeeper.h"

#include "orvtarn/quarks/tMutexGuard.h"

#include <cmath>
#include <limits>

using nOrvTarn000::tMutexGuard;
using nOrvTarn000::tStatus;

namespace zelmarPluginCore_1_0
{
namespace
{

const tTimeValue
    kTimeReferenceEpochOffset(static_cast<u32>(nZelmar::kReferenceEpochToUnixEpochSeconds), 0u, 1);

const u32 kReadingCapacity = 100;
const u32 kSpikeHistorySize = 60;
const u32 kRegressionHistorySize = 6;
const f64 kRelativeMaximumRateStep = 0.001;
// The regression line is read this many mean sample intervals beyond the
// newest sample.
const f64 kPredictionIntervals = 28.0;
const f64 kNanosecondsPerSecond = 1e9;

// Truncates towards zero; values beyond the range are held at its ends, and
// NaN gives 0.
i64 truncateToI64(f64 a_value)
{
    const f64 kLimit = 9223372036854775808.0; // 2^63
    if (std::isnan(a_value))
    {
        return 0;
    }
    if (a_value >= kLimit)
    {
        return std::numeric_limits<i64>::max();
    }
    if (a_value <= -kLimit)
    {
        return std::numeric_limits<i64>::min();
    }
    return static_cast<i64>(a_value);
}

i64 toWholeNanoseconds(f64 a_seconds)
{
    return truncateToI64(a_seconds * kNanosecondsPerSecond);
}

f64 toSeconds(i64 a_nanoseconds)
{
    return static_cast<f64>(a_nanoseconds) / kNanosecondsPerSecond;
}

} // namespace

tTimekeeper::tTimekeeper(tStatus& a_status)
    : m_mutex(a_status), m_pTimeReference(nullptr), m_spikeFilter(), m_offsetFilter(),
      m_regressionFilter(), m_gain(0.001), m_rate(0.0), m_scaledGain(0.0), m_maximumRateStep(0.0),
      m_macroPhaseAdjustThreshold(100000000u), m_synchronized(false),
      m_synchronizationChanged(false), m_synchronizationThreshold(1000000), m_freeRunning(false),
      m_tickFrequency(0), m_lastTicks(0), m_offset(), m_readings(kReadingCapacity, a_status)
{
}

void tTimekeeper::attach(nZelmar::iTimeReference* a_pReference, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    m_pTimeReference = a_pReference;
    m_spikeFilter.setHistorySize(kSpikeHistorySize, a_status);
    m_spikeFilter.reset(a_status);
    const tDigitalFilter::tCoefficients feedback{0.5, 0.0};
    const tDigitalFilter::tCoefficients feedForward{1.0, 1.0, 0.0};
    if (CHECK_ALLOCATION(feedback, a_status) && CHECK_ALLOCATION(feedForward, a_status))
    {
        m_offsetFilter.setCoefficients(feedback, feedForward, a_status);
    }
    m_offsetFilter.setGain(1.0, a_status);
    m_offsetFilter.reset(a_status);
    m_regressionFilter.setHistorySize(kRegressionHistorySize, a_status);
    m_regressionFilter.reset(a_status);
    if (m_pTimeReference != nullptr)
    {
        m_rate = m_pTimeReference->getRate();
        m_scaledGain = m_rate * m_gain * 1e-9;
        m_maximumRateStep = m_rate * kRelativeMaximumRateStep;
        m_tickFrequency = m_pTimeReference->getTickFrequency();
    }
    // m_lastTicks stays: the first fine sample counts from the last one of
    // an earlier attach, or from tick 0.
    m_offset = tTimeValue();
    m_readings.clear();
    m_synchronized = false;
    m_synchronizationChanged = false;
    m_freeRunning = false;
}

void tTimekeeper::detach()
{
    tStatus detachStatus;
    tMutexGuard guard(m_mutex, detachStatus);
    m_pTimeReference = nullptr;
    loseSynchronization();
}

tTimeValue tTimekeeper::getTime(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (!hasReference(a_status))
    {
        return tTimeValue();
    }
    const tTimeValue time = readTime();
    tReferenceReading reading;
    reading.m_time = time;
    m_pTimeReference->getReferenceTicks(reading.m_ticks);
    if (m_readings.getCount() == m_readings.getCapacity())
    {
        m_readings.drop(1);
    }
    m_readings.push(reading, a_status);
    return time;
}

void tTimekeeper::stepTime(const tTimeValue& a_rTime, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (hasReference(a_status))
    {
        const i64 step = (a_rTime - readTime()).getSignedNanoseconds();
        m_pTimeReference->adjustTime(step);
    }
}

void tTimekeeper::addTimeSample(const tTimeValue& a_rMaster, const tTimeValue& a_rLocal,
                                tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (!hasReference(a_status))
    {
        return;
    }
    const tTimeValue offset = a_rMaster - a_rLocal;
    if (offset.getMagnitude() >= m_macroPhaseAdjustThreshold)
    {
        // Macro phase adjustment: the filters, the readings and the last
        // used tick count stay as they are.
        const i64 step = offset.getSignedNanoseconds();
        m_pTimeReference->adjustTime(step);
        m_offset = offset;
        loseSynchronization();
        return;
    }
    const i64 elapsed = takeElapsed(a_rLocal, a_status);
    const f64 limited =
        m_spikeFilter.filter(static_cast<f64>(offset.getSignedNanoseconds()), a_status);
    const f64 filtered = m_offsetFilter.filter(limited, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    m_offset = tTimeValue(filtered * 1e-9);
    steerRate(filtered, elapsed, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    if (std::fabs(filtered) <= static_cast<f64>(m_synchronizationThreshold))
    {
        m_synchronized = true;
    }
    else
    {
        loseSynchronization();
    }
}

i64 tTimekeeper::takeElapsed(const tTimeValue& a_rLocal, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return 0;
    }
    tReferenceReading reading;
    do
    {
        if (m_readings.getCount() == 0)
        {
            ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInternalError);
            return 0;
        }
        reading = m_readings.pop(a_status);
    } while (reading.m_time < a_rLocal);

    // Wrapping arithmetic, as the counter itself wraps. A reference without
    // a tick frequency gives no elapsed time, and its samples are refused.
    const u64 scaled = (reading.m_ticks - m_lastTicks) * 1000000000u;
    const u64 elapsed = m_tickFrequency == 0 ? 0 : scaled / m_tickFrequency;
    m_lastTicks = reading.m_ticks;
    if (static_cast<i64>(elapsed) <= 0)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInternalError);
        return 0;
    }
    return static_cast<i64>(elapsed);
}

void tTimekeeper::steerRate(f64 a_filteredOffset, i64 a_elapsed, tStatus& a_status)
{
    f64 slope = 0.0;
    f64 intercept = 0.0;
    f64 meanInterval = 0.0;
    i64 span = 0;
    m_regressionFilter.addSample(truncateToI64(a_filteredOffset), a_elapsed, slope, intercept,
                                 meanInterval, span, a_status);
    // A regression without a slope (-52003) ends the sample here: its offset
    // has passed the filters and stands in m_offset, but the rate and the
    // flags stay, so that no quotient by zero reaches the reference.
    if (a_status.isFatal())
    {
        return;
    }
    const f64 predicted =
        (meanInterval * kPredictionIntervals + static_cast<f64>(span)) * slope + intercept;
    f64 step = -(predicted * m_scaledGain) / (meanInterval * 1e-9);
    if (std::fabs(step) > m_maximumRateStep)
    {
        step = step < 0.0 ? -m_maximumRateStep : m_maximumRateStep;
    }
    m_pTimeReference->setRate(step + m_rate);
    m_rate = m_pTimeReference->getRate();
}

bool tTimekeeper::isSynchronized(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    return m_synchronized;
}

bool tTimekeeper::takeSynchronizationChanged(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    const bool changed = m_synchronizationChanged;
    if (a_status.getCode() == 0)
    {
        m_synchronizationChanged = false;
    }
    return changed;
}

void tTimekeeper::setFreeRunning(bool a_freeRunning, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isFatal() || a_freeRunning == m_freeRunning)
    {
        return;
    }
    if (m_synchronized)
    {
        m_synchronizationChanged = true;
    }
    m_freeRunning = a_freeRunning;
    m_synchronized = a_freeRunning;
    if (a_freeRunning)
    {
        m_offset = tTimeValue();
    }
}

f64 tTimekeeper::getOffset(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    return m_offset.toSeconds();
}

f64 tTimekeeper::getGain(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    return m_gain;
}

void tTimekeeper::setGain(f64 a_gain, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isNotFatal())
    {
        m_gain = a_gain;
    }
}

f64 tTimekeeper::getMacroPhaseAdjustThreshold(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    return toSeconds(static_cast<i64>(m_macroPhaseAdjustThreshold));
}

void tTimekeeper::setMacroPhaseAdjustThreshold(f64 a_seconds, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isNotFatal())
    {
        // A negative threshold is no threshold: every sample steps.
        const i64 threshold = toWholeNanoseconds(a_seconds);
        m_macroPhaseAdjustThreshold = threshold < 0 ? 0 : static_cast<u64>(threshold);
    }
}

f64 tTimekeeper::getSynchronizationThreshold(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    return toSeconds(m_synchronizationThreshold);
}

void tTimekeeper::setSynchronizationThreshold(f64 a_seconds, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isNotFatal())
    {
        m_synchronizationThreshold = toWholeNanoseconds(a_seconds);
    }
}

bool tTimekeeper::hasReference(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return false;
    }
    if (m_pTimeReference == nullptr)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidState);
        return false;
    }
    return true;
}

tTimeValue tTimekeeper::readTime()
{
    u64 nanoseconds = 0;
    m_pTimeReference->getReferenceTime(nanoseconds);
    return tTimeValue(static_cast<i64>(nanoseconds)) - kTimeReferenceEpochOffset;
}

void tTimekeeper::loseSynchronization()
{
    if (m_synchronized)
    {
        m_synchronized = false;
        m_synchronizationChanged = true;
    }
}

} // namespace zelmarPluginCore_1_0
