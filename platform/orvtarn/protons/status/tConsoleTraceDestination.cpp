#include "orvtarn/protons/status/tConsoleTraceDestination.h"

#include <cstdio>
#include <cstring>

namespace nOrvTarn000
{
namespace
{

const char kOptionText[] = " --destination tarn";

// The common printing step: format into a fixed buffer, then standard output.
void print(const char* a_format, const char* a_text)
{
    char buffer[1024];
    std::snprintf(buffer, sizeof(buffer), a_format, a_text);
    std::fputs(buffer, stdout);
    std::fflush(stdout);
}

} // namespace

iTraceDestination& tConsoleTraceDestination::writeCount(const char* a_text, u32 a_length)
{
    char format[16];
    std::snprintf(format, sizeof(format), "%%.%us", static_cast<unsigned>(a_length));
    print(format, a_text);
    return *this;
}

iTraceDestination& tConsoleTraceDestination::write(const char* a_text)
{
    print("%s", a_text);
    return *this;
}

char* tConsoleTraceDestination::getOptionText(char* a_buffer, u32 a_size, u32* a_pNeeded)
{
    if (a_pNeeded != nullptr)
    {
        *a_pNeeded = sizeof(kOptionText);
    }
    if (a_buffer == nullptr || a_size == 0)
    {
        return nullptr;
    }
    const u32 copied = a_size < sizeof(kOptionText) ? a_size : sizeof(kOptionText);
    std::memcpy(a_buffer, kOptionText, copied);
    a_buffer[a_size - 1] = '\0';
    return a_buffer + copied - 1;
}

} // namespace nOrvTarn000
