#pragma once
#include "orvptp/tMessageHeader.h"
#include "orvptp/tMessageSuffix.h"

#include <memory>

namespace nOrvPTP000
{

// A PTP message: the common header, a body that depends on the message type,
// and a suffix of TLVs, in that order on the wire. The base owns header and
// suffix and fixes the order; each message class supplies its body.
//
// Every message class has two constructors: one that takes a status and
// builds a message for sending, and one that takes a parsed header, the
// target and a status and reads the rest of a received datagram.
class tPTPMessage : public iPTPSerializable
{
public:
    // A default header and an empty suffix. When memory runs out both stay
    // null and the status holds kStatusMemoryFull.
    explicit tPTPMessage(nOrvTarn000::tStatus& a_status);
    // Keeps a_pHeader, whatever the status, and makes an empty suffix.
    tPTPMessage(std::unique_ptr<tMessageHeader> a_pHeader, nOrvTarn000::tStatus& a_status);
    ~tPTPMessage() override;

    tPTPMessage(const tPTPMessage&) = delete;

    // Borrowed from the message; null only after a failed construction.
    tMessageHeader* getHeader() const { return m_pHeader.get(); }
    tMessageSuffix* getSuffix() const { return m_pSuffix.get(); }

    // Stores getSize() as the messageLength, then writes header, body, suffix.
    void serialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void deserialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    // Copies the header's fields and appends clones of a_other's TLVs.
    virtual tPTPMessage& operator=(const tPTPMessage& a_other);

    virtual void deserializeHeader(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status);
    virtual void deserializeBody(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) = 0;
    virtual void deserializeSuffix(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status);
    virtual void serializeHeader(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status);
    virtual void serializeBody(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) = 0;
    virtual void serializeSuffix(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status);

protected:
    // For the constructors for sending: the message type (and with it the
    // controlField) and the messageLength that goes with the present content.
    void prepareForSending(u8 a_messageType, nOrvTarn000::tStatus& a_status);
    // For the parsing constructors: the body, then the suffix, up to the end of
    // the data.
    void parseBodyAndSuffix(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status);
    // The header, a body of a_bodyLength octets and the suffix; 0 when header
    // or suffix is missing.
    u16 sizeWithBody(u16 a_bodyLength) const;
    // The framing of every message trace: begin text and header, then (in
    // closeTrace) the suffix and the end text.
    void openTrace(nOrvTarn000::tTrace& a_trace, const char* a_beginText);
    nOrvTarn000::tTrace& closeTrace(nOrvTarn000::tTrace& a_trace, const char* a_endText);

private:
    std::unique_ptr<tMessageHeader> m_pHeader;
    std::unique_ptr<tMessageSuffix> m_pSuffix;
};

} // namespace nOrvPTP000
