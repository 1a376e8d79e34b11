#include "tOrvEmbModule.h"

#include "orv_emb.h"

#include <dlfcn.h>

namespace nZelmarPtpPlugin_1_0
{

tOrvEmbModule::tOrvEmbModule()
    : m_pHandle(::dlopen(ORV_EMB_LIBRARY_NAME, RTLD_NOW | RTLD_LOCAL)),
      m_pGetPrimaryIPAddress(m_pHandle == nullptr ? nullptr
                                                  : ::dlsym(m_pHandle, "GetPrimaryIPAddress")),
      m_pGetDeviceDescription(m_pHandle == nullptr ? nullptr
                                                   : ::dlsym(m_pHandle, "GetDeviceDescription"))
{
}

tOrvEmbModule::~tOrvEmbModule()
{
    if (m_pHandle != nullptr)
    {
        ::dlclose(m_pHandle);
    }
}

u32 tOrvEmbModule::getPrimaryIPAddress() const
{
    if (m_pGetPrimaryIPAddress == nullptr)
    {
        return 0;
    }
    return reinterpret_cast<tGetPrimaryIPAddress>(m_pGetPrimaryIPAddress)();
}

u32 tOrvEmbModule::getDeviceDescription(char* a_pBuffer, u32 a_size) const
{
    if (m_pGetDeviceDescription == nullptr)
    {
        if (a_pBuffer != nullptr)
        {
            a_pBuffer[0] = '\0';
        }
        return 0;
    }
    return reinterpret_cast<tGetDeviceDescription>(m_pGetDeviceDescription)(a_pBuffer, a_size);
}

} // namespace nZelmarPtpPlugin_1_0
