#include "orvptp/tDataSetTrace.h"

using nOrvTarn000::iTraceable;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tTrace& traceUnsigned(tTrace& a_trace, const char* a_label, u32 a_value)
{
    return a_trace.writeFormatted("%s%u ", a_label, static_cast<unsigned>(a_value));
}

tTrace& traceSigned(tTrace& a_trace, const char* a_label, i32 a_value)
{
    return a_trace.writeFormatted("%s%d ", a_label, static_cast<int>(a_value));
}

tTrace& traceMember(tTrace& a_trace, const char* a_label, iTraceable& a_member)
{
    return a_trace.write(a_label).write(a_member);
}

} // namespace nOrvPTP000
