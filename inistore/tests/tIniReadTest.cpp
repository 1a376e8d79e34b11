// Reading ini files: the text format, the byte order marks and the result
// codes of files that cannot be read. A read never changes the file.
#include "tIniFileSystem.h"
#include "tIniTestText.h"
#include "tTempDirectory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <vector>

using nTestFiles::getString;
using nTestFiles::readFile;
using nTestFiles::tTempDirectory;
using nTestFiles::writeFile;

using nTestFiles::tTextPointer;

namespace
{

struct tLookup
{
    const char* m_pSection;
    const char* m_pTag;
    i32 m_result;
    std::string m_value;
};

struct tFormatCase
{
    const char* m_pName;
    std::string m_content;
    i32 m_firstBadLine;
    std::vector<tLookup> m_lookups;
};

// Reads a_content from a file, checks that it reads and that the file is as it was.
tTextPointer readContent(const std::string& a_content)
{
    tTempDirectory directory;
    const std::string path = directory.file("read.ini");
    writeFile(path, a_content);
    tTextPointer pText(iniNew());
    EXPECT_EQ(kIniSuccess, iniReadFromFile(pText.get(), path.c_str()));
    EXPECT_EQ(a_content, readFile(path)) << "a read changed the file";
    return pText;
}

const std::vector<tFormatCase>& formatCases()
{
    static const std::vector<tFormatCase> cases = {
        {"CommentNoSeparatorAndEmptyValue",
         "[s]\r\n; comment = 1\r\nno separator\r\ntag =\r\nkept = 1\r\n",
         3,
         {{"s", "kept", 1, "1"}, {"s", "tag", 0, ""}, {"s", "; comment", 0, ""}}},
        {"EmptyQuotedValueIsFound", "[s]\r\ntag = \"\"\r\n", -1, {{"s", "tag", 1, ""}}},
        {"SectionsAndTagsIgnoreCaseAndLeadingBlanks",
         "[Main]\r\na = 1\r\n[Other]\r\n[MAIN]\r\nB = 2\r\n",
         -1,
         {{"main", "A", 1, "1"}, {"  mAiN", "  b", 1, "2"}, {"other", "b", 0, ""}}},
        {"CommaAndSemicolonInsideValue", "[s]\r\nv = a, b; c\r\n", -1, {{"s", "v", 1, "a, b; c"}}},
        {"EntryBeforeFirstSectionIsDropped", "x = 1\r\n[s]\r\ny = 2\r\n", -1, {{"s", "x", 0, ""}}},
        {"OnlyMatchingQuotesAreTakenOff",
         "[s]\r\na = \"open\r\nb = \"\r\nc = \"x\" y\r\n",
         -1,
         {{"s", "a", 1, "\"open"}, {"s", "b", 1, "\""}, {"s", "c", 1, "\"x\" y"}}},
        {"LastOccurrenceWins", "[s]\r\na = 1\r\nA = 2\r\n", -1, {{"s", "a", 1, "2"}}},
        {"BadHeaders", "[s]\r\n[unclosed\r\n[  ]\r\na = 1\r\n", 2, {{"s", "a", 1, "1"}}},
        {"HeaderNameIsTrimmedAndTailIgnored",
         "[  name  ] tail\r\na = 1\r\n",
         -1,
         {{"name", "a", 1, "1"}}},
        {"LineEndsOfEveryKind",
         std::string("[s]\ra = 1\nb = 2\n\rc = 3\r\nd = 4") + '\0' + "e = 5",
         -1,
         {{"s", "a", 1, "1"},
          {"s", "b", 1, "2"},
          {"s", "c", 1, "3"},
          {"s", "d", 1, "4"},
          {"s", "e", 1, "5"}}},
        {"EmptyLinesCountInLineNumbers", "[s]\r\n\r\n\r\n\n\rbad\r\n", 5, {}},
        {"EscapesAreUndone",
         "[s]\r\nv = \"a\\tb\\\\c\\\"d\\x41\\x4a\\qe\\n\"\r\nn = \"ntx\\x4\"\r\n",
         -1,
         {{"s", "v", 1, "a\tb\\c\"dAJqe\n"}, {"s", "n", 1, "ntxx4"}}},
        {"SplitValuesAreJoined",
         "[s]\r\nt Line0001 = \"ab\"\r\nt Line0002 = \"cd\"\r\nt Line0003 = \"e\"\r\nu = 1\r\n",
         -1,
         {{"s", "t", 1, "abcde"}, {"s", "u", 1, "1"}, {"s", "t Line0002", 0, ""}}},
        {"ContinuationWithoutStartStaysAnEntry",
         "[s]\r\nt Line0002 = x\r\nu Line1 = y\r\nu Line1 = z\r\n",
         -1,
         {{"s", "t Line0002", 1, "x"}, {"s", "u", 1, "z"}}},
        {"NumberOneStartsANewRun",
         "[s]\r\na Line1 = x\r\nb Line1 = y\r\nb Line2 = z\r\nc Line99999999999999999999 = w\r\n",
         -1,
         {{"s", "a", 1, "x"}, {"s", "b", 1, "yz"}, {"s", "c Line99999999999999999999", 1, "w"}}},
        {"Utf8MarkIsSkipped", "\xEF\xBB\xBF[s]\r\na = 1\r\n", -1, {{"s", "a", 1, "1"}}},
        {"ShortFilesWithoutLineEnd", "[s]", -1, {{"s", "a", 0, ""}}},
        {"LongLineReadsWhole",
         "[s]\r\nlong = " + std::string(100000, 'v') + "\r\nnext = 1\r\n",
         -1,
         {{"s", "long", 1, std::string(100000, 'v')}, {"s", "next", 1, "1"}}},
        {"TruncatedInsideQuotedValue",
         "[s]\r\na = 1\r\nb = \"half",
         -1,
         {{"s", "a", 1, "1"}, {"s", "b", 1, "\"half"}}},
    };
    return cases;
}

class IniFormat : public testing::TestWithParam<tFormatCase>
{
};

} // namespace

