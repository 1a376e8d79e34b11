#pragma once
#include "orvtarn/protons/status/tStatus.h"

namespace nOrvTarn000
{

// Writes one trace line for a call of the operating system that failed: the
// call and the system's own text for a_errorNumber, so that a failure says
// why.
void traceSystemError(const char* a_component, u64 a_line, const char* a_file, const char* a_call,
                      int a_errorNumber);

} // namespace nOrvTarn000

#define ORVTARN_TRACE_SYSTEM_ERROR(call, errorNumber)                                              \
    ::nOrvTarn000::traceSystemError(ORVTARN_COMPONENT, __LINE__, __FILE__, (call), (errorNumber))
