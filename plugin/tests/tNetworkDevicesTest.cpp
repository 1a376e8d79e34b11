// The device list as this machine shows it. Reading the list sends nothing.
#include "tNetworkDevices.h"

#include <gtest/gtest.h>

#include <cstring>
#include <net/if.h>
#include <set>
#include <string>
#include <vector>

using namespace nZelmarPtpPlugin_1_0;
using nOrvTarn000::tStatus;

namespace
{

std::vector<tNetworkDeviceConfig> walk()
{
    std::vector<tNetworkDeviceConfig> devices;
    tStatus status;
    u32 previous = 0;
    for (u32 device = nNetworkDevices::iterateDeviceList(0, status); device != 0;
         device = nNetworkDevices::iterateDeviceList(device, status))
    {
        EXPECT_GT(device, previous) << "the walk moves forward";
        previous = device;
        tNetworkDeviceConfig config;
        EXPECT_TRUE(nNetworkDevices::getDeviceConfig(device, config, status));
        EXPECT_EQ(device, config.m_device);
        devices.push_back(config);
        if (devices.size() > 4096)
        {
            ADD_FAILURE() << "the walk does not end";
            break;
        }
    }
    EXPECT_TRUE(status.isNotFatal());
    return devices;
}

} // namespace

TEST(NetworkDevices, WalkEndsAndEachDeviceHasItsOwnNameAndIndex)
{
    std::set<u32> indices;
    std::set<std::string> names;
    for (const tNetworkDeviceConfig& device : walk())
    {
        EXPECT_TRUE(indices.insert(device.m_device).second);
        EXPECT_TRUE(names.insert(device.m_name).second);
        EXPECT_EQ(device.m_device, if_nametoindex(device.m_name));
    }
}

TEST(NetworkDevices, LoopbackIsNoNetworkDevice)
{
    tStatus status;
    tNetworkDeviceConfig config;
    EXPECT_FALSE(nNetworkDevices::findDeviceByName("lo", config, status));
    const u32 loopback = if_nametoindex("lo");
    if (loopback != 0)
    {
        EXPECT_FALSE(nNetworkDevices::getDeviceConfig(loopback, config, status));
    }
    for (const tNetworkDeviceConfig& device : walk())
    {
        EXPECT_STRNE("lo", device.m_name);
    }
    EXPECT_TRUE(status.isNotFatal());
}

TEST(NetworkDevices, EachDeviceIsFoundByNameAndByMacAddress)
{
    for (const tNetworkDeviceConfig& device : walk())
    {
        tStatus status;
        tNetworkDeviceConfig byName;
        ASSERT_TRUE(nNetworkDevices::findDeviceByName(device.m_name, byName, status))
            << device.m_name;
        EXPECT_EQ(device.m_device, byName.m_device);
        EXPECT_EQ(0, std::memcmp(device.m_macAddress, byName.m_macAddress, 6));
        EXPECT_EQ(device.m_ipAddress, byName.m_ipAddress);

        tNetworkDeviceConfig byMac;
        const bool zero = std::memcmp(device.m_macAddress, "\0\0\0\0\0\0", 6) == 0;
        EXPECT_EQ(!zero,
                  nNetworkDevices::findDeviceByMacAddress(device.m_macAddress, byMac, status));
        if (!zero)
        {
            EXPECT_EQ(0, std::memcmp(device.m_macAddress, byMac.m_macAddress, 6));
            // Devices may share an address; the one with an IP address wins.
            if (device.m_ipAddress != 0)
            {
                EXPECT_NE(0u, byMac.m_ipAddress);
            }
        }
        EXPECT_TRUE(status.isNotFatal());
    }
}

TEST(NetworkDevices, UnknownDevicesAreNotFound)
{
    tStatus status;
    tNetworkDeviceConfig config;
    // A group address is never a device's own.
    const u8 group[6] = {0x01, 0x1B, 0x19, 0x00, 0x00, 0x00};
    EXPECT_FALSE(nNetworkDevices::findDeviceByMacAddress(group, config, status));
    const u8 zero[6] = {};
    EXPECT_FALSE(nNetworkDevices::findDeviceByMacAddress(zero, config, status));
    EXPECT_FALSE(nNetworkDevices::findDeviceByMacAddress(nullptr, config, status));
    EXPECT_FALSE(nNetworkDevices::findDeviceByName("zmptp-none0", config, status));
    EXPECT_FALSE(nNetworkDevices::findDeviceByName("a-name-longer-than-fits", config, status));
    EXPECT_FALSE(nNetworkDevices::findDeviceByName(nullptr, config, status));
    EXPECT_FALSE(nNetworkDevices::getDeviceConfig(0, config, status));
    EXPECT_FALSE(nNetworkDevices::getDeviceConfig(0x7FFFFFF0u, config, status));
    EXPECT_TRUE(status.isNotFatal());
}

TEST(NetworkDevices, FatalStatusFindsNothing)
{
    tStatus broken;
    ORVTARN_SET_CODE(broken, nOrvTarn000::kStatusInvalidArgument);
    tNetworkDeviceConfig config;
    EXPECT_EQ(0u, nNetworkDevices::iterateDeviceList(0, broken));
    for (const tNetworkDeviceConfig& device : walk())
    {
        EXPECT_FALSE(nNetworkDevices::getDeviceConfig(device.m_device, config, broken));
        EXPECT_FALSE(nNetworkDevices::findDeviceByName(device.m_name, config, broken));
    }
    EXPECT_EQ(nOrvTarn000::kStatusInvalidArgument, broken.getCode());
}
