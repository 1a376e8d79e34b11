#pragma once
#include "iZelmarController.h"
#include "iZelmarPlugin.h"

namespace zelmarPluginCore_1_0
{

class tStaticAttributes;

// What every plug-in shares: its name, its sample interval and its latched
// error code, all guarded by the controller's mutex. A concrete plug-in adds
// start and stop.
//
// The constructor reads the common settings from the source's file: the
// interval into the plug-in, the servo's settings into the controller. A key
// the file lacks leaves the value in force (the controller's keeps its value
// through an offline and online cycle); one that is unreadable makes the
// status fatal, and the plug-in is not built.
class tZelmarPluginBase : public iZelmarPlugin
{
public:
    tZelmarPluginBase(const nOrvTarn000::tString& a_name, iZelmarController* a_pController,
                      tStaticAttributes& a_rAttributes, const u32& a_rDefaultIntervalMs,
                      tStatus& a_status);

    u32 takeErrorCode(tStatus& a_status) override;
    nOrvTarn000::tString getName(tStatus& a_status) override;
    // Whole milliseconds, as stored.
    f64 getInterval(tStatus& a_status) override;
    // Truncated to whole milliseconds; what is not a number, or below 0,
    // gives 0, and what is beyond a u32 of milliseconds its largest value.
    void setInterval(const f64& a_seconds, tStatus& a_status) override;
    nOrvTarn000::tMutex& getMutex() override;
    iZelmarController* getController() override { return m_pController; }
    const iZelmarController* getController() const override { return m_pController; }
    u32 getIntervalMilliseconds() override { return m_intervalMs; }
    void setErrorCode(u32 a_code) override;

private:
    void readCommonSettings(tStaticAttributes& a_rAttributes, tStatus& a_status);

    nOrvTarn000::tString m_name;
    iZelmarController* m_pController;
    u32 m_intervalMs;
    u32 m_errorCode;
};

} // namespace zelmarPluginCore_1_0
