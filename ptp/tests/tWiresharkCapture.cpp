// Builds every message type that this clock sends, with the message classes
// and their serialiser, and writes them as a capture file of Ethernet, IPv4
// and UDP frames addressed as the clock addresses them. Beside the capture it
// writes, for each frame, the dissector fields and the values that were put
// into the message, so that an independent dissector can be checked against
// what the serialiser was asked to produce. wireshark_check.py runs both.
//
// The expected values are worked out here from the values given to the
// setters (the flag bits, the scaled correction, the lengths), never read back
// from the serialised bytes.
//
// Usage: orvptp_wireshark_capture [--pcap FILE] [--expect FILE] [--raw-dir DIR]
//   --pcap     the capture (Ethernet, IPv4, UDP to 224.0.1.129, ports 319/320)
//   --expect   the expected fields, one JSON object per frame in a JSON array
//   --raw-dir  each datagram as a file of its own (the fuzzer's seed corpus),
//              together with a few hand-made datagrams of kinds that are
//              received but never sent
#include "orvptp/tAnnounceMessage.h"
#include "orvptp/tDelayReqMessage.h"
#include "orvptp/tDelayRespMessage.h"
#include "orvptp/tFollowUpMessage.h"
#include "orvptp/tLXIConsortiumNotDefinedTLV.h"
#include "orvptp/tOrganizationIdentifiers.h"
#include "orvptp/tProtocolDataUnit.h"
#include "orvptp/tSyncMessage.h"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using namespace nOrvPTP000;
using nOrvTarn000::tStatus;

namespace
{

using tBytes = std::vector<u8>;

const u16 kEventPort = 319;
const u16 kGeneralPort = 320;
const u8 kGroupAddress[4] = {224, 0, 1, 129};
const u8 kGroupMac[6] = {0x01, 0x00, 0x5E, 0x00, 0x01, 0x81};
// A locally administered sender MAC and a documentation address.
const u8 kSourceMac[6] = {0x02, 0x00, 0x00, 0x00, 0x00, 0x01};
const u8 kSourceAddress[4] = {192, 0, 2, 1};
// Event messages of padded peers are filled with zeros up to this length.
const u32 kPaddedEventLength = 124;

const u8 kMasterId[8] = {0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56};
const u8 kSlaveId[8] = {0x08, 0x00, 0x27, 0xFF, 0xFE, 0x01, 0x02, 0x03};
const u8 kGrandmasterId[8] = {0x00, 0x1D, 0xC1, 0xFF, 0xFE, 0x0A, 0x0B, 0x0C};
const u8 kHighBitId[8] = {0xFF, 0xEE, 0xDD, 0xCC, 0xBB, 0xAA, 0x99, 0x88};

// ------------------------------------------------------------ expectations

// One frame: the datagram and the dissector fields it must show. Each field
// lists its values in the order of their occurrence in the frame; a value is
// JSON text (an integer, a real, or a quoted byte string "aa:bb").
struct tFrame
{
    std::string name;
    u16 udpPort;
    tBytes datagram;
    std::vector<std::pair<std::string, std::vector<std::string>>> fields;

