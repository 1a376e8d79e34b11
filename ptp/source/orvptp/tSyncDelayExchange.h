#pragma once
#include "orvptp/tDelayRespMessage.h"
#include "orvptp/tFollowUpMessage.h"
#include "orvptp/tProtocolDataUnit.h"
#include "orvptp/tSyncMessage.h"

#include <memory>

namespace nOrvPTP000
{

class iPTPTimekeeper;
class iPTPTimestampGenerator;
class tCurrentDS;

// Collects the messages and times of a slave's measurement rounds and decides
// when offsetFromMaster and meanPathDelay of tCurrentDS are worked out.
//
// A round ends at a one-step Sync, or at the Follow_Up that matches a two-step
// Sync. Each finished round hands one pair (master time, corrected local time)
// to the timekeeper and starts the next round from nothing. meanPathDelay is
// recomputed only in a round in which a Sync is held, a Delay_Req was sent and
// its Delay_Resp matched; otherwise the offset uses the delay already stored.
//
// Every message and packet handed in becomes the exchange's. What it keeps
// replaces the one kept before; what it cannot use it drops at once. reset
// ends the round but keeps the stored objects until they are replaced.
//
// Not thread-safe: all calls come from the one thread that runs the node.
class tSyncDelayExchange
{
public:
    tSyncDelayExchange();

    tSyncDelayExchange(const tSyncDelayExchange&) = delete;
    tSyncDelayExchange& operator=(const tSyncDelayExchange&) = delete;

    // Forgets the round in progress: a held Sync, a pending Delay_Req and a
    // matched Delay_Resp all count as never seen. Nothing happens when the
    // status is fatal.
    void reset(nOrvTarn000::tStatus& a_status);

    // An accepted Sync, received at a_rReceiptTime. A one-step Sync finishes
    // the round at once; a two-step one waits for its Follow_Up.
    void handleSync(tCurrentDS& a_rCurrentDS, iPTPTimekeeper* a_pTimekeeper,
                    std::unique_ptr<tSyncMessage> a_pMessage, const tTimestamp& a_rReceiptTime,
                    nOrvTarn000::tStatus& a_status);

    // An accepted Follow_Up. It finishes the round when it carries the
    // sequenceId of the held two-step Sync; any other one is dropped. Either
    // way the round ends here.
    void handleFollowUp(tCurrentDS& a_rCurrentDS, iPTPTimekeeper* a_pTimekeeper,
                        std::unique_ptr<tFollowUpMessage> a_pMessage,
                        nOrvTarn000::tStatus& a_status);

    // An accepted Delay_Resp to the last Delay_Req. It is kept only while that
    // Delay_Req is pending in this round and its transmit time is known.
    void handleDelayResp(iPTPTimestampGenerator* a_pTimestampGenerator,
                         std::unique_ptr<tDelayRespMessage> a_pMessage,
                         nOrvTarn000::tStatus& a_status);

    // The packet of the Delay_Req just sent; its transmit time is looked up by
    // it when the response arrives. With a fatal status the packet is dropped
    // and nothing changes.
    void attachDelayRequest(std::unique_ptr<tProtocolDataUnit> a_pPacket,
                            nOrvTarn000::tStatus& a_status);

private:
    enum : u32
    {
        kSyncHeld = 1,
        kDelayRequestSent = 2,
        kDelayResponseMatched = 4,
        kDelayExchangeComplete = kSyncHeld | kDelayRequestSent | kDelayResponseMatched
    };

    // meanPathDelay from the held Sync (and Follow_Up) and the last delay
    // exchange, when all of them belong to this round.
    void completeDelay(tCurrentDS& a_rCurrentDS, nOrvTarn000::tStatus& a_status);
    // Hands T1 and the local time that corresponds to it to the timekeeper.
    void deliverSample(const tCurrentDS& a_rCurrentDS, iPTPTimekeeper* a_pTimekeeper,
                       nOrvTarn000::tStatus& a_status);

    std::unique_ptr<tSyncMessage> m_pSync;
    std::unique_ptr<tFollowUpMessage> m_pFollowUp;
    std::unique_ptr<tDelayRespMessage> m_pDelayResp;
    std::unique_ptr<tProtocolDataUnit> m_pDelayRequestPacket;
    // T1: when the master sent the Sync.
    tTimestamp m_masterTime;
    // T2: when the Sync arrived here.
    tTimestamp m_syncReceiptTime;
    // T2 less the path delay and the corrections, or plain T2 when the offset
    // is beyond measure; the local time that belongs to T1.
    tTimestamp m_correctedLocalTime;
    // T3: when the last Delay_Req whose response matched left here.
    tTimestamp m_delayRequestSendTime;
    u32 m_progress;
};

} // namespace nOrvPTP000
