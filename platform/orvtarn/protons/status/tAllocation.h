#pragma once
#include "orvtarn/protons/status/tStatus.h"

#include <cstddef>
#include <memory>
#include <utility>

namespace nOrvTarn000
{

// Heap wrappers: a failed allocation reports kStatusMemoryFull and yields null.
// A fatal status on entry yields null without allocating.
void* allocate(u32 a_size, tStatus& a_status);
void* allocateLocked(u32 a_size, tStatus& a_status);
void release(void* a_pBlock, u32 a_size);
void releaseLocked(void* a_pBlock, u32 a_size);

// True on the real-time simulator, whose memory services replace the heap;
// never on this platform.
bool isSimulator();

// Fault injection: from now on the a_nth allocation through allocate() (the
// status-taking new and the containers' allocator) fails as exhaustion would,
// once; 0 switches it off. Plain new, which only code outside the library
// uses, is not counted.
void failAllocation(u64 a_nth);
// How many allocations went through allocate() since the program started.
u64 getAllocationCount();

} // namespace nOrvTarn000

// The status-taking allocation: "new (a_status) tFoo(...)" yields null, without
// constructing, when the status is fatal or memory is exhausted. The result is
// released by plain delete.
void* operator new(std::size_t a_size, nOrvTarn000::tStatus& a_status,
                   bool a_locked = false) noexcept;
void* operator new[](std::size_t a_size, nOrvTarn000::tStatus& a_status,
                     bool a_locked = false) noexcept;
void operator delete(void* a_pBlock, nOrvTarn000::tStatus&, bool) noexcept;
void operator delete[](void* a_pBlock, nOrvTarn000::tStatus&, bool) noexcept;

namespace nOrvTarn000
{

// A T owned by the caller, made with the status-taking allocation: null when
// the status is fatal on entry or memory is exhausted (kStatusMemoryFull).
template <typename T, typename... tArgs>
std::unique_ptr<T> makeOwned(tStatus& a_status, tArgs&&... a_args)
{
    return std::unique_ptr<T>(new (a_status) T(std::forward<tArgs>(a_args)...));
}

// a_count default-constructed Ts, owned by the caller, on the same terms.
template <typename T>
std::unique_ptr<T[]> makeOwnedArray(tStatus& a_status, u32 a_count)
{
    return std::unique_ptr<T[]>(new (a_status) T[a_count]);
}

} // namespace nOrvTarn000
