// Byte-exact wire forms of every message class, both ways: a message built
// field by field must serialise to the literal bytes, and those bytes must
// parse back to the same fields. The literals are written from the field
// layout, octet by octet.
#include "orvptp/tAnnounceMessage.h"
#include "orvptp/tDelayReqMessage.h"
#include "orvptp/tDelayRespMessage.h"
#include "orvptp/tFollowUpMessage.h"
#include "orvptp/tLXIConsortiumNotDefinedTLV.h"
#include "orvptp/tPTPMessageFactory.h"
#include "orvptp/tSignalingMessage.h"
#include "orvptp/tSyncMessage.h"
#include "tWireTestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace nOrvPTP000;
using namespace nWireTest;
using nOrvTarn000::tStatus;

namespace
{

const u8 kMasterId[8] = {0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56};
const u8 kSlaveId[8] = {0x08, 0x00, 0x27, 0xFF, 0xFE, 0x01, 0x02, 0x03};
const u8 kGrandmasterId[8] = {0x00, 0x1D, 0xC1, 0xFF, 0xFE, 0x0A, 0x0B, 0x0C};

// clang-format off
const tBytes kSyncBytes = {
    0x00,                                           // transportSpecific 0 | messageType 0 Sync
    0x02,                                           // reserved | versionPTP 2
    0x00, 0x2C,                                     // messageLength 44
    0x7B,                                           // domainNumber 123
    0x00,                                           // reserved
    0x02,                                           // flags: twoStepFlag
    0x3F,                                           // flags: frequencyTraceable timeTraceable ptpTimescale
                                                    //        currentUTCOffsetValid leap59 leap61
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0x80, 0x00, // correctionField -1.5 ns
    0x00, 0x00, 0x00, 0x00,                         // reserved
    0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56, // sourcePortIdentity.clockIdentity
    0xAB, 0xCD,                                     // sourcePortIdentity.portNumber 43981
    0xBE, 0xEF,                                     // sequenceId 48879
    0x00,                                           // controlField 0 Sync
    0xFD,                                           // logMessageInterval -3
    0x87, 0x65, 0x43, 0x21, 0x0F, 0xED,             // originTimestamp.secondsField (48 bits)
    0x3B, 0x9A, 0xC9, 0xFF,                         // originTimestamp.nanosecondsField 999999999
};

const tBytes kFollowUpBytes = {
    0x08,                                           // transportSpecific 0 | messageType 8 Follow_Up
    0x02,                                           // reserved | versionPTP 2
    0x00, 0x2C,                                     // messageLength 44
    0x00,                                           // domainNumber 0
    0x00,                                           // reserved
    0x00, 0x00,                                     // flags: none
    0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, // correctionField, fractional nanoseconds
    0x00, 0x00, 0x00, 0x00,                         // reserved
    0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56, // sourcePortIdentity.clockIdentity
    0x00, 0x01,                                     // sourcePortIdentity.portNumber 1
    0xFF, 0xFF,                                     // sequenceId 65535
    0x02,                                           // controlField 2 Follow_Up
    0x00,                                           // logMessageInterval 0
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,             // preciseOriginTimestamp.secondsField 2^48-1
    0x00, 0x00, 0x00, 0x00,                         // preciseOriginTimestamp.nanosecondsField 0
};

const tBytes kDelayReqBytes = {
    0x01,                                           // transportSpecific 0 | messageType 1 Delay_Req
    0x02,                                           // reserved | versionPTP 2
    0x00, 0x2C,                                     // messageLength 44
    0x04,                                           // domainNumber 4
    0x00,                                           // reserved
    0x00, 0x00,                                     // flags: none
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // correctionField 0
    0x00, 0x00, 0x00, 0x00,                         // reserved
    0x08, 0x00, 0x27, 0xFF, 0xFE, 0x01, 0x02, 0x03, // sourcePortIdentity.clockIdentity
    0x00, 0x01,                                     // sourcePortIdentity.portNumber 1
    0x00, 0x07,                                     // sequenceId 7
    0x01,                                           // controlField 1 Delay_Req
    0x7F,                                           // logMessageInterval 127: none
    0x00, 0x00, 0x00, 0x00, 0x00, 0x01,             // originTimestamp.secondsField 1
    0x1D, 0xCD, 0x65, 0x00,                         // originTimestamp.nanosecondsField 500000000
};

const tBytes kDelayRespBytes = {
    0x09,                                           // transportSpecific 0 | messageType 9 Delay_Resp
    0x02,                                           // reserved | versionPTP 2
    0x00, 0x36,                                     // messageLength 54
    0x04,                                           // domainNumber 4
    0x00,                                           // reserved
    0x00, 0x00,                                     // flags: none
    0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // correctionField: most negative
    0x00, 0x00, 0x00, 0x00,                         // reserved
    0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56, // sourcePortIdentity.clockIdentity
    0x00, 0x01,                                     // sourcePortIdentity.portNumber 1
    0x00, 0x07,                                     // sequenceId 7
    0x03,                                           // controlField 3 Delay_Resp
    0x02,                                           // logMessageInterval 2
    0x00, 0x00, 0x12, 0x34, 0x56, 0x78,             // receiveTimestamp.secondsField
    0x00, 0x00, 0x00, 0x01,                         // receiveTimestamp.nanosecondsField 1
    0x08, 0x00, 0x27, 0xFF, 0xFE, 0x01, 0x02, 0x03, // requestingPortIdentity.clockIdentity
    0x00, 0x02,                                     // requestingPortIdentity.portNumber 2
};

const tBytes kAnnounceBytes = {
    0x0B,                                           // transportSpecific 0 | messageType 11 Announce
    0x02,                                           // reserved | versionPTP 2
    0x00, 0x40,                                     // messageLength 64
    0x7F,                                           // domainNumber 127
    0x00,                                           // reserved
    0x00,                                           // flags: none
    0x2D,                                           // flags: frequencyTraceable ptpTimescale
                                                    //        currentUTCOffsetValid leap61
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // correctionField 0
    0x00, 0x00, 0x00, 0x00,                         // reserved
    0x00, 0x1D, 0xC1, 0xFF, 0xFE, 0x0A, 0x0B, 0x0C, // sourcePortIdentity.clockIdentity
    0x00, 0x01,                                     // sourcePortIdentity.portNumber 1
    0x12, 0x34,                                     // sequenceId 4660
    0x05,                                           // controlField 5 other
    0x01,                                           // logMessageInterval 1
    0x00, 0x00, 0x5F, 0x5E, 0x10, 0x00,             // originTimestamp.secondsField 1600000000
    0x05, 0xF5, 0xE0, 0xFF,                         // originTimestamp.nanosecondsField 99999999
    0x00, 0x25,                                     // currentUTCOffset 37
    0x00,                                           // reserved
    0x80,                                           // grandmasterPriority1 128
    0x06,                                           // grandmasterClockQuality.clockClass 6
    0x21,                                           // grandmasterClockQuality.clockAccuracy 0x21
    0x4E, 0x5D,                                     // grandmasterClockQuality.offsetScaledLogVariance
    0xFF,                                           // grandmasterPriority2 255
    0x00, 0x1D, 0xC1, 0xFF, 0xFE, 0x0A, 0x0B, 0x0C, // grandmasterIdentity
    0x01, 0x02,                                     // stepsRemoved 258
    0x20,                                           // timeSource 0x20 GPS
};

const tBytes kSignalingBytes = {
    0x0C,                                           // transportSpecific 0 | messageType 12 Signaling
    0x02,                                           // reserved | versionPTP 2
    0x00, 0x2C,                                     // messageLength 44
    0x00,                                           // domainNumber 0
    0x00,                                           // reserved
    0x00, 0x00,                                     // flags: none
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // correctionField 0
    0x00, 0x00, 0x00, 0x00,                         // reserved
    0x08, 0x00, 0x27, 0xFF, 0xFE, 0x01, 0x02, 0x03, // sourcePortIdentity.clockIdentity
    0x00, 0x01,                                     // sourcePortIdentity.portNumber 1
    0x00, 0x09,                                     // sequenceId 9
    0x05,                                           // controlField 5 other
    0x7F,                                           // logMessageInterval 127
    0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56, // targetPortIdentity.clockIdentity
    0x00, 0x01,                                     // targetPortIdentity.portNumber 1
};
// clang-format on

tPortIdentity portOf(const u8* a_pId, u16 a_port)
{
    return tPortIdentity(tClockIdentity(a_pId), a_port);
}

// Parses through the factory and checks the class.
template <typename tMessage>
std::unique_ptr<tMessage> parse(const tBytes& a_bytes)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    receive(unit, a_bytes);
    std::unique_ptr<tPTPMessage> pMessage(tPTPMessageFactory::createMessage(unit, status));
    EXPECT_EQ(status.getCode(), 0);
    tMessage* pTyped = dynamic_cast<tMessage*>(pMessage.get());
    EXPECT_NE(pTyped, nullptr);
    if (pTyped != nullptr)
    {
        pMessage.release();
    }
    return std::unique_ptr<tMessage>(pTyped);
}

