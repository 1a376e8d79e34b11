// The cost of reading and writing a property through the clock's front from
// another thread: post the event, the dispatcher runs it, the caller wakes.
// Prints the round trip's p50 and p99 for a get and a set, on the system
// clock with real threads; the clock is stopped, as before its start.
#include "orvptp/tPTPOrdinaryClock.h"
#include "tLatencyStatistics.h"
#include "tSimNetwork.h"

#include <cstdio>
#include <vector>

using namespace nOrvPTP000;

namespace
{

const u8 kIdentity[8] = {0x00, 0x11, 0x22, 0xFF, 0xFE, 0x33, 0x44, 0x55};
const int kRounds = 20000;

template <typename tCall>
void measure(const char* a_pWhat, tCall a_call)
{
    std::vector<u64> spans;
    spans.reserve(kRounds);
    for (int i = 0; i < kRounds; ++i)
    {
        const u64 start = nowNs();
        a_call(i);
        spans.push_back(nowNs() - start);
    }
    std::printf("%-26s p50 %6.1f us  p99 %6.1f us\n", a_pWhat,
                static_cast<double>(percentile(spans, 0.5)) / 1000.0,
                static_cast<double>(percentile(spans, 0.99)) / 1000.0);
}

} // namespace

int main()
{
    // The simulated endpoint only serves as messaging; the clock's timers
    // and waits run on the system clock.
    nSimNet::tSimNetwork network;
    const u32 id = network.addEndpoint();
    tStatus status;
    tPTPOrdinaryClock clock(network.getMessaging(id), network.getTimestamps(id),
                            network.getTimekeeper(id), kIdentity, status);
    if (status.isFatal())
    {
        std::printf("the clock could not be built (%d)\n", static_cast<int>(status.getCode()));
        return 1;
    }
    measure("get priority1", [&](int) { clock.getPriority1(); });
    measure("set priority1",
            [&](int a_round) { clock.setPriority1(static_cast<u8>(a_round & 0x7F), status); });
    measure("get grandmaster identity", [&](int) { clock.getGrandmasterIdentity(); });
    return status.isFatal() ? 1 : 0;
}
