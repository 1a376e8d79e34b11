#pragma once
// A node with quiet surroundings: messaging that sends nowhere and receives
// nothing until told, timestamps and time that never fail, and a recorder of
// port state changes that tests can wait on. Code that must run on the
// dispatcher thread goes through runOnDispatcher.
#include "orvptp/tAnnounceMessage.h"
#include "orvptp/tForeignMasterAging.h"
#include "orvptp/tNodeEvents.h"
#include "orvptp/tPTPNode.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace nOrvPTP000
{
namespace nTest
{

const std::chrono::seconds kGenerous(10);

class tQuietMessaging : public iPTPPortMessaging
{
public:
    void open(tStatus& a_status) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        ++m_opens;
        m_cancelled = false;
        if (m_failOpen)
        {
            ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusNotAvailable);
        }
    }
    void close(tStatus&) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        ++m_closes;
    }
    void sendEventMessage(tProtocolDataUnit&, tStatus&) override { ++m_sends; }
    void sendGeneralMessage(tProtocolDataUnit&, tStatus&) override { ++m_sends; }
    // Blocks until cancelled or told to fail.
    void receiveMessage(tProtocolDataUnit&, tStatus& a_status) override
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_wake.wait(lock, [this] { return m_cancelled || m_failReceive; });
        if (m_failReceive)
        {
            m_failReceive = false;
            ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInternalError);
            return;
        }
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusCancelled);
    }
    void cancelReceive(tStatus&) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_cancelled = true;
        m_wake.notify_all();
    }
    tPortAddress getPortAddress() override { return tPortAddress(); }

    void failReceive()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_failReceive = true;
        m_wake.notify_all();
    }
    void setFailOpen(bool a_fail)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_failOpen = a_fail;
    }
    int opens()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_opens;
    }

    std::atomic<int> m_sends{0};

private:
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_cancelled = false;
    bool m_failReceive = false;
    bool m_failOpen = false;
    int m_opens = 0;
    int m_closes = 0;
};

class tQuietTimestamps : public iPTPTimestampGenerator
{
public:
    bool getReceiveTimestamp(tProtocolDataUnit&, tTimestamp&, tStatus&) override { return false; }
    bool getTransmitTimestamp(tProtocolDataUnit&, tTimestamp&, tStatus&) override { return false; }
};

class tFixedTimekeeper : public iPTPTimekeeper
{
public:
    void getTime(tTimestamp& a_rTime, tStatus&) override { a_rTime = tTimestamp(); }
    void stepTime(const tTimestamp&, tStatus&) override {}
    void addSample(const tTimestamp&, const tTimestamp&, tStatus&) override {}
    bool isPortStateHeld() override { return m_held; }

    std::atomic<bool> m_held{false};
};

// Records port state changes and lets a test wait for one.
class tStateRecorder : public iPortStateObserver
{
public:
    void portStateChanged(i32 a_newState, i32 a_oldState) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_changes.push_back(std::make_pair(a_newState, a_oldState));
        m_changed.notify_all();
    }
    // Waits for the next entry into a_state after the one the last wait
    // found, so that a state passed through quickly is not missed.
    bool waitFor(i32 a_state)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, kGenerous,
                                  [&]
                                  {
                                      for (; m_cursor < m_changes.size(); ++m_cursor)
                                      {
                                          if (m_changes[m_cursor].first == a_state)
                                          {
                                              ++m_cursor;
                                              return true;
                                          }
                                      }
                                      return false;
                                  });
    }
    std::vector<std::pair<i32, i32>> changes()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_changes;
    }
    size_t count() { return changes().size(); }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::pair<i32, i32>> m_changes;
    size_t m_cursor = 0;
};

// Runs a function on the dispatcher thread, in any state, and waits for it.
class tCallEvent : public iPTPEvent
{
public:
    tCallEvent(std::function<void(tStatus&)> a_call, nOrvTarn000::tEvent* a_pDone)
        : m_call(std::move(a_call)), m_pDone(a_pDone)
    {
    }
    bool allowedWhenStopped() override { return true; }
    void execute(tStatus& a_status) override
    {
        m_call(a_status);
        m_pDone->signal();
    }

private:
    std::function<void(tStatus&)> m_call;
    nOrvTarn000::tEvent* m_pDone;
};

