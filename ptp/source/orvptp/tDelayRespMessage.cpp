#include "orvptp/tDelayRespMessage.h"

#include "orvptp/tSetUnlessFatal.h"
#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tDelayRespMessage::tDelayRespMessage(tStatus& a_status)
    : tPTPMessage(a_status), m_requestingPortIdentity(allPortsIdentity())
{
    prepareForSending(kMessageTypeDelayResp, a_status);
}

tDelayRespMessage::tDelayRespMessage(std::unique_ptr<tMessageHeader> a_pHeader,
                                     iSerializableTarget& a_target, tStatus& a_status)
    : tPTPMessage(std::move(a_pHeader), a_status), m_requestingPortIdentity(allPortsIdentity())
{
    parseBodyAndSuffix(a_target, a_status);
}

void tDelayRespMessage::setReceiveTimestamp(const tTimestamp& a_timestamp, tStatus& a_status)
{
    setUnlessFatal(m_receiveTimestamp, a_timestamp, a_status);
}

void tDelayRespMessage::setRequestingPortIdentity(const tPortIdentity& a_identity,
                                                  tStatus& a_status)
{
    setUnlessFatal(m_requestingPortIdentity, a_identity, a_status);
}

tTrace& tDelayRespMessage::trace(tTrace& a_trace)
{
    openTrace(a_trace, "--- Begin Delay_Resp Message ---\n");
    a_trace.write("receiveTimestamp: ").write(m_receiveTimestamp);
    a_trace.write(" requestingPortIdentity: ").write(m_requestingPortIdentity);
    return closeTrace(a_trace, "--- End Delay_Resp Message ---\n");
}

void tDelayRespMessage::deserializeBody(iSerializableTarget& a_target, tStatus& a_status)
{
    m_receiveTimestamp.deserialize(a_target, a_status);
    m_requestingPortIdentity.deserialize(a_target, a_status);
}

void tDelayRespMessage::serializeBody(iSerializableTarget& a_target, tStatus& a_status)
{
    m_receiveTimestamp.serialize(a_target, a_status);
    m_requestingPortIdentity.serialize(a_target, a_status);
}

} // namespace nOrvPTP000
