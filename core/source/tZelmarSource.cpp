#include "tZelmarSource.h"

#include "orvtarn/protons/status/tAllocation.h"
#include "tSourceRegistry.h"
#include "tZelmarController.h"

namespace zelmarPluginCore_1_0
{

tZelmarSource::tZelmarSource(iZelmarPluginFactory& a_rFactory, tStatus& a_status)
    : tZelmarSource(a_rFactory, nOrvTarn000::getSystemClock(), a_status)
{
}

tZelmarSource::tZelmarSource(iZelmarPluginFactory& a_rFactory, nOrvTarn000::iClock& a_rClock,
                             tStatus& a_status)
{
    // In locked memory: the controller serves the real-time side for as long
    // as the source lives.
    m_pController.reset(new (a_status, true)
                            tZelmarController(a_rFactory, this, a_rClock, a_status));
    if (a_status.isNotFatal())
    {
        tSourceRegistry::getInstance().registerSource(this);
    }
}

tZelmarSource::~tZelmarSource()
{
    // Waits for a property call that uses the controller.
    tSourceRegistry::getInstance().clear();
    // The controller's end stops its worker, whose last action may still ask
    // this source whether it is online: the pointer keeps its value until the
    // controller is gone, as the member's own destruction does.
}

void tZelmarSource::attachTimeReference(nZelmar::iTimeReference* a_pReference)
{
    if (m_pController != nullptr)
    {
        tStatus attachStatus;
        m_pController->attachTimeReference(a_pReference, attachStatus);
    }
}

void tZelmarSource::detachTimeReference()
{
    if (m_pController != nullptr)
    {
        m_pController->detachTimeReference();
    }
}

bool tZelmarSource::isAttached()
{
    return m_pController != nullptr && m_pController->isAttached();
}

bool tZelmarSource::isOnline()
{
    return m_pController != nullptr && m_pController->isOnline();
}

void tZelmarSource::timeReferenceChanged(bool)
{
    trigger();
}

} // namespace zelmarPluginCore_1_0
