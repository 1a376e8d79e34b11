#pragma once
#include "orvtarn/quarks/tTypes.h"

namespace nOrvPTP000
{

// Told on the dispatcher thread each time a property of the node was set.
class iPropertyChangeObserver
{
public:
    enum : i32
    {
        kContextLocal = 0,
        // The change came from a management message.
        kContextManagement = 1
    };

    virtual ~iPropertyChangeObserver() {}

    virtual void propertyChanged(i32 a_propertyId, i32 a_context) = 0;
};

} // namespace nOrvPTP000