    void expect(const std::string& a_field, const std::string& a_jsonValue)
    {
        for (auto& entry : fields)
        {
            if (entry.first == a_field)
            {
                entry.second.push_back(a_jsonValue);
                return;
            }
        }
        fields.push_back({a_field, {a_jsonValue}});
    }
    void expectInt(const std::string& a_field, long long a_value)
    {
        expect(a_field, std::to_string(a_value));
    }
    void expectUnsigned(const std::string& a_field, unsigned long long a_value)
    {
        expect(a_field, std::to_string(a_value));
    }
    void expectReal(const std::string& a_field, double a_value)
    {
        char text[64];
        std::snprintf(text, sizeof(text), "%.17g", a_value);
        expect(a_field, text);
    }
    void expectBytes(const std::string& a_field, const tBytes& a_bytes)
    {
        std::string text = "\"";
        char octet[4];
        for (size_t i = 0; i < a_bytes.size(); ++i)
        {
            std::snprintf(octet, sizeof(octet), i == 0 ? "%02x" : ":%02x", a_bytes[i]);
            text += octet;
        }
        expect(a_field, text + "\"");
    }
};

u64 identityNumber(const u8* a_pId)
{
    u64 value = 0;
    for (int i = 0; i < 8; ++i)
    {
        value = (value << 8) | a_pId[i];
    }
    return value;
}

// What a sender puts into a header. The flags are those that a message of
// this clock can carry; transportSpecific, unicast, alternate master, the
// profile bits and SECURE always leave as 0.
struct tHeaderValues
{
    u8 domainNumber = 0;
    bool twoStep = false;
    bool leap61 = false;
    bool leap59 = false;
    bool utcOffsetValid = false;
    bool ptpTimescale = false;
    bool timeTraceable = false;
    bool frequencyTraceable = false;
    i64 correction = 0;
    const u8* pClockId = kMasterId;
    u16 portNumber = 1;
    u16 sequenceId = 0;
    i8 logMessageInterval = 0x7F;
};

void applyHeader(tMessageHeader& a_header, const tHeaderValues& a_values, tStatus& a_status)
{
    a_header.setDomainNumber(a_values.domainNumber, a_status);
    a_header.setTwoStepFlag(a_values.twoStep, a_status);
    a_header.setLeap61(a_values.leap61, a_status);
    a_header.setLeap59(a_values.leap59, a_status);
    a_header.setCurrentUTCOffsetValid(a_values.utcOffsetValid, a_status);
    a_header.setPtpTimescale(a_values.ptpTimescale, a_status);
    a_header.setTimeTraceable(a_values.timeTraceable, a_status);
    a_header.setFrequencyTraceable(a_values.frequencyTraceable, a_status);
    a_header.setCorrectionField(a_values.correction, a_status);
    a_header.setSourcePortIdentity(
        tPortIdentity(tClockIdentity(a_values.pClockId), a_values.portNumber), a_status);
    a_header.setSequenceId(a_values.sequenceId, a_status);
    a_header.setLogMessageInterval(a_values.logMessageInterval, a_status);
}

// The header fields as the dissector shows them. a_messageLength counts
// header, body and TLVs, never padding.
void expectHeader(tFrame& a_frame, const tHeaderValues& a_values, u8 a_messageType,
                  u8 a_controlField, u32 a_messageLength)
{
    a_frame.expectInt("ptp.v2.majorsdoid", 0); // transportSpecific
    a_frame.expectInt("ptp.v2.messagetype", a_messageType);
    a_frame.expectInt("ptp.v2.minorversionptp", 0); // reserved nibble
    a_frame.expectInt("ptp.v2.versionptp", 2);
    a_frame.expectInt("ptp.v2.messagelength", a_messageLength);
    a_frame.expectInt("ptp.v2.domainnumber", a_values.domainNumber);
    a_frame.expectInt("ptp.v2.minorsdoid", 0); // reserved octet

    // The flag field, first octet bit 8 to last octet bit 0.
    const unsigned flags =
        (a_values.twoStep ? 0x0200u : 0u) | (a_values.frequencyTraceable ? 0x0020u : 0u) |
        (a_values.timeTraceable ? 0x0010u : 0u) | (a_values.ptpTimescale ? 0x0008u : 0u) |
        (a_values.utcOffsetValid ? 0x0004u : 0u) | (a_values.leap59 ? 0x0002u : 0u) |
        (a_values.leap61 ? 0x0001u : 0u);
    a_frame.expectInt("ptp.v2.flags", flags);
    a_frame.expectInt("ptp.v2.flags.security", 0);
    a_frame.expectInt("ptp.v2.flags.specific2", 0);
    a_frame.expectInt("ptp.v2.flags.specific1", 0);
    a_frame.expectInt("ptp.v2.flags.unicast", 0);
    a_frame.expectInt("ptp.v2.flags.twostep", a_values.twoStep);
    a_frame.expectInt("ptp.v2.flags.alternatemaster", 0);
    a_frame.expectInt("ptp.v2.flags.synchronizationUncertain", 0); // reserved bit
    a_frame.expectInt("ptp.v2.flags.frequencytraceable", a_values.frequencyTraceable);
    a_frame.expectInt("ptp.v2.flags.timetraceable", a_values.timeTraceable);
    a_frame.expectInt("ptp.v2.flags.timescale", a_values.ptpTimescale);
    a_frame.expectInt("ptp.v2.flags.utcreasonable", a_values.utcOffsetValid);
    a_frame.expectInt("ptp.v2.flags.li59", a_values.leap59);
    a_frame.expectInt("ptp.v2.flags.li61", a_values.leap61);

    // The dissector splits the scaled correction into whole nanoseconds,
    // rounded towards minus infinity, and a non-negative fraction.
    const i64 wholeNanoseconds = (a_values.correction >= 0)
                                     ? a_values.correction / 65536
                                     : -((-(a_values.correction + 1)) / 65536) - 1;
    const double fraction =
        static_cast<double>(a_values.correction - wholeNanoseconds * 65536) / 65536.0;
    a_frame.expectInt("ptp.v2.correction.ns", wholeNanoseconds);
    a_frame.expectReal("ptp.v2.correction.subns", fraction);

    a_frame.expectInt("ptp.v2.messagetypespecific", 0); // reserved octets
    a_frame.expectUnsigned("ptp.v2.clockidentity", identityNumber(a_values.pClockId));
    a_frame.expectInt("ptp.v2.sourceportid", a_values.portNumber);
    a_frame.expectInt("ptp.v2.sequenceid", a_values.sequenceId);
    a_frame.expectInt("ptp.v2.controlfield", a_controlField);
    a_frame.expectInt("ptp.v2.logmessageperiod", a_values.logMessageInterval);
}

void expectTimestamp(tFrame& a_frame, const std::string& a_prefix, u64 a_seconds, u32 a_nanoseconds)
{
    a_frame.expectUnsigned(a_prefix + ".seconds", a_seconds);
    a_frame.expectUnsigned(a_prefix + ".nanoseconds", a_nanoseconds);
}

// ------------------------------------------------------------ TLVs

// An organisation extension of another organisation than the LXI Consortium,
// so that the organisation-extension framing is seen with other identifiers
// and an arbitrary data field.
class tTestOrganizationTLV : public tOrganizationExtensionTLV
{
public:
    tTestOrganizationTLV(u32 a_organizationId, u32 a_organizationSubType, const tBytes& a_data)
        : tOrganizationExtensionTLV(a_organizationId, a_organizationSubType), m_data(a_data)
    {
        tStatus status;
        setLength(static_cast<u32>(m_data.size()), status, 1);
    }

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override
    {
        return tTLV::trace(a_trace);
    }
    std::unique_ptr<tTLV> clone(tStatus&) const override
    {
        return std::make_unique<tTestOrganizationTLV>(getOrganizationId(), getOrganizationSubType(),
                                                      m_data);
    }
    void deserializeOrganizationData(iSerializableTarget& a_target, tStatus& a_status) override
    {
        a_target.readOctets(m_data.data(), static_cast<u32>(m_data.size()), a_status);
    }
    void serializeOrganizationData(iSerializableTarget& a_target, tStatus& a_status) override
    {
        if (!m_data.empty())
        {
            a_target.writeOctets(m_data.data(), static_cast<u32>(m_data.size()), a_status);
        }
    }

private:
    tBytes m_data;
};

struct tTLVValues
{
    u32 organizationId;
    u32 organizationSubType;
    tBytes data;
};

// Appends the TLVs to the message's suffix and returns their length on the wire.
u32 addTLVs(tPTPMessage& a_message, const std::vector<tTLVValues>& a_tlvs, tStatus& a_status)
{
    u32 length = 0;
    for (const tTLVValues& values : a_tlvs)
    {
        if (values.organizationId == kLXIConsortiumOrganizationId &&
            values.organizationSubType == tLXIConsortiumNotDefinedTLV::kOrganizationSubType)
        {
            auto pTLV = std::make_unique<tLXIConsortiumNotDefinedTLV>();
            if (!values.data.empty())
            {
                pTLV->setData(values.data.data(), static_cast<u16>(values.data.size()), a_status);
            }
            a_message.getSuffix()->addTLV(std::move(pTLV), a_status);
        }
        else
        {
            a_message.getSuffix()->addTLV(
                std::make_unique<tTestOrganizationTLV>(values.organizationId,
                                                       values.organizationSubType, values.data),
                a_status);
        }
        // tlvType, lengthField, organizationId, organizationSubType, data.
        length += 2 + 2 + 3 + 3 + static_cast<u32>(values.data.size());
    }
    return length;
}

// The dissector shows the TLVs of Announce messages only.
void expectAnnounceTLVs(tFrame& a_frame, const std::vector<tTLVValues>& a_tlvs)
{
    for (const tTLVValues& values : a_tlvs)
    {
        a_frame.expectInt("ptp.v2.an.tlvType", 3); // ORGANIZATION_EXTENSION
        a_frame.expectInt("ptp.v2.an.lengthField", 6 + static_cast<long long>(values.data.size()));
        a_frame.expectUnsigned("ptp.v2.an.oe.organizationId", values.organizationId);
        a_frame.expectUnsigned("ptp.v2.an.oe.organizationSubType", values.organizationSubType);
        // An empty data field is shown as an empty one.
        a_frame.expectBytes("ptp.v2.an.oe.dataField", values.data);
    }
}

// ------------------------------------------------------------ messages

tBytes serialize(tPTPMessage& a_message, tStatus& a_status)
{
    tProtocolDataUnit unit(a_status);
    a_message.serialize(unit, a_status);
    if (a_status.isFatal())
    {
        return tBytes();
    }
    return tBytes(unit.getData(), unit.getData() + unit.getLength());
}

void padTo(tBytes& a_datagram, u32 a_length)
{
    if (a_datagram.size() < a_length)
    {
        a_datagram.resize(a_length, 0);
    }
}

enum class tTimestampKind
{
    kSync,
    kDelayReq,
    kFollowUp
};

tFrame timestampFrame(const std::string& a_name, tTimestampKind a_kind,
                      const tHeaderValues& a_header, u64 a_seconds, u32 a_nanoseconds,
                      const std::vector<tTLVValues>& a_tlvs, u32 a_padTo, tStatus& a_status)
{
    tFrame frame;
    frame.name = a_name;
    u8 messageType = 0;
    u8 controlField = 0;
    std::string timestampField;
    tBytes datagram;
    u32 tlvLength = 0;
    switch (a_kind)
    {
    case tTimestampKind::kSync:
    {
        tSyncMessage message(a_status);
        applyHeader(*message.getHeader(), a_header, a_status);
        message.setOriginTimestamp(tTimestamp(a_seconds, a_nanoseconds), a_status);
        tlvLength = addTLVs(message, a_tlvs, a_status);
        datagram = serialize(message, a_status);
        messageType = 0;
        controlField = 0;
        timestampField = "ptp.v2.sdr.origintimestamp";
        frame.udpPort = kEventPort;
        break;
    }
    case tTimestampKind::kDelayReq:
    {
        tDelayReqMessage message(a_status);
        applyHeader(*message.getHeader(), a_header, a_status);
        message.setOriginTimestamp(tTimestamp(a_seconds, a_nanoseconds), a_status);
        tlvLength = addTLVs(message, a_tlvs, a_status);
        datagram = serialize(message, a_status);
        messageType = 1;
        controlField = 1;
        timestampField = "ptp.v2.sdr.origintimestamp";
        frame.udpPort = kEventPort;
        break;
    }
    case tTimestampKind::kFollowUp:
    {
        tFollowUpMessage message(a_status);
        applyHeader(*message.getHeader(), a_header, a_status);
        message.setPreciseOriginTimestamp(tTimestamp(a_seconds, a_nanoseconds), a_status);
        tlvLength = addTLVs(message, a_tlvs, a_status);
        datagram = serialize(message, a_status);
        messageType = 8;
        controlField = 2;
        timestampField = "ptp.v2.fu.preciseorigintimestamp";
        frame.udpPort = kGeneralPort;
        break;
    }
    }
    padTo(datagram, a_padTo);
    frame.datagram = datagram;
    expectHeader(frame, a_header, messageType, controlField, 44 + tlvLength);
    expectTimestamp(frame, timestampField, a_seconds & 0xFFFFFFFFFFFFull, a_nanoseconds);
    return frame;
}

tFrame delayRespFrame(const std::string& a_name, const tHeaderValues& a_header, u64 a_seconds,
                      u32 a_nanoseconds, const u8* a_pRequesterId, u16 a_requesterPort,
                      const std::vector<tTLVValues>& a_tlvs, tStatus& a_status)
{
    tFrame frame;
    frame.name = a_name;
    frame.udpPort = kGeneralPort;
    tDelayRespMessage message(a_status);
    applyHeader(*message.getHeader(), a_header, a_status);
    message.setReceiveTimestamp(tTimestamp(a_seconds, a_nanoseconds), a_status);
    message.setRequestingPortIdentity(
        tPortIdentity(tClockIdentity(a_pRequesterId), a_requesterPort), a_status);
    const u32 tlvLength = addTLVs(message, a_tlvs, a_status);
    frame.datagram = serialize(message, a_status);
    expectHeader(frame, a_header, 9, 3, 54 + tlvLength);
    expectTimestamp(frame, "ptp.v2.dr.receivetimestamp", a_seconds, a_nanoseconds);
    frame.expectUnsigned("ptp.v2.dr.requestingsourceportidentity", identityNumber(a_pRequesterId));
    frame.expectInt("ptp.v2.dr.requestingsourceportid", a_requesterPort);
    return frame;
}

struct tAnnounceValues
{
    u64 seconds = 0;
    u32 nanoseconds = 0;
    i16 currentUTCOffset = 0;
    u8 priority1 = 0;
    u8 clockClass = 187;
    u8 clockAccuracy = 0xFE;
    u16 offsetScaledLogVariance = 0xFFFF;
    u8 priority2 = 0;
    const u8* pGrandmasterId = kGrandmasterId;
    u16 stepsRemoved = 0;
    u8 timeSource = 0xA0;
};

tFrame announceFrame(const std::string& a_name, const tHeaderValues& a_header,
                     const tAnnounceValues& a_body, const std::vector<tTLVValues>& a_tlvs,
                     tStatus& a_status)
{
    tFrame frame;
    frame.name = a_name;
    frame.udpPort = kGeneralPort;
    tAnnounceMessage message(a_status);
    applyHeader(*message.getHeader(), a_header, a_status);
    message.setOriginTimestamp(tTimestamp(a_body.seconds, a_body.nanoseconds), a_status);
    message.setCurrentUTCOffset(a_body.currentUTCOffset, a_status);
    message.setGrandmasterPriority1(a_body.priority1, a_status);
    message.setGrandmasterClockQuality(
        tClockQuality(a_body.clockClass, a_body.clockAccuracy, a_body.offsetScaledLogVariance),
        a_status);
    message.setGrandmasterPriority2(a_body.priority2, a_status);
    message.setGrandmasterIdentity(tClockIdentity(a_body.pGrandmasterId), a_status);
    message.setStepsRemoved(a_body.stepsRemoved, a_status);
    message.setTimeSource(a_body.timeSource, a_status);
    const u32 tlvLength = addTLVs(message, a_tlvs, a_status);
    frame.datagram = serialize(message, a_status);
    expectHeader(frame, a_header, 11, 5, 64 + tlvLength);
    expectTimestamp(frame, "ptp.v2.an.origintimestamp", a_body.seconds, a_body.nanoseconds);
    frame.expectInt("ptp.v2.an.origincurrentutcoffset", a_body.currentUTCOffset);
    frame.expectInt("ptp.v2.an.priority1", a_body.priority1);
    frame.expectInt("ptp.v2.an.grandmasterclockclass", a_body.clockClass);
    frame.expectInt("ptp.v2.an.grandmasterclockaccuracy", a_body.clockAccuracy);
    frame.expectInt("ptp.v2.an.grandmasterclockvariance", a_body.offsetScaledLogVariance);
    frame.expectInt("ptp.v2.an.priority2", a_body.priority2);
    frame.expectUnsigned("ptp.v2.an.grandmasterclockidentity",
                         identityNumber(a_body.pGrandmasterId));
    frame.expectInt("ptp.v2.an.localstepsremoved", a_body.stepsRemoved);
    frame.expectInt("ptp.v2.timesource", a_body.timeSource);
    expectAnnounceTLVs(frame, a_tlvs);
    return frame;
}

tHeaderValues allFlags(tHeaderValues a_values)
{
    a_values.twoStep = true;
    a_values.leap61 = true;
    a_values.leap59 = true;
    a_values.utcOffsetValid = true;
    a_values.ptpTimescale = true;
    a_values.timeTraceable = true;
    a_values.frequencyTraceable = true;
    return a_values;
}

const i64 kMostNegativeCorrection = static_cast<i64>(0x8000000000000000ull);
const i64 kMostPositiveCorrection = 0x7FFFFFFFFFFFFFFFll;

std::vector<tFrame> buildFrames(tStatus& a_status)
{
    const tTLVValues lxiFourOctets = {kLXIConsortiumOrganizationId,
                                      tLXIConsortiumNotDefinedTLV::kOrganizationSubType,
                                      {0xDE, 0xAD, 0xBE, 0xEF}};
    const tTLVValues lxiEmpty = {
        kLXIConsortiumOrganizationId, tLXIConsortiumNotDefinedTLV::kOrganizationSubType, {}};
    const tTLVValues ownExtension = {
        kOrvOrganizationId, 0x000001, {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08}};
    const tTLVValues highOrganization = {0xFEDCBA, 0xABCDEF, {0x80, 0x00}};
    const tTLVValues lxiOddLength = {kLXIConsortiumOrganizationId,
                                     tLXIConsortiumNotDefinedTLV::kOrganizationSubType,
                                     {'a', 'b', 'c'}};

    std::vector<tFrame> frames;
    tHeaderValues header;

    // Sync: two-step with every flag that a message can carry, a negative
    // fractional correction (-1.5 ns), a 48-bit seconds field.
    header = allFlags(tHeaderValues());
    header.domainNumber = 123;
    header.correction = -98304;
    header.portNumber = 0xABCD;
    header.sequenceId = 0xBEEF;
    header.logMessageInterval = -3;
    frames.push_back(timestampFrame("sync-two-step-all-flags", tTimestampKind::kSync, header,
                                    0x876543210FEDull, 999999999, {}, 0, a_status));

    // Sync: one-step, no flags, a positive correction with a fraction, all-zero time.
    header = tHeaderValues();
    header.correction = 0x0123456789ABCDEFll;
    header.sequenceId = 0;
    header.logMessageInterval = 0;
    frames.push_back(
        timestampFrame("sync-one-step", tTimestampKind::kSync, header, 0, 0, {}, 0, a_status));

    // Sync padded with zeros to the legacy event length.
    header = tHeaderValues();
    header.domainNumber = 1;
    header.correction = -1;
    header.sequenceId = 1;
    header.logMessageInterval = 1;
    frames.push_back(timestampFrame("sync-padded", tTimestampKind::kSync, header, 1600000000,
                                    123456789, {}, kPaddedEventLength, a_status));

    // Sync with a TLV: the dissector shows only the length that includes it.
    header = tHeaderValues();
    header.twoStep = true;
    header.sequenceId = 2;
    frames.push_back(timestampFrame("sync-lxi-tlv", tTimestampKind::kSync, header, 42, 7,
                                    {lxiFourOctets}, 0, a_status));

    // Follow_Up: largest sequenceId and seconds, most negative correction.
    header = tHeaderValues();
    header.correction = kMostNegativeCorrection;
    header.sequenceId = 0xFFFF;
    header.logMessageInterval = 0;
    frames.push_back(timestampFrame("follow-up-extremes", tTimestampKind::kFollowUp, header,
                                    0xFFFFFFFFFFFFull, 0, {}, 0, a_status));

    // Follow_Up with a small positive fraction and a TLV.
    header = tHeaderValues();
    header.correction = 1;
    header.sequenceId = 0x8000;
    header.logMessageInterval = -7;
    header.pClockId = kHighBitId;
    header.portNumber = 0xFFFF;
    frames.push_back(timestampFrame("follow-up-tlv", tTimestampKind::kFollowUp, header,
                                    0x0000800000000000ull, 500000000, {ownExtension}, 0, a_status));

    // Delay_Req as sent: no interval, padded to the legacy event length.
    header = tHeaderValues();
    header.domainNumber = 4;
    header.pClockId = kSlaveId;
    header.sequenceId = 7;
    frames.push_back(timestampFrame("delay-req-padded", tTimestampKind::kDelayReq, header, 1,
                                    500000000, {}, kPaddedEventLength, a_status));

    // Delay_Req unpadded, with a correction of -1/65536 ns.
    header = tHeaderValues();
    header.domainNumber = 255;
    header.pClockId = kSlaveId;
    header.portNumber = 2;
    header.correction = -1;
    header.sequenceId = 0xFFFE;
    frames.push_back(timestampFrame("delay-req", tTimestampKind::kDelayReq, header, 0x123456789ull,
                                    1, {}, 0, a_status));

    // Delay_Resp carrying the request's correction (most negative) and identity.
    header = tHeaderValues();
    header.domainNumber = 4;
    header.correction = kMostNegativeCorrection;
    header.sequenceId = 7;
    header.logMessageInterval = 2;
    frames.push_back(delayRespFrame("delay-resp", header, 0x123456789ABCull, 999999999, kSlaveId, 2,
                                    {}, a_status));

    // Delay_Resp with the most positive correction and a TLV.
    header = tHeaderValues();
    header.correction = kMostPositiveCorrection;
    header.sequenceId = 0xFFFE;
    header.logMessageInterval = -4;
    frames.push_back(delayRespFrame("delay-resp-tlv", header, 5, 6, kHighBitId, 0xFFFF,
                                    {lxiFourOctets}, a_status));

    // Announce with every flag an Announce carries and no default values.
    header = allFlags(tHeaderValues());
    header.twoStep = false;
    header.domainNumber = 127;
    header.pClockId = kGrandmasterId;
    header.sequenceId = 0x1234;
    header.logMessageInterval = 1;
    tAnnounceValues body;
    body.seconds = 1600000000;
    body.nanoseconds = 99999999;
    body.currentUTCOffset = 37;
    body.priority1 = 128;
    body.clockClass = 6;
    body.clockAccuracy = 0x21;
    body.offsetScaledLogVariance = 0x4E5D;
    body.priority2 = 255;
    body.stepsRemoved = 258;
    body.timeSource = 0x20;
    frames.push_back(announceFrame("announce-all-fields", header, body, {}, a_status));

    // Announce with the defaults of a message for sending, a negative offset,
    // a 48-bit time and an unlisted time source.
    header = tHeaderValues();
    header.leap59 = true;
    header.sequenceId = 0xFFFF;
    header.logMessageInterval = -2;
    body = tAnnounceValues();
    body.seconds = 0xFFFFFFFFFFFFull;
    body.nanoseconds = 999999999;
    body.currentUTCOffset = -1;
    body.pGrandmasterId = kHighBitId;
    body.stepsRemoved = 0xFFFF;
    body.timeSource = 0xFF;
    frames.push_back(announceFrame("announce-defaults", header, body, {}, a_status));

    // Announce with one LXI TLV.
    header = tHeaderValues();
    header.ptpTimescale = true;
    header.sequenceId = 3;
    header.logMessageInterval = 1;
    body = tAnnounceValues();
    body.seconds = 1700000000;
    body.nanoseconds = 1;
    body.currentUTCOffset = 37;
    body.priority1 = 1;
    body.priority2 = 2;
    body.clockClass = 248;
    body.clockAccuracy = 0x31;
    body.offsetScaledLogVariance = 0x8000;
    frames.push_back(announceFrame("announce-lxi-tlv", header, body, {lxiFourOctets}, a_status));

    // Announce with four organisation extensions: an empty LXI one, one of
    // odd length (not padded: the data travel as given), one of this product's
    // organisation and one of a made-up organisation.
    header.sequenceId = 4;
    frames.push_back(announceFrame("announce-four-tlvs", header, body,
                                   {lxiEmpty, lxiOddLength, ownExtension, highOrganization},
                                   a_status));
    return frames;
}

// Datagrams that this clock receives but never sends, for the seed corpus.
std::vector<std::pair<std::string, tBytes>> handMadeSeeds()
{
    // clang-format off
    const tBytes signaling = {
        0x0C, 0x02, 0x00, 0x3A,                         // Signaling, version 2, length 58
        0x00, 0x00, 0x00, 0x00,                         // domainNumber, reserved, flags
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // correctionField
        0x00, 0x00, 0x00, 0x00,                         // reserved
        0x08, 0x00, 0x27, 0xFF, 0xFE, 0x01, 0x02, 0x03, // sourcePortIdentity.clockIdentity
        0x00, 0x01, 0x00, 0x09, 0x05, 0x7F,             // port, sequenceId, control, interval
        0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56, // targetPortIdentity.clockIdentity
        0x00, 0x01,                                     // targetPortIdentity.portNumber
        0x00, 0x03, 0x00, 0x0A,                         // ORGANIZATION_EXTENSION, length 10
        0x00, 0x21, 0xD6, 0xFF, 0xFF, 0xFF,             // LXI Consortium, NOT_DEFINED
        0x61, 0x62, 0x63, 0x64,                         // data
    };
    const tBytes syncUnknownTLVs = {
        0x00, 0x02, 0x00, 0x2C,                         // Sync, version 2, length 44
        0x00, 0x00, 0x02, 0x00,                         // domainNumber, reserved, flags
        0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, // correctionField
        0x00, 0x00, 0x00, 0x00,                         // reserved
        0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56, // sourcePortIdentity.clockIdentity
        0x00, 0x01, 0x00, 0x05, 0x00, 0x00,             // port, sequenceId, control, interval
        0x00, 0x00, 0x00, 0x00, 0x00, 0x0A,             // originTimestamp.secondsField
        0x00, 0x00, 0x00, 0x0B,                         // originTimestamp.nanosecondsField
        0x7F, 0xFF, 0x00, 0x04, 0xDE, 0xAD, 0xBE, 0xEF, // unknown TLV, skipped by its length
        0x00, 0x03, 0x00, 0x08,                         // ORGANIZATION_EXTENSION, length 8
        0x00, 0xA0, 0xC5, 0x00, 0x00, 0x01,             // unsupported organisation subtype
        0x00, 0x00,                                     // data, read as the next TLV
        0x00, 0x01, 0x00, 0x02, 0x00, 0x00,             // a management TLV
    };
    // clang-format on
    return {{"signaling-lxi-tlv", signaling}, {"sync-unknown-tlvs", syncUnknownTLVs}};
}

// ------------------------------------------------------------ output

void putLE16(tBytes& a_out, u16 a_value)
{
    a_out.push_back(static_cast<u8>(a_value));
    a_out.push_back(static_cast<u8>(a_value >> 8));
}

void putLE32(tBytes& a_out, u32 a_value)
{
    for (int i = 0; i < 4; ++i)
    {
        a_out.push_back(static_cast<u8>(a_value >> (8 * i)));
    }
}

void putBE16(tBytes& a_out, u16 a_value)
{
    a_out.push_back(static_cast<u8>(a_value >> 8));
    a_out.push_back(static_cast<u8>(a_value));
}

// The one's complement sum over the bytes, as IPv4 header checksums use it.
u16 internetChecksum(const u8* a_pBytes, size_t a_length)
{
    u32 sum = 0;
    for (size_t i = 0; i + 1 < a_length; i += 2)
    {
        sum += (static_cast<u32>(a_pBytes[i]) << 8) | a_pBytes[i + 1];
    }
    if (a_length % 2 != 0)
    {
        sum += static_cast<u32>(a_pBytes[a_length - 1]) << 8;
    }
    while ((sum >> 16) != 0)
    {
        sum = (sum & 0xFFFF) + (sum >> 16);
    }
    return static_cast<u16>(~sum);
}

// Ethernet II, IPv4 without options (TTL 1, as the clock sends by default),
// UDP with no checksum.
tBytes ethernetFrame(const tFrame& a_frame, u16 a_ipIdentification)
{
    tBytes out(kGroupMac, kGroupMac + 6);
    out.insert(out.end(), kSourceMac, kSourceMac + 6);
    putBE16(out, 0x0800);

    const size_t ipStart = out.size();
    const u16 udpLength = static_cast<u16>(8 + a_frame.datagram.size());
    out.push_back(0x45); // version 4, header of 5 words
    out.push_back(0x00); // DSCP, ECN
    putBE16(out, static_cast<u16>(20 + udpLength));
    putBE16(out, a_ipIdentification);
    putBE16(out, 0x0000); // flags, fragment offset
    out.push_back(1);     // TTL
    out.push_back(17);    // UDP
    putBE16(out, 0x0000); // checksum, filled in below
    out.insert(out.end(), kSourceAddress, kSourceAddress + 4);
    out.insert(out.end(), kGroupAddress, kGroupAddress + 4);
    const u16 checksum = internetChecksum(out.data() + ipStart, 20);
    out[ipStart + 10] = static_cast<u8>(checksum >> 8);
    out[ipStart + 11] = static_cast<u8>(checksum);

    putBE16(out, a_frame.udpPort);
    putBE16(out, a_frame.udpPort);
    putBE16(out, udpLength);
    putBE16(out, 0x0000); // no checksum
    out.insert(out.end(), a_frame.datagram.begin(), a_frame.datagram.end());
    return out;
}

bool writeFile(const std::string& a_path, const tBytes& a_bytes)
{
    std::ofstream file(a_path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(a_bytes.data()),
               static_cast<std::streamsize>(a_bytes.size()));
    file.close();
    if (!file)
    {
        std::cerr << "cannot write " << a_path << "\n";
        return false;
    }
    return true;
}

bool writeCapture(const std::string& a_path, const std::vector<tFrame>& a_frames)
{
    tBytes out;
    putLE32(out, 0xA1B2C3D4); // microsecond timestamps, written little-endian
    putLE16(out, 2);
    putLE16(out, 4);
    putLE32(out, 0);     // GMT offset
    putLE32(out, 0);     // accuracy
    putLE32(out, 65535); // snap length
    putLE32(out, 1);     // Ethernet
    u32 seconds = 1700000000;
    u16 identification = 0x4000;
    for (const tFrame& frame : a_frames)
    {
        const tBytes packet = ethernetFrame(frame, identification++);
        putLE32(out, seconds++);
        putLE32(out, 0);
        putLE32(out, static_cast<u32>(packet.size()));
        putLE32(out, static_cast<u32>(packet.size()));
        out.insert(out.end(), packet.begin(), packet.end());
    }
    return writeFile(a_path, out);
}

std::string jsonString(const std::string& a_text)
{
    std::string out = "\"";
    for (char c : a_text)
    {
        if (c == '"' || c == '\\')
        {
            out += '\\';
        }
        out += c;
    }
    return out + "\"";
}

bool writeExpectations(const std::string& a_path, const std::vector<tFrame>& a_frames)
{
    std::ostringstream out;
    out << "[\n";
    for (size_t i = 0; i < a_frames.size(); ++i)
    {
        const tFrame& frame = a_frames[i];
        out << "  {\"name\": " << jsonString(frame.name) << ", \"udpPort\": " << frame.udpPort
            << ", \"datagramLength\": " << frame.datagram.size() << ",\n   \"fields\": {";
        for (size_t f = 0; f < frame.fields.size(); ++f)
        {
            out << (f == 0 ? "\n" : ",\n") << "     " << jsonString(frame.fields[f].first) << ": [";
            for (size_t v = 0; v < frame.fields[f].second.size(); ++v)
            {
                out << (v == 0 ? "" : ", ") << frame.fields[f].second[v];
            }
            out << "]";
        }
        out << "}}" << (i + 1 < a_frames.size() ? "," : "") << "\n";
    }
    out << "]\n";
    const std::string text = out.str();
    return writeFile(a_path, tBytes(text.begin(), text.end()));
}

} // namespace

