#pragma once
#include "orvtarn/protons/status/tTrace.h"

namespace nOrvPTP000
{

// The items of a data-set trace. Each writes a_label as it is (leading space
// included), then the value: a number followed by one space, or a member's
// own trace with nothing after it.
nOrvTarn000::tTrace& traceUnsigned(nOrvTarn000::tTrace& a_trace, const char* a_label, u32 a_value);
nOrvTarn000::tTrace& traceSigned(nOrvTarn000::tTrace& a_trace, const char* a_label, i32 a_value);
nOrvTarn000::tTrace& traceMember(nOrvTarn000::tTrace& a_trace, const char* a_label,
                                 nOrvTarn000::iTraceable& a_member);

} // namespace nOrvPTP000
