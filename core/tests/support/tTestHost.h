#pragma once
// The host of a time source in a test: it notes each trigger with the
// clock's time and whether the source was online then.
#include "iTimeSource.h"
#include "tManualClock.h"

#include <mutex>
#include <utility>
#include <vector>

namespace nTestHost
{

typedef std::vector<std::pair<u64, bool>> tTriggers;

class tTestHost : public nZelmar::iTimeSourceObserver
{
public:
    explicit tTestHost(nOrvTarn000::tManualClock& a_rClock) : m_rClock(a_rClock) {}

    void timeSourceChanged(nZelmar::iTimeSource& a_rSource) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_triggers.emplace_back(m_rClock.now(), a_rSource.isOnline());
    }
    tTriggers triggers()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_triggers;
    }

private:
    nOrvTarn000::tManualClock& m_rClock;
    std::mutex m_mutex;
    tTriggers m_triggers;
};

} // namespace nTestHost
