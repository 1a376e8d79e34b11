// Reading: the byte order mark, lines, their parse, and the joining of values
// that were split over several lines.
#include "tIniFileSystem.h"
#include "tIniStream.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

using namespace nIniModel;

namespace
{

enum : std::size_t
{
    kChunkSize = 2084,
    kMarkSize = 4,
    kInitialLineSize = 256
};

const char kContinuation[] = " Line";
const std::size_t kContinuationLength = sizeof(kContinuation) - 1;

// True for a UTF-16 or UTF-32 mark: FF FE 00 00, 00 00 FE FF, FF FE, FE FF.
bool isMultiByteMark(const unsigned char* a_pStart, std::size_t a_count)
{
    if (a_count >= 4 && std::memcmp(a_pStart, "\x00\x00\xFE\xFF", 4) == 0)
    {
        return true;
    }
    return a_count >= 2 && ((a_pStart[0] == 0xFF && a_pStart[1] == 0xFE) ||
                            (a_pStart[0] == 0xFE && a_pStart[1] == 0xFF));
}

bool isUtf8Mark(const unsigned char* a_pStart, std::size_t a_count)
{
    return a_count >= 3 && std::memcmp(a_pStart, "\xEF\xBB\xBF", 3) == 0;
}

// Cuts white space off both ends of [a_pBegin, a_pEnd) and terminates it.
char* trim(char* a_pBegin, char* a_pEnd)
{
    while (a_pBegin < a_pEnd && isBlank(*a_pBegin))
    {
        ++a_pBegin;
    }
    while (a_pEnd > a_pBegin && isBlank(a_pEnd[-1]))
    {
        --a_pEnd;
    }
    *a_pEnd = '\0';
    return a_pBegin;
}

// Splits the stream into lines and parses each into the text. A line ends at
// LF, CR or NUL; CR LF and LF CR count as one end.
class tLineParser
{
public:
    explicit tLineParser(tIniText& a_rText) : m_rText(a_rText) {}

    i32 feed(const char* a_pBytes, std::size_t a_count)
    {
        std::size_t index = 0;
        while (index < a_count)
        {
            const char byte = a_pBytes[index];
            const bool paired = m_pairedEnd != kNoEnd && byte == m_pairedEnd;
            m_pairedEnd = kNoEnd;
            if (paired)
            {
                ++index;
            }
            else if (isLineEnd(byte))
            {
                const i32 result = endLine();
                if (result != kIniSuccess)
                {
                    return result;
                }
                m_pairedEnd = byte == '\n' ? int('\r') : byte == '\r' ? int('\n') : int(kNoEnd);
                ++index;
            }
            else
            {
                const std::size_t start = index;
                while (index < a_count && !isLineEnd(a_pBytes[index]))
                {
                    ++index;
                }
                if (!m_line.append(a_pBytes + start, index - start))
                {
                    return kIniOutOfMemory;
                }
            }
        }
        return kIniSuccess;
    }

    i32 finish() { return m_line.m_length > 0 ? endLine() : kIniSuccess; }

private:
    enum : int
    {
        kNoEnd = -1
    };

    static bool isLineEnd(char a_byte)
    {
        return a_byte == '\n' || a_byte == '\r' || a_byte == '\0';
    }

    i32 endLine()
    {
        ++m_lineNumber;
        if (!m_line.reserve(0, kInitialLineSize))
        {
            return kIniOutOfMemory;
        }
        const i32 result = parse(m_line.m_pData, m_line.m_pData + m_line.m_length);
        m_line.clear();
        return result;
    }

    void markBad()
    {
        if (m_rText.m_firstBadLine < 0)
        {
            m_rText.m_firstBadLine = m_lineNumber;
        }
    }

    i32 parse(char* a_pBegin, char* a_pEnd)
    {
        while (a_pBegin < a_pEnd && isBlank(*a_pBegin))
        {
            ++a_pBegin;
        }
        if (a_pBegin == a_pEnd || *a_pBegin == ';')
        {
            return kIniSuccess;
        }
        if (*a_pBegin == '[')
        {
            return parseHeader(a_pBegin + 1, a_pEnd);
        }
        return parseEntry(a_pBegin, a_pEnd);
    }

    i32 parseHeader(char* a_pBegin, char* a_pEnd)
    {
        char* pClose = static_cast<char*>(std::memchr(a_pBegin, ']', a_pEnd - a_pBegin));
        const char* pName = pClose == nullptr ? "" : trim(a_pBegin, pClose);
        if (*pName == '\0')
        {
            markBad();
            return kIniSuccess;
        }
        m_pSection = provideSection(m_rText, pName, m_lineNumber);
        return m_pSection == nullptr ? kIniOutOfMemory : kIniSuccess;
    }

