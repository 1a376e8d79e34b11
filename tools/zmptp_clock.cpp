// zmptp_clock: one PTP ordinary clock on one network device, on the real
// network layer, for tests, benchmarks and demonstrations.
//
// By default the clock reads the system clock (CLOCK_REALTIME) and never
// steers it: a requested step and every measured sample are only recorded and
// printed. So two clocks on one machine measure, as offsetFromMaster, the
// error of the whole measurement path between them.
//
// With --steer the clock is a software time reference instead, started off
// the system clock by --clock-offset-ns and --clock-ppm, and steered by the
// plug-in core's timekeeper from the samples (tSteeredClock.h); all its
// timestamps are the reference's time. Since every clock on the machine
// shares the system clock, the reference's time minus the system clock's is
// its true error from the master.
//
// Output, one line each, flushed at once:
//   state <OLD> -> <NEW>                       every port state change
//   offset <ns> delay <ns>                     every measured Sync (as slave)
//   servo t=<s> error_ns=<ns> rate_ppm=<ppm> offset_ns=<ns> synchronized=<0|1>
//         samples=<n>                          every second, with --steer
//   summary samples=<n> median_abs_offset_ns=<ns> p95_abs_offset_ns=<ns>
//           mean_delay_ns=<ns> all_samples=<n>  at the end
//   servo_summary samples=<n> failed=<n> first_failure=<code>
//           synchronized_after_samples=<n> synchronized_after_s=<s>
//           within_10us_after_samples=<n> within_10us_after_s=<s>
//           median_abs_error_ns=<ns> p95_abs_error_ns=<ns> max_abs_error_ns=<ns>
//                                              at the end, with --steer
//   send_window samples=<n> p50_ns=<ns> p99_ns=<ns> max_ns=<ns>
//                                              at the end, when asked for
//   stamp_age receive_p50_ns=<ns> receive_p99_ns=<ns> transmit_p50_ns=<ns>
//             transmit_p99_ns=<ns>             at the end, when asked for
//   timestamps kernel_receive=<n> user_receive=<n> kernel_transmit=<n>
//              user_transmit=<n>               at the end
//   management_change property=<id>            every property that a management
//                                              message set (the property ids of
//                                              tNodeProperties.def)
// The summary covers the samples from the first one with a measured path
// delay on. With --clock-offset-ns the offsets include that offset (without
// --steer). The servo line gives the true error, the rate (how much faster
// than its counter the reference runs), the timekeeper's offset and its
// synchronized flag; its summary the sample (counted from the first) and the
// time from the start after which the flag, and |true error| < 10 us, held
// to the end ("-" if they did not), and |true error| over the second half of
// the samples.
//
// The clock announces the arbitrary timescale: its time is the system
// clock's, which counts UTC (as linuxptp's ptp4l does with software
// timestamps), or, steered, follows its master's.
//
// Settings are written each time the port enters INITIALIZING (a start, and
// every re-initialisation after a fault), because the clock then puts its
// data sets back to their initial values; the port leaves INITIALIZING and
// UNCALIBRATED only when this program says so (external checks).

#include "orvptp/iPTPTimekeeper.h"
#include "orvptp/iPTPTimestampGenerator.h"
#include "orvptp/iPortStateObserver.h"
#include "orvptp/iPropertyChangeObserver.h"
#include "orvptp/tNodeEvents.h"
#include "orvptp/tPTPNode.h"
#include "orvptp/tPortStateCodes.h"
#include "orvtarn/protons/status/tAllocation.h"
#include "tClientUdpNetworkInterface.h"
#include "tNetworkDevices.h"
#include "tSteeredClock.h"
#include "tTimestampGenerator.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cinttypes>
#include <cmath>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

using nOrvPTP000::iPTPEvent;
using nOrvPTP000::tClockIdentity;
using nOrvPTP000::tProtocolDataUnit;
using nOrvPTP000::tPTPNode;
using nOrvPTP000::tTimestamp;
using nOrvTarn000::tStatus;
using nZelmarPtpPlugin_1_0::tClientUdpNetworkInterface;
using nZelmarPtpPlugin_1_0::tNetworkDeviceConfig;
using nZelmarPtpPlugin_1_0::tTimestampGenerator;
using nZmptpTool::tSteeredClock;

