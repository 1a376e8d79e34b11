#pragma once
#include "orvtarn/quarks/tTypes.h"

namespace nZelmar
{

// A free-running counter that a software time reference runs on.
class iTickSource
{
public:
    virtual ~iTickSource() {}

    // Counts per second.
    virtual u64 getFrequency() const = 0;
    // The present count; false when the counter cannot be read.
    virtual bool readTicks(u64& a_rTicks) = 0;
};

} // namespace nZelmar
