#pragma once
#include "orvtarn/quarks/tTypes.h"

namespace nZelmarPtpPlugin_1_0
{

// The host's optional library orv_emb, loaded by name for the object's
// lifetime. Its absence, or the absence of one of its functions, is no
// failure: the operations then answer with their fallbacks.
class tOrvEmbModule
{
public:
    tOrvEmbModule();
    ~tOrvEmbModule();
    tOrvEmbModule(const tOrvEmbModule&) = delete;
    tOrvEmbModule& operator=(const tOrvEmbModule&) = delete;

    bool isLoaded() const { return m_pHandle != nullptr; }
    // The primary IPv4 address in network byte order; 0 without the library
    // or the function.
    u32 getPrimaryIPAddress() const;
    // The description's full length, with at most a_size characters and a NUL
    // copied into a_pBuffer (a_size + 1 bytes); 0 and the empty text without
    // the library or the function.
    u32 getDeviceDescription(char* a_pBuffer, u32 a_size) const;

private:
    void* m_pHandle;
    void* m_pGetPrimaryIPAddress;
    void* m_pGetDeviceDescription;
};

} // namespace nZelmarPtpPlugin_1_0
