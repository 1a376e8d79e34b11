// The deferred-action queue on the system clock: the cost of one queue call
// (a mutex, one list append, a signal), and the round trip from queueing an
// action to its run on the worker, as p50 and p99.
#include "tDeferredActionQueue.h"
#include "tLatencyStatistics.h"

#include <benchmark/benchmark.h>

#include <vector>

using namespace zelmarPluginCore_1_0;
using nOrvTarn000::tEvent;

namespace
{

class tSignallingAction : public iDeferredAction
{
public:
    explicit tSignallingAction(tStatus& a_status) : m_done(a_status) {}
    void execute() override { m_done.signal(); }
    tEvent m_done;
};

void BM_QueueToRun(benchmark::State& a_rState)
{
    tStatus status;
    tDeferredActionQueue queue(status);
    tSignallingAction action(status);
    queue.start(status);
    std::vector<u64> calls;
    std::vector<u64> roundTrips;
    for (auto _ : a_rState)
    {
        const u64 start = nowNs();
        queue.queue(&action, status);
        const u64 queued = nowNs();
        action.m_done.wait(tEvent::kInfinite, status);
        calls.push_back(queued - start);
        roundTrips.push_back(nowNs() - start);
    }
    queue.stop();
    if (status.isFatal() || calls.empty())
    {
        a_rState.SkipWithError("queue failed");
        return;
    }
    a_rState.counters["queue_p50_ns"] = static_cast<double>(percentile(calls, 0.50));
    a_rState.counters["queue_p99_ns"] = static_cast<double>(percentile(calls, 0.99));
    a_rState.counters["run_p50_ns"] = static_cast<double>(percentile(roundTrips, 0.50));
    a_rState.counters["run_p99_ns"] = static_cast<double>(percentile(roundTrips, 0.99));
}
BENCHMARK(BM_QueueToRun)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
