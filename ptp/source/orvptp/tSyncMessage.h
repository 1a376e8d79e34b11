#pragma once
#include "orvptp/tTimestampMessage.h"

namespace nOrvPTP000
{

// Sync: the master's time of sending, exact for a one-step master, approximate
// for a two-step one whose Follow_Up carries the exact time.
class tSyncMessage : public tTimestampMessage
{
public:
    explicit tSyncMessage(nOrvTarn000::tStatus& a_status);
    tSyncMessage(std::unique_ptr<tMessageHeader> a_pHeader, iSerializableTarget& a_target,
                 nOrvTarn000::tStatus& a_status);

    const tTimestamp& getOriginTimestamp() const { return getBodyTimestamp(); }
    void setOriginTimestamp(const tTimestamp& a_timestamp, nOrvTarn000::tStatus& a_status)
    {
        setBodyTimestamp(a_timestamp, a_status);
    }

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
};

} // namespace nOrvPTP000
