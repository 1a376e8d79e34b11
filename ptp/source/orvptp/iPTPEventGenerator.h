#pragma once
#include "orvptp/iPTPEvent.h"

namespace nOrvPTP000
{

// A factory that a timer keeps, so that every expiry raises a fresh event.
class iPTPEventGenerator
{
public:
    virtual ~iPTPEventGenerator() {}
    // The event of one expiry, owned by the caller; null when it cannot be
    // made (kStatusMemoryFull, or a fatal status on entry).
    [[nodiscard]] virtual std::unique_ptr<iPTPEvent> generateEvent(tStatus& a_status) = 0;
};

} // namespace nOrvPTP000
