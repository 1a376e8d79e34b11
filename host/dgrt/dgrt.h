#pragma once
// The graphical runtime's handle functions that the library uses for the
// host's strings. The runtime is not ours: the library finds these functions
// by name in the process that loads it, and never links them.
//
// A handle leads to a block that the runtime may move when it resizes it: the
// handle stays valid, a pointer into the block does not. A host string is
// such a block: an i32 byte count and that many bytes, with no terminator.
#include <stddef.h>
#include <stdint.h>

// The runtime's symbols are visible beyond its library.
#define DGRT_API __attribute__((visibility("default")))

// The runtime's libraries, looked for among those the process has loaded.
#define DGRT_LIBRARY_NAME "libdgrt.so"
#define DGFFRT_LIBRARY_NAME "libdgffrt.so"

extern "C"
{

    typedef void** DGHandle;

    // A new block of a_size zero bytes; null when there is no room.
    typedef DGHandle (*tDGNewHandleClear)(size_t a_size);
    DGRT_API DGHandle DGNewHandleClear(size_t a_size);

    // Resizes the handle's block to a_size bytes, zeroing what it gains; 0 on
    // success, kDGMemoryFull when there is no room (the block stays as it was).
    typedef int32_t (*tDGSetHandleSizeClear)(DGHandle a_handle, size_t a_size);
    DGRT_API int32_t DGSetHandleSizeClear(DGHandle a_handle, size_t a_size);

    // A new block of a_size bytes, not zeroed.
    DGRT_API DGHandle DGNewHandle(size_t a_size);
    // Frees the block and the handle; null is ignored.
    DGRT_API void DGDisposeHandle(DGHandle a_handle);

    // The runtime's version. A process that exports it (or DGNewHandle) is
    // itself a runtime process.
    extern DGRT_API const int32_t gDGRTVersion;

    enum
    {
        kDGArgumentError = 1,
        kDGMemoryFull = 2
    };
}
