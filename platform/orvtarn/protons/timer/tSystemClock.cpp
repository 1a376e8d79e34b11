#include "orvtarn/protons/timer/iClock.h"
#include "orvtarn/quarks/tClock.h"
#include "orvtarn/quarks/tEvent.h"

namespace nOrvTarn000
{
namespace
{

// Readings of the monotonic counter; waits are the events' own.
class tSystemClock : public iClock
{
public:
    u64 getNanoseconds(tStatus& a_status) override
    {
        if (a_status.isFatal())
        {
            return 0;
        }
        u64 count = 0;
        if (!nClock::readCounter(count))
        {
            ORVTARN_SET_CODE(a_status, kStatusSystemError);
            return 0;
        }
        return count;
    }

    bool wait(tEvent& a_rEvent, u32 a_timeoutMs, tStatus& a_status) override
    {
        return a_rEvent.wait(a_timeoutMs, a_status);
    }
    void signal(tEvent& a_rEvent) override { a_rEvent.signal(); }
    void reset(tEvent& a_rEvent, tStatus& a_status) override { a_rEvent.reset(a_status); }
    void forget(tEvent&) override {}
};

} // namespace

iClock& getSystemClock()
{
    static tSystemClock s_clock;
    return s_clock;
}

} // namespace nOrvTarn000
