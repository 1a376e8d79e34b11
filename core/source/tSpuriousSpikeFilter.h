#pragma once
#include "orvtarn/protons/status/tAllocator.h"
#include "orvtarn/protons/status/tStatus.h"

#include <vector>

namespace zelmarPluginCore_1_0
{

// Limits outliers: a sample is held to five times the mean absolute value of
// the recent outputs. A limited sample enters the history at the limit, so a
// lasting change of level lifts the limit step by step. The first limit is
// 1e9, in the unit of the samples.
//
// Invariant: m_sum is the running sum of m_history, moved by each entry that
// enters or leaves, never recomputed.
class tSpuriousSpikeFilter
{
public:
    tSpuriousSpikeFilter();

    // The number of outputs the limit looks back on, at least 1 (-52005
    // otherwise). Room for them is taken here, so that filter never allocates.
    void setHistorySize(u32 a_historySize, nOrvTarn000::tStatus& a_status);
    // Drops the past and restores the first limit; keeps the history size.
    void reset(nOrvTarn000::tStatus& a_status);
    // The sample, held to the limit; 0.0 on a fatal status.
    f64 filter(const f64& a_sample, nOrvTarn000::tStatus& a_status);

private:
    typedef std::vector<f64, nOrvTarn000::tAllocator<f64>> tHistory;

    tHistory m_history; // absolute values of past outputs, oldest first
    u32 m_historySize;
    f64 m_sum;
    f64 m_limit;
};

} // namespace zelmarPluginCore_1_0
