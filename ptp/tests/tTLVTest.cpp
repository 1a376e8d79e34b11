// The TLV framework: lengths, the factory's choice of class, skipping what is
// not recognised, organisation extensions and their warnings, and suffixes of
// several TLVs inside a received message.
#include "orvptp/tLXIConsortiumNotDefinedTLV.h"
#include "orvptp/tMessageSuffix.h"
#include "orvptp/tOrganizationIdentifiers.h"
#include "orvptp/tPTPMessageFactory.h"
#include "orvptp/tTLVFactory.h"
#include "tWireTestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace nOrvPTP000;
using namespace nWireTest;
using nOrvTarn000::tStatus;

namespace
{

const i32 kOutOfBounds = nOrvTarn000::kStatusOutOfBounds;
const i32 kInvalidArgument = nOrvTarn000::kStatusInvalidArgument;

// clang-format off
// A Sync without TLVs; suffix bytes are appended behind it.
const tBytes kSync = {
    0x00, 0x02, 0x00, 0x2C,                         // Sync, version 2, messageLength 44
    0x00, 0x00, 0x00, 0x00,                         // domainNumber, reserved, flags
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // correctionField
    0x00, 0x00, 0x00, 0x00,                         // reserved
    0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56, // sourcePortIdentity.clockIdentity
    0x00, 0x01,                                     // sourcePortIdentity.portNumber
    0x00, 0x05, 0x00, 0x00,                         // sequenceId, controlField, logMessageInterval
    0x00, 0x00, 0x00, 0x00, 0x00, 0x0A,             // originTimestamp.secondsField
    0x00, 0x00, 0x00, 0x0B,                         // originTimestamp.nanosecondsField
};

const tBytes kUnknownTLV = {
    0x7F, 0xFF,                                     // tlvType 0x7FFF, not recognised
    0x00, 0x04,                                     // lengthField 4
    0xDE, 0xAD, 0xBE, 0xEF,                         // value, skipped
};

const tBytes kLXIWithData = {
    0x00, 0x03,                                     // tlvType ORGANIZATION_EXTENSION
    0x00, 0x0B,                                     // lengthField 11
    0x00, 0x21, 0xD6,                               // organizationId LXI Consortium
    0xFF, 0xFF, 0xFF,                               // organizationSubType NOT_DEFINED
    'h', 'e', 'l', 'l', 'o',                        // data
};

const tBytes kLXIEmpty = {
    0x00, 0x03,                                     // tlvType ORGANIZATION_EXTENSION
    0x00, 0x06,                                     // lengthField 6: identifiers only
    0x00, 0x21, 0xD6,                               // organizationId LXI Consortium
    0xFF, 0xFF, 0xFF,                               // organizationSubType NOT_DEFINED
};
// clang-format on

std::unique_ptr<tPTPMessage> receiveSyncWith(const tBytes& a_suffix, i32& a_rCode)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    receive(unit, concat(kSync, a_suffix));
    std::unique_ptr<tPTPMessage> pMessage(tPTPMessageFactory::createMessage(unit, status));
    a_rCode = status.getCode();
    return pMessage;
}

tLXIConsortiumNotDefinedTLV* lxiAt(tPTPMessage& a_message, u32 a_index)
{
    tStatus status;
    return dynamic_cast<tLXIConsortiumNotDefinedTLV*>(
        a_message.getSuffix()->getTLV(a_index, status));
}

std::string dataOf(const tLXIConsortiumNotDefinedTLV& a_tlv)
{
    return std::string(reinterpret_cast<const char*>(a_tlv.getData()), a_tlv.getDataLength());
}

// ---------------------------------------------------------------- setLength