namespace
{

const int kExitUsage = 2;
const int kExitFailure = 1;

struct tOptions
{
    std::string m_interface;
    std::string m_mac;
    std::string m_name;
    int m_priority1 = 128;
    int m_priority2 = 128;
    int m_clockClass = -1; // the clock's own default
    int m_domain = 0;
    bool m_slaveOnly = false;
    int m_logSyncInterval = 0;
    int m_logAnnounceInterval = 1;
    int m_logDelayReqInterval = 0;
    int m_announceReceiptTimeout = 3;
    int m_ttl = 1;
    bool m_automaticRecovery = false;
    bool m_reportSendWindow = false;
    bool m_quietOffsets = false;
    bool m_steer = false;
    double m_durationSeconds = 0.0;
    long long m_clockOffsetNs = 0;
    double m_clockPpm = 0.0;
    tClientUdpNetworkInterface::tTimestamping m_timestamping =
        tClientUdpNetworkInterface::kTimestampingAutomatic;
};

void printUsage(FILE* a_pFile)
{
    std::fprintf(a_pFile,
                 "usage: zmptp_clock (--interface NAME | --mac XX:XX:XX:XX:XX:XX) [options]\n"
                 "  --priority1 N                 0..255 (128)\n"
                 "  --priority2 N                 0..255 (128)\n"
                 "  --clock-class N               0..255 (the clock's default)\n"
                 "  --domain N                    0..255 (0)\n"
                 "  --slave-only                  never become master\n"
                 "  --log-sync-interval N         -7..7 (0)\n"
                 "  --log-announce-interval N     -3..7 (1)\n"
                 "  --log-delay-req-interval N    -7..7 (0)\n"
                 "  --announce-receipt-timeout N  2..255 (3)\n"
                 "  --ttl N                       multicast TTL, 1..255 (1)\n"
                 "  --automatic-recovery          reopen the network after a failure\n"
                 "  --duration SECONDS            run time; 0 runs until SIGINT or SIGTERM (0)\n"
                 "  --name TEXT                   prefix every output line with \"TEXT: \"\n"
                 "  --report-send-window          print the send window percentiles at the end\n"
                 "  --quiet-offsets               no line per Sync, only the summary\n"
                 "  --clock-offset-ns N           read the system clock plus N ns, as a clock\n"
                 "                                that is off by N would (0)\n"
                 "  --steer                       steer a software clock instead, started\n"
                 "                                --clock-offset-ns ahead of the system clock\n"
                 "  --clock-ppm P                 with --steer: the software clock runs P ppm\n"
                 "                                fast until steered, -1000..1000 (0)\n"
                 "  --timestamps kernel|user      event message times from the kernel's stamps\n"
                 "                                (open fails without them) or from readings\n"
                 "                                around the socket calls (the kernel's where\n"
                 "                                offered, readings otherwise)\n");
}

bool parseInteger(const char* a_pText, int a_min, int a_max, int& a_rValue)
{
    char* pEnd = nullptr;
    errno = 0;
    const long value = std::strtol(a_pText, &pEnd, 10);
    if (errno != 0 || pEnd == a_pText || *pEnd != '\0' || value < a_min || value > a_max)
    {
        return false;
    }
    a_rValue = static_cast<int>(value);
    return true;
}

bool parseMac(const char* a_pText, u8* a_pBytes)
{
    unsigned int parts[6];
    char tail = 0;
    if (std::sscanf(a_pText, "%2x:%2x:%2x:%2x:%2x:%2x%c", &parts[0], &parts[1], &parts[2],
                    &parts[3], &parts[4], &parts[5], &tail) != 6)
    {
        return false;
    }
    for (int i = 0; i < 6; ++i)
    {
        a_pBytes[i] = static_cast<u8>(parts[i]);
    }
    return true;
}

// Returns false, with a message on stderr, for anything it does not take.
bool parseOptions(int a_argc, char** a_argv, tOptions& a_rOptions)
{
    struct tIntegerOption
    {
        const char* m_pName;
        int* m_pValue;
        int m_min;
        int m_max;
    };
    const tIntegerOption integerOptions[] = {
        {"--priority1", &a_rOptions.m_priority1, 0, 255},
        {"--priority2", &a_rOptions.m_priority2, 0, 255},
        {"--clock-class", &a_rOptions.m_clockClass, 0, 255},
        {"--domain", &a_rOptions.m_domain, 0, 255},
        {"--log-sync-interval", &a_rOptions.m_logSyncInterval, -7, 7},
        {"--log-announce-interval", &a_rOptions.m_logAnnounceInterval, -3, 7},
        {"--log-delay-req-interval", &a_rOptions.m_logDelayReqInterval, -7, 7},
        {"--announce-receipt-timeout", &a_rOptions.m_announceReceiptTimeout, 2, 255},
        {"--ttl", &a_rOptions.m_ttl, 1, 255},
    };
    for (int i = 1; i < a_argc; ++i)
    {
        const std::string option = a_argv[i];
        const char* pValue = i + 1 < a_argc ? a_argv[i + 1] : nullptr;
        bool known = false;
        for (const tIntegerOption& integer : integerOptions)
        {
            if (option == integer.m_pName)
            {
                known = true;
                if (pValue == nullptr ||
                    !parseInteger(pValue, integer.m_min, integer.m_max, *integer.m_pValue))
                {
                    std::fprintf(stderr, "zmptp_clock: %s takes a number from %d to %d\n",
                                 integer.m_pName, integer.m_min, integer.m_max);
                    return false;
                }
                ++i;
            }
        }
        if (known)
        {
            continue;
        }
        if (option == "--slave-only")
        {
            a_rOptions.m_slaveOnly = true;
        }
        else if (option == "--automatic-recovery")
        {
            a_rOptions.m_automaticRecovery = true;
        }
        else if (option == "--report-send-window")
        {
            a_rOptions.m_reportSendWindow = true;
        }
        else if (option == "--quiet-offsets")
        {
            a_rOptions.m_quietOffsets = true;
        }
        else if (option == "--steer")
        {
            a_rOptions.m_steer = true;
        }
        else if (option == "--timestamps" && pValue != nullptr &&
                 (std::strcmp(pValue, "kernel") == 0 || std::strcmp(pValue, "user") == 0))
        {
            ++i;
            a_rOptions.m_timestamping = std::strcmp(pValue, "kernel") == 0
                                            ? tClientUdpNetworkInterface::kTimestampingKernel
                                            : tClientUdpNetworkInterface::kTimestampingUser;
        }
        else if ((option == "--interface" || option == "--mac" || option == "--name" ||
                  option == "--duration" || option == "--clock-offset-ns" ||
                  option == "--clock-ppm") &&
                 pValue != nullptr)
        {
            ++i;
            if (option == "--interface")
            {
                a_rOptions.m_interface = pValue;
            }
            else if (option == "--mac")
            {
                a_rOptions.m_mac = pValue;
            }
            else if (option == "--name")
            {
                a_rOptions.m_name = pValue;
            }
            else if (option == "--clock-offset-ns")
            {
                char* pEnd = nullptr;
                errno = 0;
                a_rOptions.m_clockOffsetNs = std::strtoll(pValue, &pEnd, 10);
                // Within a day either way: the clock must stay after the epoch.
                if (errno != 0 || pEnd == pValue || *pEnd != '\0' ||
                    std::llabs(a_rOptions.m_clockOffsetNs) > 86400000000000LL)
                {
                    std::fprintf(stderr, "zmptp_clock: --clock-offset-ns takes nanoseconds, "
                                         "at most a day either way\n");
                    return false;
                }
            }
            else if (option == "--clock-ppm")
            {
                char* pEnd = nullptr;
                a_rOptions.m_clockPpm = std::strtod(pValue, &pEnd);
                if (pEnd == pValue || *pEnd != '\0' ||
                    !(std::fabs(a_rOptions.m_clockPpm) <= 1000.0))
                {
                    std::fprintf(stderr, "zmptp_clock: --clock-ppm takes -1000 to 1000\n");
                    return false;
                }
            }
            else
            {
                char* pEnd = nullptr;
                a_rOptions.m_durationSeconds = std::strtod(pValue, &pEnd);
                if (pEnd == pValue || *pEnd != '\0' || !(a_rOptions.m_durationSeconds >= 0.0) ||
                    a_rOptions.m_durationSeconds > 1e7)
                {
                    std::fprintf(stderr, "zmptp_clock: --duration takes seconds, 0 or more\n");
                    return false;
                }
            }
        }
        else if (option == "--help" || option == "-h")
        {
            printUsage(stdout);
            std::exit(0);
        }
        else
        {
            std::fprintf(stderr, "zmptp_clock: unknown or incomplete option %s\n", option.c_str());
            return false;
        }
    }
    if (a_rOptions.m_interface.empty() == a_rOptions.m_mac.empty())
    {
        std::fprintf(stderr, "zmptp_clock: give exactly one of --interface and --mac\n");
        return false;
    }
    if (a_rOptions.m_clockPpm != 0.0 && !a_rOptions.m_steer)
    {
        std::fprintf(stderr, "zmptp_clock: --clock-ppm needs --steer\n");
        return false;
    }
    return true;
}

const char* stateName(i32 a_state)
{
    switch (a_state)
    {
    case nOrvPTP000::kPortStateStopped:
        return "STOPPED";
    case nOrvPTP000::kPortStateInitializing:
        return "INITIALIZING";
    case nOrvPTP000::kPortStateFaulty:
        return "FAULTY";
    case nOrvPTP000::kPortStateDisabled:
        return "DISABLED";
    case nOrvPTP000::kPortStateListening:
        return "LISTENING";
    case nOrvPTP000::kPortStateMaster:
        return "MASTER";
    case nOrvPTP000::kPortStatePassive:
        return "PASSIVE";
    case nOrvPTP000::kPortStateUncalibrated:
        return "UNCALIBRATED";
    case nOrvPTP000::kPortStateSlave:
        return "SLAVE";
    default:
        return "UNKNOWN";
    }
}

// Every output line goes through here: whole lines, with the name in front,
// flushed at once, from whichever thread.
class tOutput
{
public:
    explicit tOutput(const std::string& a_name) : m_prefix(a_name.empty() ? "" : a_name + ": ") {}

