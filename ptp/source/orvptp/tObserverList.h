#pragma once
#include "orvtarn/protons/status/tStatus.h"

namespace nOrvPTP000
{

// The observers of one kind that the node tells, each once, in the order
// they were added. Room for all of them is part of the node, so adding one
// never allocates: a list that is full refuses with kStatusMemoryFull. The
// observers are borrowed.
template <typename tObserver, u32 kCapacity = 8>
class tObserverList
{
public:
    tObserverList() : m_count(0) {}

    // An observer already in the list stays where it is.
    void add(tObserver* a_pObserver, nOrvTarn000::tStatus& a_status)
    {
        if (a_status.isFatal() || contains(a_pObserver))
        {
            return;
        }
        if (m_count == kCapacity)
        {
            ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusMemoryFull);
            return;
        }
        m_observers[m_count++] = a_pObserver;
    }

    // One that is not in the list is no failure.
    void remove(tObserver* a_pObserver)
    {
        u32 i = 0;
        while (i < m_count && m_observers[i] != a_pObserver)
        {
            ++i;
        }
        for (; i + 1 < m_count; ++i)
        {
            m_observers[i] = m_observers[i + 1];
        }
        if (i < m_count)
        {
            --m_count;
        }
    }

    tObserver* const* begin() const { return m_observers; }
    tObserver* const* end() const { return m_observers + m_count; }

private:
    bool contains(const tObserver* a_pObserver) const
    {
        for (u32 i = 0; i < m_count; ++i)
        {
            if (m_observers[i] == a_pObserver)
            {
                return true;
            }
        }
        return false;
    }

    tObserver* m_observers[kCapacity];
    u32 m_count;
};

} // namespace nOrvPTP000
