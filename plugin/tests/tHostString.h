#pragma once
// The text of a host string: a graphical runtime block of an int32_t count
// and that many bytes.
#include "dgrt.h"

#include <cstring>
#include <string>

inline std::string textOf(DGHandle a_handle)
{
    const char* const pBlock = static_cast<const char*>(*a_handle);
    int32_t count = 0;
    std::memcpy(&count, pBlock, sizeof(count));
    return std::string(pBlock + sizeof(count), count);
}
