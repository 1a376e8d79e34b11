#include "tPluginLibrary.h"

#include "orv_emb.h"

#include <cstring>
#include <dlfcn.h>
#include <link.h>

namespace nZmHost
{
namespace
{

const char kPluginLibraryName[] = "libzm_ptp.so";

std::string lastLoaderError()
{
    const char* const pError = dlerror();
    return pError != nullptr ? pError : "unknown error";
}

void unload(void*& a_rpHandle)
{
    if (a_rpHandle != nullptr)
    {
        dlclose(a_rpHandle);
        a_rpHandle = nullptr;
    }
}

} // namespace

tPluginLibrary::~tPluginLibrary()
{
    unload(m_pPlugin);
    unload(m_pOrvEmb);
    unload(m_pRuntime);
}

bool tPluginLibrary::load(const char* a_pPath, std::string& a_rError)
{
    m_pRuntime = dlopen(DGRT_LIBRARY_NAME, RTLD_NOW | RTLD_LOCAL);
    m_disposeHandle =
        m_pRuntime != nullptr
            ? reinterpret_cast<decltype(m_disposeHandle)>(dlsym(m_pRuntime, "DGDisposeHandle"))
            : nullptr;
    if (m_disposeHandle == nullptr)
    {
        a_rError = "the graphical runtime: " + lastLoaderError();
        return false;
    }
    // Optional: without it the plug-in takes its fallbacks.
    m_pOrvEmb = dlopen(ORV_EMB_LIBRARY_NAME, RTLD_NOW | RTLD_LOCAL);

    // Every symbol now: the program provides what the library lacks.
    m_pPlugin = dlopen(a_pPath != nullptr ? a_pPath : kPluginLibraryName, RTLD_NOW | RTLD_LOCAL);
    if (m_pPlugin == nullptr)
    {
        a_rError = "the plug-in library: " + lastLoaderError();
        return false;
    }
    const link_map* pMap = nullptr;
    m_path = dlinfo(m_pPlugin, RTLD_DI_LINKMAP, &pMap) == 0 && pMap != nullptr
                 ? pMap->l_name
                 : (a_pPath != nullptr ? a_pPath : kPluginLibraryName);
#define ZMHOST_EXPORT(name)                                                                        \
    name = reinterpret_cast<decltype(name)>(dlsym(m_pPlugin, #name));                              \
    if (name == nullptr)                                                                           \
    {                                                                                              \
        a_rError = m_path + " lacks " #name;                                                       \
        return false;                                                                              \
    }
#include "tPluginExports.def"
#undef ZMHOST_EXPORT
    SetDGRTModule(m_pRuntime);
    return true;
}

std::string tPluginLibrary::textOf(DGHandle a_handle) const
{
    if (a_handle == nullptr || *a_handle == nullptr)
    {
        return std::string();
    }
    const char* const pBlock = static_cast<const char*>(*a_handle);
    int32_t count = 0;
    std::memcpy(&count, pBlock, sizeof(count));
    return std::string(pBlock + sizeof(count), count > 0 ? static_cast<size_t>(count) : 0u);
}

void tPluginLibrary::disposeHandle(DGHandle a_handle) const
{
    if (m_disposeHandle != nullptr)
    {
        m_disposeHandle(a_handle);
    }
}

} // namespace nZmHost
