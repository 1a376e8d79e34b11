#pragma once
#include "orvtarn/quarks/tTypes.h"

namespace nOrvTarn000
{

// Where finished trace buffers go.
class iTraceDestination
{
public:
    virtual ~iTraceDestination() {}
    virtual iTraceDestination& writeCount(const char* a_text, u32 a_length) = 0;
    virtual iTraceDestination& write(const char* a_text) = 0;
    virtual void control(u32 a_code, u32 a_value) = 0;
    // Copies the option text into a_buffer (at most a_size bytes) and returns
    // the place behind the last byte copied; a_pNeeded gets length + 1.
    virtual char* getOptionText(char* a_buffer, u32 a_size, u32* a_pNeeded) = 0;
    virtual bool isReady() = 0;
    virtual void flush() = 0;
    virtual const char* getName() = 0;
};

} // namespace nOrvTarn000
