#pragma once
#include "orvtarn/quarks/tTypes.h"

#include <pthread.h>

namespace nOrvTarn000
{

typedef pthread_t tThreadHandle;

// The body of a system thread. Its result is the thread's exit code.
typedef i32 (*tThreadBody)(void* a_pArgument);

// Thread priorities, in the scale the rest of the system speaks: 0 is the
// default, negative values run less, positive ones more. Other values are
// refused.
enum : i32
{
    kThreadPriorityLowest = -15,
    kThreadPriorityLow = -2,
    kThreadPriorityDefault = 0,
    kThreadPriorityHigh = 2,
    kThreadPrioritySecondaryIsr = 8,
    kThreadPriorityHighest = 15
};

// Creates a system thread that waits at a gate before it runs its body, so
// that its creator can name it and set its priority first. The creating call
// returns once the new thread's identifier is known. Lives on the creator's
// stack: open() (or the destructor, which opens without running) does not
// return before the thread has left the gate.
class tThreadLaunch
{
public:
    tThreadLaunch(tThreadBody a_body, void* a_pArgument);
    ~tThreadLaunch();

    tThreadLaunch(const tThreadLaunch&) = delete;
    tThreadLaunch& operator=(const tThreadLaunch&) = delete;

    // False when the system refuses the thread; nothing then exists.
    bool create(tThreadHandle& a_rHandle, u32& a_rId);

    // Lets the thread go. With a_run false it ends at once without running
    // its body, with exit code 0, and must still be joined.
    void open(bool a_run);

private:
    enum : u32
    {
        kNotCreated,
        kAtGate,
        kOpened,
        kLeft
    };

    static void* enter(void* a_pLaunch);

    pthread_mutex_t m_mutex;
    pthread_cond_t m_condition;
    bool m_synchronised;
    tThreadBody m_body;
    void* m_pArgument;
    u32 m_stage;
    u32 m_id;
    bool m_run;
};

namespace nSystemThread
{

// Waits for the thread's end; false when it cannot be waited for (for
// instance by the thread itself). a_pExitCode may be null.
bool join(tThreadHandle a_handle, i32* a_pExitCode);

// Gives up the right to join: the system reaps the thread when it ends.
void detach(tThreadHandle a_handle);

// Priorities 8 and 15 are real-time (first in, first out) levels; the others
// are time-shared with a nice value of the thread's own. Raising a priority
// needs the privilege to do so; without it setPriority is false and nothing
// changes. a_id is the thread's system identifier.
bool getPriority(tThreadHandle a_handle, u32 a_id, i32& a_rPriority);
bool setPriority(tThreadHandle a_handle, u32 a_id, i32 a_priority);

// The name debuggers and the process table show; cut to the 15 characters
// the system keeps.
void setName(tThreadHandle a_handle, const char* a_name);

enum : u32
{
    kNameLength = 15
};

u32 getCurrentId();
tThreadHandle getCurrentHandle();

} // namespace nSystemThread
} // namespace nOrvTarn000