// The length logic of every TLV, through the smallest concrete one.
TEST(TLVLengthTest, AlignmentPadsOddLengths)
{
    tLXIConsortiumNotDefinedTLV tlv;
    tTLV& base = tlv;
    tStatus status;
    // The organisation extension adds its six identifying octets first.
    EXPECT_EQ(base.setLength(5, status, 2), 1);
    EXPECT_EQ(base.getLength(), 12);
    EXPECT_EQ(base.tTLV::setLength(5, status, 2), 1);
    EXPECT_EQ(base.getLength(), 6);
    EXPECT_EQ(base.tTLV::setLength(6, status, 2), 0);
    EXPECT_EQ(base.getLength(), 6);
    EXPECT_EQ(base.tTLV::setLength(5, status, 1), 0);
    EXPECT_EQ(base.getLength(), 5);
    EXPECT_EQ(base.getSize(), 9);
    ORVTARN_SET_CODE(status, nOrvTarn000::kStatusInternalError);
    EXPECT_EQ(base.tTLV::setLength(9, status, 2), 0);
    EXPECT_EQ(base.getLength(), 5);
}

// ---------------------------------------------------------------- LXI

TEST(LXITLVTest, NewTLVHasOnlyItsIdentifiers)
{
    tLXIConsortiumNotDefinedTLV tlv;
    EXPECT_EQ(tlv.getData(), nullptr);
    tStatus status;
    EXPECT_EQ(serialized(tlv, status), kLXIEmpty);
}

TEST(LXITLVTest, SerialisesItsData)
{
    tLXIConsortiumNotDefinedTLV tlv;
    tStatus status;
    tlv.setData("hello", 5, status);
    EXPECT_EQ(serialized(tlv, status), kLXIWithData);
    EXPECT_EQ(traceText(tlv),
              "tlvType 3 lengthField 11 LXI Consortium NOT_DEFINED TLV data field: hello\n");
}

TEST(LXITLVTest, CloneIsDeep)
{
    tLXIConsortiumNotDefinedTLV tlv;
    tStatus status;
    tlv.setData("abc", 3, status);
    std::unique_ptr<tTLV> pClone(tlv.clone(status));
    ASSERT_NE(pClone, nullptr);
    tlv.setData("xyz", 3, status);
    tLXIConsortiumNotDefinedTLV* pTyped = dynamic_cast<tLXIConsortiumNotDefinedTLV*>(pClone.get());
    ASSERT_NE(pTyped, nullptr);
    EXPECT_EQ(dataOf(*pTyped), "abc");
    EXPECT_EQ(pTyped->getLength(), 9);

    tStatus failed;
    ORVTARN_SET_CODE(failed, nOrvTarn000::kStatusInternalError);
    EXPECT_EQ(tlv.clone(failed), nullptr);
}

TEST(LXITLVTest, SelfContainedDeserialiseReadsTypeLengthAndValue)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    receive(unit, kLXIWithData);
    tLXIConsortiumNotDefinedTLV tlv;
    tlv.deserialize(unit, status);
    EXPECT_EQ(status.getCode(), 0);
    EXPECT_EQ(dataOf(tlv), "hello");
    EXPECT_EQ(tlv.getLength(), 11);
}

// ---------------------------------------------------------------- factory

TEST(TLVFactoryTest, RecognisesTheLXIExtension)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    receive(unit, kLXIWithData);
    std::unique_ptr<tTLV> pTLV(tTLVFactory::createTLV(unit, status));
    EXPECT_EQ(status.getCode(), 0);
    tLXIConsortiumNotDefinedTLV* pLXI = dynamic_cast<tLXIConsortiumNotDefinedTLV*>(pTLV.get());
    ASSERT_NE(pLXI, nullptr);
    EXPECT_EQ(dataOf(*pLXI), "hello");
    EXPECT_EQ(pLXI->getLength(), 11);
    EXPECT_EQ(unit.getReadPositionBits(), kLXIWithData.size() * 8);
}

TEST(TLVFactoryTest, UnknownTypeIsSkippedByItsLength)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    receive(unit, concat(kUnknownTLV, {0x55}));
    EXPECT_EQ(tTLVFactory::createTLV(unit, status), nullptr);
    EXPECT_EQ(status.getCode(), kInvalidArgument);
    EXPECT_EQ(unit.getReadPositionBits(), kUnknownTLV.size() * 8);
}

