#pragma once
#include "iTimeSource.h"

// The host engine's code that a time source derives from. Its definitions
// live in the host (zmhost_timesource), never in a plug-in library: a plug-in
// compiles against this header and finds the code in the process that loads
// it, so these symbols are visible beyond their module.
#define ZM_HOST_API __attribute__((visibility("default")))

namespace nZelmar
{

// The host's base of a time source: it keeps the host's observer and tells it
// of changes.
class ZM_HOST_API tTimeSourceImpl : public iTimeSource
{
public:
    ~tTimeSourceImpl() override;

    // Any thread; the observer is shared with the host.
    void setObserver(std::shared_ptr<iTimeSourceObserver> a_pObserver) override;
    std::shared_ptr<iTimeSourceObserver> getObserver() override;

protected:
    tTimeSourceImpl();

    // Wakes the host: calls the observer, if one is set, on the calling
    // thread. The source may be destroyed once this has returned.
    void trigger();

private:
    std::shared_ptr<iTimeSourceObserver> m_pObserver;
};

} // namespace nZelmar
