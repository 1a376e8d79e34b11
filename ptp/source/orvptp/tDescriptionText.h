#pragma once
#include "orvptp/tPTPText.h"

#include <cstring>

namespace nOrvPTP000
{

// A description text of at most kLimit characters whose parts are separated
// by ";" (manufacturer;model;instance and the like). It is kept twice: as the
// tPTPText that travels, and as a NUL-terminated store in which each ";"
// between parts has been replaced by a NUL, so that every part can be read
// as a string of its own. Only the first kPartCount - 1 semicolons split; any
// further one stays inside the last part. A part that the text lacks is
// empty. A text that is refused leaves text, store and parts as they were.
template <u32 kLimit, u32 kPartCount>
class tDescriptionText
{
public:
    enum : u32
    {
        kStoreSize = kLimit + 1
    };

    tDescriptionText()
    {
        m_store[0] = '\0';
        for (char*& pPart : m_pParts)
        {
            pPart = m_store;
        }
    }

    // The parts point into this object's own store.
    tDescriptionText(const tDescriptionText&) = delete;
    tDescriptionText& operator=(const tDescriptionText&) = delete;

    const tPTPText& getText() const { return m_text; }

    // More than kLimit characters are refused with kStatusOutOfBounds.
    void assign(const tPTPText& a_text, nOrvTarn000::tStatus& a_status)
    {
        if (a_status.isFatal())
        {
            return;
        }
        if (a_text.getLength() > kLimit)
        {
            ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusOutOfBounds);
            return;
        }
        m_text.assign(a_text, a_status);
        if (a_status.isNotFatal())
        {
            store(a_text.getText(), a_text.getLength());
        }
    }

    // Takes the text that snprintf put into a_formatted, a buffer of
    // kStoreSize, with a_length being what snprintf returned: a failed or
    // truncated formatting is refused with kStatusOutOfBounds.
    void assignFormatted(const char* a_formatted, int a_length, nOrvTarn000::tStatus& a_status)
    {
        if (a_status.isFatal())
        {
            return;
        }
        if (a_length < 0 || static_cast<u32>(a_length) >= kStoreSize)
        {
            ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusOutOfBounds);
            return;
        }
        m_text.setText(a_formatted, static_cast<u8>(a_length), a_status);
        if (a_status.isNotFatal())
        {
            store(a_formatted, static_cast<u32>(a_length));
        }
    }

    // The part as a NUL-terminated string inside the store.
    const char* getPart(u32 a_index) const { return m_pParts[a_index]; }

    // Copies the part with its NUL into a_pBuffer, which must have room for
    // kStoreSize characters. A null buffer takes nothing.
    void copyPart(u32 a_index, char* a_pBuffer) const
    {
        if (a_pBuffer != nullptr)
        {
            std::strcpy(a_pBuffer, m_pParts[a_index]);
        }
    }

private:
    void store(const char* a_pChars, u32 a_length)
    {
        if (a_length != 0)
        {
            std::memcpy(m_store, a_pChars, a_length);
        }
        m_store[a_length] = '\0';
        char* const pEnd = m_store + a_length;
        m_pParts[0] = m_store;
        for (u32 i = 1; i < kPartCount; ++i)
        {
            char* pSeparator = std::strchr(m_pParts[i - 1], ';');
            if (pSeparator == nullptr)
            {
                m_pParts[i] = pEnd;
            }
            else
            {
                *pSeparator = '\0';
                m_pParts[i] = pSeparator + 1;
            }
        }
    }

    tPTPText m_text;
    char m_store[kStoreSize];
    char* m_pParts[kPartCount];
};

} // namespace nOrvPTP000
