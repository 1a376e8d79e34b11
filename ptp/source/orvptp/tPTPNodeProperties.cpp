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

void tPTPNode::accessProperty(tAccess a_access, i32 a_id, void* const* a_pValues, u32 a_count,
                              u16 a_portNumber, tStatus& a_status)
{
    tEvent done(a_status);
    std::unique_ptr<iPTPEvent> pEvent;
    if (a_access == kGet)
    {
        pEvent = makeOwned<tGetDatasetEvent>(a_status, this, a_id, a_pValues, a_count, a_portNumber,
                                             &done, &a_status);
    }
    else
    {
        pEvent = makeOwned<tSetDatasetEvent>(a_status, this, a_id, a_pValues, a_count, a_portNumber,
                                             &done, &a_status);
    }
    postEventAndWait(std::move(pEvent), &done, a_status);
}

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
    case PHYSICAL_LAYER_PROTOCOL:
        checkPortNumber(a_portNumber, status);
        valueAt<tPTPText>(a_pValues, 0) = getPhysicalLayerProtocol(a_portNumber);
        break;
    case PHYSICAL_ADDRESS_LENGTH:
        checkPortNumber(a_portNumber, status);
        valueAt<u16>(a_pValues, 0) = getPhysicalAddressLength(a_portNumber);
        break;
    case PHYSICAL_ADDRESS:
        getPhysicalAddress(a_portNumber, valueAt<u8*>(a_pValues, 0), status);
        break;
    case PROTOCOL_ADDRESS:
        checkPortNumber(a_portNumber, status);
        valueAt<tPortAddress>(a_pValues, 0) = getProtocolAddress(a_portNumber);
        break;
    case MANUFACTURER_IDENTITY:
        getManufacturerIdentity(valueAt<u8*>(a_pValues, 0), status);
        break;
    case PRODUCT_DESCRIPTION:
    case REVISION_DATA:
    case USER_DESCRIPTION:
    {
        char* const buffers[3] = {valueAt<char*>(a_pValues, 0), valueAt<char*>(a_pValues, 1),
                                  a_id == USER_DESCRIPTION ? nullptr
                                                           : valueAt<char*>(a_pValues, 2)};
        getDescriptionParts(a_id, buffers);
        break;
    }
    case PROFILE_IDENTITY:
        getProfileIdentity(a_portNumber, valueAt<u8*>(a_pValues, 0), status);
        break;
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
    case PHYSICAL_LAYER_PROTOCOL:
    {
        const tPTPText text(static_cast<const char*>(a_pValues[0]), status);
        setPhysicalLayerProtocol(a_portNumber, text, status, 0);
        break;
    }
    case PHYSICAL_ADDRESS:
        setPhysicalAddress(a_portNumber, valueAt<const u8*>(a_pValues, 0),
                           valueAt<u16>(a_pValues, 1), status, 0);
        break;
    case PROTOCOL_ADDRESS:
        setProtocolAddress(a_portNumber, valueAt<tPortAddress>(a_pValues, 0), status, 0);
        break;
    case MANUFACTURER_IDENTITY:
        setManufacturerIdentity(valueAt<const u8*>(a_pValues, 0), status, 0);
        break;
    case PRODUCT_DESCRIPTION:
    case REVISION_DATA:
    case USER_DESCRIPTION:
    {
        const char* const parts[3] = {
            valueAt<const char*>(a_pValues, 0), valueAt<const char*>(a_pValues, 1),
            a_id == USER_DESCRIPTION ? nullptr : valueAt<const char*>(a_pValues, 2)};
        setDescriptionParts(a_id, parts, status);
        break;
    }
    case PROFILE_IDENTITY:
        setProfileIdentity(a_portNumber, valueAt<const u8*>(a_pValues, 0), status, 0);
        break;
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
