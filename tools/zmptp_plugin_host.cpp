// zmptp_plugin_host: the time source "ptp" run as the host engine runs it, for
// the namespace tests and the benchmark. It makes the source with the PTP
// plug-in (settings from the source's file under $ZM_PTP_ROOT), and attaches
// a software time reference on the raw monotonic clock each time the source
// comes online. The reference starts --offset-ns away from the system's UTC
// time; the servo steers it from then on.
//
// Output on stdout, one line each, "<ms since start> <event>":
//   online [code <n>] | offline [code <n>]   each trigger, with a latched code
//   state <NAME>                             each port state the host sees
//   synchronized | unsynchronized            each change of the servo's flag
//   error <ns>                               each second while attached: the
//                                            reference minus the system's UTC
// Commands on stdin, or on the file --commands names (a FIFO, say), one a line;
// their end ends the program:
//   resources      "resources threads=<n> fds=<n> heap=<bytes> rss=<kB>"
//   show           "show priority1=<n> online=<0|1> attached=<0|1>"
//   mark           "mark", to time what follows from it
//   poll <ms>      looks at the port state and the flag every <ms> (10 at
//                  the start): each look is a round trip to the clock's thread

#include "orvptp/tPortStateCodes.h"
#include "orvtarn/protons/status/tAllocation.h"
#include "tMonotonicRawTickSource.h"
#include "tSoftwareTimeReference.h"
#include "tZelmarController.h"
#include "tZelmarPtpPluginFactory.h"
#include "tZelmarSource.h"

#include <atomic>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <malloc.h>
#include <mutex>
#include <poll.h>
#include <string>
#include <unistd.h>

using nOrvTarn000::tStatus;
using nZelmarPtpPlugin_1_0::tZelmarPtpPlugin;
using zelmarPluginCore_1_0::iZelmarController;
using zelmarPluginCore_1_0::tZelmarSource;

