#pragma once
#include "orvptp/iPTPSerializable.h"
#include "orvptp/tOctetBlock.h"

namespace nOrvPTP000
{

// A text of at most 255 characters, as it travels: a length octet followed by
// the characters, with no terminating NUL in memory or on the wire. The
// characters live in a heap block of their exact length, null when empty.
// Copies are deep. A change that fails keeps the old text.
class tPTPText : public iPTPSerializable
{
public:
    enum : u32
    {
        kMaxLength = 255
    };

    tPTPText() {}
    // A text of kMaxLength + 1 or more characters is refused with
    // kStatusInvalidArgument and the object stays empty. Null means empty.
    tPTPText(const char* a_text, nOrvTarn000::tStatus& a_status);
    // When memory runs out the copy is empty; assign reports that case.
    tPTPText(const tPTPText& a_other);
    // When memory runs out the text stays as it was; assign reports that case.
    tPTPText& operator=(const tPTPText& a_other);

    void assign(const tPTPText& a_other, nOrvTarn000::tStatus& a_status);
    // An equal length overwrites the present block in place.
    void setText(const void* a_pData, u8 a_length, nOrvTarn000::tStatus& a_status);

    u8 getLength() const { return static_cast<u8>(m_text.getLength()); }
    // Not NUL-terminated; null when the length is 0.
    const char* getText() const { return reinterpret_cast<const char*>(m_text.getData()); }

    bool operator==(const tPTPText& a_other) const;
    bool operator!=(const tPTPText& a_other) const { return !(*this == a_other); }

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void serialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void deserialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    u16 getSize() override { return static_cast<u16>(1 + m_text.getLength()); }

private:
    tOctetBlock m_text;
};

} // namespace nOrvPTP000
