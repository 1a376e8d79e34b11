#pragma once
// A trace destination that keeps each buffer the trace hands over, so tests
// see both the text and how it was cut.
#include "orvtarn/protons/status/iTraceDestination.h"
#include "orvtarn/protons/status/tTrace.h"

#include <string>
#include <vector>

namespace nOrvTarn000
{

class tTraceCapture : public iTraceDestination
{
public:
    iTraceDestination& writeCount(const char* a_text, u32 a_length) override
    {
        m_writes.emplace_back(a_text, a_length);
        return *this;
    }
    iTraceDestination& write(const char* a_text) override
    {
        m_writes.emplace_back(a_text);
        return *this;
    }
    void control(u32, u32) override {}
    char* getOptionText(char*, u32, u32*) override { return nullptr; }
    bool isReady() override { return true; }
    void flush() override {}
    const char* getName() override { return "capture"; }

    std::string all() const
    {
        std::string text;
        for (const std::string& write : m_writes)
        {
            text += write;
        }
        return text;
    }

    std::vector<std::string> m_writes;
};

// The line an object traces, line end included.
inline std::string traceLine(iTraceable& a_rObject)
{
    tTraceCapture capture;
    {
        tTrace trace(capture);
        trace.write(a_rObject).endLine();
    }
    return capture.all();
}

} // namespace nOrvTarn000
