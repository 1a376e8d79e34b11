// libFuzzer target for the ini parser. Any bytes are read as an ini file,
// from memory through the same stream reader the file functions use. Every
// violation aborts, so that the fuzzer keeps it as a finding.
//
// The invariants checked:
//   * a read ends with success or the multi-byte mark refusal, and the first
//     bad line, if any, is a line of the input;
//   * every typed get of every entry answers 1, 0 or its own refusal code;
//   * the parsed text writes without failure, unless a tag is too long;
//   * every value, put into a new text under its section and tag, written
//     and read back, reads as the same string (names that the format cannot
//     carry back are left out: tags with trailing blanks or with the numbered
//     suffix of a split value).
#include "tIniStream.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace
{

[[noreturn]] void fail(const char* a_pWhat, const std::string& a_detail)
{
    std::fprintf(stderr, "ini_fuzzer: %s: %s\n", a_pWhat, a_detail.c_str());
    std::abort();
}

struct tTextHolder
{
    tIniText* m_pText = iniNew();
    ~tTextHolder() { iniDispose(m_pText); }
};

i32 readBytes(tIniText& a_rText, const void* a_pBytes, std::size_t a_size)
{
    std::FILE* pStream = ::fmemopen(const_cast<void*>(a_pBytes), a_size, "rb");
    if (pStream == nullptr)
    {
        fail("fmemopen", "");
    }
    const i32 result = nIniStream::read(a_rText, pStream);
    std::fclose(pStream);
    return result;
}

i32 writeBytes(const tIniText& a_rText, std::string& a_rBytes)
{
    char* pBuffer = nullptr;
    std::size_t size = 0;
    std::FILE* pStream = ::open_memstream(&pBuffer, &size);
    if (pStream == nullptr)
    {
        fail("open_memstream", "");
    }
    const i32 result = nIniStream::write(a_rText, pStream);
    std::fclose(pStream);
    a_rBytes.assign(pBuffer, size);
    std::free(pBuffer);
    return result;
}

std::string getString(tIniText* a_pText, const char* a_pSection, const char* a_pTag, i32& a_rResult)
{
    static char s_buffer[1 << 17];
    a_rResult = iniGetString(a_pText, a_pSection, a_pTag, s_buffer, sizeof(s_buffer));
    return s_buffer;
}

void checkTypedGets(tIniText* a_pText, const char* a_pSection, const char* a_pTag)
{
    u32 number = 0;
    f64 floating = 0.0;
    i32 boolean = 0;
    const i32 results[3] = {iniGetU32(a_pText, a_pSection, a_pTag, &number),
                            iniGetF64(a_pText, a_pSection, a_pTag, &floating),
                            iniGetBool(a_pText, a_pSection, a_pTag, &boolean)};
    const i32 refusals[3] = {kIniNotUnsigned32, kIniNotFloating, kIniNotBoolean};
    for (int index = 0; index < 3; ++index)
    {
        if (results[index] != 1 && results[index] != 0 && results[index] != refusals[index])
        {
            fail("a typed get with a foreign code", std::to_string(results[index]));
        }
    }
}

bool carriesBack(const char* a_pTag)
{
    const std::size_t length = std::strlen(a_pTag);
    std::size_t digits = length;
    while (digits > 0 && a_pTag[digits - 1] >= '0' && a_pTag[digits - 1] <= '9')
    {
        --digits;
    }
    const bool numbered =
        digits < length && digits >= 5 && std::memcmp(a_pTag + digits - 5, " Line", 5) == 0;
    return !numbered && !nIniModel::isBlank(a_pTag[length - 1]);
}

struct tValue
{
    std::string m_section;
    std::string m_tag;
    std::string m_value;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* a_pData, size_t a_size)
{
    if (a_size == 0)
    {
        return 0;
    }
    tTextHolder parsed;
    const i32 readResult = readBytes(*parsed.m_pText, a_pData, a_size);
    if (readResult == kIniMultiByteEncoding)
    {
        return 0;
    }
    if (readResult != kIniSuccess)
    {
        fail("a read from memory failed", std::to_string(readResult));
    }
    const i32 firstBad = iniGetFirstBadLine(parsed.m_pText);
    if (firstBad != -1 && (firstBad < 1 || static_cast<std::size_t>(firstBad) > a_size))
    {
        fail("first bad line outside the input", std::to_string(firstBad));
    }

    std::vector<tValue> values;
    for (const tIniSection* pSection = parsed.m_pText->m_sections.m_pFirst; pSection != nullptr;
         pSection = pSection->m_pNext)
    {
        for (const tIniEntry* pEntry = pSection->m_entries.m_pFirst; pEntry != nullptr;
             pEntry = pEntry->m_pNext)
        {
            checkTypedGets(parsed.m_pText, pSection->m_name, pEntry->m_tag);
            i32 result = 0;
            const std::string value =
                getString(parsed.m_pText, pSection->m_name, pEntry->m_tag, result);
            if (result == 1 && carriesBack(pEntry->m_tag))
            {
                values.push_back(tValue{pSection->m_name, pEntry->m_tag, value});
            }
        }
    }

    std::string written;
    const i32 writeResult = writeBytes(*parsed.m_pText, written);
    if (writeResult != kIniSuccess && writeResult != kIniTagTooLong)
    {
        fail("the parsed text does not write", std::to_string(writeResult));
    }

    tTextHolder rebuilt;
    for (const tValue& value : values)
    {
        if (iniPutString(rebuilt.m_pText, value.m_section.c_str(), value.m_tag.c_str(),
                         value.m_value.c_str()) != kIniSuccess)
        {
            fail("a put refused a parsed name", value.m_section + "/" + value.m_tag);
        }
    }
    if (writeBytes(*rebuilt.m_pText, written) != kIniSuccess)
    {
        return 0; // a tag too long for a line
    }
    tTextHolder reread;
    if (written.empty() ||
        readBytes(*reread.m_pText, written.data(), written.size()) != kIniSuccess)
    {
        if (!values.empty())
        {
            fail("the written text does not read", written);
        }
        return 0;
    }
    for (const tValue& value : values)
    {
        i32 result = 0;
        const std::string expected =
            getString(rebuilt.m_pText, value.m_section.c_str(), value.m_tag.c_str(), result);
        const std::string back =
            getString(reread.m_pText, value.m_section.c_str(), value.m_tag.c_str(), result);
        if (result != 1 || back != expected)
        {
            fail("a value changed on the round trip",
                 value.m_tag + " = " + expected + " -> " + back);
        }
    }
    return 0;
}
