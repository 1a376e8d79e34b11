// The servo in simulated time, and the cost of one sample.
//
// 1. A table of the timekeeper steering a software time reference on a
//    simulated counter towards a perfect master, one sample a second, from
//    an offset of 50 ms, for counter frequency errors of 0, 10 and 100 ppm and
//    Gaussian sample noise of 0, 1, 10 and 50 us (standard deviation): the
//    samples until the source stays synchronised, until the true error stays
//    below 10 us, and the 95th percentile of the true error over the second
//    half of the run.
// 2. The cost of addTimeSample once warm, and the allocations it makes. The
//    allocations are counted at malloc, which this program wraps at link time
//    (-Wl,--wrap=malloc): every allocation of the project's code ends there,
//    through the allocation wrappers, the containers' allocator and the
//    global operator new alike, and the project already defines the global
//    operator new itself, so a counting one could not be added beside it.
#include "tServoSimulation.h"
#include "tSimulatedTickSource.h"
#include "tSoftwareTimeReference.h"
#include "tTimekeeper.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

using nOrvTarn000::tStatus;
using zelmarPluginCore_1_0::tTimekeeper;
using zelmarPluginCore_1_0::tTimeValue;

namespace
{

u64 g_allocations = 0;

void printServoTable()
{
    const u32 kSamples = 3600;
    const f64 kFrequencyErrors[] = {0.0, 10e-6, 100e-6};
    const f64 kNoises[] = {0.0, 1e-6, 10e-6, 50e-6};
    std::printf("Servo from an offset of 50 ms, one sample a second, %u samples\n", kSamples);
    std::printf("%9s %9s %14s %14s %14s %9s\n", "freq ppm", "noise us", "to synchronized",
                "to |err|<10us", "p95 |err| us", "failures");
    for (const f64 frequencyError : kFrequencyErrors)
    {
        for (const f64 noise : kNoises)
        {
            const nZelmar::tServoRun run =
                nZelmar::simulateServo({0.05, frequencyError, noise, kSamples, 1});
            std::printf("%9.0f %9.0f %14u %14u %14.3f %9u\n", frequencyError * 1e6, noise * 1e6,
                        nZelmar::samplesUntilSynchronized(run),
                        nZelmar::samplesUntilWithin(run, 10e-6),
                        nZelmar::steadyStateQuantile(run, 0.95) * 1e6, run.m_failedSamples);
        }
    }
    std::printf("(%u + 1 means: not at the end of the run)\n\n", kSamples);
}

// One sample as the plug-in makes it: a time read, which leaves the reading
// that the sample finds, and the sample. A second benchmark times the read
// alone (the FIFO of readings, once full, drops its oldest).
void runSamples(benchmark::State& a_state, bool a_addSample)
{
    // The allocations of construction and attach show that the count works.
    const u64 allocationsAtStart = g_allocations;
    tStatus status;
    nZelmar::tSimulatedTickSource ticks(10000000u, 20e-6);
    nZelmar::tSoftwareTimeReference reference(ticks, 0, status);
    tTimekeeper timekeeper(status);
    timekeeper.attach(&reference, status);
    a_state.counters["setupAllocations"] = static_cast<f64>(g_allocations - allocationsAtStart);
    const tTimeValue offset(i64(3000));
    // Warm: the filters' histories are full.
    for (int sample = 0; sample < 100; ++sample)
    {
        ticks.advance(1000000000u);
        const tTimeValue local = timekeeper.getTime(status);
        timekeeper.addTimeSample(local + offset, local, status);
    }
    const u64 allocationsBefore = g_allocations;
    for (auto _ : a_state)
    {
        ticks.advance(1000000000u);
        const tTimeValue local = timekeeper.getTime(status);
        if (a_addSample)
        {
            timekeeper.addTimeSample(local + offset, local, status);
        }
    }
    a_state.counters["allocations"] = benchmark::Counter(
        static_cast<f64>(g_allocations - allocationsBefore), benchmark::Counter::kAvgIterations);
    if (status.isFatal())
    {
        a_state.SkipWithError("a sample failed");
    }
}

} // namespace

extern "C" void* __real_malloc(std::size_t a_size);

extern "C" void* __wrap_malloc(std::size_t a_size)
{
    ++g_allocations;
    return __real_malloc(a_size);
}

static void BM_timeRead(benchmark::State& a_state)
{
    runSamples(a_state, false);
}
BENCHMARK(BM_timeRead);

static void BM_timeReadAndSample(benchmark::State& a_state)
{
    runSamples(a_state, true);
}
BENCHMARK(BM_timeReadAndSample);

int main(int a_argc, char** a_argv)
{
    printServoTable();
    benchmark::Initialize(&a_argc, a_argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
