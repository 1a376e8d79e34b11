// The data sets: construction values and the fall-back to them, the trace
// texts, the port's timer handles and sequence counters, the current data
// set's guards, and the clock description's texts and port entries.
#include "orvptp/tClockDescriptionDS.h"
#include "orvptp/tCurrentDS.h"
#include "orvptp/tDefaultDS.h"
#include "orvptp/tDelayRespMessage.h"
#include "orvptp/tParentDS.h"
#include "orvptp/tPortDS.h"
#include "orvptp/tSyncMessage.h"
#include "orvptp/tTimePropertiesDS.h"
#include "tWireTestSupport.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

using namespace nOrvPTP000;
using namespace nWireTest;
using nOrvTarn000::tStatus;

namespace
{

const i32 kInvalidArgument = nOrvTarn000::kStatusInvalidArgument;
const i32 kOutOfBounds = nOrvTarn000::kStatusOutOfBounds;
const i64 kScale = tTimeInterval::kScale;

const u8 kIdentityBytes[8] = {0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x0A, 0xBC, 0xDE};
const tClockIdentity kIdentity(kIdentityBytes);
const tClockIdentity kOtherIdentity;

tStatus fatalStatus()
{
    tStatus status;
    ORVTARN_SET_CODE(status, nOrvTarn000::kStatusInternalError);
    return status;
}

tPTPText text(const std::string& a_text)
{
    tStatus status;
    tPTPText result;
    result.setText(a_text.data(), static_cast<u8>(a_text.size()), status);
    return result;
}

std::string str(const tPTPText& a_text)
{
    return std::string(a_text.getText() != nullptr ? a_text.getText() : "", a_text.getLength());
}

// ------------------------------------------------- the five resettable sets

// The trace holds every field: as constructed, after every field changed
// (signed fields negative), and after the fall-back to the construction values.
template <typename tDataSet, typename tChange>
void expectChangeAndReset(tDataSet& a_rDataSet, const std::string& a_initial, tChange a_change,
                          const std::string& a_changed)
{
    tStatus status;
    EXPECT_EQ(traceText(a_rDataSet), a_initial);
    a_change(a_rDataSet, status);
    EXPECT_EQ(traceText(a_rDataSet), a_changed);
    a_rDataSet.resetToInitial(status);
    EXPECT_EQ(traceText(a_rDataSet), a_initial);
    EXPECT_EQ(status.getCode(), 0);
}

TEST(DataSetTest, TracesOfConstructionChangeAndReset)
{
    const tClockQuality quality(6, 0x21, 0x4E5D);
    const tPortIdentity otherPort(kOtherIdentity, 7);

    tDefaultDS defaultDS(kIdentity);
    expectChangeAndReset(
        defaultDS,
        "twoStepFlag: 1  clockIdentity: 001b19fffe0abcde numberPorts: 1  clockQuality: clockClass: "
        "187 clockAccuracy: 0xfe offsetScaledLogVariance: 0xffff priority1: 128  priority2: 128  "
        "domainNumber: 0  slaveOnly: 0 ",
        [&](tDefaultDS& a_ds, tStatus& a_status)
        {
            a_ds.setTwoStepFlag(false, a_status);
            a_ds.setClockIdentity(kOtherIdentity, a_status);
            a_ds.setNumberPorts(4, a_status);
            a_ds.setClockQuality(quality, a_status);
            a_ds.setPriority1(1, a_status);
            a_ds.setPriority2(2, a_status);
            a_ds.setDomainNumber(3, a_status);
            a_ds.setSlaveOnly(true, a_status);
        },
        "twoStepFlag: 0  clockIdentity: 0000000000000000 numberPorts: 4  clockQuality: clockClass: "
        "6 clockAccuracy: 0x21 offsetScaledLogVariance: 0x4e5d priority1: 1  priority2: 2  "
        "domainNumber: 3  slaveOnly: 1 ");

    tCurrentDS currentDS;
    expectChangeAndReset(
        currentDS,
        "stepsRemoved: 0 offsetFromMaster: scaledNanoseconds: 0 meanPathDelay: scaledNanoseconds: "
        "0",
        [](tCurrentDS& a_ds, tStatus& a_status)
        {
            a_ds.setStepsRemoved(5, a_status);
            a_ds.setOffsetFromMaster(tTimeInterval(-77), a_status);
            a_ds.setMeanPathDelay(tTimeInterval(1000), a_status);
        },
        "stepsRemoved: 5 offsetFromMaster: scaledNanoseconds: -5046272 meanPathDelay: "
        "scaledNanoseconds: 65536000");

    // The parent is the clock itself, port 0; the port identity's own trace
    // ends its line. What a state decision writes into the parent and time
    // properties is traced by its own tests.
    tParentDS parentDS(kIdentity);
    EXPECT_EQ(
        traceText(parentDS),
        "parentPortIdentity: clockIdentity: 001b19fffe0abcde portNumber: 0\n parentStats: 0  "
        "observedParentOffsetScaledLogVariance: 65535  observedParentClockPhaseChangeRate: "
        "2147483647  grandmasterIdentity: 001b19fffe0abcde grandmasterClockQuality: clockClass: "
        "187 clockAccuracy: 0xfe offsetScaledLogVariance: 0xffff grandmasterPriority1: 128  "
        "grandmasterPriority2: 128 ");
    tTimePropertiesDS timePropertiesDS;
    EXPECT_EQ(
        traceText(timePropertiesDS),
        "currentUtcOffset: 34  currentUtcOffsetValid: 0  leap59: 0  leap61: 0  timeTraceable: 0  "
        "frequencyTraceable: 0  ptpTimescale: 1  timeSource: 160 ");

    tPortDS portDS(kIdentity);
    expectChangeAndReset(
        portDS,
        "portIdentity: clockIdentity: 001b19fffe0abcde portNumber: 1\n portState: 1  "
        "logMinDelayReqInterval: 0  peerMeanPathDelay: scaledNanoseconds: 0 logAnnounceInterval: "
        "1  announceReceiptTimeout: 3  logSyncInterval: 0  delayMechanism: 1  "
        "logMinPdelayReqInterval: 0  versionNumber: 2 ",
        [&](tPortDS& a_ds, tStatus& a_status)
        {
            a_ds.setPortIdentity(otherPort, a_status);
            a_ds.setPortState(kPortStateSlave, a_status);
            a_ds.setLogMinDelayReqInterval(-2, a_status);
            a_ds.setPeerMeanPathDelay(tTimeInterval(12), a_status);
            a_ds.setLogAnnounceInterval(-128, a_status);
            a_ds.setAnnounceReceiptTimeout(9, a_status);
            a_ds.setLogSyncInterval(-1, a_status);
            a_ds.setDelayMechanism(2, a_status);
            a_ds.setLogMinPdelayReqInterval(127, a_status);
            a_ds.setVersionNumber(1, a_status);
        },
        "portIdentity: clockIdentity: 0000000000000000 portNumber: 7\n portState: 9  "
        "logMinDelayReqInterval: -2  peerMeanPathDelay: scaledNanoseconds: 786432 "
        "logAnnounceInterval: -128  announceReceiptTimeout: 9  logSyncInterval: -1  "
        "delayMechanism: 2  logMinPdelayReqInterval: 127  versionNumber: 1 ");
}

TEST(DataSetTest, AFatalStatusChangesNothing)
{
    tStatus status = fatalStatus();
    tDefaultDS defaultDS(kIdentity);
    defaultDS.setPriority1(5, status);
    EXPECT_EQ(defaultDS.getPriority1(), 128);

    tStatus ok;
    defaultDS.setPriority1(5, ok);
    defaultDS.resetToInitial(status);
    EXPECT_EQ(defaultDS.getPriority1(), 5);
    EXPECT_EQ(status.getCode(), nOrvTarn000::kStatusInternalError);
}

// --------------------------------------------- port timers and sequences

// Timer handles by index and sequence counters by kind belong to the running
// port: the fall-back to the construction values keeps them.
TEST(PortDSTest, TimerHandlesAndSequenceCounters)
{
    tStatus status;
    tPortDS portDS(kIdentity);
    portDS.setTimerId(tPortDS::kAnnounceReceiptTimer, 10, status);
    portDS.setTimerId(tPortDS::kMasterClockSelectedTimer, 15, status);
    for (u32 i = 0; i < 65535; ++i)
    {
        portDS.nextSequenceId(tPortDS::kSyncSequence);
    }
    portDS.nextSequenceId(tPortDS::kDelayReqSequence);
    portDS.resetToInitial(status);
    EXPECT_EQ(status.getCode(), 0);
    const u32 timers[tPortDS::kTimerCount] = {
        10, tPortDS::kNoTimer, tPortDS::kNoTimer, tPortDS::kNoTimer, tPortDS::kNoTimer, 15};
    for (u32 i = 0; i < tPortDS::kTimerCount; ++i)
    {
        EXPECT_EQ(portDS.getTimerId(i), timers[i]) << i;
    }
    EXPECT_EQ(portDS.getSequenceId(tPortDS::kSyncSequence), 65535);
    EXPECT_EQ(portDS.getSequenceId(tPortDS::kDelayReqSequence), 1);
    EXPECT_EQ(portDS.getSequenceId(tPortDS::kAnnounceSequence), 0);
    portDS.nextSequenceId(tPortDS::kSyncSequence);
    EXPECT_EQ(portDS.getSequenceId(tPortDS::kSyncSequence), 0);

    // An index or kind beyond the tables changes nothing and reads as nothing.
    portDS.setTimerId(tPortDS::kTimerCount, 99, status);
    EXPECT_EQ(status.getCode(), kInvalidArgument);
    EXPECT_EQ(portDS.getTimerId(tPortDS::kTimerCount), tPortDS::kNoTimer);
    portDS.nextSequenceId(tPortDS::kSequenceCount);
    EXPECT_EQ(portDS.getSequenceId(tPortDS::kSequenceCount), 0);
    EXPECT_EQ(portDS.getSequenceId(tPortDS::kDelayReqSequence), 1);
    tStatus fatal = fatalStatus();
    portDS.setTimerId(1, 20, fatal);
    EXPECT_EQ(portDS.getTimerId(1), tPortDS::kNoTimer);

    portDS.clearTimerIds();
    for (u32 i = 0; i < tPortDS::kTimerCount; ++i)
    {
        EXPECT_EQ(portDS.getTimerId(i), tPortDS::kNoTimer);
    }
}

// The arithmetic itself is exercised through the Sync and delay exchange.
TEST(CurrentDSTest, NegativeDelayIsIgnoredAndAFatalStatusComputesNothing)
{
    tStatus status;
    tSyncMessage sync(status);
    tDelayRespMessage delayResp(status);
    tCurrentDS currentDS;
    currentDS.setMeanPathDelay(tTimeInterval(500), status);
    currentDS.setMeanPathDelay(tTimeInterval(-1), status);
    EXPECT_EQ(currentDS.getMeanPathDelay(), 500 * kScale);
    EXPECT_EQ(status.getCode(), 0);

    tStatus fatal = fatalStatus();
    currentDS.updateOffsetFromMaster(tTimestamp(1, 0), sync, fatal);
    currentDS.updateMeanPathDelay(tTimestamp(1, 0), tTimestamp(0, 0), sync, delayResp, fatal);
    EXPECT_EQ(currentDS.getOffsetFromMaster(), 0);
    EXPECT_EQ(currentDS.getMeanPathDelay(), 500 * kScale);
}

// ----------------------------------------------------- clock description

class ClockDescriptionTest : public ::testing::Test
{
protected:
    ClockDescriptionTest() : m_description(1, m_status) {}

