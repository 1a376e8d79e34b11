#pragma once
#include "orvptp/iPTPEvent.h"

namespace nOrvPTP000
{

// A factory that a timer keeps, so that every expiry raises a fresh event.
class iPTPEventGenerator
{
public:
    virtual ~iPTPEventGenerator() {}
    virtual void generateEvent(iPTPEvent** a_ppEvent, tStatus& a_status) = 0;
};

} // namespace nOrvPTP000
