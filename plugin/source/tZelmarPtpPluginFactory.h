#pragma once
#include "iZelmarPluginFactory.h"
#include "tZelmarPtpPlugin.h"

namespace nZelmarPtpPlugin_1_0
{

// Builds the PTP plug-ins of the source tZelmarPtpPlugin::kSourceName: each reads the source's file
// afresh, and runs its clock on the UDP network of the device the file names,
// or on the network the factory was given.
class tZelmarPtpPluginFactory : public zelmarPluginCore_1_0::iZelmarPluginFactory
{
public:
    tZelmarPtpPluginFactory() {}
    explicit tZelmarPtpPluginFactory(const tPtpNetwork& a_network) : m_network(a_network) {}

    std::unique_ptr<zelmarPluginCore_1_0::iZelmarPlugin>
    createPlugin(zelmarPluginCore_1_0::iZelmarController* a_pController, u32& a_rErrorCode,
                 nOrvTarn000::tStatus& a_status) override;

private:
    tPtpNetwork m_network;
};

} // namespace nZelmarPtpPlugin_1_0
