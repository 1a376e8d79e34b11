#pragma once

namespace zelmarPluginCore_1_0
{

// Told on the deferred-action thread, with no lock held, each time the
// source has gone online (a new plug-in exists) or offline (it was destroyed).
class iOrvTimeReferenceObserver
{
public:
    virtual ~iOrvTimeReferenceObserver() {}

    virtual void timeReferenceChanged(bool a_online) = 0;
};

} // namespace zelmarPluginCore_1_0
