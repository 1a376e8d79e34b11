#include "orvptp/tDelayReqMessage.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tDelayReqMessage::tDelayReqMessage(tStatus& a_status) : tTimestampMessage(a_status)
{
    prepareForSending(kMessageTypeDelayReq, a_status);
}

tDelayReqMessage::tDelayReqMessage(std::unique_ptr<tMessageHeader> a_pHeader,
                                   iSerializableTarget& a_target, tStatus& a_status)
    : tTimestampMessage(std::move(a_pHeader), a_status)
{
    parseBodyAndSuffix(a_target, a_status);
}

tTrace& tDelayReqMessage::trace(tTrace& a_trace)
{
    return traceWith(a_trace, "--- Begin Delay_Req Message ---\n", "originTimestamp: ", "",
                     "--- End Delay_Req Message ---\n");
}

} // namespace nOrvPTP000
