#pragma once
#include "orvptp/tTimeInterval.h"

namespace nOrvPTP000
{

// A point in time: seconds and nanoseconds since the epoch of the timescale.
// Only the low 48 bits of the seconds travel on the wire. The arithmetic keeps
// the nanoseconds between 0 and 999,999,999; construction and the wire take
// any value as it comes.
class tTimestamp : public iPTPSerializable
{
public:
    enum : u16
    {
        kLength = 10
    };
    static constexpr u32 kNanosecondsPerSecond = 1000000000u;

    tTimestamp() : m_secondsField(0), m_nanosecondsField(0) {}
    tTimestamp(u64 a_seconds, u32 a_nanoseconds)
        : m_secondsField(a_seconds), m_nanosecondsField(a_nanoseconds)
    {
    }

    void getTime(u64& a_rSeconds, u32& a_rNanoseconds) const
    {
        a_rSeconds = m_secondsField;
        a_rNanoseconds = m_nanosecondsField;
    }
    u64 getSeconds() const { return m_secondsField; }
    u32 getNanoseconds() const { return m_nanosecondsField; }

    bool operator==(const tTimestamp& a_other) const
    {
        return m_secondsField == a_other.m_secondsField &&
               m_nanosecondsField == a_other.m_nanosecondsField;
    }
    bool operator!=(const tTimestamp& a_other) const { return !(*this == a_other); }

    // The span from a_other to this, saturating at about +-2^47 ns.
    tTimeInterval operator-(const tTimestamp& a_other) const;
    // Moves by the whole nanoseconds of the interval; its sub-nanosecond part is dropped.
    tTimestamp operator+(const tTimeInterval& a_interval) const;
    tTimestamp operator-(const tTimeInterval& a_interval) const;

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void serialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    // Leaves the timestamp unchanged when the data runs out.
    void deserialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    u16 getSize() override { return kLength; }

private:
    // Moves back by a_nanoseconds (forward when negative).
    tTimestamp movedBack(i64 a_nanoseconds) const;

    u64 m_secondsField;
    u32 m_nanosecondsField;
};

} // namespace nOrvPTP000
