#include "tHostEngine.h"

#include "tHostClock.h"
#include "tResources.h"
#include "tRunSummary.h"
#include "tSourceReader.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

namespace nZmHost
{
namespace
{

const i64 kWatchPeriodMs = 100;
const i64 kStatusPeriodMs = 1000;

i64 nowMs()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// A descriptor, closed with its scope.
class tDescriptor
{
public:
    explicit tDescriptor(int a_fd) : m_fd(a_fd) {}
    ~tDescriptor()
    {
        if (m_fd >= 0)
        {
            close(m_fd);
        }
    }
    tDescriptor(const tDescriptor&) = delete;
    tDescriptor& operator=(const tDescriptor&) = delete;
    int get() const { return m_fd; }

private:
    int m_fd;
};

// Told on the source's thread, inside its change: notes what the host saw
// and wakes the host's thread, which acts on it.
class tSourceObserver : public nZelmar::iTimeSourceObserver
{
public:
    explicit tSourceObserver(int a_wakeFd) : m_wakeFd(a_wakeFd) {}

    void timeSourceChanged(nZelmar::iTimeSource& a_rSource) override { note(a_rSource.isOnline()); }
    void note(bool a_online)
    {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_changes.push_back(a_online);
        }
        const u64 one = 1;
        // A full counter already wakes the host.
        (void)!write(m_wakeFd, &one, sizeof(one));
    }
    // The online flags seen since the last take, oldest first.
    std::vector<bool> take()
    {
        u64 count = 0;
        (void)!read(m_wakeFd, &count, sizeof(count));
        std::lock_guard<std::mutex> lock(m_mutex);
        return std::exchange(m_changes, {});
    }

private:
    int m_wakeFd;
    std::mutex m_mutex;
    std::vector<bool> m_changes;
};

// The run of one source, on the host's thread.
class tRun
{
public:
    tRun(const tOptions& a_rOptions, tPluginLibrary& a_rLibrary, tOutput& a_rOutput,
         nZelmar::iTimeSource& a_rSource, tHostClock& a_rClock)
        : m_rOptions(a_rOptions), m_rOutput(a_rOutput), m_rSource(a_rSource), m_rClock(a_rClock),
          m_reader(a_rLibrary), m_startMs(nowMs()), m_nextWatchMs(m_startMs),
          m_nextStatusMs(m_startMs + kStatusPeriodMs)
    {
    }

    f64 seconds() const { return static_cast<f64>(nowMs() - m_startMs) / 1000.0; }

    // Attaches when the source came online, tells each change.
    void follow(const std::vector<bool>& a_changes)
    {
        for (const bool online : a_changes)
        {
            if (online == m_online)
            {
                continue;
            }
            m_online = online;
            if (!online)
            {
                m_rOutput.event(seconds(), "offline", {});
                continue;
            }
            m_everOnline = true;
            m_rSource.attachTimeReference(&m_rClock.getReference());
            tStatusRecord record;
            m_reader.readRest(record, m_rClock);
            // The code that the attempts before this one latched, if any.
            const u32 errorCode = m_reader.takeErrorCode().value_or(0);
            const tFields fields = {
                {"clock", "", 0, record.m_clock.has_value() ? tValue(*record.m_clock) : tValue()},
                {"error_code", "", 0,
                 errorCode != 0 ? tValue(static_cast<i64>(errorCode)) : tValue()}};
            m_rOutput.event(seconds(), "online", fields);
        }
    }

    // Looks at the source when it is time; the wait in ms until the next look.
    int watch()
    {
        const i64 now = nowMs();
        if (now >= m_nextWatchMs)
        {
            m_nextWatchMs = now + kWatchPeriodMs;
            const bool periodic = now >= m_nextStatusMs;
            while (m_nextStatusMs <= now)
            {
                m_nextStatusMs += kStatusPeriodMs;
            }
            tStatusRecord record;
            record.m_seconds = seconds();
            m_reader.readWatched(record);
            const bool changed = watchedDiffer(record, m_last);
            const int level = m_rOptions.m_level;
            const bool show = level >= tOptions::kLevelLooks ||
                              (periodic && level >= tOptions::kLevelSeconds) ||
                              (changed && level >= tOptions::kLevelChanges);
            // The CSV file and the summary have every full record.
            if (show || changed || periodic)
            {
                m_reader.readRest(record, m_rClock);
                m_summary.add(record);
                m_rOutput.record(record, show);
            }
            m_last = record;
        }
        return static_cast<int>(m_nextWatchMs - now);
    }

