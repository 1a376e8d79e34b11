// libFuzzer target for the message parser: any datagram goes through the
// factory exactly as a received one does. A refused one must carry a parser
// error code; an accepted one must trace, serialise with its own length in
// messageLength and no longer than it came, then parse and serialise again to
// the same bytes. A management TLV keeps the lengthField it came with, so a
// message that carries one is held to the round trip only; a management
// message is also answered by a clock of known state, and the answer must parse
// as a RESPONSE or ACKNOWLEDGE of the same sequenceId. Every violation aborts,
// so that the fuzzer keeps it as a finding. ZM_FUZZ_TRACE=1 shows the parser's
// console trace, which is otherwise discarded.
#include "orvptp/TLVs/tManagementMessagePayload.h"
#include "orvptp/tPTPMessageFactory.h"
#include "orvptp/tProtocolDataUnit.h"
#include "orvtarn/protons/status/iTraceDestination.h"
#include "orvtarn/protons/status/tTrace.h"
#include "tManagementSamples.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

using namespace nOrvPTP000;
using nOrvTarn000::tStatus;

namespace
{

// Takes trace text and drops it.
class tDiscardDestination : public nOrvTarn000::iTraceDestination
{
public:
    nOrvTarn000::iTraceDestination& writeCount(const char*, u32) override { return *this; }
    nOrvTarn000::iTraceDestination& write(const char*) override { return *this; }
    void control(u32, u32) override {}
    char* getOptionText(char*, u32, u32*) override { return nullptr; }
    bool isReady() override { return true; }
    void flush() override {}
    const char* getName() override { return "discard"; }
};

[[noreturn]] void fail(const char* a_what, const tStatus& a_status)
{
    std::fprintf(stderr, "message_fuzzer: %s (status %d at %s:%d)\n", a_what,
                 static_cast<int>(a_status.getCode()), a_status.getFile(),
                 static_cast<int>(a_status.getLine()));
    std::abort();
}

bool isParserRefusal(i32 a_code)
{
    return a_code == nOrvTarn000::kStatusOutOfBounds ||
           a_code == nOrvTarn000::kStatusNotSupported ||
           a_code == nOrvTarn000::kStatusInvalidArgument ||
           a_code == nOrvTarn000::kStatusMemoryFull;
}

// The unit a datagram is received into, and the one a message is written
// into; reused across runs as the node reuses its units.
struct tUnits
{
    tStatus status;
    tProtocolDataUnit received{status};
    tProtocolDataUnit first{status};
    tProtocolDataUnit second{status};
};

tUnits& units()
{
    static tUnits s_units;
    return s_units;
}

bool isManagement(tPTPMessage& a_message)
{
    return a_message.getHeader()->getMessageType() == kMessageTypeManagement;
}

// Whether the message's length fields must agree with what it carries: not
// when a TLV of the management family is among its TLVs.
bool hasExactLengths(tPTPMessage& a_message)
{
    tStatus status;
    for (u32 i = 0; i < a_message.getSuffix()->getTLVCount(); ++i)
    {
        if (a_message.getSuffix()->getTLV(i, status)->asManagementPayload() != nullptr)
        {
            return false;
        }
    }
    return true;
}

void serializeInto(tPTPMessage& a_message, tProtocolDataUnit& a_unit, const char* a_what)
{
    tStatus status;
    a_unit.clear();
    a_message.serialize(a_unit, status);
    if (status.isFatal())
    {
        fail(a_what, status);
    }
    if (hasExactLengths(a_message) &&
        a_message.getHeader()->getMessageLength() != static_cast<u16>(a_unit.getLength()))
    {
        fail("messageLength differs from the serialised length", status);
    }
}

// The answer of a clock of known state to a management message.
void answer(tManagementMessage& a_request, tProtocolDataUnit& a_unit)
{
    tStatus status;
    nWireTest::tSampleNode node;
    const u16 sequenceId = a_request.getHeader()->getSequenceId();
    tManagementMessage* pResponse = a_request.processRequest(node, status);
    if (pResponse == nullptr)
    {
        return;
    }
    serializeInto(*pResponse, a_unit, "a management response does not serialise");
    a_unit.rewind();
    tStatus parseStatus;
    std::unique_ptr<tPTPMessage> pParsed(tPTPMessageFactory::createMessage(a_unit, parseStatus));
    if (pParsed == nullptr || !isManagement(*pParsed) ||
        pParsed->getHeader()->getSequenceId() != sequenceId)
    {
        fail("a management response does not parse as the answer", parseStatus);
    }
    const u8 action = static_cast<tManagementMessage&>(*pParsed).getActionField();
    if (action != kActionResponse && action != kActionAcknowledge)
    {
        fail("a management response of another action", parseStatus);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    const char* pTrace = std::getenv("ZM_FUZZ_TRACE");
    if (pTrace == nullptr || std::strcmp(pTrace, "1") != 0)
    {
        if (std::freopen("/dev/null", "w", stdout) == nullptr)
        {
            std::fprintf(stderr, "message_fuzzer: cannot silence the console trace\n");
        }
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* a_pData, size_t a_size)
{
    tUnits& u = units();
    if (u.status.isFatal())
    {
        fail("the units could not be made", u.status);
    }

    tStatus status;
    u.received.clear();
    if (a_size > 0)
    {
        u.received.writeOctets(a_pData, static_cast<u32>(a_size), status);
        if (status.isFatal())
        {
            return 0; // no room for the datagram: not the parser's concern
        }
    }

    std::unique_ptr<tPTPMessage> pMessage(tPTPMessageFactory::createMessage(u.received, status));
    if (pMessage == nullptr)
    {
        if (!isParserRefusal(status.getCode()))
        {
            fail("a refused datagram without a parser error code", status);
        }
        return 0;
    }
    if (status.isFatal())
    {
        fail("a message together with a fatal status", status);
    }
    if (pMessage->getHeader() == nullptr || pMessage->getSuffix() == nullptr)
    {
        fail("a message without header or suffix", status);
    }

    {
        tDiscardDestination destination;
        nOrvTarn000::tTrace trace(destination);
        trace.write(*pMessage).endLine();
    }

    serializeInto(*pMessage, u.first, "the parsed message does not serialise");
    if (hasExactLengths(*pMessage) && u.first.getLength() > a_size)
    {
        fail("the serialisation is longer than the datagram", status);
    }

    u.first.rewind();
    std::unique_ptr<tPTPMessage> pAgain(tPTPMessageFactory::createMessage(u.first, status));
    if (pAgain == nullptr || status.isFatal())
    {
        fail("the serialisation of a parsed message does not parse", status);
    }
    if (pAgain->getHeader()->getMessageType() != pMessage->getHeader()->getMessageType())
    {
        fail("the message type changed on the round trip", status);
    }
    serializeInto(*pAgain, u.second, "the reparsed message does not serialise");
    if (u.first.getLength() != u.second.getLength() ||
        std::memcmp(u.first.getData(), u.second.getData(), u.first.getLength()) != 0)
    {
        fail("the serialisation changed on the round trip", status);
    }
    if (isManagement(*pAgain))
    {
        answer(static_cast<tManagementMessage&>(*pAgain), u.second);
    }
    return 0;
}