    void line(const char* a_pFormat, ...) __attribute__((format(printf, 2, 3)))
    {
        char text[512];
        va_list arguments;
        va_start(arguments, a_pFormat);
        std::vsnprintf(text, sizeof(text), a_pFormat, arguments);
        va_end(arguments);
        std::lock_guard<std::mutex> lock(m_mutex);
        std::fprintf(stdout, "%s%s\n", m_prefix.c_str(), text);
        std::fflush(stdout);
    }

private:
    std::string m_prefix;
    std::mutex m_mutex;
};

// Saturates: a peer may send any 48-bit seconds, or set our time to them.
i64 toNanoseconds(const tTimestamp& a_time)
{
    const i64 kMaxSeconds = std::numeric_limits<i64>::max() / 1000000000LL - 1;
    const i64 seconds = std::min(static_cast<i64>(a_time.getSeconds()), kMaxSeconds);
    return seconds * 1000000000LL + static_cast<i64>(a_time.getNanoseconds());
}

// The value at fraction a_fraction of the sorted values (nearest rank).
i64 percentile(std::vector<i64> a_values, double a_fraction)
{
    if (a_values.empty())
    {
        return 0;
    }
    std::sort(a_values.begin(), a_values.end());
    size_t rank = static_cast<size_t>(a_fraction * static_cast<double>(a_values.size()) + 0.999999);
    rank = std::min(std::max<size_t>(rank, 1), a_values.size());
    return a_values[rank - 1];
}

// The node's clock: the system clock, read and never steered, or, given one,
// the steered clock. Each thread keeps its last two readings, so that the
// send window probe can tell how far apart the two readings around a send
// were.
class tNodeTimekeeper : public nOrvPTP000::iPTPTimekeeper
{
public:
    tNodeTimekeeper(tOutput& a_rOutput, i64 a_offsetNs, tSteeredClock* a_pSteeredClock)
        : m_rOutput(a_rOutput), m_offsetNs(a_offsetNs), m_pSteeredClock(a_pSteeredClock),
          m_pNode(nullptr)
    {
    }

