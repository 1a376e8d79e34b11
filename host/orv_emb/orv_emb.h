#pragma once
// The functions of orv_emb that the time-source plug-in uses. The library is
// optional: the plug-in loads it by name and looks each function up.
#include <stdint.h>

#define ORV_EMB_LIBRARY_NAME "liborv_emb.so"

extern "C"
{

    // The machine's primary IPv4 address in network byte order, as the device
    // records hold it; 0 when the machine has none.
    typedef uint32_t (*tGetPrimaryIPAddress)();
    uint32_t GetPrimaryIPAddress();

    // Copies the first a_size characters of the device description (fewer if it
    // is shorter) and a terminating NUL into a_pBuffer, which holds a_size + 1
    // bytes; a null buffer receives nothing. Returns the description's full
    // length, so that a caller can ask again with more room.
    typedef uint32_t (*tGetDeviceDescription)(char* a_pBuffer, uint32_t a_size);
    uint32_t GetDeviceDescription(char* a_pBuffer, uint32_t a_size);
}
