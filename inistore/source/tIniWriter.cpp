// Writing: the text form of sections and entries, and the replacement of the
// target through a temporary file in its directory.
#include "tIniFileSystem.h"
#include "tIniStream.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

using namespace nIniModel;

namespace
{

const char kSeparator[] = " = ";
const char kLineEnd[] = "\r\n";
const char kTemporaryFormat[] = "%sini$$%d.TMP";
const std::size_t kSeparatorLength = sizeof(kSeparator) - 1;
// " Line0001 = ": what a numbered piece adds to its tag.
const std::size_t kPieceOverhead = 12;

enum : int
{
    kTemporaryTries = 1000
};

// Collects one line and writes it as one block.
class tLineWriter
{
public:
    explicit tLineWriter(std::FILE* a_pFile) : m_pFile(a_pFile) {}

    tLineWriter& add(const char* a_pText, std::size_t a_length)
    {
        m_failed = m_failed || !m_line.append(a_pText, a_length);
        return *this;
    }
    tLineWriter& add(const char* a_pText) { return add(a_pText, std::strlen(a_pText)); }
    tLineWriter& addQuote(i32 a_quote)
    {
        const char quote = static_cast<char>(a_quote);
        return a_quote == 0 ? *this : add(&quote, 1);
    }

    i32 endLine()
    {
        add(kLineEnd);
        if (m_failed)
        {
            return kIniOutOfMemory;
        }
        const bool written = nIniFileSystem::write(m_pFile, m_line.m_pData, m_line.m_length);
        m_line.clear();
        return written ? kIniSuccess : kIniWriteFailed;
    }

private:
    std::FILE* m_pFile;
    tIniBuffer m_line;
    bool m_failed = false;
};

// "tag = value", or numbered pieces when the line would be too long.
i32 writeEntry(tLineWriter& a_rWriter, const tIniEntry& a_rEntry, i32 a_maxLineLength)
{
    const std::size_t tagLength = std::strlen(a_rEntry.m_tag);
    const std::size_t valueLength = std::strlen(a_rEntry.m_value);
    const std::size_t quotes = a_rEntry.m_quote == 0 ? 0 : 2;
    const std::size_t limit = static_cast<std::size_t>(a_maxLineLength);
    if (tagLength + kSeparatorLength + valueLength + quotes <= limit)
    {
        a_rWriter.add(a_rEntry.m_tag).add(kSeparator).addQuote(a_rEntry.m_quote);
        a_rWriter.add(a_rEntry.m_value, valueLength).addQuote(a_rEntry.m_quote);
        return a_rWriter.endLine();
    }
    if (tagLength + kPieceOverhead + quotes >= limit)
    {
        return kIniTagTooLong;
    }
    const std::size_t chunk = limit - tagLength - kPieceOverhead - quotes;
    i32 result = kIniSuccess;
    int number = 1;
    for (std::size_t used = 0; used < valueLength && result == kIniSuccess; used += chunk)
    {
        char label[24];
        std::snprintf(label, sizeof(label), " Line%04d", number++);
        const std::size_t length = valueLength - used < chunk ? valueLength - used : chunk;
        a_rWriter.add(a_rEntry.m_tag).add(label).add(kSeparator).addQuote(a_rEntry.m_quote);
        a_rWriter.add(a_rEntry.m_value + used, length).addQuote(a_rEntry.m_quote);
        result = a_rWriter.endLine();
    }
    return result;
}

// The target's directory with its final '/', or empty for a bare name.
std::size_t directoryLength(const char* a_pPath)
{
    const char* pSlash = std::strrchr(a_pPath, '/');
    return pSlash == nullptr ? 0 : static_cast<std::size_t>(pSlash - a_pPath) + 1;
}

// The target must be writable where it is: an existing file opens for
// update, and a new one can be created (and is removed again).
bool isWritable(const char* a_pPath)
{
    const bool exists = nIniFileSystem::exists(a_pPath);
    std::FILE* pFile = nIniFileSystem::open(a_pPath, exists ? "r+b" : "wb");
    if (pFile == nullptr)
    {
        return false;
    }
    nIniFileSystem::close(pFile);
    if (!exists)
    {
        nIniFileSystem::remove(a_pPath);
    }
    return true;
}

// Creates the first free "ini$$<n>.TMP" in the directory into a_rName.
i32 createTemporary(const char* a_pPath, tIniBuffer& a_rName, int& a_rDescriptor)
{
    const std::size_t length = directoryLength(a_pPath);
    tIniBuffer directory;
    if (!directory.append(a_pPath, length) || !a_rName.reserve(length + 32))
    {
        return kIniOutOfMemory;
    }
    for (int number = 0; number < kTemporaryTries; ++number)
    {
        a_rName.m_length = static_cast<std::size_t>(std::snprintf(
            a_rName.m_pData, a_rName.m_capacity, kTemporaryFormat, directory.m_pData, number));
        a_rDescriptor = nIniFileSystem::createNew(a_rName.m_pData);
        if (a_rDescriptor >= 0)
        {
            return kIniSuccess;
        }
        if (errno != EEXIST)
        {
            return kIniTemporaryNotCreated;
        }
    }
    return kIniNoTemporaryName;
}

// Writes the content, makes it durable and puts it in the target's place.
// The target is untouched until the final rename.
i32 writeAndReplace(const tIniText& a_rText, int a_descriptor, const char* a_pTemporary,
                    const char* a_pPath)
{
    std::FILE* pFile = nIniFileSystem::attach(a_descriptor);
    if (pFile == nullptr)
    {
        return kIniTemporaryNotOpened;
    }
    i32 result = nIniStream::write(a_rText, pFile);
    if (result == kIniSuccess && !(nIniFileSystem::flush(pFile) && nIniFileSystem::sync(pFile)))
    {
        result = kIniWriteFailed;
    }
    if (result == kIniSuccess && !nIniFileSystem::keepMode(pFile, a_pPath))
    {
        result = kIniNotWritable;
    }
    if (!nIniFileSystem::close(pFile) && result == kIniSuccess)
    {
        result = kIniWriteFailed;
    }
    if (result == kIniSuccess && !nIniFileSystem::rename(a_pTemporary, a_pPath))
    {
        result = kIniNotWritable;
    }
    return result;
}

} // namespace

