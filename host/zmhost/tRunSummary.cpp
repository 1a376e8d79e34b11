#include "tRunSummary.h"

#include <cmath>

namespace nZmHost
{
namespace
{

const f64 kWithinBound = 10e-6;

i64 nanosecondsOf(f64 a_seconds)
{
    return std::llround(a_seconds * 1e9);
}

} // namespace

void tRunSummary::add(const tStatusRecord& a_record)
{
    if (!m_slaveSeconds.has_value() && a_record.m_state == "SLAVE")
    {
        m_slaveSeconds = a_record.m_seconds;
    }
    if (a_record.m_errorNs.has_value())
    {
        m_seconds.push_back(a_record.m_seconds);
        m_run.m_errors.push_back(static_cast<f64>(*a_record.m_errorNs) * 1e-9);
        m_run.m_synchronized.push_back(a_record.m_synchronized.value_or(false));
    }
}

tValue tRunSummary::timeAfter(u32 a_samples) const
{
    if (a_samples == 0 || a_samples > m_seconds.size())
    {
        return std::monostate();
    }
    return m_seconds[a_samples - 1];
}

tFields tRunSummary::fields(f64 a_runSeconds) const
{
    const bool any = !m_run.m_errors.empty();
    auto error = [&](f64 a_fraction) -> tValue {
        return any ? tValue(nanosecondsOf(nZelmar::steadyStateQuantile(m_run, a_fraction)))
                   : tValue();
    };
    return tFields{
        {"run_s", "", 0, a_runSeconds},
        {"slave_after_s", "", 0, m_slaveSeconds.has_value() ? tValue(*m_slaveSeconds) : tValue()},
        {"synchronized_after_s", "", 0, timeAfter(nZelmar::samplesUntilSynchronized(m_run))},
        {"within_10us_after_s", "", 0, timeAfter(nZelmar::samplesUntilWithin(m_run, kWithinBound))},
        {"median_abs_error_ns", "", 0, error(0.5)},
        {"p95_abs_error_ns", "", 0, error(0.95)},
        {"max_abs_error_ns", "", 0, error(1.0)},
        {"last_error_ns", "", 0, any ? tValue(nanosecondsOf(m_run.m_errors.back())) : tValue()}};
}

} // namespace nZmHost
