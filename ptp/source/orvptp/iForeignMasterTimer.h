#pragma once
#include "orvptp/tPortIdentity.h"

namespace nOrvPTP000
{

// Arms the aging timer of one foreign master: a one-shot timer of
// announceReceiptTimeout announce intervals that, when it fires, has
// ageForeignMaster run for the sender on the dispatcher thread.
class iForeignMasterTimer
{
public:
    virtual ~iForeignMasterTimer() {}
    virtual void armForeignMasterTimeout(const tPortIdentity& a_sender,
                                         nOrvTarn000::tStatus& a_status) = 0;
};

} // namespace nOrvPTP000
