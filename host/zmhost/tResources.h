#pragma once
#include "tStatusRecord.h"

namespace nZmHost
{

// What the process holds: threads, descriptors, heap bytes in use (all of
// them when one malloc arena serves every thread: MALLOC_ARENA_MAX=1) and
// the resident set in kB. A host watches these across rebuilds of the
// plug-in.
tFields readResources();

} // namespace nZmHost
