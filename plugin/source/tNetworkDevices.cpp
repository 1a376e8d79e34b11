#include "tNetworkDevices.h"

#include <cstring>
#include <net/if.h>
#include <net/if_arp.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

using nOrvTarn000::kStatusSystemError;
using nOrvTarn000::tStatus;

namespace nZelmarPtpPlugin_1_0
{
namespace nNetworkDevices
{
namespace
{

// A datagram socket that only carries the interface queries, closed with
// its scope.
class tQuerySocket
{
public:
    explicit tQuerySocket(tStatus& a_status) : m_socket(-1)
    {
        if (a_status.isFatal())
        {
            return;
        }
        m_socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (m_socket < 0)
        {
            ORVTARN_SET_CODE(a_status, kStatusSystemError);
        }
    }
    ~tQuerySocket()
    {
        if (m_socket >= 0)
        {
            ::close(m_socket);
        }
    }
    tQuerySocket(const tQuerySocket&) = delete;
    tQuerySocket& operator=(const tQuerySocket&) = delete;

    int get() const { return m_socket; }

private:
    int m_socket;
};

// Reads the configuration of the interface with this index. False when it is
// gone or is no Ethernet device.
bool readConfig(int a_socket, u32 a_device, tNetworkDeviceConfig& a_rConfig)
{
    if (a_device == 0)
    {
        return false;
    }
    char name[IF_NAMESIZE] = {};
    if (::if_indextoname(a_device, name) == nullptr)
    {
        return false;
    }
    ifreq request;
    std::memset(&request, 0, sizeof(request));
    std::memcpy(request.ifr_name, name, sizeof(request.ifr_name) - 1);
    if (::ioctl(a_socket, SIOCGIFHWADDR, &request) != 0 ||
        request.ifr_hwaddr.sa_family != ARPHRD_ETHER)
    {
        return false;
    }

    tNetworkDeviceConfig config;
    std::memset(&config, 0, sizeof(config));
    config.m_device = a_device;
    std::memcpy(config.m_name, name, sizeof(config.m_name) - 1);
    std::memcpy(config.m_macAddress, request.ifr_hwaddr.sa_data, sizeof(config.m_macAddress));

    // A device without an IPv4 address is still a device; its address is 0.
    std::memset(&request.ifr_addr, 0, sizeof(request.ifr_addr));
    request.ifr_addr.sa_family = AF_INET;
    if (::ioctl(a_socket, SIOCGIFADDR, &request) == 0 && request.ifr_addr.sa_family == AF_INET)
    {
        sockaddr_in address;
        std::memcpy(&address, &request.ifr_addr, sizeof(address));
        config.m_ipAddress = address.sin_addr.s_addr;
    }
    a_rConfig = config;
    return true;
}

bool isZero(const u8* a_pMacAddress)
{
    for (u32 index = 0; index < tNetworkDeviceConfig::kMacAddressSize; ++index)
    {
        if (a_pMacAddress[index] != 0)
        {
            return false;
        }
    }
    return true;
}

} // namespace

u32 iterateDeviceList(u32 a_previous, tStatus& a_status)
{
    tQuerySocket query(a_status);
    if (a_status.isFatal())
    {
        return 0;
    }
    struct if_nameindex* pInterfaces = ::if_nameindex();
    if (pInterfaces == nullptr)
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return 0;
    }
    // The list runs in the order of the interface indices, which the system
    // never reuses while an interface lives.
    u32 cursor = a_previous;
    u32 found = 0;
    while (found == 0)
    {
        u32 next = 0;
        for (const struct if_nameindex* pEntry = pInterfaces; pEntry->if_index != 0; ++pEntry)
        {
            if (pEntry->if_index > cursor && (next == 0 || pEntry->if_index < next))
            {
                next = pEntry->if_index;
            }
        }
        if (next == 0)
        {
            break;
        }
        tNetworkDeviceConfig config;
        if (readConfig(query.get(), next, config))
        {
            found = next;
        }
        cursor = next;
    }
    ::if_freenameindex(pInterfaces);
    return found;
}

bool getDeviceConfig(u32 a_device, tNetworkDeviceConfig& a_rConfig, tStatus& a_status)
{
    tQuerySocket query(a_status);
    if (a_status.isFatal())
    {
        return false;
    }
    return readConfig(query.get(), a_device, a_rConfig);
}

bool findDeviceByMacAddress(const u8* a_pMacAddress, tNetworkDeviceConfig& a_rConfig,
                            tStatus& a_status)
{
    if (a_status.isFatal() || a_pMacAddress == nullptr || isZero(a_pMacAddress))
    {
        return false;
    }
    bool found = false;
    tNetworkDeviceConfig config;
    for (u32 device = iterateDeviceList(0, a_status); device != 0;
         device = iterateDeviceList(device, a_status))
    {
        if (!getDeviceConfig(device, config, a_status) ||
            std::memcmp(config.m_macAddress, a_pMacAddress, sizeof(config.m_macAddress)) != 0)
        {
            continue;
        }
        if (!found || (a_rConfig.m_ipAddress == 0 && config.m_ipAddress != 0))
        {
            a_rConfig = config;
            found = true;
        }
        if (config.m_ipAddress != 0)
        {
            break;
        }
    }
    return found && a_status.isNotFatal();
}

bool findDeviceByName(const char* a_pName, tNetworkDeviceConfig& a_rConfig, tStatus& a_status)
{
    if (a_status.isFatal() || a_pName == nullptr ||
        std::strlen(a_pName) >= tNetworkDeviceConfig::kNameSize)
    {
        return false;
    }
    const u32 device = ::if_nametoindex(a_pName);
    return device != 0 && getDeviceConfig(device, a_rConfig, a_status);
}

} // namespace nNetworkDevices
} // namespace nZelmarPtpPlugin_1_0
