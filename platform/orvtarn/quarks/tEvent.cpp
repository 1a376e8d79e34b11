#include "orvtarn/quarks/tEvent.h"

#include "orvtarn/protons/status/tSystemError.h"

#include "orvtarn/quarks/tClock.h"

#include <cerrno>

namespace nOrvTarn000
{

tEvent::tEvent(tStatus& a_status) : tEvent(true, false, nullptr, a_status) {}

tEvent::tEvent(bool a_autoReset, bool a_initialState, const char* /*a_name*/, tStatus& a_status)
    : m_mutex(), m_condition(), m_created(false), m_autoReset(a_autoReset),
      m_signalled(a_initialState)
{
    if (a_status.isFatal())
    {
        return;
    }
    const int mutexError = pthread_mutex_init(&m_mutex, nullptr);
    if (mutexError != 0)
    {
        ORVTARN_TRACE_SYSTEM_ERROR("pthread_mutex_init", mutexError);
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return;
    }
    // Timed waits run on the monotonic clock, so that a change of the wall
    // clock neither shortens nor stretches them.
    pthread_condattr_t attributes;
    int conditionError = pthread_condattr_init(&attributes);
    if (conditionError == 0)
    {
        conditionError = pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
        if (conditionError == 0)
        {
            conditionError = pthread_cond_init(&m_condition, &attributes);
        }
        pthread_condattr_destroy(&attributes);
    }
    if (conditionError != 0)
    {
        ORVTARN_TRACE_SYSTEM_ERROR("pthread_cond_init", conditionError);
        pthread_mutex_destroy(&m_mutex);
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return;
    }
    m_created = true;
}

tEvent::~tEvent()
{
    if (m_created)
    {
        pthread_cond_destroy(&m_condition);
        pthread_mutex_destroy(&m_mutex);
    }
}

bool tEvent::wait(u32 a_timeoutMs, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return false;
    }
    if (!m_created)
    {
        ORVTARN_SET_CODE(a_status, kStatusWaitFailed);
        return false;
    }
    timespec deadline = {};
    if (a_timeoutMs != kInfinite && a_timeoutMs != 0 &&
        !nClock::makeDeadline(a_timeoutMs, deadline))
    {
        ORVTARN_SET_CODE(a_status, kStatusWaitFailed);
        return false;
    }

    if (pthread_mutex_lock(&m_mutex) != 0)
    {
        ORVTARN_SET_CODE(a_status, kStatusWaitFailed);
        return false;
    }
    int result = 0;
    while (!m_signalled && result == 0)
    {
        if (a_timeoutMs == 0)
        {
            result = ETIMEDOUT;
        }
        else if (a_timeoutMs == kInfinite)
        {
            result = pthread_cond_wait(&m_condition, &m_mutex);
        }
        else
        {
            result = pthread_cond_timedwait(&m_condition, &m_mutex, &deadline);
        }
    }
    // A signal that arrived together with the time-out still counts.
    const bool signalled = m_signalled;
    if (signalled && m_autoReset)
    {
        m_signalled = false;
    }
    pthread_mutex_unlock(&m_mutex);

    if (signalled)
    {
        return true;
    }
    if (result != ETIMEDOUT)
    {
        ORVTARN_TRACE_SYSTEM_ERROR("pthread_cond_wait", result);
    }
    ORVTARN_SET_CODE(a_status, result == ETIMEDOUT ? kStatusTimedOut : kStatusWaitFailed);
    return false;
}

void tEvent::signal()
{
    if (!m_created || pthread_mutex_lock(&m_mutex) != 0)
    {
        return;
    }
    m_signalled = true;
    // An auto-reset event lets one waiter through; the waiter that takes the
    // signal clears it, so waking more would only send the rest back to sleep.
    if (m_autoReset)
    {
        pthread_cond_signal(&m_condition);
    }
    else
    {
        pthread_cond_broadcast(&m_condition);
    }
    pthread_mutex_unlock(&m_mutex);
}

void tEvent::reset(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (!m_created || pthread_mutex_lock(&m_mutex) != 0)
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return;
    }
    m_signalled = false;
    pthread_mutex_unlock(&m_mutex);
}

} // namespace nOrvTarn000
