#pragma once
#include "orvptp/iPTPEventGenerator.h"
#include "orvptp/tPTPDispatcher.h"
#include "orvtarn/protons/status/tAllocator.h"
#include "orvtarn/protons/thread/iThread.h"
#include "orvtarn/protons/thread/tThreadController.h"
#include "orvtarn/protons/timer/tTimer.h"
#include "orvtarn/quarks/tEvent.h"
#include "orvtarn/quarks/tMutex.h"

#include <atomic>
#include <list>

namespace nOrvPTP000
{

// All timers of the PTP stack, served by one thread. Each armed timer keeps an
// event generator; at every expiry the thread asks it for a fresh event and
// posts that to the dispatcher, where the actual work runs. Expiry itself does
// no PTP work, so a slow handler never delays a timer.
//
// The timers form a delta list: each record holds the milliseconds after the
// record before it, the first one the milliseconds after m_timer was last
// restarted. The list is brought up to date at every change and every turn of
// the thread. Records with the same expiry keep the order of arming. A
// periodic timer is re-armed from the moment it fired, so delays of the
// thread accumulate as drift of its period.
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
    // Disarms all timers, deletes their generators and joins the thread.
    ~tTimedEventGenerator() override;
    tTimedEventGenerator(const tTimedEventGenerator&) = delete;
    tTimedEventGenerator& operator=(const tTimedEventGenerator&) = delete;

    // Arms a timer that first expires after a_delayMs and then every
    // a_periodMs (0: once). Takes the generator in every case: one that is not
    // armed is deleted here, so a caller never has to free it. The result is
    // the timer's id, never 0, or 0 when nothing was armed: after the thread
    // failed (-52008), on a fatal status, for a null generator (-52005), on
    // lack of memory (-52000), or while the object is being destroyed (no
    // failure then).
    u32 add(iPTPEventGenerator* a_pGenerator, u32 a_delayMs, u32 a_periodMs, tStatus& a_status);
    u32 addOneShot(iPTPEventGenerator* a_pGenerator, u32 a_delayMs, tStatus& a_status);

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
        u32 m_id;
        iPTPEventGenerator* m_pGenerator; // owned
        u32 m_deltaMs;
        u32 m_periodMs; // 0: one-shot
    };
    typedef std::list<tTimerRecord, nOrvTarn000::tAllocator<tTimerRecord>> tTimerList;

    // All below run with m_mutex held.
    u64 restartTimer(tStatus& a_status);
    bool insert(u32 a_id, iPTPEventGenerator* a_pGenerator, u32 a_delayMs, u32 a_periodMs,
                tStatus& a_status);
    bool removeRecord(u32 a_id, bool a_deleteGenerator);
    void fireDue(tStatus& a_status);
    void deleteAll();

    tPTPDispatcher* m_pDispatcher;
    tTimerList m_timers;
    nOrvTarn000::tMutex m_mutex;
    nOrvTarn000::tEvent m_wakeEvent;
    nOrvTarn000::tThreadController m_thread;
    tStatus m_threadStatus;
    nOrvTarn000::tTimer m_timer;
    // Written under m_mutex; atomic because the thread tests them between locks.
    std::atomic<i32> m_state; // kBeingDestroyed or 0
    u32 m_nextId;
    std::atomic<bool> m_failed;

    enum : i32
    {
        kBeingDestroyed = 2
    };
};

} // namespace nOrvPTP000
