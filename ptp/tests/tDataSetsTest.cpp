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

TEST(DataSetTraceTest, ConstructionValuesAsTraced)
{
    tDefaultDS defaultDS(kIdentity);
    EXPECT_EQ(traceText(defaultDS),
              "twoStepFlag: 1  clockIdentity: 001b19fffe0abcde numberPorts: 1  clockQuality: "
              "clockClass: 187 clockAccuracy: 0xfe offsetScaledLogVariance: 0xffff priority1: 128 "
              " priority2: 128  domainNumber: 0  slaveOnly: 0 ");

    tCurrentDS currentDS;
    EXPECT_EQ(traceText(currentDS), "stepsRemoved: 0 offsetFromMaster: scaledNanoseconds: 0 "
                                    "meanPathDelay: scaledNanoseconds: 0");

    // The parent is the clock itself, port 0; the port identity's own trace
    // ends its line.
    tParentDS parentDS(kIdentity);
    EXPECT_EQ(traceText(parentDS),
              "parentPortIdentity: clockIdentity: 001b19fffe0abcde portNumber: 0\n"
              " parentStats: 0  observedParentOffsetScaledLogVariance: 65535 "
              " observedParentClockPhaseChangeRate: 2147483647  grandmasterIdentity: "
              "001b19fffe0abcde grandmasterClockQuality: clockClass: 187 clockAccuracy: 0xfe "
              "offsetScaledLogVariance: 0xffff grandmasterPriority1: 128  grandmasterPriority2: "
              "128 ");

    tTimePropertiesDS timePropertiesDS;
    EXPECT_EQ(traceText(timePropertiesDS),
              "currentUtcOffset: 34  currentUtcOffsetValid: 0  leap59: 0  leap61: 0  "
              "timeTraceable: 0  frequencyTraceable: 0  ptpTimescale: 1  timeSource: 160 ");

    tPortDS portDS(kIdentity);
    EXPECT_EQ(traceText(portDS),
              "portIdentity: clockIdentity: 001b19fffe0abcde portNumber: 1\n portState: 1  "
              "logMinDelayReqInterval: 0  peerMeanPathDelay: scaledNanoseconds: 0 "
              "logAnnounceInterval: 1  announceReceiptTimeout: 3  logSyncInterval: 0  "
              "delayMechanism: 1  logMinPdelayReqInterval: 0  versionNumber: 2 ");
}

TEST(DataSetTraceTest, SignedFieldsPrintSignedAndTheUtcOffsetUnsigned)
{
    tStatus status;
    tPortDS portDS(kIdentity);
    portDS.setLogMinDelayReqInterval(-4, status);
    portDS.setLogAnnounceInterval(-128, status);
    portDS.setLogSyncInterval(-1, status);
    portDS.setLogMinPdelayReqInterval(127, status);
    portDS.setPortState(kPortStateSlave, status);
    EXPECT_EQ(traceText(portDS),
              "portIdentity: clockIdentity: 001b19fffe0abcde portNumber: 1\n portState: 9  "
              "logMinDelayReqInterval: -4  peerMeanPathDelay: scaledNanoseconds: 0 "
              "logAnnounceInterval: -128  announceReceiptTimeout: 3  logSyncInterval: -1  "
              "delayMechanism: 1  logMinPdelayReqInterval: 127  versionNumber: 2 ");

    tParentDS parentDS(kIdentity);
    parentDS.setObservedParentClockPhaseChangeRate(-5, status);
    EXPECT_NE(traceText(parentDS).find(" observedParentClockPhaseChangeRate: -5  "),
              std::string::npos);

    // The offset is traced as unsigned: -1 shows as its 32-bit two's complement.
    tTimePropertiesDS timePropertiesDS;
    timePropertiesDS.setCurrentUtcOffset(-1, status);
    timePropertiesDS.setTimeSource(0x20, status);
    EXPECT_EQ(traceText(timePropertiesDS),
              "currentUtcOffset: 4294967295  currentUtcOffsetValid: 0  leap59: 0  leap61: 0  "
              "timeTraceable: 0  frequencyTraceable: 0  ptpTimescale: 1  timeSource: 32 ");
    EXPECT_EQ(status.getCode(), 0);
}

