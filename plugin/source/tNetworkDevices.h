#pragma once
#include "orvtarn/protons/status/tStatus.h"

namespace nZelmarPtpPlugin_1_0
{

// What the device functions tell of one network device.
struct tNetworkDeviceConfig
{
    enum : u32
    {
        kNameSize = 16,
        kMacAddressSize = 6
    };

    // The device's handle in the device list; 0 stands for no device.
    u32 m_device;
    char m_name[kNameSize];
    u8 m_macAddress[kMacAddressSize];
    // The device's IPv4 address in network byte order; 0 while it has none.
    u32 m_ipAddress;
};

// The device list: the machine's Ethernet devices, in a fixed order. Other
// kinds of interface (the loopback, tunnels) are not network devices here.
// A device found by one call may be gone at the next; every call reads the
// system's present state.
namespace nNetworkDevices
{

// The device that follows a_previous in the list. A walk starts with 0 and
// ends when 0 comes back. kStatusSystemError when the list cannot be read.
u32 iterateDeviceList(u32 a_previous, nOrvTarn000::tStatus& a_status);

// Fills a_rConfig for a device of the list. False, with a clean status, when
// the device has gone or is not in the list.
bool getDeviceConfig(u32 a_device, tNetworkDeviceConfig& a_rConfig, nOrvTarn000::tStatus& a_status);

// Walks the list for the device whose MAC address equals all six bytes of
// a_pMacAddress. When several share the address, the first one with an IP
// address wins, else the first one. An all-zero address matches nothing.
bool findDeviceByMacAddress(const u8* a_pMacAddress, tNetworkDeviceConfig& a_rConfig,
                            nOrvTarn000::tStatus& a_status);

// The device of the list with this interface name.
bool findDeviceByName(const char* a_pName, tNetworkDeviceConfig& a_rConfig,
                      nOrvTarn000::tStatus& a_status);

} // namespace nNetworkDevices
} // namespace nZelmarPtpPlugin_1_0
