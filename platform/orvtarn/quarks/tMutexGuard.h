#pragma once
#include "orvtarn/quarks/tMutex.h"

namespace nOrvTarn000
{

// Holds a tMutex for the guard's scope. The lock is taken only when the
// status is not fatal on entry; the guarded code then runs unlocked, so it
// must test the status before it touches what the mutex protects.
class tMutexGuard
{
public:
    tMutexGuard(tMutex& a_rMutex, tStatus& a_status)
        : m_pMutex(a_rMutex.lock(a_status) ? &a_rMutex : nullptr)
    {
    }

    ~tMutexGuard()
    {
        if (m_pMutex != nullptr)
        {
            m_pMutex->unlock();
        }
    }

    tMutexGuard(const tMutexGuard&) = delete;
    tMutexGuard& operator=(const tMutexGuard&) = delete;

    bool isLocked() const { return m_pMutex != nullptr; }

private:
    tMutex* m_pMutex;
};

} // namespace nOrvTarn000