TEST(DataSetResetTest, EveryFieldReturnsToItsConstructionValue)
{
    tStatus status;
    const tClockQuality quality(6, 0x21, 0x4E5D);
    const tPortIdentity otherPort(kOtherIdentity, 7);

    tDefaultDS defaultDS(kIdentity);
    const std::string defaultInitial = traceText(defaultDS);
    defaultDS.setTwoStepFlag(false, status);
    defaultDS.setClockIdentity(kOtherIdentity, status);
    defaultDS.setNumberPorts(4, status);
    defaultDS.setClockQuality(quality, status);
    defaultDS.setPriority1(1, status);
    defaultDS.setPriority2(2, status);
    defaultDS.setDomainNumber(3, status);
    defaultDS.setSlaveOnly(true, status);

    tCurrentDS currentDS;
    const std::string currentInitial = traceText(currentDS);
    currentDS.setStepsRemoved(5, status);
    currentDS.setOffsetFromMaster(tTimeInterval(-77), status);
    currentDS.setMeanPathDelay(tTimeInterval(1000), status);

    tParentDS parentDS(kIdentity);
    const std::string parentInitial = traceText(parentDS);
    parentDS.setParentPortIdentity(otherPort, status);
    parentDS.setParentStats(true, status);
    parentDS.setObservedParentOffsetScaledLogVariance(17, status);
    parentDS.setObservedParentClockPhaseChangeRate(-9, status);
    parentDS.setGrandmasterIdentity(kOtherIdentity, status);
    parentDS.setGrandmasterClockQuality(quality, status);
    parentDS.setGrandmasterPriority1(10, status);
    parentDS.setGrandmasterPriority2(20, status);

    tTimePropertiesDS timePropertiesDS;
    const std::string timePropertiesInitial = traceText(timePropertiesDS);
    timePropertiesDS.setCurrentUtcOffset(37, status);
    timePropertiesDS.setCurrentUtcOffsetValid(true, status);
    timePropertiesDS.setLeap59(true, status);
    timePropertiesDS.setLeap61(true, status);
    timePropertiesDS.setTimeTraceable(true, status);
    timePropertiesDS.setFrequencyTraceable(true, status);
    timePropertiesDS.setPtpTimescale(false, status);
    timePropertiesDS.setTimeSource(0x10, status);

    tPortDS portDS(kIdentity);
    const std::string portInitial = traceText(portDS);
    portDS.setPortIdentity(otherPort, status);
    portDS.setPortState(kPortStateMaster, status);
    portDS.setLogMinDelayReqInterval(-2, status);
    portDS.setPeerMeanPathDelay(tTimeInterval(12), status);
    portDS.setLogAnnounceInterval(-3, status);
    portDS.setAnnounceReceiptTimeout(9, status);
    portDS.setLogSyncInterval(-4, status);
    portDS.setDelayMechanism(2, status);
    portDS.setLogMinPdelayReqInterval(-5, status);
    portDS.setVersionNumber(1, status);
    ASSERT_EQ(status.getCode(), 0);

    // The traces hold every field, so each changed field shows.
    EXPECT_NE(traceText(defaultDS), defaultInitial);
    EXPECT_NE(traceText(currentDS), currentInitial);
    EXPECT_NE(traceText(parentDS), parentInitial);
    EXPECT_NE(traceText(timePropertiesDS), timePropertiesInitial);
    EXPECT_NE(traceText(portDS), portInitial);

    defaultDS.resetToInitial(status);
    currentDS.resetToInitial(status);
    parentDS.resetToInitial(status);
    timePropertiesDS.resetToInitial(status);
    portDS.resetToInitial(status);
    EXPECT_EQ(status.getCode(), 0);
    EXPECT_EQ(traceText(defaultDS), defaultInitial);
    EXPECT_EQ(traceText(currentDS), currentInitial);
    EXPECT_EQ(traceText(parentDS), parentInitial);
    EXPECT_EQ(traceText(timePropertiesDS), timePropertiesInitial);
    EXPECT_EQ(traceText(portDS), portInitial);
    EXPECT_EQ(currentDS.getMeanPathDelay(), 0);
}

TEST(DataSetResetTest, AFatalStatusChangesNothing)
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

