// The wire forms of the message classes: each sample built field by field
// serialises to its literal bytes, and those bytes parse, through the factory,
// to a message of the right class that traces the same fields and serialises
// to the same bytes again.
#include "orvptp/tLXIConsortiumNotDefinedTLV.h"
#include "orvptp/tPTPMessageFactory.h"
#include "tMessageSamples.h"

#include <gtest/gtest.h>

#include <string>

using namespace nOrvPTP000;
using namespace nWireTest;

namespace
{

std::unique_ptr<tPTPMessage> parse(const tBytes& a_bytes, tStatus& a_status)
{
    tProtocolDataUnit unit(a_status);
    receive(unit, a_bytes);
    return tPTPMessageFactory::createMessage(unit, a_status);
}

bool endsWith(const std::string& a_text, const std::string& a_end)
{
    return a_text.size() >= a_end.size() &&
           a_text.compare(a_text.size() - a_end.size(), a_end.size(), a_end) == 0;
}

TEST(MessagesTest, EverySampleBothWays)
{
    for (const tMessageSample& entry : messageSamples())
    {
        SCOPED_TRACE(entry.m_name);
        tStatus status;
        std::unique_ptr<tPTPMessage> pBuilt = makeMessage(entry.m_fields, status);
        if (pBuilt != nullptr)
        {
            EXPECT_EQ(serialized(*pBuilt, status), entry.m_bytes);
        }
        std::unique_ptr<tPTPMessage> pParsed = parse(entry.m_bytes, status);
        ASSERT_NE(pParsed, nullptr);
        const std::string text = traceText(*pParsed);
        EXPECT_EQ(text.find(entry.m_beginTrace), 0u) << text;
        EXPECT_TRUE(endsWith(text, std::string("--- End Message Header ---\n") + entry.m_bodyTrace))
            << text;
        // Written back, a received message is what arrived; messageLength is
        // worked out again, suffix included.
        EXPECT_EQ(serialized(*pParsed, status), entry.m_bytes);
        EXPECT_EQ(status.getCode(), 0);
    }
}

// Every header field and flag in the trace; the flags that this clock never
// sets appear FALSE, the others TRUE. Nibbles print in hexadecimal.
TEST(MessagesTest, HeaderTraceIsExact)
{
    tBytes bytes = messageSample("Sync").m_bytes;
    bytes[0] = 0xAB; // transportSpecific 0xA, messageType 0xB
    tStatus status;
    tProtocolDataUnit unit(status);
    receive(unit, bytes);
    tMessageHeader header(unit, status);
    EXPECT_EQ(traceText(header),
              "--- Begin Message Header ---\ntransportSpecific: 0xa\nmessageType: 0xb\n"
              "versionPTP: 2\nmessageLength: 44\ndomainNumber: 123\nalternateMasterFlag: FALSE\n"
              "twoStepFlag: TRUE\nunicastFlag: FALSE\nprofileSpecific1: FALSE\n"
              "profileSpecific2: FALSE\nSECURE: FALSE\nleap61: TRUE\nleap59: TRUE\n"
              "currentUTCOffsetValid: TRUE\nptpTimescale: TRUE\ntimeTraceable: TRUE\n"
              "frequencyTraceable: TRUE\ncorrectionField: -98304\nsourcePortIdentity: "
              "clockIdentity: 001b19fffe123456 portNumber: 43981\nsequenceId: 48879\n"
              "controlField: 0\nlogMessageInterval: -3\n--- End Message Header ---\n");
    EXPECT_EQ(status.getCode(), 0);
}

// A message for sending carries its type, the controlField and the length
// of its body from the start; the rest are the header's defaults.
TEST(MessagesTest, NewMessagesForSending)
{
    tStatus status;
    tSyncMessage sync(status);
    tFollowUpMessage followUp(status);
    tDelayReqMessage delayReq(status);
    tDelayRespMessage delayResp(status);
    const struct
    {
        tPTPMessage& m_message;
        u8 m_type;
        u8 m_control;
        u16 m_length;
    } cases[] = {
        {sync, 0, 0, 44}, {followUp, 8, 2, 44}, {delayReq, 1, 1, 44}, {delayResp, 9, 3, 54}};
    for (const auto& entry : cases)
    {
        EXPECT_EQ(entry.m_message.getHeader()->getMessageType(), entry.m_type);
        EXPECT_EQ(entry.m_message.getHeader()->getControlField(), entry.m_control);
        EXPECT_EQ(entry.m_message.getHeader()->getMessageLength(), entry.m_length);
    }
    EXPECT_EQ(delayResp.getRequestingPortIdentity(), tPortIdentity(kAllOnesClockIdentity, 0xFFFF));

    tAnnounceMessage announce(status);
    EXPECT_EQ(announce.getHeader()->getMessageLength(), 64);
    // clang-format off
    EXPECT_EQ(serialized(announce, status), (tBytes{
        0x0B, 0x02, 0x00, 0x40, 0x00, 0x00, 0x00, 0x00, // Announce, version 2, length 64
        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,             // correctionField, reserved
        0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, // source: every clock,
        0xFF, 0xFF, 0x00, 0x00, 0x05, 0x7F,             //   every port; no interval
        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,       // time, offset, reserved, priority1
        187, 0xFE, 0xFF, 0xFF, 0x00,                    // default quality, priority2
        0, 0, 0, 0, 0, 0, 0, 0, 0x00, 0x00, 0xA0}));    // identity, steps, INTERNAL_OSCILLATOR
    // clang-format on
    EXPECT_EQ(status.getCode(), 0);
}

TEST(MessagesTest, AnnounceQualification)
{
    tStatus status;
    const tClockIdentity own(kSlaveId);
    std::unique_ptr<tPTPMessage> pMessage = makeMessage(messageSample("Announce").m_fields, status);
    tAnnounceMessage& announce = static_cast<tAnnounceMessage&>(*pMessage);
    const struct
    {
        u16 m_stepsRemoved;
        bool m_qualified;
    } steps[] = {{0, true}, {254, true}, {255, false}, {0xFFFF, false}};
    for (const auto& entry : steps)
    {
        announce.setStepsRemoved(entry.m_stepsRemoved, status);
        EXPECT_EQ(announce.isQualified(own), entry.m_qualified) << entry.m_stepsRemoved;
    }
    announce.setStepsRemoved(0, status);
    EXPECT_FALSE(announce.isQualified(tClockIdentity(kGrandmasterId)));

    tBytes alternate = messageSample("Announce").m_bytes;
    alternate[6] |= 0x01; // alternateMasterFlag
    std::unique_ptr<tPTPMessage> pAlternate = parse(alternate, status);
    ASSERT_NE(pAlternate, nullptr);
    EXPECT_FALSE(static_cast<tAnnounceMessage&>(*pAlternate).isQualified(own));
}

TEST(MessagesTest, SetMessageTypeKeepsTheControlFieldInStep)
{
    const u8 expected[16] = {0, 1, 5, 5, 5, 5, 5, 5, 2, 3, 5, 5, 5, 4, 5, 5};
    for (u8 type = 0; type < 16; ++type)
    {
        tStatus status;
        tMessageHeader header;
        header.setMessageType(type, status);
        EXPECT_EQ(header.getMessageType(), type);
        EXPECT_EQ(header.getControlField(), expected[type]) << "type " << int(type);
    }
}

TEST(MessagesTest, AFatalStatusLeavesAnEmptyMessage)
{
    tStatus status;
    ORVTARN_SET_CODE(status, nOrvTarn000::kStatusInternalError);
    tAnnounceMessage announce(status);
    EXPECT_EQ(announce.getHeader(), nullptr);
    EXPECT_EQ(announce.getSuffix(), nullptr);
    EXPECT_EQ(announce.getSize(), 0);
    tStatus sendStatus;
    tProtocolDataUnit unit(sendStatus);
    announce.serialize(unit, sendStatus);
    EXPECT_EQ(sendStatus.getCode(), nOrvTarn000::kStatusInvalidState);
    EXPECT_EQ(unit.getLength(), 0u);
}

TEST(MessagesTest, AssignmentCopiesHeaderAndClonesTLVs)
{
    tStatus status;
    std::unique_ptr<tPTPMessage> pSource = parse(messageSample("Signaling").m_bytes, status);
    ASSERT_NE(pSource, nullptr);
    tSyncMessage copy(status);
    static_cast<tPTPMessage&>(copy) = *pSource;
    ASSERT_EQ(copy.getSuffix()->getTLVCount(), 1u);
    EXPECT_NE(copy.getSuffix()->getTLV(0, status), pSource->getSuffix()->getTLV(0, status));
    // The header came along, type and all; the body is the copy's own.
    tBytes expected = messageSample("Signaling").m_bytes;
    std::fill(expected.begin() + 34, expected.begin() + 44, 0);
    EXPECT_EQ(serialized(copy, status), expected);
}

} // namespace
