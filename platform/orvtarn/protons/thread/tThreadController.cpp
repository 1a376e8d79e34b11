#include "orvtarn/protons/thread/tThreadController.h"

#include "orvtarn/protons/status/tTrace.h"

#include <cstdint>

namespace nOrvTarn000
{
namespace
{

// The thread's outermost frame. Its status is the record's, so that the
// thread's final status outlives the thread.
i32 trampoline(void* a_pRecord)
{
    tThreadRecord& record = *static_cast<tThreadRecord*>(a_pRecord);
    tStatus& status = record.m_exitStatus;
    record.m_entry(record.m_pArgument, &status);
    return status.isFatal() ? status.getCode() : 0;
}

void adapter(iThread* a_pThread, tStatus* a_pStatus)
{
    tStatus local;
    a_pThread->run(local);
    a_pStatus->mergeFrom(local);
}

const char* priorityText(i32 a_priority)
{
    switch (a_priority)
    {
    case kThreadPriorityLowest:
        return "lowest priority.";
    case kThreadPriorityLow:
        return "low priority.";
    case kThreadPriorityDefault:
        return "default priority.";
    case kThreadPriorityHigh:
        return "high priority.";
    case kThreadPrioritySecondaryIsr:
        return "secondary ISR priority.";
    case kThreadPriorityHighest:
        return "highest priority.";
    default:
        return nullptr;
    }
}

} // namespace

tThreadController::~tThreadController()
{
    if (m_record.m_created)
    {
        nSystemThread::detach(m_record.m_handle);
    }
    m_record.m_handle = tThreadHandle();
    m_record.m_id = 0;
    m_record.m_created = false;
}

bool tThreadController::start(iThread* a_pThread, i32 a_priority, const char* a_name,
                              tStatus& a_status)
{
    if (m_record.m_running)
    {
        ORVTARN_SET_CODE(a_status, kStatusAlreadyRunning);
        return false;
    }
    // A controller that does not run has been joined or never started, so it
    // holds no handle that would need letting go here.
    if (a_status.isFatal())
    {
        return false;
    }
    if (a_pThread == nullptr)
    {
        ORVTARN_SET_CODE(a_status, kStatusInvalidArgument);
        return false;
    }

    // Everything the thread reads is in place before it exists.
    m_record.m_pArgument = a_pThread;
    m_record.m_entry = &adapter;
    m_record.m_exitStatus.clear();
    tThreadLaunch launch(&trampoline, &m_record);
    if (!launch.create(m_record.m_handle, m_record.m_id))
    {
        m_record.m_id = 0;
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return false;
    }
    m_record.m_created = true;
    // The default asks for nothing: the thread keeps the scheduling it
    // inherits. A process started at a raised nice value would otherwise see
    // every start refused as a raise.
    if (a_priority != kThreadPriorityDefault && getPriority() != a_priority)
    {
        setPriority(a_priority, a_status);
    }
    nSystemThread::setName(m_record.m_handle, a_name);

    // The thread is still held at its gate: a start that failed lets it end
    // without running and reaps it, so nothing runs unowned.
    const bool started = a_status.isNotFatal();
    m_record.m_running = started;
    m_record.m_created = started;
    launch.open(started);
    if (!started)
    {
        nSystemThread::join(m_record.m_handle, nullptr);
        m_record.m_handle = tThreadHandle();
        m_record.m_id = 0;
    }
    return started;
}

void tThreadController::join()
{
    if (!m_record.m_created)
    {
        return;
    }
    // Only a thread can fail to wait here, when it waits for itself; the
    // record then stays as it was.
    if (nSystemThread::join(m_record.m_handle, nullptr))
    {
        m_record.m_running = false;
        m_record.m_created = false;
        m_record.m_handle = tThreadHandle();
    }
}

i32 tThreadController::getPriority()
{
    i32 priority = kThreadPriorityDefault;
    if (m_record.m_created &&
        nSystemThread::getPriority(m_record.m_handle, m_record.m_id, priority))
    {
        return priority;
    }
    return kThreadPriorityDefault;
}

void tThreadController::setPriority(i32 a_priority, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    if (!m_record.m_created)
    {
        ORVTARN_SET_CODE(a_status, kStatusInvalidState);
        return;
    }
    if (!nSystemThread::setPriority(m_record.m_handle, m_record.m_id, a_priority))
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
    }
}

tTrace& tThreadController::trace(tTrace& a_trace)
{
    a_trace.writeFormatted("tThreadController (*0x%08llx) ",
                           static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(this)));
    a_trace.writeFormatted("ID 0x%08x ", static_cast<unsigned int>(m_record.m_id));
    a_trace.writeFormatted("is %s", m_record.m_running ? "running at " : "not running.");
    if (m_record.m_running)
    {
        const i32 priority = getPriority();
        const char* text = priorityText(priority);
        if (text != nullptr)
        {
            a_trace.write(text);
        }
        else
        {
            a_trace.writeFormatted("unknown priority: 0x%08X.",
                                   static_cast<unsigned int>(priority));
        }
    }
    return a_trace;
}

void getCurrentThread(tThreadRecord& a_rRecord, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    a_rRecord.m_id = nSystemThread::getCurrentId();
    a_rRecord.m_handle = nSystemThread::getCurrentHandle();
    a_rRecord.m_running = true;
    a_rRecord.m_created = true;
}

} // namespace nOrvTarn000
