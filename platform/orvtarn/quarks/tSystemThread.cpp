#include "orvtarn/quarks/tSystemThread.h"

#include "orvtarn/protons/status/tSystemError.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace nOrvTarn000
{
namespace
{

// Real-time levels of the two highest priorities: above every time-shared
// thread, with room left for anything the machine itself runs higher.
enum : int
{
    kRealTimeSecondaryIsr = 40,
    kRealTimeHighest = 80
};

// Nice values of the time-shared priorities. Each round trip through
// getPriority gives back the priority that was set.
struct tNiceLevel
{
    i32 m_priority;
    int m_nice;
};

const tNiceLevel kNiceLevels[] = {
    {kThreadPriorityLowest, 19},
    {kThreadPriorityLow, 10},
    {kThreadPriorityDefault, 0},
    {kThreadPriorityHigh, -10},
};

bool niceFor(i32 a_priority, int& a_rNice)
{
    for (const tNiceLevel& level : kNiceLevels)
    {
        if (level.m_priority == a_priority)
        {
            a_rNice = level.m_nice;
            return true;
        }
    }
    return false;
}

// Nice values set by others fall to the nearest priority.
i32 priorityForNice(int a_nice)
{
    if (a_nice >= 15)
    {
        return kThreadPriorityLowest;
    }
    if (a_nice >= 5)
    {
        return kThreadPriorityLow;
    }
    if (a_nice > -5)
    {
        return kThreadPriorityDefault;
    }
    return kThreadPriorityHigh;
}

bool isRealTime(int a_policy)
{
    return a_policy == SCHED_FIFO || a_policy == SCHED_RR;
}

} // namespace

tThreadLaunch::tThreadLaunch(tThreadBody a_body, void* a_pArgument)
    : m_mutex(), m_condition(), m_synchronised(false), m_body(a_body), m_pArgument(a_pArgument),
      m_stage(kNotCreated), m_id(0), m_run(false)
{
}

tThreadLaunch::~tThreadLaunch()
{
    if (!m_synchronised)
    {
        return;
    }
    open(false);
    pthread_cond_destroy(&m_condition);
    pthread_mutex_destroy(&m_mutex);
}

bool tThreadLaunch::create(tThreadHandle& a_rHandle, u32& a_rId)
{
    if (m_synchronised)
    {
        return false;
    }
    int error = pthread_mutex_init(&m_mutex, nullptr);
    if (error != 0)
    {
        ORVTARN_TRACE_SYSTEM_ERROR("pthread_mutex_init", error);
        return false;
    }
    error = pthread_cond_init(&m_condition, nullptr);
    if (error != 0)
    {
        ORVTARN_TRACE_SYSTEM_ERROR("pthread_cond_init", error);
        pthread_mutex_destroy(&m_mutex);
        return false;
    }
    m_synchronised = true;

    tThreadHandle handle;
    error = pthread_create(&handle, nullptr, &tThreadLaunch::enter, this);
    if (error != 0)
    {
        ORVTARN_TRACE_SYSTEM_ERROR("pthread_create", error);
        return false;
    }
    pthread_mutex_lock(&m_mutex);
    m_stage = kAtGate;
    while (m_id == 0)
    {
        pthread_cond_wait(&m_condition, &m_mutex);
    }
    pthread_mutex_unlock(&m_mutex);
    a_rHandle = handle;
    a_rId = m_id;
    return true;
}

void tThreadLaunch::open(bool a_run)
{
    if (!m_synchronised)
    {
        return;
    }
    pthread_mutex_lock(&m_mutex);
    if (m_stage == kAtGate)
    {
        m_run = a_run;
        m_stage = kOpened;
        pthread_cond_broadcast(&m_condition);
        // This object goes with the creator's frame: the thread must be out
        // of the gate before that can happen.
        while (m_stage != kLeft)
        {
            pthread_cond_wait(&m_condition, &m_mutex);
        }
    }
    pthread_mutex_unlock(&m_mutex);
}

void* tThreadLaunch::enter(void* a_pLaunch)
{
    tThreadLaunch& launch = *static_cast<tThreadLaunch*>(a_pLaunch);
    pthread_mutex_lock(&launch.m_mutex);
    const tThreadBody body = launch.m_body;
    void* const pArgument = launch.m_pArgument;
    launch.m_id = nSystemThread::getCurrentId();
    pthread_cond_broadcast(&launch.m_condition);
    while (launch.m_stage != kOpened)
    {
        pthread_cond_wait(&launch.m_condition, &launch.m_mutex);
    }
    const bool run = launch.m_run;
    launch.m_stage = kLeft;
    pthread_cond_broadcast(&launch.m_condition);
    pthread_mutex_unlock(&launch.m_mutex);
    // The launch object may be gone from here on.

    const i32 exitCode = run ? body(pArgument) : 0;
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(exitCode));
}

