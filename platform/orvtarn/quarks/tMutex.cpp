#include "orvtarn/quarks/tMutex.h"

namespace nOrvTarn000
{

tMutex::tMutex(tStatus& a_status) : m_handle(), m_valid(false)
{
    if (a_status.isFatal())
    {
        return;
    }
    pthread_mutexattr_t attributes;
    bool created = false;
    if (pthread_mutexattr_init(&attributes) == 0)
    {
        created = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE) == 0 &&
                  pthread_mutex_init(&m_handle, &attributes) == 0;
        pthread_mutexattr_destroy(&attributes);
    }
    if (!created)
    {
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
    if (!m_valid || pthread_mutex_lock(&m_handle) != 0)
    {
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
