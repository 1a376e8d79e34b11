// Wake-ups per second of the engine's threads (dispatcher, timed events,
// network) with no traffic: a node that is stopped, and one that runs on its
// own as a lone master. Counted from outside, as the voluntary context
// switches of the process's threads in /proc, so no production code counts.
#include "orvptp/tPTPNode.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <dirent.h>
#include <fstream>
#include <mutex>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

using namespace nOrvPTP000;

namespace
{

// Sends nowhere and blocks in receive until cancelled, like a quiet network.
class tSilentMessaging : public iPTPPortMessaging
{
public:
    void open(tStatus&) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_cancelled = false;
    }
    void close(tStatus&) override {}
    void sendEventMessage(tProtocolDataUnit&, tStatus&) override {}
    void sendGeneralMessage(tProtocolDataUnit&, tStatus&) override {}
    void receiveMessage(tProtocolDataUnit&, tStatus& a_status) override
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_wake.wait(lock, [this] { return m_cancelled; });
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusCancelled);
    }
    void cancelReceive(tStatus&) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_cancelled = true;
        m_wake.notify_all();
    }
    tPortAddress getPortAddress() override { return tPortAddress(); }

private:
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_cancelled = false;
};

class tNoTimestamps : public iPTPTimestampGenerator
{
public:
    bool getReceiveTimestamp(tProtocolDataUnit&, tTimestamp&, tStatus&) override { return false; }
    bool getTransmitTimestamp(tProtocolDataUnit&, tTimestamp&, tStatus&) override { return false; }
};

class tFreeTimekeeper : public iPTPTimekeeper
{
public:
    void getTime(tTimestamp& a_rTime, tStatus&) override { a_rTime = tTimestamp(); }
    void stepTime(const tTimestamp&, tStatus&) override {}
    void addSample(const tTimestamp&, const tTimestamp&, tStatus&) override {}
    bool isPortStateHeld() override { return false; }
};

// Voluntary context switches of every thread of this process but the caller.
unsigned long long otherThreadSwitches()
{
    unsigned long long total = 0;
    const std::string self = std::to_string(syscall(SYS_gettid));
    DIR* pDir = opendir("/proc/self/task");
    for (dirent* pEntry = readdir(pDir); pEntry != nullptr; pEntry = readdir(pDir))
    {
        const std::string tid = pEntry->d_name;
        if (tid == "." || tid == ".." || tid == self)
        {
            continue;
        }
        std::ifstream status("/proc/self/task/" + tid + "/status");
        for (std::string line; std::getline(status, line);)
        {
            if (line.rfind("voluntary_ctxt_switches:", 0) == 0)
            {
                total += std::stoull(line.substr(line.find(':') + 1));
            }
        }
    }
    closedir(pDir);
    return total;
}

double wakeupsPerSecond(int a_seconds)
{
    const unsigned long long before = otherThreadSwitches();
    std::this_thread::sleep_for(std::chrono::seconds(a_seconds));
    return static_cast<double>(otherThreadSwitches() - before) / a_seconds;
}

} // namespace

int main(int a_argc, char** a_argv)
{
    const int seconds = a_argc > 1 ? std::atoi(a_argv[1]) : 20;
    tSilentMessaging messaging;
    tNoTimestamps timestamps;
    tFreeTimekeeper timekeeper;
    tStatus status;
    const u8 bytes[8] = {0, 0x1B, 0x21, 0xFF, 0xFE, 0, 0, 1};
    tPTPNode node(&messaging, &timestamps, &timekeeper, tClockIdentity(bytes), status);

    std::printf("%-44s %12s\n", "engine state (no traffic received)", "wakeups/s");
    std::printf("%-44s %12.2f\n", "stopped", wakeupsPerSecond(seconds));
    node.startClock(status);
    // A lone clock: LISTENING, then MASTER after the announce receipt time-out.
    std::this_thread::sleep_for(std::chrono::seconds(8));
    std::printf("%-44s %12.2f\n", "running, lone master (sync 1/s, announce 1/2s)",
                wakeupsPerSecond(seconds));
    node.stopClock(status);
    return status.isFatal() ? 1 : 0;
}
