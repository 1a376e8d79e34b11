#pragma once
#include "orvtarn/quarks/tSystemThread.h"

namespace nZelmarPtpPlugin_1_0
{

// Runs the calling thread at a raised priority for the guard's scope, and puts
// the priority it had back at the end. Raising needs a privilege the process
// may lack: then nothing changes, the scope runs at the old priority and its
// end does nothing. Timestamping carries on either way, only less precisely.
class tThreadPriorityGuard
{
public:
    enum : i32
    {
        kTimestampPriority = nOrvTarn000::kThreadPriorityHighest
    };

    explicit tThreadPriorityGuard(i32 a_priority = kTimestampPriority);
    ~tThreadPriorityGuard();

    tThreadPriorityGuard(const tThreadPriorityGuard&) = delete;
    tThreadPriorityGuard& operator=(const tThreadPriorityGuard&) = delete;

    bool isRaised() const { return m_raised; }

private:
    nOrvTarn000::tThreadHandle m_handle;
    u32 m_id;
    i32 m_previous;
    bool m_raised;
};

} // namespace nZelmarPtpPlugin_1_0
