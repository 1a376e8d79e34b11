#include "tIniModel.h"

#include "orvtarn/protons/status/tAllocation.h"

#include <cctype>
#include <cstring>

using nOrvTarn000::tStatus;

tIniBuffer::~tIniBuffer()
{
    delete[] m_pData;
}

bool tIniBuffer::reserve(std::size_t a_length, std::size_t a_initial)
{
    if (a_length < m_capacity)
    {
        return true;
    }
    std::size_t capacity = m_capacity == 0 ? a_initial : m_capacity;
    while (capacity <= a_length)
    {
        if (capacity > static_cast<std::size_t>(-1) / 2)
        {
            return false;
        }
        capacity *= 2;
    }
    tStatus allocation;
    char* pData = new (allocation) char[capacity];
    if (pData == nullptr)
    {
        return false;
    }
    if (m_length > 0)
    {
        std::memcpy(pData, m_pData, m_length);
    }
    pData[m_length] = '\0';
    delete[] m_pData;
    m_pData = pData;
    m_capacity = capacity;
    return true;
}

bool tIniBuffer::append(const char* a_pBytes, std::size_t a_count)
{
    if (!reserve(m_length + a_count))
    {
        return false;
    }
    std::memcpy(m_pData + m_length, a_pBytes, a_count);
    m_length += a_count;
    m_pData[m_length] = '\0';
    return true;
}

void tIniBuffer::clear()
{
    m_length = 0;
    if (m_pData != nullptr)
    {
        m_pData[0] = '\0';
    }
}

tIniEntry::~tIniEntry()
{
    delete[] m_tag;
    delete[] m_value;
}

tIniSection::~tIniSection()
{
    delete[] m_name;
    while (m_entries.m_pFirst != nullptr)
    {
        tIniEntry* pEntry = m_entries.m_pFirst;
        m_entries.m_pFirst = pEntry->m_pNext;
        delete pEntry;
    }
}

tIniText::~tIniText()
{
    nIniModel::removeAllSections(*this);
}

namespace nIniModel
{

bool isBlank(char a_character)
{
    return std::isspace(static_cast<unsigned char>(a_character)) != 0;
}

bool namesEqual(const char* a_pLeft, const char* a_pRight)
{
    while (isBlank(*a_pLeft))
    {
        ++a_pLeft;
    }
    while (isBlank(*a_pRight))
    {
        ++a_pRight;
    }
    for (;; ++a_pLeft, ++a_pRight)
    {
        if (*a_pLeft != *a_pRight && std::toupper(static_cast<unsigned char>(*a_pLeft)) !=
                                         std::toupper(static_cast<unsigned char>(*a_pRight)))
        {
            return false;
        }
        if (*a_pLeft == '\0')
        {
            return true;
        }
    }
}

char* copyText(const char* a_pText, std::size_t a_length)
{
    tStatus allocation;
    char* pCopy = new (allocation) char[a_length + 1];
    if (pCopy != nullptr)
    {
        std::memcpy(pCopy, a_pText, a_length);
        pCopy[a_length] = '\0';
    }
    return pCopy;
}

void removeAllSections(tIniText& a_rText)
{
    while (a_rText.m_sections.m_pFirst != nullptr)
    {
        tIniSection* pSection = a_rText.m_sections.m_pFirst;
        a_rText.m_sections.m_pFirst = pSection->m_pNext;
        delete pSection;
    }
    a_rText.m_sections.m_pLast = nullptr;
    a_rText.m_pLastSection = nullptr;
}

tIniSection* findSection(tIniText& a_rText, const char* a_pName)
{
    if (a_rText.m_pLastSection != nullptr && namesEqual(a_rText.m_pLastSection->m_name, a_pName))
    {
        return a_rText.m_pLastSection;
    }
    for (tIniSection* pSection = a_rText.m_sections.m_pFirst; pSection != nullptr;
         pSection = pSection->m_pNext)
    {
        if (namesEqual(pSection->m_name, a_pName))
        {
            a_rText.m_pLastSection = pSection;
            return pSection;
        }
    }
    return nullptr;
}

tIniEntry* findEntry(const tIniSection& a_rSection, const char* a_pTag)
{
    for (tIniEntry* pEntry = a_rSection.m_entries.m_pFirst; pEntry != nullptr;
         pEntry = pEntry->m_pNext)
    {
        if (namesEqual(pEntry->m_tag, a_pTag))
        {
            return pEntry;
        }
    }
    return nullptr;
}

tIniSection* provideSection(tIniText& a_rText, const char* a_pName, i32 a_line)
{
    tIniSection* pSection = findSection(a_rText, a_pName);
    if (pSection != nullptr)
    {
        return pSection;
    }
    tStatus allocation;
    pSection = new (allocation) tIniSection();
    if (pSection == nullptr)
    {
        return nullptr;
    }
    pSection->m_name = copyText(a_pName, std::strlen(a_pName));
    if (pSection->m_name == nullptr)
    {
        delete pSection;
        return nullptr;
    }
    pSection->m_line = a_line;
    a_rText.m_sections.append(pSection);
    a_rText.m_pLastSection = pSection;
    return pSection;
}

i32 setEntry(tIniSection& a_rSection, const char* a_pTag, const char* a_pValue, i32 a_quote,
             i32 a_line)
{
    char* pValue = copyText(a_pValue, std::strlen(a_pValue));
    if (pValue == nullptr)
    {
        return kIniOutOfMemory;
    }
    tIniEntry* pEntry = findEntry(a_rSection, a_pTag);
    if (pEntry == nullptr)
    {
        tStatus allocation;
        pEntry = new (allocation) tIniEntry();
        char* pTag = pEntry == nullptr ? nullptr : copyText(a_pTag, std::strlen(a_pTag));
        if (pTag == nullptr)
        {
            delete pEntry;
            delete[] pValue;
            return kIniOutOfMemory;
        }
        pEntry->m_tag = pTag;
        a_rSection.m_entries.append(pEntry);
    }
    delete[] pEntry->m_value;
    pEntry->m_value = pValue;
    pEntry->m_quote = a_quote;
    pEntry->m_line = a_line;
    return kIniSuccess;
}

} // namespace nIniModel

tIniText* iniNew()
{
    tStatus allocation;
    return new (allocation) tIniText();
}

void iniDispose(tIniText* a_pText)
{
    delete a_pText;
}

i32 iniGetFirstBadLine(const tIniText* a_pText)
{
    return a_pText == nullptr ? -1 : a_pText->m_firstBadLine;
}
