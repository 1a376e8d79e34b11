#pragma once
#include "tZelmarPropertyNode.h"

namespace nZelmarPtpPlugin_1_0
{

// The PTP plug-in's host properties, read from the clock at the moment of
// the read, above those every plug-in has. Host key = kKeyBase + local key.
// While the source is offline every key fails with kStatusInvalidState, a
// base key too; a port state or a clockAccuracy outside the host's
// numbering gives kStatusInternalError.
class tZelmarPtpPropertyNode : public zelmarPluginCore_1_0::tZelmarPropertyNode
{
public:
    enum : u32
    {
        kKeyBase = 0x10000
    };
    // The local keys of the PTP plug-in, with their kinds.
    enum : i32
    {
        kKeyIpAddress = 0x1000,                // string: the device's IPv4 address, dotted
        kKeyPortState = 0x1001,                // u32: INITIALIZING..SLAVE 0..8, none 9
        kKeyClockIdentity = 0x1002,            // string: 16 lower-case hex digits
        kKeyClockClass = 0x1003,               // u32
        kKeyClockAccuracy = 0x1004,            // u32: 254 is 0, 0x20..0x31 are 1..18
        kKeyPriority1 = 0x1005,                // u32
        kKeyPriority2 = 0x1006,                // u32
        kKeyGrandmasterIdentity = 0x1007,      // string, as kKeyClockIdentity
        kKeyGrandmasterClockClass = 0x1008,    // u32
        kKeyGrandmasterClockAccuracy = 0x1009, // u32, as kKeyClockAccuracy
        kKeyGrandmasterPriority1 = 0x100A,     // u32
        kKeyGrandmasterPriority2 = 0x100B,     // u32
        kKeyStepsRemoved = 0x100C,             // u32
        kKeyLogSyncInterval = 0x100D,          // u32: the i8's bits, -1 is 255
        kKeyMeanPathDelay = 0x100E,            // f64: s
        kKeyCurrentUtcOffset = 0x100F,         // f64: s
        kKeyCurrentUtcOffsetValid = 0x1010     // bool
    };

    explicit tZelmarPtpPropertyNode(nOrvTarn000::tStatus& a_status) : tZelmarPropertyNode(a_status)
    {
    }

protected:
    u32 getKeyBase() override { return kKeyBase; }
    u32 getKeyKind(i32 a_localKey) override;
    void getBool(i32 a_localKey, u8* a_pValue, nOrvTarn000::tStatus& a_status) override;
    void getU32(i32 a_localKey, u32* a_pValue, nOrvTarn000::tStatus& a_status) override;
    void getF64(i32 a_localKey, f64* a_pValue, nOrvTarn000::tStatus& a_status) override;
    void getString(i32 a_localKey, void* a_pValue, nOrvTarn000::tStatus& a_status) override;
};

} // namespace nZelmarPtpPlugin_1_0
