#include "tCommandLine.h"

#include "tExitCodes.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <getopt.h>
#include <net/if.h>

namespace nZmHost
{
namespace
{

enum : int
{
    kOptionClockOffset = 256,
    kOptionClockPpm
};

const char kShortOptions[] = ":i:r:f:L:d:t:jc:l:qvhV";
const option kLongOptions[] = {{"interface", required_argument, nullptr, 'i'},
                               {"root", required_argument, nullptr, 'r'},
                               {"config", required_argument, nullptr, 'f'},
                               {"library", required_argument, nullptr, 'L'},
                               {"duration", required_argument, nullptr, 'd'},
                               {"start-timeout", required_argument, nullptr, 't'},
                               {"json", no_argument, nullptr, 'j'},
                               {"csv", required_argument, nullptr, 'c'},
                               {"level", required_argument, nullptr, 'l'},
                               {"quiet", no_argument, nullptr, 'q'},
                               {"verbose", no_argument, nullptr, 'v'},
                               {"clock-offset-ns", required_argument, nullptr, kOptionClockOffset},
                               {"clock-ppm", required_argument, nullptr, kOptionClockPpm},
                               {"help", no_argument, nullptr, 'h'},
                               {"version", no_argument, nullptr, 'V'},
                               {nullptr, 0, nullptr, 0}};

// Where the library finds its settings file under a root.
const char kFileBelowRoot[] = "/orv-rt/system/zelmar/zelmar-ptp.ini";

// The largest start offset of the software clock: a day.
const f64 kMaximumClockOffsetNs = 86400e9;
// The software clock's rate stays within 1 % of its counter's.
const f64 kMaximumClockPpm = 10000.0;

// A finite number, the whole text, within [a_minimum, a_maximum].
bool readNumber(const char* a_pText, f64 a_minimum, f64 a_maximum, f64& a_rValue)
{
    char* pEnd = nullptr;
    errno = 0;
    const f64 value = std::strtod(a_pText, &pEnd);
    if (pEnd == a_pText || *pEnd != '\0' || errno != 0 || !std::isfinite(value) ||
        value < a_minimum || value > a_maximum)
    {
        return false;
    }
    a_rValue = value;
    return true;
}

// The option as the user wrote it, for messages.
std::string optionName(int a_option, char** a_argv)
{
    for (const option* pOption = kLongOptions; pOption->name != nullptr; ++pOption)
    {
        if (pOption->val == a_option)
        {
            return std::string("--") + pOption->name;
        }
    }
    return std::string(a_argv[optind - 1]);
}

} // namespace

tCommand parseCommandLine(int a_argc, char** a_argv, tOptions& a_rOptions, std::string& a_rError)
{
    opterr = 0;
    optind = 1;
    int option = 0;
    while ((option = getopt_long(a_argc, a_argv, kShortOptions, kLongOptions, nullptr)) != -1)
    {
        f64 number = 0.0;
        bool valid = true;
        switch (option)
        {
        case 'i':
            a_rOptions.m_interface = optarg;
            valid = !a_rOptions.m_interface.empty() && a_rOptions.m_interface.size() < IFNAMSIZ;
            break;
        case 'r':
            a_rOptions.m_root = optarg;
            valid = !a_rOptions.m_root.empty();
            break;
        case 'f':
        {
            // The library takes a root only: the file must lie where it looks.
            const std::string path = optarg;
            const size_t tail = sizeof(kFileBelowRoot) - 1;
            if (path.size() <= tail || path.compare(path.size() - tail, tail, kFileBelowRoot) != 0)
            {
                a_rError = "--config " + path + ": the library reads only ROOT" + kFileBelowRoot +
                           " (or give --root ROOT)";
                return tCommand::kUsageError;
            }
            a_rOptions.m_root = path.substr(0, path.size() - tail);
            break;
        }
        case 'L':
            a_rOptions.m_library = optarg;
            valid = !a_rOptions.m_library.empty();
            break;
        case 'd':
            valid = readNumber(optarg, 0.0, 1e9, a_rOptions.m_durationSeconds);
            break;
        case 't':
            valid = readNumber(optarg, 0.0, 1e9, a_rOptions.m_startTimeoutSeconds);
            break;
        case 'j':
            a_rOptions.m_json = true;
            break;
        case 'c':
            a_rOptions.m_csvPath = optarg;
            valid = !a_rOptions.m_csvPath.empty();
            break;
        case 'l':
            valid = readNumber(optarg, tOptions::kLevelEvents, tOptions::kLevelLooks, number) &&
                    number == std::floor(number);
            a_rOptions.m_level = static_cast<int>(number);
            break;
        case 'q':
            a_rOptions.m_level = std::max<int>(a_rOptions.m_level - 1, tOptions::kLevelEvents);
            break;
        case 'v':
            a_rOptions.m_level = std::min<int>(a_rOptions.m_level + 1, tOptions::kLevelLooks);
            break;
        case kOptionClockOffset:
            valid = readNumber(optarg, -kMaximumClockOffsetNs, kMaximumClockOffsetNs, number) &&
                    number == std::floor(number);
            a_rOptions.m_clockOffsetNs = static_cast<i64>(number);
            break;
        case kOptionClockPpm:
            valid = readNumber(optarg, -kMaximumClockPpm, kMaximumClockPpm, a_rOptions.m_clockPpm);
            break;
        case 'h':
            return tCommand::kHelp;
        case 'V':
            return tCommand::kVersion;
        case ':':
            a_rError = "option " + optionName(optopt, a_argv) + " needs a value";
            return tCommand::kUsageError;
        default:
            a_rError = "unknown option " + std::string(a_argv[optind - 1]);
            return tCommand::kUsageError;
        }
        if (!valid)
        {
            a_rError =
                "invalid value '" + std::string(optarg) + "' for " + optionName(option, a_argv);
            return tCommand::kUsageError;
        }
    }
    if (optind < a_argc)
    {
        a_rError = "unexpected argument '" + std::string(a_argv[optind]) + "'";
        return tCommand::kUsageError;
    }
    return tCommand::kRun;
}

void printUsage(std::FILE* a_pFile)
{
    std::fputs("usage: zmhost [options]\n"
               "\n"
               "Runs the PTP time source of libzm_ptp.so as a host engine runs it: loads the\n"
               "library, attaches a software clock that the source steers, and prints the\n"
               "source's state until SIGINT or SIGTERM.\n"
               "\n"
               " -i, --interface NAME     the network device; its MAC address is written into\n"
               "                          the settings file (default: the device the file names)\n"
               " -r, --root DIR           root of the settings file\n"
               "                          DIR/orv-rt/system/zelmar/zelmar-ptp.ini\n"
               "                          (default: $ZM_PTP_ROOT, else /var/lib/zm_ptp)\n"
               " -L, --library PATH       the plug-in library (default: libzm_ptp.so, searched\n"
               "                          in ../lib/zm_ptp beside the program, then beside it)\n"
               " -d, --duration SECONDS   stop after this time; 0 runs until a signal (0)\n"
               " -t, --start-timeout SECONDS\n"
               "                          give up when the source is not online by then;\n"
               "                          0 waits for ever (10)\n"
               " -j, --json               status as JSON lines on stdout instead of text\n"
               " -c, --csv FILE           also write every status record to FILE as CSV\n"
               " -l, --level N            0: events only; 1: and a status line at each change;\n"
               "                          2: and one every second (2)\n"
               " -q, --quiet              the same as --level 0\n"
               "     --clock-offset-ns NS start the software clock NS off the system clock (0)\n"
               "     --clock-ppm PPM      let it run PPM parts per million fast until steered (0)\n"
               " -h, --help               this text\n"
               " -V, --version            the version and the library that would be loaded\n"
               "\n"
               "The library's own messages go to standard error.\n"
               "\n"
               "Exit codes:\n",
               a_pFile);
#define ZMHOST_EXIT_CODE(name, code, meaning) std::fprintf(a_pFile, "  %d  %s\n", code, meaning);
#include "tExitCodes.def"
#undef ZMHOST_EXIT_CODE
}

} // namespace nZmHost
