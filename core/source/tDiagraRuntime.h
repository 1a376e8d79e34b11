#pragma once
#include "dgrt.h"

namespace nDiagraTools
{

// The graphical runtime's handle functions, looked up by name at their first
// use and called through the cached address from then on. The runtime is
// looked for in this order:
//   1. the module that the host named with setRuntimeModule;
//   2. the process's own exports (dlopen(NULL)), when they include the
//      runtime's marker "gDGRTVersion" or "DGNewHandle";
//   3. DGRT_LIBRARY_NAME, then DGFFRT_LIBRARY_NAME, if the process has
//      loaded it already.
// Without a runtime, or without the function in it, there is no safe way on:
// the process ends with status 1 after a "Fatal Error" line on stderr.

// a_module: a handle from dlopen, or null to look for the runtime.
void setRuntimeModule(void* a_module);

DGHandle newHandleClear(size_t a_size);
int32_t setHandleSizeClear(DGHandle a_handle, size_t a_size);

} // namespace nDiagraTools
