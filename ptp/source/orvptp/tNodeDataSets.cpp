#include "orvptp/tNodeDataSets.h"

namespace nOrvPTP000
{

using namespace nOrvTarn000;

tNodeDataSets::tNodeDataSets(const tClockIdentity& a_clockIdentity, tStatus& a_status)
    : m_defaultDS(a_clockIdentity), m_parentDS(a_clockIdentity), m_portDS(a_clockIdentity),
      m_clockDescriptionDS(1, a_status)
{
}

bool tNodeDataSets::checkPortNumber(u16 a_portNumber, tStatus& a_status)
{
    if (a_portNumber == 0 || a_portNumber > m_defaultDS.getNumberPorts())
    {
        ORVTARN_SET_CODE(a_status, kStatusInvalidArgument);
        return false;
    }
    return true;
}

template <typename tValue>
void tNodeDataSets::writeTimeProperty(void (tTimePropertiesDS::*a_setter)(tValue, tStatus&),
                                      tArgument<typename std::decay<tValue>::type> a_value,
                                      tStatus& a_status)
{
    (m_localTimePropertiesDS.*a_setter)(a_value, a_status);
    if (m_parentDS.getGrandmasterIdentity() == m_defaultDS.getClockIdentity())
    {
        (m_timePropertiesDS.*a_setter)(a_value, a_status);
    }
}

// A port property checks the port first: all field setters do nothing on a
// fatal status, so a bad port number writes nothing.
#define ORVPTP_WRITE_FIELD(store, Field) store.set##Field(a_value, a_status)
#define ORVPTP_WRITE_STATE(store, Field) store.set##Field(a_value, a_status)
#define ORVPTP_WRITE_TIME(store, Field)                                                            \
    writeTimeProperty(&tTimePropertiesDS::set##Field, a_value, a_status)
#define ORVPTP_BODIES_CLOCK(id, Name, tValue, kind, store, Field)                                  \
    tValue tNodeDataSets::get##Name()                                                              \
    {                                                                                              \
        return store.get##Field();                                                                 \
    }                                                                                              \
    void tNodeDataSets::set##Name(tArgument<tValue> a_value, tStatus& a_status, i32 a_context)     \
    {                                                                                              \
        ORVPTP_WRITE_##kind(store, Field);                                                         \
        propertyWritten(id, a_status, a_context);                                                  \
    }
#define ORVPTP_BODIES_PORT(id, Name, tValue, kind, store, Field)                                   \
    tValue tNodeDataSets::get##Name(u16 a_portNumber, tStatus& a_status)                           \
    {                                                                                              \
        checkPortNumber(a_portNumber, a_status);                                                   \
        return store.get##Field();                                                                 \
    }                                                                                              \
    void tNodeDataSets::set##Name(u16 a_portNumber, tArgument<tValue> a_value, tStatus& a_status,  \
                                  i32 a_context)                                                   \
    {                                                                                              \
        checkPortNumber(a_portNumber, a_status);                                                   \
        ORVPTP_WRITE_##kind(store, Field);                                                         \
        propertyWritten(id, a_status, a_context);                                                  \
    }
#define ORVPTP_PROPERTY(id, Name, tValue, scope, settable, kind, store, Field)                     \
    ORVPTP_BODIES_##scope(id, Name, tValue, kind, store, Field)
#define ORVPTP_OTHER_PROPERTY(id)
#include "orvptp/tNodeProperties.def"

tPTPText tNodeDataSets::getPhysicalLayerProtocol(u16 a_portNumber)
{
    return m_clockDescriptionDS.getPhysicalLayerProtocol(a_portNumber);
}

void tNodeDataSets::setPhysicalLayerProtocol(u16 a_portNumber, const tPTPText& a_value,
                                             tStatus& a_status, i32 a_context)
{
    checkPortNumber(a_portNumber, a_status);
    m_clockDescriptionDS.setPhysicalLayerProtocol(a_portNumber, a_value, a_status);
    propertyWritten(PHYSICAL_LAYER_PROTOCOL, a_status, a_context);
}

u16 tNodeDataSets::getPhysicalAddress(u16 a_portNumber, u8* a_pBytes, tStatus& a_status)
{
    checkPortNumber(a_portNumber, a_status);
    return m_clockDescriptionDS.getPhysicalAddress(a_portNumber, a_pBytes, a_status);
}

void tNodeDataSets::setPhysicalAddress(u16 a_portNumber, const u8* a_pBytes, u16 a_length,
                                       tStatus& a_status, i32 a_context)
{
    checkPortNumber(a_portNumber, a_status);
    m_clockDescriptionDS.setPhysicalAddress(a_portNumber, a_pBytes, a_length, a_status);
    propertyWritten(PHYSICAL_ADDRESS, a_status, a_context);
}

u16 tNodeDataSets::getPhysicalAddressLength(u16 a_portNumber)
{
    return m_clockDescriptionDS.getPhysicalAddressLength(a_portNumber);
}

tPortAddress tNodeDataSets::getProtocolAddress(u16 a_portNumber)
{
    return m_clockDescriptionDS.getProtocolAddress(a_portNumber);
}

void tNodeDataSets::setProtocolAddress(u16 a_portNumber, const tPortAddress& a_value,
                                       tStatus& a_status, i32 a_context)
{
    checkPortNumber(a_portNumber, a_status);
    m_clockDescriptionDS.setProtocolAddress(a_portNumber, a_value, a_status);
    propertyWritten(PROTOCOL_ADDRESS, a_status, a_context);
}

void tNodeDataSets::getManufacturerIdentity(u8* a_pBytes, tStatus& a_status)
{
    m_clockDescriptionDS.getManufacturerIdentity(a_pBytes, a_status);
}

void tNodeDataSets::setManufacturerIdentity(const u8* a_pBytes, tStatus& a_status, i32 a_context)
{
    m_clockDescriptionDS.setManufacturerIdentity(a_pBytes, a_status);
    propertyWritten(MANUFACTURER_IDENTITY, a_status, a_context);
}

tPTPText tNodeDataSets::getProductDescription()
{
    return m_clockDescriptionDS.getProductDescription();
}

void tNodeDataSets::setProductDescription(const tPTPText& a_value, tStatus& a_status, i32 a_context)
{
    m_clockDescriptionDS.setProductDescription(a_value, a_status);
    propertyWritten(PRODUCT_DESCRIPTION, a_status, a_context);
}

tPTPText tNodeDataSets::getRevisionData()
{
    return m_clockDescriptionDS.getRevisionData();
}

void tNodeDataSets::setRevisionData(const tPTPText& a_value, tStatus& a_status, i32 a_context)
{
    m_clockDescriptionDS.setRevisionData(a_value, a_status);
    propertyWritten(REVISION_DATA, a_status, a_context);
}

tPTPText tNodeDataSets::getUserDescription()
{
    return m_clockDescriptionDS.getUserDescription();
}

void tNodeDataSets::setUserDescription(const tPTPText& a_value, tStatus& a_status, i32 a_context)
{
    m_clockDescriptionDS.setUserDescription(a_value, a_status);
    propertyWritten(USER_DESCRIPTION, a_status, a_context);
}

void tNodeDataSets::getProfileIdentity(u16 a_portNumber, u8* a_pBytes, tStatus& a_status)
{
    checkPortNumber(a_portNumber, a_status);
    m_clockDescriptionDS.getProfileIdentity(a_portNumber, a_pBytes, a_status);
}

void tNodeDataSets::setProfileIdentity(u16 a_portNumber, const u8* a_pBytes, tStatus& a_status,
                                       i32 a_context)
{
    checkPortNumber(a_portNumber, a_status);
    m_clockDescriptionDS.setProfileIdentity(a_portNumber, a_pBytes, a_status);
    propertyWritten(PROFILE_IDENTITY, a_status, a_context);
}

void tNodeDataSets::setDescriptionParts(i32 a_id, const char* const* a_pParts, tStatus& a_status)
{
    switch (a_id)
    {
    case PRODUCT_DESCRIPTION:
        m_clockDescriptionDS.setProductDescription(a_pParts[0], a_pParts[1], a_pParts[2], a_status);
        break;
    case REVISION_DATA:
        m_clockDescriptionDS.setRevisionData(a_pParts[0], a_pParts[1], a_pParts[2], a_status);
        break;
    default:
        m_clockDescriptionDS.setUserDescription(a_pParts[0], a_pParts[1], a_status);
        break;
    }
    propertyWritten(a_id, a_status, 0);
}

void tNodeDataSets::getDescriptionParts(i32 a_id, char* const* a_pBuffers)
{
    switch (a_id)
    {
    case PRODUCT_DESCRIPTION:
        m_clockDescriptionDS.getManufacturerName(a_pBuffers[0]);
        m_clockDescriptionDS.getModelNumber(a_pBuffers[1]);
        m_clockDescriptionDS.getInstanceIdentifier(a_pBuffers[2]);
        break;
    case REVISION_DATA:
        m_clockDescriptionDS.getHardwareRevision(a_pBuffers[0]);
        m_clockDescriptionDS.getFirmwareRevision(a_pBuffers[1]);
        m_clockDescriptionDS.getSoftwareRevision(a_pBuffers[2]);
        break;
    default:
        m_clockDescriptionDS.getUserDescriptionName(a_pBuffers[0]);
        m_clockDescriptionDS.getUserDescriptionLocation(a_pBuffers[1]);
        break;
    }
}

} // namespace nOrvPTP000
