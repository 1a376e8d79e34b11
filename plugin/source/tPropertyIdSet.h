#pragma once
#include "orvtarn/quarks/tTypes.h"

#include <atomic>

namespace nZelmarPtpPlugin_1_0
{

// The ids of changed properties that wait to be written to the file, as a
// set in one word: adding never allocates, never fails and takes no lock, so
// the dispatcher thread adds while the deferred-action thread takes. A
// property changed twice before the write is written once, with the value
// it has then. Ids from 0 to kIdLimit - 1; the clock's properties all are.
class tPropertyIdSet
{
public:
    enum : i32
    {
        kIdLimit = 64,
        kNone = -1
    };

    tPropertyIdSet() : m_ids(0) {}

    // False, and nothing added, for an id outside the range.
    bool add(i32 a_id)
    {
        if (a_id < 0 || a_id >= kIdLimit)
        {
            return false;
        }
        m_ids.fetch_or(bitOf(a_id));
        return true;
    }

    // Takes the lowest id out; kNone when the set is empty.
    i32 take()
    {
        u64 ids = m_ids.load();
        i32 id = kNone;
        do
        {
            if (ids == 0)
            {
                return kNone;
            }
            id = __builtin_ctzll(ids);
        } while (!m_ids.compare_exchange_weak(ids, ids & ~bitOf(id)));
        return id;
    }

private:
    static u64 bitOf(i32 a_id) { return static_cast<u64>(1) << a_id; }

    std::atomic<u64> m_ids;
};

} // namespace nZelmarPtpPlugin_1_0
