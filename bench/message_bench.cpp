// The cost of the wire layer per message type: parsing a received datagram
// through the factory (the message object made and deleted, as reception
// does) and serialising a message into a reused unit (as sending does). The
// messages are the samples of the message tests.
#include "orvptp/tLXIConsortiumNotDefinedTLV.h"
#include "orvptp/tPTPMessageFactory.h"

#include "tMessageSamples.h"

#include <benchmark/benchmark.h>

using namespace nOrvPTP000;
using nOrvTarn000::tStatus;

namespace
{

// The sample a_name; with a_tlvLength, an LXI extension of that much data follows.
std::unique_ptr<tPTPMessage> make(const char* a_name, u16 a_tlvLength, tStatus& a_status)
{
    std::unique_ptr<tPTPMessage> pMessage =
        nWireTest::makeMessage(nWireTest::messageSample(a_name).m_fields, a_status);
    if (a_tlvLength != 0 && a_status.isNotFatal())
    {
        auto pTLV = std::make_unique<tLXIConsortiumNotDefinedTLV>();
        const std::vector<u8> data(a_tlvLength, 0x5A);
        pTLV->setData(data.data(), a_tlvLength, a_status);
        pMessage->getSuffix()->addTLV(std::move(pTLV), a_status);
    }
    return pMessage;
}

void BM_Parse(benchmark::State& a_state, const char* a_name, u16 a_tlvLength)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    make(a_name, a_tlvLength, status)->serialize(unit, status);
    const u32 length = unit.getLength();
    for (auto _ : a_state)
    {
        unit.rewind();
        std::unique_ptr<tPTPMessage> pMessage = tPTPMessageFactory::createMessage(unit, status);
        benchmark::DoNotOptimize(pMessage.get());
    }
    if (status.isFatal())
    {
        a_state.SkipWithError("the datagram did not parse");
    }
    a_state.SetBytesProcessed(static_cast<i64>(a_state.iterations()) * length);
}

void BM_Serialize(benchmark::State& a_state, const char* a_name, u16 a_tlvLength)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    std::unique_ptr<tPTPMessage> pMessage = make(a_name, a_tlvLength, status);
    for (auto _ : a_state)
    {
        unit.clear();
        pMessage->serialize(unit, status);
        benchmark::DoNotOptimize(unit.getData());
    }
    if (status.isFatal())
    {
        a_state.SkipWithError("the message did not serialise");
    }
    a_state.SetBytesProcessed(static_cast<i64>(a_state.iterations()) * unit.getLength());
}

#define MESSAGE_BENCHMARKS(benchmark)                                                              \
    BENCHMARK_CAPTURE(benchmark, Sync, "Sync", 0);                                                 \
    BENCHMARK_CAPTURE(benchmark, FollowUp, "FollowUp", 0);                                         \
    BENCHMARK_CAPTURE(benchmark, DelayReq, "DelayReq", 0);                                         \
    BENCHMARK_CAPTURE(benchmark, DelayResp, "DelayResp", 0);                                       \
    BENCHMARK_CAPTURE(benchmark, Announce, "Announce", 0);                                         \
    BENCHMARK_CAPTURE(benchmark, AnnounceWithTLV, "Announce", 8)

MESSAGE_BENCHMARKS(BM_Parse);
MESSAGE_BENCHMARKS(BM_Serialize);

} // namespace

BENCHMARK_MAIN();
