#include "tPtpClockAttributes.h"

#include "tNetworkDevices.h"
#include "tOrvEmbModule.h"
#include "tStaticAttributes.h"

#include <cstdio>
#include <cstring>

using nOrvTarn000::tStatus;
using nOrvTarn000::tString;
using zelmarPluginCore_1_0::tStaticAttributes;

namespace nZelmarPtpPlugin_1_0
{
namespace
{

enum : u32
{
    kMaxTtl = 255,
    kDefaultTtl = 1
};

u8 readLow8(tStaticAttributes& a_rAttributes, const char* a_pKey, u32 a_default, tStatus& a_status)
{
    return static_cast<u8>(a_rAttributes.getU32(a_pKey, a_default, a_status));
}

i8 readSignedLow8(tStaticAttributes& a_rAttributes, const char* a_pKey, i32 a_default,
                  tStatus& a_status)
{
    return static_cast<i8>(static_cast<u8>(a_rAttributes.getI32(a_pKey, a_default, a_status)));
}

// Sync intervals of 0.5, 1 and 2 seconds only.
i8 readSyncInterval(tStaticAttributes& a_rAttributes, const char* a_pKey, i32 a_default,
                    tStatus& a_status)
{
    const i8 value = readSignedLow8(a_rAttributes, a_pKey, a_default, a_status);
    return value < -1 || value > 1 ? 0 : value;
}

bool readFlag(tStaticAttributes& a_rAttributes, const char* a_pKey, bool a_default,
              tStatus& a_status)
{
    return a_rAttributes.getBool(a_pKey, a_default, a_status);
}

tString readText(tStaticAttributes& a_rAttributes, const char* a_pKey, const char* a_pDefault,
                 tStatus& a_status)
{
    return a_rAttributes.getString(a_pKey, a_pDefault, a_status);
}

// The MAC address of the last device whose IP address is orv_emb's primary
// one, as text; empty without orv_emb or without such a device. A library
// that lacks the function stands for the primary address 0.
tString defaultMacAddress(tStatus& a_status)
{
    char text[kMacAddressTextSize] = "";
    const tOrvEmbModule orvEmb;
    if (a_status.isNotFatal() && orvEmb.isLoaded())
    {
        const u32 primary = orvEmb.getPrimaryIPAddress();
        tNetworkDeviceConfig config;
        for (u32 device = nNetworkDevices::iterateDeviceList(0, a_status); device != 0;
             device = nNetworkDevices::iterateDeviceList(device, a_status))
        {
            if (nNetworkDevices::getDeviceConfig(device, config, a_status) &&
                config.m_ipAddress == primary)
            {
                formatMacAddress(config.m_macAddress, text);
            }
        }
    }
    tString address(text);
    CHECK_ALLOCATION(address, a_status);
    return address;
}

// Six numbers with '-' or ':' between them, each cut to its low byte; false
// for text that holds fewer.
bool parseMacAddress(tString a_text, u8* a_pAddress)
{
    for (char& character : a_text)
    {
        character = character == ':' ? '-' : character;
    }
    unsigned int numbers[tPtpClockAttributes::kMacAddressSize] = {};
    if (std::sscanf(a_text.c_str(), "%x-%x-%x-%x-%x-%x", &numbers[0], &numbers[1], &numbers[2],
                    &numbers[3], &numbers[4], &numbers[5]) != 6)
    {
        return false;
    }
    for (u32 index = 0; index < tPtpClockAttributes::kMacAddressSize; ++index)
    {
        a_pAddress[index] = static_cast<u8>(numbers[index]);
    }
    return true;
}

} // namespace

tPtpClockAttributes::tPtpClockAttributes()
    :
#define ZM_PTP_CLOCK_ATTRIBUTE(field, type, key, treatment, default) field(default),
#include "tPtpClockAttributes.def"
#undef ZM_PTP_CLOCK_ATTRIBUTE
      m_macAddress(), m_clockIdentity()
{
}

void tPtpClockAttributes::read(tStaticAttributes& a_rAttributes, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    const tString defaultAddress = defaultMacAddress(a_status);
    const tString address =
        a_rAttributes.getString(kEthernetMacAddressKey, defaultAddress, a_status);
    if (a_status.isFatal() || !parseMacAddress(address, m_macAddress))
    {
        std::memset(m_macAddress, 0, sizeof(m_macAddress));
    }
    const u8 identity[kClockIdentitySize] = {
        m_macAddress[0], m_macAddress[1], m_macAddress[2], 0xFF, 0xFE,
        m_macAddress[3], m_macAddress[4], m_macAddress[5]};
    std::memcpy(m_clockIdentity, identity, sizeof(m_clockIdentity));

#define ZM_PTP_CLOCK_ATTRIBUTE(field, type, key, treatment, default)                               \
    field = treatment(a_rAttributes, key, default, a_status);
#include "tPtpClockAttributes.def"
#undef ZM_PTP_CLOCK_ATTRIBUTE
}

void formatMacAddress(const u8* a_pAddress, char (&a_rText)[kMacAddressTextSize])
{
    std::snprintf(a_rText, sizeof(a_rText), "%02X-%02X-%02X-%02X-%02X-%02X", a_pAddress[0],
                  a_pAddress[1], a_pAddress[2], a_pAddress[3], a_pAddress[4], a_pAddress[5]);
}

u8 readMulticastMsgTTL(tStaticAttributes& a_rAttributes, tStatus& a_status)
{
    const u32 ttl = a_rAttributes.getU32(kMulticastMsgTTLKey, kDefaultTtl, a_status);
    if (ttl > kMaxTtl)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidArgument);
        return kDefaultTtl;
    }
    return static_cast<u8>(ttl);
}

bool readUseUtcOffset(tStaticAttributes& a_rAttributes, tStatus& a_status)
{
    return a_rAttributes.getBool(kUseUtcOffsetKey, false, a_status);
}

} // namespace nZelmarPtpPlugin_1_0
