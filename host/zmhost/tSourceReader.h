#pragma once
#include "tHostClock.h"
#include "tPluginLibrary.h"
#include "tStatusRecord.h"

namespace nZmHost
{

// Reads the time source's host properties through the library's
// zm_ptp_getProperty, into status records. Strings come through one host
// string handle, made by the library's first string read and reused.
class tSourceReader
{
public:
    explicit tSourceReader(const tPluginLibrary& a_rLibrary) : m_rLibrary(a_rLibrary) {}
    ~tSourceReader();
    tSourceReader(const tSourceReader&) = delete;
    tSourceReader& operator=(const tSourceReader&) = delete;

    // What is watched for changes: the port state, the synchronized flag and
    // the grandmaster. Everything else of the record stays as it was.
    void readWatched(tStatusRecord& a_rRecord);
    // The rest of the record, the host clock's values among them.
    void readRest(tStatusRecord& a_rRecord, tHostClock& a_rClock);
    // The error code latched since the last read (257: no device has the
    // file's MAC address, 258: it has no IPv4 address); absent offline.
    std::optional<u32> takeErrorCode();

private:
    template <typename tType>
    std::optional<tType> read(u32 a_key);
    std::optional<std::string> readText(u32 a_key);

    const tPluginLibrary& m_rLibrary;
    DGHandle m_handle = nullptr;
};

// True when the watched values of the two records differ.
bool watchedDiffer(const tStatusRecord& a_first, const tStatusRecord& a_second);

} // namespace nZmHost
