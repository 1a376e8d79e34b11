// zmhost: the host engine's stand-in on Linux. It loads libzm_ptp.so as the
// host engine loads it, runs its PTP time source on a software clock, and
// prints what the host sees of it. See printUsage for the command line.
#include "tCommandLine.h"
#include "tExitCodes.h"
#include "tHostEngine.h"
#include "tInterfaceSetting.h"
#include "tPluginLibrary.h"
#include "tStaticAttributes.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

using namespace nZmHost;

namespace
{

void printVersion()
{
    std::printf("zmhost %s\n", ZMHOST_VERSION);
    tPluginLibrary library;
    std::string error;
    if (library.load(nullptr, error))
    {
        std::printf("library %s\n", library.getPath().c_str());
    }
    else
    {
        std::printf("library not found: %s\n", error.c_str());
    }
}

// Our lines keep the standard output; the library's trace, which writes to
// the process's standard output, goes to the standard error from now on.
std::FILE* takeStandardOutput()
{
    std::fflush(stdout);
    const int lines = dup(STDOUT_FILENO);
    std::FILE* const pLines = lines >= 0 ? fdopen(lines, "w") : nullptr;
    if (pLines != nullptr)
    {
        dup2(STDERR_FILENO, STDOUT_FILENO);
    }
    return pLines;
}

// The signals that end the run (and SIGUSR1, which asks for the resources),
// blocked before the library makes any thread, so that only the host's
// thread takes them.
sigset_t blockSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGUSR1})
    {
        sigaddset(&signals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

int fail(tExitCode a_code, const std::string& a_message)
{
    std::fprintf(stderr, "zmhost: %s\n", a_message.c_str());
    return a_code;
}

} // namespace

int main(int a_argc, char** a_argv)
{
    tOptions options;
    std::string error;
    switch (parseCommandLine(a_argc, a_argv, options, error))
    {
    case tCommand::kHelp:
        printUsage(stdout);
        return kExitStopped;
    case tCommand::kVersion:
        printVersion();
        return kExitStopped;
    case tCommand::kUsageError:
        return fail(kExitUsage, error + " (zmhost --help tells the options)");
    case tCommand::kRun:
        break;
    }
    using zelmarPluginCore_1_0::tStaticAttributes;
    if (!options.m_root.empty())
    {
        setenv(tStaticAttributes::kRootVariable, options.m_root.c_str(), 1);
    }
    const char* const pRoot = std::getenv(tStaticAttributes::kRootVariable);
    const std::string root =
        pRoot != nullptr && *pRoot != '\0' ? pRoot : tStaticAttributes::kDefaultRoot;

    std::FILE* pCsv = nullptr;
    if (!options.m_csvPath.empty() &&
        (pCsv = std::fopen(options.m_csvPath.c_str(), "w")) == nullptr)
    {
        return fail(kExitUsage, "cannot write " + options.m_csvPath + ": " + std::strerror(errno));
    }
    const sigset_t signals = blockSignals();
    std::FILE* const pLines = takeStandardOutput();
    if (pLines == nullptr)
    {
        return fail(kExitFailure, std::string("no standard output: ") + std::strerror(errno));
    }
    tOutput output(pLines, options.m_json, pCsv);

    tPluginLibrary library;
    if (!library.load(options.m_library.empty() ? nullptr : options.m_library.c_str(), error))
    {
        return fail(kExitNoLibrary, "cannot load " + error);
    }
    tFields start = {{"version", "", 0, std::string(ZMHOST_VERSION)},
                     {"library", "", 0, library.getPath()},
                     {"root", "", 0, root}};
    if (!options.m_interface.empty())
    {
        tInterfaceSetting setting;
        if (!setting.find(options.m_interface))
        {
            return fail(kExitNoInterface, "no network device is named " + options.m_interface);
        }
        bool written = false;
        std::string filePath;
        if (!setting.record(written, filePath, error))
        {
            return fail(kExitFailure, error);
        }
        start.push_back({"interface", "", 0, options.m_interface});
        if (written)
        {
            start.push_back({"written", "", 0, filePath});
        }
    }
    output.event(0.0, "start", start);
    const tExitCode code = tHostEngine(options, library, output).run(signals);
    if (pCsv != nullptr)
    {
        std::fclose(pCsv);
    }
    std::fclose(pLines);
    return code;
}
