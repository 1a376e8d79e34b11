#pragma once
#include "orvptp/iPTPEventGenerator.h"
#include "orvptp/tPTPDispatcher.h"
#include "orvtarn/protons/thread/iThread.h"
#include "orvtarn/protons/thread/tThreadController.h"
#include "orvtarn/protons/timer/tClockedEvent.h"
#include "orvtarn/quarks/tMutex.h"

#include <atomic>
#include <memory>

namespace nOrvPTP000
{

// All timers of the PTP stack, served by one thread. Each armed timer keeps an
// event generator; at every expiry the thread asks it for a fresh event and
// posts that to the dispatcher, where the actual work runs. Expiry itself does
// no PTP work, so a slow handler never delays a timer.
//
// The timers form a delta list: each record holds the milliseconds after the
// record before it, the first one the milliseconds after the list was last
// brought up to date. The list is brought up to date at every change and
// every turn of the thread, by whole milliseconds of the clock: the rest
// carries over, so the list neither runs early nor drifts. Records with the
// same expiry keep the order of arming. A periodic timer is re-armed from the
// moment it fired. Records are allocated when armed and linked through
// themselves: firing and re-arming allocate nothing.
//
// Time and waits come from the clock given at construction.
//
// Lock order: the node's mutex, then m_mutex, then the dispatcher's mutex.
// Event generation and posting run on the thread with m_mutex held, so a
// generator must not call back into this object from generateEvent.
class tTimedEventGenerator : public nOrvTarn000::iThread
{
public:
    enum : u32
    {
        kIdleWaitMs = 10000,
        kLastId = 0x7FFFFFFF
    };

    tTimedEventGenerator(tPTPDispatcher* a_pDispatcher, tStatus& a_status);
    tTimedEventGenerator(tPTPDispatcher* a_pDispatcher, nOrvTarn000::iClock& a_rClock,
                         tStatus& a_status);
    // Disarms all timers, deletes their generators and joins the thread.
    ~tTimedEventGenerator() override;
    tTimedEventGenerator(const tTimedEventGenerator&) = delete;
    tTimedEventGenerator& operator=(const tTimedEventGenerator&) = delete;

    // Arms a timer that first expires after a_delayMs and then every
    // a_periodMs (0: once), and takes the generator in every case. The result
    // is the timer's id, never 0, or 0 when nothing was armed: after the
    // thread failed (-52008), on a fatal status, for a null generator
    // (-52005), on lack of memory (-52000), or while the object is being
    // destroyed (no failure then).
    u32 add(std::unique_ptr<iPTPEventGenerator> a_pGenerator, u32 a_delayMs, u32 a_periodMs,
            tStatus& a_status);
    u32 addOneShot(std::unique_ptr<iPTPEventGenerator> a_pGenerator, u32 a_delayMs,
                   tStatus& a_status);

    // Disarms a timer and deletes its generator. An id that is not armed (never
    // given, removed, or a one-shot that has fired) gives -52010.
    void remove(u32 a_id, tStatus& a_status);

    // Disarms every timer and deletes the generators.
    void clear(tStatus& a_status);

    void run(tStatus& a_status) override;

private:
    // Lets a test start the id sequence near its wrap.
    friend class tTimedEventGeneratorProbe;
    // 0 and values past kLastId become 1.
    void setNextId(u32 a_id);

    struct tTimerRecord
    {
        std::unique_ptr<tTimerRecord> m_pNext;
        std::unique_ptr<iPTPEventGenerator> m_pGenerator;
        u32 m_id;
        u32 m_deltaMs;
        u32 m_periodMs; // 0: one-shot
    };

    // All below run with m_mutex held.
    // The whole milliseconds since the list was last brought up to date, which
    // they are taken off the head's delta; a due head keeps delta 0.
    void catchUp(tStatus& a_status);
    void insert(std::unique_ptr<tTimerRecord> a_pRecord, u32 a_delayMs);
    std::unique_ptr<tTimerRecord> unlink(u32 a_id);
    void fireDue(tStatus& a_status);

    tPTPDispatcher* m_pDispatcher;
    nOrvTarn000::iClock& m_rClock;
    std::unique_ptr<tTimerRecord> m_pFirst;
    nOrvTarn000::tMutex m_mutex;
    nOrvTarn000::tClockedEvent m_wakeEvent;
    nOrvTarn000::tThreadController m_thread;
    tStatus m_threadStatus;
    // Clock reading the delta list counts from.
    u64 m_baseNs;
    // Written under m_mutex; atomic because the thread tests them between locks.
    std::atomic<bool> m_beingDestroyed;
    u32 m_nextId;
    std::atomic<bool> m_failed;
};

} // namespace nOrvPTP000
