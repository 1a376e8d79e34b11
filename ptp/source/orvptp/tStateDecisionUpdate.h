#pragma once
#include "orvptp/tStateDecision.h"
#include "orvtarn/protons/status/tStatus.h"

namespace nOrvPTP000
{

class tCurrentDS;
class tDefaultDS;
class tParentDS;
class tTimePropertiesDS;

// The data-set update that goes with a state decision of IEEE 1588-2008:
//
// - M1, M2: the local clock is its own parent and grandmaster, zero steps
//   away; the time properties in force become the local ones, where a clock
//   that does not keep the PTP timescale announces no leap second.
// - S1: the sender of a_pMessage is the parent, one step nearer the
//   grandmaster than this clock; the grandmaster and the time properties are
//   those that a_pMessage carries.
// - M3, P1, P2: nothing changes.
//
// The data sets are written directly, so that no property observer hears of
// it. An unknown code is reported as a contract failure and changes nothing;
// S1 without a message is refused with kStatusInvalidArgument.
void applyStateDecisionUpdate(i32 a_code, const tAnnounceMessage* a_pMessage,
                              const tDefaultDS& a_defaultDS, tCurrentDS& a_currentDS,
                              tParentDS& a_parentDS, tTimePropertiesDS& a_timePropertiesDS,
                              const tTimePropertiesDS& a_localTimePropertiesDS,
                              nOrvTarn000::tStatus& a_status);

} // namespace nOrvPTP000
