#include "orvptp/tForeignMasterAging.h"

using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

void storeForeignAnnounce(std::unique_ptr<tAnnounceMessage> a_pMessage, tForeignMasterDS& a_table,
                          tBMCOutput& a_output, iForeignMasterTimer& a_timer, tStatus& a_status)
{
    if (a_status.isFatal() || a_pMessage == nullptr || a_pMessage->getHeader() == nullptr)
    {
        return;
    }
    const tPortIdentity sender = a_pMessage->getHeader()->getSourcePortIdentity();
    // The decisions borrow the message that the table is about to own.
    const tAnnounceMessage* pMessage = a_pMessage.get();
    tStatus readStatus;
    const tAnnounceMessage* pHeld = a_output.getDecision(1, readStatus).m_pMessage;
    a_output.replaceMessage(pMessage, a_status);
    const bool replaced = a_output.getDecision(1, readStatus).m_pMessage == pMessage;

    const i32 created = a_table.addAnnounce(std::move(a_pMessage), a_status);
    if (a_status.isFatal())
    {
        // The table deleted the refused message and left the record's older
        // one in place: the decision points at that one again.
        if (replaced)
        {
            tStatus restoreStatus;
            tStateDecision first = a_output.getDecision(1, restoreStatus);
            first.m_pMessage = pHeld;
            a_output.setDecision(1, first, restoreStatus);
        }
        return;
    }
    if (created == 1)
    {
        a_timer.armForeignMasterTimeout(sender, a_status);
    }
}

void ageForeignMaster(const tPortIdentity& a_sender, tForeignMasterDS& a_table,
                      tBMCOutput& a_output, iForeignMasterTimer& a_timer, tStatus& a_status)
{
    a_table.advanceWindow(a_sender, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    if (a_table.getAnnounceCount(a_sender, a_status) != 0)
    {
        a_timer.armForeignMasterTimeout(a_sender, a_status);
        return;
    }
    if (a_status.isFatal())
    {
        return;
    }
    a_output.resetFrom(a_sender);
    a_table.removeRecord(a_sender, a_status);
}

void dropBestForeignMaster(u16 a_portNumber, tForeignMasterDS& a_table, tBMCOutput& a_output,
                           tStatus& a_status)
{
    const tAnnounceMessage* pBest = a_output.getDecision(a_portNumber, a_status).m_pMessage;
    if (a_status.isFatal() || pBest == nullptr || pBest->getHeader() == nullptr)
    {
        return;
    }
    // The sender is copied first: removing the record deletes the message.
    const tPortIdentity sender = pBest->getHeader()->getSourcePortIdentity();
    a_output.resetDecision(a_portNumber, a_status);
    a_table.removeRecord(sender, a_status);
}

} // namespace nOrvPTP000
