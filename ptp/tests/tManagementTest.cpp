// Management: the data field of every managementId as the clock answers it,
// what SET writes, the refusals, the response as the request turned around,
// and the TLVs a request carries along, on a stand-in clock. What a real node
// answers is in simnet; random and truncated input is the fuzzer's business.
#include "orvptp/TLVs/tManagementTLV.h"
#include "tManagementSamples.h"

#include <gtest/gtest.h>

using namespace nOrvPTP000;
using namespace nWireTest;

namespace
{

tBytes suffixOf(const tBytes& a_datagram)
{
    return a_datagram.size() < 48 ? tBytes() : tBytes(a_datagram.begin() + 48, a_datagram.end());
}

// An error status TLV: its length counts the text and, for an odd one, a pad.
tBytes errorTLV(u16 a_managementId, u16 a_errorId, const std::string& a_text)
{
    const size_t pad = a_text.size() % 2 == 0 ? 1 : 0;
    const u16 length = static_cast<u16>(8 + 1 + a_text.size() + pad);
    tBytes bytes = {0x00, 0x02, u8(length >> 8), u8(length), u8(a_errorId >> 8), u8(a_errorId)};
    bytes =
        concat(bytes, {u8(a_managementId >> 8), u8(a_managementId), 0, 0, 0, 0, u8(a_text.size())});
    bytes.insert(bytes.end(), a_text.begin(), a_text.end());
    bytes.resize(bytes.size() + pad, 0);
    return bytes;
}

// ---- the data fields ----

TEST(ManagementTest, EveryReadableManagementIdAnswersGetWithItsDataField)
{
    u32 count = 0;
    const tManagementIdInfo* pIds = managementIds(count);
    EXPECT_EQ(30u, count);
    for (u32 i = 0; i < count; ++i)
    {
        SCOPED_TRACE(pIds[i].m_pName);
        bool sampled = false;
        for (const tManagementSample& sample : managementSamples())
        {
            sampled = sampled || sample.m_managementId == pIds[i].m_managementId;
        }
        EXPECT_EQ(sampled, (pIds[i].m_offers & kOfferGet) != 0);
    }
    for (const tManagementSample& sample : managementSamples())
    {
        SCOPED_TRACE(sample.m_name);
        tSampleNode node;
        tStatus status;
        const tBytes response =
            respond(node,
                    managementRequest(kActionGet,
                                      managementTLV(sample.m_managementId, sample.m_requestData)),
                    status);
        ASSERT_EQ(response.size(), 48 + sample.m_responseTLV.size());
        EXPECT_EQ(response[46], kActionResponse);
        EXPECT_EQ(suffixOf(response), sample.m_responseTLV);
        EXPECT_EQ(status.getCode(), 0);
    }
}

// A SET answers with what it set, and a GET reads it back.
TEST(ManagementTest, SetWritesWhatGetReadsBack)
{
    tBytes longText = concat({128}, tBytes(128, 'x'));
    longText.push_back(0); // 129 octets of text: 132 with managementId and pad
    const struct
    {
        u16 m_managementId;
        tBytes m_data;
    } cases[] = {
        {0x0000, {}},
        {0x0002, {3, 'a', 'b', 'c'}},
        {0x0002, longText},
        {0x2005, {0x05, 0}},
        {0x2006, {0xFF, 0}},
        {0x2007, {0x7F, 0}},
        {0x2008, {0x00, 0}},
        {0x2009, {0xFE, 0}},
        {0x200A, {0x05, 0}},
        {0x200B, {0x02, 0}},
        {0x200C, {0x01, 0}},
        {0x200F, {0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x00, 0x00, 0x07}},
        {0x2010, {0x31, 0}},
        {0x2010, {0xFE, 0}},
        {0x2011, {0xFF, 0xFF, 0x02, 0}}, // -1 s, leap59 only
        {0x2012, {0x20, 0}},             // frequency traceable only
        {0x2013, {0x00, 0x50}},          // arbitrary timescale, NTP
        {0x6000, {0xFE, 0}},
        {0x6000, {0x02, 0}},
        {0x6001, {0x80, 0}},
    };
    for (const auto& entry : cases)
    {
        SCOPED_TRACE(entry.m_managementId);
        tSampleNode node;
        node.put<GRANDMASTER_IDENTITY>(node.getClockIdentity()); // TIME is set on one only
        tStatus status;
        const tBytes tlv = managementTLV(entry.m_managementId, entry.m_data);
        EXPECT_EQ(suffixOf(respond(node, managementRequest(kActionSet, tlv), status)), tlv);
        EXPECT_EQ(suffixOf(respond(node, managementRequest(kActionGet, tlv), status)), tlv);
        EXPECT_EQ(status.getCode(), 0);
    }
}

// ---- refusals ----

TEST(ManagementTest, RefusalsNameTheirReason)
{
    const struct
    {
        u16 m_managementId;
        u8 m_action;
        tBytes m_data;
        u16 m_errorId;
        std::string m_text;
    } cases[] = {
        {0x2010, kActionSet, {0x32, 0}, 4, "Unsupported clockAccuracy value"},
        {0x2010, kActionSet, {0x1F, 0}, 4, "Unsupported clockAccuracy value"},
        {0x6000, kActionSet, {0x00, 0}, 4, "Unsupported delayMechanism value"},
        {0x2013, kActionSet, {0x00, 0x70}, 4, "Unknown timeSource value"},
        {0x0005, kActionCommand, {0x00, 0x01}, 4, "Unknown initialization key value"},
        {0x200F, kActionSet, tBytes(10, 0), 6, "Cannot set time on non-grandmaster clock"},
        {0x0003, kActionCommand, {}, 6, "Non-volatile storage is currently unsupported"},
        {0x0004, kActionCommand, {}, 6, "Non-volatile storage is currently unsupported"},
        {0x0002, kActionSet, concat({129}, tBytes(129, 'y')), 0xFFFE, "Failure setting value"},
    };
    for (const auto& entry : cases)
    {
        SCOPED_TRACE(entry.m_text);
        // Its own grandmaster, so that the time properties that it writes are in
        // force; a slave of another one for TIME.
        tSampleNode node;
        if (entry.m_managementId != 0x200F)
        {
            node.put<GRANDMASTER_IDENTITY>(node.getClockIdentity());
        }
        tStatus status;
        const tBytes response = respond(
            node,
            managementRequest(entry.m_action, managementTLV(entry.m_managementId, entry.m_data)),
            status);
        ASSERT_GE(response.size(), 48u);
        EXPECT_EQ(response[46],
                  entry.m_action == kActionCommand ? kActionAcknowledge : kActionResponse);
        EXPECT_EQ(suffixOf(response),
                  errorTLV(entry.m_managementId, entry.m_errorId, entry.m_text));
        // A refused value is not stored; a refused timeSource leaves the
        // timescale flag set all the same.
        EXPECT_EQ(node.getClockAccuracy(), 0x21);
        EXPECT_EQ(node.getDelayMechanism(1, status), 1);
        EXPECT_EQ(node.getTimeSource(), 0x20);
        EXPECT_EQ(node.getPtpTimescale(), entry.m_managementId != 0x2013);
    }

    // Every action that the table does not offer.
    for (const auto& request : managementRequests(false))
    {
        tSampleNode node;
        tStatus status;
        const u16 managementId = static_cast<u16>(request.second[52] << 8 | request.second[53]);
        EXPECT_EQ(suffixOf(respond(node, request.second, status)),
                  errorTLV(managementId, 6, "Unsupported actionField"))
            << request.first;
    }
}

// ---- the message around the payload ----

TEST(ManagementTest, TheResponseIsTheRequestTurnedAround)
{
    const tBytes priority1 = managementTLV(0x2005, {0, 0});
    const tBytes lxi = {0x00, 0x03, 0x00, 0x07, 0x00, 0x21, 0xD6, 0xFF, 0xFF, 0xFF, 'z'};
    tSampleNode node;
    tStatus status;
    const tBytes response =
        respond(node, managementRequest(kActionGet, concat(priority1, lxi)), status);
    // Only the first TLV is acted on; the others go back as they came.
    const tBytes expected = concat(managementRequest(kActionResponse, {}),
                                   concat(managementTLV(0x2005, {0xC8, 0}), lxi));
    ASSERT_EQ(response.size(), expected.size());
    EXPECT_EQ(response[2] << 8 | response[3], static_cast<int>(response.size())); // messageLength
    // Source and target swap places; 3 - 1 hops are left to go.
    EXPECT_EQ(tBytes(response.begin() + 20, response.begin() + 30),
              concat(tBytes(kMasterId, kMasterId + 8), {0, 1}));
    EXPECT_EQ(tBytes(response.begin() + 34, response.begin() + 44),
              concat(tBytes(kSlaveId, kSlaveId + 8), {0, 1}));
    EXPECT_EQ(response[44], 2);
    EXPECT_EQ(response[45], 1);
    EXPECT_EQ(tBytes(response.begin() + 46, response.end()),
              tBytes(expected.begin() + 46, expected.end()));
    // Everything else of the header stays: sequenceId, control field, interval.
    EXPECT_EQ(tBytes(response.begin() + 30, response.begin() + 34),
              tBytes({0x12, 0x34, 0x04, 0x7F}));

    tBytes wrapping = managementRequest(kActionGet, priority1);
    wrapping[44] = 1;
    wrapping[45] = 2;
    EXPECT_EQ(respond(node, wrapping, status)[44], 255);
}

// What the response carries for a request without a usable TLV in front, and
// which requests get none.
TEST(ManagementTest, RequestsWithoutAUsableTLV)
{
    const tBytes lxi = {0x00, 0x03, 0x00, 0x06, 0x00, 0x21, 0xD6, 0xFF, 0xFF, 0xFF};
    const struct
    {
        const char* m_name;
        u8 m_action;
        tBytes m_tlvs;
        bool m_answered;
        tBytes m_responseSuffix;
    } cases[] = {
        {"no TLV", kActionGet, {}, true, {}},
        {"an unknown managementId", kActionGet, managementTLV(0x2014, {0, 0}), true, {}},
        {"no data behind lengthField 2", kActionGet, managementTLV(0x2005, {}), true, {}},
        {"NULL_MANAGEMENT needs none", kActionGet, managementTLV(0x0000, {}), true,
         managementTLV(0x0000, {})},
        {"an organisation's TLV in front",
         kActionSet,
         concat(lxi, managementTLV(0x2005, {0, 0})),
         true,
         {}},
        {"an error status in front", kActionGet, errorTLV(0x2005, 4, "x"), true,
         errorTLV(0x2005, 6, "Unsupported actionField")},
        {"a RESPONSE", kActionResponse, managementTLV(0x2005, {0, 0}), false, {}},
        {"an ACKNOWLEDGE", kActionAcknowledge, managementTLV(0x0007, {}), false, {}},
    };
    for (const auto& entry : cases)
    {
        SCOPED_TRACE(entry.m_name);
        tSampleNode node;
        tStatus status;
        const tBytes response =
            respond(node, managementRequest(entry.m_action, entry.m_tlvs), status);
        EXPECT_EQ(response.empty(), !entry.m_answered);
        EXPECT_EQ(suffixOf(response), entry.m_responseSuffix);
    }
}

// TLVs that a request carries behind its payload are parsed and go back as
// the clock writes them.
TEST(ManagementTest, VariableTLVsCarriedAlong)
{
    const tBytes emptyRecord = {0x00, 0x0E, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x07, 0, 0, 0};
    const tBytes oddRecord = {0x00, 0x0F, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0x03, 1, 'a', 0, 0};
    const tBytes oneRecord = managementTLV(0x0006, concat({0, 1}, emptyRecord));
    const tBytes padded =
        managementTLV(0x0006, concat(concat({0, 2}, oddRecord), concat(emptyRecord, {0})));
    const tBytes oddText = managementTLV(0x0002, {2, 'o', 'k', 0});
    const struct
    {
        const char* m_name;
        tBytes m_tlv;
        tBytes m_echoed; // empty: dropped
    } cases[] = {
        {"a log of one record of empty texts: 16 + 2 octets", oneRecord, oneRecord},
        {"the pad goes behind the last record", padded, padded},
        {"more records than the datagram holds",
         managementTLV(0x0006, concat({0, 3}, emptyRecord)),
         {}},
        {"a user description of odd length", oddText, oddText},
        {"a user description without its pad", managementTLV(0x0002, {2, 'o', 'k'}), {}},
        // What an error status lacks it keeps as default; its pad is not asked for.
        {"an error status cut short",
         {0x00, 0x02, 0x00, 0x0A, 0x00, 0x04, 0x20, 0x05},
         {0x00, 0x02, 0x00, 0x0A, 0x00, 0x04, 0x20, 0x05, 0, 0, 0, 0, 0}},
    };
    const tBytes null = managementTLV(0x0000, {});
    for (const auto& entry : cases)
    {
        SCOPED_TRACE(entry.m_name);
        tSampleNode node;
        tStatus status;
        const tBytes response =
            respond(node, managementRequest(kActionGet, concat(null, entry.m_tlv)), status);
        EXPECT_EQ(suffixOf(response), concat(null, entry.m_echoed));
    }
}

} // namespace