    typedef void (tClockDescriptionDS::*tPartGetter)(char*) const;

    // The parts of one description, joined by "|".
    std::string parts(std::initializer_list<tPartGetter> a_getters)
    {
        std::string result;
        const char* separator = "";
        for (tPartGetter getter : a_getters)
        {
            char buffer[tClockDescriptionDS::kUserDescriptionPartSize];
            (m_description.*getter)(buffer);
            result = result + separator + buffer;
            separator = "|";
        }
        return result;
    }
    std::string productParts()
    {
        return parts({&tClockDescriptionDS::getManufacturerName,
                      &tClockDescriptionDS::getModelNumber,
                      &tClockDescriptionDS::getInstanceIdentifier});
    }
    std::string revisionParts()
    {
        return parts({&tClockDescriptionDS::getHardwareRevision,
                      &tClockDescriptionDS::getFirmwareRevision,
                      &tClockDescriptionDS::getSoftwareRevision});
    }
    std::string userParts()
    {
        return parts({&tClockDescriptionDS::getUserDescriptionName,
                      &tClockDescriptionDS::getUserDescriptionLocation});
    }
    // The three descriptions whole, joined by "|".
    std::string wholes()
    {
        return str(m_description.getProductDescription()) + "|" +
               str(m_description.getRevisionData()) + "|" + str(m_description.getUserDescription());
    }