void expectHeader(const tMessageHeader& a_header, u8 a_type, u16 a_length, u8 a_domain,
                  const tPortIdentity& a_source, u16 a_sequenceId, u8 a_control, i8 a_interval,
                  i64 a_correction)
{
    EXPECT_EQ(a_header.getTransportSpecific(), 0);
    EXPECT_EQ(a_header.getMessageType(), a_type);
    EXPECT_EQ(a_header.getVersionPTP(), 2);
    EXPECT_EQ(a_header.getMessageLength(), a_length);
    EXPECT_EQ(a_header.getDomainNumber(), a_domain);
    EXPECT_EQ(a_header.getSourcePortIdentity(), a_source);
    EXPECT_EQ(a_header.getSequenceId(), a_sequenceId);
    EXPECT_EQ(a_header.getControlField(), a_control);
    EXPECT_EQ(a_header.getLogMessageInterval(), a_interval);
    EXPECT_EQ(a_header.getCorrectionField(), a_correction);
}

void expectFlags(const tMessageHeader& a_header, bool a_twoStep, bool a_leap61, bool a_leap59,
                 bool a_utcValid, bool a_ptpTimescale, bool a_timeTraceable, bool a_freqTraceable)
{
    EXPECT_EQ(a_header.getTwoStepFlag(), a_twoStep);
    EXPECT_EQ(a_header.getLeap61(), a_leap61);
    EXPECT_EQ(a_header.getLeap59(), a_leap59);
    EXPECT_EQ(a_header.getCurrentUTCOffsetValid(), a_utcValid);
    EXPECT_EQ(a_header.getPtpTimescale(), a_ptpTimescale);
    EXPECT_EQ(a_header.getTimeTraceable(), a_timeTraceable);
    EXPECT_EQ(a_header.getFrequencyTraceable(), a_freqTraceable);
    EXPECT_FALSE(a_header.getAlternateMasterFlag());
    EXPECT_FALSE(a_header.getUnicastFlag());
    EXPECT_FALSE(a_header.getProfileSpecific1());
    EXPECT_FALSE(a_header.getProfileSpecific2());
    EXPECT_FALSE(a_header.getSecure());
}

