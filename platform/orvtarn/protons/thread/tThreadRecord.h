#pragma once
#include "orvtarn/protons/status/tStatus.h"
#include "orvtarn/quarks/tSystemThread.h"

namespace nOrvTarn000
{

class iThread;

// Runs a_pThread on the thread and leaves its final status in *a_pStatus.
typedef void (*tThreadAdapter)(iThread* a_pThread, tStatus* a_pStatus);

// What is known of one system thread.
struct tThreadRecord
{
    u32 m_id = 0;
    iThread* m_pArgument = nullptr;
    tThreadAdapter m_entry = nullptr;
    tThreadHandle m_handle = tThreadHandle();
    // From a successful start until join; a thread that ended by itself still
    // counts as running until it is joined.
    bool m_running = false;
    // While m_handle refers to a thread not yet joined.
    bool m_created = false;
    // The thread's final status. Written only by the thread as it ends, so
    // its owner reads it once join has returned.
    tStatus m_exitStatus;
};

} // namespace nOrvTarn000
