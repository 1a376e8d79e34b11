#include "orvptp/tSyncMessage.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tSyncMessage::tSyncMessage(tStatus& a_status) : tTimestampMessage(a_status)
{
    prepareForSending(kMessageTypeSync, a_status);
}

tSyncMessage::tSyncMessage(std::unique_ptr<tMessageHeader> a_pHeader, iSerializableTarget& a_target,
                           tStatus& a_status)
    : tTimestampMessage(std::move(a_pHeader), a_status)
{
    parseBodyAndSuffix(a_target, a_status);
}

tTrace& tSyncMessage::trace(tTrace& a_trace)
{
    return traceWith(a_trace, "--- Begin Sync Message ---\n", "originTimestamp: ", "\n",
                     "--- End Sync Message ---\n");
}

} // namespace nOrvPTP000
