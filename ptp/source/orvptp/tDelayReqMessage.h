#pragma once
#include "orvptp/tTimestampMessage.h"

namespace nOrvPTP000
{

// Delay_Req: a slave's request for the master's receive time, carrying the
// slave's approximate time of sending.
class tDelayReqMessage : public tTimestampMessage
{
public:
    explicit tDelayReqMessage(nOrvTarn000::tStatus& a_status);
    tDelayReqMessage(std::unique_ptr<tMessageHeader> a_pHeader, iSerializableTarget& a_target,
                     nOrvTarn000::tStatus& a_status);

    const tTimestamp& getOriginTimestamp() const { return getBodyTimestamp(); }
    void setOriginTimestamp(const tTimestamp& a_timestamp, nOrvTarn000::tStatus& a_status)
    {
        setBodyTimestamp(a_timestamp, a_status);
    }

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
};

} // namespace nOrvPTP000
