#pragma once
#include "orvtarn/quarks/tTypes.h"

#include <vector>

namespace nZelmar
{

// The servo in simulated time: a timekeeper steers a software time reference
// on a simulated counter towards a perfect master, one sample a second. Each
// sample's master time carries Gaussian noise from a seeded generator, so a
// run comes out the same every time.
struct tServoScenario
{
    f64 m_initialOffset;  // seconds, master minus reference at the start
    f64 m_frequencyError; // relative error of the reference's counter
    f64 m_noise;          // seconds, standard deviation of each sample
    u32 m_samples;
    u64 m_seed;
};

struct tServoRun
{
    // Per sample: the true offset (master minus reference, seconds) just
    // before the sample, and whether the timekeeper counts as synchronised
    // after it.
    std::vector<f64> m_errors;
    std::vector<bool> m_synchronized;
    // Samples that came back with a fatal code, and the first code.
    u32 m_failedSamples;
    i32 m_firstFailure;
};

tServoRun simulateServo(const tServoScenario& a_scenario);

// The number of samples after which a condition holds to the end of the run;
// the run's length plus 1 when it does not hold at its end.
u32 samplesUntilSynchronized(const tServoRun& a_run);
u32 samplesUntilWithin(const tServoRun& a_run, f64 a_bound);
// The a_fraction quantile of the absolute errors over the second half of the run.
f64 steadyStateQuantile(const tServoRun& a_run, f64 a_fraction);

} // namespace nZelmar
