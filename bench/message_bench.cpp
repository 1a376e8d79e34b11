// The cost of the wire layer per message type: parsing a received datagram
// through the factory (the message object made and deleted, as reception
// does) and serialising a message into a reused unit (as sending does).
#include "orvptp/tAnnounceMessage.h"
#include "orvptp/tDelayReqMessage.h"
#include "orvptp/tDelayRespMessage.h"
#include "orvptp/tFollowUpMessage.h"
#include "orvptp/tLXIConsortiumNotDefinedTLV.h"
#include "orvptp/tPTPMessageFactory.h"
#include "orvptp/tProtocolDataUnit.h"
#include "orvptp/tSyncMessage.h"

#include <benchmark/benchmark.h>

#include <memory>

using namespace nOrvPTP000;
using nOrvTarn000::tStatus;

namespace
{

const u8 kClockId[8] = {0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56};
const u8 kRequesterId[8] = {0x08, 0x00, 0x27, 0xFF, 0xFE, 0x01, 0x02, 0x03};

void fillHeader(tPTPMessage& a_message, tStatus& a_status)
{
    tMessageHeader& header = *a_message.getHeader();
    header.setDomainNumber(4, a_status);
    header.setCorrectionField(-98304, a_status);
    header.setSourcePortIdentity(tPortIdentity(tClockIdentity(kClockId), 1), a_status);
    header.setSequenceId(0x1234, a_status);
    header.setLogMessageInterval(0, a_status);
}

std::unique_ptr<tPTPMessage> makeSync(tStatus& a_status)
{
    std::unique_ptr<tSyncMessage> pMessage(new tSyncMessage(a_status));
    fillHeader(*pMessage, a_status);
    pMessage->getHeader()->setTwoStepFlag(true, a_status);
    pMessage->setOriginTimestamp(tTimestamp(1700000000, 123456789), a_status);
    return pMessage;
}

std::unique_ptr<tPTPMessage> makeFollowUp(tStatus& a_status)
{
    std::unique_ptr<tFollowUpMessage> pMessage(new tFollowUpMessage(a_status));
    fillHeader(*pMessage, a_status);
    pMessage->setPreciseOriginTimestamp(tTimestamp(1700000000, 123456789), a_status);
    return pMessage;
}

std::unique_ptr<tPTPMessage> makeDelayReq(tStatus& a_status)
{
    std::unique_ptr<tDelayReqMessage> pMessage(new tDelayReqMessage(a_status));
    fillHeader(*pMessage, a_status);
    pMessage->setOriginTimestamp(tTimestamp(1700000000, 123456789), a_status);
    return pMessage;
}

std::unique_ptr<tPTPMessage> makeDelayResp(tStatus& a_status)
{
    std::unique_ptr<tDelayRespMessage> pMessage(new tDelayRespMessage(a_status));
    fillHeader(*pMessage, a_status);
    pMessage->setReceiveTimestamp(tTimestamp(1700000000, 123456789), a_status);
    pMessage->setRequestingPortIdentity(tPortIdentity(tClockIdentity(kRequesterId), 1), a_status);
    return pMessage;
}

std::unique_ptr<tPTPMessage> makeAnnounce(tStatus& a_status)
{
    std::unique_ptr<tAnnounceMessage> pMessage(new tAnnounceMessage(a_status));
    fillHeader(*pMessage, a_status);
    pMessage->getHeader()->setPtpTimescale(true, a_status);
    pMessage->setOriginTimestamp(tTimestamp(1700000000, 123456789), a_status);
    pMessage->setCurrentUTCOffset(37, a_status);
    pMessage->setGrandmasterPriority1(128, a_status);
    pMessage->setGrandmasterClockQuality(tClockQuality(6, 0x21, 0x4E5D), a_status);
    pMessage->setGrandmasterPriority2(128, a_status);
    pMessage->setGrandmasterIdentity(tClockIdentity(kClockId), a_status);
    pMessage->setTimeSource(0x20, a_status);
    return pMessage;
}

std::unique_ptr<tPTPMessage> makeAnnounceWithTLV(tStatus& a_status)
{
    std::unique_ptr<tPTPMessage> pMessage = makeAnnounce(a_status);
    auto pTLV = std::make_unique<tLXIConsortiumNotDefinedTLV>();
    const u8 data[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    pTLV->setData(data, sizeof(data), a_status);
    pMessage->getSuffix()->addTLV(std::move(pTLV), a_status);
    return pMessage;
}

using tMaker = std::unique_ptr<tPTPMessage> (*)(tStatus&);

void BM_Parse(benchmark::State& a_state, tMaker a_make)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    a_make(status)->serialize(unit, status);
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

void BM_Serialize(benchmark::State& a_state, tMaker a_make)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    std::unique_ptr<tPTPMessage> pMessage = a_make(status);
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

BENCHMARK_CAPTURE(BM_Parse, Sync, makeSync);
BENCHMARK_CAPTURE(BM_Parse, FollowUp, makeFollowUp);
BENCHMARK_CAPTURE(BM_Parse, DelayReq, makeDelayReq);
BENCHMARK_CAPTURE(BM_Parse, DelayResp, makeDelayResp);
BENCHMARK_CAPTURE(BM_Parse, Announce, makeAnnounce);
BENCHMARK_CAPTURE(BM_Parse, AnnounceWithTLV, makeAnnounceWithTLV);

BENCHMARK_CAPTURE(BM_Serialize, Sync, makeSync);
BENCHMARK_CAPTURE(BM_Serialize, FollowUp, makeFollowUp);
BENCHMARK_CAPTURE(BM_Serialize, DelayReq, makeDelayReq);
BENCHMARK_CAPTURE(BM_Serialize, DelayResp, makeDelayResp);
BENCHMARK_CAPTURE(BM_Serialize, Announce, makeAnnounce);
BENCHMARK_CAPTURE(BM_Serialize, AnnounceWithTLV, makeAnnounceWithTLV);

} // namespace

BENCHMARK_MAIN();
