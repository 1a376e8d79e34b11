#pragma once
#include "orvptp/tPTPMessage.h"

namespace nOrvPTP000
{

// Signaling: parsed on reception so that its datagram is accounted for, and
// otherwise ignored; this clock never sends one. 44 octets without TLVs.
class tSignalingMessage : public tPTPMessage
{
public:
    enum : u16
    {
        kBodyLength = tPortIdentity::kLength
    };

    tSignalingMessage(std::unique_ptr<tMessageHeader> a_pHeader, iSerializableTarget& a_target,
                      nOrvTarn000::tStatus& a_status);

    const tPortIdentity& getTargetPortIdentity() const { return m_targetPortIdentity; }

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    u16 getSize() override { return sizeWithBody(kBodyLength); }
    void deserializeBody(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeBody(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    tPortIdentity m_targetPortIdentity;
};

} // namespace nOrvPTP000
