// Typed reads and writes of single values, and the escapes of string values.
#include "tIniModel.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace nIniModel;

namespace
{

const char kHexDigits[] = "0123456789abcdef";

// The entry of that section and tag, or null.
const tIniEntry* findEntryOf(tIniText& a_rText, const char* a_pSection, const char* a_pTag)
{
    if (a_pSection == nullptr || a_pTag == nullptr)
    {
        return nullptr;
    }
    const tIniSection* pSection = findSection(a_rText, a_pSection);
    const tIniEntry* pEntry = pSection == nullptr ? nullptr : findEntry(*pSection, a_pTag);
    if (pEntry != nullptr)
    {
        a_rText.m_lastLine = pEntry->m_line;
    }
    return pEntry;
}

bool isBlankText(const char* a_pText)
{
    while (isBlank(*a_pText))
    {
        ++a_pText;
    }
    return *a_pText == '\0';
}

// The text of a number or boolean: 1, or 0 when it is missing or blank.
i32 findText(tIniText& a_rText, const char* a_pSection, const char* a_pTag, const char*& a_rpText)
{
    const tIniEntry* pEntry = findEntryOf(a_rText, a_pSection, a_pTag);
    if (pEntry == nullptr || isBlankText(pEntry->m_value))
    {
        return 0;
    }
    a_rpText = pEntry->m_value;
    return 1;
}

bool equalsIgnoringCase(const char* a_pText, const char* a_pWord)
{
    for (; *a_pWord != '\0'; ++a_pText, ++a_pWord)
    {
        if (std::tolower(static_cast<unsigned char>(*a_pText)) != *a_pWord)
        {
            return false;
        }
    }
    return *a_pText == '\0';
}

int hexValue(char a_digit)
{
    if (a_digit >= '0' && a_digit <= '9')
    {
        return a_digit - '0';
    }
    const int lower = std::tolower(static_cast<unsigned char>(a_digit));
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Undoes the escapes of a stored value into a_rBuffer.
bool unescape(const char* a_pValue, tIniBuffer& a_rBuffer)
{
    a_rBuffer.clear();
    bool appended = a_rBuffer.reserve(std::strlen(a_pValue));
    for (const char* pCursor = a_pValue; *pCursor != '\0' && appended; ++pCursor)
    {
        if (*pCursor != '\\')
        {
            appended = a_rBuffer.append(*pCursor);
            continue;
        }
        const char escaped = *++pCursor;
        if (escaped == '\0')
        {
            break;
        }
        const int high = escaped == 'x' ? hexValue(pCursor[1]) : -1;
        const int low = high < 0 ? -1 : hexValue(pCursor[2]);
        if (low >= 0)
        {
            appended = a_rBuffer.append(static_cast<char>(high * 16 + low));
            pCursor += 2;
        }
        else
        {
            appended = a_rBuffer.append(escaped == 'n' ? '\n' : escaped == 't' ? '\t' : escaped);
        }
    }
    return appended;
}

bool escape(const char* a_pValue, tIniBuffer& a_rBuffer)
{
    bool appended = true;
    for (const char* pCursor = a_pValue; *pCursor != '\0' && appended; ++pCursor)
    {
        const unsigned char character = static_cast<unsigned char>(*pCursor);
        if (character == '\t' || character == '\n' || character == '"' || character == '\\')
        {
            const char pair[2] = {'\\', character == '\t'   ? 't'
                                        : character == '\n' ? 'n'
                                                            : *pCursor};
            appended = a_rBuffer.append(pair, 2);
        }
        else if (character < 0x20 || character == 0x7F)
        {
            const char hex[4] = {'\\', 'x', kHexDigits[character >> 4], kHexDigits[character & 15]};
            appended = a_rBuffer.append(hex, 4);
        }
        else
        {
            appended = a_rBuffer.append(*pCursor);
        }
    }
    return appended;
}

i32 put(tIniText* a_pText, const char* a_pSection, const char* a_pTag, const char* a_pValue,
        i32 a_quote)
{
    if (a_pSection == nullptr || a_pTag == nullptr || *a_pSection == '\0' || *a_pTag == '\0')
    {
        return kIniEmptyName;
    }
    tIniSection* pSection = provideSection(*a_pText, a_pSection, -1);
    return pSection == nullptr ? kIniOutOfMemory
                               : setEntry(*pSection, a_pTag, a_pValue, a_quote, -1);
}

} // namespace

i32 iniGetU32(tIniText* a_pText, const char* a_pSection, const char* a_pTag, u32* a_pValue)
{
    const char* pText = nullptr;
    if (a_pText == nullptr)
    {
        return kIniOutOfMemory;
    }
    if (findText(*a_pText, a_pSection, a_pTag, pText) != 1)
    {
        return 0;
    }
    while (isBlank(*pText))
    {
        ++pText;
    }
    if (*pText == '+')
    {
        ++pText;
    }
    u64 value = 0;
    const char* pDigits = pText;
    for (; *pText >= '0' && *pText <= '9'; ++pText)
    {
        value = value * 10 + static_cast<u64>(*pText - '0');
        if (value > 0xFFFFFFFFu)
        {
            return kIniNotUnsigned32;
        }
    }
    const bool hasDigits = pText != pDigits;
    while (isBlank(*pText))
    {
        ++pText;
    }
    if (!hasDigits || *pText != '\0')
    {
        return kIniNotUnsigned32;
    }
    if (a_pValue != nullptr)
    {
        *a_pValue = static_cast<u32>(value);
    }
    return 1;
}

i32 iniGetF64(tIniText* a_pText, const char* a_pSection, const char* a_pTag, f64* a_pValue)
{
    const char* pText = nullptr;
    if (a_pText == nullptr)
    {
        return kIniOutOfMemory;
    }
    if (findText(*a_pText, a_pSection, a_pTag, pText) != 1)
    {
        return 0;
    }
    f64 value = 0.0;
    if (equalsIgnoringCase(pText, "inf") || equalsIgnoringCase(pText, "+inf"))
    {
        value = HUGE_VAL;
    }
    else if (equalsIgnoringCase(pText, "-inf"))
    {
        value = -HUGE_VAL;
    }
    else
    {
        char* pEnd = nullptr;
        errno = 0;
        value = std::strtod(pText, &pEnd);
        if (pEnd == pText || *pEnd != '\0' || errno == ERANGE)
        {
            return kIniNotFloating;
        }
    }
    if (a_pValue != nullptr)
    {
        *a_pValue = value;
    }
    return 1;
}

i32 iniGetBool(tIniText* a_pText, const char* a_pSection, const char* a_pTag, i32* a_pValue)
{
    const char* pText = nullptr;
    if (a_pText == nullptr)
    {
        return kIniOutOfMemory;
    }
    if (findText(*a_pText, a_pSection, a_pTag, pText) != 1)
    {
        return 0;
    }
    const bool isTrue = equalsIgnoringCase(pText, "true");
    if (!isTrue && !equalsIgnoringCase(pText, "false"))
    {
        return kIniNotBoolean;
    }
    if (a_pValue != nullptr)
    {
        *a_pValue = isTrue ? 1 : 0;
    }
    return 1;
}

i32 iniGetString(tIniText* a_pText, const char* a_pSection, const char* a_pTag, char* a_pBuffer,
                 i32 a_size)
{
    if (a_pBuffer != nullptr && a_size > 0)
    {
        a_pBuffer[0] = '\0';
    }
    if (a_pText == nullptr)
    {
        return kIniOutOfMemory;
    }
    const tIniEntry* pEntry = findEntryOf(*a_pText, a_pSection, a_pTag);
    if (pEntry == nullptr || (pEntry->m_quote == 0 && isBlankText(pEntry->m_value)))
    {
        return 0;
    }
    if (!unescape(pEntry->m_value, a_pText->m_scratch))
    {
        return kIniOutOfMemory;
    }
    if (a_pBuffer != nullptr && a_size > 0)
    {
        const std::size_t room = static_cast<std::size_t>(a_size) - 1;
        const std::size_t length = std::strlen(a_pText->m_scratch.m_pData);
        const std::size_t copied = length < room ? length : room;
        std::memcpy(a_pBuffer, a_pText->m_scratch.m_pData, copied);
        a_pBuffer[copied] = '\0';
    }
    return 1;
}

i32 iniPutU32(tIniText* a_pText, const char* a_pSection, const char* a_pTag, u32 a_value)
{
    if (a_pText == nullptr)
    {
        return kIniOutOfMemory;
    }
    char text[16];
    std::snprintf(text, sizeof(text), "%u", static_cast<unsigned>(a_value));
    return put(a_pText, a_pSection, a_pTag, text, 0);
}

i32 iniPutString(tIniText* a_pText, const char* a_pSection, const char* a_pTag,
                 const char* a_pValue)
{
    if (a_pText == nullptr)
    {
        return kIniOutOfMemory;
    }
    tIniBuffer escaped;
    if (!escaped.reserve(0) || !escape(a_pValue == nullptr ? "" : a_pValue, escaped))
    {
        return kIniOutOfMemory;
    }
    return put(a_pText, a_pSection, a_pTag, escaped.m_pData, kQuote);
}
