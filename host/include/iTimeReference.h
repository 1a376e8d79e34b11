#pragma once
#include <cstdint>

namespace nZelmar
{

// Seconds from the reference's epoch, 1904-01-01 00:00:00, to the Unix epoch.
const std::uint64_t kReferenceEpochToUnixEpochSeconds = 2082844800u;

// The host's clock that a time source steers: a time of day in nanoseconds
// from 1904-01-01 00:00:00 that runs on a free-running counter at a rate the
// source may change, and that the source may move at once.
//
// The unit of the rate is the reference's own; its user only scales from the
// value read. A lower rate makes the reference run faster.
class iTimeReference
{
public:
    virtual ~iTimeReference() {}

    // The reference's time, nanoseconds from 1904-01-01 00:00:00.
    virtual void getReferenceTime(std::uint64_t& a_rNanoseconds) = 0;
    // The free-running counter, read for the moment of the time read before.
    virtual void getReferenceTicks(std::uint64_t& a_rTicks) = 0;
    // Counter ticks per second.
    virtual std::uint64_t getTickFrequency() = 0;
    // The rate in force.
    virtual double getRate() = 0;
    // Asks for a rate; getRate then tells what was applied.
    virtual void setRate(double a_rate) = 0;
    // Moves the time by the signed amount at once.
    virtual void adjustTime(const std::int64_t& a_rNanoseconds) = 0;
};

} // namespace nZelmar
