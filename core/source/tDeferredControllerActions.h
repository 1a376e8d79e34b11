#pragma once
#include "iDeferredAction.h"

namespace zelmarPluginCore_1_0
{

// The controller's two actions: building the plug-in and tearing it down.
ZELMAR_DEFERRED_ACTION(tDeferredOnlineAction, deferredOnline);
ZELMAR_DEFERRED_ACTION(tDeferredOfflineAction, deferredOffline);

} // namespace zelmarPluginCore_1_0
