#include "zm_ptp.h"

#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tAssertion.h"
#include "tDiagraRuntime.h"
#include "tZelmarPtpPluginFactory.h"
#include "tZelmarPtpPropertyNode.h"
#include "tZelmarSource.h"

using nOrvTarn000::tStatus;
using nZelmarPtpPlugin_1_0::tZelmarPtpPropertyNode;

namespace
{

// Builds the plug-ins of every source the library makes.
nZelmarPtpPlugin_1_0::tZelmarPtpPluginFactory s_factory;

typedef void (tZelmarPtpPropertyNode::*tPropertyOperation)(u32, void*, tStatus&);

int32_t callPropertyNode(void* a_session, uint32_t a_key, void* a_pProperty,
                         tPropertyOperation a_operation)
{
    tStatus status;
    REQUIRE(NULL == a_session, nOrvTarn000::kStatusInternalError, status);
    REQUIRE(NULL != a_pProperty, nOrvTarn000::kStatusInvalidArgument, status);
    // The node holds the registry, and the plug-in once it asked for it,
    // until it goes.
    tZelmarPtpPropertyNode node(status);
    (node.*a_operation)(a_key, a_pProperty, status);
    return status.getCode();
}

} // namespace

int32_t zm_ptp_openSession()
{
    tStatus status;
    return status.getCode();
}

void zm_ptp_closeSession() {}

std::shared_ptr<nZelmar::iTimeSource> zm_ptp_getTimeSource()
{
    tStatus status;
    std::shared_ptr<nZelmar::iTimeSource> pSource(
        new (status) zelmarPluginCore_1_0::tZelmarSource(s_factory, status));
    if (status.isFatal())
    {
        pSource.reset();
    }
    return pSource;
}

int32_t zm_ptp_getProperty(void* a_session, uint32_t a_key, void* a_pProperty)
{
    return callPropertyNode(a_session, a_key, a_pProperty, &tZelmarPtpPropertyNode::getProperty);
}

int32_t zm_ptp_setProperty(void* a_session, uint32_t a_key, void* a_pProperty)
{
    return callPropertyNode(a_session, a_key, a_pProperty, &tZelmarPtpPropertyNode::setProperty);
}

void SetDGRTModule(void* a_module)
{
    nDiagraTools::setRuntimeModule(a_module);
}
