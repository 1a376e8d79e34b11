#pragma once
#include "orvtarn/protons/status/tAllocator.h"
#include "orvtarn/protons/status/tStatus.h"

#include <vector>

namespace zelmarPluginCore_1_0
{

// A second-order recursive filter in transposed direct form II:
//   y = x * b0 + s0;  s0 = x * b1 - y * a0 + s1;  s1 = x * b2 - y * a1
// and the output is y times the gain. The state keeps y without the gain.
class tDigitalFilter
{
public:
    typedef std::vector<f64, nOrvTarn000::tAllocator<f64>> tCoefficients;

    tDigitalFilter();

    // Copies a0, a1 and b0, b1, b2 (further entries are kept and not read)
    // and clears the state. Shorter lists are refused with -52005.
    void setCoefficients(const tCoefficients& a_feedback, const tCoefficients& a_feedForward,
                         nOrvTarn000::tStatus& a_status);
    void setGain(f64 a_gain, nOrvTarn000::tStatus& a_status);
    // Clears the state; keeps coefficients and gain.
    void reset(nOrvTarn000::tStatus& a_status);
    // The next output; 0.0 on a fatal status, and with -52010 before
    // coefficients are set.
    f64 filter(f64 a_sample, nOrvTarn000::tStatus& a_status);

private:
    tCoefficients m_feedback;    // a0, a1
    tCoefficients m_feedForward; // b0, b1, b2
    tCoefficients m_state;       // s0, s1; as long as m_feedback
    f64 m_gain;
};

} // namespace zelmarPluginCore_1_0
