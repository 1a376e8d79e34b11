// Reception of whole datagrams: what the factory accepts, what it refuses and
// with which code, and that no datagram, however cut or garbled, makes it read
// outside the data or leak.
#include "orvptp/tAnnounceMessage.h"
#include "orvptp/tDelayRespMessage.h"
#include "orvptp/tLXIConsortiumNotDefinedTLV.h"
#include "orvptp/tPTPMessageFactory.h"
#include "orvptp/tSyncMessage.h"
#include "tWireTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

using namespace nOrvPTP000;
using namespace nWireTest;
using nOrvTarn000::tStatus;

namespace
{

const i32 kOutOfBounds = nOrvTarn000::kStatusOutOfBounds;
const i32 kNotSupported = nOrvTarn000::kStatusNotSupported;
const i32 kInvalidArgument = nOrvTarn000::kStatusInvalidArgument;

// clang-format off
// A 34-octet header; the tests patch type, version and length into it.
const tBytes kHeader = {
    0x00, 0x02,                                     // messageType | versionPTP 2
    0x00, 0x2C,                                     // messageLength 44
    0x00, 0x00,                                     // domainNumber, reserved
    0x00, 0x00,                                     // flags
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // correctionField
    0x00, 0x00, 0x00, 0x00,                         // reserved
    0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56, // sourcePortIdentity.clockIdentity
    0x00, 0x01,                                     // sourcePortIdentity.portNumber
    0x00, 0x05,                                     // sequenceId
    0x00, 0x00,                                     // controlField, logMessageInterval
};
// clang-format on

// A datagram of a_type with a body of a_bodyLength octets 0x11, 0x12, ...
tBytes datagram(u8 a_type, u32 a_bodyLength)
{
    tBytes bytes = kHeader;
    bytes[0] = a_type;
    for (u32 i = 0; i < a_bodyLength; ++i)
    {
        bytes.push_back(static_cast<u8>(0x11 + i));
    }
    bytes[2] = static_cast<u8>(bytes.size() >> 8);
    bytes[3] = static_cast<u8>(bytes.size());
    return bytes;
}

struct tReceived
{
    std::unique_ptr<tPTPMessage> m_pMessage;
    i32 m_code;
    u32 m_readBits;
};

tReceived receiveDatagram(const tBytes& a_bytes)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    receive(unit, a_bytes);
    tReceived result;
    result.m_pMessage = tPTPMessageFactory::createMessage(unit, status);
    result.m_code = status.getCode();
    result.m_readBits = unit.getReadPositionBits();
    return result;
}

struct tTypeAndBody
{
    u8 m_type;
    u32 m_bodyLength;
};

const tTypeAndBody kAcceptedTypes[] = {
    {kMessageTypeSync, 10},      {kMessageTypeDelayReq, 10}, {kMessageTypeFollowUp, 10},
    {kMessageTypeDelayResp, 20}, {kMessageTypeAnnounce, 30}, {kMessageTypeSignaling, 10},
};

// ---------------------------------------------------------------- header

TEST(MessageFactoryTest, VersionOtherThanTwoIsNotSupportedAndTheBodyIsNotRead)
{
    for (u8 version : {0, 1, 3, 15})
    {
        tBytes bytes = datagram(kMessageTypeSync, 10);
        bytes[1] = version;
        const tReceived received = receiveDatagram(bytes);
        EXPECT_EQ(received.m_pMessage, nullptr);
        EXPECT_EQ(received.m_code, kNotSupported) << "version " << int(version);
        EXPECT_EQ(received.m_readBits, 34u * 8);
    }
    // Only the low nibble of octet 1 is the version.
    tBytes reservedSet = datagram(kMessageTypeSync, 10);
    reservedSet[1] = 0xF2;
    EXPECT_NE(receiveDatagram(reservedSet).m_pMessage, nullptr);
}

TEST(MessageFactoryTest, DroppedAndUnassignedMessageTypesAreRefused)
{
    // Peer delay messages and unassigned values. Each datagram is long enough
    // for any body, so the refusal comes from the type alone.
    for (u8 type : {2, 3, 10, 4, 5, 6, 7, 14, 15})
    {
        const tReceived received = receiveDatagram(datagram(type, 54));
        EXPECT_EQ(received.m_pMessage, nullptr) << "type " << int(type);
        EXPECT_EQ(received.m_code, kInvalidArgument) << "type " << int(type);
    }
}

TEST(MessageFactoryTest, EachAcceptedTypeMakesItsClass)
{
    for (const tTypeAndBody& entry : kAcceptedTypes)
    {
        const tReceived received = receiveDatagram(datagram(entry.m_type, entry.m_bodyLength));
        ASSERT_NE(received.m_pMessage, nullptr) << "type " << int(entry.m_type);
        EXPECT_EQ(received.m_code, 0);
        EXPECT_EQ(received.m_pMessage->getHeader()->getMessageType(), entry.m_type);
        EXPECT_EQ(received.m_pMessage->getSize(), 34 + entry.m_bodyLength);
    }
}

