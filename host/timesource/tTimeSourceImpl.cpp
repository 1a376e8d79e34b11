#include "tTimeSourceImpl.h"

#include <atomic>

namespace nZelmar
{

// The observer is read and replaced on any thread: the shared pointer's own
// atomic operations keep each reader's copy whole, with no lock of ours.

tTimeSourceImpl::tTimeSourceImpl() {}

tTimeSourceImpl::~tTimeSourceImpl() {}

void tTimeSourceImpl::setObserver(std::shared_ptr<iTimeSourceObserver> a_pObserver)
{
    std::atomic_store(&m_pObserver, std::move(a_pObserver));
}

std::shared_ptr<iTimeSourceObserver> tTimeSourceImpl::getObserver()
{
    return std::atomic_load(&m_pObserver);
}

void tTimeSourceImpl::trigger()
{
    const std::shared_ptr<iTimeSourceObserver> pObserver = getObserver();
    if (pObserver != nullptr)
    {
        pObserver->timeSourceChanged(*this);
    }
}

} // namespace nZelmar