namespace
{

const int kDefaultPollMs = 10;
const i64 kErrorPeriodMs = 1000;
const i64 kNanosecondsPerMs = 1000000;

i64 readClock(clockid_t a_clock)
{
    timespec now{};
    clock_gettime(a_clock, &now);
    return static_cast<i64>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

const i64 g_startNs = readClock(CLOCK_MONOTONIC);
std::mutex g_outputMutex;

// One line, with the time since the start, from any thread.
void emit(const char* a_pFormat, ...) __attribute__((format(printf, 1, 2)));
void emit(const char* a_pFormat, ...)
{
    std::lock_guard<std::mutex> lock(g_outputMutex);
    std::printf("%" PRId64 " ", (readClock(CLOCK_MONOTONIC) - g_startNs) / kNanosecondsPerMs);
    va_list arguments;
    va_start(arguments, a_pFormat);
    std::vprintf(a_pFormat, arguments);
    va_end(arguments);
    std::printf("\n");
    std::fflush(stdout);
}

const char* stateName(u8 a_state)
{
    static const char* const kNames[] = {"STOPPED",      "INITIALIZING", "FAULTY", "DISABLED",
                                         "LISTENING",    "PRE_MASTER",   "MASTER", "PASSIVE",
                                         "UNCALIBRATED", "SLAVE"};
    return a_state < sizeof(kNames) / sizeof(kNames[0]) ? kNames[a_state] : "UNKNOWN";
}

u32 countEntries(const char* a_pDirectory)
{
    u32 count = 0;
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

// What the process holds: threads, descriptors (without the one that counts
// them), heap bytes in use (all of them with one malloc arena) and RSS.
void emitResources()
{
    const u32 threads = countEntries("/proc/self/task");
    const u32 descriptors = countEntries("/proc/self/fd") - 1;
    long pages = 0;
    if (FILE* pStatm = std::fopen("/proc/self/statm", "r"))
    {
        if (std::fscanf(pStatm, "%*d %ld", &pages) != 1)
        {
            pages = 0;
        }
        std::fclose(pStatm);
    }
    const struct mallinfo2 heap = mallinfo2();
    emit("resources threads=%u fds=%u heap=%zu rss=%ld", threads, descriptors, heap.uordblks,
         pages * (sysconf(_SC_PAGESIZE) / 1024));
}

// The host: told on the deferred-action thread, it notes what changed and
// leaves the work to its own thread.
class tHost : public nZelmar::iTimeSourceObserver
{
public:
    void timeSourceChanged(nZelmar::iTimeSource& a_rSource) override
    {
        const bool online = a_rSource.isOnline();
        tStatus codeStatus;
        const u32 code =
            static_cast<tZelmarSource&>(a_rSource).getController()->takeErrorCode(codeStatus);
        if (code != 0)
        {
            emit("%s code %u", online ? "online" : "offline", static_cast<unsigned>(code));
        }
        else
        {
            emit("%s", online ? "online" : "offline");
        }
        m_attachDue = online;
    }
    // True once after each time the source came online.
    bool takeAttachDue() { return m_attachDue.exchange(false); }

private:
    std::atomic<bool> m_attachDue{false};
};

class tHostProgram
{
public:
    tHostProgram(i64 a_offsetNs, tStatus& a_status)
        : m_ticks(a_status), m_reference(m_ticks, a_offsetNs, a_status),
          m_source(m_factory, a_status), m_pHost(std::make_shared<tHost>())
    {
        m_source.setObserver(m_pHost);
    }
    ~tHostProgram() { m_source.detachTimeReference(); }

    // Serves the commands on a_input until they end.
    void run(int a_input)
    {
        // The source may have come online before the host was there.
        bool attachDue = m_source.isOnline();
        std::string line;
        for (;;)
        {
            if (m_pHost->takeAttachDue() || attachDue)
            {
                m_source.attachTimeReference(&m_reference);
                attachDue = false;
            }
            watch();
            pollfd input{a_input, POLLIN, 0};
            if (poll(&input, 1, m_pollMs) > 0)
            {
                char buffer[256];
                const ssize_t length = read(a_input, buffer, sizeof(buffer));
                if (length <= 0)
                {
                    return;
                }
                line.append(buffer, static_cast<size_t>(length));
                for (size_t end = line.find('\n'); end != std::string::npos; end = line.find('\n'))
                {
                    command(line.substr(0, end));
                    line.erase(0, end + 1);
                }
            }
        }
    }

private:
    // Calls a_use with the plug-in under the source's mutex; false offline.
    template <typename tUse>
    bool withPlugin(tUse a_use)
    {
        tStatus status;
        iZelmarController& controller = *m_source.getController();
        auto* pPlugin = static_cast<tZelmarPtpPlugin*>(controller.acquirePlugin(status));
        if (pPlugin == nullptr)
        {
            return false;
        }
        a_use(*pPlugin);
        controller.releasePlugin();
        return true;
    }

    // Reports what changed since the last look.
    void watch()
    {
        u8 state = nOrvPTP000::kPortStateStopped;
        withPlugin([&](tZelmarPtpPlugin& a_rPlugin)
                   { state = a_rPlugin.getPtpClock()->getPortState(); });
        if (state != m_state)
        {
            m_state = state;
            emit("state %s", stateName(state));
        }
        tStatus status;
        const bool synchronized = m_source.getController()->isSynchronized(status);
        if (synchronized != m_synchronized)
        {
            m_synchronized = synchronized;
            emit("%s", synchronized ? "synchronized" : "unsynchronized");
        }
        const i64 now = readClock(CLOCK_MONOTONIC);
        if (m_source.isAttached() && now - m_lastErrorNs >= kErrorPeriodMs * kNanosecondsPerMs)
        {
            m_lastErrorNs = now;
            emit("error %" PRId64, readReferenceError());
        }
    }

    // The reference's time minus the system's UTC time, read on both sides.
    i64 readReferenceError()
    {
        const i64 before = readClock(CLOCK_REALTIME);
        u64 reference = 0;
        m_reference.getReferenceTime(reference);
        const i64 after = readClock(CLOCK_REALTIME);
        const i64 epochOffsetNs =
            static_cast<i64>(nZelmar::kReferenceEpochToUnixEpochSeconds) * 1000000000;
        return static_cast<i64>(reference) - epochOffsetNs - (before + (after - before) / 2);
    }

    void command(const std::string& a_line)
    {
        int pollMs = 0;
        if (a_line == "resources")
        {
            emitResources();
        }
        else if (std::sscanf(a_line.c_str(), "poll %d", &pollMs) == 1 && pollMs > 0)
        {
            m_pollMs = pollMs;
            emit("poll %d", pollMs);
        }
        else if (a_line == "mark")
        {
            emit("mark");
        }
        else if (a_line == "show")
        {
            unsigned value = 0;
            withPlugin([&](tZelmarPtpPlugin& a_rPlugin)
                       { value = a_rPlugin.getPtpClock()->getPriority1(); });
            emit("show priority1=%u online=%d attached=%d", value, m_source.isOnline() ? 1 : 0,
                 m_source.isAttached() ? 1 : 0);
        }
        else
        {
            emit("unknown command: %s", a_line.c_str());
        }
    }

    nZelmarPtpPlugin_1_0::tZelmarPtpPluginFactory m_factory;
    nZelmar::tMonotonicRawTickSource m_ticks;
    nZelmar::tSoftwareTimeReference m_reference;
    tZelmarSource m_source;
    std::shared_ptr<tHost> m_pHost;
    int m_pollMs = kDefaultPollMs;
    u8 m_state = nOrvPTP000::kPortStateStopped;
    bool m_synchronized = false;
    i64 m_lastErrorNs = 0;
};

} // namespace

int main(int a_argc, char** a_argv)
{
    i64 offsetNs = 0;
    int input = STDIN_FILENO;
    for (int i = 1; i < a_argc; i += 2)
    {
        if (i + 1 < a_argc && std::strcmp(a_argv[i], "--offset-ns") == 0)
        {
            offsetNs = std::strtoll(a_argv[i + 1], nullptr, 10);
        }
        else if (i + 1 < a_argc && std::strcmp(a_argv[i], "--commands") == 0)
        {
            input = open(a_argv[i + 1], O_RDONLY | O_CLOEXEC);
        }
        else
        {
            std::fprintf(stderr, "usage: zmptp_plugin_host [--offset-ns N] [--commands PATH]\n");
            return 2;
        }
    }
    if (input < 0)
    {
        std::perror("zmptp_plugin_host: --commands");
        return 1;
    }
    tStatus status;
    {
        tHostProgram program(offsetNs, status);
        if (status.isFatal())
        {
            std::fprintf(stderr, "the source could not be made: %d\n",
                         static_cast<int>(status.getCode()));
            return 1;
        }
        program.run(input);
    }
    emitResources();
    return 0;
}
