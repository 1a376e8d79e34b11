// Typed gets and puts on a text in memory.
#include "tIniTestText.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
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

// A value read as u32 ('u'), f64 ('f') or bool ('b') over a default of 7, as text.
std::string readAs(char a_kind, tIniText* a_pText, i32& a_rResult)
{
    u32 number = 7;
    f64 floating = 7.0;
    i32 flag = 7;
    char text[32];
    switch (a_kind)
    {
    case 'u':
        a_rResult = iniGetU32(a_pText, "s", "v", &number);
        return std::to_string(number);
    case 'f':
        a_rResult = iniGetF64(a_pText, "s", "v", &floating);
        std::snprintf(text, sizeof(text), "%.17g", floating);
        return text;
    default:
        a_rResult = iniGetBool(a_pText, "s", "v", &flag);
        return std::to_string(flag);
    }
}

} // namespace

TEST(IniValues, NumbersAndBooleansReadOrKeepTheDefault)
{
    const struct
    {
        char m_kind;
        const char* m_pText;
        i32 m_result;
        const char* m_pValue;
    } kCases[] = {
        {'u', "42", 1, "42"},
        {'u', " 42 ", 1, "42"},
        {'u', "+42", 1, "42"},
        {'u', "4294967295", 1, "4294967295"},
        {'u', "0004294967295", 1, "4294967295"},
        {'u', "", 0, "7"},
        {'u', "   ", 0, "7"},
        {'u', "4 2", kIniNotUnsigned32, "7"},
        {'u', "-1", kIniNotUnsigned32, "7"},
        {'u', "-0", kIniNotUnsigned32, "7"},
        {'u', "4294967296", kIniNotUnsigned32, "7"},
        {'u', "99999999999999999999", kIniNotUnsigned32, "7"},
        {'u', "+", kIniNotUnsigned32, "7"},
        {'u', "++1", kIniNotUnsigned32, "7"},
        {'u', "+ 1", kIniNotUnsigned32, "7"},
        {'u', "0x10", kIniNotUnsigned32, "7"},
        {'u', "1.0", kIniNotUnsigned32, "7"},
        {'f', "1.5", 1, "1.5"},
        {'f', "-2e-3", 1, "-0.002"},
        {'f', "0x1p3", 1, "8"},
        {'f', "Inf", 1, "inf"},
        {'f', "+INF", 1, "inf"},
        {'f', "-inf", 1, "-inf"},
        {'f', "infinity", 1, "inf"},
        {'f', "", 0, "7"},
        {'f', "1.5x", kIniNotFloating, "7"},
        {'f', "1.5 ", kIniNotFloating, "7"},
        {'f', "1e999", kIniNotFloating, "7"},
        {'f', "1e-999", kIniNotFloating, "7"},
        {'f', "x", kIniNotFloating, "7"},
        {'b', "True", 1, "1"},
        {'b', "TRUE", 1, "1"},
        {'b', "false", 1, "0"},
        {'b', "", 0, "7"},
        {'b', "yes", kIniNotBoolean, "7"},
        {'b', "1", kIniNotBoolean, "7"},
        {'b', "Truex", kIniNotBoolean, "7"},
        {'b', "\x0btrue", kIniNotBoolean, "7"},
    };
    for (const auto& testCase : kCases)
    {
        tTextPointer pText = textWith(testCase.m_pText);
        i32 result = 0;
        EXPECT_EQ(testCase.m_pValue, readAs(testCase.m_kind, pText.get(), result))
            << testCase.m_kind << " " << testCase.m_pText;
        EXPECT_EQ(testCase.m_result, result) << testCase.m_kind << " " << testCase.m_pText;
    }
}

TEST(IniValues, StringsAreCutToTheBufferAndEveryByteSurvivesEscaping)
{
    tTextPointer pText = textWith("abcdef");
    char buffer[512] = "zzzzzzz";
    EXPECT_EQ(1, iniGetString(pText.get(), "s", "v", buffer, 4));
    EXPECT_STREQ("abc", buffer);
    EXPECT_EQ(1, iniGetString(pText.get(), "s", "v", buffer, 1));
    EXPECT_STREQ("", buffer);
    EXPECT_EQ(1, iniGetString(pText.get(), "s", "v", nullptr, 0));
    std::strcpy(buffer, "zzz");
    EXPECT_EQ(0, iniGetString(pText.get(), "s", "missing", buffer, sizeof(buffer)));
    EXPECT_STREQ("", buffer) << "the empty text when nothing was found";

    std::string value;
    for (int byte = 1; byte < 256; ++byte)
    {
        value += static_cast<char>(byte);
    }
    pText = textWith(value.c_str());
    EXPECT_EQ(1, iniGetString(pText.get(), "s", "v", buffer, sizeof(buffer)));
    EXPECT_EQ(value, buffer);
}

TEST(IniValues, PutsReplaceOrAppendAndRefuseEmptyNamesAndNullTexts)
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

    EXPECT_EQ(kIniEmptyName, iniPutU32(pText.get(), "", "t", 1));
    EXPECT_EQ(kIniEmptyName, iniPutU32(pText.get(), "s", "", 1));
    EXPECT_EQ(kIniEmptyName, iniPutString(pText.get(), nullptr, "t", "v"));
    EXPECT_EQ(kIniEmptyName, iniPutString(pText.get(), "s", nullptr, "v"));
    EXPECT_EQ(0, iniGetU32(pText.get(), "s", "t", &count));
    EXPECT_EQ(0, iniGetU32(pText.get(), nullptr, nullptr, &count));
    EXPECT_EQ(kIniOutOfMemory, iniPutU32(nullptr, "s", "t", 1));
    EXPECT_EQ(kIniOutOfMemory, iniGetU32(nullptr, "s", "t", &count));
    EXPECT_EQ(kIniOutOfMemory, iniWriteToFile(nullptr, "x.ini"));
    iniDispose(nullptr);
}
