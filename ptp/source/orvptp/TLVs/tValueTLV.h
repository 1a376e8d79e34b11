#pragma once
#include "orvptp/TLVs/tManagementTLV.h"
#include "orvptp/iPropertyChangeObserver.h"

namespace nOrvPTP000
{

// How the value octet of a one-value TLV travels and traces: as an unsigned
// or signed number, as a flag in bit 0, as the low four bits, or as an
// enumeration traced in hexadecimal. Bits outside the value are written as 0
// and dropped when read.
#define ORVPTP_VALUE_KIND(Kind, tType)                                                             \
    struct tValueKind##Kind                                                                        \
    {                                                                                              \
        typedef tType tValue;                                                                      \
        static void write(iSerializableTarget& a_target, tType a_value,                            \
                          nOrvTarn000::tStatus& a_status);                                         \
        static void read(iSerializableTarget& a_target, tType& a_rValue,                           \
                         nOrvTarn000::tStatus& a_status);                                          \
        static void trace(nOrvTarn000::tTrace& a_trace, tType a_value);                            \
    };
ORVPTP_VALUE_KIND(U8, u8)
ORVPTP_VALUE_KIND(I8, i8)
ORVPTP_VALUE_KIND(FLAG, bool)
ORVPTP_VALUE_KIND(NIBBLE, u8)
ORVPTP_VALUE_KIND(HEX, u8)
#undef ORVPTP_VALUE_KIND

// A TLV of one value of the node, GET and SET: the value octet and a reserved
// one. A SET first checks the value, then sets it in the management context.
// tRow is a line of tManagementIds.def, made into a type below.
template <typename tRow>
class tValueTLV : public tCloneable<tValueTLV<tRow>, tManagementTLV>
{
public:
    typedef typename tRow::tKind::tValue tValue;

    tValueTLV() : tCloneable<tValueTLV, tManagementTLV>(tRow::kManagementId), m_value() {}

    tValue getValue() const { return m_value; }

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    [[nodiscard]] tManagementReply handleSet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    tValue m_value;
};

#define ORVPTP_VALUE_GET_CLOCK(Name) a_rNode.get##Name()
#define ORVPTP_VALUE_GET_PORT(Name) a_rNode.get##Name(a_portNumber, a_status)
#define ORVPTP_VALUE_SET_CLOCK(Name)                                                               \
    a_rNode.set##Name(a_value, a_status, iPropertyChangeObserver::kContextManagement)
#define ORVPTP_VALUE_SET_PORT(Name)                                                                \
    a_rNode.set##Name(a_portNumber, a_value, a_status, iPropertyChangeObserver::kContextManagement)
#define ORVPTP_MANAGEMENT_VALUE_TLV(id, NAME, tClass, scope, Name, kind, label, check, refusal)    \
    struct tClass##Row                                                                             \
    {                                                                                              \
        typedef tValueKind##kind tKind;                                                            \
        static constexpr u16 kManagementId = id;                                                   \
        static constexpr const char* kLabel = label;                                               \
        static constexpr const char* kRefusal = refusal;                                           \
        static bool accepts(tKind::tValue a_value) { return check(a_value); }                      \
        static tKind::tValue get(iPTPNode& a_rNode, u16 a_portNumber,                              \
                                 nOrvTarn000::tStatus& a_status)                                   \
        {                                                                                          \
            (void)a_portNumber;                                                                    \
            (void)a_status;                                                                        \
            return ORVPTP_VALUE_GET_##scope(Name);                                                 \
        }                                                                                          \
        static void set(iPTPNode& a_rNode, u16 a_portNumber, tKind::tValue a_value,                \
                        nOrvTarn000::tStatus& a_status)                                            \
        {                                                                                          \
            (void)a_portNumber;                                                                    \
            ORVPTP_VALUE_SET_##scope(Name);                                                        \
        }                                                                                          \
    };                                                                                             \
    typedef tValueTLV<tClass##Row> tClass;
#include "orvptp/TLVs/tManagementIds.def"
#undef ORVPTP_VALUE_GET_CLOCK
#undef ORVPTP_VALUE_GET_PORT
#undef ORVPTP_VALUE_SET_CLOCK
#undef ORVPTP_VALUE_SET_PORT

} // namespace nOrvPTP000
