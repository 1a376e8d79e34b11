#include "tZelmarPtpPropertyNode.h"

#include "nDiagraTools.h"
#include "orvptp/tPortStateCodes.h"
#include "orvtarn/protons/status/tAssertion.h"
#include "tZelmarPtpPlugin.h"

#include <cstdio>
#include <cstring>
#include <type_traits>

using nOrvPTP000::iPTPOrdinaryClock;
using nOrvPTP000::tClockIdentity;
using nOrvTarn000::tStatus;

namespace nZelmarPtpPlugin_1_0
{
namespace
{

// A host string: a NUL-terminated text that fits an identity or an address.
struct tText
{
    char m_chars[24];
};

// What a key is read from: the plug-in, held under the source's mutex, and
// its clock.
struct tSubject
{
    tZelmarPtpPlugin& m_rPlugin;
    nOrvPTP000::tPTPOrdinaryClock& m_rClock;
};

// One key of the PTP plug-in and how its value is read.
template <typename tValue>
struct tKey
{
    i32 m_localKey;
    tValue (*m_read)(const tSubject& a_rSubject, tStatus& a_status);
};

enum : u8
{
    kAccuracyUnknown = 0xFE,
    kAccuracyFirst = 0x20,
    kAccuracyLast = 0x31
};
enum : u32
{
    kHostPortStateNone = 9
};
const f64 kSecondsPerScaledNanosecond = 1e-9 / 65536.0;

// The host numbers INITIALIZING to SLAVE from 0, and no state as 9.
u32 toHostPortState(u8 a_state, tStatus& a_status)
{
    if (a_state == nOrvPTP000::kPortStateStopped)
    {
        return kHostPortStateNone;
    }
    if (a_state > nOrvPTP000::kPortStateSlave)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInternalError);
        return 0;
    }
    return a_state - nOrvPTP000::kPortStateInitializing;
}

// The host numbers "unknown" 0 and the standard's accuracies from 1 on.
u32 toHostClockAccuracy(u8 a_accuracy, tStatus& a_status)
{
    if (a_accuracy == kAccuracyUnknown)
    {
        return 0;
    }
    if (a_accuracy < kAccuracyFirst || a_accuracy > kAccuracyLast)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInternalError);
        return 0;
    }
    return a_accuracy - kAccuracyFirst + 1;
}

// An integer of the clock as its own bits, unsigned: an i8 of -1 is 255.
template <auto kGetter>
u32 readBits(const tSubject& a_rSubject, tStatus&)
{
    const auto value = (a_rSubject.m_rClock.*kGetter)();
    return static_cast<std::make_unsigned_t<decltype(value)>>(value);
}

template <auto kGetter>
u32 readAccuracy(const tSubject& a_rSubject, tStatus& a_status)
{
    return toHostClockAccuracy((a_rSubject.m_rClock.*kGetter)(), a_status);
}

u32 readPortState(const tSubject& a_rSubject, tStatus& a_status)
{
    return toHostPortState(a_rSubject.m_rClock.getPortState(), a_status);
}

template <auto kGetter>
tText readIdentity(const tSubject& a_rSubject, tStatus&)
{
    const tClockIdentity identity = (a_rSubject.m_rClock.*kGetter)();
    const u8* const pBytes = identity.getBytes();
    tText text;
    std::snprintf(text.m_chars, sizeof(text.m_chars), "%02x%02x%02x%02x%02x%02x%02x%02x", pBytes[0],
                  pBytes[1], pBytes[2], pBytes[3], pBytes[4], pBytes[5], pBytes[6], pBytes[7]);
    return text;
}

tText readIpAddress(const tSubject& a_rSubject, tStatus&)
{
    // Network byte order is the bytes' own order.
    const u32 address = a_rSubject.m_rPlugin.getIpAddress();
    u8 bytes[sizeof(address)];
    std::memcpy(bytes, &address, sizeof(bytes));
    tText text;
    std::snprintf(text.m_chars, sizeof(text.m_chars), "%u.%u.%u.%u", bytes[0], bytes[1], bytes[2],
                  bytes[3]);
    return text;
}

f64 readMeanPathDelay(const tSubject& a_rSubject, tStatus&)
{
    // The clock carries the interval as its scaled nanoseconds.
    return static_cast<f64>(a_rSubject.m_rClock.getMeanPathDelay()) * kSecondsPerScaledNanosecond;
}

f64 readCurrentUtcOffset(const tSubject& a_rSubject, tStatus&)
{
    return a_rSubject.m_rClock.getCurrentUtcOffset();
}

u8 readCurrentUtcOffsetValid(const tSubject& a_rSubject, tStatus&)
{
    return a_rSubject.m_rClock.getCurrentUtcOffsetValid() ? 1 : 0;
}

typedef tZelmarPtpPropertyNode tNode;
typedef iPTPOrdinaryClock tClock;

