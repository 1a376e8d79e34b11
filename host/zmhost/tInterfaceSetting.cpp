#include "tInterfaceSetting.h"

#include "tPtpClockAttributes.h"
#include "tStaticAttributes.h"
#include "tZelmarPtpPlugin.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>

using nOrvTarn000::tStatus;
using nOrvTarn000::tString;

namespace nZmHost
{
namespace
{

// The address as the plug-in reads it: ':' and '-' alike, any case.
std::string normalised(std::string a_text)
{
    std::transform(a_text.begin(), a_text.end(), a_text.begin(),
                   [](unsigned char a_char)
                   { return a_char == ':' ? '-' : static_cast<char>(std::toupper(a_char)); });
    return a_text;
}

} // namespace

bool tInterfaceSetting::find(const std::string& a_interface)
{
    tStatus findStatus;
    return nZelmarPtpPlugin_1_0::nNetworkDevices::findDeviceByName(a_interface.c_str(), m_device,
                                                                   findStatus);
}

bool tInterfaceSetting::record(bool& a_rWritten, std::string& a_rFilePath, std::string& a_rError)
{
    a_rWritten = false;
    char address[nZelmarPtpPlugin_1_0::kMacAddressTextSize] = "";
    nZelmarPtpPlugin_1_0::formatMacAddress(m_device.m_macAddress, address);
    tStatus status;
    zelmarPluginCore_1_0::tStaticAttributes attributes(
        tString(nZelmarPtpPlugin_1_0::tZelmarPtpPlugin::kSourceName), status);
    const tString key(nZelmarPtpPlugin_1_0::kEthernetMacAddressKey);
    const tString present = attributes.getString(key, tString(), status);
    a_rFilePath = attributes.getFilePath().c_str();
    if (status.isFatal())
    {
        a_rError = "cannot read " + a_rFilePath;
        return false;
    }
    if (normalised(present.c_str()) == address)
    {
        return true;
    }
    std::error_code directoryError;
    std::filesystem::create_directories(std::filesystem::path(a_rFilePath).parent_path(),
                                        directoryError);
    if (directoryError)
    {
        a_rError = "cannot make the directory of " + a_rFilePath + ": " + directoryError.message();
        return false;
    }
    attributes.putString(key, address, status);
    attributes.save(status);
    if (status.isFatal())
    {
        a_rError = "cannot write " + a_rFilePath + " (status " + std::to_string(status.getCode()) +
                   "; the trace above tells why)";
        return false;
    }
    a_rWritten = true;
    return true;
}

} // namespace nZmHost
