#pragma once
#include "orvptp/iPTPSerializable.h"

namespace nOrvPTP000
{

// A signed time span in scaled nanoseconds: nanoseconds times 2^16.
//
// Arithmetic saturates instead of wrapping: spans beyond about +-2^47 ns stick
// at the ends of the 64-bit range. Sums, differences and quotients keep whole
// nanoseconds only, so a saturated result is the largest whole-nanosecond
// multiple rather than the raw limit.
class tTimeInterval : public iPTPSerializable
{
public:
    enum : u16
    {
        kLength = 8
    };
    static constexpr i64 kMaxScaled = 0x7FFFFFFFFFFFFFFFLL;
    static constexpr i64 kMinScaled = -kMaxScaled - 1;
    static constexpr i64 kScale = 65536;

    tTimeInterval() : m_scaledNanoseconds(0) {}
    // a_nanoseconds times 2^16, saturating.
    explicit tTimeInterval(i64 a_nanoseconds);

    // Truncated towards zero.
    i64 getNanoseconds() const { return m_scaledNanoseconds / kScale; }
    i64 getScaledNanoseconds() const { return m_scaledNanoseconds; }
    void setScaledNanoseconds(i64 a_scaledNanoseconds)
    {
        m_scaledNanoseconds = a_scaledNanoseconds;
    }

    bool operator==(i64 a_scaledNanoseconds) const
    {
        return m_scaledNanoseconds == a_scaledNanoseconds;
    }
    bool operator!=(i64 a_scaledNanoseconds) const
    {
        return m_scaledNanoseconds != a_scaledNanoseconds;
    }

    tTimeInterval operator+(const tTimeInterval& a_other) const;
    tTimeInterval operator-(const tTimeInterval& a_other) const;
    // Divides by the number of nanoseconds that a_divisor was built from, so
    // 1000 ns / tTimeInterval(2) is 500 ns. A zero divisor gives the saturated
    // value of the dividend's sign, or zero for a zero dividend.
    tTimeInterval operator/(const tTimeInterval& a_divisor) const;

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void serialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    // Leaves the interval unchanged when the data runs out.
    void deserialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    u16 getSize() override { return kLength; }

private:
    i64 m_scaledNanoseconds;
};

} // namespace nOrvPTP000
