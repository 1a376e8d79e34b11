#pragma once
#include "orvtarn/quarks/tTypes.h"

namespace nOrvPTP000
{

// Told on the dispatcher thread each time the port leaves one state for
// another; the codes are those of tPortStateCodes.h.
class iPortStateObserver
{
public:
    virtual ~iPortStateObserver() {}

    virtual void portStateChanged(i32 a_newState, i32 a_oldState) = 0;
};

} // namespace nOrvPTP000