namespace nIniStream
{

i32 write(const tIniText& a_rText, std::FILE* a_pFile)
{
    tLineWriter writer(a_pFile);
    i32 result = kIniSuccess;
    for (const tIniSection* pSection = a_rText.m_sections.m_pFirst;
         pSection != nullptr && result == kIniSuccess; pSection = pSection->m_pNext)
    {
        result = writer.add("[").add(pSection->m_name).add("]").endLine();
        for (const tIniEntry* pEntry = pSection->m_entries.m_pFirst;
             pEntry != nullptr && result == kIniSuccess; pEntry = pEntry->m_pNext)
        {
            result = writeEntry(writer, *pEntry, a_rText.m_maxLineLength);
        }
        if (result == kIniSuccess)
        {
            result = writer.endLine();
        }
    }
    return result;
}

} // namespace nIniStream

i32 iniWriteToFile(tIniText* a_pText, const char* a_pPath)
{
    if (a_pText == nullptr)
    {
        return kIniOutOfMemory;
    }
    if (a_pPath == nullptr || *a_pPath == '\0')
    {
        return kIniNoFile;
    }
    if (!isWritable(a_pPath))
    {
        return kIniNotWritable;
    }
    tIniBuffer temporary;
    int descriptor = -1;
    i32 result = createTemporary(a_pPath, temporary, descriptor);
    if (result != kIniSuccess)
    {
        return result;
    }
    result = writeAndReplace(*a_pText, descriptor, temporary.m_pData, a_pPath);
    if (result != kIniSuccess)
    {
        // The cause stays in errno for the caller's report.
        const int error = errno;
        nIniFileSystem::remove(temporary.m_pData);
        errno = error;
        return result;
    }
    temporary.m_pData[directoryLength(temporary.m_pData)] = '\0';
    nIniFileSystem::syncDirectory(*temporary.m_pData == '\0' ? "." : temporary.m_pData);
    return kIniSuccess;
}
