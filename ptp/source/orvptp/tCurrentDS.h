#pragma once
#include "orvptp/tResettableDataSet.h"
#include "orvptp/tTimeInterval.h"
#include "orvptp/tTimestamp.h"

namespace nOrvPTP000
{

class tSyncMessage;
class tFollowUpMessage;
class tDelayRespMessage;

struct tCurrentDSValues
{
    u16 m_stepsRemoved;
    tTimeInterval m_offsetFromMaster;
    tTimeInterval m_meanPathDelay;
};

// Where the clock stands against its master: the distance in steps, and the
// last measured offset and mean path delay. All zero at construction.
//
// The update operations hold the arithmetic of one measurement; t1 is the
// master's sending time of the Sync, t2 its local receive time, t3 the local
// sending time of the Delay_Req and t4 the master's receive time of it. A
// message's correction counts in whole nanoseconds, rounded downwards.
class tCurrentDS : public tResettableDataSet<tCurrentDSValues>
{
public:
    tCurrentDS();

    u16 getStepsRemoved() const { return m_values.m_stepsRemoved; }
    tTimeInterval getOffsetFromMaster() const { return m_values.m_offsetFromMaster; }
    tTimeInterval getMeanPathDelay() const { return m_values.m_meanPathDelay; }

    void setStepsRemoved(u16 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tCurrentDSValues::m_stepsRemoved, a_value, a_status);
    }
    void setOffsetFromMaster(const tTimeInterval& a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tCurrentDSValues::m_offsetFromMaster, a_value, a_status);
    }
    // A path delay is never negative: a value below zero is ignored, and that
    // is no failure.
    void setMeanPathDelay(const tTimeInterval& a_value, nOrvTarn000::tStatus& a_status);

    // One-step master: offset = t2 - t1 - meanPathDelay - the Sync's
    // correction, with t1 the Sync's originTimestamp. An offset that
    // saturates stays at its limit.
    void updateOffsetFromMaster(const tTimestamp& a_syncReceiptTime, const tSyncMessage& a_sync,
                                nOrvTarn000::tStatus& a_status);
    // Two-step master: t1 is the Follow_Up's preciseOriginTimestamp, and the
    // corrections of both messages count.
    void updateOffsetFromMaster(const tTimestamp& a_syncReceiptTime, const tSyncMessage& a_sync,
                                const tFollowUpMessage& a_followUp, nOrvTarn000::tStatus& a_status);
    // One-step master: meanPathDelay = ((t2 - t3) + (t4 - t1) - corrections) / 2,
    // with t1 the Sync's originTimestamp and t4 the Delay_Resp's
    // receiveTimestamp. A negative result is stored as 0. Each exchange
    // replaces the value; there is no averaging.
    void updateMeanPathDelay(const tTimestamp& a_syncReceiptTime,
                             const tTimestamp& a_delayRequestSendTime, const tSyncMessage& a_sync,
                             const tDelayRespMessage& a_delayResp, nOrvTarn000::tStatus& a_status);
    // Two-step master: t1 from the Follow_Up, its correction counted as well.
    void updateMeanPathDelay(const tTimestamp& a_syncReceiptTime,
                             const tTimestamp& a_delayRequestSendTime, const tSyncMessage& a_sync,
                             const tFollowUpMessage& a_followUp,
                             const tDelayRespMessage& a_delayResp, nOrvTarn000::tStatus& a_status);

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;

private:
    // offset := a_offset less the mean path delay and a_corrections, each
    // subtraction skipped once the offset sits at a saturation limit.
    void storeOffset(tTimeInterval a_offset, const tTimeInterval* a_pCorrections, u32 a_count);
    // meanPathDelay := (a_sum less a_corrections) / 2, and 0 below zero.
    void storeMeanPathDelay(tTimeInterval a_sum, const tTimeInterval* a_pCorrections, u32 a_count);
};

} // namespace nOrvPTP000