int main(int argc, char** argv)
{
    std::string pcapPath;
    std::string expectPath;
    std::string rawDir;
    for (int i = 1; i < argc; ++i)
    {
        const std::string argument = argv[i];
        if (i + 1 < argc && argument == "--pcap")
        {
            pcapPath = argv[++i];
        }
        else if (i + 1 < argc && argument == "--expect")
        {
            expectPath = argv[++i];
        }
        else if (i + 1 < argc && argument == "--raw-dir")
        {
            rawDir = argv[++i];
        }
        else
        {
            std::cerr << "usage: " << argv[0] << " [--pcap FILE] [--expect FILE] [--raw-dir DIR]\n";
            return 2;
        }
    }

    tStatus status;
    const std::vector<tFrame> frames = buildFrames(status);
    if (status.isFatal())
    {
        std::cerr << "building the messages failed with status " << status.getCode() << " at "
                  << status.getFile() << ":" << status.getLine() << "\n";
        return 1;
    }

    bool ok = true;
    if (!pcapPath.empty())
    {
        ok = writeCapture(pcapPath, frames) && ok;
    }
    if (!expectPath.empty())
    {
        ok = writeExpectations(expectPath, frames) && ok;
    }
    if (!rawDir.empty())
    {
        for (const tFrame& frame : frames)
        {
            ok = writeFile(rawDir + "/" + frame.name + ".bin", frame.datagram) && ok;
        }
        for (const auto& seed : handMadeSeeds())
        {
            ok = writeFile(rawDir + "/" + seed.first + ".bin", seed.second) && ok;
        }
    }
    std::cout << frames.size() << " messages written\n";
    return ok ? 0 : 1;
}