    // For the measured values that go with each sample; set before the start.
    void setNode(tPTPNode* a_pNode) { m_pNode = a_pNode; }
    void setQuiet(bool a_quiet) { m_quiet = a_quiet; }

    void getTime(tTimestamp& a_rTime, tStatus& a_status) override
    {
        if (a_status.isFatal())
        {
            return;
        }
        if (m_pSteeredClock != nullptr)
        {
            a_rTime = m_pSteeredClock->getTime(a_status);
            if (a_status.isFatal())
            {
                return;
            }
        }
        else
        {
            timespec now;
            if (::clock_gettime(CLOCK_REALTIME, &now) != 0)
            {
                ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusSystemError);
                return;
            }
            const i64 reading =
                static_cast<i64>(now.tv_sec) * 1000000000LL + now.tv_nsec + m_offsetNs;
            a_rTime = tTimestamp(static_cast<u64>(reading / 1000000000LL),
                                 static_cast<u32>(reading % 1000000000LL));
        }
        const i64 reading = toNanoseconds(a_rTime);
        s_previousReading = s_lastReading;
        s_lastReading = reading;
    }

    void stepTime(const tTimestamp& a_rTime, tStatus& a_status) override
    {
        if (m_pSteeredClock != nullptr)
        {
            m_pSteeredClock->stepTime(a_rTime, a_status);
        }
        else if (a_status.isNotFatal())
        {
            m_rOutput.line("step requested to %" PRIu64 ".%09u (not applied)", a_rTime.getSeconds(),
                           a_rTime.getNanoseconds());
        }
    }

    // Dispatcher thread: the node has just stored the offset and the delay
    // that belong to this pair.
    void addSample(const tTimestamp& a_rMasterTime, const tTimestamp& a_rLocalTime,
                   tStatus& a_status) override
    {
        if (a_status.isFatal())
        {
            return;
        }
        i64 offset = toNanoseconds(a_rLocalTime) - toNanoseconds(a_rMasterTime);
        i64 delay = 0;
        if (m_pNode != nullptr)
        {
            offset = m_pNode->getOffsetFromMaster().getNanoseconds();
            delay = m_pNode->getMeanPathDelay().getNanoseconds();
        }
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            ++m_allSamples;
            m_delayMeasured = m_delayMeasured || delay != 0;
            if (m_delayMeasured)
            {
                m_offsets.push_back(offset < 0 ? -offset : offset);
                m_delays.push_back(delay);
            }
        }
        if (!m_quiet)
        {
            m_rOutput.line("offset %" PRId64 " delay %" PRId64, offset, delay);
        }
        if (m_pSteeredClock != nullptr)
        {
            m_pSteeredClock->addSample(a_rMasterTime, a_rLocalTime, a_status);
        }
    }

    bool isPortStateHeld() override { return false; }

    // The two readings of the calling thread, the later one first.
    static void lastReadings(i64& a_rLast, i64& a_rPrevious)
    {
        a_rLast = s_lastReading;
        a_rPrevious = s_previousReading;
    }

    void printSummary()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        i64 delaySum = 0;
        for (i64 delay : m_delays)
        {
            delaySum += delay;
        }
        const i64 meanDelay = m_delays.empty() ? 0 : delaySum / static_cast<i64>(m_delays.size());
        m_rOutput.line("summary samples=%zu median_abs_offset_ns=%" PRId64
                       " p95_abs_offset_ns=%" PRId64 " mean_delay_ns=%" PRId64 " all_samples=%zu",
                       m_offsets.size(), percentile(m_offsets, 0.5), percentile(m_offsets, 0.95),
                       meanDelay, m_allSamples);
    }

