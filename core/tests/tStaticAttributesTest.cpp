// The typed view on a source's file: where the file lies, how each type reads
// and what a failure becomes. The files live under a root of the test's own.
#include "tStaticAttributes.h"
#include "tAttributeRoot.h"

#include <gtest/gtest.h>

#include <cstdlib>

using nOrvTarn000::tStatus;
using nOrvTarn000::tString;
using nTestFiles::readFile;
using nTestFiles::writeFile;
using zelmarPluginCore_1_0::tStaticAttributes;

namespace
{

const char kRootVariable[] = "ZM_PTP_ROOT";

class StaticAttributes : public testing::Test
{
protected:
    void writeEntry(const std::string& a_line) { m_root.writeEntries("ptp", a_line + "\r\n"); }

    nTestFiles::tAttributeRoot m_root;
    const std::string m_path = m_root.file("ptp");
};

struct tReadCase
{
    const char* m_pLine;
    const char* m_pType;
    std::string m_expected;
    i32 m_code;
};

// Reads "k" as a_pType with a default that no case expects, as text.
std::string readAs(tStaticAttributes& a_rAttributes, const std::string& a_type, tStatus& a_status)
{
    if (a_type == "u32")
    {
        return std::to_string(a_rAttributes.getU32("k", 7, a_status));
    }
    if (a_type == "i32")
    {
        return std::to_string(a_rAttributes.getI32("k", 7, a_status));
    }
    if (a_type == "f64")
    {
        return std::to_string(a_rAttributes.getF64("k", 7.0, a_status));
    }
    if (a_type == "bool")
    {
        return a_rAttributes.getBool("k", false, a_status) ? "true" : "false";
    }
    return a_rAttributes.getString("k", "default", a_status).c_str();
}

} // namespace

TEST_F(StaticAttributes, FileLiesUnderTheRootAndKeysCarryTheSourcePrefix)
{
    tStatus status;
    {
        tStaticAttributes attributes("ptp", status);
        EXPECT_EQ(m_path, attributes.getFilePath().c_str());
        attributes.putU32("PriorityOne", 128, status);
        attributes.putI32("LogSyncInterval", -1, status);
        attributes.putString("UserDescriptionName", "lab", status);
        attributes.save(status);
    }
    EXPECT_EQ(0, status.getCode());
    EXPECT_EQ("[ZELMAR]\r\nsource.ptp.PriorityOne = 128\r\nsource.ptp.LogSyncInterval = "
              "4294967295\r\nsource.ptp.UserDescriptionName = \"lab\"\r\n\r\n",
              readFile(m_path));

    for (const char* pRoot : {static_cast<const char*>(nullptr), ""})
    {
        if (pRoot == nullptr)
        {
            unsetenv(kRootVariable);
        }
        else
        {
            setenv(kRootVariable, pRoot, 1);
        }
        tStaticAttributes fallback("gps", status);
        EXPECT_STREQ("/var/lib/zm_ptp/orv-rt/system/zelmar/zelmar-gps.ini",
                     fallback.getFilePath().c_str());
    }
}

TEST_F(StaticAttributes, EachTypeReadsOrFallsBackToItsDefault)
{
    const std::string longText(300, 'x');
    // The parse of each type is the ini store's; here its outcome per type.
    const tReadCase cases[] = {
        {"source.ptp.other = 5", "u32", "7", 0},
        {"SOURCE.PTP.K = 5", "u32", "5", 0},
        {"source.ptp.k = -1", "u32", "7", -52003},
        {"source.ptp.k = 4294967295", "i32", "-1", 0},
        {"source.ptp.k = x", "i32", "7", -52003},
        {"source.ptp.k = 0.25", "f64", "0.250000", 0},
        {"source.ptp.k = 1s", "f64", "7.000000", -52003},
        {"source.ptp.k = TRUE", "bool", "true", 0},
        {"source.ptp.k = yes", "bool", "false", -52003},
        {"source.ptp.k = \"a\\tb\"", "string", "a\tb", 0},
        {"source.ptp.k =", "string", "default", 0},
        {"source.ptp.k = \"\"", "string", "", 0},
    };
    for (const tReadCase& testCase : cases)
    {
        writeEntry(testCase.m_pLine);
        tStatus status;
        tStaticAttributes attributes("ptp", status);
        EXPECT_EQ(testCase.m_expected, readAs(attributes, testCase.m_pType, status))
            << testCase.m_pLine << " as " << testCase.m_pType;
        EXPECT_EQ(testCase.m_code, status.getCode()) << testCase.m_pLine;
    }

    writeEntry("source.ptp.k = \"" + longText + "\"");
    tStatus status;
    tStaticAttributes attributes("ptp", status);
    EXPECT_EQ(longText.substr(0, 255), attributes.getString("k", "", status).c_str());
}

TEST_F(StaticAttributes, UnusableFilesGiveDefaultsWithACleanStatus)
{
    const std::string files[] = {
        std::string("\xFF\xFE[\0Z\0E\0L\0M\0A\0R\0]\0", 18),
        std::string("\x00\x01\x02\xFF source.ptp.k\x00= 5", 19),
        "[ZELMAR\r\nsource.ptp.k = 5\r\n",
        "",
    };
    for (const std::string& content : files)
    {
        writeFile(m_path, content);
        tStatus status;
        tStaticAttributes attributes("ptp", status);
        EXPECT_EQ(7u, attributes.getU32("k", 7, status));
        EXPECT_EQ(0, status.getCode());
        EXPECT_EQ(content, readFile(m_path));
    }
    std::remove(m_path.c_str());
    tStatus status;
    tStaticAttributes attributes("ptp", status);
    EXPECT_EQ(7u, attributes.getU32("k", 7, status));
    EXPECT_EQ(0, status.getCode());
}

TEST_F(StaticAttributes, SaveIntoAMissingDirectoryFailsAndCreatesNothing)
{
    setenv(kRootVariable, (m_root.root().path() + "/elsewhere").c_str(), 1);
    tStatus status;
    tStaticAttributes attributes("ptp", status);
    attributes.putU32("PriorityOne", 1, status);
    EXPECT_EQ(0, status.getCode());
    attributes.save(status);
    EXPECT_EQ(-52003, status.getCode());
    EXPECT_EQ(std::set<std::string>{"orv-rt"}, m_root.root().names());
}

TEST_F(StaticAttributes, FatalStatusDoesNothing)
{
    writeEntry("source.ptp.k = 5");
    tStatus broken;
    ORVTARN_SET_CODE(broken, nOrvTarn000::kStatusTimedOut);
    tStaticAttributes inert("ptp", broken);
    EXPECT_EQ(7u, inert.getU32("k", 7, broken));

    tStatus status;
    tStaticAttributes attributes("ptp", status);
    EXPECT_EQ(7u, attributes.getU32("k", 7, broken));
    attributes.putU32("k", 9, broken);
    attributes.save(broken);
    EXPECT_EQ(nOrvTarn000::kStatusTimedOut, broken.getCode());
    EXPECT_EQ(5u, attributes.getU32("k", 7, status));
    EXPECT_EQ("[ZELMAR]\r\nsource.ptp.k = 5\r\n", readFile(m_path));
}
