#pragma once
#include "orvtarn/protons/status/tStatus.h"

#include <memory>

namespace nOrvPTP000
{

using nOrvTarn000::tStatus;

class tEventQueue;

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

    iPTPEvent() : m_pNext(nullptr) {}
    // Deletes only the event, never what it refers to.
    virtual ~iPTPEvent() {}
    iPTPEvent(const iPTPEvent&) = delete;
    iPTPEvent& operator=(const iPTPEvent&) = delete;

    // True for events that may be posted and run while the clock is stopped.
    virtual bool allowedWhenStopped() { return false; }
    virtual i32 getEventKind() { return kOtherEvent; }
    virtual void execute(tStatus& a_status) = 0;
    virtual void abandon(tStatus&) {}

private:
    // The link of the queue that holds the event: queueing allocates nothing.
    friend class tEventQueue;
    iPTPEvent* m_pNext;
};

// Gives up an event that will not run: abandon with a status of its own, then
// delete.
void abandonEvent(std::unique_ptr<iPTPEvent> a_pEvent);

} // namespace nOrvPTP000
