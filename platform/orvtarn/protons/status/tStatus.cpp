#include "orvtarn/protons/status/tStatus.h"

#include <cstring>

namespace nOrvTarn000
{
namespace
{

// Copies at most a_size bytes, zero-fills the rest and always ends in NUL.
void copyCut(char* a_pField, u32 a_size, const char* a_pText)
{
    std::strncpy(a_pField, a_pText != nullptr ? a_pText : "", a_size);
    a_pField[a_size - 1] = '\0';
}

} // namespace

tStatus::tStatus() : m_structSize(kFullSize)
{
    clear();
}

tStatus::tStatus(const tStatus& a_other) : m_structSize(kFullSize)
{
    clear();
    mergeFrom(a_other);
}

void tStatus::clear()
{
    m_code = kStatusSuccess;
    if (isFull())
    {
        std::memset(m_component, 0, sizeof(m_component));
        std::memset(m_file, 0, sizeof(m_file));
        m_line = 0;
        m_extension[0] = 0;
    }
}

bool tStatus::setCode(i32 a_code, const char* a_component, const char* a_file, i32 a_line)
{
    const bool store = (m_code == 0 && a_code != 0) || (m_code > 0 && a_code < 0);
    if (!store)
    {
        return false;
    }
    m_code = a_code;
    if (isFull())
    {
        copyCut(m_component, kComponentSize, a_component);
        copyCut(m_file, kFileSize, a_file);
        m_line = a_line;
        m_extension[0] = 0;
    }
    return true;
}

bool tStatus::mergeFrom(const tStatus& a_other)
{
    if (!setCode(a_other.m_code, a_other.getComponent(), a_other.getFile(), a_other.getLine()))
    {
        return false;
    }
    if (isFull() && a_other.isFull())
    {
        std::memcpy(m_extension, a_other.m_extension, sizeof(m_extension));
    }
    return true;
}

const char* tStatus::getComponent() const
{
    return isFull() ? m_component : "";
}

const char* tStatus::getFile() const
{
    return isFull() ? m_file : "";
}

i32 tStatus::getLine() const
{
    return isFull() ? m_line : 0;
}

} // namespace nOrvTarn000
