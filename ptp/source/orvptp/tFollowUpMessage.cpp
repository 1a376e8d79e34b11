#include "orvptp/tFollowUpMessage.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tFollowUpMessage::tFollowUpMessage(tStatus& a_status) : tTimestampMessage(a_status)
{
    prepareForSending(kMessageTypeFollowUp, a_status);
}

tFollowUpMessage::tFollowUpMessage(std::unique_ptr<tMessageHeader> a_pHeader,
                                   iSerializableTarget& a_target, tStatus& a_status)
    : tTimestampMessage(std::move(a_pHeader), a_status)
{
    parseBodyAndSuffix(a_target, a_status);
}

tTrace& tFollowUpMessage::trace(tTrace& a_trace)
{
    return traceWith(a_trace, "--- Begin Follow_Up Message ---\n", "preciseOriginTimestamp: ", "",
                     "--- End Follow_Up Message ---\n");
}

} // namespace nOrvPTP000
