#include "tZelmarPluginBase.h"

#include "orvtarn/protons/status/tAssertion.h"
#include "orvtarn/quarks/tMutexGuard.h"
#include "tStaticAttributes.h"

#include <cmath>
#include <limits>

using nOrvTarn000::tMutexGuard;
using nOrvTarn000::tString;

namespace zelmarPluginCore_1_0
{
namespace
{

#define ZM_COMMON_ATTRIBUTE(name, key, default) constexpr char k##name##Key[] = key;
#include "tCommonAttributes.def"
#undef ZM_COMMON_ATTRIBUTE

u32 toMilliseconds(f64 a_seconds)
{
    const f64 milliseconds = a_seconds * 1000.0;
    if (!(milliseconds > 0.0))
    {
        return 0;
    }
    const f64 kLimit = static_cast<f64>(std::numeric_limits<u32>::max());
    return milliseconds >= kLimit ? std::numeric_limits<u32>::max()
                                  : static_cast<u32>(milliseconds);
}

} // namespace

tZelmarPluginBase::tZelmarPluginBase(const tString& a_name, iZelmarController* a_pController,
                                     tStaticAttributes& a_rAttributes,
                                     const u32& a_rDefaultIntervalMs, tStatus& a_status)
    : m_name(a_name), m_pController(a_pController), m_intervalMs(a_rDefaultIntervalMs),
      m_errorCode(0)
{
    if (CHECK_ALLOCATION(m_name, a_status) &&
        REQUIRE(NULL != m_pController, nOrvTarn000::kStatusInvalidArgument, a_status))
    {
        readCommonSettings(a_rAttributes, a_status);
    }
}

void tZelmarPluginBase::readCommonSettings(tStaticAttributes& a_rAttributes, tStatus& a_status)
{
    iZelmarController& controller = *m_pController;
    const f64 interval = a_rAttributes.getF64(kIntervalKey, m_intervalMs * 0.001, a_status);
    if (a_status.isNotFatal())
    {
        m_intervalMs = toMilliseconds(interval);
    }
    controller.setGain(a_rAttributes.getF64(kGainKey, controller.getGain(a_status), a_status),
                       a_status);
    controller.setMacroPhaseAdjustThreshold(
        a_rAttributes.getF64(kMacroPhaseAdjustThresholdKey,
                             controller.getMacroPhaseAdjustThreshold(a_status), a_status),
        a_status);
    controller.setTimeReferenceCorrection(
        a_rAttributes.getF64(kTimeReferenceCorrectionKey,
                             controller.getTimeReferenceCorrection(a_status), a_status),
        a_status);
    controller.setSynchronizationThreshold(
        a_rAttributes.getF64(kSynchronizationThresholdKey,
                             controller.getSynchronizationThreshold(a_status), a_status),
        a_status);
}

u32 tZelmarPluginBase::takeErrorCode(tStatus& a_status)
{
    tMutexGuard guard(getMutex(), a_status);
    const u32 code = m_errorCode;
    if (a_status.getCode() == nOrvTarn000::kStatusSuccess)
    {
        m_errorCode = 0;
    }
    return code;
}

tString tZelmarPluginBase::getName(tStatus& a_status)
{
    tMutexGuard guard(getMutex(), a_status);
    tString name(m_name);
    CHECK_ALLOCATION(name, a_status);
    return name;
}

f64 tZelmarPluginBase::getInterval(tStatus& a_status)
{
    tMutexGuard guard(getMutex(), a_status);
    return m_intervalMs * 0.001;
}

void tZelmarPluginBase::setInterval(const f64& a_seconds, tStatus& a_status)
{
    tMutexGuard guard(getMutex(), a_status);
    if (guard.isLocked())
    {
        m_intervalMs = toMilliseconds(a_seconds);
    }
}

nOrvTarn000::tMutex& tZelmarPluginBase::getMutex()
{
    return getController()->getMutex();
}

void tZelmarPluginBase::setErrorCode(u32 a_code)
{
    tStatus lockStatus;
    tMutexGuard guard(getMutex(), lockStatus);
    if (lockStatus.isNotFatal())
    {
        m_errorCode = a_code;
    }
}

} // namespace zelmarPluginCore_1_0
