#include "orvptp/tTimedEventGenerator.h"

#include "orvtarn/protons/status/tAssertion.h"
#include "orvtarn/quarks/tMutexGuard.h"

namespace nOrvPTP000
{

using namespace nOrvTarn000;

namespace
{

void abandonAndDelete(iPTPEvent* a_pEvent)
{
    tStatus status;
    a_pEvent->abandon(status);
    delete a_pEvent;
}

} // namespace

tTimedEventGenerator::tTimedEventGenerator(tPTPDispatcher* a_pDispatcher, tStatus& a_status)
    : m_pDispatcher(a_pDispatcher), m_mutex(a_status),
      m_wakeEvent(false /* manual reset */, false, nullptr, a_status),
      m_timer(kClockPerformanceCounter), m_state(0), m_nextId(1), m_failed(false)
{
    REQUIRE(a_pDispatcher != nullptr, kStatusInvalidArgument, a_status);
    m_timer.start(a_status);
    if (a_status.isNotFatal())
    {
        m_thread.start(this, 0, ORVTARN_COMPONENT, m_threadStatus);
        a_status.mergeFrom(m_threadStatus);
    }
    // Without its thread no timer would ever fire, so every arming is refused.
    m_failed = a_status.isFatal();
}

tTimedEventGenerator::~tTimedEventGenerator()
{
    tStatus status;
    {
        tMutexGuard guard(m_mutex, status);
        // Set first: a generator's destructor that arms a timer gets 0.
        m_state = kBeingDestroyed;
        if (guard.isLocked())
        {
            deleteAll();
            if (m_timer.isRunning())
            {
                m_timer.stop(status);
            }
        }
        m_wakeEvent.signal();
    }
    m_thread.join();
    // Only left when the lock could not be taken above.
    deleteAll();
}

u32 tTimedEventGenerator::add(iPTPEventGenerator* a_pGenerator, u32 a_delayMs, u32 a_periodMs,
                              tStatus& a_status)
{
    u32 id = 0;
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isNotFatal() && m_failed)
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
    }
    if (a_status.isNotFatal() && m_state != kBeingDestroyed &&
        REQUIRE(a_pGenerator != nullptr, kStatusInvalidArgument, a_status))
    {
        id = m_nextId;
        if (insert(id, a_pGenerator, a_delayMs, a_periodMs, a_status))
        {
            m_nextId = m_nextId >= kLastId ? 1 : m_nextId + 1;
            m_wakeEvent.signal();
        }
        else
        {
            id = 0;
        }
    }
    // The generator is ours in every case: one that was not armed goes here.
    if (id == 0)
    {
        delete a_pGenerator;
    }
    return id;
}

u32 tTimedEventGenerator::addOneShot(iPTPEventGenerator* a_pGenerator, u32 a_delayMs,
                                     tStatus& a_status)
{
    return add(a_pGenerator, a_delayMs, 0, a_status);
}

void tTimedEventGenerator::remove(u32 a_id, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    if (m_failed)
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return;
    }
    if (m_state == kBeingDestroyed)
    {
        return;
    }
    if (!removeRecord(a_id, true))
    {
        ORVTARN_SET_CODE(a_status, kStatusInvalidState);
    }
    m_wakeEvent.signal();
}

void tTimedEventGenerator::clear(tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isNotFatal() && m_failed)
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
    }
    if (a_status.isFatal())
    {
        return;
    }
    deleteAll();
    m_wakeEvent.signal();
}

void tTimedEventGenerator::setNextId(u32 a_id)
{
    tStatus status;
    tMutexGuard guard(m_mutex, status);
    m_nextId = a_id == 0 || a_id > kLastId ? 1 : a_id;
}

// The whole milliseconds since the last restart; what lies below a millisecond
// is dropped, so the list can only run late, never early.
u64 tTimedEventGenerator::restartTimer(tStatus& a_status)
{
    const u64 elapsedMs = m_timer.getElapsed(kMilliseconds, a_status);
    m_timer.stop(a_status);
    m_timer.reset();
    // Restarted even after a failed reading, so that the timer keeps running.
    tStatus startStatus;
    m_timer.start(startStatus);
    a_status.mergeFrom(startStatus);
    return elapsedMs;
}

