#pragma once
#include "orvtarn/protons/status/tStatus.h"

namespace nOrvPTP000
{

using nOrvTarn000::tStatus;

// One unit of work for the dispatcher thread. An event that is not run is
// handed to abandon() and deleted by whoever holds it, so that it can release
// what it carries.
class iPTPEvent
{
public:
    enum tKind : i32
    {
        kStartEvent = 0,
        kStopEvent = 1,
        kOtherEvent = 2
    };

    // Deletes only the event, never what it refers to.
    virtual ~iPTPEvent() {}
    // True for events that may be posted and run while the clock is stopped.
    virtual bool allowedWhenStopped() { return false; }
    virtual i32 getEventKind() { return kOtherEvent; }
    virtual void execute(tStatus& a_status) = 0;
    virtual void abandon(tStatus&) {}
};

} // namespace nOrvPTP000
