#pragma once
// Takes away the right to raise scheduling priorities, as a process started
// without privilege lacks it.
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace nOrvTarn000
{

// Drops CAP_SYS_NICE from the calling thread alone; the threads it starts
// afterwards inherit the loss, which cannot be taken back.
inline bool dropNiceCapability()
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2] = {};
    if (syscall(SYS_capget, &header, data) != 0)
    {
        return false;
    }
    const unsigned bit = 1u << (CAP_SYS_NICE % 32);
    data[CAP_SYS_NICE / 32].effective &= ~bit;
    data[CAP_SYS_NICE / 32].permitted &= ~bit;
    return syscall(SYS_capset, &header, data) == 0;
}

// For its scope the process's limits allow no real-time priority and no nice
// value below the one a thread has; without CAP_SYS_NICE no raise is left.
class tNoPriorityRaises
{
public:
    tNoPriorityRaises()
    {
        m_set = getrlimit(RLIMIT_RTPRIO, &m_rtprio) == 0 && getrlimit(RLIMIT_NICE, &m_nice) == 0;
        const rlimit rtprio = {0, m_rtprio.rlim_max};
        const rlimit nice = {0, m_nice.rlim_max};
        m_set =
            m_set && setrlimit(RLIMIT_RTPRIO, &rtprio) == 0 && setrlimit(RLIMIT_NICE, &nice) == 0;
    }
    ~tNoPriorityRaises()
    {
        setrlimit(RLIMIT_RTPRIO, &m_rtprio);
        setrlimit(RLIMIT_NICE, &m_nice);
    }
    tNoPriorityRaises(const tNoPriorityRaises&) = delete;
    tNoPriorityRaises& operator=(const tNoPriorityRaises&) = delete;

    bool isSet() const { return m_set; }

private:
    rlimit m_rtprio = {};
    rlimit m_nice = {};
    bool m_set = false;
};

} // namespace nOrvTarn000