// ---------------------------------------------------------------- Sync

TEST(SyncMessageTest, WireFormBothWays)
{
    tStatus status;
    tSyncMessage sync(status);
    tMessageHeader& header = *sync.getHeader();
    header.setDomainNumber(123, status);
    header.setTwoStepFlag(true, status);
    header.setLeap61(true, status);
    header.setLeap59(true, status);
    header.setCurrentUTCOffsetValid(true, status);
    header.setPtpTimescale(true, status);
    header.setTimeTraceable(true, status);
    header.setFrequencyTraceable(true, status);
    header.setCorrectionField(-98304, status);
    header.setSourcePortIdentity(portOf(kMasterId, 0xABCD), status);
    header.setSequenceId(0xBEEF, status);
    header.setLogMessageInterval(-3, status);
    sync.setOriginTimestamp(tTimestamp(0x876543210FEDULL, 999999999), status);
    EXPECT_EQ(serialized(sync, status), kSyncBytes);
    EXPECT_EQ(status.getCode(), 0);

    std::unique_ptr<tSyncMessage> pSync = parse<tSyncMessage>(kSyncBytes);
    ASSERT_NE(pSync, nullptr);
    expectHeader(*pSync->getHeader(), 0, 44, 123, portOf(kMasterId, 0xABCD), 0xBEEF, 0, -3, -98304);
    expectFlags(*pSync->getHeader(), true, true, true, true, true, true, true);
    EXPECT_EQ(pSync->getOriginTimestamp(), tTimestamp(0x876543210FEDULL, 999999999));
    EXPECT_EQ(pSync->getSuffix()->getTLVCount(), 0u);
}

