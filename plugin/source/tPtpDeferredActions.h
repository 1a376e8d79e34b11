#pragma once
#include "iDeferredAction.h"

namespace nZelmarPtpPlugin_1_0
{

// The plug-in's work for the deferred-action thread, asked for on the
// dispatcher thread and needing that thread's answers.
ZELMAR_DEFERRED_ACTION(tPtpInitializeClockAction, initializeClock);
ZELMAR_DEFERRED_ACTION(tPtpCalibrateClockAction, calibrateClock);
ZELMAR_DEFERRED_ACTION(tPtpPersistStateAction, persistState);
ZELMAR_DEFERRED_ACTION(tPtpUpdateUtcOffsetAction, updateUtcOffset);

} // namespace nZelmarPtpPlugin_1_0
