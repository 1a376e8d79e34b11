#pragma once
#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tStatus.h"

namespace zelmarPluginCore_1_0
{

// A bounded first-in first-out ring of T. All entries are default-constructed
// up front, so nothing is allocated after construction. It has no lock: its
// owner guards it.
//
// Invariants: m_count <= m_capacity; m_readIndex is the oldest entry and
// m_writeIndex the next free place, both below m_capacity (or 0 when the
// capacity is 0).
template <typename T>
class tFixedSizeFifo
{
public:
    // On a fatal status no storage is made. When the entry array cannot be
    // allocated the status gets kStatusMemoryFull and the capacity is 0, so
    // every push and pop is refused.
    tFixedSizeFifo(u32 a_capacity, nOrvTarn000::tStatus& a_status)
        : m_capacity(0), m_count(0), m_readIndex(0), m_writeIndex(0), m_pEntries(nullptr)
    {
        if (a_status.isFatal() || a_capacity == 0)
        {
            return;
        }
        m_pEntries = new (a_status) T[a_capacity];
        if (m_pEntries != nullptr)
        {
            m_capacity = a_capacity;
        }
    }

    ~tFixedSizeFifo() { delete[] m_pEntries; }

    tFixedSizeFifo(const tFixedSizeFifo&) = delete;
    tFixedSizeFifo& operator=(const tFixedSizeFifo&) = delete;

    // A full FIFO refuses with kStatusInternalError and keeps what it holds:
    // a caller that wants the newest entry drops the oldest first.
    void push(const T& a_item, nOrvTarn000::tStatus& a_status)
    {
        if (a_status.isFatal())
        {
            return;
        }
        if (m_count == m_capacity)
        {
            ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInternalError);
            return;
        }
        m_pEntries[m_writeIndex] = a_item;
        m_writeIndex = (m_writeIndex + 1) % m_capacity;
        ++m_count;
    }

    // The oldest entry; a default T with kStatusInternalError when empty.
    T pop(nOrvTarn000::tStatus& a_status)
    {
        if (a_status.isFatal())
        {
            return T();
        }
        if (m_count == 0)
        {
            ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInternalError);
            return T();
        }
        const u32 index = m_readIndex;
        m_readIndex = (m_readIndex + 1) % m_capacity;
        --m_count;
        return m_pEntries[index];
    }

    // Discards the a_count oldest entries; as many as it holds or more empty it.
    void drop(u32 a_count)
    {
        if (a_count < m_count)
        {
            m_readIndex = (m_readIndex + a_count) % m_capacity;
            m_count -= a_count;
        }
        else
        {
            clear();
        }
    }

    void clear()
    {
        m_count = 0;
        m_readIndex = 0;
        m_writeIndex = 0;
    }

    u32 getCount() const { return m_count; }
    u32 getCapacity() const { return m_capacity; }

private:
    u32 m_capacity;
    u32 m_count;
    u32 m_readIndex;
    u32 m_writeIndex;
    T* m_pEntries;
};

} // namespace zelmarPluginCore_1_0
