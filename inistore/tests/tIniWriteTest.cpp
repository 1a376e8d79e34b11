// Writing ini files: the exact text form, and a target that survives every
// failure of the write byte for byte, with no temporary file left behind.
#include "tIniFileSystem.h"
#include "tIniTestText.h"
#include "tTempDirectory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <sstream>
#include <sys/stat.h>

using nTestFiles::readFile;
using nTestFiles::tTempDirectory;
using nTestFiles::writeFile;

using nTestFiles::tTextPointer;

namespace
{

const char kOldContent[] = "[old]\r\nkept = 1\r\n\r\n";

tTextPointer sampleText()
{
    tTextPointer pText(iniNew());
    EXPECT_EQ(kIniSuccess, iniPutU32(pText.get(), "ZELMAR", "count", 42));
    EXPECT_EQ(kIniSuccess, iniPutString(pText.get(), "ZELMAR", "name", "a \"b\"\t"));
    EXPECT_EQ(kIniSuccess, iniPutU32(pText.get(), "other", "x", 0));
    return pText;
}

const char kSampleContent[] = "[ZELMAR]\r\ncount = 42\r\nname = \"a \\\"b\\\"\\t\"\r\n\r\n"
                              "[other]\r\nx = 0\r\n\r\n";

// Fails the a_count-th call of one operation with an errno.
struct tFault
{
    nIniFileSystem::tOperation m_operation;
    int m_count;
    int m_error;
    i32 m_result;
    int m_seen;
};

int injectFault(nIniFileSystem::tOperation a_operation, void* a_pContext)
{
    tFault& fault = *static_cast<tFault*>(a_pContext);
    if (a_operation != fault.m_operation || ++fault.m_seen != fault.m_count)
    {
        return 0;
    }
    return fault.m_error;
}

class tFaultScope
{
public:
    explicit tFaultScope(tFault& a_rFault) { nIniFileSystem::setFaultHook(injectFault, &a_rFault); }
    ~tFaultScope() { nIniFileSystem::setFaultHook(nullptr, nullptr); }
};

} // namespace

TEST(IniWrite, LongValuesAreSplitIntoLinesThatReadBackWhole)
{
    tTempDirectory directory;
    const std::string path = directory.file("long.ini");
    std::string value;
    for (int index = 0; index < 200; ++index)
    {
        value += static_cast<char>(index % 5 == 0 ? "\"\\\t\n"[index % 4] : 'a' + index % 26);
    }
    tTextPointer pText(iniNew());
    ASSERT_EQ(kIniSuccess, iniPutString(pText.get(), "s", "tag", value.c_str()));
    ASSERT_EQ(kIniSuccess, iniPutU32(pText.get(), "s", "after", 3));
    ASSERT_EQ(kIniSuccess, iniWriteToFile(pText.get(), path.c_str()));

    std::istringstream lines(readFile(path));
    std::string line;
    int pieces = 0;
    while (std::getline(lines, line))
    {
        EXPECT_LE(line.size(), 80u + 1u) << line;
        pieces += line.compare(0, 9, "tag Line0") == 0 ? 1 : 0;
    }
    EXPECT_GT(pieces, 3);
    EXPECT_NE(std::string::npos, readFile(path).find("tag Line0001 = \""));

    tTextPointer pBack(iniNew());
    ASSERT_EQ(kIniSuccess, iniReadFromFile(pBack.get(), path.c_str()));
    char buffer[512];
    EXPECT_EQ(1, iniGetString(pBack.get(), "s", "tag", buffer, sizeof(buffer)));
    EXPECT_EQ(value, buffer);
    u32 after = 0;
    EXPECT_EQ(1, iniGetU32(pBack.get(), "s", "after", &after));
    EXPECT_EQ(3u, after);
}

