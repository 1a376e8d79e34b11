#pragma once
#include "orvptp/iPTPSerializable.h"

#include <memory>

namespace nOrvPTP000
{

class tManagementMessagePayload;

// tlvType values that this clock recognises.
enum : u16
{
    kTlvTypeManagement = 1,
    kTlvTypeManagementErrorStatus = 2,
    kTlvTypeOrganizationExtension = 3
};

// One type-length-value element of a message suffix:
//   tlvType (2 octets), lengthField (2 octets), then lengthField octets of value.
//
// Reception goes through tTLVFactory, which reads type, length and selectors
// itself and then lets the class read its value; deserialize is the
// self-contained form of the same.
class tTLV : public iPTPSerializable
{
public:
    enum : u16
    {
        kFixedLength = 4
    };

    tTLV() : m_tlvType(kTlvTypeManagement), m_lengthField(0) {}
    explicit tTLV(u16 a_tlvType) : m_tlvType(a_tlvType), m_lengthField(0) {}

    u16 getTlvType() const { return m_tlvType; }
    void setTlvType(u16 a_tlvType, nOrvTarn000::tStatus& a_status);
    // The lengthField: the octets behind the length itself.
    u16 getLength() const { return m_lengthField; }

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void serialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void deserialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    u16 getSize() override { return static_cast<u16>(kFixedLength + m_lengthField); }

    // Stores a_valueLength, rounded up to a multiple of a_alignment (1 or 2),
    // as the lengthField and returns the padding that the rounding added. A
    // class with a variable value passes 2 and, for a non-zero result, writes
    // and reads one zero octet behind its value.
    virtual u16 setLength(u32 a_valueLength, nOrvTarn000::tStatus& a_status, u32 a_alignment);
    // Reads everything behind the lengthField.
    virtual void deserializeValue(iSerializableTarget& a_target,
                                  nOrvTarn000::tStatus& a_status) = 0;
    virtual void serializeValue(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) = 0;
    // A deep copy; null when the status is or becomes fatal.
    [[nodiscard]] virtual std::unique_ptr<tTLV> clone(nOrvTarn000::tStatus& a_status) const = 0;
    // The TLV as the payload of a management message, or null for any other
    // kind: only the management TLVs and the error status answer requests.
    virtual tManagementMessagePayload* asManagementPayload() { return nullptr; }

private:
    u16 m_tlvType;
    u16 m_lengthField;
};

} // namespace nOrvPTP000
