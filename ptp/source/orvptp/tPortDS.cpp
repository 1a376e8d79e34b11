#include "orvptp/tPortDS.h"

#include "orvptp/tDataSetTrace.h"
#include "orvtarn/protons/status/tAssertion.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tPortDS::tPortDS(const tClockIdentity& a_clockIdentity)
    : tResettableDataSet(tPortDSValues{tPortIdentity(a_clockIdentity, kPortNumber),
                                       kPortStateInitializing, 0, tTimeInterval(), 1, 3, 0,
                                       kDelayMechanismEndToEnd, 0, kVersionNumber}),
      m_sequenceIds{0, 0, 0}
{
    clearTimerIds();
}

u32 tPortDS::getTimerId(u32 a_index) const
{
    if (!REQUIRE(a_index < kTimerCount))
    {
        return kNoTimer;
    }
    return m_timerIds[a_index];
}

void tPortDS::setTimerId(u32 a_index, u32 a_id, tStatus& a_status)
{
    if (a_status.isFatal() ||
        !REQUIRE(a_index < kTimerCount, nOrvTarn000::kStatusInvalidArgument, a_status))
    {
        return;
    }
    m_timerIds[a_index] = a_id;
}

void tPortDS::clearTimerIds()
{
    for (u32& id : m_timerIds)
    {
        id = kNoTimer;
    }
}

u16 tPortDS::getSequenceId(u32 a_kind) const
{
    if (!REQUIRE(a_kind < kSequenceCount))
    {
        return 0;
    }
    return m_sequenceIds[a_kind];
}

void tPortDS::nextSequenceId(u32 a_kind)
{
    if (REQUIRE(a_kind < kSequenceCount))
    {
        m_sequenceIds[a_kind] = static_cast<u16>(m_sequenceIds[a_kind] + 1);
    }
}

tTrace& tPortDS::trace(tTrace& a_trace)
{
    traceMember(a_trace, "portIdentity: ", m_values.m_portIdentity);
    traceUnsigned(a_trace, " portState: ", m_values.m_portState);
    traceSigned(a_trace, " logMinDelayReqInterval: ", m_values.m_logMinDelayReqInterval);
    traceMember(a_trace, " peerMeanPathDelay: ", m_values.m_peerMeanPathDelay);
    traceSigned(a_trace, " logAnnounceInterval: ", m_values.m_logAnnounceInterval);
    traceUnsigned(a_trace, " announceReceiptTimeout: ", m_values.m_announceReceiptTimeout);
    traceSigned(a_trace, " logSyncInterval: ", m_values.m_logSyncInterval);
    traceUnsigned(a_trace, " delayMechanism: ", m_values.m_delayMechanism);
    traceSigned(a_trace, " logMinPdelayReqInterval: ", m_values.m_logMinPdelayReqInterval);
    return traceUnsigned(a_trace, " versionNumber: ", m_values.m_versionNumber);
}

} // namespace nOrvPTP000
