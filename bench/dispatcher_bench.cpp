// Dispatcher throughput (events per second, post to execute) and the latency
// from post to the start of execute, as p50 and p99.
#include "orvptp/tPTPDispatcher.h"
#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/timer/tTime.h"
#include "tLatencyStatistics.h"

#include <benchmark/benchmark.h>

#include <vector>

using namespace nOrvPTP000;
using nOrvTarn000::makeOwned;
using nOrvTarn000::tEvent;

namespace
{

struct tLatencies
{
    std::vector<u64> m_ns;
};

class tTimedEvent : public iPTPEvent
{
public:
    tTimedEvent(tLatencies& a_rLatencies, tEvent* a_pDone, bool a_isStart = false)
        : m_rLatencies(a_rLatencies), m_pDone(a_pDone), m_postedNs(nowNs()), m_isStart(a_isStart)
    {
    }
    bool allowedWhenStopped() override { return m_isStart; }
    i32 getEventKind() override { return m_isStart ? kStartEvent : kOtherEvent; }
    void execute(tStatus&) override
    {
        m_rLatencies.m_ns.push_back(nowNs() - m_postedNs);
        if (m_pDone != nullptr)
        {
            m_pDone->signal();
        }
    }

private:
    tLatencies& m_rLatencies;
    tEvent* m_pDone;
    u64 m_postedNs;
    bool m_isStart;
};

// Posts a burst of events from one thread and waits for the last to run: the
// dispatcher takes them in batches, as under a burst of timer and packet events.
void BM_DispatcherBurst(benchmark::State& a_rState)
{
    const int burst = static_cast<int>(a_rState.range(0));
    tStatus status;
    tPTPDispatcher dispatcher(status);
    tEvent done(status);
    tLatencies latencies;
    dispatcher.postEventAndWait(makeOwned<tTimedEvent>(status, latencies, &done, true), &done,
                                status);
    latencies.m_ns.clear();
    latencies.m_ns.reserve(static_cast<size_t>(burst) * 4096);

    for (auto _ : a_rState)
    {
        for (int i = 0; i < burst; ++i)
        {
            std::unique_ptr<iPTPEvent> pEvent =
                makeOwned<tTimedEvent>(status, latencies, i + 1 == burst ? &done : nullptr);
            dispatcher.post(pEvent, status);
        }
        done.wait(tEvent::kInfinite, status);
    }
    a_rState.SetItemsProcessed(a_rState.iterations() * burst);
    a_rState.counters["events/s"] = benchmark::Counter(
        static_cast<double>(a_rState.iterations() * burst), benchmark::Counter::kIsRate);
    a_rState.counters["p50_ns"] = static_cast<double>(percentile(latencies.m_ns, 0.50));
    a_rState.counters["p99_ns"] = static_cast<double>(percentile(latencies.m_ns, 0.99));
    if (status.isFatal())
    {
        a_rState.SkipWithError("dispatcher failed");
    }
}
BENCHMARK(BM_DispatcherBurst)->Arg(1)->Arg(64)->Arg(1024)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