TEST(PortDSTest, TimerHandlesByIndexAndClearing)
{
    tStatus status;
    tPortDS portDS(kIdentity);
    for (u32 i = 0; i < tPortDS::kTimerCount; ++i)
    {
        EXPECT_EQ(portDS.getTimerId(i), tPortDS::kNoTimer);
    }
    portDS.setTimerId(tPortDS::kAnnounceReceiptTimer, 10, status);
    portDS.setTimerId(tPortDS::kMasterClockSelectedTimer, 15, status);
    EXPECT_EQ(portDS.getTimerId(0), 10u);
    EXPECT_EQ(portDS.getTimerId(5), 15u);
    EXPECT_EQ(portDS.getTimerId(3), tPortDS::kNoTimer);

    // An index beyond the table writes nothing and reads as no timer.
    portDS.setTimerId(tPortDS::kTimerCount, 99, status);
    EXPECT_EQ(status.getCode(), kInvalidArgument);
    EXPECT_EQ(portDS.getTimerId(tPortDS::kTimerCount), tPortDS::kNoTimer);
    EXPECT_EQ(portDS.getTimerId(5), 15u);

    tStatus fatal = fatalStatus();
    portDS.setTimerId(1, 20, fatal);
    EXPECT_EQ(portDS.getTimerId(1), tPortDS::kNoTimer);

    portDS.clearTimerIds();
    for (u32 i = 0; i < tPortDS::kTimerCount; ++i)
    {
        EXPECT_EQ(portDS.getTimerId(i), tPortDS::kNoTimer);
    }
}

TEST(PortDSTest, SequenceCountersStepPerKindAndWrap)
{
    tPortDS portDS(kIdentity);
    for (u32 i = 0; i < 65535; ++i)
    {
        portDS.nextSequenceId(tPortDS::kSyncSequence);
    }
    portDS.nextSequenceId(tPortDS::kDelayReqSequence);
    EXPECT_EQ(portDS.getSequenceId(tPortDS::kSyncSequence), 65535);
    EXPECT_EQ(portDS.getSequenceId(tPortDS::kDelayReqSequence), 1);
    EXPECT_EQ(portDS.getSequenceId(tPortDS::kAnnounceSequence), 0);

    portDS.nextSequenceId(tPortDS::kSyncSequence);
    EXPECT_EQ(portDS.getSequenceId(tPortDS::kSyncSequence), 0);

    // An unknown kind steps nothing.
    portDS.nextSequenceId(tPortDS::kSequenceCount);
    EXPECT_EQ(portDS.getSequenceId(tPortDS::kSequenceCount), 0);
    EXPECT_EQ(portDS.getSequenceId(tPortDS::kDelayReqSequence), 1);
}

TEST(PortDSTest, ResetKeepsTimerHandlesAndSequenceCounters)
{
    tStatus status;
    tPortDS portDS(kIdentity);
    portDS.setTimerId(tPortDS::kSendSyncTimer, 42, status);
    portDS.nextSequenceId(tPortDS::kAnnounceSequence);
    portDS.setLogSyncInterval(-3, status);

    portDS.resetToInitial(status);
    EXPECT_EQ(portDS.getLogSyncInterval(), 0);
    EXPECT_EQ(portDS.getTimerId(tPortDS::kSendSyncTimer), 42u);
    EXPECT_EQ(portDS.getSequenceId(tPortDS::kAnnounceSequence), 1);
    EXPECT_EQ(status.getCode(), 0);
}

// ------------------------------------------------------ measurement
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

    tStatus m_status;
    tClockDescriptionDS m_description;
};

TEST_F(ClockDescriptionTest, ConstructionValues)
{
    EXPECT_TRUE(m_description.getOrdinaryClock());
    EXPECT_FALSE(m_description.getBoundaryClock());
    EXPECT_FALSE(m_description.getPeerToPeerTransparentClock());
    EXPECT_FALSE(m_description.getEndToEndTransparentClock());
    EXPECT_FALSE(m_description.getManagementNode());
    EXPECT_EQ(m_description.getNumberPorts(), 1);

    u8 manufacturer[3] = {};
    m_description.getManufacturerIdentity(manufacturer, m_status);
    EXPECT_EQ(tBytes(manufacturer, manufacturer + 3), (tBytes{0x00, 0xA0, 0xC5}));

    u8 profile[6] = {};
    m_description.getProfileIdentity(1, profile, m_status);
    EXPECT_EQ(tBytes(profile, profile + 6), (tBytes{0x00, 0x1B, 0x19, 0x00, 0x01, 0x00}));

    EXPECT_EQ(m_description.getPhysicalLayerProtocol(1).getLength(), 0);
    EXPECT_EQ(m_description.getPhysicalAddressLength(1), 0);
    EXPECT_EQ(m_description.getProtocolAddress(1), tPortAddress());
    EXPECT_EQ(m_description.getProductDescription().getLength(), 0);
    EXPECT_EQ(m_description.getRevisionData().getLength(), 0);
    EXPECT_EQ(m_description.getUserDescription().getLength(), 0);
    EXPECT_EQ(productParts(), "||");
    EXPECT_EQ(revisionParts(), "||");
    EXPECT_EQ(userParts(), "|");
    EXPECT_EQ(m_status.getCode(), 0);
}

