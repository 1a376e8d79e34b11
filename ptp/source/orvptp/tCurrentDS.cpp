#include "orvptp/tCurrentDS.h"

#include "orvptp/tDataSetTrace.h"
#include "orvptp/tDelayRespMessage.h"
#include "orvptp/tFollowUpMessage.h"
#include "orvptp/tSyncMessage.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{
namespace
{

// The correctionField is scaled by 2^16 like a tTimeInterval; only its whole
// nanoseconds count, rounded towards minus infinity by the arithmetic shift.
// A message without a header (its construction failed) corrects nothing.
tTimeInterval correctionOf(const tPTPMessage& a_message)
{
    const tMessageHeader* pHeader = a_message.getHeader();
    if (pHeader == nullptr)
    {
        return tTimeInterval();
    }
    return tTimeInterval(pHeader->getCorrectionField() >> 16);
}

bool isSaturated(const tTimeInterval& a_interval)
{
    return a_interval == tTimeInterval::kMaxScaled || a_interval == tTimeInterval::kMinScaled;
}

} // namespace

tCurrentDS::tCurrentDS() : tResettableDataSet(tCurrentDSValues{0, tTimeInterval(), tTimeInterval()})
{
}

void tCurrentDS::setMeanPathDelay(const tTimeInterval& a_value, tStatus& a_status)
{
    if (a_value.getScaledNanoseconds() >= 0)
    {
        set(&tCurrentDSValues::m_meanPathDelay, a_value, a_status);
    }
}

void tCurrentDS::updateOffsetFromMaster(const tTimestamp& a_syncReceiptTime,
                                        const tSyncMessage& a_sync, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    const tTimeInterval corrections[] = {correctionOf(a_sync)};
    storeOffset(a_syncReceiptTime - a_sync.getOriginTimestamp(), corrections, 1);
}

void tCurrentDS::updateOffsetFromMaster(const tTimestamp& a_syncReceiptTime,
                                        const tSyncMessage& a_sync,
                                        const tFollowUpMessage& a_followUp, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    const tTimeInterval corrections[] = {correctionOf(a_sync), correctionOf(a_followUp)};
    storeOffset(a_syncReceiptTime - a_followUp.getPreciseOriginTimestamp(), corrections, 2);
}

void tCurrentDS::updateMeanPathDelay(const tTimestamp& a_syncReceiptTime,
                                     const tTimestamp& a_delayRequestSendTime,
                                     const tSyncMessage& a_sync,
                                     const tDelayRespMessage& a_delayResp, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    const tTimeInterval corrections[] = {correctionOf(a_sync), correctionOf(a_delayResp)};
    storeMeanPathDelay((a_syncReceiptTime - a_delayRequestSendTime) +
                           (a_delayResp.getReceiveTimestamp() - a_sync.getOriginTimestamp()),
                       corrections, 2);
}

void tCurrentDS::updateMeanPathDelay(const tTimestamp& a_syncReceiptTime,
                                     const tTimestamp& a_delayRequestSendTime,
                                     const tSyncMessage& a_sync, const tFollowUpMessage& a_followUp,
                                     const tDelayRespMessage& a_delayResp, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    const tTimeInterval corrections[] = {correctionOf(a_sync), correctionOf(a_followUp),
                                         correctionOf(a_delayResp)};
    storeMeanPathDelay(
        (a_syncReceiptTime - a_delayRequestSendTime) +
            (a_delayResp.getReceiveTimestamp() - a_followUp.getPreciseOriginTimestamp()),
        corrections, 3);
}

void tCurrentDS::storeOffset(tTimeInterval a_offset, const tTimeInterval* a_pCorrections,
                             u32 a_count)
{
    // A saturated offset says only "too far to tell"; subtracting from it
    // would turn that into a wrong finite number.
    if (!isSaturated(a_offset))
    {
        a_offset = a_offset - m_values.m_meanPathDelay;
    }
    for (u32 i = 0; i < a_count; ++i)
    {
        if (!isSaturated(a_offset))
        {
            a_offset = a_offset - a_pCorrections[i];
        }
    }
    m_values.m_offsetFromMaster = a_offset;
}

void tCurrentDS::storeMeanPathDelay(tTimeInterval a_sum, const tTimeInterval* a_pCorrections,
                                    u32 a_count)
{
    for (u32 i = 0; i < a_count; ++i)
    {
        a_sum = a_sum - a_pCorrections[i];
    }
    const tTimeInterval delay = a_sum / tTimeInterval(2);
    m_values.m_meanPathDelay = delay.getScaledNanoseconds() < 0 ? tTimeInterval() : delay;
}

tTrace& tCurrentDS::trace(tTrace& a_trace)
{
    traceUnsigned(a_trace, "stepsRemoved: ", m_values.m_stepsRemoved);
    traceMember(a_trace, "offsetFromMaster: ", m_values.m_offsetFromMaster);
    return traceMember(a_trace, " meanPathDelay: ", m_values.m_meanPathDelay);
}

} // namespace nOrvPTP000
