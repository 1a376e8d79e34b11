#include "orvptp/tSyncDelayExchange.h"

#include "orvptp/iPTPTimekeeper.h"
#include "orvptp/iPTPTimestampGenerator.h"
#include "orvptp/tCurrentDS.h"
#include "orvptp/tDelayRespMessage.h"
#include "orvptp/tFollowUpMessage.h"
#include "orvptp/tProtocolDataUnit.h"
#include "orvptp/tSyncMessage.h"
#include "orvtarn/protons/status/tAssertion.h"

using nOrvTarn000::kStatusInvalidArgument;
using nOrvTarn000::tStatus;

namespace nOrvPTP000
{
namespace
{

// Keeps a_pNew in place of what a_rpHeld held before, which is deleted.
template <typename T>
void replace(T*& a_rpHeld, T* a_pNew)
{
    if (a_rpHeld != a_pNew)
    {
        delete a_rpHeld;
        a_rpHeld = a_pNew;
    }
}

// Every message handed in must have a header to be looked at; one that does
// not is a caller's fault. It is deleted and the fault reported.
bool isWellFormed(tPTPMessage* a_pMessage, tStatus& a_status)
{
    if (REQUIRE(a_pMessage != nullptr && a_pMessage->getHeader() != nullptr, kStatusInvalidArgument,
                a_status))
    {
        return true;
    }
    delete a_pMessage;
    return false;
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

tSyncDelayExchange::tSyncDelayExchange()
    : m_pSync(nullptr), m_pFollowUp(nullptr), m_pDelayResp(nullptr), m_pDelayRequestPacket(nullptr),
      m_progress(0)
{
}

tSyncDelayExchange::~tSyncDelayExchange()
{
    delete m_pSync;
    delete m_pFollowUp;
    delete m_pDelayResp;
    delete m_pDelayRequestPacket;
}

void tSyncDelayExchange::reset(tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        m_progress = 0;
    }
}

void tSyncDelayExchange::handleSync(tCurrentDS& a_rCurrentDS, iPTPTimekeeper* a_pTimekeeper,
                                    tSyncMessage* a_pMessage, const tTimestamp& a_rReceiptTime,
                                    tStatus& a_status)
{
    if (!isWellFormed(a_pMessage, a_status))
    {
        return;
    }
    // A newer Sync always wins: the Follow_Up of an older one can no longer
    // match, since the sequenceId is compared with the held Sync only.
    replace(m_pSync, a_pMessage);
    m_progress |= kSyncHeld;
    m_syncReceiptTime = a_rReceiptTime;
    if (isTwoStep(*a_pMessage))
    {
        return;
    }
    m_masterTime = a_pMessage->getOriginTimestamp();
    // The delay first, so that the offset of this round already uses it.
    completeDelay(a_rCurrentDS, a_status);
    a_rCurrentDS.updateOffsetFromMaster(m_syncReceiptTime, *a_pMessage, a_status);
    if (a_status.isNotFatal())
    {
        deliverSample(a_rCurrentDS, a_pTimekeeper, a_status);
        m_progress = 0;
    }
}

void tSyncDelayExchange::handleFollowUp(tCurrentDS& a_rCurrentDS, iPTPTimekeeper* a_pTimekeeper,
                                        tFollowUpMessage* a_pMessage, tStatus& a_status)
{
    if (isWellFormed(a_pMessage, a_status))
    {
        const bool isUsable =
            (m_progress & kSyncHeld) != 0 && m_pSync != nullptr && isTwoStep(*m_pSync) &&
            a_pMessage->getHeader()->getSequenceId() == m_pSync->getHeader()->getSequenceId();
        if (isUsable)
        {
            replace(m_pFollowUp, a_pMessage);
            m_masterTime = a_pMessage->getPreciseOriginTimestamp();
            completeDelay(a_rCurrentDS, a_status);
            a_rCurrentDS.updateOffsetFromMaster(m_syncReceiptTime, *m_pSync, *a_pMessage, a_status);
            if (a_status.isNotFatal())
            {
                deliverSample(a_rCurrentDS, a_pTimekeeper, a_status);
            }
        }
        else
        {
            delete a_pMessage;
        }
    }
    // A Follow_Up ends the round whether or not it fitted: after a stray one
    // nothing held can be trusted to belong together.
    m_progress = 0;
}

void tSyncDelayExchange::handleDelayResp(iPTPTimestampGenerator* a_pTimestampGenerator,
                                         tDelayRespMessage* a_pMessage, tStatus& a_status)
{
    if (!isWellFormed(a_pMessage, a_status))
    {
        return;
    }
    // A response to a request from a round that has ended since is of no use.
    if ((m_progress & kDelayRequestSent) == 0)
    {
        delete a_pMessage;
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
        replace(m_pDelayResp, a_pMessage);
        m_progress |= kDelayResponseMatched;
    }
    else
    {
        delete a_pMessage;
    }
}

void tSyncDelayExchange::attachDelayRequest(tProtocolDataUnit* a_pPacket, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        delete a_pPacket;
        return;
    }
    if (!REQUIRE(a_pPacket != nullptr, kStatusInvalidArgument, a_status))
    {
        return;
    }
    replace(m_pDelayRequestPacket, a_pPacket);
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
