#pragma once
#include "tNetworkDevices.h"

#include <string>

namespace nZmHost
{

// The interface that the user names reaches the plug-in as its setting: the
// plug-in picks its device by the MAC address in the source's settings file,
// so the device's address is written there (the directories made if
// missing) before the source is made, and every later plug-in of the source
// finds it too. A file that already names the address stays untouched.
class tInterfaceSetting
{
public:
    // Looks up the device. False when no network device has the name.
    [[nodiscard]] bool find(const std::string& a_interface);

    const nZelmarPtpPlugin_1_0::tNetworkDeviceConfig& getDevice() const { return m_device; }

    // Writes the address into the file under the root that ZM_PTP_ROOT names.
    // a_rWritten tells whether the file changed; false with a_rError on a
    // failure, the file as it was.
    [[nodiscard]] bool record(bool& a_rWritten, std::string& a_rFilePath, std::string& a_rError);

private:
    nZelmarPtpPlugin_1_0::tNetworkDeviceConfig m_device{};
};

} // namespace nZmHost
