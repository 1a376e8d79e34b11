// One best master run over a port's foreign master table holding N qualified
// foreign masters, N = 1, 4, 16, 64. Each run compares the N records and
// deletes the N - 1 losers, so every run needs a freshly filled table: tables
// are filled in batches outside the timed region.
#include "orvptp/tBMCOutput.h"
#include "orvptp/tDefaultBestMasterClockAlgorithm.h"
#include "orvptp/tForeignMasterDS.h"

#include "tAnnounceBuilder.h"
#include "tFakeNode.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

using namespace nOrvPTP000;
using nAnnounceTest::clockId;
using nAnnounceTest::tAnnounceBuilder;
using nFakeNode::tFakeNode;
using nOrvTarn000::tStatus;

namespace
{

const u32 kBatch = 64;

// N qualified masters, each better than the one before, so that every
// comparison replaces the current best.
void fill(tForeignMasterDS& a_table, u32 a_masters, tStatus& a_status)
{
    for (u32 i = 0; i < a_masters; ++i)
    {
        const tAnnounceBuilder master = tAnnounceBuilder(clockId(static_cast<u8>(i), 0x20))
                                            .priority1(static_cast<u8>(100 - i))
                                            .clockClass(6);
        a_table.addAnnounce(master.make(), a_status);
        a_table.addAnnounce(master.make(), a_status);
    }
}

void BM_BestMasterRun(benchmark::State& a_state)
{
    const u32 masters = static_cast<u32>(a_state.range(0));
    tStatus status;
    tFakeNode node(clockId(0xF0, 0x30));
    tBMCOutput output(1, status);
    tDefaultBestMasterClockAlgorithm algorithm;
    std::vector<std::unique_ptr<tForeignMasterDS>> tables;
    for (u32 i = 0; i < kBatch; ++i)
    {
        tables.emplace_back(new tForeignMasterDS(status));
    }

    u32 next = kBatch;
    for (auto _ : a_state)
    {
        if (next == kBatch)
        {
            a_state.PauseTiming();
            for (auto& pTable : tables)
            {
                pTable->clear(status);
                fill(*pTable, masters, status);
            }
            next = 0;
            a_state.ResumeTiming();
        }
        node.m_pForeignMasterDS = tables[next++].get();
        algorithm.runBestMasterClock(node, output, status);
        benchmark::DoNotOptimize(output);
    }
    if (status.isFatal() || output.getDecision(1, status).m_decision != kDecisionSlave)
    {
        a_state.SkipWithError("the run did not end in a slave decision");
    }
    a_state.SetItemsProcessed(static_cast<int64_t>(a_state.iterations()) * masters);
}

BENCHMARK(BM_BestMasterRun)->Arg(1)->Arg(4)->Arg(16)->Arg(64);

} // namespace

BENCHMARK_MAIN();