// The bodies' traces; the header's is checked whole with Delay_Resp below.
TEST(SyncMessageTest, TraceOfSyncAndFollowUpBodies)
{
    tStatus status;
    tSyncMessage sync(status);
    sync.setOriginTimestamp(tTimestamp(3, 4), status);
    std::string text = traceText(sync);
    EXPECT_EQ(text.find("--- Begin Sync Message ---\n--- Begin Message Header ---\n"), 0u);
    EXPECT_NE(text.find("--- End Message Header ---\noriginTimestamp: secondsField: 3 "
                        "nanosecondsField: 4\n--- End Sync Message ---\n"),
              std::string::npos);

    tFollowUpMessage followUp(status);
    text = traceText(followUp);
    EXPECT_EQ(text.find("--- Begin Follow_Up Message ---\n"), 0u);
    EXPECT_NE(text.find("messageType: 0x8\n"), std::string::npos);
    EXPECT_NE(text.find("--- End Message Header ---\npreciseOriginTimestamp: secondsField: 0 "
                        "nanosecondsField: 0--- End Follow_Up Message ---\n"),
              std::string::npos);
}

// ---------------------------------------------------------------- Follow_Up

TEST(FollowUpMessageTest, WireFormBothWays)
{
    tStatus status;
    tFollowUpMessage followUp(status);
    tMessageHeader& header = *followUp.getHeader();
    header.setCorrectionField(0x0123456789ABCDEFLL, status);
    header.setSourcePortIdentity(portOf(kMasterId, 1), status);
    header.setSequenceId(65535, status);
    header.setLogMessageInterval(0, status);
    followUp.setPreciseOriginTimestamp(tTimestamp(0xFFFFFFFFFFFFULL, 0), status);
    EXPECT_EQ(serialized(followUp, status), kFollowUpBytes);
    EXPECT_EQ(status.getCode(), 0);

    std::unique_ptr<tFollowUpMessage> pFollowUp = parse<tFollowUpMessage>(kFollowUpBytes);
    ASSERT_NE(pFollowUp, nullptr);
    expectHeader(*pFollowUp->getHeader(), 8, 44, 0, portOf(kMasterId, 1), 65535, 2, 0,
                 0x0123456789ABCDEFLL);
    expectFlags(*pFollowUp->getHeader(), false, false, false, false, false, false, false);
    EXPECT_EQ(pFollowUp->getPreciseOriginTimestamp(), tTimestamp(0xFFFFFFFFFFFFULL, 0));
}

// ---------------------------------------------------------------- Delay_Req

TEST(DelayReqMessageTest, WireFormBothWays)
{
    tStatus status;
    tDelayReqMessage request(status);
    tMessageHeader& header = *request.getHeader();
    header.setDomainNumber(4, status);
    header.setSourcePortIdentity(portOf(kSlaveId, 1), status);
    header.setSequenceId(7, status);
    request.setOriginTimestamp(tTimestamp(1, 500000000), status);
    EXPECT_EQ(serialized(request, status), kDelayReqBytes);
    EXPECT_EQ(status.getCode(), 0);

    std::unique_ptr<tDelayReqMessage> pRequest = parse<tDelayReqMessage>(kDelayReqBytes);
    ASSERT_NE(pRequest, nullptr);
    expectHeader(*pRequest->getHeader(), 1, 44, 4, portOf(kSlaveId, 1), 7, 1, 127, 0);
    EXPECT_EQ(pRequest->getOriginTimestamp(), tTimestamp(1, 500000000));
}

// ---------------------------------------------------------------- Delay_Resp

