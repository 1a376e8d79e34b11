#include "orvptp/tSyncDelayExchange.h"

#include "orvptp/iPTPTimekeeper.h"
#include "orvptp/iPTPTimestampGenerator.h"
#include "orvptp/tCurrentDS.h"
#include "orvtarn/protons/status/tAssertion.h"

using nOrvTarn000::kStatusInvalidArgument;
using nOrvTarn000::tStatus;

namespace nOrvPTP000
{
namespace
{

// Every message handed in must have a header to be looked at; one that does
// not is a caller's fault, reported here and then dropped.
bool isWellFormed(const tPTPMessage* a_pMessage, tStatus& a_status)
{
    return REQUIRE(a_pMessage != nullptr && a_pMessage->getHeader() != nullptr,
                   kStatusInvalidArgument, a_status);
}

bool isTwoStep(const tPTPMessage& a_message)
{
    return a_message.getHeader()->getTwoStepFlag();
}

bool isSaturated(const tTimeInterval& a_interval)
{
    return a_interval == tTimeInterval::kMaxScaled || a_interval == tTimeInterval::kMinScaled;
}

} // namespace

tSyncDelayExchange::tSyncDelayExchange() : m_progress(0) {}

void tSyncDelayExchange::reset(tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        m_progress = 0;
    }
}

void tSyncDelayExchange::handleSync(tCurrentDS& a_rCurrentDS, iPTPTimekeeper* a_pTimekeeper,
                                    std::unique_ptr<tSyncMessage> a_pMessage,
                                    const tTimestamp& a_rReceiptTime, tStatus& a_status)
{
    if (!isWellFormed(a_pMessage.get(), a_status))
    {
        return;
    }
    // A newer Sync always wins: the Follow_Up of an older one can no longer
    // match, since the sequenceId is compared with the held Sync only.
    m_pSync = std::move(a_pMessage);
    m_progress |= kSyncHeld;
    m_syncReceiptTime = a_rReceiptTime;
    if (isTwoStep(*m_pSync))
    {
        return;
    }
    m_masterTime = m_pSync->getOriginTimestamp();
    // The delay first, so that the offset of this round already uses it.
    completeDelay(a_rCurrentDS, a_status);
    a_rCurrentDS.updateOffsetFromMaster(m_syncReceiptTime, *m_pSync, a_status);
    if (a_status.isNotFatal())
    {
        deliverSample(a_rCurrentDS, a_pTimekeeper, a_status);
        m_progress = 0;
    }
}

void tSyncDelayExchange::handleFollowUp(tCurrentDS& a_rCurrentDS, iPTPTimekeeper* a_pTimekeeper,
                                        std::unique_ptr<tFollowUpMessage> a_pMessage,
                                        tStatus& a_status)
{
    if (isWellFormed(a_pMessage.get(), a_status))
    {
        const bool isUsable =
            (m_progress & kSyncHeld) != 0 && m_pSync != nullptr && isTwoStep(*m_pSync) &&
            a_pMessage->getHeader()->getSequenceId() == m_pSync->getHeader()->getSequenceId();
        if (isUsable)
        {
            m_pFollowUp = std::move(a_pMessage);
            m_masterTime = m_pFollowUp->getPreciseOriginTimestamp();
            completeDelay(a_rCurrentDS, a_status);
            a_rCurrentDS.updateOffsetFromMaster(m_syncReceiptTime, *m_pSync, *m_pFollowUp,
                                                a_status);
            if (a_status.isNotFatal())
            {
                deliverSample(a_rCurrentDS, a_pTimekeeper, a_status);
            }
        }
    }
    // A Follow_Up ends the round whether or not it fitted: after a stray one
    // nothing held can be trusted to belong together.
    m_progress = 0;
}

void tSyncDelayExchange::handleDelayResp(iPTPTimestampGenerator* a_pTimestampGenerator,
                                         std::unique_ptr<tDelayRespMessage> a_pMessage,
                                         tStatus& a_status)
{
    // A response to a request from a round that has ended since is of no use.
    if (!isWellFormed(a_pMessage.get(), a_status) || (m_progress & kDelayRequestSent) == 0)
    {
        return;
    }
    tTimestamp sendTime;
    if (m_pDelayRequestPacket != nullptr &&
        REQUIRE(a_pTimestampGenerator != nullptr, kStatusInvalidArgument, a_status) &&
        a_pTimestampGenerator->getTransmitTimestamp(*m_pDelayRequestPacket, sendTime, a_status) &&
        a_status.isNotFatal())
    {
        // T3 and T4 change together, so they always stem from one exchange.
        m_delayRequestSendTime = sendTime;
        m_pDelayResp = std::move(a_pMessage);
        m_progress |= kDelayResponseMatched;
    }
}

void tSyncDelayExchange::attachDelayRequest(std::unique_ptr<tProtocolDataUnit> a_pPacket,
                                            tStatus& a_status)
{
    if (a_status.isFatal() || !REQUIRE(a_pPacket != nullptr, kStatusInvalidArgument, a_status))
    {
        return;
    }
    m_pDelayRequestPacket = std::move(a_pPacket);
    m_progress |= kDelayRequestSent;
}

void tSyncDelayExchange::completeDelay(tCurrentDS& a_rCurrentDS, tStatus& a_status)
{
    if (m_progress != kDelayExchangeComplete)
    {
        return;
    }
    // Only called once the Sync's master time is known: for a two-step Sync
    // that is after its Follow_Up has been stored.
    if (isTwoStep(*m_pSync))
    {
        a_rCurrentDS.updateMeanPathDelay(m_syncReceiptTime, m_delayRequestSendTime, *m_pSync,
                                         *m_pFollowUp, *m_pDelayResp, a_status);
    }
    else
    {
        a_rCurrentDS.updateMeanPathDelay(m_syncReceiptTime, m_delayRequestSendTime, *m_pSync,
                                         *m_pDelayResp, a_status);
    }
}

void tSyncDelayExchange::deliverSample(const tCurrentDS& a_rCurrentDS,
                                       iPTPTimekeeper* a_pTimekeeper, tStatus& a_status)
{
    const tTimeInterval offset = a_rCurrentDS.getOffsetFromMaster();
    // A saturated offset carries no distance that could be applied to T1;
    // the plain receipt time is the best local time there is.
    m_correctedLocalTime = isSaturated(offset) ? m_syncReceiptTime : m_masterTime + offset;
    if (REQUIRE(a_pTimekeeper != nullptr, kStatusInvalidArgument, a_status))
    {
        a_pTimekeeper->addSample(m_masterTime, m_correctedLocalTime, a_status);
    }
}

} // namespace nOrvPTP000