// Memory for the record is taken before anything changes: when there is none,
// the caller gets -52000 and false, and list and timer are as they were.
bool tTimedEventGenerator::insert(u32 a_id, iPTPEventGenerator* a_pGenerator, u32 a_delayMs,
                                  u32 a_periodMs, tStatus& a_status)
{
    tTimerList node;
    node.push_back(tTimerRecord{a_id, a_pGenerator, a_delayMs, a_periodMs});
    if (!CHECK_ALLOCATION(node, a_status))
    {
        return false;
    }
    const u64 elapsedMs = restartTimer(a_status);
    if (a_status.isFatal())
    {
        return false;
    }
    if (m_timers.empty())
    {
        m_timers.splice(m_timers.end(), node);
        return true;
    }

    // Bring the head up to date. A head that is due becomes 0, so that it
    // stays first and due at once, and a new record of delay 0 goes behind it
    // and behind every record due with it.
    tTimerRecord& first = m_timers.front();
    first.m_deltaMs =
        elapsedMs < first.m_deltaMs ? first.m_deltaMs - static_cast<u32>(elapsedMs) : 0;

    // Stop at the first record whose expiry lies strictly after the new one:
    // equal expiries keep the order of arming.
    u64 before = 0;
    tTimerList::iterator it = m_timers.begin();
    while (it != m_timers.end() && before + it->m_deltaMs <= a_delayMs)
    {
        before += it->m_deltaMs;
        ++it;
    }
    const u32 deltaMs = static_cast<u32>(a_delayMs - before);
    node.front().m_deltaMs = deltaMs;
    if (it != m_timers.end())
    {
        it->m_deltaMs -= deltaMs;
    }
    m_timers.splice(it, node);
    return true;
}

bool tTimedEventGenerator::removeRecord(u32 a_id, bool a_deleteGenerator)
{
    tTimerList::iterator it = m_timers.begin();
    while (it != m_timers.end() && it->m_id != a_id)
    {
        ++it;
    }
    if (it == m_timers.end())
    {
        return false;
    }
    // The follower keeps its absolute expiry.
    tTimerList::iterator next = it;
    ++next;
    if (next != m_timers.end())
    {
        next->m_deltaMs += it->m_deltaMs;
    }
    iPTPEventGenerator* pGenerator = it->m_pGenerator;
    m_timers.erase(it);
    // Deleted once unlinked, so that its destructor finds a consistent list.
    if (a_deleteGenerator)
    {
        delete pGenerator;
    }
    return true;
}

void tTimedEventGenerator::deleteAll()
{
    tTimerList doomed;
    doomed.splice(doomed.end(), m_timers);
    for (const tTimerRecord& record : doomed)
    {
        delete record.m_pGenerator;
    }
}

// Fires at most the head record; another due record follows on the next turn.
void tTimedEventGenerator::fireDue(tStatus& a_status)
{
    const u64 elapsedMs = restartTimer(a_status);
    if (a_status.isFatal())
    {
        return;
    }
    tTimerRecord& first = m_timers.front();
    if (elapsedMs < first.m_deltaMs)
    {
        // Woken early, by a change of the list.
        first.m_deltaMs -= static_cast<u32>(elapsedMs);
        return;
    }

    // A failed generation or post loses this expiry only; the timer goes on.
    iPTPEvent* pEvent = nullptr;
    first.m_pGenerator->generateEvent(&pEvent, a_status);
    if (pEvent != nullptr)
    {
        if (a_status.isNotFatal())
        {
            m_pDispatcher->post(pEvent, a_status);
        }
        if (a_status.isFatal())
        {
            abandonAndDelete(pEvent);
        }
    }
    a_status.clear();

    first.m_deltaMs = 0;
    const u32 id = first.m_id;
    const u32 periodMs = first.m_periodMs;
    if (periodMs == 0)
    {
        removeRecord(id, true);
        return;
    }
    // The generator moves on to a record re-armed from now. Without memory for
    // it the timer ends and the thread fails, so that later callers learn of it.
    const bool rearmed = insert(id, first.m_pGenerator, periodMs, periodMs, a_status);
    removeRecord(id, !rearmed);
}

void tTimedEventGenerator::run(tStatus& a_status)
{
    while (a_status.isNotFatal() && m_state != kBeingDestroyed)
    {
        u32 waitMs = kIdleWaitMs;
        {
            tMutexGuard guard(m_mutex, a_status);
            if (a_status.isFatal())
            {
                break;
            }
            if (!m_timers.empty())
            {
                // A delta that would read as "without limit" still ends.
                waitMs = m_timers.front().m_deltaMs < tEvent::kInfinite ? m_timers.front().m_deltaMs
                                                                        : tEvent::kInfinite - 1;
            }
        }
        m_wakeEvent.wait(waitMs, a_status);
        // Running out is the normal end of a wait.
        if (a_status.getCode() == kStatusTimedOut)
        {
            a_status.clear();
        }
        tMutexGuard guard(m_mutex, a_status);
        if (a_status.isFatal())
        {
            break;
        }
        if (m_state != kBeingDestroyed && !m_timers.empty())
        {
            fireDue(a_status);
        }
        // Under the lock: a change made after this point signals again.
        m_wakeEvent.reset(a_status);
    }
    if (a_status.isFatal())
    {
        m_failed = true;
    }
}

} // namespace nOrvPTP000
