#pragma once
#include "orvptp/tPTPMessage.h"
#include "orvptp/tTimestamp.h"

namespace nOrvPTP000
{

// Delay_Resp: when the master received a Delay_Req, and from which port.
// 54 octets without TLVs.
class tDelayRespMessage : public tPTPMessage
{
public:
    enum : u16
    {
        kBodyLength = tTimestamp::kLength + tPortIdentity::kLength
    };

    explicit tDelayRespMessage(nOrvTarn000::tStatus& a_status);
    tDelayRespMessage(std::unique_ptr<tMessageHeader> a_pHeader, iSerializableTarget& a_target,
                      nOrvTarn000::tStatus& a_status);

    const tTimestamp& getReceiveTimestamp() const { return m_receiveTimestamp; }
    void setReceiveTimestamp(const tTimestamp& a_timestamp, nOrvTarn000::tStatus& a_status);
    // All ones, port 0xFFFF, until set.
    const tPortIdentity& getRequestingPortIdentity() const { return m_requestingPortIdentity; }
    void setRequestingPortIdentity(const tPortIdentity& a_identity, nOrvTarn000::tStatus& a_status);

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    u16 getSize() override { return sizeWithBody(kBodyLength); }
    void deserializeBody(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeBody(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    tTimestamp m_receiveTimestamp;
    tPortIdentity m_requestingPortIdentity;
};

} // namespace nOrvPTP000
