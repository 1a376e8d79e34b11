// Timer lateness and idle cost of the timed event generator.
//
// 1. Lateness: 100 (and, for comparison, 10) periodic timers with periods from 10 to 100 ms run for
// a
//    few seconds on a running dispatcher. A timer is re-armed from the moment
//    it fires, so the time an expiry is due is the previous firing plus the
//    period (for the first, the arming plus the delay). Lateness is the time
//    past that, taken when generateEvent is called on the timer thread and
//    when the event executes on the dispatcher thread.
// 2. Idle wake-ups: the timer thread with an empty list, as when the clock is
//    stopped. Counted from outside, as the thread's voluntary context switches
//    in /proc.
//
// Usage: timer_bench [lateness seconds, default 5] [idle seconds, default 21]
#include "orvptp/tTimedEventGenerator.h"
#include "orvtarn/protons/status/tAllocation.h"

#include <dirent.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
#include <string>
#include <thread>
#include <vector>

using namespace nOrvPTP000;
using nOrvTarn000::tEvent;

namespace
{

typedef std::chrono::steady_clock tClock;

i64 nowNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(tClock::now().time_since_epoch())
        .count();
}

// Each vector is written by one thread only and read after both have stopped.
struct tSamples
{
    std::vector<i64> m_atGenerate; // timer thread
    std::vector<i64> m_atExecute;  // dispatcher thread
};

class tLatenessEvent : public iPTPEvent
{
public:
    tLatenessEvent(tSamples& a_rSamples, i64 a_dueNs) : m_rSamples(a_rSamples), m_dueNs(a_dueNs) {}
    void execute(tStatus&) override { m_rSamples.m_atExecute.push_back(nowNs() - m_dueNs); }

private:
    tSamples& m_rSamples;
    i64 m_dueNs;
};

class tLatenessGenerator : public iPTPEventGenerator
{
public:
    tLatenessGenerator(tSamples& a_rSamples, u32 a_periodMs)
        : m_rSamples(a_rSamples), m_periodNs(i64(a_periodMs) * 1000000),
          m_dueNs(nowNs() + m_periodNs)
    {
    }
    std::unique_ptr<iPTPEvent> generateEvent(tStatus& a_status) override
    {
        const i64 now = nowNs();
        m_rSamples.m_atGenerate.push_back(now - m_dueNs);
        std::unique_ptr<iPTPEvent> pEvent =
            nOrvTarn000::makeOwned<tLatenessEvent>(a_status, m_rSamples, m_dueNs);
        m_dueNs = now + m_periodNs;
        return pEvent;
    }

private:
    tSamples& m_rSamples;
    i64 m_periodNs;
    i64 m_dueNs;
};

class tSignalEvent : public iPTPEvent
{
public:
    tSignalEvent(tEvent& a_rDone, bool a_start) : m_rDone(a_rDone), m_start(a_start) {}
    bool allowedWhenStopped() override { return m_start; }
    i32 getEventKind() override { return m_start ? kStartEvent : kOtherEvent; }
    void execute(tStatus&) override { m_rDone.signal(); }

private:
    tEvent& m_rDone;
    bool m_start;
};

std::set<std::string> threadIds()
{
    std::set<std::string> ids;
    DIR* pDir = opendir("/proc/self/task");
    if (pDir == nullptr)
    {
        return ids;
    }
    while (dirent* pEntry = readdir(pDir))
    {
        if (pEntry->d_name[0] != '.')
        {
            ids.insert(pEntry->d_name);
        }
    }
    closedir(pDir);
    return ids;
}

// The one thread that appeared since a_before, or "" if not exactly one.
std::string newThread(const std::set<std::string>& a_before)
{
    std::string found;
    for (const std::string& id : threadIds())
    {
        if (a_before.count(id) == 0)
        {
            if (!found.empty())
            {
                return "";
            }
            found = id;
        }
    }
    return found;
}

long voluntarySwitches(const std::string& a_tid)
{
    std::ifstream status("/proc/self/task/" + a_tid + "/status");
    std::string line;
    const std::string key = "voluntary_ctxt_switches:";
    while (std::getline(status, line))
    {
        if (line.compare(0, key.size(), key) == 0)
        {
            return std::atol(line.c_str() + key.size());
        }
    }
    return -1;
}

double percentileUs(std::vector<i64> a_values, double a_fraction)
{
    if (a_values.empty())
    {
        return 0;
    }
    std::sort(a_values.begin(), a_values.end());
    const size_t index = static_cast<size_t>(a_fraction * double(a_values.size() - 1) + 0.5);
    return double(a_values[index]) / 1000.0;
}