TEST_F(ClockDescriptionTest, AWholeTextSplitsAtItsFirstSemicolons)
{
    m_description.setProductDescription(text("Orvane;PTP-1;00-A0-C5-01-02-03"), m_status);
    EXPECT_EQ(productParts(), "Orvane|PTP-1|00-A0-C5-01-02-03");
    // The text that travels keeps its semicolons.
    EXPECT_EQ(str(m_description.getProductDescription()), "Orvane;PTP-1;00-A0-C5-01-02-03");

    // A later semicolon stays inside the last part.
    m_description.setProductDescription(text("a;b;c;d"), m_status);
    EXPECT_EQ(productParts(), "a|b|c;d");
    m_description.setUserDescription(text("name;room;shelf"), m_status);
    EXPECT_EQ(userParts(), "name|room;shelf");

    // Without a semicolon the text is the first part; nothing of the longer
    // text before remains.
    m_description.setProductDescription(text("x"), m_status);
    EXPECT_EQ(productParts(), "x||");
    m_description.setRevisionData(text("1.0;;3"), m_status);
    EXPECT_EQ(revisionParts(), "1.0||3");
    m_description.setRevisionData(text(""), m_status);
    EXPECT_EQ(revisionParts(), "||");
    EXPECT_EQ(m_status.getCode(), 0);
}

TEST_F(ClockDescriptionTest, TextFromPartsJoinsWithSemicolons)
{
    m_description.setProductDescription(nullptr, nullptr, nullptr, m_status);
    EXPECT_EQ(str(m_description.getProductDescription()), ";;");
    EXPECT_EQ(productParts(), "||");

    m_description.setRevisionData("hw", nullptr, "sw", m_status);
    EXPECT_EQ(str(m_description.getRevisionData()), "hw;;sw");
    EXPECT_EQ(revisionParts(), "hw||sw");

    m_description.setUserDescription("clock", nullptr, m_status);
    EXPECT_EQ(str(m_description.getUserDescription()), "clock");
    EXPECT_EQ(userParts(), "clock|");
    m_description.setUserDescription("clock", "lab 2", m_status);
    EXPECT_EQ(str(m_description.getUserDescription()), "clock;lab 2");
    EXPECT_EQ(userParts(), "clock|lab 2");
    m_description.setUserDescription(nullptr, "lab 3", m_status);
    EXPECT_EQ(str(m_description.getUserDescription()), ";lab 3");
    EXPECT_EQ(m_status.getCode(), 0);

    // A null buffer takes nothing.
    m_description.getManufacturerName(nullptr);
}

TEST_F(ClockDescriptionTest, TextsAtTheirLimitsAndBeyond)
{
    struct tCase
    {
        u32 m_limit;
        void (tClockDescriptionDS::*m_set)(const tPTPText&, tStatus&);
        tPTPText (tClockDescriptionDS::*m_get)() const;
    };
    const tCase cases[] = {
        {64, &tClockDescriptionDS::setProductDescription,
         &tClockDescriptionDS::getProductDescription},
        {32, &tClockDescriptionDS::setRevisionData, &tClockDescriptionDS::getRevisionData},
        {128, &tClockDescriptionDS::setUserDescription, &tClockDescriptionDS::getUserDescription},
    };
    for (const tCase& c : cases)
    {
        const std::string atLimit(c.m_limit, 'a');
        tStatus status;
        (m_description.*c.m_set)(text(atLimit), status);
        EXPECT_EQ(status.getCode(), 0) << c.m_limit;
        EXPECT_EQ(str((m_description.*c.m_get)()), atLimit);

        (m_description.*c.m_set)(text(std::string(c.m_limit + 1, 'b')), status);
        EXPECT_EQ(status.getCode(), kOutOfBounds) << c.m_limit;
        EXPECT_EQ(str((m_description.*c.m_get)()), atLimit);
    }
    EXPECT_EQ(productParts(), std::string(64, 'a') + "||");
}

