#pragma once
// Management as the clock answers it, for the management tests, the
// Wireshark cross-check and the fuzzer's seeds: a clock of known state
// (tSampleNode), and for every managementId that GET reads, the data field of
// the request and the response's TLV, written octet by octet from the field
// layout, with the dissector fields that show it.
#include "orvptp/TLVs/tManagementTLV.h"
#include "orvptp/tManagementMessage.h"
#include "orvptp/tPTPMessageFactory.h"
#include "tFakeNode.h"
#include "tMessageSamples.h"

namespace nWireTest
{

// A requester's datagram: kSlaveId port 1 asks, with sequenceId 0x1234, the clock a_pTarget (all
// ones: every clock) at port a_port, with startingBoundaryHops 3 and boundaryHops 1.
inline tBytes managementRequest(u8 a_action, const tBytes& a_tlvs, const u8* a_pTarget = kMasterId,
                                u16 a_port = 1)
{
    const u16 length = static_cast<u16>(48 + a_tlvs.size());
    tBytes bytes = {0x0D, 0x02, u8(length >> 8), u8(length), 0, 0, 0, 0};
    bytes.resize(20, 0);
    bytes.insert(bytes.end(), kSlaveId, kSlaveId + 8);
    bytes.insert(bytes.end(), {0x00, 0x01, 0x12, 0x34, 0x04, 0x7F});
    bytes.insert(bytes.end(), a_pTarget, a_pTarget + 8);
    bytes.insert(bytes.end(), {u8(a_port >> 8), u8(a_port), 3, 1, a_action, 0});
    return concat(bytes, a_tlvs);
}

inline tBytes managementTLV(u16 a_managementId, const tBytes& a_data)
{
    const u16 length = static_cast<u16>(a_data.size() + 2);
    return concat(
        {0x00, 0x01, u8(length >> 8), u8(length), u8(a_managementId >> 8), u8(a_managementId)},
        a_data);
}

// A clock with a value of its own in every field that management reads: a
// slave of another grandmaster, whose own time properties are in force only
// because they were written while it was still its own grandmaster.
class tSampleNode : public nFakeNode::tFakeNode
{
public:
    tSampleNode() : tFakeNode(tClockIdentity(kMasterId))
    {
        put<CURRENT_UTC_OFFSET>(37);
        put<LEAP61>(true);
        put<CURRENT_UTC_OFFSET_VALID>(true);
        put<TIME_TRACEABLE>(true);
        put<TIME_SOURCE>(0x20);
        put<SLAVE_ONLY>(true);
        put<PRIORITY1>(200);
        put<PRIORITY2>(201);
        put<DOMAIN_NUMBER>(4);
        put<CLOCK_QUALITY>(tClockQuality(6, 0x21, 0x4E5D));
        put<STEPS_REMOVED>(2);
        put<OFFSET_FROM_MASTER>(-98304);
        put<MEAN_PATH_DELAY>(i64(1000) << 16);
        put<PARENT_PORT_IDENTITY>(tPortIdentity(tClockIdentity(kGrandmasterId), 3));
        put<PARENT_STATS>(true);
        put<OBSERVED_PARENT_OFFSET_SCALED_LOG_VARIANCE>(0x1234);
        put<OBSERVED_PARENT_CLOCK_PHASE_CHANGE_RATE>(-2);
        put<GRANDMASTER_PRIORITY1>(7);
        put<GRANDMASTER_CLOCK_QUALITY>(tClockQuality(248, 0xFE, 0xFFFF));
        put<GRANDMASTER_PRIORITY2>(9);
        put<GRANDMASTER_IDENTITY>(tClockIdentity(kGrandmasterId));
        put<PORT_STATE>(kPortStateSlave);
        put<LOG_MIN_DELAY_REQ_INTERVAL>(-3);
        put<LOG_SYNC_INTERVAL>(-4);
        put<LOG_MIN_PDELAY_REQ_INTERVAL>(2);
        tStatus status;
        const u8 mac[6] = {0x02, 0x5A, 0x6D, 0x64, 0x00, 0x01};
        const u8 address[4] = {169, 254, 0, 1};
        const u8 oui[3] = {0x00, 0xA0, 0xC5};
        setPhysicalLayerProtocol(1, tPTPText("IEEE 802.3", status), status, 0);
        setPhysicalAddress(1, mac, 6, status, 0);
        setProtocolAddress(1, tPortAddress(1, 4, address, status), status, 0);
        setManufacturerIdentity(oui, status, 0);
        setProductDescription(tPTPText("Orvane;zm;1", status), status, 0);
        setRevisionData(tPTPText("1;2;3", status), status, 0);
        setUserDescription(tPTPText("clock;lab", status), status, 0);
    }

