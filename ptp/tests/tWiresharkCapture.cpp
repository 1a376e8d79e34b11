// Builds every message type that this clock sends, with the message classes
// and their serialiser, and writes, for each, the datagram together with the
// dissector fields and the values that were put into the message, so that an
// independent dissector can be checked against what the serialiser was asked
// to produce. wireshark_check.py frames the datagrams into a capture, runs
// tshark on it and compares.
//
// The expected values are worked out here from the values of the frame table
// (the flag word, the scaled correction, the lengths), never read back from
// the serialised bytes.
//
// Management frames are the responses of a clock of known state to a GET of
// every managementId that GET reads, and one refusal (tManagementSamples.h).
//
// Usage: orvptp_wireshark_capture [--expect FILE] [--raw-dir DIR]
//   --expect   one JSON object per frame in a JSON array: name, UDP port,
//              datagram and the expected fields
//   --raw-dir  each datagram as a file of its own (the fuzzer's seed corpus),
//              and a management request of every managementId and action
#include "tManagementSamples.h"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using namespace nWireTest;

namespace
{

const u16 kEventPort = 319;
const u16 kGeneralPort = 320;
// Event messages of padded peers are filled with zeros up to this length.
const u32 kPadded = 124;
const u8 kHighBitId[8] = {0xFF, 0xEE, 0xDD, 0xCC, 0xBB, 0xAA, 0x99, 0x88};

const i64 kMostNegative = static_cast<i64>(0x8000000000000000ull);
const i64 kMostPositive = 0x7FFFFFFFFFFFFFFFll;

// One frame: the message and the zeros that pad it.
struct tFrameFields
{
    const char* name;
    u32 padTo;
    tMessageFields message;
};

std::vector<tFrameFields> frameFields()
{
    const u32 lxi = kLXIConsortiumOrganizationId;
    const u32 notDefined = tLXIConsortiumNotDefinedTLV::kOrganizationSubType;
    const tTLVValues lxiFourOctets = {lxi, notDefined, {0xDE, 0xAD, 0xBE, 0xEF}};
    const tTLVValues ownExtension = {kOrvOrganizationId, 0x000001, {1, 2, 3, 4, 5, 6, 7, 8}};
    // An empty LXI extension, one of odd length (not padded: the data travel
    // as given), one of this product's organisation and one made up.
    const std::vector<tTLVValues> fourTLVs = {{lxi, notDefined, {}},
                                              {lxi, notDefined, {'a', 'b', 'c'}},
                                              ownExtension,
                                              {0xFEDCBA, 0xABCDEF, {0x80, 0x00}}};
    const tAnnounceBody allFields = {37, 128, 6, 0x21, 0x4E5D, 255, kGrandmasterId, 258, 0x20};
    // A sending message's defaults, a negative offset and an unlisted source.
    const tAnnounceBody defaults = {-1, 0, 187, 0xFE, 0xFFFF, 0, kHighBitId, 0xFFFF, 0xFF};
    const tAnnounceBody listed = {37, 1, 248, 0x31, 0x8000, 2, kGrandmasterId, 0, 0xA0};
    const u8 sync = kMessageTypeSync;
    const u8 followUp = kMessageTypeFollowUp;
    const u8 delayReq = kMessageTypeDelayReq;
    const u8 delayResp = kMessageTypeDelayResp;
    const u8 announce = kMessageTypeAnnounce;
    // clang-format off
    return {
        // A negative fractional correction (-1.5 ns) and a 48-bit seconds field.
        {"sync-two-step-all-flags", 0, {sync, 123, kAllFlags, -98304, kMasterId, 0xABCD, 0xBEEF,
         -3, 0x876543210FEDull, 999999999}},
        {"sync-one-step", 0, {sync, 0, 0, 0x0123456789ABCDEFll, kMasterId, 1, 0, 0, 0, 0}},
        {"sync-padded", kPadded, {sync, 1, 0, -1, kMasterId, 1, 1, 1, 1600000000, 123456789}},
        // The dissector shows a Sync's TLV only in the length that includes it.
        {"sync-lxi-tlv", 0, {sync, 0, kTwoStep, 0, kMasterId, 1, 2, 0x7F, 42, 7, {lxiFourOctets}}},
        {"follow-up-extremes", 0, {followUp, 0, 0, kMostNegative, kMasterId, 1, 0xFFFF, 0,
         0xFFFFFFFFFFFFull, 0}},
        {"follow-up-tlv", 0, {followUp, 0, 0, 1, kHighBitId, 0xFFFF, 0x8000, -7,
         0x0000800000000000ull, 500000000, {ownExtension}}},
        {"delay-req-padded", kPadded, {delayReq, 4, 0, 0, kSlaveId, 1, 7, 0x7F, 1, 500000000}},
        {"delay-req", 0, {delayReq, 255, 0, -1, kSlaveId, 2, 0xFFFE, 0x7F, 0x123456789ull, 1}},
        {"delay-resp", 0, {delayResp, 4, 0, kMostNegative, kMasterId, 1, 7, 2, 0x123456789ABCull,
         999999999, {}, kSlaveId, 2}},
        {"delay-resp-tlv", 0, {delayResp, 0, 0, kMostPositive, kMasterId, 1, 0xFFFE, -4, 5, 6,
         {lxiFourOctets}, kHighBitId, 0xFFFF}},
        {"announce-all-fields", 0, {announce, 127, kAllFlags & ~kTwoStep, 0, kGrandmasterId, 1,
         0x1234, 1, 1600000000, 99999999, {}, nullptr, 0, allFields}},
        {"announce-defaults", 0, {announce, 0, kLeap59, 0, kMasterId, 1, 0xFFFF, -2,
         0xFFFFFFFFFFFFull, 999999999, {}, nullptr, 0, defaults}},
        {"announce-lxi-tlv", 0, {announce, 0, kPtpTimescale, 0, kMasterId, 1, 3, 1, 1700000000, 1,
         {lxiFourOctets}, nullptr, 0, listed}},
        {"announce-four-tlvs", 0, {announce, 0, kPtpTimescale, 0, kMasterId, 1, 4, 1, 1700000000, 1,
         fourTLVs, nullptr, 0, listed}},
    };
    // clang-format on
}

tBytes datagramOf(const tFrameFields& a_frame, tStatus& a_status)
{
    std::unique_ptr<tPTPMessage> pMessage = makeMessage(a_frame.message, a_status);
    tProtocolDataUnit unit(a_status);
    pMessage->serialize(unit, a_status);
    tBytes datagram = bytesOf(unit);
    if (datagram.size() < a_frame.padTo)
    {
        datagram.resize(a_frame.padTo, 0);
    }
    return datagram;
}

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

std::string jsonBytes(const tBytes& a_bytes)
{
    std::string text = "\"";
    char octet[4];
    for (size_t i = 0; i < a_bytes.size(); ++i)
    {
        std::snprintf(octet, sizeof(octet), i == 0 ? "%02x" : ":%02x", a_bytes[i]);
        text += octet;
    }
    return text + "\"";
}

void expectHeader(tFrame& a_frame, const tMessageFields& a_fields, u8 a_controlField,
                  u32 a_messageLength)
{
    // transportSpecific, the reserved nibble, octet, flag and message-specific octets.
    for (const char* zero : {"ptp.v2.majorsdoid", "ptp.v2.minorversionptp", "ptp.v2.minorsdoid",
                             "ptp.v2.messagetypespecific"})
    {
        a_frame.expectInt(zero, 0);
    }
    a_frame.expectInt("ptp.v2.messagetype", a_fields.messageType);
    a_frame.expectInt("ptp.v2.versionptp", 2);
    // Header, body and TLVs, never padding.
    a_frame.expectInt("ptp.v2.messagelength", a_messageLength);
    a_frame.expectInt("ptp.v2.domainnumber", a_fields.domainNumber);
    a_frame.expectInt("ptp.v2.flags", a_fields.flags);

    // The dissector splits the scaled correction into whole nanoseconds,
    // rounded towards minus infinity, and a non-negative fraction.
    const i64 correction = a_fields.correction;
    const i64 whole = correction >= 0 ? correction / 65536 : -((-(correction + 1)) / 65536) - 1;
    char fraction[64];
    std::snprintf(fraction, sizeof(fraction), "%.17g",
                  static_cast<double>(correction - whole * 65536) / 65536.0);
    a_frame.expectInt("ptp.v2.correction.ns", whole);
    a_frame.expect("ptp.v2.correction.subns", fraction);

    a_frame.expectUnsigned("ptp.v2.clockidentity", identityNumber(a_fields.pClockId));
    a_frame.expectInt("ptp.v2.sourceportid", a_fields.portNumber);
    a_frame.expectInt("ptp.v2.sequenceid", a_fields.sequenceId);
    a_frame.expectInt("ptp.v2.controlfield", a_controlField);
    a_frame.expectInt("ptp.v2.logmessageperiod", a_fields.logMessageInterval);
}

tFrame frameOf(const tFrameFields& a_frame, tStatus& a_status)
{
    const tMessageFields& fields = a_frame.message;
    tFrame frame{a_frame.name, kGeneralPort, datagramOf(a_frame, a_status), {}};
    u32 tlvLength = 0;
    for (const tTLVValues& values : fields.tlvs)
    {
        // tlvType, lengthField, organizationId, organizationSubType, data.
        tlvLength += 2 + 2 + 3 + 3 + static_cast<u32>(values.data.size());
    }
    std::string prefix;
    switch (fields.messageType)
    {
    case kMessageTypeSync:
    case kMessageTypeDelayReq:
        frame.udpPort = kEventPort;
        expectHeader(frame, fields, fields.messageType == kMessageTypeSync ? 0 : 1, 44 + tlvLength);
        prefix = "ptp.v2.sdr.origintimestamp";
        break;
    case kMessageTypeFollowUp:
        expectHeader(frame, fields, 2, 44 + tlvLength);
        prefix = "ptp.v2.fu.preciseorigintimestamp";
        break;
    case kMessageTypeDelayResp:
        expectHeader(frame, fields, 3, 54 + tlvLength);
        prefix = "ptp.v2.dr.receivetimestamp";
        frame.expectUnsigned("ptp.v2.dr.requestingsourceportidentity",
                             identityNumber(fields.pRequesterId));
        frame.expectInt("ptp.v2.dr.requestingsourceportid", fields.requesterPort);
        break;
    default:
    {
        const tAnnounceBody& body = fields.announce;
        expectHeader(frame, fields, 5, 64 + tlvLength);
        prefix = "ptp.v2.an.origintimestamp";
        frame.expectInt("ptp.v2.an.origincurrentutcoffset", body.currentUTCOffset);
        frame.expectInt("ptp.v2.an.priority1", body.priority1);
        frame.expectInt("ptp.v2.an.grandmasterclockclass", body.clockClass);
        frame.expectInt("ptp.v2.an.grandmasterclockaccuracy", body.clockAccuracy);
        frame.expectInt("ptp.v2.an.grandmasterclockvariance", body.offsetScaledLogVariance);
        frame.expectInt("ptp.v2.an.priority2", body.priority2);
        frame.expectUnsigned("ptp.v2.an.grandmasterclockidentity",
                             identityNumber(body.pGrandmasterId));
        frame.expectInt("ptp.v2.an.localstepsremoved", body.stepsRemoved);
        frame.expectInt("ptp.v2.timesource", body.timeSource);
        // The dissector shows the TLVs of Announce messages only.
        for (const tTLVValues& values : fields.tlvs)
        {
            frame.expectInt("ptp.v2.an.tlvType", kTlvTypeOrganizationExtension);
            frame.expectInt("ptp.v2.an.lengthField",
                            6 + static_cast<long long>(values.data.size()));
            frame.expectUnsigned("ptp.v2.an.oe.organizationId", values.organizationId);
            frame.expectUnsigned("ptp.v2.an.oe.organizationSubType", values.organizationSubType);
            frame.expect("ptp.v2.an.oe.dataField", jsonBytes(values.data));
        }
        break;
    }
    }
    frame.expectUnsigned(prefix + ".seconds", fields.seconds);
    frame.expectUnsigned(prefix + ".nanoseconds", fields.nanoseconds);
    return frame;
}

// The response to a request of the sample clock, with its header and body
// fields and the TLV's fields of a_fields ("name=value|...", the ptp.v2.mm.
// prefix left out).
tFrame managementFrame(const std::string& a_name, const tBytes& a_request, u16 a_tlvType,
                       u16 a_managementId, u16 a_tlvLength, const std::string& a_fields,
                       tStatus& a_status)
{
    tSampleNode node;
    tFrame frame{a_name, kGeneralPort, respond(node, a_request, a_status), {}};
    const tMessageFields header = {
        kMessageTypeManagement, 0, 0, 0, kMasterId, 1, 0x1234, 0x7F, 0, 0};
    expectHeader(frame, header, 4, 48u + 4u + a_tlvLength);
    frame.expectUnsigned("ptp.v2.mm.targetportidentity", identityNumber(kSlaveId));
    frame.expectInt("ptp.v2.mm.targetportid", 1);
    frame.expectInt("ptp.v2.mm.startingboundaryhops", 2);
    frame.expectInt("ptp.v2.mm.boundaryhops", 1);
    frame.expectInt("ptp.v2.mm.action", kActionResponse);
    frame.expectInt("ptp.v2.mm.tlvType", a_tlvType);
    frame.expectInt("ptp.v2.mm.lengthField", a_tlvLength);
    frame.expectInt("ptp.v2.mm.managementId", a_managementId);
    std::istringstream fields(a_fields);
    std::string field;
    while (std::getline(fields, field, '|'))
    {
        const size_t equals = field.find('=');
        frame.expect("ptp.v2.mm." + field.substr(0, equals), field.substr(equals + 1));
    }
    return frame;
}

std::vector<tFrame> managementFrames(tStatus& a_status)
{
    std::vector<tFrame> frames;
    for (const tManagementSample& sample : managementSamples())
    {
        const tBytes request = managementRequest(
            kActionGet, managementTLV(sample.m_managementId, sample.m_requestData));
        const u16 length = static_cast<u16>(sample.m_responseTLV.size() - 4);
        frames.push_back(managementFrame(std::string("mgmt-") + sample.m_name, request, 1,
                                         sample.m_managementId, length, sample.m_fields, a_status));
    }
    // A SET of a data set, refused: NOT_SUPPORTED with its text.
    frames.push_back(managementFrame(
        "mgmt-refused", managementRequest(kActionSet, managementTLV(0x2000, tBytes(20, 0))), 2,
        0x2000, 32,
        "managementErrorId=6|displayData=\"Unsupported actionField\"|"
        "displayData=\"Unsupported actionField\"",
        a_status));
    return frames;
}

// ------------------------------------------------------------ output

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

bool writeExpectations(const std::string& a_path, const std::vector<tFrame>& a_frames)
{
    std::ostringstream out;
    out << "[\n";
    for (size_t i = 0; i < a_frames.size(); ++i)
    {
        const tFrame& frame = a_frames[i];
        out << "  {\"name\": \"" << frame.name << "\", \"udpPort\": " << frame.udpPort
            << ",\n   \"datagram\": " << jsonBytes(frame.datagram) << ",\n   \"fields\": {";
        for (size_t f = 0; f < frame.fields.size(); ++f)
        {
            out << (f == 0 ? "\n" : ",\n") << "     \"" << frame.fields[f].first << "\": [";
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
    std::string paths[2]; // the expectations, the raw directory
    const char* options[2] = {"--expect", "--raw-dir"};
    for (int i = 1; i < argc; ++i)
    {
        int option = 0;
        while (option < 2 && (i + 1 >= argc || std::string(argv[i]) != options[option]))
        {
            ++option;
        }
        if (option == 2)
        {
            std::cerr << "usage: " << argv[0] << " [--expect FILE] [--raw-dir DIR]\n";
            return 2;
        }
        paths[option] = argv[++i];
    }

    tStatus status;
    std::vector<tFrame> frames;
    for (const tFrameFields& fields : frameFields())
    {
        frames.push_back(frameOf(fields, status));
    }
    for (tFrame& frame : managementFrames(status))
    {
        frames.push_back(frame);
    }
    if (status.isFatal())
    {
        std::cerr << "building the messages failed with status " << status.getCode() << " at "
                  << status.getFile() << ":" << status.getLine() << "\n";
        return 1;
    }

    bool ok = paths[0].empty() || writeExpectations(paths[0], frames);
    for (size_t i = 0; !paths[1].empty() && i < frames.size(); ++i)
    {
        ok = writeFile(paths[1] + "/" + frames[i].name + ".bin", frames[i].datagram) && ok;
    }
    for (const auto& request :
         paths[1].empty() ? decltype(managementRequests())() : managementRequests())
    {
        ok = writeFile(paths[1] + "/" + request.first + ".bin", request.second) && ok;
    }
    std::cout << frames.size() << " messages written\n";
    return ok ? 0 : 1;
}
