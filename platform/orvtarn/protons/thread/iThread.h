#pragma once
#include "orvtarn/protons/status/tStatus.h"

namespace nOrvTarn000
{

// Work for a thread of its own. run() holds the whole life of the thread: the
// thread ends when it returns. Whatever a_status holds at that point is kept
// as the thread's final status.
class iThread
{
public:
    virtual ~iThread() {}
    virtual void run(tStatus& a_status) = 0;
};

} // namespace nOrvTarn000
