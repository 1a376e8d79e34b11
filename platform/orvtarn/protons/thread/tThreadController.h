#pragma once
#include "orvtarn/protons/status/iTraceable.h"
#include "orvtarn/protons/thread/iThread.h"
#include "orvtarn/protons/thread/tThreadRecord.h"

namespace nOrvTarn000
{

// Runs one iThread on a system thread of its own. Holds no lock: the owner
// guards it. The owner tells its thread to end, in its own way, and joins it
// before the controller is destroyed; the destructor does not wait.
class tThreadController : public iTraceable
{
public:
    tThreadController() {}
    ~tThreadController() override;

    tThreadController(const tThreadController&) = delete;
    tThreadController& operator=(const tThreadController&) = delete;

    // Starts a_pThread->run on a new thread with the given priority and debug
    // name; at kThreadPriorityDefault the thread keeps the scheduling it
    // inherits from the calling thread. The thread's identifier is known when
    // start returns, and run does not begin before priority and name are in
    // place. A controller whose
    // thread has not been joined refuses with kStatusAlreadyRunning, even if
    // that thread has ended. A thread that cannot be made, or whose priority
    // cannot be set, gives kStatusSystemError; no thread is then left behind.
    bool start(iThread* a_pThread, i32 a_priority, const char* a_name, tStatus& a_status);

    // Waits without limit for the thread's end. Does nothing when there is no
    // thread to wait for.
    void join();

    // The thread's priority; 0 when there is no thread.
    i32 getPriority();
    // kStatusInvalidState without a thread, kStatusSystemError when the
    // system refuses (for instance raising without the privilege to do so).
    void setPriority(i32 a_priority, tStatus& a_status);

    // "tThreadController (*0x...) ID 0x... is running at <priority>." or
    // "... is not running."
    tTrace& trace(tTrace& a_trace) override;

    u32 getId() const { return m_record.m_id; }
    bool isRunning() const { return m_record.m_running; }
    // The final status of the last thread; meaningful once join has returned.
    const tStatus& getExitStatus() const { return m_record.m_exitStatus; }

private:
    tThreadRecord m_record;
};

// Fills a_rRecord for the calling thread: its identifier and handle, both
// flags set.
void getCurrentThread(tThreadRecord& a_rRecord, tStatus& a_status);

} // namespace nOrvTarn000