private:
    static thread_local i64 s_lastReading;
    static thread_local i64 s_previousReading;

    tOutput& m_rOutput;
    const i64 m_offsetNs;
    tSteeredClock* const m_pSteeredClock;
    tPTPNode* m_pNode;
    bool m_quiet = false;
    // Set by the first sample with a measured path delay; the summary starts
    // there.
    bool m_delayMeasured = false;
    std::mutex m_mutex;
    size_t m_allSamples = 0;
    std::vector<i64> m_offsets;
    std::vector<i64> m_delays;
};

thread_local i64 tNodeTimekeeper::s_lastReading = 0;
thread_local i64 tNodeTimekeeper::s_previousReading = 0;

// Stands in front of the timestamp generator and measures the send window:
// the time between the two clock readings that the network layer takes
// around the socket call of an event message. The transmit time it records
// is the later reading plus half the window, and it records it right after
// the second reading, on the same thread; a window is counted only when the
// recorded time agrees with the thread's last two readings.
//
// It measures the stamps' age as well: how long after the time it records a
// stamp reaches the generator. With the kernel's stamps that is the time the
// datagram took from the wire to this thread (the wake-up of the receiving
// thread, the rest of the send call), which readings in user space would have
// added to the measurement.
class tSendWindowProbe : public nOrvPTP000::iPTPTimestampGenerator
{
public:
    tSendWindowProbe(tTimestampGenerator& a_rGenerator, nOrvPTP000::iPTPTimekeeper& a_rClock)
        : m_rGenerator(a_rGenerator), m_rClock(a_rClock)
    {
    }

    bool getReceiveTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime,
                             tStatus& a_status) override
    {
        return m_rGenerator.getReceiveTimestamp(a_rPdu, a_rTime, a_status);
    }
    bool getTransmitTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime,
                              tStatus& a_status) override
    {
        return m_rGenerator.getTransmitTimestamp(a_rPdu, a_rTime, a_status);
    }
    void recordReceiveTimestamp(tProtocolDataUnit& a_rPdu, const tTimestamp& a_rTime,
                                tStatus& a_status) override
    {
        addAge(m_receiveAges, a_rTime);
        m_rGenerator.recordReceiveTimestamp(a_rPdu, a_rTime, a_status);
    }
    void recordTransmitTimestamp(tProtocolDataUnit& a_rPdu, const tTimestamp& a_rTime,
                                 tStatus& a_status) override
    {
        i64 after = 0;
        i64 before = 0;
        tNodeTimekeeper::lastReadings(after, before);
        const i64 window = after - before;
        if (window >= 0 && after + window / 2 == toNanoseconds(a_rTime))
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_windows.push_back(window);
        }
        addAge(m_transmitAges, a_rTime);
        m_rGenerator.recordTransmitTimestamp(a_rPdu, a_rTime, a_status);
    }

    void printReport(tOutput& a_rOutput)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        a_rOutput.line("send_window samples=%zu p50_ns=%" PRId64 " p99_ns=%" PRId64
                       " max_ns=%" PRId64,
                       m_windows.size(), percentile(m_windows, 0.5), percentile(m_windows, 0.99),
                       percentile(m_windows, 1.0));
        a_rOutput.line("stamp_age receive_p50_ns=%" PRId64 " receive_p99_ns=%" PRId64
                       " transmit_p50_ns=%" PRId64 " transmit_p99_ns=%" PRId64,
                       percentile(m_receiveAges, 0.5), percentile(m_receiveAges, 0.99),
                       percentile(m_transmitAges, 0.5), percentile(m_transmitAges, 0.99));
    }

private:
    void addAge(std::vector<i64>& a_rAges, const tTimestamp& a_rTime)
    {
        tStatus status;
        tTimestamp now;
        m_rClock.getTime(now, status);
        std::lock_guard<std::mutex> lock(m_mutex);
        a_rAges.push_back(toNanoseconds(now) - toNanoseconds(a_rTime));
    }

    tTimestampGenerator& m_rGenerator;
    nOrvPTP000::iPTPTimekeeper& m_rClock;
    std::mutex m_mutex;
    std::vector<i64> m_windows;
    std::vector<i64> m_receiveAges;
    std::vector<i64> m_transmitAges;
};

