#pragma once
#include "orvtarn/quarks/tMutex.h"

namespace zelmarPluginCore_1_0
{

using nOrvTarn000::tStatus;

class tZelmarSource;

// The link from the host's property calls to the time source: one slot,
// which a new source takes (overwriting the one before) and the end of any
// source empties. A property call holds the registry locked from enter to
// leave, so a source cannot end under it: its destruction waits here.
//
// Lock order: the registry's mutex before the source's controller's. A
// source empties the slot before its controller goes, with no other lock
// held.
class tSourceRegistry
{
public:
    static tSourceRegistry& getInstance();

    tSourceRegistry(const tSourceRegistry&) = delete;
    tSourceRegistry& operator=(const tSourceRegistry&) = delete;

    // The registered source, locked until leave(). Without one: null,
    // unlocked, and kStatusNotAvailable; a registry whose mutex could not be
    // made gives that failure to every caller.
    [[nodiscard]] tZelmarSource* enter(tStatus& a_status);
    void leave();

    void registerSource(tZelmarSource* a_pSource);
    // Empties the slot, whichever source is in it.
    void clear();

private:
    tSourceRegistry();

    tStatus m_status;
    nOrvTarn000::tMutex m_mutex;
    tZelmarSource* m_pSource;
};

} // namespace zelmarPluginCore_1_0