TEST(DelayRespMessageTest, WireFormBothWays)
{
    tStatus status;
    tDelayRespMessage response(status);
    tMessageHeader& header = *response.getHeader();
    header.setDomainNumber(4, status);
    header.setCorrectionField(tTimeInterval::kMinScaled, status);
    header.setSourcePortIdentity(portOf(kMasterId, 1), status);
    header.setSequenceId(7, status);
    header.setLogMessageInterval(2, status);
    response.setReceiveTimestamp(tTimestamp(0x12345678, 1), status);
    response.setRequestingPortIdentity(portOf(kSlaveId, 2), status);
    EXPECT_EQ(serialized(response, status), kDelayRespBytes);
    EXPECT_EQ(status.getCode(), 0);

    std::unique_ptr<tDelayRespMessage> pResponse = parse<tDelayRespMessage>(kDelayRespBytes);
    ASSERT_NE(pResponse, nullptr);
    expectHeader(*pResponse->getHeader(), 9, 54, 4, portOf(kMasterId, 1), 7, 3, 2,
                 tTimeInterval::kMinScaled);
    EXPECT_EQ(pResponse->getReceiveTimestamp(), tTimestamp(0x12345678, 1));
    EXPECT_EQ(pResponse->getRequestingPortIdentity(), portOf(kSlaveId, 2));
}

TEST(DelayRespMessageTest, NewMessageAddressesAllPorts)
{
    tStatus status;
    tDelayRespMessage response(status);
    EXPECT_EQ(response.getRequestingPortIdentity(), tPortIdentity(kAllOnesClockIdentity, 0xFFFF));
}

TEST(DelayRespMessageTest, TraceIsExact)
{
    std::unique_ptr<tDelayRespMessage> pResponse = parse<tDelayRespMessage>(kDelayRespBytes);
    ASSERT_NE(pResponse, nullptr);
    EXPECT_EQ(traceText(*pResponse), "--- Begin Delay_Resp Message ---\n"
                                     "--- Begin Message Header ---\n"
                                     "transportSpecific: 0\n"
                                     "messageType: 0x9\n"
                                     "versionPTP: 2\n"
                                     "messageLength: 54\n"
                                     "domainNumber: 4\n"
                                     "alternateMasterFlag: FALSE\n"
                                     "twoStepFlag: FALSE\n"
                                     "unicastFlag: FALSE\n"
                                     "profileSpecific1: FALSE\n"
                                     "profileSpecific2: FALSE\n"
                                     "SECURE: FALSE\n"
                                     "leap61: FALSE\n"
                                     "leap59: FALSE\n"
                                     "currentUTCOffsetValid: FALSE\n"
                                     "ptpTimescale: FALSE\n"
                                     "timeTraceable: FALSE\n"
                                     "frequencyTraceable: FALSE\n"
                                     "correctionField: -9223372036854775808\n"
                                     "sourcePortIdentity: clockIdentity: 001b19fffe123456 "
                                     "portNumber: 1\n"
                                     "sequenceId: 7\n"
                                     "controlField: 3\n"
                                     "logMessageInterval: 2\n"
                                     "--- End Message Header ---\n"
                                     "receiveTimestamp: secondsField: 305419896 "
                                     "nanosecondsField: 1 requestingPortIdentity: clockIdentity: "
                                     "080027fffe010203 portNumber: 2\n"
                                     "--- End Delay_Resp Message ---\n");
}

// ---------------------------------------------------------------- Announce

