#include "tSimulatedTickSource.h"

#include <cmath>

namespace nZelmar
{

tSimulatedTickSource::tSimulatedTickSource(u64 a_frequency, f64 a_frequencyError)
    : m_frequency(a_frequency), m_frequencyError(a_frequencyError), m_elapsed(0)
{
}

bool tSimulatedTickSource::readTicks(u64& a_rTicks)
{
    // The nominal count in whole integers, so that a counter without error
    // is exact; the error on top of it in floating point.
    const u64 kNanosecondsPerSecond = 1000000000u;
    const u64 nominal = m_elapsed / kNanosecondsPerSecond * m_frequency +
                        m_elapsed % kNanosecondsPerSecond * m_frequency / kNanosecondsPerSecond;
    const f64 error = std::floor(static_cast<f64>(nominal) * m_frequencyError);
    a_rTicks = nominal + static_cast<u64>(static_cast<i64>(error));
    return true;
}

} // namespace nZelmar
