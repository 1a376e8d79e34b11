#include "orvptp/tEventQueue.h"

namespace nOrvPTP000
{

void abandonEvent(std::unique_ptr<iPTPEvent> a_pEvent)
{
    if (a_pEvent != nullptr)
    {
        tStatus abandonStatus;
        a_pEvent->abandon(abandonStatus);
    }
}

void tEventQueue::push(std::unique_ptr<iPTPEvent> a_pEvent)
{
    iPTPEvent* pEvent = a_pEvent.release();
    pEvent->m_pNext = nullptr;
    if (m_pTail == nullptr)
    {
        m_pHead = pEvent;
    }
    else
    {
        m_pTail->m_pNext = pEvent;
    }
    m_pTail = pEvent;
}

std::unique_ptr<iPTPEvent> tEventQueue::pop()
{
    iPTPEvent* pEvent = m_pHead;
    if (pEvent != nullptr)
    {
        m_pHead = pEvent->m_pNext;
        if (m_pHead == nullptr)
        {
            m_pTail = nullptr;
        }
        pEvent->m_pNext = nullptr;
    }
    return std::unique_ptr<iPTPEvent>(pEvent);
}

void tEventQueue::splice(tEventQueue& a_rOther)
{
    if (a_rOther.m_pHead == nullptr)
    {
        return;
    }
    if (m_pTail == nullptr)
    {
        m_pHead = a_rOther.m_pHead;
    }
    else
    {
        m_pTail->m_pNext = a_rOther.m_pHead;
    }
    m_pTail = a_rOther.m_pTail;
    a_rOther.m_pHead = nullptr;
    a_rOther.m_pTail = nullptr;
}

void tEventQueue::abandonStoppable()
{
    tEventQueue kept;
    while (!isEmpty())
    {
        std::unique_ptr<iPTPEvent> pEvent = pop();
        if (pEvent->allowedWhenStopped())
        {
            kept.push(std::move(pEvent));
        }
        else
        {
            abandonEvent(std::move(pEvent));
        }
    }
    splice(kept);
}

void tEventQueue::clear()
{
    while (!isEmpty())
    {
        pop();
    }
}

} // namespace nOrvPTP000