class tClockDriver;

// Runs one member of the driver on the dispatcher thread.
class tDriverEvent : public iPTPEvent
{
public:
    typedef void (tClockDriver::*tWork)(tStatus&);
    tDriverEvent(tClockDriver* a_pDriver, tWork a_work) : m_pDriver(a_pDriver), m_work(a_work) {}
    void execute(tStatus& a_status) override { (m_pDriver->*m_work)(a_status); }

private:
    tClockDriver* m_pDriver;
    tWork m_work;
};

// Watches the port and does, on the dispatcher thread, what the clock's user
// must do at INITIALIZING and UNCALIBRATED.
//
// The observer itself only prints and posts: it is called in the middle of a
// handler. The posted work looks at the port state again when it runs, and
// then calls the check's handler itself, in the same event. A check posted as
// an event of its own could arrive after the port has moved on (a network
// error queued in between makes it FAULTY), and an initialized check in
// FAULTY would stop the recovery timer with the other port timers.
class tClockDriver : public nOrvPTP000::iPortStateObserver
{
public:
    tClockDriver(const tOptions& a_options, tOutput& a_rOutput)
        : m_options(a_options), m_rOutput(a_rOutput), m_pNode(nullptr)
    {
    }

    void setNode(tPTPNode* a_pNode) { m_pNode = a_pNode; }

    void portStateChanged(i32 a_newState, i32 a_oldState) override
    {
        m_rOutput.line("state %s -> %s", stateName(a_oldState), stateName(a_newState));
        if (a_newState == nOrvPTP000::kPortStateInitializing)
        {
            post(&tClockDriver::completeInitialization);
        }
        else if (a_newState == nOrvPTP000::kPortStateUncalibrated)
        {
            post(&tClockDriver::selectMasterClock);
        }
    }

private:
    void post(tDriverEvent::tWork a_work)
    {
        tStatus status;
        if (!m_pNode->postEvent(nOrvTarn000::makeOwned<tDriverEvent>(status, this, a_work), status))
        {
            m_rOutput.line("error: could not post to the clock (%d)", status.getCode());
        }
    }

    u8 portState()
    {
        tStatus status;
        return m_pNode->getPortState(1, status);
    }

    // The settings, then the end of INITIALIZING.
    void completeInitialization(tStatus& a_status)
    {
        if (portState() != nOrvPTP000::kPortStateInitializing)
        {
            return;
        }
        tPTPNode& node = *m_pNode;
        if (m_options.m_clockClass >= 0)
        {
            node.setClockClass(static_cast<u8>(m_options.m_clockClass), a_status, 0);
        }
        node.setPriority1(static_cast<u8>(m_options.m_priority1), a_status, 0);
        node.setPriority2(static_cast<u8>(m_options.m_priority2), a_status, 0);
        node.setSlaveOnly(m_options.m_slaveOnly, a_status, 0);
        node.setLogSyncInterval(1, static_cast<i8>(m_options.m_logSyncInterval), a_status, 0);
        node.setLogMinDelayReqInterval(1, static_cast<i8>(m_options.m_logDelayReqInterval),
                                       a_status, 0);
        node.setAnnounceReceiptTimeout(1, static_cast<u8>(m_options.m_announceReceiptTimeout),
                                       a_status, 0);
        node.setLogAnnounceInterval(1, static_cast<i8>(m_options.m_logAnnounceInterval), a_status,
                                    0);
        node.setDomainNumber(static_cast<u8>(m_options.m_domain), a_status, 0);
        // The system clock counts UTC, not TAI: as master, this clock's time
        // is on an arbitrary timescale, and a peer must take it as it is.
        node.setPtpTimescale(false, a_status, 0);
        if (a_status.isFatal())
        {
            // The port stays in INITIALIZING: better than running with other
            // settings than asked for.
            m_rOutput.line("error: settings refused (%d)", a_status.getCode());
            return;
        }
        node.handleInitializedCheck(a_status);
    }

    void selectMasterClock(tStatus& a_status)
    {
        if (portState() == nOrvPTP000::kPortStateUncalibrated)
        {
            m_pNode->handleMasterClockSelectedCheck(a_status);
        }
    }

    const tOptions& m_options;
    tOutput& m_rOutput;
    tPTPNode* m_pNode;
};

// Prints what management changes: the changes that the plug-in would write
// to its settings file, told apart from the program's own by their context.
class tManagementChangeReporter : public nOrvPTP000::iPropertyChangeObserver
{
public:
    explicit tManagementChangeReporter(tOutput& a_rOutput) : m_rOutput(a_rOutput) {}