    bool isOverDuration() const
    {
        return m_rOptions.m_durationSeconds > 0.0 && seconds() >= m_rOptions.m_durationSeconds;
    }
    bool isStartOverdue() const
    {
        return !m_everOnline && m_rOptions.m_startTimeoutSeconds > 0.0 &&
               seconds() >= m_rOptions.m_startTimeoutSeconds;
    }
    void finish(const std::string& a_reason)
    {
        const f64 now = seconds();
        m_rOutput.event(now, "stop", {{"reason", "", 0, a_reason}});
        m_rOutput.event(now, "summary", m_summary.fields(now));
    }

private:
    const tOptions& m_rOptions;
    tOutput& m_rOutput;
    nZelmar::iTimeSource& m_rSource;
    tHostClock& m_rClock;
    tSourceReader m_reader;
    tRunSummary m_summary;
    tStatusRecord m_last;
    i64 m_startMs;
    i64 m_nextWatchMs;
    i64 m_nextStatusMs;
    bool m_online = false;
    bool m_everOnline = false;
};

void reportSystemFailure(const char* a_pWhat)
{
    std::fprintf(stderr, "zmhost: %s: %s\n", a_pWhat, std::strerror(errno));
}

} // namespace

tExitCode tHostEngine::run(const sigset_t& a_signals)
{
    nOrvTarn000::tStatus clockStatus;
    tHostClock clock(m_rOptions.m_clockOffsetNs, m_rOptions.m_clockPpm, clockStatus);
    if (clockStatus.isFatal())
    {
        std::fprintf(stderr, "zmhost: the system's clocks cannot be read\n");
        return kExitFailure;
    }
    const tDescriptor signals(signalfd(-1, &a_signals, SFD_CLOEXEC));
    const tDescriptor wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (signals.get() < 0 || wake.get() < 0)
    {
        reportSystemFailure(signals.get() < 0 ? "signalfd" : "eventfd");
        return kExitFailure;
    }
    if (m_rLibrary.zm_ptp_openSession() != 0)
    {
        std::fprintf(stderr, "zmhost: the library refused to open a session\n");
        return kExitRefused;
    }
    std::shared_ptr<nZelmar::iTimeSource> pSource = m_rLibrary.zm_ptp_getTimeSource();
    if (pSource == nullptr)
    {
        m_rLibrary.zm_ptp_closeSession();
        std::fprintf(stderr, "zmhost: the library made no time source\n");
        return kExitRefused;
    }
    const auto pObserver = std::make_shared<tSourceObserver>(wake.get());
    pSource->setObserver(pObserver);
    // It may have come online before there was an observer; a second note
    // of the same state is ignored.
    if (pSource->isOnline())
    {
        pObserver->note(true);
    }

    tExitCode code = kExitStopped;
    {
        tRun run(m_rOptions, m_rLibrary, m_rOutput, *pSource, clock);
        std::string reason = "duration";
        for (;;)
        {
            pollfd ready[] = {{signals.get(), POLLIN, 0}, {wake.get(), POLLIN, 0}};
            const int waitMs = run.watch();
            if (poll(ready, 2, waitMs) < 0 && errno != EINTR)
            {
                reportSystemFailure("poll");
                code = kExitFailure;
                reason = "failure";
                break;
            }
            if ((ready[0].revents & POLLIN) != 0)
            {
                signalfd_siginfo signal{};
                if (read(signals.get(), &signal, sizeof(signal)) == sizeof(signal))
                {
                    if (signal.ssi_signo == SIGUSR1)
                    {
                        m_rOutput.event(run.seconds(), "resources", readResources());
                        continue;
                    }
                    reason = std::string("SIG") + sigabbrev_np(static_cast<int>(signal.ssi_signo));
                    break;
                }
            }
            if ((ready[1].revents & POLLIN) != 0)
            {
                run.follow(pObserver->take());
            }
            if (run.isOverDuration())
            {
                break;
            }
            if (run.isStartOverdue())
            {
                std::fprintf(stderr,
                             "zmhost: the time source did not come online within %g s; the "
                             "library's messages above tell why (error code 257: no device has "
                             "the settings file's MAC address; 258: the device has no IPv4 "
                             "address)\n",
                             m_rOptions.m_startTimeoutSeconds);
                code = kExitRefused;
                reason = "start timeout";
                break;
            }
        }
        run.finish(reason);
    }
    pSource->detachTimeReference();
    pSource->setObserver(nullptr);
    pSource.reset();
    m_rLibrary.zm_ptp_closeSession();
    return code;
}

} // namespace nZmHost
