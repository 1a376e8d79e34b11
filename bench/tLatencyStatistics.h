#pragma once
// Helpers of the latency benchmarks: a nanosecond reading of the
// high-resolution counter, and percentiles of the spans measured with it.
#include "orvtarn/protons/timer/tTime.h"

#include <algorithm>
#include <vector>

inline u64 nowNs()
{
    nOrvTarn000::tStatus status;
    return nOrvTarn000::getPerformanceCount(status);
}

// The value at a_fraction of the sorted values; 0 for none. Reorders them.
inline u64 percentile(std::vector<u64>& a_rValues, double a_fraction)
{
    if (a_rValues.empty())
    {
        return 0;
    }
    const size_t index = static_cast<size_t>(a_fraction * (a_rValues.size() - 1));
    std::nth_element(a_rValues.begin(), a_rValues.begin() + index, a_rValues.end());
    return a_rValues[index];
}
