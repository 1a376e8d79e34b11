// The PTP plug-in's attributes read from a file under a root of the test's
// own. The default MAC address depends on orv_emb, which this program finds
// or misses as ctest arranges it: ZM_TEST_ORV_EMB says which of "present"
// (the stand-in), "bare" (a library without the functions) or "absent" this
// run expects.
#include "tPtpClockAttributes.h"
#include "tAttributeRoot.h"
#include "tNetworkDevices.h"
#include "tOrvEmbModule.h"
#include "tStaticAttributes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

using namespace nZelmarPtpPlugin_1_0;
using nOrvTarn000::tStatus;
using nOrvTarn000::tString;
using zelmarPluginCore_1_0::tStaticAttributes;

namespace
{

typedef std::vector<u8> tBytes;

tBytes bytesOf(const u8* a_pBytes, std::size_t a_count)
{
    return tBytes(a_pBytes, a_pBytes + a_count);
}

class PtpClockAttributes : public testing::Test
{
protected:
    // Reads the attributes from a file with these lines; a_rCode gets the status.
    tPtpClockAttributes readFrom(const std::string& a_lines, i32& a_rCode)
    {
        m_root.writeEntries("ptp", a_lines);
        tStatus status;
        tStaticAttributes file("ptp", status);
        tPtpClockAttributes attributes;
        attributes.read(file, status);
        a_rCode = status.getCode();
        return attributes;
    }

    nTestFiles::tAttributeRoot m_root;
};

struct tTreatmentCase
{
    const char* m_pKey;
    const char* m_pText; // null: the key is absent
    std::function<std::string(const tPtpClockAttributes&)> m_field;
    std::string m_expected;
    i32 m_code;
};

#define ZM_FIELD(name)                                                                             \
    [](const tPtpClockAttributes& a_rAttributes) { return std::to_string(a_rAttributes.name); }
#define ZM_TEXT(name)                                                                              \
    [](const tPtpClockAttributes& a_rAttributes) { return std::string(a_rAttributes.name.c_str()); }

// The MAC address of the last device with this IP address, or none.
tBytes lastDeviceWithAddress(u32 a_ipAddress)
{
    tBytes address(6, 0);
    tStatus status;
    tNetworkDeviceConfig config;
    for (u32 device = nNetworkDevices::iterateDeviceList(0, status); device != 0;
         device = nNetworkDevices::iterateDeviceList(device, status))
    {
        if (nNetworkDevices::getDeviceConfig(device, config, status) &&
            config.m_ipAddress == a_ipAddress)
        {
            address = bytesOf(config.m_macAddress, 6);
        }
    }
    EXPECT_TRUE(status.isNotFatal());
    return address;
}

std::string orvEmbMode()
{
    const char* pMode = getenv("ZM_TEST_ORV_EMB");
    return pMode == nullptr ? "absent" : pMode;
}

} // namespace

