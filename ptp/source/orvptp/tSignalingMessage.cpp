#include "orvptp/tSignalingMessage.h"

#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tSignalingMessage::tSignalingMessage(std::unique_ptr<tMessageHeader> a_pHeader,
                                     iSerializableTarget& a_target, tStatus& a_status)
    : tPTPMessage(std::move(a_pHeader), a_status), m_targetPortIdentity(allPortsIdentity())
{
    parseBodyAndSuffix(a_target, a_status);
}

tTrace& tSignalingMessage::trace(tTrace& a_trace)
{
    openTrace(a_trace, "--- Begin Signaling Message ---\n");
    a_trace.write("targetPortIdentity: ").write(m_targetPortIdentity);
    return closeTrace(a_trace, "--- End Signaling Message ---\n");
}

void tSignalingMessage::deserializeBody(iSerializableTarget& a_target, tStatus& a_status)
{
    m_targetPortIdentity.deserialize(a_target, a_status);
}

void tSignalingMessage::serializeBody(iSerializableTarget& a_target, tStatus& a_status)
{
    m_targetPortIdentity.serialize(a_target, a_status);
}

} // namespace nOrvPTP000
