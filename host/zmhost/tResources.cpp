#include "tResources.h"

#include <cstdio>
#include <dirent.h>
#include <malloc.h>
#include <unistd.h>

namespace nZmHost
{
namespace
{

i64 countEntries(const char* a_pDirectory)
{
    i64 count = 0;
    if (DIR* pDirectory = opendir(a_pDirectory))
    {
        while (const dirent* pEntry = readdir(pDirectory))
        {
            count += pEntry->d_name[0] != '.' ? 1 : 0;
        }
        closedir(pDirectory);
    }
    return count;
}

} // namespace

tFields readResources()
{
    const i64 threads = countEntries("/proc/self/task");
    // Without the one that counts them.
    const i64 descriptors = countEntries("/proc/self/fd") - 1;
    long pages = 0;
    if (std::FILE* pStatm = std::fopen("/proc/self/statm", "r"))
    {
        if (std::fscanf(pStatm, "%*d %ld", &pages) != 1)
        {
            pages = 0;
        }
        std::fclose(pStatm);
    }
    const struct mallinfo2 heap = mallinfo2();
    return tFields{{"threads", "", 0, threads},
                   {"fds", "", 0, descriptors},
                   {"heap", "", 0, static_cast<i64>(heap.uordblks)},
                   {"rss_kb", "", 0, static_cast<i64>(pages * (sysconf(_SC_PAGESIZE) / 1024))}};
}

} // namespace nZmHost
