#include "orvptp/tTimestampMessage.h"

#include "orvptp/tSetUnlessFatal.h"
#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

void tTimestampMessage::setBodyTimestamp(const tTimestamp& a_timestamp, tStatus& a_status)
{
    setUnlessFatal(m_timestamp, a_timestamp, a_status);
}

void tTimestampMessage::deserializeBody(iSerializableTarget& a_target, tStatus& a_status)
{
    m_timestamp.deserialize(a_target, a_status);
}

void tTimestampMessage::serializeBody(iSerializableTarget& a_target, tStatus& a_status)
{
    m_timestamp.serialize(a_target, a_status);
}

tTrace& tTimestampMessage::traceWith(tTrace& a_trace, const char* a_beginText, const char* a_label,
                                     const char* a_trailer, const char* a_endText)
{
    openTrace(a_trace, a_beginText);
    a_trace.write(a_label).write(m_timestamp).write(a_trailer);
    return closeTrace(a_trace, a_endText);
}

} // namespace nOrvPTP000