TEST(TLVFactoryTest, ManagementTypesAreSkippedLikeUnknownOnes)
{
    for (u8 type : {1, 2})
    {
        tStatus status;
        tProtocolDataUnit unit(status);
        receive(unit, tBytes{0x00, type, 0x00, 0x02, 0x12, 0x34});
        EXPECT_EQ(tTLVFactory::createTLV(unit, status), nullptr);
        EXPECT_EQ(status.getCode(), kInvalidArgument);
        EXPECT_EQ(unit.getReadPositionBits(), 6u * 8);
    }
}

TEST(TLVFactoryTest, TruncatedKnownTLVLeavesNothing)
{
    for (std::size_t length = 0; length < kLXIWithData.size(); ++length)
    {
        tStatus status;
        tProtocolDataUnit unit(status);
        receive(unit, tBytes(kLXIWithData.begin(), kLXIWithData.begin() + length));
        EXPECT_EQ(tTLVFactory::createTLV(unit, status), nullptr);
        EXPECT_EQ(status.getCode(), kOutOfBounds) << "length " << length;
    }
}

// ---------------------------------------------------------------- warnings

struct tWarningCase
{
    tBytes m_identifiers;
    const char* m_warning;
};

TEST(OrganizationExtensionTest, UnsupportedExtensionsAreTracedAndRefused)
{
    const tWarningCase cases[] = {
        {{0x00, 0x21, 0xD6, 0x00, 0x00, 0x01},
         "Unsupported organizationSubType 000001 for                            organization "
         "0021d6\n"},
        {{0x00, 0xA0, 0xC5, 0x12, 0x34, 0x56},
         "Unsupported organizationSubType 123456 for                      organization 00a0c5\n"},
        {{0xAB, 0xCD, 0xEF, 0xFF, 0xFF, 0xFF}, "Unsupported organizationId abcdef\n"},
    };
    ASSERT_EQ(kOrvOrganizationId, 0x00A0C5u);
    for (const tWarningCase& entry : cases)
    {
        const tBytes bytes = concat(concat({0x00, 0x03, 0x00, 0x08}, entry.m_identifiers), {1, 2});
        tStatus status;
        tProtocolDataUnit unit(status);
        receive(unit, bytes);
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
        // The data is not skipped: reading resumes behind the identifiers.
        EXPECT_EQ(unit.getReadPositionBits(), 10u * 8);
    }
}

// ---------------------------------------------------------------- suffixes

TEST(MessageSuffixTest, SeveralTLVsInOrderWithUnknownOnesSkipped)
{
    i32 code = -1;
    std::unique_ptr<tPTPMessage> pMessage = receiveSyncWith(
        concat(concat(concat(kUnknownTLV, kLXIWithData), kUnknownTLV), kLXIEmpty), code);
    ASSERT_NE(pMessage, nullptr);
    EXPECT_EQ(code, 0);
    ASSERT_EQ(pMessage->getSuffix()->getTLVCount(), 2u);
    ASSERT_NE(lxiAt(*pMessage, 0), nullptr);
    EXPECT_EQ(dataOf(*lxiAt(*pMessage, 0)), "hello");
    ASSERT_NE(lxiAt(*pMessage, 1), nullptr);
    EXPECT_EQ(lxiAt(*pMessage, 1)->getData(), nullptr);
    EXPECT_EQ(lxiAt(*pMessage, 1)->getLength(), 6);
    // Unknown TLVs are not kept, so the message is now shorter.
    EXPECT_EQ(pMessage->getSize(), 44 + kLXIWithData.size() + kLXIEmpty.size());

    tStatus status;
    EXPECT_EQ(pMessage->getSuffix()->getTLV(2, status), nullptr);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
}

