#include "tSourceReader.h"

#include "orvtarn/protons/status/tStatusCodes.h"
#include "tZelmarPtpPropertyNode.h"

#include <cmath>

using nZelmarPtpPlugin_1_0::tZelmarPtpPropertyNode;
using zelmarPluginCore_1_0::tZelmarPropertyNode;

namespace nZmHost
{
namespace
{

// The host's key of a local key.
constexpr u32 keyOf(i32 a_localKey)
{
    return tZelmarPtpPropertyNode::kKeyBase + static_cast<u32>(a_localKey);
}

// The port states in the host's numbering.
const char* const kPortStateNames[] = {"INITIALIZING", "FAULTY", "DISABLED", "LISTENING",
                                       "PRE_MASTER",   "MASTER", "PASSIVE",  "UNCALIBRATED",
                                       "SLAVE",        "STOPPED"};

std::optional<i64> nanosecondsOf(const std::optional<f64>& a_seconds)
{
    if (!a_seconds.has_value() || !std::isfinite(*a_seconds))
    {
        return std::nullopt;
    }
    return std::llround(*a_seconds * 1e9);
}

} // namespace

tSourceReader::~tSourceReader()
{
    m_rLibrary.disposeHandle(m_handle);
}

template <typename tType>
std::optional<tType> tSourceReader::read(u32 a_key)
{
    tType value{};
    if (m_rLibrary.zm_ptp_getProperty(nullptr, a_key, &value) != 0)
    {
        return std::nullopt;
    }
    return value;
}

std::optional<std::string> tSourceReader::readText(u32 a_key)
{
    if (m_rLibrary.zm_ptp_getProperty(nullptr, a_key, &m_handle) != 0)
    {
        return std::nullopt;
    }
    return m_rLibrary.textOf(m_handle);
}

void tSourceReader::readWatched(tStatusRecord& a_rRecord)
{
    u32 state = 0;
    const i32 code = m_rLibrary.zm_ptp_getProperty(
        nullptr, keyOf(tZelmarPtpPropertyNode::kKeyPortState), &state);
    if (code == nOrvTarn000::kStatusInvalidState || code == nOrvTarn000::kStatusNotAvailable)
    {
        a_rRecord.m_state = "OFFLINE";
    }
    else
    {
        a_rRecord.m_state =
            code == 0 && state < std::size(kPortStateNames) ? kPortStateNames[state] : "UNKNOWN";
    }
    const std::optional<u8> synchronized = read<u8>(keyOf(tZelmarPropertyNode::kKeySynchronized));
    a_rRecord.m_synchronized =
        synchronized.has_value() ? std::optional<bool>(*synchronized != 0) : std::nullopt;
    a_rRecord.m_grandmaster = readText(keyOf(tZelmarPtpPropertyNode::kKeyGrandmasterIdentity));
}

void tSourceReader::readRest(tStatusRecord& a_rRecord, tHostClock& a_rClock)
{
    a_rRecord.m_offsetNs = nanosecondsOf(read<f64>(keyOf(tZelmarPropertyNode::kKeyOffset)));
    a_rRecord.m_delayNs =
        nanosecondsOf(read<f64>(keyOf(tZelmarPtpPropertyNode::kKeyMeanPathDelay)));
    a_rRecord.m_ratePpm = a_rClock.readRatePpm();
    a_rRecord.m_errorNs = a_rClock.readErrorNs();
    a_rRecord.m_stepsRemoved = read<u32>(keyOf(tZelmarPtpPropertyNode::kKeyStepsRemoved));
    a_rRecord.m_grandmasterPriority1 =
        read<u32>(keyOf(tZelmarPtpPropertyNode::kKeyGrandmasterPriority1));
    a_rRecord.m_grandmasterClockClass =
        read<u32>(keyOf(tZelmarPtpPropertyNode::kKeyGrandmasterClockClass));
    a_rRecord.m_clock = readText(keyOf(tZelmarPtpPropertyNode::kKeyClockIdentity));
    a_rRecord.m_priority1 = read<u32>(keyOf(tZelmarPtpPropertyNode::kKeyPriority1));
    a_rRecord.m_clockClass = read<u32>(keyOf(tZelmarPtpPropertyNode::kKeyClockClass));
    a_rRecord.m_address = readText(keyOf(tZelmarPtpPropertyNode::kKeyIpAddress));
}

std::optional<u32> tSourceReader::takeErrorCode()
{
    return read<u32>(keyOf(tZelmarPropertyNode::kKeyErrorCode));
}

bool watchedDiffer(const tStatusRecord& a_first, const tStatusRecord& a_second)
{
    return a_first.m_state != a_second.m_state ||
           a_first.m_synchronized != a_second.m_synchronized ||
           a_first.m_grandmaster != a_second.m_grandmaster;
}

} // namespace nZmHost