    i32 parseEntry(char* a_pBegin, char* a_pEnd)
    {
        char* pSeparator = static_cast<char*>(std::memchr(a_pBegin, '=', a_pEnd - a_pBegin));
        if (pSeparator == nullptr)
        {
            markBad();
            return kIniSuccess;
        }
        const char* pTag = trim(a_pBegin, pSeparator);
        char* pValue = trim(pSeparator + 1, a_pEnd);
        if (*pTag == '\0' || *pValue == '\0')
        {
            markBad();
            return kIniSuccess;
        }
        if (m_pSection == nullptr)
        {
            return kIniSuccess;
        }
        i32 quote = 0;
        const std::size_t length = std::strlen(pValue);
        if (length >= 2 && pValue[0] == kQuote && pValue[length - 1] == kQuote)
        {
            pValue[length - 1] = '\0';
            ++pValue;
            quote = kQuote;
        }
        return setEntry(*m_pSection, pTag, pValue, quote, m_lineNumber);
    }

    tIniText& m_rText;
    tIniSection* m_pSection = nullptr;
    tIniBuffer m_line;
    i32 m_lineNumber = 0;
    // The end that would pair with the one just seen, or kNoEnd.
    int m_pairedEnd = kNoEnd;
};

// The number of a tag that ends in " Line" and digits, and where that suffix
// begins; -1 for a tag that is no continuation.
long continuationNumber(const char* a_pTag, std::size_t& a_rCut)
{
    const std::size_t length = std::strlen(a_pTag);
    std::size_t digits = length;
    while (digits > 0 && a_pTag[digits - 1] >= '0' && a_pTag[digits - 1] <= '9')
    {
        --digits;
    }
    if (digits == length || digits < kContinuationLength ||
        std::memcmp(a_pTag + digits - kContinuationLength, kContinuation, kContinuationLength) != 0)
    {
        return -1;
    }
    errno = 0;
    const long number = std::strtol(a_pTag + digits, nullptr, 10);
    if (errno == ERANGE)
    {
        return -1;
    }
    a_rCut = digits - kContinuationLength;
    return number;
}

// Joins each run of an entry numbered 1 and the continuations that follow it
// (numbered other than 1) into the first entry, under the tag without suffix.
i32 joinSplitValues(tIniSection& a_rSection)
{
    for (tIniEntry* pFirst = a_rSection.m_entries.m_pFirst; pFirst != nullptr;
         pFirst = pFirst->m_pNext)
    {
        std::size_t cut = 0;
        if (continuationNumber(pFirst->m_tag, cut) != 1)
        {
            continue;
        }
        tIniBuffer joined;
        if (!joined.append(pFirst->m_value, std::strlen(pFirst->m_value)))
        {
            return kIniOutOfMemory;
        }
        std::size_t ignored = 0;
        while (pFirst->m_pNext != nullptr)
        {
            const long number = continuationNumber(pFirst->m_pNext->m_tag, ignored);
            if (number < 0 || number == 1)
            {
                break;
            }
            const char* pPiece = pFirst->m_pNext->m_value;
            if (!joined.append(pPiece, std::strlen(pPiece)))
            {
                return kIniOutOfMemory;
            }
            delete a_rSection.m_entries.removeAfter(pFirst);
        }
        char* pValue = copyText(joined.m_pData, joined.m_length);
        if (pValue == nullptr)
        {
            return kIniOutOfMemory;
        }
        delete[] pFirst->m_value;
        pFirst->m_value = pValue;
        pFirst->m_tag[cut] = '\0';
    }
    return kIniSuccess;
}

} // namespace

namespace nIniStream
{

i32 read(tIniText& a_rText, std::FILE* a_pFile)
{
    char chunk[kChunkSize];
    std::size_t count = 0;
    if (!nIniFileSystem::read(a_pFile, chunk, kMarkSize, count))
    {
        return kIniReadFailed;
    }
    const unsigned char* pStart = reinterpret_cast<const unsigned char*>(chunk);
    if (isMultiByteMark(pStart, count))
    {
        return kIniMultiByteEncoding;
    }
    const std::size_t skip = isUtf8Mark(pStart, count) ? 3 : 0;

    removeAllSections(a_rText);
    a_rText.m_firstBadLine = -1;
    a_rText.m_lastLine = -1;

    tLineParser parser(a_rText);
    i32 result = parser.feed(chunk + skip, count - skip);
    while (result == kIniSuccess && count > 0)
    {
        if (!nIniFileSystem::read(a_pFile, chunk, kChunkSize, count))
        {
            return kIniReadFailed;
        }
        result = parser.feed(chunk, count);
    }
    if (result == kIniSuccess)
    {
        result = parser.finish();
    }
    for (tIniSection* pSection = a_rText.m_sections.m_pFirst;
         pSection != nullptr && result == kIniSuccess; pSection = pSection->m_pNext)
    {
        result = joinSplitValues(*pSection);
    }
    return result;
}

} // namespace nIniStream

i32 iniReadFromFile(tIniText* a_pText, const char* a_pPath)
{
    if (a_pText == nullptr)
    {
        return kIniOutOfMemory;
    }
    if (a_pPath == nullptr || *a_pPath == '\0')
    {
        return kIniNoFile;
    }
    std::FILE* pFile = nIniFileSystem::open(a_pPath, "rb");
    if (pFile == nullptr)
    {
        const int error = errno;
        const i32 result = nIniFileSystem::exists(a_pPath) ? kIniCannotOpen : kIniNoFile;
        errno = error;
        return result;
    }
    const i32 result = nIniStream::read(*a_pText, pFile);
    const int error = errno;
    nIniFileSystem::close(pFile);
    errno = error;
    return result;
}
