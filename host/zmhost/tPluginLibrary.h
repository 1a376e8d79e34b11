#pragma once
#include "dgrt.h"
#include "zm_ptp.h"

#include <string>

namespace nZmHost
{

// The plug-in library and what it needs from the host process at run time,
// all loaded with the dynamic loader, by name through the program's search
// path (its RPATH leads to the install's library directory, or the build's
// directories): the graphical runtime's stand-in libdgrt.so, which owns the
// host's strings and is handed over with SetDGRTModule; orv_emb's stand-in
// liborv_emb.so, if there is one, so that the plug-in's own load by that
// name finds it; and libzm_ptp.so with its six exports. The host's time
// source code comes from this program's exports.
class tPluginLibrary
{
public:
    tPluginLibrary() = default;
    // Unloads in reverse order. Every source must be gone.
    ~tPluginLibrary();
    tPluginLibrary(const tPluginLibrary&) = delete;
    tPluginLibrary& operator=(const tPluginLibrary&) = delete;

    // Loads everything and resolves the exports; a_pPath names the plug-in
    // library, null for the default. False with a_rError telling which part
    // is missing and why.
    [[nodiscard]] bool load(const char* a_pPath, std::string& a_rError);

    // The plug-in library's file, as loaded.
    const std::string& getPath() const { return m_path; }

    // The exports, valid after a successful load.
#define ZMHOST_EXPORT(name) decltype(&::name) name = nullptr;
#include "tPluginExports.def"
#undef ZMHOST_EXPORT

    // The text of a host string; the handle stays the caller's.
    std::string textOf(DGHandle a_handle) const;
    void disposeHandle(DGHandle a_handle) const;

private:
    void* m_pRuntime = nullptr;
    void* m_pOrvEmb = nullptr;
    void* m_pPlugin = nullptr;
    decltype(&::DGDisposeHandle) m_disposeHandle = nullptr;
    std::string m_path;
};

} // namespace nZmHost
