#pragma once
#include "iOrvTimeReferenceObserver.h"
#include "iZelmarController.h"
#include "iZelmarPluginFactory.h"
#include "tTimeSourceImpl.h"

#include <memory>

namespace zelmarPluginCore_1_0
{

// The time source as the host holds it, from the library's entry point to
// the host's last reference. It owns the controller, which brings plug-ins
// up and down behind it, and it wakes the host (trigger) each time the
// source goes online or offline, on the deferred-action thread. Whether it is
// attached the host knows itself, as it attaches and detaches.
//
// A source that is made takes the registry's slot (tSourceRegistry), and the
// end of any source empties it.
//
// Every operation may come from any host thread and forwards to the
// controller; without a controller (it could not be made) the source is
// offline and detached, and attaching does nothing.
class tZelmarSource : public nZelmar::tTimeSourceImpl, public iOrvTimeReferenceObserver
{
public:
    // On the system clock.
    tZelmarSource(iZelmarPluginFactory& a_rFactory, tStatus& a_status);
    // Delays and the plug-ins' timers on a_rClock. The factory and the clock
    // are borrowed and must outlive the source.
    tZelmarSource(iZelmarPluginFactory& a_rFactory, nOrvTarn000::iClock& a_rClock,
                  tStatus& a_status);
    // Empties the registry, then destroys the controller, which ends its
    // thread and the plug-in.
    ~tZelmarSource() override;

    tZelmarSource(const tZelmarSource&) = delete;
    tZelmarSource& operator=(const tZelmarSource&) = delete;

    // A failure reaches nobody: the source stays as it was.
    void attachTimeReference(nZelmar::iTimeReference* a_pReference) override;
    void detachTimeReference() override;
    bool isAttached() override;
    bool isOnline() override;

    // The controller, for the properties of the source; null when it could
    // not be made.
    iZelmarController* getController() { return m_pController.get(); }

protected:
    void timeReferenceChanged(bool a_online) override;

private:
    std::unique_ptr<iZelmarController> m_pController;
};

} // namespace zelmarPluginCore_1_0
