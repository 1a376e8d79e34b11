#include "tServoSimulation.h"

#include "tSimulatedTickSource.h"
#include "tSoftwareTimeReference.h"
#include "tTimekeeper.h"

#include <algorithm>
#include <cmath>
#include <random>

using nOrvTarn000::tStatus;
using zelmarPluginCore_1_0::tTimekeeper;
using zelmarPluginCore_1_0::tTimeValue;

namespace nZelmar
{
namespace
{

const u64 kTickFrequency = 10000000u;
const u64 kSampleInterval = 1000000000u;

// The first sample index from which a_holds is true to the end.
template <typename tPredicate>
u32 samplesUntil(u32 a_count, tPredicate a_holds)
{
    u32 first = a_count;
    while (first > 0 && a_holds(first - 1))
    {
        --first;
    }
    return first == a_count ? a_count + 1 : first + 1;
}

} // namespace

tServoRun simulateServo(const tServoScenario& a_scenario)
{
    tServoRun run{{}, {}, 0, 0};
    tStatus setupStatus;
    tSimulatedTickSource ticks(kTickFrequency, a_scenario.m_frequencyError);
    tSoftwareTimeReference reference(ticks, 0, setupStatus);
    tTimekeeper timekeeper(setupStatus);
    timekeeper.attach(&reference, setupStatus);
    const tTimeValue masterStart =
        timekeeper.getTime(setupStatus) + tTimeValue(a_scenario.m_initialOffset);
    if (setupStatus.isFatal())
    {
        run.m_failedSamples = a_scenario.m_samples;
        run.m_firstFailure = setupStatus.getCode();
        return run;
    }

    std::mt19937_64 random(a_scenario.m_seed);
    std::normal_distribution<f64> noise(0.0, a_scenario.m_noise * 1e9);
    for (u32 sample = 0; sample < a_scenario.m_samples; ++sample)
    {
        ticks.advance(kSampleInterval);
        tStatus sampleStatus;
        const tTimeValue master = masterStart + tTimeValue(static_cast<i64>(ticks.getElapsed()));
        const tTimeValue local = timekeeper.getTime(sampleStatus);
        const i64 measurementError = std::llround(noise(random));
        timekeeper.addTimeSample(master + tTimeValue(measurementError), local, sampleStatus);
        run.m_errors.push_back((master - local).toSeconds());
        run.m_synchronized.push_back(timekeeper.isSynchronized(sampleStatus));
        if (sampleStatus.isFatal() && run.m_failedSamples++ == 0)
        {
            run.m_firstFailure = sampleStatus.getCode();
        }
    }
    return run;
}

u32 samplesUntilSynchronized(const tServoRun& a_run)
{
    return samplesUntil(static_cast<u32>(a_run.m_synchronized.size()),
                        [&](u32 a_index) { return a_run.m_synchronized[a_index]; });
}

u32 samplesUntilWithin(const tServoRun& a_run, f64 a_bound)
{
    return samplesUntil(static_cast<u32>(a_run.m_errors.size()),
                        [&](u32 a_index) { return std::fabs(a_run.m_errors[a_index]) < a_bound; });
}

f64 steadyStateQuantile(const tServoRun& a_run, f64 a_fraction)
{
    std::vector<f64> errors(a_run.m_errors.begin() + a_run.m_errors.size() / 2,
                            a_run.m_errors.end());
    if (errors.empty())
    {
        return 0.0;
    }
    for (f64& error : errors)
    {
        error = std::fabs(error);
    }
    const std::size_t index = std::min(
        errors.size() - 1, static_cast<std::size_t>(a_fraction * static_cast<f64>(errors.size())));
    std::nth_element(errors.begin(), errors.begin() + index, errors.end());
    return errors[index];
}

} // namespace nZelmar
