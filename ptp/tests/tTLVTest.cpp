// The TLV framework: lengths, the factory's choice of class, skipping what is
// not recognised, organisation extensions and their warnings, and suffixes of
// several TLVs inside a received message.
#include "orvptp/tLXIConsortiumNotDefinedTLV.h"
#include "orvptp/tMessageSuffix.h"
#include "orvptp/tOrganizationIdentifiers.h"
#include "orvptp/tPTPMessageFactory.h"
#include "orvptp/tTLVFactory.h"
#include "tMessageSamples.h"

#include <gtest/gtest.h>

#include <string>

using namespace nOrvPTP000;
using namespace nWireTest;

namespace
{

const i32 kOutOfBounds = nOrvTarn000::kStatusOutOfBounds;
const i32 kInvalidArgument = nOrvTarn000::kStatusInvalidArgument;

// clang-format off
const tBytes kUnknownTLV = {
    0x7F, 0xFF, 0x00, 0x04,                         // tlvType 0x7FFF, not recognised, length 4
    0xDE, 0xAD, 0xBE, 0xEF,                         // value, skipped
};
const tBytes kLXIWithData = {
    0x00, 0x03, 0x00, 0x0B,                         // ORGANIZATION_EXTENSION, length 11
    0x00, 0x21, 0xD6, 0xFF, 0xFF, 0xFF,             // LXI Consortium, NOT_DEFINED
    'h', 'e', 'l', 'l', 'o',                        // data
};
const tBytes kLXIEmpty = {
    0x00, 0x03, 0x00, 0x06,                         // length 6: identifiers only
    0x00, 0x21, 0xD6, 0xFF, 0xFF, 0xFF,
};
// clang-format on

const tLXIConsortiumNotDefinedTLV* lxi(const tTLV* a_pTLV)
{
    return dynamic_cast<const tLXIConsortiumNotDefinedTLV*>(a_pTLV);
}

std::string dataOf(const tLXIConsortiumNotDefinedTLV* a_pTLV)
{
    return a_pTLV == nullptr ? "(not LXI)"
                             : std::string(reinterpret_cast<const char*>(a_pTLV->getData()),
                                           a_pTLV->getDataLength());
}

// A Sync received with a_suffix behind its body.
std::unique_ptr<tPTPMessage> receiveSyncWith(const tBytes& a_suffix, tStatus& a_status)
{
    tProtocolDataUnit unit(a_status);
    receive(unit, concat(messageSample("Sync").m_bytes, a_suffix));
    return tPTPMessageFactory::createMessage(unit, a_status);
}

// The length logic of every TLV, through the smallest concrete one.
TEST(TLVTest, SetLengthAlignsAndTheExtensionCountsItsIdentifiers)
{
    tLXIConsortiumNotDefinedTLV tlv;
    tTLV& base = tlv;
    tStatus status;
    EXPECT_EQ(base.setLength(5, status, 2), 1);
    EXPECT_EQ(base.getLength(), 12);
    const struct
    {
        u32 m_length;
        u32 m_alignment;
        u16 m_padding;
        u16 m_stored;
    } cases[] = {{5, 2, 1, 6}, {6, 2, 0, 6}, {5, 1, 0, 5}};
    for (const auto& entry : cases)
    {
        EXPECT_EQ(base.tTLV::setLength(entry.m_length, status, entry.m_alignment), entry.m_padding);
        EXPECT_EQ(base.getLength(), entry.m_stored);
    }
    EXPECT_EQ(base.getSize(), 9);
    ORVTARN_SET_CODE(status, nOrvTarn000::kStatusInternalError);
    EXPECT_EQ(base.tTLV::setLength(9, status, 2), 0);
    EXPECT_EQ(base.getLength(), 5);
}

TEST(TLVTest, LXIWireFormTraceAndClone)
{
    tStatus status;
    tLXIConsortiumNotDefinedTLV tlv;
    EXPECT_EQ(tlv.getData(), nullptr);
    EXPECT_EQ(serialized(tlv, status), kLXIEmpty);
    tlv.setData("hello", 5, status);
    EXPECT_EQ(serialized(tlv, status), kLXIWithData);
    EXPECT_EQ(traceText(tlv),
              "tlvType 3 lengthField 11 LXI Consortium NOT_DEFINED TLV data field: hello\n");

    std::unique_ptr<tTLV> pClone = tlv.clone(status);
    tlv.setData("xyz", 3, status);
    EXPECT_EQ(dataOf(lxi(pClone.get())), "hello");
    EXPECT_EQ(pClone->getLength(), 11);

    // The self-contained form reads type and length as well.
    tProtocolDataUnit unit(status);
    receive(unit, kLXIWithData);
    tlv.deserialize(unit, status);
    EXPECT_EQ(dataOf(&tlv), "hello");
    EXPECT_EQ(status.getCode(), 0);

    tStatus failed;
    ORVTARN_SET_CODE(failed, nOrvTarn000::kStatusInternalError);
    EXPECT_EQ(tlv.clone(failed), nullptr);
}

// What the factory makes of one TLV, and where it leaves the reader.
TEST(TLVTest, FactoryRecognisesSkipsAndRefuses)
{
    const struct
    {
        tBytes m_bytes;
        i32 m_code;
        std::size_t m_readOctets;
        const char* m_data;
    } cases[] = {
        {kLXIWithData, 0, kLXIWithData.size(), "hello"},
        {concat(kUnknownTLV, {0x55}), kInvalidArgument, kUnknownTLV.size(), nullptr},
        // An unknown managementId: its data is not skipped.
        {{0x00, 0x01, 0x00, 0x04, 0x12, 0x34, 0xAB, 0xCD}, kInvalidArgument, 6, nullptr},
    };
    for (const auto& entry : cases)
    {
        tStatus status;
        tProtocolDataUnit unit(status);
        receive(unit, entry.m_bytes);
        std::unique_ptr<tTLV> pTLV = tTLVFactory::createTLV(unit, status);
        EXPECT_EQ(status.getCode(), entry.m_code);
        EXPECT_EQ(unit.getReadPositionBits(), entry.m_readOctets * 8);
        if (entry.m_data != nullptr)
        {
            EXPECT_EQ(dataOf(lxi(pTLV.get())), entry.m_data);
        }
        else
        {
            EXPECT_EQ(pTLV, nullptr);
        }
    }
    for (std::size_t length = 0; length < kLXIWithData.size(); ++length)
    {
        tStatus status;
        tProtocolDataUnit unit(status);
        receive(unit, tBytes(kLXIWithData.begin(), kLXIWithData.begin() + length));
        EXPECT_EQ(tTLVFactory::createTLV(unit, status), nullptr);
        EXPECT_EQ(status.getCode(), kOutOfBounds) << "length " << length;
    }
}

// An unsupported extension is traced and refused; its data is not skipped,
// reading resumes behind the identifiers.
TEST(TLVTest, UnsupportedExtensionsAreTracedAndRefused)
{
    const struct
    {
        tBytes m_identifiers;
        const char* m_warning;
    } cases[] = {
        {{0x00, 0x21, 0xD6, 0x00, 0x00, 0x01},
         "Unsupported organizationSubType 000001 for                            organization "
         "0021d6\n"},
        {{0x00, 0xA0, 0xC5, 0x12, 0x34, 0x56},
         "Unsupported organizationSubType 123456 for                      organization 00a0c5\n"},
        {{0xAB, 0xCD, 0xEF, 0xFF, 0xFF, 0xFF}, "Unsupported organizationId abcdef\n"},
    };
    ASSERT_EQ(kOrvOrganizationId, 0x00A0C5u);
    for (const auto& entry : cases)
    {
        tStatus status;
        tProtocolDataUnit unit(status);
        receive(unit, concat(concat({0x00, 0x03, 0x00, 0x08}, entry.m_identifiers), {1, 2}));
        testing::internal::CaptureStdout();
        std::unique_ptr<tTLV> pTLV = tTLVFactory::createTLV(unit, status);
        const std::string output = testing::internal::GetCapturedStdout();
        EXPECT_EQ(pTLV, nullptr);
        EXPECT_EQ(status.getCode(), kInvalidArgument);
        // One trace line: the header of this library, then the text.
        EXPECT_EQ(output.find("[orvptp3p--"), 0u) << output;
        const std::size_t at = output.find("] ");
        ASSERT_NE(at, std::string::npos);
        EXPECT_EQ(output.substr(at + 2), entry.m_warning);
        EXPECT_EQ(unit.getReadPositionBits(), 10u * 8);
    }
}

TEST(MessageSuffixTest, TLVsInOrderWithUnknownOnesSkippedAndWrittenBack)
{
    tStatus status;
    std::unique_ptr<tPTPMessage> pMessage = receiveSyncWith(
        concat(concat(concat(kUnknownTLV, kLXIWithData), kUnknownTLV), kLXIEmpty), status);
    ASSERT_NE(pMessage, nullptr);
    EXPECT_EQ(status.getCode(), 0);
    tMessageSuffix& suffix = *pMessage->getSuffix();
    ASSERT_EQ(suffix.getTLVCount(), 2u);
    EXPECT_EQ(dataOf(lxi(suffix.getTLV(0, status))), "hello");
    ASSERT_NE(lxi(suffix.getTLV(1, status)), nullptr);
    EXPECT_EQ(lxi(suffix.getTLV(1, status))->getData(), nullptr);
    EXPECT_EQ(suffix.getTLV(2, status), nullptr);
    EXPECT_EQ(status.getCode(), kOutOfBounds);

    // Unknown TLVs are not kept: the message is shorter when written back.
    tStatus writeStatus;
    tBytes expected = concat(concat(messageSample("Sync").m_bytes, kLXIWithData), kLXIEmpty);
    expected[3] = static_cast<u8>(expected.size());
    EXPECT_EQ(serialized(*pMessage, writeStatus), expected);
}

// A TLV that claims more than the datagram holds ends the suffix quietly: an
// unknown one running past the end, and an LXI one whose lengthField 2 asks
// for 2 - 6, in 16 bits 65532, octets of data.
TEST(MessageSuffixTest, ATLVRunningPastTheEndEndsTheSuffixQuietly)
{
    const tBytes overlong[] = {
        {0x12, 0x34, 0xFF, 0xFF, 1, 2, 3},
        {0x00, 0x03, 0x00, 0x02, 0x00, 0x21, 0xD6, 0xFF, 0xFF, 0xFF, 'a', 'b'},
    };
    for (const tBytes& tail : overlong)
    {
        tStatus status;
        std::unique_ptr<tPTPMessage> pMessage = receiveSyncWith(concat(kLXIEmpty, tail), status);
        ASSERT_NE(pMessage, nullptr);
        EXPECT_EQ(status.getCode(), 0);
        EXPECT_EQ(pMessage->getSuffix()->getTLVCount(), 1u);
    }
}

TEST(MessageSuffixTest, RefusedExtensionDataIsReadAsTheNextTLVs)
{
    // An extension of an unknown organisation whose data happens to hold a
    // complete LXI TLV: after the refusal, reading goes on inside the data.
    const tBytes outer = concat({0x00, 0x03, 0x00, static_cast<u8>(6 + kLXIWithData.size()), 0x12,
                                 0x34, 0x56, 0x00, 0x00, 0x01},
                                kLXIWithData);
    tStatus status;
    testing::internal::CaptureStdout();
    std::unique_ptr<tPTPMessage> pMessage = receiveSyncWith(outer, status);
    const std::string output = testing::internal::GetCapturedStdout();
    ASSERT_NE(pMessage, nullptr);
    EXPECT_EQ(status.getCode(), 0);
    EXPECT_NE(output.find("Unsupported organizationId 123456\n"), std::string::npos);
    ASSERT_EQ(pMessage->getSuffix()->getTLVCount(), 1u);
    EXPECT_EQ(dataOf(lxi(pMessage->getSuffix()->getTLV(0, status))), "hello");
}

TEST(MessageSuffixTest, CopyClearTraceAndRefusal)
{
    tStatus status;
    tMessageSuffix suffix;
    for (u32 i = 0; i < 40; ++i)
    {
        suffix.addTLV(std::make_unique<tLXIConsortiumNotDefinedTLV>(), status);
    }
    EXPECT_EQ(suffix.getSize(), 40 * 10);
    tMessageSuffix copy(suffix);
    EXPECT_EQ(copy.getTLVCount(), 40u);
    EXPECT_NE(copy.getTLV(0, status), suffix.getTLV(0, status));
    EXPECT_EQ(serialized(copy, status), serialized(suffix, status));

    suffix.clear(status);
    EXPECT_EQ(suffix.getSize(), 0);
    EXPECT_EQ(serialized(suffix, status), tBytes());
    // A TLV handed over with a fatal status is not stored.
    tStatus failed;
    ORVTARN_SET_CODE(failed, nOrvTarn000::kStatusInternalError);
    suffix.addTLV(std::make_unique<tLXIConsortiumNotDefinedTLV>(), failed);
    EXPECT_EQ(suffix.getTLVCount(), 0u);

    suffix.addTLV(std::make_unique<tLXIConsortiumNotDefinedTLV>(), status);
    suffix.addTLV(std::make_unique<tLXIConsortiumNotDefinedTLV>(), status);
    EXPECT_EQ(traceText(suffix),
              "--- Begin TLV 0 ---tlvType 3 lengthField 6 LXI Consortium NOT_DEFINED TLV data "
              "field: \n--- End TLV 0 ------ Begin TLV 1 ---tlvType 3 lengthField 6 LXI "
              "Consortium NOT_DEFINED TLV data field: \n--- End TLV 1 ---");
}

} // namespace
