#pragma once
#include "orvptp/iPTPEvent.h"

namespace nOrvPTP000
{

// A first-in first-out list of owned events, linked through the events
// themselves, so that queueing never allocates and cannot fail. Holds no lock:
// its owner guards it. Destroying it deletes what it holds without abandon.
class tEventQueue
{
public:
    tEventQueue() : m_pHead(nullptr), m_pTail(nullptr) {}
    ~tEventQueue() { clear(); }
    tEventQueue(const tEventQueue&) = delete;
    tEventQueue& operator=(const tEventQueue&) = delete;

    bool isEmpty() const { return m_pHead == nullptr; }
    void push(std::unique_ptr<iPTPEvent> a_pEvent);
    std::unique_ptr<iPTPEvent> pop();
    // Moves every event of a_rOther behind this queue's, in constant time.
    void splice(tEventQueue& a_rOther);
    // Abandons and deletes every event that is not allowed when stopped,
    // keeping the order of the rest.
    void abandonStoppable();
    // Deletes every event without abandon.
    void clear();

private:
    iPTPEvent* m_pHead;
    iPTPEvent* m_pTail;
};

} // namespace nOrvPTP000
