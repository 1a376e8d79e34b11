#pragma once
#include "orvtarn/protons/status/tAllocator.h"
#include "orvtarn/quarks/tMutex.h"

namespace zelmarPluginCore_1_0
{

using nOrvTarn000::tStatus;

class iZelmarController;

// The work behind a time source, for one synchronisation technology. A
// plug-in exists only while its source is online: its controller builds it,
// owns it and destroys it at any failure. It has no lock of its own: its
// mutex is the controller's, so that host threads and the deferred-action
// thread exclude each other through one object.
class iZelmarPlugin
{
public:
    virtual ~iZelmarPlugin() {}

    // The latched plug-in error code (0: none); cleared only when a_status
    // holds code 0.
    virtual u32 takeErrorCode(tStatus& a_status) = 0;
    virtual nOrvTarn000::tString getName(tStatus& a_status) = 0;
    // The sample interval in seconds.
    virtual f64 getInterval(tStatus& a_status) = 0;
    virtual void setInterval(const f64& a_seconds, tStatus& a_status) = 0;
    // Begins the work behind the source; stop ends it, and start may follow.
    virtual void start(tStatus& a_status) = 0;
    virtual void stop() = 0;
    virtual nOrvTarn000::tMutex& getMutex() = 0;
    virtual iZelmarController* getController() = 0;
    virtual const iZelmarController* getController() const = 0;
    // The stored interval, unlocked.
    virtual u32 getIntervalMilliseconds() = 0;
    virtual void setErrorCode(u32 a_code) = 0;
};

} // namespace zelmarPluginCore_1_0
