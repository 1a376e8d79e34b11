// Typed gets and puts on a text in memory.
#include "tIniTestText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

using nTestFiles::tTextPointer;

namespace
{

// A text with one entry "s"/"v" whose stored value is a_pValue: a string put
// stores its value quoted, so numbers go in through iniPutString as well.
tTextPointer textWith(const char* a_pValue)
{
    tTextPointer pText(iniNew());
    EXPECT_EQ(kIniSuccess, iniPutString(pText.get(), "s", "v", a_pValue));
    return pText;
}

struct tNumberCase
{
    const char* m_pText;
    i32 m_result;
    u32 m_value;
};

struct tFloatCase
{
    const char* m_pText;
    i32 m_result;
    f64 m_value;
};

} // namespace

TEST(IniValues, UnsignedNumbers)
{
    const tNumberCase cases[] = {
        {"42", 1, 42},
        {" 42 ", 1, 42},
        {"+42", 1, 42},
        {"4294967295", 1, 0xFFFFFFFFu},
        {"0004294967295", 1, 0xFFFFFFFFu},
        {"", 0, 7},
        {"   ", 0, 7},
        {"4 2", kIniNotUnsigned32, 7},
        {"-1", kIniNotUnsigned32, 7},
        {"-0", kIniNotUnsigned32, 7},
        {"4294967296", kIniNotUnsigned32, 7},
        {"99999999999999999999", kIniNotUnsigned32, 7},
        {"+", kIniNotUnsigned32, 7},
        {"++1", kIniNotUnsigned32, 7},
        {"+ 1", kIniNotUnsigned32, 7},
        {"0x10", kIniNotUnsigned32, 7},
        {"1.0", kIniNotUnsigned32, 7},
    };
    for (const tNumberCase& testCase : cases)
    {
        tTextPointer pText = textWith(testCase.m_pText);
        u32 value = 7;
        EXPECT_EQ(testCase.m_result, iniGetU32(pText.get(), "s", "v", &value)) << testCase.m_pText;
        EXPECT_EQ(testCase.m_value, value) << testCase.m_pText;
    }
}

TEST(IniValues, FloatingNumbers)
{
    const f64 infinity = std::numeric_limits<f64>::infinity();
    const tFloatCase cases[] = {
        {"1.5", 1, 1.5},
        {"-2e-3", 1, -2e-3},
        {"0x1p3", 1, 8.0},
        {"Inf", 1, infinity},
        {"+INF", 1, infinity},
        {"-inf", 1, -infinity},
        {"infinity", 1, infinity},
        {"", 0, 7.0},
        {"1.5x", kIniNotFloating, 7.0},
        {"1.5 ", kIniNotFloating, 7.0},
        {"1e999", kIniNotFloating, 7.0},
        {"1e-999", kIniNotFloating, 7.0},
        {"x", kIniNotFloating, 7.0},
    };
    for (const tFloatCase& testCase : cases)
    {
        tTextPointer pText = textWith(testCase.m_pText);
        f64 value = 7.0;
        EXPECT_EQ(testCase.m_result, iniGetF64(pText.get(), "s", "v", &value)) << testCase.m_pText;
        EXPECT_EQ(testCase.m_value, value) << testCase.m_pText;
    }
}

TEST(IniValues, Booleans)
{
    const tNumberCase cases[] = {
        {"True", 1, 1},
        {"TRUE", 1, 1},
        {"false", 1, 0},
        {"", 0, 7},
        {"yes", kIniNotBoolean, 7},
        {"1", kIniNotBoolean, 7},
        {"Truex", kIniNotBoolean, 7},
        {"\x0btrue", kIniNotBoolean, 7},
    };
    for (const tNumberCase& testCase : cases)
    {
        tTextPointer pText = textWith(testCase.m_pText);
        i32 value = 7;
        EXPECT_EQ(testCase.m_result, iniGetBool(pText.get(), "s", "v", &value)) << testCase.m_pText;
        EXPECT_EQ(static_cast<i32>(testCase.m_value), value) << testCase.m_pText;
    }
}

TEST(IniValues, StringsAreCutToTheBuffer)
{
    tTextPointer pText = textWith("abcdef");
    char buffer[8] = "zzzzzzz";
    EXPECT_EQ(1, iniGetString(pText.get(), "s", "v", buffer, 4));
    EXPECT_STREQ("abc", buffer);
    EXPECT_EQ(1, iniGetString(pText.get(), "s", "v", buffer, 1));
    EXPECT_STREQ("", buffer);
    EXPECT_EQ(1, iniGetString(pText.get(), "s", "v", nullptr, 0));
    std::strcpy(buffer, "zzz");
    EXPECT_EQ(0, iniGetString(pText.get(), "s", "missing", buffer, sizeof(buffer)));
    EXPECT_STREQ("", buffer) << "the empty text when nothing was found";
}

TEST(IniValues, EveryByteSurvivesEscaping)
{
    std::string value;
    for (int byte = 1; byte < 256; ++byte)
    {
        value += static_cast<char>(byte);
    }
    tTextPointer pText = textWith(value.c_str());
    char buffer[512];
    EXPECT_EQ(1, iniGetString(pText.get(), "s", "v", buffer, sizeof(buffer)));
    EXPECT_EQ(value, buffer);
}

TEST(IniValues, PutsReplaceOrAppend)
{
    tTextPointer pText(iniNew());
    EXPECT_EQ(kIniSuccess, iniPutU32(pText.get(), "Main", "Count", 1));
    EXPECT_EQ(kIniSuccess, iniPutU32(pText.get(), "MAIN", "count", 4294967295u));
    EXPECT_EQ(kIniSuccess, iniPutString(pText.get(), "main", "name", nullptr));
    u32 count = 0;
    EXPECT_EQ(1, iniGetU32(pText.get(), "Main", "COUNT", &count));
    EXPECT_EQ(4294967295u, count);
    char buffer[8] = "zz";
    EXPECT_EQ(1, iniGetString(pText.get(), "Main", "name", buffer, sizeof(buffer)));
    EXPECT_STREQ("", buffer);
    EXPECT_EQ(kIniSuccess, iniPutString(pText.get(), "main", "count", "text"));
    EXPECT_EQ(kIniNotUnsigned32, iniGetU32(pText.get(), "Main", "count", &count));
}

TEST(IniValues, PutsRefuseEmptyNamesAndNullTexts)
{
    tTextPointer pText(iniNew());
    EXPECT_EQ(kIniEmptyName, iniPutU32(pText.get(), "", "t", 1));
    EXPECT_EQ(kIniEmptyName, iniPutU32(pText.get(), "s", "", 1));
    EXPECT_EQ(kIniEmptyName, iniPutString(pText.get(), nullptr, "t", "v"));
    EXPECT_EQ(kIniEmptyName, iniPutString(pText.get(), "s", nullptr, "v"));
    u32 value = 0;
    EXPECT_EQ(0, iniGetU32(pText.get(), "s", "t", &value));
    EXPECT_EQ(0, iniGetU32(pText.get(), nullptr, nullptr, &value));

    EXPECT_EQ(kIniOutOfMemory, iniPutU32(nullptr, "s", "t", 1));
    EXPECT_EQ(kIniOutOfMemory, iniGetU32(nullptr, "s", "t", &value));
    EXPECT_EQ(kIniOutOfMemory, iniWriteToFile(nullptr, "x.ini"));
    iniDispose(nullptr);
}