TEST_F(PtpClockAttributes, EachAttributeGetsItsTreatment)
{
    const tTreatmentCase cases[] = {
        {"PriorityOne", nullptr, ZM_FIELD(m_priority1), "128", 0},
        {"PriorityOne", "300", ZM_FIELD(m_priority1), "44", 0},
        {"PriorityOne", "-1", ZM_FIELD(m_priority1), "128", -52003},
        {"PriorityTwo", nullptr, ZM_FIELD(m_priority2), "128", 0},
        {"PriorityTwo", "256", ZM_FIELD(m_priority2), "0", 0},
        {"SlaveOnly", nullptr, ZM_FIELD(m_slaveOnly), "0", 0},
        {"SlaveOnly", "TRUE", ZM_FIELD(m_slaveOnly), "1", 0},
        {"SlaveOnly", "1", ZM_FIELD(m_slaveOnly), "0", -52003},
        {"LogSyncInterval", nullptr, ZM_FIELD(m_logSyncInterval), "0", 0},
        {"LogSyncInterval", "2", ZM_FIELD(m_logSyncInterval), "0", 0},
        {"LogSyncInterval", "4294967295", ZM_FIELD(m_logSyncInterval), "-1", 0},
        {"LogSyncInterval", "4294967294", ZM_FIELD(m_logSyncInterval), "0", 0},
        {"LogSyncInterval", "257", ZM_FIELD(m_logSyncInterval), "1", 0},
        {"LogMinDelayReqInterval", nullptr, ZM_FIELD(m_logMinDelayReqInterval), "0", 0},
        {"LogMinDelayReqInterval", "4294967293", ZM_FIELD(m_logMinDelayReqInterval), "-3", 0},
        {"LogMinDelayReqInterval", "128", ZM_FIELD(m_logMinDelayReqInterval), "-128", 0},
        {"AnnounceReceiptTimeout", nullptr, ZM_FIELD(m_announceReceiptTimeout), "3", 0},
        {"AnnounceReceiptTimeout", "260", ZM_FIELD(m_announceReceiptTimeout), "4", 0},
        {"LogAnnounceInterval", nullptr, ZM_FIELD(m_logAnnounceInterval), "1", 0},
        {"LogAnnounceInterval", "4294967294", ZM_FIELD(m_logAnnounceInterval), "-2", 0},
        {"DomainNumber", nullptr, ZM_FIELD(m_domainNumber), "0", 0},
        {"DomainNumber", "511", ZM_FIELD(m_domainNumber), "255", 0},
        {"ClockClass", nullptr, ZM_FIELD(m_clockClass), "250", 0},
        {"ClockClass", "262", ZM_FIELD(m_clockClass), "6", 0},
        {"ClockClass", "x", ZM_FIELD(m_clockClass), "250", -52003},
        {"UserDescriptionName", nullptr, ZM_TEXT(m_userDescriptionName), "", 0},
        {"UserDescriptionName", "\"lab \\\"a\\\"\\t;\"", ZM_TEXT(m_userDescriptionName),
         "lab \"a\"\t;", 0},
        {"UserDescriptionLocation", "rack 4", ZM_TEXT(m_userDescriptionLocation), "rack 4", 0},
    };
    for (const tTreatmentCase& testCase : cases)
    {
        const std::string line =
            testCase.m_pText == nullptr
                ? std::string()
                : std::string("source.ptp.") + testCase.m_pKey + " = " + testCase.m_pText + "\r\n";
        i32 code = 0;
        const tPtpClockAttributes attributes = readFrom(line, code);
        const std::string label =
            std::string(testCase.m_pKey) + " = " + (testCase.m_pText ? testCase.m_pText : "(none)");
        EXPECT_EQ(testCase.m_expected, testCase.m_field(attributes)) << label;
        EXPECT_EQ(testCase.m_code, code) << label;
    }
}

TEST_F(PtpClockAttributes, TheTtlAndTheUtcOffsetFlag)
{
    const struct
    {
        const char* m_pLines;
        u32 m_ttl;
        bool m_useUtcOffset;
        i32 m_code;
    } cases[] = {
        {"", 1, false, 0},
        {"source.ptp.MulticastMsgTTL = 0\r\nsource.ptp.UseUtcOffset = true\r\n", 0, true, 0},
        {"source.ptp.MulticastMsgTTL = 255\r\n", 255, false, 0},
        {"source.ptp.MulticastMsgTTL = 256\r\n", 1, false, -52005},
        {"source.ptp.MulticastMsgTTL = 4294967295\r\n", 1, false, -52005},
    };
    for (const auto& testCase : cases)
    {
        m_root.writeEntries("ptp", testCase.m_pLines);
        tStatus status;
        tStaticAttributes file("ptp", status);
        EXPECT_EQ(testCase.m_ttl, readMulticastMsgTTL(file, status)) << testCase.m_pLines;
        EXPECT_EQ(testCase.m_code, status.getCode()) << testCase.m_pLines;
        status.clear();
        EXPECT_EQ(testCase.m_useUtcOffset, readUseUtcOffset(file, status)) << testCase.m_pLines;
    }
}

