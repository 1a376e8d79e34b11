// Cost of one trace line (header, 80 characters of text, line end) into a
// destination that drops it: on one thread, and on two threads sharing the
// trace, as warnings from several threads do.
#include "orvtarn/protons/status/tTrace.h"

#include <benchmark/benchmark.h>

using namespace nOrvTarn000;

namespace
{

class tNullDestination : public iTraceDestination
{
public:
    iTraceDestination& writeCount(const char*, u32) override { return *this; }
    iTraceDestination& write(const char* a_text) override
    {
        benchmark::DoNotOptimize(a_text);
        return *this;
    }
    void control(u32, u32) override {}
    char* getOptionText(char*, u32, u32*) override { return nullptr; }
    bool isReady() override { return true; }
    void flush() override {}
    const char* getName() override { return "null"; }
};

tNullDestination s_destination;
tTrace s_trace(s_destination);

void traceLine(benchmark::State& a_state)
{
    const char kText[] = "unknown organisation extension 0x0080C2 subtype 0x000001 dropped...";
    for (auto _ : a_state)
    {
        s_trace.writeHeader("orvptp3p", 123, "a/tTLVFactory.cpp", 105, 0)
            .write(kText)
            .writeNumber(static_cast<u32>(42), 16)
            .endLine();
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(traceLine)->Threads(1)->Threads(2)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
