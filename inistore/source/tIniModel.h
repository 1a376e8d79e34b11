#pragma once
// The text in memory, shared by the parts of the store. Every node and every
// string is owned by the node or text that holds it.
#include "tIniText.h"

#include <cstddef>

// A growable byte buffer that keeps a terminating NUL behind its content.
struct tIniBuffer
{
    char* m_pData = nullptr;
    std::size_t m_length = 0;
    std::size_t m_capacity = 0;

    tIniBuffer() = default;
    ~tIniBuffer();
    tIniBuffer(const tIniBuffer&) = delete;
    tIniBuffer& operator=(const tIniBuffer&) = delete;

    // Room for a_length bytes and the NUL, growing by doubling from a_initial.
    // False, with the content kept, when memory is exhausted.
    [[nodiscard]] bool reserve(std::size_t a_length, std::size_t a_initial = 256);
    [[nodiscard]] bool append(const char* a_pBytes, std::size_t a_count);
    [[nodiscard]] bool append(char a_byte) { return append(&a_byte, 1); }
    void clear();
};

// A singly linked list in file order; T has a member m_pNext.
template <typename T>
struct tIniList
{
    T* m_pFirst = nullptr;
    T* m_pLast = nullptr;

    void append(T* a_pNode)
    {
        a_pNode->m_pNext = nullptr;
        if (m_pLast == nullptr)
        {
            m_pFirst = a_pNode;
        }
        else
        {
            m_pLast->m_pNext = a_pNode;
        }
        m_pLast = a_pNode;
    }
    // Unlinks the node after a_pPrevious and returns it.
    T* removeAfter(T* a_pPrevious)
    {
        T* pNode = a_pPrevious->m_pNext;
        a_pPrevious->m_pNext = pNode->m_pNext;
        if (m_pLast == pNode)
        {
            m_pLast = a_pPrevious;
        }
        return pNode;
    }
};

struct tIniEntry
{
    char* m_tag = nullptr;
    char* m_value = nullptr;
    i32 m_line = -1; // -1 for an entry made in memory
    i32 m_quote = 0; // the quote round the value in the file, or 0
    tIniEntry* m_pNext = nullptr;

    ~tIniEntry();
};

struct tIniSection
{
    char* m_name = nullptr;
    tIniList<tIniEntry> m_entries;
    i32 m_line = -1; // the line of its header; -1 for a section made in memory
    tIniSection* m_pNext = nullptr;

    ~tIniSection();
};

struct tIniText
{
    tIniList<tIniSection> m_sections;
    tIniSection* m_pLastSection = nullptr; // the section last found, tried first
    i32 m_lastLine = -1;                   // the line of the entry last found
    tIniBuffer m_scratch;                  // an unescaped value until it is copied
    i32 m_maxLineLength = 80;
    i32 m_firstBadLine = -1;

    ~tIniText();
};

namespace nIniModel
{

enum : i32
{
    kQuote = '"'
};

bool isBlank(char a_character);
// Equal after leading white space, character by character under toupper.
bool namesEqual(const char* a_pLeft, const char* a_pRight);

// A NUL-terminated copy of a_length bytes; null when memory is exhausted.
char* copyText(const char* a_pText, std::size_t a_length);

void removeAllSections(tIniText& a_rText);
tIniSection* findSection(tIniText& a_rText, const char* a_pName);
tIniEntry* findEntry(const tIniSection& a_rSection, const char* a_pTag);

// The section of that name, added at the end when missing; null when memory
// is exhausted.
tIniSection* provideSection(tIniText& a_rText, const char* a_pName, i32 a_line);
// Gives the tag this value and quote, adding the entry at the end of the
// section when the tag is missing. kIniSuccess, or kIniOutOfMemory with
// nothing changed.
i32 setEntry(tIniSection& a_rSection, const char* a_pTag, const char* a_pValue, i32 a_quote,
             i32 a_line);

} // namespace nIniModel
