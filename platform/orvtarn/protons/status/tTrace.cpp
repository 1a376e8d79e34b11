#include "orvtarn/protons/status/tTrace.h"

#include "orvtarn/protons/status/tConsoleTraceDestination.h"
#include "orvtarn/protons/thread/tThreadController.h"
#include "orvtarn/protons/timer/tTime.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>

namespace nOrvTarn000
{
namespace
{

const u32 kUnlimited = std::numeric_limits<u32>::max();

// The magnitude in 64 bits, so that the most negative value of every form prints.
u64 magnitudeOf(i64 a_value)
{
    return a_value < 0 ? 0 - static_cast<u64>(a_value) : static_cast<u64>(a_value);
}

// What follows the last slash or backslash; one at the very start does not count.
const char* fileNamePart(const char* a_path)
{
    const char* pName = a_path;
    if (*a_path == '\0')
    {
        return a_path;
    }
    for (const char* p = a_path + 1; *p != '\0'; ++p)
    {
        if (*p == '/' || *p == '\\')
        {
            pName = p + 1;
        }
    }
    return pName;
}

} // namespace

tTrace::tTrace(iTraceDestination& a_rDestination, const tTraceLayout& a_layout)
    : m_pDestination(&a_rDestination), m_enabled(true), m_layout(a_layout), m_depth(0),
      m_lineBuffer(), m_used(0)
{
}

tTrace::~tTrace()
{
    m_enabled = false;
}

void tTrace::flushLine()
{
    u32 used = m_used.exchange(0, std::memory_order_relaxed);
    if (used > kLineSize)
    {
        used = kLineSize;
    }
    if (used == 0)
    {
        return;
    }
    char line[kLineSize + 1];
    for (u32 i = 0; i < used; ++i)
    {
        line[i] = m_lineBuffer[i].load(std::memory_order_relaxed);
    }
    line[used] = '\0';
    m_pDestination->write(line);
}

void tTrace::append(const char* a_text, u32 a_length, u32 a_limit, u32* a_pCount)
{
    bool newline = false;
    for (u32 i = 0; i < a_length && *a_pCount < a_limit; ++i)
    {
        ++*a_pCount;
        newline = newline || a_text[i] == '\n';
        const u32 place = m_used.fetch_add(1, std::memory_order_relaxed);
        if (place >= kLineSize)
        {
            continue;
        }
        m_lineBuffer[place].store(a_text[i], std::memory_order_relaxed);
        if (place == kLineSize - 1)
        {
            flushLine();
        }
    }
    if (newline)
    {
        flushLine();
    }
}

void tTrace::writeUnsigned(bool a_negative, u64 a_magnitude, u32 a_base, u32 a_limit, u32* a_pCount)
{
    if (a_base < 2 || a_base > 36)
    {
        a_base = 10;
    }
    char text[2 + 3 + 64 + 1];
    char* pEnd = text + sizeof(text);
    char* p = pEnd;
    do
    {
        const u32 digit = static_cast<u32>(a_magnitude % a_base);
        *--p = static_cast<char>(digit < 10 ? '0' + digit : 'A' + digit - 10);
        a_magnitude /= a_base;
    } while (a_magnitude != 0);
    if (a_base == 16)
    {
        *--p = 'x';
        *--p = '0';
    }
    else if (a_base != 10)
    {
        *--p = '#';
        for (u32 base = a_base; base != 0; base /= 10)
        {
            *--p = static_cast<char>('0' + base % 10);
        }
    }
    if (a_negative)
    {
        *--p = '-';
    }
    append(p, static_cast<u32>(pEnd - p), a_limit, a_pCount);
}

tTrace& tTrace::writeHeader(const char* a_component, u64 a_line, const char* a_file, u32 a_kind,
                            i32 a_indentChange)
{
    if (!m_enabled)
    {
        return *this;
    }
    u32 count = 0;
    const u32 width = m_layout.m_headerWidth > 0 ? m_layout.m_headerWidth - 1 : 0;
    const u32 limit = m_layout.m_fixedHeader ? width : kUnlimited;
    const char* separator = "[";
    bool anyField = false;
    auto startField = [&]()
    {
        append(separator, static_cast<u32>(std::strlen(separator)), limit, &count);
        separator = "--";
        anyField = true;
    };
    auto appendText = [&](const char* a_text)
    { append(a_text, static_cast<u32>(std::strlen(a_text)), limit, &count); };

    if (m_layout.m_showComponent)
    {
        startField();
        appendText(a_component);
    }
    if (m_layout.m_showVersion)
    {
        startField();
        appendText("v1.0");
    }
    if (m_layout.m_showLine)
    {
        startField();
        writeUnsigned(false, a_line, 10, limit, &count);
    }
    if (m_layout.m_showFile)
    {
        startField();
        appendText(m_layout.m_showFullPath ? a_file : fileNamePart(a_file));
    }
    if (m_layout.m_showThreadId)
    {
        tStatus status;
        tThreadRecord self;
        getCurrentThread(self, status);
        startField();
        writeUnsigned(false, self.m_id, 16, limit, &count);
    }
    if (m_layout.m_showTime)
    {
        tStatus status;
        startField();
        writeUnsigned(false, getMilliseconds(status), 10, limit, &count);
    }
    if (m_layout.m_showKind)
    {
        startField();
        writeUnsigned(false, a_kind, 10, limit, &count);
    }

    while (count < width)
    {
        append(anyField ? "-" : " ", 1, kUnlimited, &count);
    }
    if (!(m_layout.m_fixedHeader && m_layout.m_headerWidth == 0))
    {
        append(anyField ? "] " : "  ", 2, kUnlimited, &count);
    }
    if (a_indentChange == 2 && --m_depth < 0)
    {
        m_depth = 0;
    }
    if (m_layout.m_indentLines)
    {
        for (i32 i = 0; i < m_depth; ++i)
        {
            append("  ", 2, kUnlimited, &count);
        }
    }
    if (a_indentChange == 1)
    {
        ++m_depth;
    }
    return *this;
}

tTrace& tTrace::write(const char* a_text)
{
    return write(a_text, static_cast<u32>(std::strlen(a_text)));
}

tTrace& tTrace::write(const char* a_text, u32 a_length)
{
    if (m_enabled)
    {
        u32 count = 0;
        append(a_text, a_length, kUnlimited, &count);
    }
    return *this;
}

tTrace& tTrace::write(char a_char)
{
    return write(&a_char, 1);
}

tTrace& tTrace::write(bool a_value)
{
    return write(a_value ? "true(1)" : "false(0)");
}

tTrace& tTrace::write(iTraceable& a_object)
{
    if (m_enabled)
    {
        a_object.trace(*this);
    }
    return *this;
}

tTrace& tTrace::writeMagnitude(bool a_negative, u64 a_magnitude, u32 a_base)
{
    if (m_enabled)
    {
        u32 count = 0;
        writeUnsigned(a_negative, a_magnitude, a_base, kUnlimited, &count);
    }
    return *this;
}

tTrace& tTrace::writeNumber(u16 a_value, u32 a_base)
{
    return writeMagnitude(false, a_value, a_base);
}

tTrace& tTrace::writeNumber(u32 a_value, u32 a_base)
{
    return writeMagnitude(false, a_value, a_base);
}

tTrace& tTrace::writeNumber(u64 a_value, u32 a_base)
{
    return writeMagnitude(false, a_value, a_base);
}

tTrace& tTrace::writeNumber(i16 a_value, u32 a_base)
{
    return writeMagnitude(a_value < 0, magnitudeOf(a_value), a_base);
}

tTrace& tTrace::writeNumber(i32 a_value, u32 a_base)
{
    return writeMagnitude(a_value < 0, magnitudeOf(a_value), a_base);
}

tTrace& tTrace::writeNumber(i64 a_value, u32 a_base)
{
    return writeMagnitude(a_value < 0, magnitudeOf(a_value), a_base);
}

tTrace& tTrace::writeFormatted(const char* a_format, ...)
{
    if (!m_enabled)
    {
        return *this;
    }
    char text[kMaxTraceLine];
    std::memset(text, 0, sizeof(text));
    va_list arguments;
    va_start(arguments, a_format);
    const int needed = std::vsnprintf(text, sizeof(text), a_format, arguments);
    va_end(arguments);
    if (needed >= static_cast<int>(kMaxTraceLine))
    {
        write("!!Formatted string exceeds kMaxTraceLine characters!!");
    }
    return write(text);
}

tTrace& tTrace::endLine()
{
    return write('\n');
}

tTrace& getTrace(u32)
{
    static tConsoleTraceDestination s_console;
    static tTrace s_trace(s_console);
    return s_trace;
}

} // namespace nOrvTarn000
