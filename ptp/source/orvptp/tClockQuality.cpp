#include "orvptp/tClockQuality.h"

#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tClockQuality::tClockQuality()
    : m_clockClass(kDefaultClockClass), m_clockAccuracy(kAccuracyUnknown),
      m_offsetScaledLogVariance(kDefaultOffsetScaledLogVariance)
{
}

tClockQuality::tClockQuality(u8 a_clockClass, u8 a_clockAccuracy, u16 a_offsetScaledLogVariance)
    : m_clockClass(a_clockClass), m_clockAccuracy(a_clockAccuracy),
      m_offsetScaledLogVariance(a_offsetScaledLogVariance)
{
}

tTrace& tClockQuality::trace(tTrace& a_trace)
{
    // Accuracy and variance print as hexadecimal with at least 2 and 4 digits,
    // the 0x prefix appearing for non-zero values only.
    a_trace.writeFormatted("clockClass: %u ", static_cast<unsigned>(m_clockClass));
    a_trace.writeFormatted("clockAccuracy: %#.2x ", static_cast<unsigned>(m_clockAccuracy));
    return a_trace.writeFormatted("offsetScaledLogVariance: %#.4x",
                                  static_cast<unsigned>(m_offsetScaledLogVariance));
}

void tClockQuality::serialize(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeUInteger8(m_clockClass, a_status);
    a_target.writeEnumeration8(m_clockAccuracy, a_status);
    a_target.writeUInteger16(m_offsetScaledLogVariance, a_status);
}

void tClockQuality::deserialize(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    u8 clockClass = 0;
    u8 clockAccuracy = 0;
    u16 offsetScaledLogVariance = 0;
    a_target.readUInteger8(clockClass, a_status);
    a_target.readEnumeration8(clockAccuracy, a_status);
    a_target.readUInteger16(offsetScaledLogVariance, a_status);
    if (a_status.isNotFatal())
    {
        *this = tClockQuality(clockClass, clockAccuracy, offsetScaledLogVariance);
    }
}

} // namespace nOrvPTP000