TEST_F(ClockDescriptionTest, PartsThatDoNotFitAreRefusedWhole)
{
    m_description.setProductDescription("old", "model", "1", m_status);
    // 62 characters and two semicolons fill the 64 exactly.
    const std::string name62(62, 'n');
    m_description.setProductDescription(name62.c_str(), "", nullptr, m_status);
    EXPECT_EQ(m_status.getCode(), 0);
    EXPECT_EQ(productParts(), name62 + "||");

    m_description.setProductDescription("old", "model", "1", m_status);
    const std::string name63(63, 'n');
    m_description.setProductDescription(name63.c_str(), nullptr, nullptr, m_status);
    EXPECT_EQ(m_status.getCode(), kOutOfBounds);
    EXPECT_EQ(str(m_description.getProductDescription()), "old;model;1");
    EXPECT_EQ(productParts(), "old|model|1");

    tStatus status;
    m_description.setUserDescription(std::string(128, 'u').c_str(), "", status);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
    EXPECT_EQ(userParts(), "|");
}

TEST_F(ClockDescriptionTest, PortEntries)
{
    const u8 mac[6] = {0x00, 0xA0, 0xC5, 0x01, 0x02, 0x03};
    m_description.setPhysicalAddress(1, mac, 6, m_status);
    u8 read[tClockDescriptionDS::kMaxPhysicalAddressLength] = {};
    EXPECT_EQ(m_description.getPhysicalAddress(1, read, m_status), 6);
    EXPECT_EQ(tBytes(read, read + 6), tBytes(mac, mac + 6));
    EXPECT_EQ(m_description.getPhysicalAddressLength(1), 6);

    const u8 ip[4] = {192, 168, 1, 20};
    const tPortAddress address(1, 4, ip, m_status);
    m_description.setProtocolAddress(1, address, m_status);
    EXPECT_EQ(m_description.getProtocolAddress(1), address);

    m_description.setPhysicalLayerProtocol(1, text(std::string(32, 'p')), m_status);
    EXPECT_EQ(m_description.getPhysicalLayerProtocol(1).getLength(), 32);
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

    // A null address is an empty one.
    m_description.setPhysicalAddress(1, nullptr, 6, m_status);
    EXPECT_EQ(m_description.getPhysicalAddressLength(1), 0);
    EXPECT_EQ(m_status.getCode(), 0);
}

TEST(ClockDescriptionPortsTest, PortNumbersCountFromOne)
{
    tStatus status;
    tClockDescriptionDS description(2, status);
    const u8 profile[6] = {1, 2, 3, 4, 5, 6};
    description.setProfileIdentity(2, profile, status);
    u8 read[6] = {};
    description.getProfileIdentity(1, read, status);
    EXPECT_EQ(read[0], 0x00);
    description.getProfileIdentity(2, read, status);
    EXPECT_EQ(tBytes(read, read + 6), tBytes(profile, profile + 6));
    EXPECT_EQ(status.getCode(), 0);

    for (u16 port : {u16(0), u16(3)})
    {
        tStatus bad;
        description.setPhysicalAddress(port, profile, 6, bad);
        EXPECT_EQ(bad.getCode(), kInvalidArgument) << port;
        tStatus badGet;
        EXPECT_EQ(description.getPhysicalAddress(port, read, badGet), 0);
        EXPECT_EQ(badGet.getCode(), kInvalidArgument) << port;
        EXPECT_EQ(description.getPhysicalAddressLength(port), 0);
        EXPECT_EQ(description.getProtocolAddress(port), tPortAddress());
    }
}

TEST(ClockDescriptionPortsTest, WithoutPortEntriesEveryPortIsUnknown)
{
    // A status that is already fatal stands for a failed allocation: the
    // clock description then holds no ports, yet stays usable.
    tStatus fatal = fatalStatus();
    tClockDescriptionDS description(1, fatal);
    EXPECT_EQ(description.getNumberPorts(), 1);
    EXPECT_TRUE(description.getOrdinaryClock());

    tStatus status;
    const u8 mac[6] = {};
    description.setPhysicalAddress(1, mac, 6, status);
    EXPECT_EQ(status.getCode(), kInvalidArgument);
    EXPECT_EQ(description.getPhysicalAddressLength(1), 0);
    EXPECT_EQ(description.getPhysicalLayerProtocol(1).getLength(), 0);

    tStatus textStatus;
    description.setUserDescription("name", "place", textStatus);
    EXPECT_EQ(textStatus.getCode(), 0);
    EXPECT_EQ(str(description.getUserDescription()), "name;place");
}

} // namespace
