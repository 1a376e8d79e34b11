// The stand-in answers from the running system: the primary address is the
// IPv4 address of the interface that carries the default route (the one with
// the lowest metric), else of the first interface that is up, not the
// loopback, and has one. The description is "Linux <release> <machine>",
// followed by the primary interface's name in brackets when there is one.
#include "orv_emb.h"

#include <arpa/inet.h>
#include <cstdio>
#include <cstring>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/utsname.h>

#define ORV_EMB_EXPORT __attribute__((visibility("default")))

namespace
{

enum : unsigned
{
    kRouteUp = 0x1
};

// The interface of the default route with the lowest metric, from
// /proc/net/route; false when there is none.
bool defaultRouteInterface(char (&a_rName)[IF_NAMESIZE])
{
    std::FILE* pRoutes = std::fopen("/proc/net/route", "re");
    if (pRoutes == nullptr)
    {
        return false;
    }
    char line[256];
    bool found = false;
    unsigned bestMetric = 0;
    while (std::fgets(line, sizeof(line), pRoutes) != nullptr)
    {
        char name[IF_NAMESIZE] = "";
        unsigned destination = 1, gateway = 0, flags = 0, references = 0, use = 0, metric = 0;
        if (std::sscanf(line, "%15s %x %x %x %u %u %u", name, &destination, &gateway, &flags,
                        &references, &use, &metric) == 7 &&
            destination == 0 && (flags & kRouteUp) != 0 && (!found || metric < bestMetric))
        {
            std::memcpy(a_rName, name, sizeof(a_rName));
            bestMetric = metric;
            found = true;
        }
    }
    std::fclose(pRoutes);
    return found;
}

// The primary interface's name and IPv4 address; false when there is none.
bool primaryInterface(char (&a_rName)[IF_NAMESIZE], uint32_t& a_rAddress)
{
    char routed[IF_NAMESIZE] = "";
    const bool hasRoute = defaultRouteInterface(routed);
    ifaddrs* pInterfaces = nullptr;
    if (::getifaddrs(&pInterfaces) != 0)
    {
        return false;
    }
    const ifaddrs* pChosen = nullptr;
    for (const ifaddrs* pEntry = pInterfaces; pEntry != nullptr; pEntry = pEntry->ifa_next)
    {
        if (pEntry->ifa_addr == nullptr || pEntry->ifa_addr->sa_family != AF_INET)
        {
            continue;
        }
        if (hasRoute && std::strcmp(pEntry->ifa_name, routed) == 0)
        {
            pChosen = pEntry;
            break;
        }
        const bool usable =
            (pEntry->ifa_flags & IFF_UP) != 0 && (pEntry->ifa_flags & IFF_LOOPBACK) == 0;
        if (pChosen == nullptr && usable)
        {
            pChosen = pEntry;
        }
    }
    if (pChosen != nullptr)
    {
        std::snprintf(a_rName, sizeof(a_rName), "%s", pChosen->ifa_name);
        sockaddr_in address;
        std::memcpy(&address, pChosen->ifa_addr, sizeof(address));
        a_rAddress = address.sin_addr.s_addr;
    }
    ::freeifaddrs(pInterfaces);
    return pChosen != nullptr;
}

} // namespace

extern "C" ORV_EMB_EXPORT uint32_t GetPrimaryIPAddress()
{
    char name[IF_NAMESIZE];
    uint32_t address = 0;
    return primaryInterface(name, address) ? address : 0;
}

extern "C" ORV_EMB_EXPORT uint32_t GetDeviceDescription(char* a_pBuffer, uint32_t a_size)
{
    utsname system;
    if (::uname(&system) != 0)
    {
        std::memset(&system, 0, sizeof(system));
    }
    char name[IF_NAMESIZE] = "";
    uint32_t address = 0;
    char description[sizeof(system.release) + sizeof(system.machine) + IF_NAMESIZE + 16];
    const int length = primaryInterface(name, address)
                           ? std::snprintf(description, sizeof(description), "Linux %s %s (%s)",
                                           system.release, system.machine, name)
                           : std::snprintf(description, sizeof(description), "Linux %s %s",
                                           system.release, system.machine);
    const uint32_t total = length < 0 ? 0 : static_cast<uint32_t>(length);
    if (a_pBuffer != nullptr)
    {
        const uint32_t copied = total < a_size ? total : a_size;
        std::memcpy(a_pBuffer, description, copied);
        a_pBuffer[copied] = '\0';
    }
    return total;
}
