#pragma once
#include "orvptp/iPTPNode.h"

namespace nOrvPTP000
{

using nOrvTarn000::tStatus;

class iPortStateObserver;
class iPropertyChangeObserver;

// The type of a property on the generic path, where the get and set events
// carry a pointer to it: the field's own type, but a time interval as its
// scaled nanoseconds.
template <typename T>
struct tCarried
{
    typedef T tValue;
    static const T& from(const T& a_value) { return a_value; }
    static const T& to(const T& a_value) { return a_value; }
};
template <>
struct tCarried<tTimeInterval>
{
    typedef i64 tValue;
    static i64 from(const tTimeInterval& a_value) { return a_value.getScaledNanoseconds(); }
    static tTimeInterval to(i64 a_value)
    {
        tTimeInterval interval;
        interval.setScaledNanoseconds(a_value);
        return interval;
    }
};

// What the generic path knows of property kId: the carried type, the port
// number it is read with (1 for a port property, else 0) and whether
// setProperty takes it; for the fields of tNodeProperties.def also its typed
// get and set on a node.
template <i32 kId>
struct tNodeProperty;

#define ORVPTP_GET_CLOCK(Name) a_rNode.get##Name()
#define ORVPTP_GET_PORT(Name) a_rNode.get##Name(a_portNumber, a_status)
#define ORVPTP_SET_CLOCK(Name, value) a_rNode.set##Name(value, a_status, 0)
#define ORVPTP_SET_PORT(Name, value) a_rNode.set##Name(a_portNumber, value, a_status, 0)
#define ORVPTP_PORT_NUMBER_CLOCK 0
#define ORVPTP_PORT_NUMBER_PORT 1
#define ORVPTP_PROPERTY(id, Name, tField, scope, settable, ...)                                    \
    template <>                                                                                    \
    struct tNodeProperty<id>                                                                       \
    {                                                                                              \
        typedef tCarried<tField>::tValue tValue;                                                   \
        static constexpr u16 kPortNumber = ORVPTP_PORT_NUMBER_##scope;                             \
        static constexpr bool kSettable = settable;                                                \
        static tValue get(iPTPNode& a_rNode, u16 a_portNumber, tStatus& a_status)                  \
        {                                                                                          \
            (void)a_portNumber;                                                                    \
            (void)a_status;                                                                        \
            return tCarried<tField>::from(ORVPTP_GET_##scope(Name));                               \
        }                                                                                          \
        static void set(iPTPNode& a_rNode, u16 a_portNumber, const tValue& a_value,                \
                        tStatus& a_status)                                                         \
        {                                                                                          \
            (void)a_portNumber;                                                                    \
            ORVPTP_SET_##scope(Name, tCarried<tField>::to(a_value));                               \
        }                                                                                          \
    };
#define ORVPTP_OTHER_PROPERTY(id)
#include "orvptp/tNodeProperties.def"
#undef ORVPTP_GET_CLOCK
#undef ORVPTP_GET_PORT
#undef ORVPTP_SET_CLOCK
#undef ORVPTP_SET_PORT
#undef ORVPTP_PORT_NUMBER_CLOCK
#undef ORVPTP_PORT_NUMBER_PORT

// The properties of one value beyond the table: parts of the port's
// description, and the node's own flags and observer lists.
#define ORVPTP_NODE_PROPERTY(id, tCarriedValue, portNumber)                                        \
    template <>                                                                                    \
    struct tNodeProperty<id>                                                                       \
    {                                                                                              \
        typedef tCarriedValue tValue;                                                              \
        static constexpr u16 kPortNumber = portNumber;                                             \
    };
ORVPTP_NODE_PROPERTY(PHYSICAL_LAYER_PROTOCOL, tPTPText, 1)
ORVPTP_NODE_PROPERTY(PHYSICAL_ADDRESS_LENGTH, u16, 1)
ORVPTP_NODE_PROPERTY(PROTOCOL_ADDRESS, tPortAddress, 1)
ORVPTP_NODE_PROPERTY(EXTERNAL_CHECKS, bool, 0)
ORVPTP_NODE_PROPERTY(AUTOMATIC_RECOVERY, bool, 0)
ORVPTP_NODE_PROPERTY(ADD_PORT_STATE_OBSERVER, iPortStateObserver*, 0)
ORVPTP_NODE_PROPERTY(REMOVE_PORT_STATE_OBSERVER, iPortStateObserver*, 0)
ORVPTP_NODE_PROPERTY(ADD_PROPERTY_OBSERVER, iPropertyChangeObserver*, 0)
ORVPTP_NODE_PROPERTY(REMOVE_PROPERTY_OBSERVER, iPropertyChangeObserver*, 0)
#undef ORVPTP_NODE_PROPERTY

} // namespace nOrvPTP000