TEST(MessageFactoryTest, AFatalStatusReadsNothing)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    receive(unit, datagram(kMessageTypeSync, 10));
    ORVTARN_SET_CODE(status, nOrvTarn000::kStatusInternalError);
    EXPECT_EQ(tPTPMessageFactory::createMessage(unit, status), nullptr);
    EXPECT_EQ(unit.getReadPositionBits(), 0u);
    EXPECT_EQ(status.getCode(), nOrvTarn000::kStatusInternalError);
}

// ---------------------------------------------------------------- truncation

// Cut anywhere, the header included, a datagram is refused as out of bounds.
TEST(MessageFactoryTest, EveryTruncationOfEveryTypeFailsCleanly)
{
    for (const tTypeAndBody& entry : kAcceptedTypes)
    {
        const tBytes full = datagram(entry.m_type, entry.m_bodyLength);
        for (std::size_t length = 0; length < full.size(); ++length)
        {
            const tReceived received = receiveDatagram(tBytes(full.begin(), full.begin() + length));
            EXPECT_EQ(received.m_pMessage, nullptr)
                << "type " << int(entry.m_type) << " length " << length;
            EXPECT_EQ(received.m_code, kOutOfBounds)
                << "type " << int(entry.m_type) << " length " << length;
        }
        EXPECT_NE(receiveDatagram(full).m_pMessage, nullptr);
    }
}

TEST(MessageFactoryTest, ATLVCutByTheDatagramsEndIsDroppedWithoutError)
{
    tStatus status;
    tSyncMessage sync(status);
    auto pTLV = std::make_unique<tLXIConsortiumNotDefinedTLV>();
    pTLV->setData("0123456789", 10, status);
    sync.getSuffix()->addTLV(std::move(pTLV), status);
    const tBytes full = serialized(sync, status);
    ASSERT_EQ(full.size(), 44u + 20u);
    for (std::size_t length = 44; length < full.size(); ++length)
    {
        const tReceived received = receiveDatagram(tBytes(full.begin(), full.begin() + length));
        ASSERT_NE(received.m_pMessage, nullptr) << "length " << length;
        EXPECT_EQ(received.m_code, 0);
        EXPECT_EQ(received.m_pMessage->getSuffix()->getTLVCount(), 0u) << "length " << length;
    }
    const tReceived whole = receiveDatagram(full);
    ASSERT_NE(whole.m_pMessage, nullptr);
    EXPECT_EQ(whole.m_pMessage->getSuffix()->getTLVCount(), 1u);
}

// ---------------------------------------------------------------- length

TEST(MessageFactoryTest, MessageLengthIsIgnored)
{
    for (u16 length : {0, 1, 43, 45, 1000, 0xFFFF})
    {
        tBytes bytes = datagram(kMessageTypeSync, 10);
        bytes[2] = static_cast<u8>(length >> 8);
        bytes[3] = static_cast<u8>(length);
        const tReceived received = receiveDatagram(bytes);
        ASSERT_NE(received.m_pMessage, nullptr) << "messageLength " << length;
        EXPECT_EQ(received.m_pMessage->getHeader()->getMessageLength(), length);
        EXPECT_EQ(received.m_pMessage->getSuffix()->getTLVCount(), 0u);

        // Written back, the length is that of the message.
        tStatus status;
        const tBytes again = serialized(*received.m_pMessage, status);
        EXPECT_EQ(again, datagram(kMessageTypeSync, 10));
    }
}

TEST(MessageFactoryTest, PaddingAndTrailingOctetsLeaveAnEmptySuffix)
{
    tBytes padded = datagram(kMessageTypeSync, 10);
    padded.resize(124, 0x00);
    const tReceived fromPadded = receiveDatagram(padded);
    ASSERT_NE(fromPadded.m_pMessage, nullptr);
    EXPECT_EQ(fromPadded.m_code, 0);
    EXPECT_EQ(fromPadded.m_pMessage->getSuffix()->getTLVCount(), 0u);
    EXPECT_EQ(fromPadded.m_pMessage->getSize(), 44);

    for (std::size_t extra = 1; extra <= 3; ++extra)
    {
        tBytes trailing = datagram(kMessageTypeSync, 10);
        trailing.resize(44 + extra, 0xA5);
        const tReceived received = receiveDatagram(trailing);
        ASSERT_NE(received.m_pMessage, nullptr) << extra;
        EXPECT_EQ(received.m_code, 0);
        EXPECT_EQ(received.m_pMessage->getSuffix()->getTLVCount(), 0u);
    }
}

