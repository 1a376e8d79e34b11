#include "orvtarn/quarks/tMutex.h"

#include "orvtarn/protons/status/tSystemError.h"

#include <cerrno>

namespace nOrvTarn000
{

tMutex::tMutex(tStatus& a_status) : m_handle(), m_valid(false)
{
    if (a_status.isFatal())
    {
        return;
    }
    pthread_mutexattr_t attributes;
    int error = pthread_mutexattr_init(&attributes);
    if (error == 0)
    {
        error = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        if (error == 0)
        {
            error = pthread_mutex_init(&m_handle, &attributes);
        }
        pthread_mutexattr_destroy(&attributes);
    }
    const bool created = error == 0;
    if (!created)
    {
        ORVTARN_TRACE_SYSTEM_ERROR("pthread_mutex_init", error);
        ORVTARN_SET_CODE(a_status, kStatusMemoryFull);
    }
    m_valid = created && a_status.isNotFatal();
    if (created && !m_valid)
    {
        pthread_mutex_destroy(&m_handle);
    }
}

tMutex::~tMutex()
{
    if (m_valid)
    {
        pthread_mutex_destroy(&m_handle);
    }
}

bool tMutex::lock(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return false;
    }
    const int error = m_valid ? pthread_mutex_lock(&m_handle) : EINVAL;
    if (error != 0)
    {
        ORVTARN_TRACE_SYSTEM_ERROR("pthread_mutex_lock", error);
        ORVTARN_SET_CODE(a_status, kStatusWaitFailed);
        return false;
    }
    return true;
}

void tMutex::unlock()
{
    if (m_valid)
    {
        pthread_mutex_unlock(&m_handle);
    }
}

} // namespace nOrvTarn000
