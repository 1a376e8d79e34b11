#pragma once
// The store's only contact with the file system. Each call is a thin wrapper
// over the C library or POSIX; a failure returns false or null with errno set.
//
// Tests reach in through a fault hook, which is asked before each operation
// and can make it fail with an errno of its choice, so that a write can be
// broken at any step.
#include <cstddef>
#include <cstdio>

namespace nIniFileSystem
{

enum tOperation
{
    kOpen,      // fopen of a named file
    kCreateNew, // creation of a file that must not exist yet
    kAttach,    // a stream over a created file
    kWrite,     // one block written
    kFlush,     // fflush
    kSync,      // fsync of a file
    kClose,     // fclose
    kKeepMode,  // giving a file another file's permissions
    kRename,    // rename over the target
    kOperationCount
};

// Returns 0 to let the operation run, or the errno it fails with instead.
typedef int (*tFaultHook)(tOperation a_operation, void* a_pContext);

// Installs a hook, or removes it with null. For tests; not thread-safe.
void setFaultHook(tFaultHook a_hook, void* a_pContext);

bool exists(const char* a_pPath);
[[nodiscard]] std::FILE* open(const char* a_pPath, const char* a_pMode);
// Creates the file exclusively for writing; its descriptor, or -1 with errno
// EEXIST when the name is taken.
[[nodiscard]] int createNew(const char* a_pPath);
// A stream that writes to the descriptor and owns it; null when there is
// none, and the descriptor is closed then.
[[nodiscard]] std::FILE* attach(int a_descriptor);
// Reads up to a_size bytes; false on a read error (not at the end of file).
[[nodiscard]] bool read(std::FILE* a_pFile, void* a_pBuffer, std::size_t a_size,
                        std::size_t& a_rCount);
[[nodiscard]] bool write(std::FILE* a_pFile, const void* a_pData, std::size_t a_size);
[[nodiscard]] bool flush(std::FILE* a_pFile);
[[nodiscard]] bool sync(std::FILE* a_pFile);
// Close and remove serve clean-up paths too, where their results do not count.
bool close(std::FILE* a_pFile);
// Gives a_pFile the permission bits of the file at a_pModel, if that exists.
[[nodiscard]] bool keepMode(std::FILE* a_pFile, const char* a_pModel);
bool remove(const char* a_pPath);
[[nodiscard]] bool rename(const char* a_pFrom, const char* a_pTo);
// Makes a rename in the directory durable. Best effort: the new file is
// complete whether or not this succeeds.
void syncDirectory(const char* a_pDirectory);

} // namespace nIniFileSystem
