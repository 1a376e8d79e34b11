#pragma once
#include "orvptp/tPTPMessage.h"
#include "orvptp/tTimestamp.h"

namespace nOrvPTP000
{

// The common form of the messages whose body is one timestamp (Sync,
// Delay_Req, Follow_Up): 44 octets without TLVs.
class tTimestampMessage : public tPTPMessage
{
public:
    enum : u16
    {
        kBodyLength = tTimestamp::kLength
    };

    u16 getSize() override { return sizeWithBody(kBodyLength); }
    void deserializeBody(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeBody(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

protected:
    explicit tTimestampMessage(nOrvTarn000::tStatus& a_status) : tPTPMessage(a_status) {}
    tTimestampMessage(std::unique_ptr<tMessageHeader> a_pHeader, nOrvTarn000::tStatus& a_status)
        : tPTPMessage(std::move(a_pHeader), a_status)
    {
    }

    const tTimestamp& getBodyTimestamp() const { return m_timestamp; }
    void setBodyTimestamp(const tTimestamp& a_timestamp, nOrvTarn000::tStatus& a_status);
    // Begin text, header, a_label, the timestamp, a_trailer, suffix, end text.
    nOrvTarn000::tTrace& traceWith(nOrvTarn000::tTrace& a_trace, const char* a_beginText,
                                   const char* a_label, const char* a_trailer,
                                   const char* a_endText);

private:
    tTimestamp m_timestamp;
};

} // namespace nOrvPTP000