TEST_P(IniFormat, ReadsAsDocumented)
{
    const tFormatCase& testCase = GetParam();
    tTextPointer pText = readContent(testCase.m_content);
    EXPECT_EQ(testCase.m_firstBadLine, iniGetFirstBadLine(pText.get()));
    for (const tLookup& lookup : testCase.m_lookups)
    {
        i32 result = 0;
        const std::string value = getString(pText.get(), lookup.m_pSection, lookup.m_pTag, result);
        EXPECT_EQ(lookup.m_result, result) << lookup.m_pSection << "/" << lookup.m_pTag;
        EXPECT_EQ(lookup.m_value, value) << lookup.m_pSection << "/" << lookup.m_pTag;
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, IniFormat, testing::ValuesIn(formatCases()),
                         [](const testing::TestParamInfo<tFormatCase>& a_info)
                         { return std::string(a_info.param.m_pName); });

TEST(IniRead, MultiByteMarksRefuseTheFileAndKeepTheText)
{
    const std::string marks[] = {std::string("\xFF\xFE\x00\x00", 4),
                                 std::string("\x00\x00\xFE\xFF", 4), "\xFF\xFE", "\xFE\xFF"};
    tTempDirectory directory;
    const std::string earlier = directory.file("earlier.ini");
    writeFile(earlier, "[s]\r\na = 1\r\n");
    tTextPointer pText(iniNew());
    ASSERT_EQ(kIniSuccess, iniReadFromFile(pText.get(), earlier.c_str()));
    for (const std::string& mark : marks)
    {
        const std::string content = mark + std::string("[\0s\0]\0\r\0\n\0", 10);
        const std::string path = directory.file("wide.ini");
        writeFile(path, content);
        EXPECT_EQ(kIniMultiByteEncoding, iniReadFromFile(pText.get(), path.c_str()));
        EXPECT_EQ(content, readFile(path));
        i32 result = 0;
        EXPECT_EQ("1", getString(pText.get(), "s", "a", result)) << "the text was kept";
    }
}

TEST(IniRead, UnmarkedUtf16AndBinaryReadAsLinesOfNothing)
{
    std::string binary;
    for (int index = 0; index < 4096; ++index)
    {
        binary += static_cast<char>((index * 7919 + 13) % 256);
    }
    const std::string utf16 = std::string("[\0s\0]\0\r\0\n\0a\0 \0=\0 \0001\0", 20);
    for (const std::string& content : {binary, utf16, std::string()})
    {
        tTextPointer pText = readContent(content);
        i32 result = 0;
        EXPECT_EQ("", getString(pText.get(), "s", "a", result));
        EXPECT_EQ(0, result);
    }
}

TEST(IniRead, FilesThatCannotBeReadGiveTheirCodes)
{
    tTempDirectory directory;
    tTextPointer pText(iniNew());
    EXPECT_EQ(kIniNoFile, iniReadFromFile(pText.get(), directory.file("missing.ini").c_str()));
    EXPECT_EQ(kIniNoFile, iniReadFromFile(pText.get(), ""));
    EXPECT_EQ(kIniNoFile, iniReadFromFile(pText.get(), nullptr));
    EXPECT_EQ(kIniReadFailed, iniReadFromFile(pText.get(), directory.path().c_str()));
    EXPECT_EQ(kIniOutOfMemory, iniReadFromFile(nullptr, directory.path().c_str()));

    const std::string locked = directory.file("locked.ini");
    writeFile(locked, "[s]\r\na = 1\r\n");
    // A refusal to open, through the seam, which binds root as well.
    nIniFileSystem::setFaultHook([](nIniFileSystem::tOperation, void*) { return EACCES; }, nullptr);
    EXPECT_EQ(kIniCannotOpen, iniReadFromFile(pText.get(), locked.c_str()));
    EXPECT_EQ(EACCES, errno);
    nIniFileSystem::setFaultHook(nullptr, nullptr);
}