TEST(AnnounceMessageTest, WireFormBothWays)
{
    tStatus status;
    tAnnounceMessage announce(status);
    tMessageHeader& header = *announce.getHeader();
    header.setDomainNumber(127, status);
    header.setFrequencyTraceable(true, status);
    header.setPtpTimescale(true, status);
    header.setCurrentUTCOffsetValid(true, status);
    header.setLeap61(true, status);
    header.setSourcePortIdentity(portOf(kGrandmasterId, 1), status);
    header.setSequenceId(0x1234, status);
    header.setLogMessageInterval(1, status);
    announce.setOriginTimestamp(tTimestamp(1600000000, 99999999), status);
    announce.setCurrentUTCOffset(37, status);
    announce.setGrandmasterPriority1(128, status);
    announce.setGrandmasterClockQuality(tClockQuality(6, 0x21, 0x4E5D), status);
    announce.setGrandmasterPriority2(255, status);
    announce.setGrandmasterIdentity(tClockIdentity(kGrandmasterId), status);
    announce.setStepsRemoved(258, status);
    announce.setTimeSource(0x20, status);
    EXPECT_EQ(serialized(announce, status), kAnnounceBytes);
    EXPECT_EQ(status.getCode(), 0);

    std::unique_ptr<tAnnounceMessage> pAnnounce = parse<tAnnounceMessage>(kAnnounceBytes);
    ASSERT_NE(pAnnounce, nullptr);
    expectHeader(*pAnnounce->getHeader(), 11, 64, 127, portOf(kGrandmasterId, 1), 0x1234, 5, 1, 0);
    expectFlags(*pAnnounce->getHeader(), false, true, false, true, true, false, true);
    EXPECT_EQ(pAnnounce->getOriginTimestamp(), tTimestamp(1600000000, 99999999));
    EXPECT_EQ(pAnnounce->getCurrentUTCOffset(), 37);
    EXPECT_EQ(pAnnounce->getGrandmasterPriority1(), 128);
    EXPECT_EQ(pAnnounce->getGrandmasterClockQuality(), tClockQuality(6, 0x21, 0x4E5D));
    EXPECT_EQ(pAnnounce->getGrandmasterPriority2(), 255);
    EXPECT_EQ(pAnnounce->getGrandmasterIdentity(), tClockIdentity(kGrandmasterId));
    EXPECT_EQ(pAnnounce->getStepsRemoved(), 258);
    EXPECT_EQ(pAnnounce->getTimeSource(), 0x20);
}

TEST(AnnounceMessageTest, DefaultsOnTheWire)
{
    tStatus status;
    tAnnounceMessage announce(status);
    const tBytes wire = serialized(announce, status);
    ASSERT_EQ(wire.size(), 64u);
    EXPECT_EQ(tBytes(wire.begin(), wire.begin() + 8),
              (tBytes{0x0B, 0x02, 0x00, 0x40, 0x00, 0x00, 0x00, 0x00}));
    // Body defaults: priority1 0, quality 187/0xFE/0xFFFF, priority2 0,
    // identity zero, stepsRemoved 0, timeSource 0xA0.
    EXPECT_EQ(tBytes(wire.begin() + 44, wire.end()),
              (tBytes{0x00, 0x00, 0x00, 0x00, 187, 0xFE, 0xFF, 0xFF, 0x00, 0,
                      0,    0,    0,    0,    0,   0,    0,    0x00, 0x00, 0xA0}));
}

TEST(AnnounceMessageTest, NegativeUTCOffsetTravelsAndTracesUnsigned)
{
    tStatus status;
    tAnnounceMessage announce(status);
    announce.setCurrentUTCOffset(-1, status);
    tBytes wire = serialized(announce, status);
    EXPECT_EQ(wire[44], 0xFF);
    EXPECT_EQ(wire[45], 0xFF);
    std::unique_ptr<tAnnounceMessage> pBack = parse<tAnnounceMessage>(wire);
    ASSERT_NE(pBack, nullptr);
    EXPECT_EQ(pBack->getCurrentUTCOffset(), -1);
    const std::string text = traceText(*pBack);
    EXPECT_NE(text.find("--- End Message Header ---\n"
                        "originTimestamp: secondsField: 0 nanosecondsField: 0\n"
                        "currentUTCOffset: 4294967295\n"
                        "timeSource: 160\n"
                        "stepsRemoved: 0\n"
                        "grandmasterIdentity: 0000000000000000\n"
                        "grandmasterClockQuality: clockClass: 187 clockAccuracy: 0xfe "
                        "offsetScaledLogVariance: 0xffff\n"
                        "grandmasterPriority1: 0\n"
                        "grandmasterPriority2: 0\n"
                        "--- End Announce Message ---\n"),
              std::string::npos)
        << text;
}

