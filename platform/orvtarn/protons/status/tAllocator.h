#pragma once
#include "orvtarn/protons/status/tAllocation.h"

#include <cstddef>
#include <limits>
#include <string>

namespace nOrvTarn000
{

// Container allocator that never throws: a failed allocation returns null and
// sets m_failed, which the owner turns into a status with CHECK_ALLOCATION after
// each container operation that can allocate. Zero-size requests return null
// and are no failure. The flag travels with copies and rebinds of the allocator.
template <typename T>
class tAllocator
{
public:
    typedef T value_type;

    tAllocator() noexcept : m_failed(false) {}
    template <typename U>
    tAllocator(const tAllocator<U>& a_other) noexcept : m_failed(a_other.hasFailed())
    {
    }

    T* allocate(std::size_t a_count) noexcept
    {
        if (a_count == 0)
        {
            return nullptr;
        }
        void* pBlock = nullptr;
        if (a_count <= std::numeric_limits<u32>::max() / sizeof(T))
        {
            tStatus status;
            pBlock = nOrvTarn000::allocate(static_cast<u32>(a_count * sizeof(T)), status);
        }
        if (pBlock == nullptr)
        {
            m_failed = true;
        }
        return static_cast<T*>(pBlock);
    }

    void deallocate(T* a_pBlock, std::size_t a_count) noexcept
    {
        release(a_pBlock, static_cast<u32>(a_count * sizeof(T)));
    }

    bool hasFailed() const noexcept { return m_failed; }
    void resetFailure() noexcept { m_failed = false; }

    template <typename U>
    bool operator==(const tAllocator<U>&) const noexcept
    {
        return true;
    }
    template <typename U>
    bool operator!=(const tAllocator<U>&) const noexcept
    {
        return false;
    }

private:
    bool m_failed;
};

// Turns a failed container allocation into kStatusMemoryFull at the caller's place.
template <typename tContainer>
bool checkAllocation(const tContainer& a_container, const char* a_component, const char* a_file,
                     i32 a_line, tStatus& a_status)
{
    if (!a_container.get_allocator().hasFailed())
    {
        return true;
    }
    a_status.setCode(kStatusMemoryFull, a_component, a_file, a_line);
    return false;
}

typedef std::basic_string<char, std::char_traits<char>, tAllocator<char>> tString;

} // namespace nOrvTarn000

#define CHECK_ALLOCATION(container, status)                                                        \
    ::nOrvTarn000::checkAllocation((container), ORVTARN_COMPONENT, __FILE__, __LINE__, (status))
