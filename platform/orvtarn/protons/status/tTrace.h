#pragma once
#include "orvtarn/protons/status/iTraceDestination.h"
#include "orvtarn/protons/status/iTraceable.h"

#include <atomic>

namespace nOrvTarn000
{

// Room for one formatted text, NUL included.
enum : u32
{
    kMaxTraceLine = 1024
};

// Which header fields a trace writes, and how. The defaults are the layout
// the system prints with: "[component--line--file-----...] ".
struct tTraceLayout
{
    bool m_showComponent = true;
    bool m_showVersion = false;
    bool m_showLine = true;
    bool m_showFile = true;
    bool m_showFullPath = false;
    bool m_showTime = false;
    bool m_showKind = false;
    bool m_showThreadId = false;
    bool m_indentLines = true;
    bool m_fixedHeader = true;
    u32 m_headerWidth = 50;
};

// Line-oriented diagnostic output. Text collects in a fixed line buffer that
// goes to the destination when it is full or when appended text held a
// newline. Takes no lock and never allocates. Threads may trace at the same
// moment: their text can mix, and some of it can be lost while a full buffer
// is handed on, but no write leaves the buffer.
class tTrace
{
public:
    explicit tTrace(iTraceDestination& a_rDestination,
                    const tTraceLayout& a_layout = tTraceLayout());
    virtual ~tTrace();

    tTrace& writeHeader(const char* a_component, u64 a_line, const char* a_file, u32 a_kind,
                        i32 a_indentChange);
    tTrace& write(const char* a_text);
    tTrace& write(const char* a_text, u32 a_length);
    tTrace& write(char a_char);
    tTrace& write(bool a_value);
    tTrace& write(iTraceable& a_object);
    tTrace& writeNumber(u16 a_value, u32 a_base);
    tTrace& writeNumber(i16 a_value, u32 a_base);
    tTrace& writeNumber(u32 a_value, u32 a_base);
    tTrace& writeNumber(i32 a_value, u32 a_base);
    tTrace& writeNumber(u64 a_value, u32 a_base);
    tTrace& writeNumber(i64 a_value, u32 a_base);
    tTrace& writeFormatted(const char* a_format, ...) __attribute__((format(printf, 2, 3)));
    tTrace& endLine();

private:
    enum : u32
    {
        kLineSize = 253
    };

    // Appends a_length bytes, stopping at a_limit header characters counted in *a_pCount.
    void append(const char* a_text, u32 a_length, u32 a_limit, u32* a_pCount);
    tTrace& writeMagnitude(bool a_negative, u64 a_magnitude, u32 a_base);
    void writeUnsigned(bool a_negative, u64 a_magnitude, u32 a_base, u32 a_limit, u32* a_pCount);
    // Hands the buffered text to the destination and empties the buffer.
    void flushLine();

    iTraceDestination* m_pDestination;
    bool m_enabled;
    tTraceLayout m_layout;
    i32 m_depth;
    // Each character takes its place by one atomic step on m_used; a place at
    // or behind the end is never written. m_used runs past the end only while
    // the thread that took the last place hands the full buffer on.
    std::atomic<char> m_lineBuffer[kLineSize];
    std::atomic<u32> m_used;
};

// The program's trace; the argument is ignored and callers pass 0.
tTrace& getTrace(u32 a_which);

} // namespace nOrvTarn000
