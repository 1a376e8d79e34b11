#include "orvtarn/protons/status/tAssertion.h"

#include "orvtarn/protons/status/tTrace.h"

#include <cstring>

namespace nOrvTarn000
{
namespace
{

enum : u32
{
    kKindInformation = 105 // 'i'
};

} // namespace

// The breakpoint trap that follows a failed contract on the original target is
// left out of every build: the report and the code are what callers rely on.
void reportAssertion(const char* a_level, const char* a_text, const char* a_component,
                     const char* a_file, i32 a_line, i32 a_code, tStatus* a_pStatus)
{
    tTrace& trace = getTrace(0);
    trace.writeHeader(a_component, static_cast<u64>(a_line), a_file, kKindInformation, 0);
    if (std::strcmp(a_level, "default") == 0)
    {
        trace.write("ASSERTION FAILED: ");
    }
    else if (std::strcmp(a_level, "warning") == 0)
    {
        trace.write("ASSERTION WARNING: ");
    }
    else
    {
        trace.write("ASSERTION FAILED (").write(a_level).write("): ");
    }
    trace.write(a_text).endLine();
    if (a_pStatus != nullptr && a_code != 0)
    {
        a_pStatus->setCode(a_code, a_component, a_file, a_line);
    }
}

} // namespace nOrvTarn000
