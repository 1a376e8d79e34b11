// The device list as this machine shows it. Reading the list sends nothing.
#include "tNetworkDevices.h"

#include <gtest/gtest.h>

#include <cstring>
#include <net/if.h>
#include <set>
#include <string>

using namespace nZelmarPtpPlugin_1_0;
using nOrvTarn000::tStatus;

namespace
{

TEST(NetworkDevices, EachDeviceOfTheWalkIsFoundByNameAndByMacAddressButNotTheLoopback)
{
    tStatus status;
    std::set<std::string> names;
    u32 previous = 0;
    for (u32 device = nNetworkDevices::iterateDeviceList(0, status); device != 0;
         device = nNetworkDevices::iterateDeviceList(device, status))
    {
        ASSERT_GT(device, previous) << "the walk moves forward";
        previous = device;
        tNetworkDeviceConfig config;
        ASSERT_TRUE(nNetworkDevices::getDeviceConfig(device, config, status));
        EXPECT_EQ(device, config.m_device);
        EXPECT_EQ(device, if_nametoindex(config.m_name));
        EXPECT_TRUE(names.insert(config.m_name).second);

        tNetworkDeviceConfig byName;
        ASSERT_TRUE(nNetworkDevices::findDeviceByName(config.m_name, byName, status));
        EXPECT_EQ(device, byName.m_device);
        EXPECT_EQ(0, std::memcmp(config.m_macAddress, byName.m_macAddress, 6));
        EXPECT_EQ(config.m_ipAddress, byName.m_ipAddress);
        tNetworkDeviceConfig byMac;
        const bool zero = std::memcmp(config.m_macAddress, "\0\0\0\0\0\0", 6) == 0;
        EXPECT_EQ(!zero,
                  nNetworkDevices::findDeviceByMacAddress(config.m_macAddress, byMac, status));
        // Devices may share an address; the one with an IP address wins.
        EXPECT_TRUE(zero || config.m_ipAddress == 0 || byMac.m_ipAddress != 0) << config.m_name;

        tStatus broken;
        ORVTARN_SET_CODE(broken, nOrvTarn000::kStatusInvalidArgument);
        EXPECT_FALSE(nNetworkDevices::getDeviceConfig(device, config, broken));
        EXPECT_FALSE(nNetworkDevices::findDeviceByName(config.m_name, config, broken));
        EXPECT_EQ(0u, nNetworkDevices::iterateDeviceList(0, broken));
    }
    EXPECT_EQ(0u, names.count("lo"));
    tNetworkDeviceConfig config;
    EXPECT_FALSE(nNetworkDevices::findDeviceByName("lo", config, status));
    EXPECT_TRUE(if_nametoindex("lo") == 0 ||
                !nNetworkDevices::getDeviceConfig(if_nametoindex("lo"), config, status));
    EXPECT_TRUE(status.isNotFatal());
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

} // namespace