void printRow(const char* a_pWhere, const std::vector<i64>& a_rValues)
{
    std::printf("| %-22s | %8zu | %9.1f | %9.1f | %9.1f |\n", a_pWhere, a_rValues.size(),
                percentileUs(a_rValues, 0.50), percentileUs(a_rValues, 0.99),
                percentileUs(a_rValues, 1.0));
}

void postAndWait(tPTPDispatcher& a_rDispatcher, bool a_start, tStatus& a_status)
{
    tEvent done(a_status);
    a_rDispatcher.postEventAndWait(nOrvTarn000::makeOwned<tSignalEvent>(a_status, done, a_start),
                                   &done, a_status);
}

bool measureLateness(int a_timers, double a_seconds)
{
    tStatus status;
    tPTPDispatcher dispatcher(status);
    postAndWait(dispatcher, true, status);
    tSamples samples;
    samples.m_atGenerate.reserve(100000);
    samples.m_atExecute.reserve(100000);

    const std::set<std::string> before = threadIds();
    tTimedEventGenerator timers(&dispatcher, status);
    const std::string tid = newThread(before);
    const long switchesBefore = voluntarySwitches(tid);
    for (int i = 0; i < a_timers; ++i)
    {
        // Spread evenly over 10 .. 100 ms, arming order shuffled.
        const u32 periodMs = 10 + static_cast<u32>(i * 37 % a_timers * 90 / (a_timers - 1));
        timers.add(nOrvTarn000::makeOwned<tLatenessGenerator>(status, samples, periodMs), periodMs,
                   periodMs, status);
    }
    std::this_thread::sleep_for(std::chrono::duration<double>(a_seconds));
    timers.clear(status);
    const long switches = voluntarySwitches(tid) - switchesBefore;
    postAndWait(dispatcher, false, status); // every posted expiry has run
    if (status.isFatal())
    {
        std::printf("lateness run failed: %d\n", status.getCode());
        return false;
    }

    std::printf("\nTimer lateness: %d periodic timers, periods 10-100 ms, %.1f s\n", a_timers,
                a_seconds);
    std::printf("| %-22s | %8s | %9s | %9s | %9s |\n", "measured at", "expiries", "p50 us",
                "p99 us", "max us");
    std::printf("|------------------------|----------|-----------|-----------|-----------|\n");
    printRow("generateEvent (timer)", samples.m_atGenerate);
    printRow("execute (dispatcher)", samples.m_atExecute);
    std::printf("timer thread: %.0f expiries/s, %.0f voluntary context switches/s\n",
                double(samples.m_atGenerate.size()) / a_seconds, double(switches) / a_seconds);
    return true;
}

bool measureIdle(double a_seconds)
{
    tStatus status;
    tPTPDispatcher dispatcher(status);
    const std::set<std::string> before = threadIds();
    tTimedEventGenerator timers(&dispatcher, status);
    const std::string tid = newThread(before);
    if (status.isFatal() || tid.empty())
    {
        std::printf("idle run failed: %d\n", status.getCode());
        return false;
    }
    // Arm and clear once, as stopping the clock does.
    tSamples unused;
    timers.addOneShot(nOrvTarn000::makeOwned<tLatenessGenerator>(status, unused, 1000u), 1000,
                      status);
    timers.clear(status);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const long start = voluntarySwitches(tid);
    std::this_thread::sleep_for(std::chrono::duration<double>(a_seconds));
    const long switches = voluntarySwitches(tid) - start;

    std::printf("\nIdle timer thread (empty list, clock stopped), %.1f s\n", a_seconds);
    std::printf("| %-22s | %9s | %12s |\n", "thread", "switches", "wake-ups/s");
    std::printf("|------------------------|-----------|--------------|\n");
    std::printf("| %-22s | %9ld | %12.3f |\n", "timer thread", switches,
                double(switches) / a_seconds);
    return true;
}

} // namespace

int main(int a_argc, char** a_argv)
{
    const double latenessSeconds = a_argc > 1 ? std::atof(a_argv[1]) : 5.0;
    const double idleSeconds = a_argc > 2 ? std::atof(a_argv[2]) : 21.0;
    // 10 timers for comparison: a late expiry delays every timer behind it.
    const bool ok = measureLateness(100, latenessSeconds) && measureLateness(10, latenessSeconds) &&
                    measureIdle(idleSeconds);
    return ok ? 0 : 1;
}
