#pragma once
#include "orvptp/iPTPSerializable.h"

namespace nOrvPTP000
{

// The quality a clock announces: class, accuracy and the scaled log variance
// of its offset. No value range is checked; unknown codes stay as received.
class tClockQuality : public iPTPSerializable
{
public:
    enum : u16
    {
        kLength = 4
    };
    enum : u8
    {
        kDefaultClockClass = 187,
        kAccuracyUnknown = 0xFE
    };
    enum : u16
    {
        kDefaultOffsetScaledLogVariance = 0xFFFF
    };

    // Class 187, accuracy unknown (0xFE), variance 0xFFFF.
    tClockQuality();
    tClockQuality(u8 a_clockClass, u8 a_clockAccuracy, u16 a_offsetScaledLogVariance);

    u8 getClockClass() const { return m_clockClass; }
    u8 getClockAccuracy() const { return m_clockAccuracy; }
    u16 getOffsetScaledLogVariance() const { return m_offsetScaledLogVariance; }

    bool operator==(const tClockQuality& a_other) const
    {
        return m_clockClass == a_other.m_clockClass && m_clockAccuracy == a_other.m_clockAccuracy &&
               m_offsetScaledLogVariance == a_other.m_offsetScaledLogVariance;
    }
    bool operator!=(const tClockQuality& a_other) const { return !(*this == a_other); }

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void serialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    // Leaves the quality unchanged when the data runs out.
    void deserialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    u16 getSize() override { return kLength; }

private:
    u8 m_clockClass;
    u8 m_clockAccuracy;
    u16 m_offsetScaledLogVariance;
};

} // namespace nOrvPTP000
