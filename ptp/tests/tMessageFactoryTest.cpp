// Reception of whole datagrams: what the factory refuses and with which code,
// and how far the datagram's own end, not any length field, bounds the parse.
// Random datagrams are the fuzzer's business.
#include "orvptp/tPTPMessageFactory.h"
#include "tMessageSamples.h"

#include <gtest/gtest.h>

using namespace nOrvPTP000;
using namespace nWireTest;

namespace
{

const i32 kOutOfBounds = nOrvTarn000::kStatusOutOfBounds;

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

// The samples without their TLVs: header and body alone.
tBytes bare(const tMessageSample& a_sample)
{
    const bool hasTLV = std::string(a_sample.m_name) == "Signaling";
    return tBytes(a_sample.m_bytes.begin(), a_sample.m_bytes.end() - (hasTLV ? 13 : 0));
}

const tBytes& sync()
{
    return messageSample("Sync").m_bytes;
}

TEST(MessageFactoryTest, RefusedHeaders)
{
    const struct
    {
        u8 m_octet0;
        u8 m_octet1;
        i32 m_code;
    } cases[] = {
        // Versions other than 2, in the low nibble of octet 1: the body is not read.
        {0x00, 0x01, nOrvTarn000::kStatusNotSupported},
        {0x00, 0x03, nOrvTarn000::kStatusNotSupported},
        {0x00, 0xF1, nOrvTarn000::kStatusNotSupported},
        // Peer delay messages and unassigned types, whatever the body.
        {0x02, 0x02, nOrvTarn000::kStatusInvalidArgument},
        {0x03, 0x02, nOrvTarn000::kStatusInvalidArgument},
        {0x0A, 0x02, nOrvTarn000::kStatusInvalidArgument},
        {0x04, 0x02, nOrvTarn000::kStatusInvalidArgument},
        {0x07, 0x02, nOrvTarn000::kStatusInvalidArgument},
        {0x0E, 0x02, nOrvTarn000::kStatusInvalidArgument},
        {0x0F, 0x02, nOrvTarn000::kStatusInvalidArgument},
    };
    for (const auto& entry : cases)
    {
        tBytes bytes = sync();
        bytes.resize(64, 0);
        bytes[0] = entry.m_octet0;
        bytes[1] = entry.m_octet1;
        const tReceived received = receiveDatagram(bytes);
        EXPECT_EQ(received.m_pMessage, nullptr);
        EXPECT_EQ(received.m_code, entry.m_code)
            << int(entry.m_octet0) << " " << int(entry.m_octet1);
        EXPECT_EQ(received.m_readBits, 34u * 8);
    }
    // A reserved high nibble beside the version is no refusal.
    tBytes reservedSet = sync();
    reservedSet[1] = 0xF2;
    EXPECT_NE(receiveDatagram(reservedSet).m_pMessage, nullptr);

    tStatus fatal;
    ORVTARN_SET_CODE(fatal, nOrvTarn000::kStatusInternalError);
    tProtocolDataUnit unit(fatal);
    receive(unit, sync());
    EXPECT_EQ(tPTPMessageFactory::createMessage(unit, fatal), nullptr);
    EXPECT_EQ(unit.getReadPositionBits(), 0u);
}

// Cut anywhere, the header included, a message is refused as out of bounds;
// a TLV cut by the end is dropped without error.
TEST(MessageFactoryTest, EveryTruncation)
{
    for (const tMessageSample& entry : messageSamples())
    {
        const tBytes full = bare(entry);
        for (std::size_t length = 0; length < full.size(); ++length)
        {
            const tReceived received = receiveDatagram(tBytes(full.begin(), full.begin() + length));
            EXPECT_EQ(received.m_pMessage, nullptr) << entry.m_name << " " << length;
            EXPECT_EQ(received.m_code, kOutOfBounds) << entry.m_name << " " << length;
        }
    }
    const tBytes& withTLV = messageSample("Signaling").m_bytes;
    for (std::size_t length = 44; length <= withTLV.size(); ++length)
    {
        const tReceived received =
            receiveDatagram(tBytes(withTLV.begin(), withTLV.begin() + length));
        ASSERT_NE(received.m_pMessage, nullptr) << length;
        EXPECT_EQ(received.m_code, 0);
        EXPECT_EQ(received.m_pMessage->getSuffix()->getTLVCount(),
                  length == withTLV.size() ? 1u : 0u);
    }
}

TEST(MessageFactoryTest, MessageLengthIsIgnored)
{
    for (u16 length : {0, 43, 1000, 0xFFFF})
    {
        tBytes bytes = sync();
        bytes[2] = static_cast<u8>(length >> 8);
        bytes[3] = static_cast<u8>(length);
        const tReceived received = receiveDatagram(bytes);
        ASSERT_NE(received.m_pMessage, nullptr) << length;
        EXPECT_EQ(received.m_pMessage->getHeader()->getMessageLength(), length);
        tStatus status;
        EXPECT_EQ(serialized(*received.m_pMessage, status), sync());
    }
}

// Zero padding reads as empty unknown TLVs, a few stray octets end the suffix
// at once, and unknown TLVs up to a full-size datagram are all skipped.
TEST(MessageFactoryTest, WhatFollowsTheBodyUpToTheDatagramsEnd)
{
    tBytes padded = sync();
    padded.resize(124, 0x00);
    tBytes oversized = sync();
    for (u16 length = 0; oversized.size() + 4 + length <= 1024; length = u16(length + 7))
    {
        oversized.insert(oversized.end(), {0x7F, 0xF0, u8(length >> 8), u8(length)});
        oversized.resize(oversized.size() + length, 0xCC);
    }
    oversized.resize(1024, 0x00);
    for (const tBytes& bytes :
         {padded, concat(sync(), {0xA5}), concat(sync(), {0xA5, 0xA5, 0xA5}), oversized})
    {
        const tReceived received = receiveDatagram(bytes);
        ASSERT_NE(received.m_pMessage, nullptr) << bytes.size();
        EXPECT_EQ(received.m_code, 0);
        EXPECT_EQ(received.m_pMessage->getSuffix()->getTLVCount(), 0u);
        EXPECT_EQ(received.m_pMessage->getSize(), 44);
    }
}

TEST(MessageFactoryTest, ReservedBitsAndUnsettableFlagsAreReadButNotEchoed)
{
    tBytes bytes = messageSample("Announce").m_bytes;
    bytes[0] = 0xA0 | kMessageTypeAnnounce; // transportSpecific 0xA
    bytes[1] = 0xF2;                        // reserved nibble
    bytes[5] = 0xFF;                        // reserved octet
    bytes[6] = 0xFF;                        // every flag, reserved ones included
    bytes[7] = 0xFF;
    bytes[16] = 0x01; // reserved octets 16 to 19
    bytes[19] = 0x80;
    bytes[34 + 12] = 0x77; // the reserved octet of the Announce body
    const tReceived received = receiveDatagram(bytes);
    ASSERT_NE(received.m_pMessage, nullptr);
    const tMessageHeader& header = *received.m_pMessage->getHeader();
    EXPECT_EQ(header.getTransportSpecific(), 0xA);
    const bool flags[] = {header.getSecure(),
                          header.getProfileSpecific2(),
                          header.getProfileSpecific1(),
                          header.getUnicastFlag(),
                          header.getTwoStepFlag(),
                          header.getAlternateMasterFlag(),
                          header.getFrequencyTraceable(),
                          header.getTimeTraceable(),
                          header.getPtpTimescale(),
                          header.getCurrentUTCOffsetValid(),
                          header.getLeap59(),
                          header.getLeap61()};
    for (bool flag : flags)
    {
        EXPECT_TRUE(flag);
    }

    tBytes expected = bytes;
    expected[1] = 0x02;
    expected[5] = 0x00;
    expected[6] = 0xE7; // reserved bits 4 and 3 cleared
    expected[7] = 0x3F; // reserved bits 7 and 6 cleared
    expected[16] = 0x00;
    expected[19] = 0x00;
    expected[34 + 12] = 0x00;
    tStatus status;
    EXPECT_EQ(serialized(*received.m_pMessage, status), expected);
}

} // namespace