TEST(MessageFactoryTest, OversizedDatagramsParseToTheirEnd)
{
    // A full-size datagram of 1024 octets: a Delay_Resp followed by unknown
    // TLVs of every length until the end.
    tBytes bytes = datagram(kMessageTypeDelayResp, 20);
    u16 length = 0;
    while (bytes.size() + 4 + length <= 1024)
    {
        bytes.insert(bytes.end(),
                     {0x7F, 0xF0, static_cast<u8>(length >> 8), static_cast<u8>(length)});
        bytes.resize(bytes.size() + length, 0xCC);
        length = static_cast<u16>(length + 7);
    }
    bytes.resize(1024, 0x00);
    const tReceived received = receiveDatagram(bytes);
    ASSERT_NE(received.m_pMessage, nullptr);
    EXPECT_EQ(received.m_code, 0);
    EXPECT_EQ(received.m_pMessage->getSuffix()->getTLVCount(), 0u);
}

// ---------------------------------------------------------------- reserved

TEST(MessageFactoryTest, ReservedBitsAndUnsettableFlagsAreReadButNotEchoed)
{
    tBytes bytes = datagram(kMessageTypeAnnounce, 30);
    bytes[0] = 0xA0 | kMessageTypeAnnounce; // transportSpecific 0xA
    bytes[1] = 0xF2;                        // reserved nibble set
    bytes[5] = 0xFF;                        // reserved octet
    bytes[6] = 0xFF;                        // every flag of octet 6, reserved ones included
    bytes[7] = 0xFF;                        // every flag of octet 7, reserved ones included
    bytes[16] = 0x01;                       // reserved octets 16 to 19
    bytes[19] = 0x80;
    bytes[34 + 12] = 0x77; // the reserved octet of the Announce body
    const tReceived received = receiveDatagram(bytes);
    ASSERT_NE(received.m_pMessage, nullptr);
    const tMessageHeader& header = *received.m_pMessage->getHeader();
    EXPECT_EQ(header.getTransportSpecific(), 0xA);
    EXPECT_TRUE(header.getSecure());
    EXPECT_TRUE(header.getProfileSpecific2());
    EXPECT_TRUE(header.getProfileSpecific1());
    EXPECT_TRUE(header.getUnicastFlag());
    EXPECT_TRUE(header.getTwoStepFlag());
    EXPECT_TRUE(header.getAlternateMasterFlag());
    EXPECT_TRUE(header.getFrequencyTraceable());
    EXPECT_TRUE(header.getTimeTraceable());
    EXPECT_TRUE(header.getPtpTimescale());
    EXPECT_TRUE(header.getCurrentUTCOffsetValid());
    EXPECT_TRUE(header.getLeap59());
    EXPECT_TRUE(header.getLeap61());

    tStatus status;
    const tBytes again = serialized(*received.m_pMessage, status);
    tBytes expected = bytes;
    expected[1] = 0x02;
    expected[5] = 0x00;
    expected[6] = 0xE7; // reserved bits 4 and 3 cleared
    expected[7] = 0x3F; // reserved bits 7 and 6 cleared
    expected[16] = 0x00;
    expected[19] = 0x00;
    expected[34 + 12] = 0x00;
    EXPECT_EQ(again, expected);
}

// ---------------------------------------------------------------- garbage

// Random datagrams, half of them with a plausible header so that the bodies
// and suffixes are exercised too. Every outcome must be a message with a clean
// status or null with a fatal one; the sanitizer builds catch any stray read.
TEST(MessageFactoryTest, RandomDatagramsNeverBreakTheParser)
{
    std::mt19937 random(20240611u);
    const u8 types[] = {0, 1, 8, 9, 11, 12, 2, 13, 15};
    u32 parsed = 0;
    for (u32 round = 0; round < 20000; ++round)
    {
        // Now and then a datagram beyond the largest that the socket delivers.
        const std::size_t length = random() % (round % 50 == 0 ? 1500 : 160);
        tBytes bytes(length);
        for (u8& byte : bytes)
        {
            byte = static_cast<u8>(random());
        }
        if (round % 2 == 0 && length >= 2)
        {
            bytes[0] = types[random() % sizeof(types)];
            bytes[1] = 0x02;
        }
        if (round % 4 == 0 && length >= 54)
        {
            // An LXI extension of random length behind a 44-octet message.
            const u8 lxi[10] = {0x00, 0x03, 0x00, static_cast<u8>(random() % 24), 0x00, 0x21, 0xD6,
                                0xFF, 0xFF, 0xFF};
            std::copy(lxi, lxi + 10, bytes.begin() + 44);
        }
        const tReceived received = receiveDatagram(bytes);
        if (received.m_pMessage != nullptr)
        {
            ++parsed;
            EXPECT_EQ(received.m_code, 0);
            tStatus status;
            const tBytes again = serialized(*received.m_pMessage, status);
            EXPECT_EQ(status.getCode(), 0);
            EXPECT_EQ(again.size(), received.m_pMessage->getSize());
        }
        else
        {
            EXPECT_LT(received.m_code, 0);
        }
    }
    EXPECT_GT(parsed, 1000u);
}

} // namespace
