#pragma once
#include "orvtarn/protons/timer/tTimeout.h"

namespace zelmarPluginCore_1_0
{

using nOrvTarn000::tStatus;

// Work for the deferred-action thread (tDeferredActionQueue). An action lives
// in its owner, usually as a base class, so that queueing it allocates
// nothing; the queue only borrows it. Its one timeout is its delay, which the
// queue guards while the action is queued: arming it again restarts the
// delay, also for an entry of it that is still queued.
class iDeferredAction
{
public:
    virtual ~iDeferredAction() {}
    virtual void execute() = 0;

    // Restarts the delay on a_rClock. A positive a_delayMs ends one tick
    // later than a_delayMs; 0 makes the action due at once, whatever it was
    // armed with before.
    void arm(u32 a_delayMs, nOrvTarn000::iClock& a_rClock, tStatus& a_status);
    // The time left; 0 once due. Never all bits set, which a wait would read
    // as "without limit".
    u32 getRemainingMilliseconds(tStatus& a_status);
    bool isDue(tStatus& a_status);

private:
    nOrvTarn000::tTimeout m_timeout;
};

} // namespace zelmarPluginCore_1_0

// Declares a mix-in action whose execute calls a_operation, a pure operation
// of its own, so that one owner can derive from several actions and tell them
// apart. The mix-in adds no data.
#define ZELMAR_DEFERRED_ACTION(tAction, a_operation)                                               \
    class tAction : public ::zelmarPluginCore_1_0::iDeferredAction                                 \
    {                                                                                              \
    public:                                                                                        \
        void execute() override { a_operation(); }                                                 \
                                                                                                   \
    protected:                                                                                     \
        virtual void a_operation() = 0;                                                            \
    }
