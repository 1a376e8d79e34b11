#pragma once
#include "orvptp/tTimestampMessage.h"

namespace nOrvPTP000
{

// Follow_Up: the exact sending time of the Sync with the same sequenceId.
class tFollowUpMessage : public tTimestampMessage
{
public:
    explicit tFollowUpMessage(nOrvTarn000::tStatus& a_status);
    tFollowUpMessage(std::unique_ptr<tMessageHeader> a_pHeader, iSerializableTarget& a_target,
                     nOrvTarn000::tStatus& a_status);

    const tTimestamp& getPreciseOriginTimestamp() const { return getBodyTimestamp(); }
    void setPreciseOriginTimestamp(const tTimestamp& a_timestamp, nOrvTarn000::tStatus& a_status)
    {
        setBodyTimestamp(a_timestamp, a_status);
    }

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
};

} // namespace nOrvPTP000
