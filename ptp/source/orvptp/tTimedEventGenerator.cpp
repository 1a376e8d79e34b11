#include "orvptp/tTimedEventGenerator.h"

#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tAssertion.h"
#include "orvtarn/quarks/tMutexGuard.h"

namespace nOrvPTP000
{

using namespace nOrvTarn000;

namespace
{
const u64 kNanosecondsPerMillisecond = 1000000u;
} // namespace

tTimedEventGenerator::tTimedEventGenerator(tPTPDispatcher* a_pDispatcher, tStatus& a_status)
    : tTimedEventGenerator(a_pDispatcher, getSystemClock(), a_status)
{
}

tTimedEventGenerator::tTimedEventGenerator(tPTPDispatcher* a_pDispatcher, iClock& a_rClock,
                                           tStatus& a_status)
    : m_pDispatcher(a_pDispatcher), m_rClock(a_rClock), m_mutex(a_status),
      m_wakeEvent(a_rClock, false /* manual reset */, a_status), m_baseNs(0),
      m_beingDestroyed(false), m_nextId(1), m_failed(false)
{
    REQUIRE(a_pDispatcher != nullptr, kStatusInvalidArgument, a_status);
    m_baseNs = m_rClock.getNanoseconds(a_status);
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
    tStatus lockStatus;
    {
        tMutexGuard guard(m_mutex, lockStatus);
        // Set first: a generator's destructor that arms a timer gets 0.
        m_beingDestroyed = true;
        std::unique_ptr<tTimerRecord> pDoomed = std::move(m_pFirst);
        pDoomed.reset();
        m_wakeEvent.signal();
    }
    m_thread.join();
}

u32 tTimedEventGenerator::add(std::unique_ptr<iPTPEventGenerator> a_pGenerator, u32 a_delayMs,
                              u32 a_periodMs, tStatus& a_status)
{
    tMutexGuard guard(m_mutex, a_status);
    if (a_status.isNotFatal() && m_failed)
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
    }
    if (a_status.isFatal() || m_beingDestroyed ||
        !REQUIRE(a_pGenerator != nullptr, kStatusInvalidArgument, a_status))
    {
        return 0;
    }
    // The record is the only allocation: without it nothing changes.
    std::unique_ptr<tTimerRecord> pRecord(new (a_status) tTimerRecord);
    catchUp(a_status);
    if (pRecord == nullptr || a_status.isFatal())
    {
        return 0;
    }
    const u32 id = m_nextId;
    m_nextId = m_nextId >= kLastId ? 1 : m_nextId + 1;
    pRecord->m_pGenerator = std::move(a_pGenerator);
    pRecord->m_id = id;
    pRecord->m_periodMs = a_periodMs;
    insert(std::move(pRecord), a_delayMs);
    m_wakeEvent.signal();
    return id;
}

u32 tTimedEventGenerator::addOneShot(std::unique_ptr<iPTPEventGenerator> a_pGenerator,
                                     u32 a_delayMs, tStatus& a_status)
{
    return add(std::move(a_pGenerator), a_delayMs, 0, a_status);
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
    if (m_beingDestroyed)
    {
        return;
    }
    if (unlink(a_id) == nullptr)
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
    // Unlinked before the generators go, so that their destructors find a
    // consistent list.
    std::unique_ptr<tTimerRecord> pDoomed = std::move(m_pFirst);
    pDoomed.reset();
    m_wakeEvent.signal();
}

void tTimedEventGenerator::setNextId(u32 a_id)
{
    tStatus lockStatus;
    tMutexGuard guard(m_mutex, lockStatus);
    m_nextId = a_id == 0 || a_id > kLastId ? 1 : a_id;
}

// What lies below a millisecond is dropped, so the list can only run late,
// never early.
void tTimedEventGenerator::catchUp(tStatus& a_status)
{
    const u64 nowNs = m_rClock.getNanoseconds(a_status);
    if (a_status.isFatal())
    {
        return;
    }
    const u64 elapsedMs = (nowNs - m_baseNs) / kNanosecondsPerMillisecond;
    m_baseNs = nowNs;
    if (m_pFirst != nullptr)
    {
        // A head that is due stays 0: first and due at once, and a new record
        // of delay 0 goes behind it and behind every record due with it.
        u32& headDeltaMs = m_pFirst->m_deltaMs;
        headDeltaMs = elapsedMs < headDeltaMs ? headDeltaMs - static_cast<u32>(elapsedMs) : 0;
    }
}

void tTimedEventGenerator::insert(std::unique_ptr<tTimerRecord> a_pRecord, u32 a_delayMs)
{
    // Stop at the first record whose expiry lies strictly after the new one:
    // equal expiries keep the order of arming.
    u64 before = 0;
    std::unique_ptr<tTimerRecord>* pLink = &m_pFirst;
    while (*pLink != nullptr && before + (*pLink)->m_deltaMs <= a_delayMs)
    {
        before += (*pLink)->m_deltaMs;
        pLink = &(*pLink)->m_pNext;
    }
    a_pRecord->m_deltaMs = static_cast<u32>(a_delayMs - before);
    if (*pLink != nullptr)
    {
        (*pLink)->m_deltaMs -= a_pRecord->m_deltaMs;
    }
    a_pRecord->m_pNext = std::move(*pLink);
    *pLink = std::move(a_pRecord);
}

std::unique_ptr<tTimedEventGenerator::tTimerRecord> tTimedEventGenerator::unlink(u32 a_id)
{
    std::unique_ptr<tTimerRecord>* pLink = &m_pFirst;
    while (*pLink != nullptr && (*pLink)->m_id != a_id)
    {
        pLink = &(*pLink)->m_pNext;
    }
    std::unique_ptr<tTimerRecord> pRecord = std::move(*pLink);
    if (pRecord != nullptr)
    {
        // The follower keeps its absolute expiry.
        *pLink = std::move(pRecord->m_pNext);
        if (*pLink != nullptr)
        {
            (*pLink)->m_deltaMs += pRecord->m_deltaMs;
        }
    }
    return pRecord;
}

// Fires at most the head record; another due record follows on the next turn.
void tTimedEventGenerator::fireDue(tStatus& a_status)
{
    catchUp(a_status);
    if (a_status.isFatal() || m_pFirst->m_deltaMs > 0)
    {
        // Woken early, by a change of the list.
        return;
    }
    // A failed generation or post loses this expiry only; the timer goes on.
    m_pDispatcher->postEvent(m_pFirst->m_pGenerator->generateEvent(a_status), a_status);
    a_status.clear();

    std::unique_ptr<tTimerRecord> pRecord = unlink(m_pFirst->m_id);
    const u32 periodMs = pRecord->m_periodMs;
    if (periodMs != 0)
    {
        insert(std::move(pRecord), periodMs);
    }
}

void tTimedEventGenerator::run(tStatus& a_status)
{
    while (a_status.isNotFatal() && !m_beingDestroyed)
    {
        u32 waitMs = kIdleWaitMs;
        {
            tMutexGuard guard(m_mutex, a_status);
            if (a_status.isFatal())
            {
                break;
            }
            if (m_pFirst != nullptr)
            {
                // A delta that would read as "without limit" still ends.
                waitMs = m_pFirst->m_deltaMs < tEvent::kInfinite ? m_pFirst->m_deltaMs
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
        if (!m_beingDestroyed && m_pFirst != nullptr)
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
