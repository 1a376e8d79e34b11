#include "tZelmarPtpPluginFactory.h"

#include "orvtarn/protons/status/tAllocation.h"
#include "tStaticAttributes.h"

namespace nZelmarPtpPlugin_1_0
{

std::unique_ptr<zelmarPluginCore_1_0::iZelmarPlugin>
tZelmarPtpPluginFactory::createPlugin(zelmarPluginCore_1_0::iZelmarController* a_pController,
                                      u32& a_rErrorCode, nOrvTarn000::tStatus& a_status)
{
    // The file is read here and let go before the plug-in runs.
    zelmarPluginCore_1_0::tStaticAttributes attributes(tZelmarPtpPlugin::kSourceName, a_status);
    std::unique_ptr<tZelmarPtpPlugin> pPlugin = nOrvTarn000::makeOwned<tZelmarPtpPlugin>(
        a_status, tZelmarPtpPlugin::kSourceName, a_pController, attributes, m_network, a_status);
    if (pPlugin != nullptr)
    {
        a_rErrorCode = pPlugin->takeErrorCode(a_status);
    }
    if (a_status.isFatal())
    {
        pPlugin.reset();
    }
    return pPlugin;
}

} // namespace nZelmarPtpPlugin_1_0
