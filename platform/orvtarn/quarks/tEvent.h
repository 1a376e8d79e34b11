#pragma once
#include "orvtarn/protons/status/tStatus.h"

#include <pthread.h>

namespace nOrvTarn000
{

// A waitable flag. An auto-reset event releases one waiter per signal and
// falls back to unsignalled as that waiter leaves; a manual-reset event
// releases every waiter and stays signalled until reset. Signals do not
// count: signalling a signalled event changes nothing.
class tEvent
{
public:
    enum : u32
    {
        kInfinite = 0xFFFFFFFFu
    };

    // Auto-reset, not signalled.
    explicit tEvent(tStatus& a_status);
    // a_name is accepted for callers that label their events; events here are
    // private to the process, so it is not used.
    tEvent(bool a_autoReset, bool a_initialState, const char* a_name, tStatus& a_status);
    ~tEvent();

    tEvent(const tEvent&) = delete;
    tEvent& operator=(const tEvent&) = delete;

    // Waits until signalled, at most a_timeoutMs (kInfinite: without limit).
    // True when signalled. A finite wait that runs out gives kStatusTimedOut;
    // an event that could not be built, or a failing system wait, gives
    // kStatusWaitFailed.
    bool wait(u32 a_timeoutMs, tStatus& a_status);
    void signal();
    void reset(tStatus& a_status);

    bool isAutoReset() const { return m_autoReset; }

private:
    pthread_mutex_t m_mutex;
    pthread_cond_t m_condition;
    bool m_created;
    bool m_autoReset;
    bool m_signalled;
};

} // namespace nOrvTarn000
