#include "tSourceRegistry.h"

#include "orvtarn/quarks/tMutexGuard.h"

using nOrvTarn000::tMutexGuard;

namespace zelmarPluginCore_1_0
{

tSourceRegistry& tSourceRegistry::getInstance()
{
    static tSourceRegistry s_registry;
    return s_registry;
}

tSourceRegistry::tSourceRegistry() : m_status(), m_mutex(m_status), m_pSource(nullptr) {}

tZelmarSource* tSourceRegistry::enter(tStatus& a_status)
{
    a_status.mergeFrom(m_status);
    if (!m_mutex.lock(a_status))
    {
        return nullptr;
    }
    if (m_pSource == nullptr)
    {
        m_mutex.unlock();
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusNotAvailable);
    }
    return m_pSource;
}

void tSourceRegistry::leave()
{
    m_mutex.unlock();
}

void tSourceRegistry::registerSource(tZelmarSource* a_pSource)
{
    tStatus lockStatus;
    tMutexGuard guard(m_mutex, lockStatus);
    if (guard.isLocked())
    {
        m_pSource = a_pSource;
    }
}

void tSourceRegistry::clear()
{
    registerSource(nullptr);
}

} // namespace zelmarPluginCore_1_0