TEST(AnnounceMessageTest, Qualification)
{
    const tClockIdentity own(kSlaveId);
    std::unique_ptr<tAnnounceMessage> pAnnounce = parse<tAnnounceMessage>(kAnnounceBytes);
    ASSERT_NE(pAnnounce, nullptr);
    tStatus status;
    pAnnounce->setStepsRemoved(254, status);
    EXPECT_TRUE(pAnnounce->isQualified(own));
    pAnnounce->setStepsRemoved(255, status);
    EXPECT_FALSE(pAnnounce->isQualified(own));
    pAnnounce->setStepsRemoved(0xFFFF, status);
    EXPECT_FALSE(pAnnounce->isQualified(own));
    pAnnounce->setStepsRemoved(0, status);
    EXPECT_FALSE(pAnnounce->isQualified(tClockIdentity(kGrandmasterId)));

    tBytes alternate = kAnnounceBytes;
    alternate[6] |= 0x01; // alternateMasterFlag
    std::unique_ptr<tAnnounceMessage> pAlternate = parse<tAnnounceMessage>(alternate);
    ASSERT_NE(pAlternate, nullptr);
    EXPECT_TRUE(pAlternate->getHeader()->getAlternateMasterFlag());
    EXPECT_FALSE(pAlternate->isQualified(own));
}

// ---------------------------------------------------------------- Signaling

TEST(SignalingMessageTest, ParsesAndWritesBackTheWireForm)
{
    std::unique_ptr<tSignalingMessage> pSignaling = parse<tSignalingMessage>(kSignalingBytes);
    ASSERT_NE(pSignaling, nullptr);
    expectHeader(*pSignaling->getHeader(), 12, 44, 0, portOf(kSlaveId, 1), 9, 5, 127, 0);
    EXPECT_EQ(pSignaling->getTargetPortIdentity(), portOf(kMasterId, 1));
    tStatus status;
    EXPECT_EQ(serialized(*pSignaling, status), kSignalingBytes);
    const std::string text = traceText(*pSignaling);
    EXPECT_EQ(text.find("--- Begin Signaling Message ---\n"), 0u);
    EXPECT_NE(text.find("targetPortIdentity: clockIdentity: 001b19fffe123456 portNumber: 1\n"
                        "--- End Signaling Message ---\n"),
              std::string::npos);
}

// ---------------------------------------------------------------- framing

TEST(MessageFramingTest, MessageLengthCountsTheSuffixAndMatchesTheDatagram)
{
    tStatus status;
    tSyncMessage sync(status);
    auto pTLV = std::make_unique<tLXIConsortiumNotDefinedTLV>();
    pTLV->setData("abc", 3, status);
    sync.getSuffix()->addTLV(std::move(pTLV), status);
    const tBytes wire = serialized(sync, status);
    EXPECT_EQ(status.getCode(), 0);
    ASSERT_EQ(wire.size(), 44u + 13u);
    EXPECT_EQ(sync.getHeader()->getMessageLength(), 57);
    EXPECT_EQ(wire[2], 0x00);
    EXPECT_EQ(wire[3], 57);
    // clang-format off
    EXPECT_EQ(tBytes(wire.begin() + 44, wire.end()), (tBytes{
        0x00, 0x03,             // tlvType ORGANIZATION_EXTENSION
        0x00, 0x09,             // lengthField 9
        0x00, 0x21, 0xD6,       // organizationId LXI Consortium
        0xFF, 0xFF, 0xFF,       // organizationSubType NOT_DEFINED
        'a', 'b', 'c',          // data
    }));
    // clang-format on
}

TEST(MessageFramingTest, SetMessageTypeKeepsTheControlFieldInStep)
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

TEST(MessageFramingTest, AFatalStatusLeavesAnEmptyMessage)
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
    EXPECT_EQ(status.getCode(), nOrvTarn000::kStatusInternalError);
}

TEST(MessageFramingTest, AssignmentCopiesHeaderAndClonesTLVs)
{
    tStatus status;
    tSyncMessage source(status);
    source.getHeader()->setSequenceId(99, status);
    auto pTLV = std::make_unique<tLXIConsortiumNotDefinedTLV>();
    pTLV->setData("xy", 2, status);
    source.getSuffix()->addTLV(std::move(pTLV), status);

    tSyncMessage copy(status);
    copy = source;
    EXPECT_EQ(copy.getHeader()->getSequenceId(), 99);
    ASSERT_EQ(copy.getSuffix()->getTLVCount(), 1u);
    tTLV* pCopied = copy.getSuffix()->getTLV(0, status);
    EXPECT_NE(pCopied, source.getSuffix()->getTLV(0, status));
    EXPECT_EQ(serialized(copy, status), serialized(source, status));
}

} // namespace