    void propertyChanged(i32 a_propertyId, i32 a_context) override
    {
        if (a_context == kContextManagement)
        {
            m_rOutput.line("management_change property=%d", a_propertyId);
        }
    }

private:
    tOutput& m_rOutput;
};

// The clock identity of a MAC address: the EUI-48 with FF FE in the middle.
tClockIdentity clockIdentityOf(const u8* a_pMac)
{
    const u8 bytes[8] = {a_pMac[0], a_pMac[1], a_pMac[2], 0xFF,
                         0xFE,      a_pMac[3], a_pMac[4], a_pMac[5]};
    return tClockIdentity(bytes);
}

// Waits for SIGINT or SIGTERM, or for the duration to run out (0: no limit),
// and calls a_eachSecond after every whole second of waiting. The signals are
// blocked in every thread, so that they wait here.
template <typename tEachSecond>
void waitForEnd(const sigset_t& a_signals, double a_durationSeconds, tOutput& a_rOutput,
                tEachSecond a_eachSecond)
{
    timespec start;
    ::clock_gettime(CLOCK_MONOTONIC, &start);
    for (;;)
    {
        timespec wait = {1, 0};
        if (a_durationSeconds > 0.0)
        {
            timespec now;
            ::clock_gettime(CLOCK_MONOTONIC, &now);
            const double elapsed = static_cast<double>(now.tv_sec - start.tv_sec) +
                                   static_cast<double>(now.tv_nsec - start.tv_nsec) * 1e-9;
            const double left = a_durationSeconds - elapsed;
            if (left <= 0.0)
            {
                return;
            }
            if (left < 1.0)
            {
                wait.tv_sec = 0;
                wait.tv_nsec = static_cast<long>(left * 1e9);
            }
        }
        const int signal = ::sigtimedwait(&a_signals, nullptr, &wait);
        if (signal > 0)
        {
            a_rOutput.line("signal %d: stopping", signal);
            return;
        }
        if (wait.tv_sec == 1)
        {
            a_eachSecond();
        }
    }
}

void printServoState(tSteeredClock& a_rClock, tOutput& a_rOutput)
{
    tStatus status;
    const tSteeredClock::tState state = a_rClock.readState(status);
    if (status.isNotFatal())
    {
        a_rOutput.line("servo t=%.1f error_ns=%" PRId64 " rate_ppm=%.3f offset_ns=%" PRId64
                       " synchronized=%d samples=%u",
                       state.m_seconds, state.m_errorNs, state.m_ratePpm, state.m_offsetNs,
                       state.m_synchronized ? 1 : 0, state.m_samples);
    }
}

// A count and time after which a condition held, or "-" for both.
std::string heldAfter(const char* a_pName, u32 a_samples, f64 a_seconds)
{
    char text[96];
    if (a_seconds < 0.0)
    {
        std::snprintf(text, sizeof(text), "%s_after_samples=- %s_after_s=-", a_pName, a_pName);
    }
    else
    {
        std::snprintf(text, sizeof(text), "%s_after_samples=%u %s_after_s=%.1f", a_pName, a_samples,
                      a_pName, a_seconds);
    }
    return text;
}

void printServoSummary(tSteeredClock& a_rClock, tOutput& a_rOutput)
{
    const tSteeredClock::tSummary summary = a_rClock.summarize();
    a_rOutput.line(
        "servo_summary samples=%u failed=%u first_failure=%d %s %s median_abs_error_ns=%.0f "
        "p95_abs_error_ns=%.0f max_abs_error_ns=%.0f",
        summary.m_samples, summary.m_failedSamples, summary.m_firstFailure,
        heldAfter("synchronized", summary.m_samplesUntilSynchronized,
                  summary.m_secondsUntilSynchronized)
            .c_str(),
        heldAfter("within_10us", summary.m_samplesUntilWithin10us, summary.m_secondsUntilWithin10us)
            .c_str(),
        summary.m_medianAbsError * 1e9, summary.m_p95AbsError * 1e9, summary.m_maxAbsError * 1e9);
}

} // namespace

