#pragma once
#include "orvptp/tTimestamp.h"
#include "tTimeValue.h"

namespace nZelmarPtpPlugin_1_0
{

// The crossing between the PTP stack's timestamps and the plug-in core's time
// values. Seconds beyond what signed 64-bit nanoseconds hold are held at the
// largest such time; a negative time value becomes the timestamp 0.
zelmarPluginCore_1_0::tTimeValue toTimeValue(const nOrvPTP000::tTimestamp& a_time);
nOrvPTP000::tTimestamp toTimestamp(const zelmarPluginCore_1_0::tTimeValue& a_time);

// A time of the system clock in the timekeeper's time. a_timekeeper was read
// between the system clock's readings a_systemBefore and a_systemAfter, and
// counts as taken at their midpoint: the difference between the two clocks
// there is added to a_systemTime.
nOrvPTP000::tTimestamp
systemToTimekeeperTime(const zelmarPluginCore_1_0::tTimeValue& a_systemTime,
                       const zelmarPluginCore_1_0::tTimeValue& a_systemBefore,
                       const nOrvPTP000::tTimestamp& a_timekeeper,
                       const zelmarPluginCore_1_0::tTimeValue& a_systemAfter);

} // namespace nZelmarPtpPlugin_1_0
