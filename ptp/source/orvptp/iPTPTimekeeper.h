#pragma once
#include "orvptp/tTimestamp.h"

namespace nOrvPTP000
{

// The clock that the engine reads, steps and disciplines.
class iPTPTimekeeper
{
public:
    virtual ~iPTPTimekeeper() {}

    // The clock's present time.
    virtual void getTime(tTimestamp& a_rTime, nOrvTarn000::tStatus& a_status) = 0;
    // Sets the clock to a_rTime.
    virtual void stepTime(const tTimestamp& a_rTime, nOrvTarn000::tStatus& a_status) = 0;
    // One measured pair: the master's time and the local time of the same instant.
    virtual void addSample(const tTimestamp& a_rMasterTime, const tTimestamp& a_rLocalTime,
                           nOrvTarn000::tStatus& a_status) = 0;
    // True holds back the port's initialized and master-clock-selected checks.
    virtual bool isPortStateHeld() = 0;
};

} // namespace nOrvPTP000
