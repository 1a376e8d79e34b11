#include "tDigitalFilter.h"

#include <algorithm>

using nOrvTarn000::tStatus;

namespace zelmarPluginCore_1_0
{
namespace
{

enum : u32
{
    kFeedbackCount = 2,
    kFeedForwardCount = 3
};

} // namespace

tDigitalFilter::tDigitalFilter() : m_feedback(), m_feedForward(), m_state(), m_gain(0.0) {}

void tDigitalFilter::setCoefficients(const tCoefficients& a_feedback,
                                     const tCoefficients& a_feedForward, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (a_feedback.size() < kFeedbackCount || a_feedForward.size() < kFeedForwardCount)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidArgument);
        return;
    }
    m_feedback = a_feedback;
    m_feedForward = a_feedForward;
    m_state.assign(m_feedback.size(), 0.0);
    if (!CHECK_ALLOCATION(m_feedback, a_status) || !CHECK_ALLOCATION(m_feedForward, a_status) ||
        !CHECK_ALLOCATION(m_state, a_status))
    {
        m_state.clear();
    }
}

void tDigitalFilter::setGain(f64 a_gain, tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        m_gain = a_gain;
    }
}

void tDigitalFilter::reset(tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        std::fill(m_state.begin(), m_state.end(), 0.0);
    }
}

f64 tDigitalFilter::filter(f64 a_sample, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return 0.0;
    }
    if (m_state.size() < kFeedbackCount)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidState);
        return 0.0;
    }
    const f64 x = a_sample;
    const f64 y = x * m_feedForward[0] + m_state[0];
    m_state[0] = x * m_feedForward[1] - y * m_feedback[0] + m_state[1];
    m_state[1] = x * m_feedForward[2] - y * m_feedback[1];
    return y * m_gain;
}

} // namespace zelmarPluginCore_1_0
