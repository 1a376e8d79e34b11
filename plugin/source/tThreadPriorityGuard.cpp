#include "tThreadPriorityGuard.h"

namespace nZelmarPtpPlugin_1_0
{

namespace nSystemThread = nOrvTarn000::nSystemThread;

tThreadPriorityGuard::tThreadPriorityGuard(i32 a_priority)
    : m_handle(nSystemThread::getCurrentHandle()), m_id(nSystemThread::getCurrentId()),
      m_previous(0), m_raised(false)
{
    // Without the old priority there is nothing to go back to: stay as we are.
    if (nSystemThread::getPriority(m_handle, m_id, m_previous))
    {
        m_raised = nSystemThread::setPriority(m_handle, m_id, a_priority);
    }
}

tThreadPriorityGuard::~tThreadPriorityGuard()
{
    if (m_raised)
    {
        nSystemThread::setPriority(m_handle, m_id, m_previous);
    }
}

} // namespace nZelmarPtpPlugin_1_0