const tKey<u8> kBoolKeys[] = {
    {tNode::kKeyCurrentUtcOffsetValid, readCurrentUtcOffsetValid},
};
const tKey<u32> kU32Keys[] = {
    {tNode::kKeyPortState, readPortState},
    {tNode::kKeyClockClass, readBits<&tClock::getClockClass>},
    {tNode::kKeyClockAccuracy, readAccuracy<&tClock::getClockAccuracy>},
    {tNode::kKeyPriority1, readBits<&tClock::getPriority1>},
    {tNode::kKeyPriority2, readBits<&tClock::getPriority2>},
    {tNode::kKeyGrandmasterClockClass, readBits<&tClock::getGrandmasterClockClass>},
    {tNode::kKeyGrandmasterClockAccuracy, readAccuracy<&tClock::getGrandmasterClockAccuracy>},
    {tNode::kKeyGrandmasterPriority1, readBits<&tClock::getGrandmasterPriority1>},
    {tNode::kKeyGrandmasterPriority2, readBits<&tClock::getGrandmasterPriority2>},
    {tNode::kKeyStepsRemoved, readBits<&tClock::getStepsRemoved>},
    {tNode::kKeyLogSyncInterval, readBits<&tClock::getLogSyncInterval>},
};
const tKey<f64> kF64Keys[] = {
    {tNode::kKeyMeanPathDelay, readMeanPathDelay},
    {tNode::kKeyCurrentUtcOffset, readCurrentUtcOffset},
};
const tKey<tText> kStringKeys[] = {
    {tNode::kKeyIpAddress, readIpAddress},
    {tNode::kKeyClockIdentity, readIdentity<&tClock::getClockIdentity>},
    {tNode::kKeyGrandmasterIdentity, readIdentity<&tClock::getGrandmasterIdentity>},
};

template <typename tValue, size_t kCount>
const tKey<tValue>* findKey(const tKey<tValue> (&a_keys)[kCount], i32 a_localKey)
{
    for (const tKey<tValue>& rKey : a_keys)
    {
        if (rKey.m_localKey == a_localKey)
        {
            return &rKey;
        }
    }
    return nullptr;
}

// Reads a_localKey if it is one of a_keys (true), with the plug-in acquired
// first: offline that fails for every key, a base key too. False for a key
// that the base serves.
template <typename tValue, size_t kCount>
bool readKey(zelmarPluginCore_1_0::tZelmarPropertyNode& a_rNode,
             const tKey<tValue> (&a_keys)[kCount], i32 a_localKey, tValue& a_rValue,
             tStatus& a_status)
{
    tZelmarPtpPlugin* const pPlugin = static_cast<tZelmarPtpPlugin*>(a_rNode.getPlugin(a_status));
    if (pPlugin == nullptr || a_status.isFatal())
    {
        return true;
    }
    const tKey<tValue>* const pKey = findKey(a_keys, a_localKey);
    if (pKey == nullptr)
    {
        return false;
    }
    nOrvPTP000::tPTPOrdinaryClock* const pClock = pPlugin->getPtpClock();
    if (REQUIRE(NULL != pClock, nOrvTarn000::kStatusInternalError, a_status))
    {
        a_rValue = pKey->m_read(tSubject{*pPlugin, *pClock}, a_status);
    }
    return true;
}

// A typed read: this node's key, or else the base's operation a_base.
template <typename tValue, size_t kCount, typename tBase>
void serve(zelmarPluginCore_1_0::tZelmarPropertyNode& a_rNode, const tKey<tValue> (&a_keys)[kCount],
           i32 a_localKey, tValue* a_pValue, tStatus& a_status, tBase a_base)
{
    tValue value = 0;
    if (readKey(a_rNode, a_keys, a_localKey, value, a_status))
    {
        zelmarPluginCore_1_0::writeProperty(a_pValue, value, a_status);
    }
    else
    {
        a_base();
    }
}

} // namespace

u32 tZelmarPtpPropertyNode::getKeyKind(i32 a_localKey)
{
    if (findKey(kBoolKeys, a_localKey) != nullptr)
    {
        return kKindBool;
    }
    if (findKey(kU32Keys, a_localKey) != nullptr)
    {
        return kKindU32;
    }
    if (findKey(kF64Keys, a_localKey) != nullptr)
    {
        return kKindF64;
    }
    if (findKey(kStringKeys, a_localKey) != nullptr)
    {
        return kKindString;
    }
    return tZelmarPropertyNode::getKeyKind(a_localKey);
}

void tZelmarPtpPropertyNode::getBool(i32 a_localKey, u8* a_pValue, tStatus& a_status)
{
    serve(*this, kBoolKeys, a_localKey, a_pValue, a_status,
          [&] { tZelmarPropertyNode::getBool(a_localKey, a_pValue, a_status); });
}

void tZelmarPtpPropertyNode::getU32(i32 a_localKey, u32* a_pValue, tStatus& a_status)
{
    serve(*this, kU32Keys, a_localKey, a_pValue, a_status,
          [&] { tZelmarPropertyNode::getU32(a_localKey, a_pValue, a_status); });
}

void tZelmarPtpPropertyNode::getF64(i32 a_localKey, f64* a_pValue, tStatus& a_status)
{
    serve(*this, kF64Keys, a_localKey, a_pValue, a_status,
          [&] { tZelmarPropertyNode::getF64(a_localKey, a_pValue, a_status); });
}

void tZelmarPtpPropertyNode::getString(i32 a_localKey, void* a_pValue, tStatus& a_status)
{
    tText value{};
    if (readKey(*this, kStringKeys, a_localKey, value, a_status))
    {
        nDiagraTools::copyToHostString(value.m_chars, static_cast<u32>(std::strlen(value.m_chars)),
                                       a_pValue, a_status);
    }
    else
    {
        tZelmarPropertyNode::getString(a_localKey, a_pValue, a_status);
    }
}

} // namespace nZelmarPtpPlugin_1_0