namespace nSystemThread
{

bool join(tThreadHandle a_handle, i32* a_pExitCode)
{
    void* result = nullptr;
    const int error = pthread_join(a_handle, &result);
    if (error != 0)
    {
        ORVTARN_TRACE_SYSTEM_ERROR("pthread_join", error);
        return false;
    }
    if (a_pExitCode != nullptr)
    {
        *a_pExitCode = static_cast<i32>(reinterpret_cast<std::intptr_t>(result));
    }
    return true;
}

void detach(tThreadHandle a_handle)
{
    pthread_detach(a_handle);
}

bool getPriority(tThreadHandle a_handle, u32 a_id, i32& a_rPriority)
{
    int policy = 0;
    sched_param parameters = {};
    if (pthread_getschedparam(a_handle, &policy, &parameters) != 0)
    {
        return false;
    }
    if (isRealTime(policy))
    {
        a_rPriority = parameters.sched_priority >= kRealTimeHighest ? kThreadPriorityHighest
                                                                    : kThreadPrioritySecondaryIsr;
        return true;
    }
    // -1 is also a valid nice value: only errno tells a failure apart.
    errno = 0;
    const int nice = getpriority(PRIO_PROCESS, static_cast<id_t>(a_id));
    if (nice == -1 && errno != 0)
    {
        return false;
    }
    a_rPriority = priorityForNice(nice);
    return true;
}

bool setPriority(tThreadHandle a_handle, u32 a_id, i32 a_priority)
{
    if (a_priority == kThreadPrioritySecondaryIsr || a_priority == kThreadPriorityHighest)
    {
        sched_param parameters = {};
        parameters.sched_priority =
            a_priority == kThreadPriorityHighest ? kRealTimeHighest : kRealTimeSecondaryIsr;
        const int error = pthread_setschedparam(a_handle, SCHED_FIFO, &parameters);
        if (error != 0)
        {
            ORVTARN_TRACE_SYSTEM_ERROR("pthread_setschedparam(SCHED_FIFO)", error);
        }
        return error == 0;
    }
    int nice = 0;
    if (!niceFor(a_priority, nice))
    {
        return false;
    }
    // The nice value first: it is the step that a missing privilege refuses,
    // and then nothing has changed yet.
    if (setpriority(PRIO_PROCESS, static_cast<id_t>(a_id), nice) != 0)
    {
        ORVTARN_TRACE_SYSTEM_ERROR("setpriority", errno);
        return false;
    }
    int policy = 0;
    sched_param parameters = {};
    if (pthread_getschedparam(a_handle, &policy, &parameters) != 0)
    {
        return false;
    }
    if (policy == SCHED_OTHER)
    {
        return true;
    }
    parameters.sched_priority = 0;
    return pthread_setschedparam(a_handle, SCHED_OTHER, &parameters) == 0;
}

void setName(tThreadHandle a_handle, const char* a_name)
{
    if (a_name == nullptr)
    {
        return;
    }
    char name[kNameLength + 1];
    std::strncpy(name, a_name, kNameLength);
    name[kNameLength] = '\0';
    pthread_setname_np(a_handle, name);
}

u32 getCurrentId()
{
    return static_cast<u32>(syscall(SYS_gettid));
}

tThreadHandle getCurrentHandle()
{
    return pthread_self();
}

} // namespace nSystemThread
} // namespace nOrvTarn000
