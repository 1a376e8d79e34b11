#include "tIniFileSystem.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nIniFileSystem
{
namespace
{

tFaultHook s_faultHook = nullptr;
void* s_pFaultContext = nullptr;

// True when the hook makes the operation fail; errno then holds its choice.
bool faultInjected(tOperation a_operation)
{
    if (s_faultHook == nullptr)
    {
        return false;
    }
    const int error = s_faultHook(a_operation, s_pFaultContext);
    if (error == 0)
    {
        return false;
    }
    errno = error;
    return true;
}

} // namespace

void setFaultHook(tFaultHook a_hook, void* a_pContext)
{
    s_faultHook = a_hook;
    s_pFaultContext = a_pContext;
}

bool exists(const char* a_pPath)
{
    struct stat information;
    return ::stat(a_pPath, &information) == 0;
}

std::FILE* open(const char* a_pPath, const char* a_pMode)
{
    if (faultInjected(kOpen))
    {
        return nullptr;
    }
    return std::fopen(a_pPath, a_pMode);
}

int createNew(const char* a_pPath)
{
    if (faultInjected(kCreateNew))
    {
        return -1;
    }
    return ::open(a_pPath, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
}

std::FILE* attach(int a_descriptor)
{
    std::FILE* pFile = faultInjected(kAttach) ? nullptr : ::fdopen(a_descriptor, "wb");
    if (pFile == nullptr)
    {
        const int error = errno;
        ::close(a_descriptor);
        errno = error;
    }
    return pFile;
}

bool read(std::FILE* a_pFile, void* a_pBuffer, std::size_t a_size, std::size_t& a_rCount)
{
    a_rCount = std::fread(a_pBuffer, 1, a_size, a_pFile);
    return a_rCount == a_size || std::ferror(a_pFile) == 0;
}

bool write(std::FILE* a_pFile, const void* a_pData, std::size_t a_size)
{
    if (faultInjected(kWrite))
    {
        return false;
    }
    return std::fwrite(a_pData, 1, a_size, a_pFile) == a_size;
}

bool flush(std::FILE* a_pFile)
{
    if (faultInjected(kFlush))
    {
        return false;
    }
    return std::fflush(a_pFile) == 0;
}

bool sync(std::FILE* a_pFile)
{
    if (faultInjected(kSync))
    {
        return false;
    }
    return ::fsync(::fileno(a_pFile)) == 0;
}

bool close(std::FILE* a_pFile)
{
    // The stream is released even when the hook fails the call.
    const bool injected = faultInjected(kClose);
    const int error = errno;
    const bool closed = std::fclose(a_pFile) == 0;
    if (injected)
    {
        errno = error;
        return false;
    }
    return closed;
}

bool keepMode(std::FILE* a_pFile, const char* a_pModel)
{
    struct stat model;
    if (::stat(a_pModel, &model) != 0)
    {
        return true;
    }
    if (faultInjected(kKeepMode))
    {
        return false;
    }
    return ::fchmod(::fileno(a_pFile), model.st_mode & 07777) == 0;
}

bool remove(const char* a_pPath)
{
    return std::remove(a_pPath) == 0;
}

bool rename(const char* a_pFrom, const char* a_pTo)
{
    if (faultInjected(kRename))
    {
        return false;
    }
    return std::rename(a_pFrom, a_pTo) == 0;
}

void syncDirectory(const char* a_pDirectory)
{
    const int descriptor = ::open(a_pDirectory, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0)
    {
        static_cast<void>(::fsync(descriptor));
        ::close(descriptor);
    }
}

} // namespace nIniFileSystem
