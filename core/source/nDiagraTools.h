#pragma once
#include "orvtarn/protons/status/tStatus.h"

// Helpers for the host's strings, which live in the graphical runtime's
// handles (tDiagraRuntime.h).
namespace nDiagraTools
{

// Copies a_length bytes of a_pText into the host string whose handle
// variable a_pHandleVariable (a DGHandle*) points to: a handle held there is
// resized, and a null one is replaced by a new handle. The block then holds
// the count and the bytes, with no terminator. When the runtime has no room:
// kStatusMemoryFull, nothing copied, and the variable as it was.
void copyToHostString(const char* a_pText, u32 a_length, void* a_pHandleVariable,
                      nOrvTarn000::tStatus& a_status);

} // namespace nDiagraTools