struct tNodeFixture : testing::Test
{
    tNodeFixture()
        : m_clockIdentity(kOwnIdentity),
          m_node(&m_messaging, &m_timestamps, &m_timekeeper, m_clockIdentity, m_status)
    {
        EXPECT_TRUE(m_status.isNotFatal());
        iPortStateObserver* pObserver = &m_states;
        setProperty(ADD_PORT_STATE_OBSERVER, &pObserver);
    }

    // Returns the status the call left, which the dispatcher would drop.
    i32 runOnDispatcher(std::function<void(tStatus&)> a_call)
    {
        tStatus status;
        nOrvTarn000::tEvent done(status);
        i32 code = 0;
        m_node.postEventAndWait(std::unique_ptr<iPTPEvent>(new tCallEvent(
                                    [&](tStatus& a_status)
                                    {
                                        a_call(a_status);
                                        code = a_status.getCode();
                                    },
                                    &done)),
                                &done, status);
        EXPECT_TRUE(status.isNotFatal());
        return code;
    }

    template <typename T>
    void setProperty(i32 a_id, T* a_pValue)
    {
        tStatus status;
        nOrvTarn000::tEvent done(status);
        void* values[1] = {a_pValue};
        m_node.postEventAndWait(std::unique_ptr<iPTPEvent>(new tSetDatasetEvent(
                                    &m_node, a_id, values, 1, 1, &done, &status)),
                                &done, status);
        EXPECT_TRUE(status.isNotFatal());
    }

    void setExternalChecks(bool a_value) { setProperty(EXTERNAL_CHECKS, &a_value); }
    void setAutomaticRecovery(bool a_value) { setProperty(AUTOMATIC_RECOVERY, &a_value); }

    u8 portState()
    {
        u8 state = 0xFF;
        runOnDispatcher([&](tStatus& a_status) { state = m_node.getPortState(1, a_status); });
        return state;
    }

    u32 timerId(u32 a_index)
    {
        u32 id = 0;
        runOnDispatcher([&](tStatus&) { id = m_node.getPortDS().getTimerId(a_index); });
        return id;
    }

    // Started with external checks, then moved to LISTENING.
    void startListening()
    {
        setExternalChecks(true);
        tStatus status;
        m_node.startClock(status);
        ASSERT_TRUE(status.isNotFatal());
        m_node.postInitializedCheck(status);
        ASSERT_TRUE(m_states.waitFor(kPortStateListening));
    }

    // Stores two qualifying Announce messages of a clock better than ours.
    void hearBetterMaster(u8 a_priority1 = 1)
    {
        const u8 bytes[8] = {0, 0, 0, 0, 0, 0, 0, 9};
        const tClockIdentity master(bytes);
        runOnDispatcher(
            [&](tStatus& a_status)
            {
                for (u16 sequenceId = 0; sequenceId < 2; ++sequenceId)
                {
                    tAnnounceMessage* pAnnounce = new tAnnounceMessage(a_status);
                    pAnnounce->getHeader()->setSourcePortIdentity(tPortIdentity(master, 1),
                                                                  a_status);
                    pAnnounce->getHeader()->setSequenceId(sequenceId, a_status);
                    pAnnounce->setGrandmasterIdentity(master, a_status);
                    pAnnounce->setGrandmasterPriority1(a_priority1, a_status);
                    pAnnounce->setGrandmasterPriority2(128, a_status);
                    pAnnounce->setGrandmasterClockQuality(tClockQuality(6, 0x21, 0x4E5D), a_status);
                    storeForeignAnnounce(pAnnounce, *m_node.getForeignMasterDS(1),
                                         m_node.getBMCOutput(), m_node, a_status);
                }
            });
    }

    static const u8 kOwnIdentity[8];

    tStatus m_status;
    tQuietMessaging m_messaging;
    tQuietTimestamps m_timestamps;
    tFixedTimekeeper m_timekeeper;
    tStateRecorder m_states;
    tClockIdentity m_clockIdentity;
    tPTPNode m_node;
};

inline const u8 tNodeFixture::kOwnIdentity[8] = {0x00, 0x1B, 0x21, 0xFF, 0xFE, 0x01, 0x02, 0x03};

} // namespace nTest
} // namespace nOrvPTP000
