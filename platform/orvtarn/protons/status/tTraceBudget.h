#pragma once
#include "orvtarn/protons/timer/iClock.h"

#include <atomic>

namespace nOrvTarn000
{

// Keeps one kind of trace line, one that others can provoke at will (a peer on
// the network, say), from flooding the console: at most a fixed number of
// lines in each second of the clock; the rest are counted instead of written.
// Threads may ask at the same moment; the budget then holds approximately.
class tTraceBudget
{
public:
    tTraceBudget(iClock& a_rClock, u32 a_linesPerSecond);
    tTraceBudget(const tTraceBudget&) = delete;
    tTraceBudget& operator=(const tTraceBudget&) = delete;

    // True when one more line may be written now. Then a_rSuppressed holds
    // the lines refused since the last one allowed, for the caller to report.
    bool allow(u32& a_rSuppressed);

private:
    iClock& m_rClock;
    const u32 m_linesPerSecond;
    std::atomic<u64> m_secondStartNs;
    std::atomic<u32> m_allowed;
    std::atomic<u32> m_suppressed;
};

} // namespace nOrvTarn000
