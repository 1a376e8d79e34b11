#include "orvptp/tNodeEventGenerators.h"
#include "orvptp/tPTPNode.h"

// What a typed setter does beyond its field: the observers hear of every
// write that worked, and the timers that run at an interval follow a new one.

namespace nOrvPTP000
{

using namespace nOrvTarn000;

u8 tPTPNode::getPortState(u16 a_portNumber, tStatus& a_status)
{
    checkPortNumber(a_portNumber, a_status);
    return currentState();
}

void tPTPNode::notifyPropertyChange(i32 a_id, tStatus& a_status, i32 a_context)
{
    if (a_status.isFatal())
    {
        return;
    }
    for (iPropertyChangeObserver* pObserver : m_propertyObservers)
    {
        pObserver->propertyChanged(a_id, a_context);
    }
}

void tPTPNode::propertyWritten(i32 a_id, tStatus& a_status, i32 a_context)
{
    notifyPropertyChange(a_id, a_status, a_context);
    if (a_status.isFatal())
    {
        return;
    }
    const bool receiptTimerArmed =
        m_portDS.getTimerId(tPortDS::kAnnounceReceiptTimer) != tPortDS::kNoTimer;
    switch (a_id)
    {
    case LOG_ANNOUNCE_INTERVAL:
        rearmPeriodic(tPortDS::kSendAnnounceTimer,
                      makeOwned<tSendAnnouncePacketEventGenerator>(a_status, this),
                      getAnnounceIntervalMs(), a_status);
        rearmPeriodic(tPortDS::kStateDecisionTimer,
                      makeOwned<tStateDecisionEventGenerator>(a_status, this),
                      getAnnounceIntervalMs(), a_status);
        if (receiptTimerArmed)
        {
            restartAnnounceReceiptTimeout(a_status);
        }
        break;
    case ANNOUNCE_RECEIPT_TIMEOUT:
        if (receiptTimerArmed)
        {
            restartAnnounceReceiptTimeout(a_status);
        }
        break;
    case LOG_SYNC_INTERVAL:
        rearmPeriodic(tPortDS::kSendSyncTimer,
                      makeOwned<tSendSyncPacketEventGenerator>(a_status, this), getSyncIntervalMs(),
                      a_status);
        break;
    default:
        break;
    }
}

} // namespace nOrvPTP000