int main(int a_argc, char** a_argv)
{
    tOptions options;
    if (!parseOptions(a_argc, a_argv, options))
    {
        printUsage(stderr);
        return kExitUsage;
    }
    tOutput output(options.m_name);

    // Before any thread exists, so that every thread inherits the mask.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    tStatus status;
    tNetworkDeviceConfig device;
    u8 mac[6] = {};
    bool found = false;
    if (!options.m_mac.empty())
    {
        if (!parseMac(options.m_mac.c_str(), mac))
        {
            std::fprintf(stderr, "zmptp_clock: %s is no MAC address\n", options.m_mac.c_str());
            return kExitUsage;
        }
        found = nZelmarPtpPlugin_1_0::nNetworkDevices::findDeviceByMacAddress(mac, device, status);
    }
    else
    {
        found = nZelmarPtpPlugin_1_0::nNetworkDevices::findDeviceByName(options.m_interface.c_str(),
                                                                        device, status);
        if (found)
        {
            std::memcpy(mac, device.m_macAddress, sizeof(mac));
        }
    }
    if (!found || status.isFatal())
    {
        std::fprintf(stderr, "zmptp_clock: no network device %s (%d)\n",
                     options.m_mac.empty() ? options.m_interface.c_str() : options.m_mac.c_str(),
                     status.getCode());
        return kExitFailure;
    }
    const tClockIdentity identity = clockIdentityOf(mac);
    char address[INET_ADDRSTRLEN] = "none";
    in_addr deviceAddress;
    deviceAddress.s_addr = device.m_ipAddress;
    ::inet_ntop(AF_INET, &deviceAddress, address, sizeof(address));
    const u8* id = identity.getBytes();
    output.line("clock %02x%02x%02x.%02x%02x.%02x%02x%02x on %s (%s)", id[0], id[1], id[2], id[3],
                id[4], id[5], id[6], id[7], device.m_name, address);

    std::unique_ptr<tSteeredClock> pSteeredClock;
    if (options.m_steer)
    {
        pSteeredClock = nOrvTarn000::makeOwned<tSteeredClock>(status, options.m_clockOffsetNs,
                                                              options.m_clockPpm, status);
        if (pSteeredClock == nullptr || status.isFatal())
        {
            std::fprintf(stderr, "zmptp_clock: the steered clock could not be built (%d)\n",
                         status.getCode());
            return kExitFailure;
        }
    }
    tNodeTimekeeper timekeeper(output, options.m_steer ? 0 : options.m_clockOffsetNs,
                               pSteeredClock.get());
    timekeeper.setQuiet(options.m_quietOffsets);
    tTimestampGenerator timestampGenerator(status);
    tSendWindowProbe probe(timestampGenerator, timekeeper);
    tClientUdpNetworkInterface messaging(&probe, &timekeeper, mac, static_cast<u8>(options.m_ttl));
    messaging.setTimestamping(options.m_timestamping);
    tClockDriver driver(options, output);
    tManagementChangeReporter managementChanges(output);
    std::unique_ptr<tPTPNode> pNode =
        nOrvTarn000::makeOwned<tPTPNode>(status, &messaging, &probe, &timekeeper, identity, status);
    if (pNode == nullptr || status.isFatal())
    {
        std::fprintf(stderr, "zmptp_clock: the clock could not be built (%d)\n", status.getCode());
        return kExitFailure;
    }
    timekeeper.setNode(pNode.get());
    driver.setNode(pNode.get());

    int result = 0;
    // Flags and observers of the node, no data-set fields: they survive the start.
    tStatus flagStatus;
    pNode->writeProperty<nOrvPTP000::EXTERNAL_CHECKS>(true, flagStatus);
    pNode->writeProperty<nOrvPTP000::AUTOMATIC_RECOVERY>(options.m_automaticRecovery, flagStatus);
    pNode->writeProperty<nOrvPTP000::ADD_PORT_STATE_OBSERVER>(&driver, flagStatus);
    pNode->writeProperty<nOrvPTP000::ADD_PROPERTY_OBSERVER>(&managementChanges, flagStatus);
    if (pSteeredClock != nullptr)
    {
        pNode->writeProperty<nOrvPTP000::ADD_PORT_STATE_OBSERVER>(pSteeredClock.get(), flagStatus);
    }
    if (flagStatus.isFatal())
    {
        std::fprintf(stderr, "zmptp_clock: the clock refused its flags\n");
        result = kExitFailure;
    }
    else
    {
        pNode->startClock(status);
        if (status.isFatal())
        {
            std::fprintf(stderr, "zmptp_clock: the clock did not start (%d)\n", status.getCode());
            result = kExitFailure;
        }
        else
        {
            waitForEnd(signals, options.m_durationSeconds, output,
                       [&]()
                       {
                           if (pSteeredClock != nullptr)
                           {
                               printServoState(*pSteeredClock, output);
                           }
                       });
        }
    }

    tStatus stopStatus;
    pNode->stopClock(stopStatus);
    pNode.reset();
    timekeeper.setNode(nullptr);
    driver.setNode(nullptr);

    timekeeper.printSummary();
    if (pSteeredClock != nullptr)
    {
        printServoSummary(*pSteeredClock, output);
    }
    if (options.m_reportSendWindow)
    {
        probe.printReport(output);
    }
    const tClientUdpNetworkInterface::tTimestampCounts counts = messaging.getTimestampCounts();
    output.line("timestamps kernel_receive=%" PRIu64 " user_receive=%" PRIu64
                " kernel_transmit=%" PRIu64 " user_transmit=%" PRIu64,
                counts.m_kernelReceive, counts.m_userReceive, counts.m_kernelTransmit,
                counts.m_userTransmit);
    return result;
}
