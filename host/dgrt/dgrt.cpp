// The stand-in of the graphical runtime: handles over the C heap. A handle is
// the first member of a cell that also keeps the block's size, so that a
// resize knows what it gains. Blocks hold at most INT32_MAX bytes, as a host
// string's count does.
#include "dgrt.h"

#include <cstdlib>
#include <cstring>

namespace
{

struct tCell
{
    void* m_pBlock;
    size_t m_size;
};

const size_t kMaxBlockSize = INT32_MAX;

tCell* cellOf(DGHandle a_handle)
{
    return reinterpret_cast<tCell*>(a_handle);
}

DGHandle newHandle(size_t a_size, bool a_clear)
{
    if (a_size > kMaxBlockSize)
    {
        return nullptr;
    }
    tCell* pCell = static_cast<tCell*>(std::malloc(sizeof(tCell)));
    // One byte at least, so that an empty block is a block.
    void* pBlock = a_clear ? std::calloc(1, a_size + 1) : std::malloc(a_size + 1);
    if (pCell == nullptr || pBlock == nullptr)
    {
        std::free(pCell);
        std::free(pBlock);
        return nullptr;
    }
    pCell->m_pBlock = pBlock;
    pCell->m_size = a_size;
    return &pCell->m_pBlock;
}

} // namespace

extern "C"
{

    const int32_t gDGRTVersion = 0x01000000;

    DGHandle DGNewHandleClear(size_t a_size)
    {
        return newHandle(a_size, true);
    }

    DGHandle DGNewHandle(size_t a_size)
    {
        return newHandle(a_size, false);
    }

    int32_t DGSetHandleSizeClear(DGHandle a_handle, size_t a_size)
    {
        if (a_handle == nullptr)
        {
            return kDGArgumentError;
        }
        if (a_size > kMaxBlockSize)
        {
            return kDGMemoryFull;
        }
        tCell* pCell = cellOf(a_handle);
        void* pBlock = std::realloc(pCell->m_pBlock, a_size + 1);
        if (pBlock == nullptr)
        {
            return kDGMemoryFull;
        }
        if (a_size > pCell->m_size)
        {
            std::memset(static_cast<char*>(pBlock) + pCell->m_size, 0, a_size - pCell->m_size);
        }
        pCell->m_pBlock = pBlock;
        pCell->m_size = a_size;
        return 0;
    }

    void DGDisposeHandle(DGHandle a_handle)
    {
        if (a_handle != nullptr)
        {
            std::free(cellOf(a_handle)->m_pBlock);
            std::free(cellOf(a_handle));
        }
    }
}
