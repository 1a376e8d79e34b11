#pragma once
#include "orvtarn/protons/status/iTraceDestination.h"

namespace nOrvTarn000
{

// Prints trace text unchanged on standard output; text written from a thread
// at interrupt priority is dropped.
class tConsoleTraceDestination : public iTraceDestination
{
public:
    iTraceDestination& writeCount(const char* a_text, u32 a_length) override;
    iTraceDestination& write(const char* a_text) override;
    void control(u32, u32) override {}
    char* getOptionText(char* a_buffer, u32 a_size, u32* a_pNeeded) override;
    bool isReady() override { return true; }
    void flush() override {}
    const char* getName() override { return "nOrvTarnS100_printf"; }
};

} // namespace nOrvTarn000
