#pragma once
#include "iTickSource.h"

namespace nZelmar
{

// A counter in simulated time, for tests and simulations: it claims
// a_frequency ticks per second but runs a_frequencyError off (relative:
// 1e-4 counts 100 ppm fast), and moves only when advanced. It has no lock:
// advance it from the thread that reads it.
class tSimulatedTickSource : public iTickSource
{
public:
    tSimulatedTickSource(u64 a_frequency, f64 a_frequencyError);

    u64 getFrequency() const override { return m_frequency; }
    bool readTicks(u64& a_rTicks) override;

    // Lets a_nanoseconds of true time pass.
    void advance(u64 a_nanoseconds) { m_elapsed += a_nanoseconds; }
    // True time since construction, in nanoseconds.
    u64 getElapsed() const { return m_elapsed; }

private:
    u64 m_frequency;
    f64 m_frequencyError;
    u64 m_elapsed;
};

} // namespace nZelmar
