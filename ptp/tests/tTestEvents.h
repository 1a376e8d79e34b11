#pragma once
// Events for the dispatcher's and the timers' tests. Each writes what happened
// to it into a journal: "execute <name>", "abandon <name>", "delete <name>",
// each entry stamped with the manual clock's time.
#include "orvptp/iPTPEvent.h"
#include "tManualClock.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace nTestEvents
{

using nOrvPTP000::iPTPEvent;
using nOrvTarn000::tManualClock;
using nOrvTarn000::tStatus;
using tEntries = std::vector<std::string>;

class tJournal
{
public:
    explicit tJournal(tManualClock& a_rClock) : m_rClock(a_rClock) {}

    void add(const std::string& a_entry)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.push_back({a_entry, m_rClock.now() / tManualClock::kMillisecond});
        m_changed.notify_all();
    }
    // Everything written since the last take, in order.
    tEntries take()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        tEntries entries;
        for (const tEntry& entry : m_entries)
        {
            entries.push_back(entry.m_text);
        }
        m_entries.clear();
        return entries;
    }
    // The entries that begin with a_prefix, in order, without it.
    tEntries with(const std::string& a_prefix)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        tEntries result;
        for (const tEntry& entry : m_entries)
        {
            if (entry.m_text.rfind(a_prefix, 0) == 0)
            {
                result.push_back(entry.m_text.substr(a_prefix.size()));
            }
        }
        return result;
    }
    // The milliseconds at which a_entry was written.
    std::vector<u64> times(const std::string& a_entry)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<u64> result;
        for (const tEntry& entry : m_entries)
        {
            if (entry.m_text == a_entry)
            {
                result.push_back(entry.m_ms);
            }
        }
        return result;
    }
    int count(const std::string& a_entry) { return static_cast<int>(times(a_entry).size()); }
    // For what a thread outside the clock's view does.
    bool waitFor(const std::string& a_entry)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        const auto written = [&](const tEntry& a_written) { return a_written.m_text == a_entry; };
        return m_changed.wait_for(
            lock, std::chrono::seconds(10),
            [&] { return std::any_of(m_entries.begin(), m_entries.end(), written); });
    }

    // Events are made on the posters' threads.
    std::atomic<int> m_eventsMade{0};

private:
    struct tEntry
    {
        std::string m_text;
        u64 m_ms;
    };
    tManualClock& m_rClock;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<tEntry> m_entries;
};

class tTestEvent : public iPTPEvent
{
public:
    typedef std::function<void(tStatus&)> tAction;

    tTestEvent(tJournal& a_rJournal, const std::string& a_name, i32 a_kind = kOtherEvent,
               bool a_allowed = false, tAction a_action = nullptr)
        : m_rJournal(a_rJournal), m_name(a_name), m_kind(a_kind), m_allowed(a_allowed),
          m_action(a_action)
    {
        ++m_rJournal.m_eventsMade;
    }
    ~tTestEvent() override { m_rJournal.add("delete " + m_name); }
    bool allowedWhenStopped() override { return m_allowed; }
    i32 getEventKind() override { return m_kind; }
    void execute(tStatus& a_status) override
    {
        m_rJournal.add("execute " + m_name);
        if (m_action)
        {
            m_action(a_status);
        }
    }
    void abandon(tStatus&) override { m_rJournal.add("abandon " + m_name); }

private:
    tJournal& m_rJournal;
    std::string m_name;
    i32 m_kind;
    bool m_allowed;
    tAction m_action;
};

} // namespace nTestEvents
