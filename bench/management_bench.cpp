// The cost of answering a management request in process, per managementId and
// action: processRequest on a clock of known state (the samples of the
// management tests), the message parsed beforehand; and the whole of it as
// the node does it, parsing the datagram and serialising the response.
#include "tManagementSamples.h"

#include <benchmark/benchmark.h>

using namespace nOrvPTP000;
using nOrvTarn000::tStatus;

namespace
{

const u32 kBatch = 1000;

void BM_ProcessRequest(benchmark::State& a_state, nWireTest::tBytes a_request)
{
    tStatus status;
    nWireTest::tSampleNode node;
    tProtocolDataUnit unit(status);
    nWireTest::receive(unit, a_request);
    std::vector<std::unique_ptr<tPTPMessage>> messages(kBatch);
    for (auto _ : a_state)
    {
        // A request is turned into its response: each round takes a new one.
        a_state.PauseTiming();
        for (std::unique_ptr<tPTPMessage>& pMessage : messages)
        {
            unit.rewind();
            pMessage = tPTPMessageFactory::createMessage(unit, status);
        }
        a_state.ResumeTiming();
        for (std::unique_ptr<tPTPMessage>& pMessage : messages)
        {
            benchmark::DoNotOptimize(
                static_cast<tManagementMessage&>(*pMessage).processRequest(node, status));
            status.clear();
        }
    }
    // The time of one request, not of the batch.
    a_state.counters["per_request"] = benchmark::Counter(
        kBatch, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_Answer(benchmark::State& a_state, nWireTest::tBytes a_request)
{
    tStatus status;
    nWireTest::tSampleNode node;
    tProtocolDataUnit unit(status);
    tProtocolDataUnit response(status);
    nWireTest::receive(unit, a_request);
    for (auto _ : a_state)
    {
        unit.rewind();
        std::unique_ptr<tPTPMessage> pMessage = tPTPMessageFactory::createMessage(unit, status);
        tManagementMessage* pResponse =
            static_cast<tManagementMessage&>(*pMessage).processRequest(node, status);
        response.clear();
        if (pResponse != nullptr)
        {
            pResponse->serialize(response, status);
        }
        benchmark::DoNotOptimize(response.getData());
        status.clear();
    }
}

} // namespace

int main(int a_argc, char** a_argv)
{
    for (const auto& request : nWireTest::managementRequests())
    {
        const std::string name = request.first.substr(sizeof("mgmt-request-") - 1);
        benchmark::RegisterBenchmark(("processRequest/" + name).c_str(), BM_ProcessRequest,
                                     request.second);
        benchmark::RegisterBenchmark(("answer/" + name).c_str(), BM_Answer, request.second);
    }
    benchmark::Initialize(&a_argc, a_argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
