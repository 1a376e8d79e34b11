#pragma once
// Messages as their fields' values, for the message tests, the Wireshark
// cross-check and the message benchmarks: makeMessage builds one through the
// message classes as a sender does, and the samples pair one message of each
// kind with the bytes it has on the wire, written octet by octet from the
// field layout, and the trace of everything behind its header.
#include "orvptp/tAnnounceMessage.h"
#include "orvptp/tDelayReqMessage.h"
#include "orvptp/tDelayRespMessage.h"
#include "orvptp/tFollowUpMessage.h"
#include "orvptp/tLXIConsortiumNotDefinedTLV.h"
#include "orvptp/tOrganizationIdentifiers.h"
#include "orvptp/tSyncMessage.h"
#include "tWireTestSupport.h"

#include <memory>
#include <string>
#include <vector>

namespace nWireTest
{

using namespace nOrvPTP000;
using nOrvTarn000::tStatus;

const u8 kMasterId[8] = {0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56};
const u8 kSlaveId[8] = {0x08, 0x00, 0x27, 0xFF, 0xFE, 0x01, 0x02, 0x03};
const u8 kGrandmasterId[8] = {0x00, 0x1D, 0xC1, 0xFF, 0xFE, 0x0A, 0x0B, 0x0C};

// The header's flag word as the wire carries it, octet 6 high. The flags that
// this clock never sets (unicast, alternate master, profile bits, SECURE)
// have no place here.
enum : u16
{
    kTwoStep = 0x0200,
    kFrequencyTraceable = 0x0020,
    kTimeTraceable = 0x0010,
    kPtpTimescale = 0x0008,
    kUtcOffsetValid = 0x0004,
    kLeap59 = 0x0002,
    kLeap61 = 0x0001,
    kAllFlags = 0x023F
};

// An organisation extension; any identifiers go through the LXI class.
struct tTLVValues
{
    u32 organizationId;
    u32 organizationSubType;
    tBytes data;
};

struct tAnnounceBody
{
    i16 currentUTCOffset;
    u8 priority1;
    u8 clockClass;
    u8 clockAccuracy;
    u16 offsetScaledLogVariance;
    u8 priority2;
    const u8* pGrandmasterId;
    u16 stepsRemoved;
    u8 timeSource;
};

// What a sender puts into a message, in the order of its fields.
struct tMessageFields
{
    u8 messageType;
    u8 domainNumber;
    u16 flags;
    i64 correction;
    const u8* pClockId;
    u16 portNumber;
    u16 sequenceId;
    i8 logMessageInterval;
    u64 seconds; // the body's timestamp
    u32 nanoseconds;
    std::vector<tTLVValues> tlvs = {};
    const u8* pRequesterId = nullptr; // Delay_Resp
    u16 requesterPort = 0;
    tAnnounceBody announce = {}; // Announce
};

// A message of class tMessage whose body timestamp a_set sets to a_time.
template <typename tMessage>
std::unique_ptr<tPTPMessage> withTimestamp(void (tMessage::*a_set)(const tTimestamp&, tStatus&),
                                           const tTimestamp& a_time, tStatus& a_status)
{
    auto pMessage = std::make_unique<tMessage>(a_status);
    ((*pMessage).*a_set)(a_time, a_status);
    return pMessage;
}

inline std::unique_ptr<tPTPMessage> makeBody(const tMessageFields& a_fields, tStatus& a_status)
{
    const tTimestamp time(a_fields.seconds, a_fields.nanoseconds);
    switch (a_fields.messageType)
    {
    case kMessageTypeSync:
        return withTimestamp(&tSyncMessage::setOriginTimestamp, time, a_status);
    case kMessageTypeDelayReq:
        return withTimestamp(&tDelayReqMessage::setOriginTimestamp, time, a_status);
    case kMessageTypeFollowUp:
        return withTimestamp(&tFollowUpMessage::setPreciseOriginTimestamp, time, a_status);
    case kMessageTypeDelayResp:
    {
        auto pResponse = std::make_unique<tDelayRespMessage>(a_status);
        pResponse->setReceiveTimestamp(time, a_status);
        pResponse->setRequestingPortIdentity(
            tPortIdentity(tClockIdentity(a_fields.pRequesterId), a_fields.requesterPort), a_status);
        return pResponse;
    }
    case kMessageTypeAnnounce:
    {
        const tAnnounceBody& body = a_fields.announce;
        auto pAnnounce = std::make_unique<tAnnounceMessage>(a_status);
        pAnnounce->setOriginTimestamp(time, a_status);
        pAnnounce->setCurrentUTCOffset(body.currentUTCOffset, a_status);
        pAnnounce->setGrandmasterPriority1(body.priority1, a_status);
        pAnnounce->setGrandmasterClockQuality(
            tClockQuality(body.clockClass, body.clockAccuracy, body.offsetScaledLogVariance),
            a_status);
        pAnnounce->setGrandmasterPriority2(body.priority2, a_status);
        pAnnounce->setGrandmasterIdentity(tClockIdentity(body.pGrandmasterId), a_status);
        pAnnounce->setStepsRemoved(body.stepsRemoved, a_status);
        pAnnounce->setTimeSource(body.timeSource, a_status);
        return pAnnounce;
    }
    default:
        return nullptr; // a kind that is only received
    }
}

// The message as a sender builds it; null for a kind that is only received.
inline std::unique_ptr<tPTPMessage> makeMessage(const tMessageFields& a_fields, tStatus& a_status)
{
    std::unique_ptr<tPTPMessage> pMessage = makeBody(a_fields, a_status);
    if (pMessage == nullptr)
    {
        return nullptr;
    }
    tMessageHeader& header = *pMessage->getHeader();
    header.setDomainNumber(a_fields.domainNumber, a_status);
    header.setTwoStepFlag((a_fields.flags & kTwoStep) != 0, a_status);
    header.setFrequencyTraceable((a_fields.flags & kFrequencyTraceable) != 0, a_status);
    header.setTimeTraceable((a_fields.flags & kTimeTraceable) != 0, a_status);
    header.setPtpTimescale((a_fields.flags & kPtpTimescale) != 0, a_status);
    header.setCurrentUTCOffsetValid((a_fields.flags & kUtcOffsetValid) != 0, a_status);
    header.setLeap59((a_fields.flags & kLeap59) != 0, a_status);
    header.setLeap61((a_fields.flags & kLeap61) != 0, a_status);
    header.setCorrectionField(a_fields.correction, a_status);
    header.setSourcePortIdentity(
        tPortIdentity(tClockIdentity(a_fields.pClockId), a_fields.portNumber), a_status);
    header.setSequenceId(a_fields.sequenceId, a_status);
    header.setLogMessageInterval(a_fields.logMessageInterval, a_status);
    for (const tTLVValues& values : a_fields.tlvs)
    {
        auto pTLV = std::make_unique<tLXIConsortiumNotDefinedTLV>();
        pTLV->setOrganizationId(values.organizationId, a_status);
        pTLV->setOrganizationSubType(values.organizationSubType, a_status);
        if (!values.data.empty())
        {
            pTLV->setData(values.data.data(), static_cast<u16>(values.data.size()), a_status);
        }
        pMessage->getSuffix()->addTLV(std::move(pTLV), a_status);
    }
    return pMessage;
}

struct tMessageSample
{
    const char* m_name;
    tMessageFields m_fields;
    tBytes m_bytes;
    const char* m_beginTrace;
    const char* m_bodyTrace;
};

inline const std::vector<tMessageSample>& messageSamples()
{
    const tTLVValues lxiAbc = {kLXIConsortiumOrganizationId,
                               tLXIConsortiumNotDefinedTLV::kOrganizationSubType,
                               {'a', 'b', 'c'}};
    // clang-format off
    static const std::vector<tMessageSample> samples = {
        {"Sync",
         {kMessageTypeSync, 123, kAllFlags, -98304, kMasterId, 0xABCD, 0xBEEF, -3,
          0x876543210FEDull, 999999999},
         {0x00, 0x02, 0x00, 0x2C,                         // Sync, version 2, messageLength 44
          0x7B, 0x00, 0x02, 0x3F,                         // domain 123, reserved, every flag sent
          0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0x80, 0x00, // correctionField -1.5 ns
          0x00, 0x00, 0x00, 0x00,                         // reserved
          0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56, // sourcePortIdentity
          0xAB, 0xCD, 0xBE, 0xEF, 0x00, 0xFD,             // port, sequenceId, control 0, interval -3
          0x87, 0x65, 0x43, 0x21, 0x0F, 0xED,             // originTimestamp: 48-bit seconds
          0x3B, 0x9A, 0xC9, 0xFF},                        //   nanoseconds 999999999
         "--- Begin Sync Message ---\n",
         "originTimestamp: secondsField: 148868987686893 nanosecondsField: 999999999\n"
         "--- End Sync Message ---\n"},
        {"FollowUp",
         {kMessageTypeFollowUp, 0, 0, 0x0123456789ABCDEFll, kMasterId, 1, 65535, 0,
          0xFFFFFFFFFFFFull, 0},
         {0x08, 0x02, 0x00, 0x2C, 0x00, 0x00, 0x00, 0x00, // Follow_Up, length 44, no flags
          0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, // correctionField with a fraction
          0x00, 0x00, 0x00, 0x00,
          0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56,
          0x00, 0x01, 0xFF, 0xFF, 0x02, 0x00,             // port 1, sequenceId 65535, control 2
          0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,             // preciseOriginTimestamp 2^48 - 1 s
          0x00, 0x00, 0x00, 0x00},
         "--- Begin Follow_Up Message ---\n",
         "preciseOriginTimestamp: secondsField: 281474976710655 nanosecondsField: 0"
         "--- End Follow_Up Message ---\n"},
        {"DelayReq",
         {kMessageTypeDelayReq, 4, 0, 0, kSlaveId, 1, 7, 0x7F, 1, 500000000},
         {0x01, 0x02, 0x00, 0x2C, 0x04, 0x00, 0x00, 0x00, // Delay_Req, length 44, domain 4
          0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
          0x00, 0x00, 0x00, 0x00,
          0x08, 0x00, 0x27, 0xFF, 0xFE, 0x01, 0x02, 0x03,
          0x00, 0x01, 0x00, 0x07, 0x01, 0x7F,             // port 1, sequenceId 7, control 1, no interval
          0x00, 0x00, 0x00, 0x00, 0x00, 0x01,             // originTimestamp 1.5 s
          0x1D, 0xCD, 0x65, 0x00},
         "--- Begin Delay_Req Message ---\n",
         "originTimestamp: secondsField: 1 nanosecondsField: 500000000"
         "--- End Delay_Req Message ---\n"},
        {"DelayResp",
         {kMessageTypeDelayResp, 4, 0, tTimeInterval::kMinScaled, kMasterId, 1, 7, 2, 0x12345678,
          1, {}, kSlaveId, 2},
         {0x09, 0x02, 0x00, 0x36, 0x04, 0x00, 0x00, 0x00, // Delay_Resp, length 54, domain 4
          0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // correctionField: most negative
          0x00, 0x00, 0x00, 0x00,
          0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56,
          0x00, 0x01, 0x00, 0x07, 0x03, 0x02,             // port 1, sequenceId 7, control 3, interval 2
          0x00, 0x00, 0x12, 0x34, 0x56, 0x78,             // receiveTimestamp
          0x00, 0x00, 0x00, 0x01,
          0x08, 0x00, 0x27, 0xFF, 0xFE, 0x01, 0x02, 0x03, // requestingPortIdentity
          0x00, 0x02},
         "--- Begin Delay_Resp Message ---\n",
         "receiveTimestamp: secondsField: 305419896 nanosecondsField: 1 requestingPortIdentity: "
         "clockIdentity: 080027fffe010203 portNumber: 2\n--- End Delay_Resp Message ---\n"},
        {"Announce",
         {kMessageTypeAnnounce, 127, kAllFlags & ~kTwoStep & ~kTimeTraceable & ~kLeap59, 0,
          kGrandmasterId, 1, 0x1234, 1, 1600000000, 99999999, {}, nullptr, 0,
          {-1, 128, 6, 0x21, 0x4E5D, 255, kGrandmasterId, 258, 0x20}},
         {0x0B, 0x02, 0x00, 0x40, 0x7F, 0x00, 0x00, 0x2D, // Announce, length 64, domain 127, flags
          0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
          0x00, 0x00, 0x00, 0x00,
          0x00, 0x1D, 0xC1, 0xFF, 0xFE, 0x0A, 0x0B, 0x0C,
          0x00, 0x01, 0x12, 0x34, 0x05, 0x01,             // port 1, sequenceId 0x1234, control 5, interval 1
          0x00, 0x00, 0x5F, 0x5E, 0x10, 0x00,             // originTimestamp
          0x05, 0xF5, 0xE0, 0xFF,
          0xFF, 0xFF, 0x00, 0x80,                         // currentUTCOffset -1, reserved, priority1
          0x06, 0x21, 0x4E, 0x5D, 0xFF,                   // clockQuality, priority2
          0x00, 0x1D, 0xC1, 0xFF, 0xFE, 0x0A, 0x0B, 0x0C, // grandmasterIdentity
          0x01, 0x02, 0x20},                              // stepsRemoved 258, timeSource GPS
         "--- Begin Announce Message ---\n",
         "originTimestamp: secondsField: 1600000000 nanosecondsField: 99999999\n"
         "currentUTCOffset: 4294967295\ntimeSource: 32\nstepsRemoved: 258\n"
         "grandmasterIdentity: 001dc1fffe0a0b0c\ngrandmasterClockQuality: clockClass: 6 "
         "clockAccuracy: 0x21 offsetScaledLogVariance: 0x4e5d\ngrandmasterPriority1: 128\n"
         "grandmasterPriority2: 255\n--- End Announce Message ---\n"},
        // Only received: its values are in the bytes alone.
        {"Signaling",
         {kMessageTypeSignaling, 0, 0, 0, kSlaveId, 1, 9, 0x7F, 0, 0, {lxiAbc}},
         {0x0C, 0x02, 0x00, 0x39, 0x00, 0x00, 0x00, 0x00, // Signaling, length 44 + 13
          0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
          0x00, 0x00, 0x00, 0x00,
          0x08, 0x00, 0x27, 0xFF, 0xFE, 0x01, 0x02, 0x03,
          0x00, 0x01, 0x00, 0x09, 0x05, 0x7F,
          0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56, // targetPortIdentity
          0x00, 0x01,
          0x00, 0x03, 0x00, 0x09,                         // ORGANIZATION_EXTENSION, length 9
          0x00, 0x21, 0xD6, 0xFF, 0xFF, 0xFF,             // LXI Consortium, NOT_DEFINED
          'a', 'b', 'c'},                                 // odd length, no padding
         "--- Begin Signaling Message ---\n",
         "targetPortIdentity: clockIdentity: 001b19fffe123456 portNumber: 1\n--- Begin TLV 0 "
         "---tlvType 3 lengthField 9 LXI Consortium NOT_DEFINED TLV data field: abc\n--- End "
         "TLV 0 ------ End Signaling Message ---\n"},
    };
    // clang-format on
    return samples;
}

inline const tMessageSample& messageSample(const std::string& a_name)
{
    for (const tMessageSample& entry : messageSamples())
    {
        if (a_name == entry.m_name)
        {
            return entry;
        }
    }
    return messageSamples().front();
}

} // namespace nWireTest
