#pragma once
#include "orvtarn/protons/status/tAllocator.h"
#include "orvtarn/protons/status/tStatus.h"

#include <vector>

namespace zelmarPluginCore_1_0
{

// Fits a least-squares line through the recent samples. Each sample comes
// with the interval since the one before; the x axis starts at the beginning
// of the oldest sample's interval, so the oldest sample lies at its own
// interval and the newest at the span of all of them.
class tLinearRegressionFilter
{
public:
    tLinearRegressionFilter();

    // The number of samples in the window, at least 2 (-52005 otherwise).
    // Room for them is taken here, so that addSample never allocates.
    void setHistorySize(u32 a_historySize, nOrvTarn000::tStatus& a_status);
    // Drops the samples; keeps the history size.
    void reset(nOrvTarn000::tStatus& a_status);
    // Adds a sample and fits the window. With a single sample the slope and
    // intercept are 0, and mean interval and span are a_interval. When all
    // samples lie at one x the line has no slope: -52003, slope and intercept
    // 0, mean interval and span as always.
    void addSample(i64 a_value, i64 a_interval, f64& a_rSlope, f64& a_rIntercept,
                   f64& a_rMeanInterval, i64& a_rSpan, nOrvTarn000::tStatus& a_status);

private:
    struct tRegressionSample
    {
        i64 m_interval; // time since the previous sample
        i64 m_value;
    };
    typedef std::vector<tRegressionSample, nOrvTarn000::tAllocator<tRegressionSample>> tSamples;

    tSamples m_samples; // oldest first
    u32 m_historySize;
};

} // namespace zelmarPluginCore_1_0
