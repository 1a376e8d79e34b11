#include "orvtarn/protons/status/tAllocation.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace nOrvTarn000
{
namespace
{

std::atomic<u64> s_allocations(0);
// The allocation count at which the injected failure falls; 0: none.
std::atomic<u64> s_failAt(0);

} // namespace

bool isSimulator()
{
    return false;
}

void failAllocation(u64 a_nth)
{
    s_failAt = a_nth == 0 ? 0 : s_allocations.load() + a_nth;
}

u64 getAllocationCount()
{
    return s_allocations.load();
}

void* allocate(u32 a_size, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return nullptr;
    }
    const u64 count = ++s_allocations;
    u64 failAt = count;
    void* pBlock = s_failAt.compare_exchange_strong(failAt, 0) ? nullptr : std::malloc(a_size);
    if (pBlock == nullptr)
    {
        ORVTARN_SET_CODE(a_status, kStatusMemoryFull);
    }
    return pBlock;
}

// Memory locking exists only on the simulator; here a locked block is a heap block.
void* allocateLocked(u32 a_size, tStatus& a_status)
{
    return allocate(a_size, a_status);
}

void release(void* a_pBlock, u32)
{
    std::free(a_pBlock);
}

void releaseLocked(void* a_pBlock, u32 a_size)
{
    release(a_pBlock, a_size);
}

} // namespace nOrvTarn000

using nOrvTarn000::tStatus;

void* operator new(std::size_t a_size, tStatus& a_status, bool a_locked) noexcept
{
    if (a_size > std::numeric_limits<u32>::max())
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusMemoryFull);
        return nullptr;
    }
    const u32 size = static_cast<u32>(a_size);
    return a_locked ? nOrvTarn000::allocateLocked(size, a_status)
                    : nOrvTarn000::allocate(size, a_status);
}

void* operator new[](std::size_t a_size, tStatus& a_status, bool a_locked) noexcept
{
    return operator new(a_size, a_status, a_locked);
}

void operator delete(void* a_pBlock, tStatus&, bool) noexcept
{
    nOrvTarn000::release(a_pBlock, 0);
}

void operator delete[](void* a_pBlock, tStatus&, bool) noexcept
{
    nOrvTarn000::release(a_pBlock, 0);
}

// The program's own allocation family: plain new never throws and yields null
// on exhaustion (callers test it), and every delete goes back to the same heap
// as the status-taking new above. Injected failures leave it alone: the
// library allocates through the wrappers, and plain new serves the code
// round it.
void* operator new(std::size_t a_size)
{
    return std::malloc(a_size == 0 ? 1 : a_size);
}

void* operator new[](std::size_t a_size)
{
    return std::malloc(a_size == 0 ? 1 : a_size);
}

void* operator new(std::size_t a_size, const std::nothrow_t&) noexcept
{
    return std::malloc(a_size == 0 ? 1 : a_size);
}

void* operator new[](std::size_t a_size, const std::nothrow_t&) noexcept
{
    return std::malloc(a_size == 0 ? 1 : a_size);
}

void operator delete(void* a_pBlock) noexcept
{
    nOrvTarn000::release(a_pBlock, 0);
}

void operator delete[](void* a_pBlock) noexcept
{
    nOrvTarn000::release(a_pBlock, 0);
}

void operator delete(void* a_pBlock, std::size_t) noexcept
{
    nOrvTarn000::release(a_pBlock, 0);
}

void operator delete[](void* a_pBlock, std::size_t) noexcept
{
    nOrvTarn000::release(a_pBlock, 0);
}

void operator delete(void* a_pBlock, const std::nothrow_t&) noexcept
{
    nOrvTarn000::release(a_pBlock, 0);
}

void operator delete[](void* a_pBlock, const std::nothrow_t&) noexcept
{
    nOrvTarn000::release(a_pBlock, 0);
}