TEST(IniWrite, FailuresLeaveTheOldFileAndNoTemporary)
{
    using namespace nIniFileSystem;
    tFault faults[] = {
        {kOpen, 1, EACCES, kIniNotWritable, 0},
        {kCreateNew, 1, EACCES, kIniTemporaryNotCreated, 0},
        {kCreateNew, 1, EROFS, kIniTemporaryNotCreated, 0},
        {kAttach, 1, ENOMEM, kIniTemporaryNotOpened, 0},
        {kWrite, 1, ENOSPC, kIniWriteFailed, 0},
        {kWrite, 4, ENOSPC, kIniWriteFailed, 0},
        {kWrite, 7, EIO, kIniWriteFailed, 0},
        {kFlush, 1, ENOSPC, kIniWriteFailed, 0},
        {kSync, 1, EIO, kIniWriteFailed, 0},
        {kClose, 2, EIO, kIniWriteFailed, 0}, // the first closes the probe of the target
        {kKeepMode, 1, EPERM, kIniNotWritable, 0},
        {kRename, 1, EXDEV, kIniNotWritable, 0},
    };
    for (tFault& fault : faults)
    {
        SCOPED_TRACE("operation " + std::to_string(fault.m_operation) + " call " +
                     std::to_string(fault.m_count));
        tTempDirectory directory;
        const std::string path = directory.file("zelmar-ptp.ini");
        writeFile(path, kOldContent);
        tTextPointer pText = sampleText();
        {
            tFaultScope scope(fault);
            EXPECT_EQ(fault.m_result, iniWriteToFile(pText.get(), path.c_str()));
            EXPECT_EQ(fault.m_error, errno) << "the cause stays for the caller";
        }
        EXPECT_GE(fault.m_seen, fault.m_count) << "the fault was reached";
        EXPECT_EQ(kOldContent, readFile(path));
        EXPECT_EQ(std::set<std::string>{"zelmar-ptp.ini"}, directory.names());

        // The text is unchanged and the next write goes through.
        EXPECT_EQ(kIniSuccess, iniWriteToFile(pText.get(), path.c_str()));
        EXPECT_EQ(kSampleContent, readFile(path));
    }
}

TEST(IniWrite, RefusedWritesLeaveTheOldFile)
{
    tTempDirectory directory;
    const std::string path = directory.file("t.ini");
    writeFile(path, kOldContent);
    tTextPointer pText(iniNew());
    const std::string tag(66, 't');
    ASSERT_EQ(kIniSuccess, iniPutString(pText.get(), "s", tag.c_str(), "0123456789"));
    EXPECT_EQ(kIniTagTooLong, iniWriteToFile(pText.get(), path.c_str()));
    EXPECT_EQ(kIniNotWritable,
              iniWriteToFile(sampleText().get(), directory.file("missing/t.ini").c_str()));
    EXPECT_EQ(kIniNoFile, iniWriteToFile(sampleText().get(), ""));
    EXPECT_EQ(kIniNoFile, iniWriteToFile(sampleText().get(), nullptr));
    EXPECT_EQ(kOldContent, readFile(path));
    EXPECT_EQ(std::set<std::string>{"t.ini"}, directory.names());
}

TEST(IniWrite, TakenTemporaryNamesAreSkippedUpToTheLimit)
{
    tTempDirectory directory;
    const std::string path = directory.file("t.ini");
    writeFile(directory.file("ini$$0.TMP"), "someone else's");
    EXPECT_EQ(kIniSuccess, iniWriteToFile(sampleText().get(), path.c_str()));
    EXPECT_EQ(kSampleContent, readFile(path));
    EXPECT_EQ("someone else's", readFile(directory.file("ini$$0.TMP")));

    for (int number = 1; number < 1000; ++number)
    {
        writeFile(directory.file("ini$$" + std::to_string(number) + ".TMP"), "");
    }
    writeFile(path, kOldContent);
    EXPECT_EQ(kIniNoTemporaryName, iniWriteToFile(sampleText().get(), path.c_str()));
    EXPECT_EQ(kOldContent, readFile(path));
}

TEST(IniWrite, TheFileKeepsItsPermissions)
{
    tTempDirectory directory;
    const std::string path = directory.file("t.ini");
    writeFile(path, kOldContent);
    ::chmod(path.c_str(), 0640);
    ASSERT_EQ(kIniSuccess, iniWriteToFile(sampleText().get(), path.c_str()));
    struct stat information;
    ASSERT_EQ(0, ::stat(path.c_str(), &information));
    EXPECT_EQ(0640u, information.st_mode & 07777u);
}
