#include "tZelmarPropertyNode.h"

#include "nDiagraTools.h"
#include "orvtarn/protons/status/tAssertion.h"
#include "tSourceRegistry.h"
#include "tTimeValue.h"
#include "tZelmarSource.h"

using nOrvTarn000::kStatusNotSupported;

namespace zelmarPluginCore_1_0
{

tZelmarPropertyNode::tZelmarPropertyNode(tStatus& a_status)
    : m_pSource(tSourceRegistry::getInstance().enter(a_status)), m_pController(nullptr),
      m_pPlugin(nullptr)
{
    if (m_pSource != nullptr)
    {
        m_pController = m_pSource->getController();
    }
}

tZelmarPropertyNode::~tZelmarPropertyNode()
{
    if (m_pPlugin != nullptr)
    {
        m_pController->releasePlugin();
    }
    if (m_pSource != nullptr)
    {
        tSourceRegistry::getInstance().leave();
    }
}

bool tZelmarPropertyNode::findLocalKey(u32 a_key, void* a_pProperty, i32& a_rLocalKey,
                                       tStatus& a_status)
{
    if (a_status.isFatal() ||
        !REQUIRE(NULL != a_pProperty, nOrvTarn000::kStatusInvalidArgument, a_status))
    {
        return false;
    }
    // Keys below the base wrap round to local keys that no node knows.
    a_rLocalKey = static_cast<i32>(a_key - getKeyBase());
    return true;
}

void tZelmarPropertyNode::getProperty(u32 a_key, void* a_pProperty, tStatus& a_status)
{
    i32 localKey = 0;
    if (!findLocalKey(a_key, a_pProperty, localKey, a_status))
    {
        return;
    }
    switch (getKeyKind(localKey))
    {
    case kKindBool:
        getBool(localKey, static_cast<u8*>(a_pProperty), a_status);
        break;
    case kKindU32:
        getU32(localKey, static_cast<u32*>(a_pProperty), a_status);
        break;
    case kKindF64:
        getF64(localKey, static_cast<f64*>(a_pProperty), a_status);
        break;
    case kKindString:
        getString(localKey, a_pProperty, a_status);
        break;
    default:
        ORVTARN_SET_CODE(a_status, kStatusNotSupported);
        break;
    }
}

void tZelmarPropertyNode::setProperty(u32 a_key, void* a_pProperty, tStatus& a_status)
{
    i32 localKey = 0;
    if (findLocalKey(a_key, a_pProperty, localKey, a_status))
    {
        ORVTARN_SET_CODE(a_status, kStatusNotSupported);
    }
}

iZelmarPlugin* tZelmarPropertyNode::getPlugin(tStatus& a_status)
{
    if (a_status.getCode() == 0 && m_pPlugin == nullptr)
    {
        m_pPlugin = m_pController->acquirePlugin(a_status);
    }
    return m_pPlugin;
}

u32 tZelmarPropertyNode::getKeyKind(i32 a_localKey)
{
    switch (a_localKey)
    {
    case kKeyName:
        return kKindString;
    case kKeyErrorCode:
        return kKindU32;
    case kKeySynchronized:
    case kKeySynchronizationChanged:
        return kKindBool;
    case kKeySynchronizationThreshold:
    case kKeyInterval:
    case kKeyOffset:
    case kKeyTimeReferenceCorrection:
        return kKindF64;
    default:
        return kKindUnknown;
    }
}

void tZelmarPropertyNode::getBool(i32 a_localKey, u8* a_pValue, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    bool value = false;
    if (a_localKey == kKeySynchronized)
    {
        value = m_pController->isSynchronized(a_status);
    }
    else if (a_localKey == kKeySynchronizationChanged)
    {
        value = m_pController->takeSynchronizationChanged(a_status);
    }
    else
    {
        ORVTARN_SET_CODE(a_status, kStatusNotSupported);
    }
    writeProperty(a_pValue, static_cast<u8>(value ? 1 : 0), a_status);
}

void tZelmarPropertyNode::getU32(i32 a_localKey, u32* a_pValue, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (a_localKey != kKeyErrorCode)
    {
        ORVTARN_SET_CODE(a_status, kStatusNotSupported);
        return;
    }
    const u32 code = m_pController->takeErrorCode(a_status);
    writeProperty(a_pValue, code, a_status);
}

void tZelmarPropertyNode::getF64(i32 a_localKey, f64* a_pValue, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    f64 seconds = 0.0;
    switch (a_localKey)
    {
    case kKeySynchronizationThreshold:
        seconds = m_pController->getSynchronizationThreshold(a_status);
        break;
    case kKeyInterval:
        seconds = m_pController->getInterval(a_status);
        break;
    case kKeyOffset:
        seconds = m_pController->getOffset(a_status);
        break;
    case kKeyTimeReferenceCorrection:
        seconds = m_pController->getTimeReferenceCorrection(a_status);
        break;
    default:
        ORVTARN_SET_CODE(a_status, kStatusNotSupported);
        break;
    }
    writeProperty(a_pValue, tTimeValue(seconds).toSeconds(), a_status);
}

void tZelmarPropertyNode::getString(i32 a_localKey, void* a_pValue, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (a_localKey != kKeyName)
    {
        ORVTARN_SET_CODE(a_status, kStatusNotSupported);
        return;
    }
    iZelmarPlugin* const pPlugin = getPlugin(a_status);
    if (pPlugin != nullptr)
    {
        const nOrvTarn000::tString name = pPlugin->getName(a_status);
        nDiagraTools::copyToHostString(name.c_str(), static_cast<u32>(name.size()), a_pValue,
                                       a_status);
    }
}

} // namespace zelmarPluginCore_1_0
