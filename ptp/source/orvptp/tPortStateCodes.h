#pragma once
#include "orvtarn/quarks/tTypes.h"

namespace nOrvPTP000
{

// The port state codes, as the port data set holds them and as the state
// objects report them.
enum : u8
{
    // Not a PTP state: a stopped port reports it and the data set never holds it.
    kPortStateStopped = 0,
    kPortStateInitializing = 1,
    kPortStateFaulty = 2,
    kPortStateDisabled = 3,
    kPortStateListening = 4,
    // PRE_MASTER (5) does not exist here: a port goes straight to MASTER.
    kPortStateMaster = 6,
    kPortStatePassive = 7,
    kPortStateUncalibrated = 8,
    kPortStateSlave = 9
};

} // namespace nOrvPTP000
