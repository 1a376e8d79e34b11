#pragma once
#include "iTimeReference.h"

#include <memory>

namespace nZelmar
{

class iTimeSource;

// The host's side of a time source: told when the source has gone online or
// offline, on the thread of the source that changed, inside that change. The
// host reads isOnline and isAttached then; it must not drop its last
// reference to the source inside the call.
class iTimeSourceObserver
{
public:
    virtual ~iTimeSourceObserver() {}

    virtual void timeSourceChanged(iTimeSource& a_rSource) = 0;
};

// A time source as the host holds it. Online means the source can work;
// attached means it steers the host's time reference. The host attaches its
// reference when it sees the source online, and again after each time the
// source came back online.
class iTimeSource
{
public:
    virtual ~iTimeSource() {}

    // The reference is borrowed until detachTimeReference or the source's end.
    virtual void attachTimeReference(iTimeReference* a_pReference) = 0;
    virtual void detachTimeReference() = 0;
    virtual bool isAttached() = 0;
    virtual bool isOnline() = 0;
    virtual void setObserver(std::shared_ptr<iTimeSourceObserver> a_pObserver) = 0;
    virtual std::shared_ptr<iTimeSourceObserver> getObserver() = 0;
};

} // namespace nZelmar
