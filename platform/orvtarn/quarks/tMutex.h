#pragma once
#include "orvtarn/protons/status/tStatus.h"

#include <pthread.h>

namespace nOrvTarn000
{

// A mutual-exclusion lock that its owning thread may take again: each lock
// needs its own unlock before another thread gets it.
//
// A mutex built with a fatal status holds no system object; locking it then
// reports kStatusWaitFailed, and unlocking it does nothing.
class tMutex
{
public:
    explicit tMutex(tStatus& a_status);
    ~tMutex();

    tMutex(const tMutex&) = delete;
    tMutex& operator=(const tMutex&) = delete;

    // Waits without limit. False without waiting when the status is fatal,
    // false with kStatusWaitFailed when the system refuses the lock.
    bool lock(tStatus& a_status);

    // Releases one level of ownership. A call by a thread that does not hold
    // the lock has no effect.
    void unlock();

private:
    pthread_mutex_t m_handle;
    bool m_valid;
};

} // namespace nOrvTarn000
