#include "orvtarn/protons/status/tSystemError.h"

#include "orvtarn/protons/status/tTrace.h"

#include <cstring>

namespace nOrvTarn000
{
namespace
{
enum : u32
{
    kKindSystemError = 101 // 'e'
};
} // namespace

void traceSystemError(const char* a_component, u64 a_line, const char* a_file, const char* a_call,
                      int a_errorNumber)
{
    char text[128] = "";
    getTrace(0)
        .writeHeader(a_component, a_line, a_file, kKindSystemError, 0)
        .writeFormatted("%s failed: %s (%d)", a_call, strerror_r(a_errorNumber, text, sizeof(text)),
                        a_errorNumber)
        .endLine();
}

} // namespace nOrvTarn000
