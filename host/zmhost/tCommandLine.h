#pragma once
#include "orvtarn/quarks/tTypes.h"

#include <cstdio>
#include <string>

namespace nZmHost
{

// What the command line asks of zmhost.
struct tOptions
{
    enum : int
    {
        kLevelEvents = 0,  // events only: online, offline, the summary
        kLevelChanges = 1, // and a status line at each change
        kLevelSeconds = 2, // and a status line every second
        kLevelLooks = 3    // and one at each look, ten a second
    };

    std::string m_interface; // empty: the settings file names the device
    std::string m_root;      // empty: $ZM_PTP_ROOT, else the library's default
    std::string m_library;   // empty: libzm_ptp.so through the loader's search path
    std::string m_csvPath;   // empty: no CSV file
    bool m_json = false;
    int m_level = kLevelSeconds;
    f64 m_durationSeconds = 0.0;      // 0: until SIGINT or SIGTERM
    f64 m_startTimeoutSeconds = 10.0; // 0: waits for the source for ever
    i64 m_clockOffsetNs = 0;
    f64 m_clockPpm = 0.0;
};

enum class tCommand
{
    kRun,
    kHelp,
    kVersion,
    kUsageError
};

// Reads the arguments into a_rOptions. For kUsageError a_rError says what is
// wrong with which argument.
tCommand parseCommandLine(int a_argc, char** a_argv, tOptions& a_rOptions, std::string& a_rError);

// The help text, with the exit codes.
void printUsage(std::FILE* a_pFile);

} // namespace nZmHost