TEST(MessageSuffixTest, ReceivedSuffixIsWrittenBackInOrder)
{
    i32 code = -1;
    std::unique_ptr<tPTPMessage> pMessage = receiveSyncWith(concat(kLXIEmpty, kLXIWithData), code);
    ASSERT_NE(pMessage, nullptr);
    tStatus status;
    const tBytes again = serialized(*pMessage, status);
    tBytes expected = concat(concat(kSync, kLXIEmpty), kLXIWithData);
    expected[3] = static_cast<u8>(expected.size());
    EXPECT_EQ(again, expected);
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
        i32 code = -1;
        std::unique_ptr<tPTPMessage> pMessage = receiveSyncWith(concat(kLXIEmpty, tail), code);
        ASSERT_NE(pMessage, nullptr);
        EXPECT_EQ(code, 0);
        EXPECT_EQ(pMessage->getSuffix()->getTLVCount(), 1u);
    }
}

TEST(MessageSuffixTest, RefusedExtensionDataIsReadAsTheNextTLVs)
{
    // An extension of an unknown organisation whose data happens to hold a
    // complete LXI TLV: after the refusal, reading goes on inside the data.
    const tBytes inner = kLXIWithData;
    tBytes outer = {0x00, 0x03, 0x00, static_cast<u8>(6 + inner.size()), 0x12, 0x34, 0x56,
                    0x00, 0x00, 0x01};
    outer = concat(outer, inner);
    i32 code = -1;
    testing::internal::CaptureStdout();
    std::unique_ptr<tPTPMessage> pMessage = receiveSyncWith(outer, code);
    const std::string output = testing::internal::GetCapturedStdout();
    ASSERT_NE(pMessage, nullptr);
    EXPECT_EQ(code, 0);
    EXPECT_NE(output.find("Unsupported organizationId 123456\n"), std::string::npos);
    ASSERT_EQ(pMessage->getSuffix()->getTLVCount(), 1u);
    ASSERT_NE(lxiAt(*pMessage, 0), nullptr);
    EXPECT_EQ(dataOf(*lxiAt(*pMessage, 0)), "hello");
}

TEST(MessageSuffixTest, OwnershipAddClearAndCopy)
{
    tStatus status;
    tMessageSuffix suffix;
    for (u32 i = 0; i < 40; ++i)
    {
        auto pTLV = std::make_unique<tLXIConsortiumNotDefinedTLV>();
        pTLV->setData("q", 1, status);
        suffix.addTLV(std::move(pTLV), status);
    }
    EXPECT_EQ(suffix.getTLVCount(), 40u);
    EXPECT_EQ(suffix.getSize(), 40 * 11);

    tMessageSuffix copy(suffix);
    EXPECT_EQ(copy.getTLVCount(), 40u);
    EXPECT_NE(copy.getTLV(0, status), suffix.getTLV(0, status));
    EXPECT_EQ(serialized(copy, status), serialized(suffix, status));

    suffix.clear(status);
    EXPECT_EQ(suffix.getTLVCount(), 0u);
    EXPECT_EQ(suffix.getSize(), 0);
    EXPECT_EQ(serialized(suffix, status), tBytes());

    // A TLV handed over with a fatal status is not stored, and not leaked.
    tStatus failed;
    ORVTARN_SET_CODE(failed, nOrvTarn000::kStatusInternalError);
    suffix.addTLV(std::make_unique<tLXIConsortiumNotDefinedTLV>(), failed);
    EXPECT_EQ(suffix.getTLVCount(), 0u);
}

TEST(MessageSuffixTest, TraceNumbersEachTLV)
{
    tStatus status;
    tMessageSuffix suffix;
    suffix.addTLV(std::make_unique<tLXIConsortiumNotDefinedTLV>(), status);
    suffix.addTLV(std::make_unique<tLXIConsortiumNotDefinedTLV>(), status);
    EXPECT_EQ(traceText(suffix),
              "--- Begin TLV 0 ---tlvType 3 lengthField 6 LXI Consortium NOT_DEFINED TLV data "
              "field: \n--- End TLV 0 ------ Begin TLV 1 ---tlvType 3 lengthField 6 LXI "
              "Consortium NOT_DEFINED TLV data field: \n--- End TLV 1 ---");
}

} // namespace
