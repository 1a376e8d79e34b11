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

} // namespace nOrvPTP000
