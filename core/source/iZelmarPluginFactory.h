#pragma once
#include "iZelmarPlugin.h"

#include <memory>

namespace zelmarPluginCore_1_0
{

// Builds the plug-ins of one time source, each time it goes online. It is
// called on the deferred-action thread with no lock held, and it may take
// long: it builds and configures a whole plug-in, whose constructor calls
// back into the controller's accessors.
class iZelmarPluginFactory
{
public:
    virtual ~iZelmarPluginFactory() {}

    // A plug-in for a_pController; null with a fatal status when none could
    // be built. a_rErrorCode receives the plug-in's error code, also that of
    // a plug-in whose construction failed.
    virtual std::unique_ptr<iZelmarPlugin> createPlugin(iZelmarController* a_pController,
                                                        u32& a_rErrorCode, tStatus& a_status) = 0;
};

} // namespace zelmarPluginCore_1_0
