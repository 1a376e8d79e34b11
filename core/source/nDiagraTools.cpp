#include "nDiagraTools.h"

#include "tDiagraRuntime.h"

#include <cstring>

namespace nDiagraTools
{

void copyToHostString(const char* a_pText, u32 a_length, void* a_pHandleVariable,
                      nOrvTarn000::tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    const i32 count = static_cast<i32>(a_length);
    const size_t size = sizeof(count) + a_length;
    DGHandle& rHandle = *static_cast<DGHandle*>(a_pHandleVariable);
    bool hasRoom = false;
    if (rHandle != nullptr)
    {
        hasRoom = setHandleSizeClear(rHandle, size) == 0;
    }
    else
    {
        // A failure leaves null, as the variable was.
        rHandle = newHandleClear(size);
        hasRoom = rHandle != nullptr;
    }
    if (!hasRoom)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusMemoryFull);
        return;
    }
    char* const pBlock = static_cast<char*>(*rHandle);
    std::memcpy(pBlock, &count, sizeof(count));
    if (a_length > 0)
    {
        std::memcpy(pBlock + sizeof(count), a_pText, a_length);
    }
}

} // namespace nDiagraTools
