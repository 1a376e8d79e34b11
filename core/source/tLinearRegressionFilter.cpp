#include "tLinearRegressionFilter.h"

#include "orvtarn/protons/status/tAssertion.h"

using nOrvTarn000::tStatus;

namespace zelmarPluginCore_1_0
{

tLinearRegressionFilter::tLinearRegressionFilter() : m_samples(), m_historySize(0) {}

void tLinearRegressionFilter::setHistorySize(u32 a_historySize, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    const u32 historySize = a_historySize;
    if (!REQUIRE(2 <= historySize, nOrvTarn000::kStatusInvalidArgument, a_status))
    {
        return;
    }
    m_historySize = historySize;
    m_samples.reserve(historySize);
    CHECK_ALLOCATION(m_samples, a_status);
}

void tLinearRegressionFilter::reset(tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        m_samples.clear();
    }
}

void tLinearRegressionFilter::addSample(i64 a_value, i64 a_interval, f64& a_rSlope,
                                        f64& a_rIntercept, f64& a_rMeanInterval, i64& a_rSpan,
                                        tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    // A filter whose size was never set keeps one sample.
    while (!m_samples.empty() && m_samples.size() >= m_historySize)
    {
        m_samples.erase(m_samples.begin());
    }
    m_samples.push_back(tRegressionSample{a_interval, a_value});
    if (!CHECK_ALLOCATION(m_samples, a_status))
    {
        return;
    }
    a_rSlope = 0.0;
    a_rIntercept = 0.0;
    if (m_samples.size() < 2)
    {
        a_rMeanInterval = static_cast<f64>(a_interval);
        a_rSpan = a_interval;
        return;
    }
    // The x position sums intervals in wrapping arithmetic: no interval the
    // owner can pass overflows it into undefined behaviour.
    u64 position = 0;
    f64 sumX = 0.0;
    f64 sumXX = 0.0;
    f64 sumY = 0.0;
    f64 sumXY = 0.0;
    for (const tRegressionSample& sample : m_samples)
    {
        position += static_cast<u64>(sample.m_interval);
        const f64 x = static_cast<f64>(static_cast<i64>(position));
        const f64 y = static_cast<f64>(sample.m_value);
        sumX += x;
        sumXX += x * x;
        sumY += y;
        sumXY += x * y;
    }
    const i64 span = static_cast<i64>(position);
    const f64 count = static_cast<f64>(m_samples.size());
    a_rSpan = span;
    a_rMeanInterval = static_cast<f64>(span) / count;
    const f64 denominator = sumX * sumX - count * sumXX;
    // Without a slope to fit, slope and intercept stay 0 rather than the
    // quotients by zero, so that no owner can steer by a value that is not
    // finite.
    if (!CHECK(0 != denominator, nOrvTarn000::kStatusInternalError, a_status))
    {
        return;
    }
    a_rSlope = (sumY * sumX - count * sumXY) / denominator;
    a_rIntercept = (sumXY * sumX - sumY * sumXX) / denominator;
}

} // namespace zelmarPluginCore_1_0
