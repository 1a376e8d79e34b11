#pragma once
#include "orvtarn/quarks/tTypes.h"

namespace nOrvTarn000
{

// The only codes the system ever sets. Negative codes are fatal.
enum : i32
{
    kStatusSuccess = 0,
    kStatusMemoryFull = -52000,
    kStatusResourceUnavailable = -52001,
    kStatusNotSupported = -52002,
    kStatusInternalError = -52003,
    kStatusInvalidArgument = -52005,
    kStatusNotAvailable = -52006,
    kStatusTimedOut = -52007,
    kStatusSystemError = -52008,
    kStatusCancelled = -52009,
    kStatusInvalidState = -52010,
    kStatusOutOfBounds = -52012,
    kStatusWaitFailed = -52015,
    kStatusAlreadyRunning = -52016,
    kStatusWrongRunState = -52017,
};

} // namespace nOrvTarn000
