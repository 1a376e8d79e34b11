#pragma once
#include "tServoSimulation.h"
#include "tStatusRecord.h"

namespace nZmHost
{

// The run at a glance, from every status record: when the port first was
// SLAVE, from when on the synchronized flag and |true error| < 10 us held to
// the end, and the true error over the second half of the records.
class tRunSummary
{
public:
    void add(const tStatusRecord& a_record);
    // The summary's fields; times absent when the condition did not hold.
    tFields fields(f64 a_runSeconds) const;

private:
    // The time of the first record of the tail that a_samples (as
    // samplesUntil... counts them) leaves.
    tValue timeAfter(u32 a_samples) const;

    std::optional<f64> m_slaveSeconds;
    std::vector<f64> m_seconds;
    nZelmar::tServoRun m_run{};
};

} // namespace nZmHost