TEST_F(PtpClockAttributes, MacAddressTextsAndTheClockIdentity)
{
    const tBytes address = {0x00, 0x1B, 0x21, 0xAB, 0xCD, 0xEF};
    const tBytes none(6, 0);
    const struct
    {
        const char* m_pText;
        tBytes m_address;
    } cases[] = {
        {"\"00-1B-21-AB-CD-EF\"", address}, {"00:1b:21:ab:cd:ef", address},
        {"0:1B:21-ab-0xcd:EF", address},    {"100-11B-21-AB-CD-EF", address},
        {"00-1B-21-AB-CD", none},           {"00 1B 21 AB CD EF", none},
        {"not an address", none},
    };
    for (const auto& testCase : cases)
    {
        i32 code = 0;
        const tPtpClockAttributes attributes = readFrom(
            std::string("source.ptp.EthernetMacAddress = ") + testCase.m_pText + "\r\n", code);
        EXPECT_EQ(testCase.m_address, bytesOf(attributes.m_macAddress, 6)) << testCase.m_pText;
        const u8* pMac = attributes.m_macAddress;
        const tBytes identity = {pMac[0], pMac[1], pMac[2], 0xFF, 0xFE, pMac[3], pMac[4], pMac[5]};
        EXPECT_EQ(identity, bytesOf(attributes.m_clockIdentity, 8)) << testCase.m_pText;
        EXPECT_EQ(0, code);
    }
}

TEST_F(PtpClockAttributes, DefaultMacAddressFollowsOrvEmb)
{
    const std::string mode = orvEmbMode();
    const tOrvEmbModule orvEmb;
    char description[8] = "x";
    if (mode == "absent")
    {
        if (orvEmb.isLoaded())
        {
            GTEST_SKIP() << "a liborv_emb.so is installed where the loader finds it";
        }
        EXPECT_EQ(0u, orvEmb.getDeviceDescription(description, 7));
        EXPECT_STREQ("", description);
    }
    else
    {
        ASSERT_TRUE(orvEmb.isLoaded()) << "ctest puts the library on LD_LIBRARY_PATH";
    }

    i32 code = 0;
    const tPtpClockAttributes attributes = readFrom("", code);
    EXPECT_EQ(0, code);
    // Without the library there is no default; a library without the
    // function stands for the primary address 0.
    const tBytes expected =
        mode == "absent" ? tBytes(6, 0) : lastDeviceWithAddress(orvEmb.getPrimaryIPAddress());
    EXPECT_EQ(expected, bytesOf(attributes.m_macAddress, 6));
    if (mode == "bare")
    {
        EXPECT_EQ(0u, orvEmb.getPrimaryIPAddress());
        EXPECT_EQ(0u, orvEmb.getDeviceDescription(description, 7));
    }
}

TEST(OrvEmbStandIn, PrimaryAddressAndDescriptionComeFromTheSystem)
{
    if (orvEmbMode() != "present")
    {
        GTEST_SKIP() << "checked in the run with the stand-in";
    }
    const tOrvEmbModule orvEmb;
    ASSERT_TRUE(orvEmb.isLoaded());
    const u32 primary = orvEmb.getPrimaryIPAddress();
    EXPECT_TRUE(primary == 0 || lastDeviceWithAddress(primary) != tBytes(6, 0));

    const u32 length = orvEmb.getDeviceDescription(nullptr, 0);
    ASSERT_GT(length, 6u);
    std::vector<char> whole(length + 1, 'x');
    EXPECT_EQ(length, orvEmb.getDeviceDescription(whole.data(), length));
    EXPECT_EQ(length, std::strlen(whole.data()));
    EXPECT_EQ(0, std::strncmp("Linux ", whole.data(), 6));

    char part[5] = "zzzz";
    EXPECT_EQ(length, orvEmb.getDeviceDescription(part, 3));
    EXPECT_EQ(std::string(whole.data(), 3), part) << "cut to a_size characters and a NUL";
}
