#pragma once
#include "orvtarn/protons/status/tAllocator.h"
#include "orvtarn/protons/status/tStatus.h"

namespace zelmarPluginCore_1_0
{
class tStaticAttributes;
}

namespace nZelmarPtpPlugin_1_0
{

// The PTP plug-in's settings from the source's file, read once when a plug-in
// is built and kept for each INITIALIZING of its port.
class tPtpClockAttributes
{
public:
    enum : u32
    {
        kMacAddressSize = 6,
        kClockIdentitySize = 8
    };

    // Every attribute at its default; no MAC address and no clock identity.
    tPtpClockAttributes();

    // Reads every attribute, the MAC address first. Its default is the MAC
    // address of the device that has orv_emb's primary IPv4 address, and none
    // without orv_emb. "EthernetMacAddress" is six hexadecimal numbers apart
    // by '-' or ':', of which the low bytes count; text that is not leaves an
    // all-zero address, which matches no device. The clock identity is the
    // address's EUI-64: its first three bytes, FF, FE, its last three.
    void read(zelmarPluginCore_1_0::tStaticAttributes& a_rAttributes,
              nOrvTarn000::tStatus& a_status);

#define ZM_PTP_CLOCK_ATTRIBUTE(field, type, key, treatment, default) type field;
#include "tPtpClockAttributes.def"
#undef ZM_PTP_CLOCK_ATTRIBUTE
    u8 m_macAddress[kMacAddressSize];
    u8 m_clockIdentity[kClockIdentitySize];
};

// The key in the file of an attribute of the table, by its field:
// tAttributeKey<&tPtpClockAttributes::m_priority1>::kKey is "PriorityOne".
template <auto kField>
struct tAttributeKey;
#define ZM_PTP_CLOCK_ATTRIBUTE(field, type, key, treatment, default)                               \
    template <>                                                                                    \
    struct tAttributeKey<&tPtpClockAttributes::field>                                              \
    {                                                                                              \
        static constexpr const char* kKey = key;                                                   \
    };
#include "tPtpClockAttributes.def"
#undef ZM_PTP_CLOCK_ATTRIBUTE

// The keys outside the table: the MAC address, and two the plug-in object
// reads for itself.
constexpr char kEthernetMacAddressKey[] = "EthernetMacAddress";
constexpr char kMulticastMsgTTLKey[] = "MulticastMsgTTL";
constexpr char kUseUtcOffsetKey[] = "UseUtcOffset";

enum : u32
{
    kMacAddressTextSize = 18
};
// The address as "%02X-%02X-%02X-%02X-%02X-%02X".
void formatMacAddress(const u8* a_pAddress, char (&a_rText)[kMacAddressTextSize]);

// "MulticastMsgTTL", default 1; a number above 255 is kStatusInvalidArgument.
[[nodiscard]] u8 readMulticastMsgTTL(zelmarPluginCore_1_0::tStaticAttributes& a_rAttributes,
                                     nOrvTarn000::tStatus& a_status);
// "UseUtcOffset", default false.
[[nodiscard]] bool readUseUtcOffset(zelmarPluginCore_1_0::tStaticAttributes& a_rAttributes,
                                    nOrvTarn000::tStatus& a_status);

} // namespace nZelmarPtpPlugin_1_0
