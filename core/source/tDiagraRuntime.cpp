#include "tDiagraRuntime.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>

namespace nDiagraTools
{
namespace
{

// A function of the runtime: its name and, once found, its address. Two
// threads that find it at once store the same address.
struct tEntry
{
    const char* m_pName;
    std::atomic<void*> m_pAddress;
};

std::atomic<void*> s_module(nullptr);
tEntry s_newHandleClear{"DGNewHandleClear", {nullptr}};
tEntry s_setHandleSizeClear{"DGSetHandleSizeClear", {nullptr}};

[[noreturn]] void endProcess(const char* a_pText)
{
    std::fprintf(stderr, "Fatal Error: %s\n", a_pText);
    std::_Exit(1);
}

bool isRuntime(void* a_pModule)
{
    return dlsym(a_pModule, "gDGRTVersion") != nullptr ||
           dlsym(a_pModule, "DGNewHandle") != nullptr;
}

void* findModule()
{
    void* pModule = s_module.load();
    if (pModule == nullptr)
    {
        pModule = dlopen(nullptr, RTLD_NOW);
        if (pModule == nullptr || !isRuntime(pModule))
        {
            pModule = dlopen(DGRT_LIBRARY_NAME, RTLD_NOW | RTLD_NOLOAD);
        }
        if (pModule == nullptr)
        {
            pModule = dlopen(DGFFRT_LIBRARY_NAME, RTLD_NOW | RTLD_NOLOAD);
        }
    }
    return pModule;
}

void* find(tEntry& a_rEntry)
{
    void* pAddress = a_rEntry.m_pAddress.load();
    if (pAddress == nullptr)
    {
        void* const pModule = findModule();
        if (pModule == nullptr)
        {
            endProcess("DIAGRA.LIB was not called from a Diagra process.");
        }
        pAddress = dlsym(pModule, a_rEntry.m_pName);
        if (pAddress == nullptr)
        {
            char text[80];
            std::snprintf(text, sizeof(text), "DIAGRA.LIB could not locate \"%s\".",
                          a_rEntry.m_pName);
            endProcess(text);
        }
        a_rEntry.m_pAddress.store(pAddress);
    }
    return pAddress;
}

} // namespace

void setRuntimeModule(void* a_module)
{
    s_module.store(a_module);
}

DGHandle newHandleClear(size_t a_size)
{
    return reinterpret_cast<tDGNewHandleClear>(find(s_newHandleClear))(a_size);
}

int32_t setHandleSizeClear(DGHandle a_handle, size_t a_size)
{
    return reinterpret_cast<tDGSetHandleSizeClear>(find(s_setHandleSizeClear))(a_handle, a_size);
}

} // namespace nDiagraTools
