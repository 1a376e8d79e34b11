#include "tSpuriousSpikeFilter.h"

#include "orvtarn/protons/status/tAssertion.h"

#include <cmath>

using nOrvTarn000::tStatus;

namespace zelmarPluginCore_1_0
{
namespace
{

const f64 kFirstLimit = 1e9;
const f64 kLimitFactor = 5.0;

} // namespace

tSpuriousSpikeFilter::tSpuriousSpikeFilter()
    : m_history(), m_historySize(0), m_sum(0.0), m_limit(kFirstLimit)
{
}

void tSpuriousSpikeFilter::setHistorySize(u32 a_historySize, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    const u32 historySize = a_historySize;
    if (!REQUIRE(1 <= historySize, nOrvTarn000::kStatusInvalidArgument, a_status))
    {
        return;
    }
    m_historySize = historySize;
    m_history.reserve(historySize);
    CHECK_ALLOCATION(m_history, a_status);
}

void tSpuriousSpikeFilter::reset(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    m_sum = 0.0;
    m_limit = kFirstLimit;
    m_history.clear();
}

f64 tSpuriousSpikeFilter::filter(const f64& a_sample, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return 0.0;
    }
    f64 value = a_sample;
    if (std::fabs(value) > m_limit)
    {
        value = value < 0.0 ? -m_limit : m_limit;
    }
    // A filter whose size was never set keeps one entry.
    while (!m_history.empty() && m_history.size() >= m_historySize)
    {
        m_sum -= m_history.front();
        m_history.erase(m_history.begin());
    }
    m_history.push_back(std::fabs(value));
    if (!CHECK_ALLOCATION(m_history, a_status))
    {
        return 0.0;
    }
    m_sum += m_history.back();
    m_limit = m_sum / static_cast<f64>(m_history.size()) * kLimitFactor;
    return value;
}

} // namespace zelmarPluginCore_1_0
