#pragma once
#include "orvptp/iForeignMasterTimer.h"
#include "orvptp/tBMCOutput.h"
#include "orvptp/tForeignMasterDS.h"

namespace nOrvPTP000
{

// The life of the foreign master records around the table itself: the
// admitted Announce that feeds them, the timer that ages them, and the
// removal of the current best. Each keeps the best master decisions from
// pointing at a deleted message.

// Stores an admitted Announce: the decisions take it in place of its sender's
// older message, then the table counts it, and a new record starts its aging
// timer. Should the table refuse it, the decisions keep the message they held.
void storeForeignAnnounce(std::unique_ptr<tAnnounceMessage> a_pMessage, tForeignMasterDS& a_table,
                          tBMCOutput& a_output, iForeignMasterTimer& a_timer,
                          nOrvTarn000::tStatus& a_status);

// One firing of a_sender's aging timer: the window slides on; while Announce
// messages remain in it the timer is armed again, otherwise the decisions
// drop the sender's message and the record goes. Four silent slots end a
// record.
void ageForeignMaster(const tPortIdentity& a_sender, tForeignMasterDS& a_table,
                      tBMCOutput& a_output, iForeignMasterTimer& a_timer,
                      nOrvTarn000::tStatus& a_status);

// Removes the record of the master that the port's decision names, and resets
// that decision. Nothing happens when the decision names none.
void dropBestForeignMaster(u16 a_portNumber, tForeignMasterDS& a_table, tBMCOutput& a_output,
                           nOrvTarn000::tStatus& a_status);

} // namespace nOrvPTP000