    tStatus m_status;
    tClockDescriptionDS m_description;
};

// The clock type and the profile are those of management's clock description.
TEST_F(ClockDescriptionTest, ConstructionValues)
{
    u8 manufacturer[3] = {};
    m_description.getManufacturerIdentity(manufacturer, m_status);
    EXPECT_EQ(tBytes(manufacturer, manufacturer + 3), (tBytes{0x00, 0xA0, 0xC5}));
    EXPECT_EQ(m_description.getPhysicalLayerProtocol(1).getLength(), 0);
    EXPECT_EQ(m_description.getPhysicalAddressLength(1), 0);
    EXPECT_EQ(m_description.getProtocolAddress(1), tPortAddress());
    EXPECT_EQ(wholes(), "||");
    EXPECT_EQ(productParts() + revisionParts() + userParts(), "|||||");
    EXPECT_EQ(m_status.getCode(), 0);
}

// A whole text splits at its first semicolons and travels with them; without
// a semicolon it is the first part, and nothing of a longer text before remains.
TEST_F(ClockDescriptionTest, TextsAsAWholeAndFromParts)
{
    m_description.setProductDescription(text("Orvane;PTP-1;00-A0-C5-01-02-03"), m_status);
    EXPECT_EQ(productParts(), "Orvane|PTP-1|00-A0-C5-01-02-03");
    m_description.setProductDescription(text("a;b;c;d"), m_status);
    EXPECT_EQ(productParts(), "a|b|c;d");
    m_description.setUserDescription(text("name;room;shelf"), m_status);
    EXPECT_EQ(userParts(), "name|room;shelf");
    m_description.setRevisionData(text("1.0;;3"), m_status);
    EXPECT_EQ(revisionParts(), "1.0||3");
    EXPECT_EQ(wholes(), "a;b;c;d|1.0;;3|name;room;shelf");
    m_description.setProductDescription(text("x"), m_status);
    EXPECT_EQ(productParts(), "x||");
    m_description.setRevisionData(text(""), m_status);
    EXPECT_EQ(revisionParts(), "||");

    // From parts: a null part is empty; a null location drops the semicolon.
    m_description.setProductDescription(nullptr, nullptr, nullptr, m_status);
    m_description.setRevisionData("hw", nullptr, "sw", m_status);
    m_description.setUserDescription("clock", nullptr, m_status);
    EXPECT_EQ(wholes(), ";;|hw;;sw|clock");
    EXPECT_EQ(productParts() + " " + revisionParts() + " " + userParts(), "|| hw||sw clock|");
    m_description.setUserDescription("clock", "lab 2", m_status);
    EXPECT_EQ(userParts(), "clock|lab 2");
    m_description.setUserDescription(nullptr, "lab 3", m_status);
    EXPECT_EQ(str(m_description.getUserDescription()), ";lab 3");
    EXPECT_EQ(m_status.getCode(), 0);
    m_description.getManufacturerName(nullptr); // a null buffer takes nothing
}

TEST_F(ClockDescriptionTest, TextsAtTheirLimitsAndBeyond)
{
    const struct
    {
        u32 m_limit;
        void (tClockDescriptionDS::*m_set)(const tPTPText&, tStatus&);
        tPTPText (tClockDescriptionDS::*m_get)() const;
    } cases[] = {
        {64, &tClockDescriptionDS::setProductDescription,
         &tClockDescriptionDS::getProductDescription},
        {32, &tClockDescriptionDS::setRevisionData, &tClockDescriptionDS::getRevisionData},
        {128, &tClockDescriptionDS::setUserDescription, &tClockDescriptionDS::getUserDescription},
    };
    for (const auto& entry : cases)
    {
        const std::string atLimit(entry.m_limit, 'a');
        tStatus status;
        (m_description.*entry.m_set)(text(atLimit), status);
        EXPECT_EQ(status.getCode(), 0) << entry.m_limit;
        (m_description.*entry.m_set)(text(std::string(entry.m_limit + 1, 'b')), status);
        EXPECT_EQ(status.getCode(), kOutOfBounds) << entry.m_limit;
        EXPECT_EQ(str((m_description.*entry.m_get)()), atLimit);
    }

    // 62 characters and two semicolons fill the 64 exactly; one more is
    // refused whole, the old text and parts stay.
    m_description.setProductDescription("old", "model", "1", m_status);
    const std::string name62(62, 'n');
    m_description.setProductDescription(name62.c_str(), "", nullptr, m_status);
    EXPECT_EQ(productParts(), name62 + "||");
    EXPECT_EQ(m_status.getCode(), 0);
    m_description.setProductDescription("old", "model", "1", m_status);
    m_description.setProductDescription((name62 + "n").c_str(), nullptr, nullptr, m_status);
    EXPECT_EQ(m_status.getCode(), kOutOfBounds);
    EXPECT_EQ(productParts(), "old|model|1");
    tStatus status;
    m_description.setUserDescription(std::string(128, 'u').c_str(), "", status);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
}

TEST_F(ClockDescriptionTest, PortEntries)
{
    const u8 mac[6] = {0x00, 0xA0, 0xC5, 0x01, 0x02, 0x03};
    m_description.setPhysicalAddress(1, mac, 6, m_status);
    u8 read[tClockDescriptionDS::kMaxPhysicalAddressLength] = {};
    EXPECT_EQ(m_description.getPhysicalAddress(1, read, m_status), 6);
    EXPECT_EQ(tBytes(read, read + 6), tBytes(mac, mac + 6));
    const u8 ip[4] = {192, 168, 1, 20};
    const tPortAddress address(1, 4, ip, m_status);
    m_description.setProtocolAddress(1, address, m_status);
    EXPECT_EQ(m_description.getProtocolAddress(1), address);
    m_description.setPhysicalLayerProtocol(1, text(std::string(32, 'p')), m_status);
    ASSERT_EQ(m_status.getCode(), 0);

    tStatus tooLong;
    m_description.setPhysicalLayerProtocol(1, text(std::string(33, 'q')), tooLong);
    EXPECT_EQ(tooLong.getCode(), kOutOfBounds);
    EXPECT_EQ(str(m_description.getPhysicalLayerProtocol(1)), std::string(32, 'p'));
    const u8 big[17] = {};
    tStatus tooBig;
    m_description.setPhysicalAddress(1, big, 17, tooBig);
    EXPECT_EQ(tooBig.getCode(), kOutOfBounds);
    EXPECT_EQ(m_description.getPhysicalAddressLength(1), 6);
    m_description.setPhysicalAddress(1, nullptr, 6, m_status); // a null address is empty
    EXPECT_EQ(m_description.getPhysicalAddressLength(1), 0);
    EXPECT_EQ(m_status.getCode(), 0);
}

// Ports count from 1. A status that is already fatal at construction stands
// for a failed allocation: the description then holds no ports at all, yet
// its texts stay usable.
TEST(ClockDescriptionPortsTest, PortNumbersCountFromOne)
{
    tStatus status;
    tClockDescriptionDS two(2, status);
    const u8 profile[6] = {1, 2, 3, 4, 5, 6};
    two.setProfileIdentity(2, profile, status);
    u8 read[6] = {};
    two.getProfileIdentity(1, read, status);
    EXPECT_EQ(read[0], 0x00);
    two.getProfileIdentity(2, read, status);
    EXPECT_EQ(tBytes(read, read + 6), tBytes(profile, profile + 6));
    EXPECT_EQ(status.getCode(), 0);

    tStatus fatal = fatalStatus();
    tClockDescriptionDS none(1, fatal);
    const struct
    {
        tClockDescriptionDS& m_description;
        u16 m_port;
    } unknown[] = {{two, 0}, {two, 3}, {none, 1}};
    for (const auto& entry : unknown)
    {
        tStatus bad;
        entry.m_description.setPhysicalAddress(entry.m_port, profile, 6, bad);
        EXPECT_EQ(bad.getCode(), kInvalidArgument) << entry.m_port;
        tStatus badGet;
        EXPECT_EQ(entry.m_description.getPhysicalAddress(entry.m_port, read, badGet), 0);
        EXPECT_EQ(badGet.getCode(), kInvalidArgument) << entry.m_port;
        EXPECT_EQ(entry.m_description.getPhysicalAddressLength(entry.m_port), 0);
        EXPECT_EQ(entry.m_description.getProtocolAddress(entry.m_port), tPortAddress());
        EXPECT_EQ(entry.m_description.getPhysicalLayerProtocol(entry.m_port).getLength(), 0);
    }
    EXPECT_EQ(none.getNumberPorts(), 1);
    tStatus textStatus;
    none.setUserDescription("name", "place", textStatus);
    EXPECT_EQ(textStatus.getCode(), 0);
    EXPECT_EQ(str(none.getUserDescription()), "name;place");
}

} // namespace
