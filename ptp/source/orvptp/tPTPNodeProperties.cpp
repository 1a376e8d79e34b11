#include "orvptp/tPTPNode.h"

#include "orvtarn/protons/status/tAssertion.h"

// Property access by id, for callers on other threads (through the get and
// set events), observers, and the helpers every typed setter shares.

namespace nOrvPTP000
{

using namespace nOrvTarn000;

namespace
{

template <typename T>
T& valueAt(void** a_pValues, u32 a_index)
{
    return *static_cast<T*>(a_pValues[a_index]);
}

} // namespace

template <i32 kId>
void tPTPNode::setById(void** a_pValues, u16 a_portNumber, tStatus& a_status)
{
    if constexpr (tNodeProperty<kId>::kSettable)
    {
        tNodeProperty<kId>::set(*this, a_portNumber,
                                valueAt<typename tNodeProperty<kId>::tValue>(a_pValues, 0),
                                a_status);
    }
    else
    {
        CHECK(false);
    }
}

void tPTPNode::getProperty(i32 a_id, void** a_pValues, u16 a_portNumber, tEvent* a_pDone,
                           tStatus* a_pStatus)
{
    tStatus& status = *a_pStatus;
    switch (a_id)
    {
#define ORVPTP_PROPERTY(id, ...)                                                                   \
    case id:                                                                                       \
        valueAt<tNodeProperty<id>::tValue>(a_pValues, 0) =                                         \
            tNodeProperty<id>::get(*this, a_portNumber, status);                                   \
        break;
#define ORVPTP_OTHER_PROPERTY(id)
#include "orvptp/tNodeProperties.def"
    case EXTERNAL_CHECKS:
        valueAt<bool>(a_pValues, 0) = m_externalChecks;
        break;
    case AUTOMATIC_RECOVERY:
        valueAt<bool>(a_pValues, 0) = m_automaticRecovery;
        break;
    default:
        CHECK(false);
        break;
    }
    a_pDone->signal();
}

void tPTPNode::setProperty(i32 a_id, void** a_pValues, u16 a_portNumber, tEvent* a_pDone,
                           tStatus* a_pStatus)
{
    tStatus& status = *a_pStatus;
    REQUIRE(a_id != TWO_STEP_FLAG);
    switch (a_id)
    {
#define ORVPTP_PROPERTY(id, ...)                                                                   \
    case id:                                                                                       \
        setById<id>(a_pValues, a_portNumber, status);                                              \
        break;
#define ORVPTP_OTHER_PROPERTY(id)
#include "orvptp/tNodeProperties.def"
    case ADD_PORT_STATE_OBSERVER:
        m_portStateObservers.add(valueAt<iPortStateObserver*>(a_pValues, 0), status);
        break;
    case REMOVE_PORT_STATE_OBSERVER:
        m_portStateObservers.remove(valueAt<iPortStateObserver*>(a_pValues, 0));
        break;
    case ADD_PROPERTY_OBSERVER:
        m_propertyObservers.add(valueAt<iPropertyChangeObserver*>(a_pValues, 0), status);
        break;
    case REMOVE_PROPERTY_OBSERVER:
        m_propertyObservers.remove(valueAt<iPropertyChangeObserver*>(a_pValues, 0));
        break;
    case EXTERNAL_CHECKS:
        m_externalChecks = valueAt<bool>(a_pValues, 0);
        break;
    case AUTOMATIC_RECOVERY:
        m_automaticRecovery = valueAt<bool>(a_pValues, 0);
        break;
    default:
        CHECK(false);
        break;
    }
    a_pDone->signal();
}

} // namespace nOrvPTP000