    void getCurrentTime(tTimestamp& a_rTime, tStatus&) override { a_rTime = m_time; }
    void setCurrentTime(const tTimestamp& a_time, tStatus& a_status, i32) override
    {
        if (a_status.isNotFatal())
        {
            m_time = a_time;
        }
    }

private:
    tTimestamp m_time{1700000000, 5};
};

// One GET: the request's data field, the response's TLV, and the dissector
// fields of that TLV (name=value, "|" between them; the prefix ptp.v2.mm.
// left out; values as JSON). The dissector shows a text, and the protocol
// address, twice: as the item and as the value under it.
struct tManagementSample
{
    const char* m_name;
    u16 m_managementId;
    tBytes m_requestData;
    tBytes m_responseTLV;
    const char* m_fields;
};

// clang-format off
inline const std::vector<tManagementSample>& managementSamples()
{
    static const std::vector<tManagementSample> samples = {
        {"NULL_MANAGEMENT", 0x0000, {}, {0x00, 0x01, 0x00, 0x02, 0x00, 0x00}, ""},
        {"CLOCK_DESCRIPTION", 0x0001, tBytes(22, 0),
         {0x00, 0x01, 0x00, 0x46, 0x00, 0x01,
          0x80, 0x00,                                     // ordinary clock, res.
          10, 'I', 'E', 'E', 'E', ' ', '8', '0', '2', '.', '3',
          0x00, 0x06, 0x02, 0x5A, 0x6D, 0x64, 0x00, 0x01, // physical address
          0x00, 0x01, 0x00, 0x04, 169, 254, 0, 1,         // UDP/IPv4 169.254.0.1
          0x00, 0xA0, 0xC5, 0x00,                         // manufacturer, res.
          11, 'O', 'r', 'v', 'a', 'n', 'e', ';', 'z', 'm', ';', '1',
          5, '1', ';', '2', ';', '3',
          9, 'c', 'l', 'o', 'c', 'k', ';', 'l', 'a', 'b',
          0x00, 0x1B, 0x19, 0x00, 0x01, 0x00,             // profile
          0x00},                                          // pad: 67 octets of data
         "clockType.OC=1|clockType.BC=0|physicalLayerProtocol=\"IEEE 802.3\"|physicalLayerProtocol=\"IEEE 802.3\"|"
         "physicalAddressLength=6|physicalAddress=\"02:5a:6d:64:00:01\"|networkProtocol=1|"
         "protocolAddress.length=4|protocolAddress=\"a9:fe:00:01\"|protocolAddress=\"a9:fe:00:01\"|"
         "manufacturerIdentity=\"00:a0:c5\"|productDescription=\"Orvane;zm;1\"|productDescription=\"Orvane;zm;1\"|"
         "revisionData=\"1;2;3\"|revisionData=\"1;2;3\"|userDescription=\"clock;lab\"|userDescription=\"clock;lab\"|profileIdentity=\"00:1b:19:00:01:00\""},
        {"USER_DESCRIPTION", 0x0002, {0, 0},
         {0x00, 0x01, 0x00, 0x0C, 0x00, 0x02, 9, 'c', 'l', 'o', 'c', 'k', ';', 'l', 'a', 'b'},
         "userDescription=\"clock;lab\"|userDescription=\"clock;lab\""},
        {"FAULT_LOG", 0x0006, {0, 0}, {0x00, 0x01, 0x00, 0x04, 0x00, 0x06, 0x00, 0x00},
         "numberOfFaultRecords=0"},
        {"DEFAULT_DATA_SET", 0x2000, tBytes(20, 0),
         {0x00, 0x01, 0x00, 0x16, 0x20, 0x00,
          0x03, 0x00, 0x00, 0x01, 0xC8,                   // SO and TSC, res., 1 port, priority1
          0x06, 0x21, 0x4E, 0x5D, 0xC9,                   // clockQuality, priority2
          0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56, // clockIdentity
          0x04, 0x00},                                    // domain, res.
         "SlavOnly=1|twoStep=1|numberPorts=1|priority1=200|clockclass=6|clockaccuracy=33|"
         "clockvariance=20061|priority2=201|clockidentity=7628411641148502|domainNumber=4"},
        {"CURRENT_DATA_SET", 0x2001, tBytes(18, 0),
         {0x00, 0x01, 0x00, 0x14, 0x20, 0x01,
          0x00, 0x02,                                     // stepsRemoved
          0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0x80, 0x00, // offsetFromMaster -1.5 ns
          0x00, 0x00, 0x00, 0x00, 0x03, 0xE8, 0x00, 0x00},// meanPathDelay 1000 ns
         "stepsRemoved=2|offset.ns=-2|offset.subns=0.5|pathDelay.ns=1000|pathDelay.subns=0"},
        {"PARENT_DATA_SET", 0x2002, tBytes(32, 0),
         {0x00, 0x01, 0x00, 0x22, 0x20, 0x02,
          0x00, 0x1D, 0xC1, 0xFF, 0xFE, 0x0A, 0x0B, 0x0C, 0x00, 0x03, // parentPortIdentity
          0x01, 0x00, 0x12, 0x34, 0xFF, 0xFF, 0xFF, 0xFE, // PS, res., variance, rate -2
          0x07, 0xF8, 0xFE, 0xFF, 0xFF, 0x09,             // gm priority1, quality, priority2
          0x00, 0x1D, 0xC1, 0xFF, 0xFE, 0x0A, 0x0B, 0x0C},
         "parentclockidentity=8376079547501324|parentsourceportid=3|parentstats=1|"
         "observedParentOffsetScaledLogVariance=4660|observedParentClockPhaseChangeRate=-2|"
         "grandmasterPriority1=7|grandmasterclockclass=248|grandmasterclockaccuracy=254|"
         "grandmasterclockvariance=65535|grandmasterPriority2=9|"
         "grandmasterclockidentity=8376079547501324"},
        {"TIME_PROPERTIES_DATA_SET", 0x2003, tBytes(4, 0),
         {0x00, 0x01, 0x00, 0x06, 0x20, 0x03, 0x00, 0x25, 0x1D, 0x20}, // 37 s; TTRA PTP UTCV LI61; GPS
         "currentutcoffset=37|frequencyTraceable=0|timeTraceable=1|ptptimescale=1|"
         "CurrentUTCOffsetValid=1|li59=0|li61=1|timesource=32"},
        {"PORT_DATA_SET", 0x2004, tBytes(26, 0),
         {0x00, 0x01, 0x00, 0x1C, 0x20, 0x04,
          0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x12, 0x34, 0x56, 0x00, 0x01, // this clock, port 1
          0x09, 0xFD,                                     // SLAVE, logMinDelayReqInterval -3
          0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // peerMeanPathDelay
          0x01, 0x03, 0xFC, 0x01, 0x02, 0x02},
         "PortNumber=1|portState=9|logMinDelayReqInterval=-3|peerMeanPathDelay.ns=0|"
         "logAnnounceInterval=1|announceReceiptTimeout=3|logSyncInterval=-4|delayMechanism=1|"
         "logMinPdelayReqInterval=2|versionNumber=2"},
        {"PRIORITY1", 0x2005, {0, 0}, {0x00, 0x01, 0x00, 0x04, 0x20, 0x05, 0xC8, 0x00}, "priority1=200"},
        {"PRIORITY2", 0x2006, {0, 0}, {0x00, 0x01, 0x00, 0x04, 0x20, 0x06, 0xC9, 0x00}, "priority2=201"},
        {"DOMAIN", 0x2007, {0, 0}, {0x00, 0x01, 0x00, 0x04, 0x20, 0x07, 0x04, 0x00}, "domainNumber=4"},
        {"SLAVE_ONLY", 0x2008, {0, 0}, {0x00, 0x01, 0x00, 0x04, 0x20, 0x08, 0x01, 0x00}, "SlavOnly=1"},
        {"LOG_ANNOUNCE_INTERVAL", 0x2009, {0, 0}, {0x00, 0x01, 0x00, 0x04, 0x20, 0x09, 0x01, 0x00},
         "logAnnounceInterval=1"},
        {"ANNOUNCE_RECEIPT_TIMEOUT", 0x200A, {0, 0}, {0x00, 0x01, 0x00, 0x04, 0x20, 0x0A, 0x03, 0x00},
         "announceReceiptTimeout=3"},
        {"LOG_SYNC_INTERVAL", 0x200B, {0, 0}, {0x00, 0x01, 0x00, 0x04, 0x20, 0x0B, 0xFC, 0x00},
         "logSyncInterval=-4"},
        {"VERSION_NUMBER", 0x200C, {0xF0, 0}, {0x00, 0x01, 0x00, 0x04, 0x20, 0x0C, 0x02, 0x00},
         "versionNumber=2"},
        {"TIME", 0x200F, tBytes(10, 0),
         {0x00, 0x01, 0x00, 0x0C, 0x20, 0x0F, 0x00, 0x00, 0x65, 0x53, 0xF1, 0x00, 0x00, 0x00, 0x00, 0x05},
         "currentTime.seconds=1700000000|currentTime.nanoseconds=5"},
        {"CLOCK_ACCURACY", 0x2010, {0, 0}, {0x00, 0x01, 0x00, 0x04, 0x20, 0x10, 0x21, 0x00},
         "clockaccuracy=33"},
        {"UTC_PROPERTIES", 0x2011, {0, 0, 0, 0},
         {0x00, 0x01, 0x00, 0x06, 0x20, 0x11, 0x00, 0x25, 0x05, 0x00}, // UTCV and LI61
         "currentutcoffset=37|CurrentUTCOffsetValid=1|li59=0|li61=1"},
        {"TRACEABILITY_PROPERTIES", 0x2012, {0, 0},
         {0x00, 0x01, 0x00, 0x04, 0x20, 0x12, 0x10, 0x00}, "timeTraceable=1|frequencyTraceable=0"},
        {"TIMESCALE_PROPERTIES", 0x2013, {0, 0},
         {0x00, 0x01, 0x00, 0x04, 0x20, 0x13, 0x08, 0x20}, "ptptimescale=1|timesource=32"},
        {"DELAY_MECHANISM", 0x6000, {0, 0}, {0x00, 0x01, 0x00, 0x04, 0x60, 0x00, 0x01, 0x00},
         "delayMechanism=1"},
        {"LOG_MIN_PDELAY_REQ_INTERVAL", 0x6001, {0, 0},
         {0x00, 0x01, 0x00, 0x04, 0x60, 0x01, 0x02, 0x00}, "logMinPdelayReqInterval=2"},
    };
    return samples;
}
// clang-format on

// A request of every managementId with every action that it offers (or, with
// a_offered false, every action that it does not), named
// mgmt-request-<NAME>-<action>: the GET samples' data fields, zeros for the
// others.
inline std::vector<std::pair<std::string, tBytes>> managementRequests(bool a_offered = true)
{
    std::vector<std::pair<std::string, tBytes>> requests;
    u32 count = 0;
    const tManagementIdInfo* pIds = managementIds(count);
    for (u32 i = 0; i < count; ++i)
    {
        tBytes data(pIds[i].m_dataLength == kVariableLength ? 0 : pIds[i].m_dataLength, 0);
        for (const tManagementSample& sample : managementSamples())
        {
            data = sample.m_managementId == pIds[i].m_managementId ? sample.m_requestData : data;
        }
        const char* names[] = {"get", "set", "command"};
        const u8 actions[] = {kActionGet, kActionSet, kActionCommand};
        const u8 offers[] = {kOfferGet, kOfferSet, kOfferCommand};
        for (int a = 0; a < 3; ++a)
        {
            if (((pIds[i].m_offers & offers[a]) != 0) == a_offered)
            {
                requests.push_back(
                    {std::string("mgmt-request-") + pIds[i].m_pName + "-" + names[a],
                     managementRequest(actions[a], managementTLV(pIds[i].m_managementId, data))});
            }
        }
    }
    return requests;
}

// The datagram that a_node sends in answer to a_request: empty when it sends
// none.
inline tBytes respond(nOrvPTP000::iPTPNode& a_node, const tBytes& a_request, tStatus& a_status)
{
    tProtocolDataUnit unit(a_status);
    receive(unit, a_request);
    std::unique_ptr<tPTPMessage> pMessage = tPTPMessageFactory::createMessage(unit, a_status);
    if (pMessage == nullptr || pMessage->getHeader()->getMessageType() != kMessageTypeManagement)
    {
        return {};
    }
    tManagementMessage* pResponse =
        static_cast<tManagementMessage&>(*pMessage).processRequest(a_node, a_status);
    tStatus sendStatus;
    return pResponse != nullptr ? serialized(*pResponse, sendStatus) : tBytes();
}

} // namespace nWireTest
