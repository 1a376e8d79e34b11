#include "orvptp/tClockIdentity.h"
#include "orvptp/tClockQuality.h"
#include "orvptp/tPTPText.h"
#include "orvptp/tPortAddress.h"
#include "orvptp/tPortIdentity.h"
#include "orvptp/tTimeInterval.h"
#include "orvptp/tTimestamp.h"
#include "tWireTestSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace nOrvPTP000;
using namespace nWireTest;
using nOrvTarn000::tStatus;

namespace
{

const i32 kOutOfBounds = nOrvTarn000::kStatusOutOfBounds;
const i64 kMax = tTimeInterval::kMaxScaled;
const i64 kMin = tTimeInterval::kMinScaled;

tClockIdentity identity(u8 a_first, u8 a_last = 0)
{
    const u8 bytes[8] = {a_first, 0, 0, 0, 0, 0, 0, a_last};
    return tClockIdentity(bytes);
}

tTimeInterval scaled(i64 a_scaled)
{
    tTimeInterval interval;
    interval.setScaledNanoseconds(a_scaled);
    return interval;
}

// ---------------------------------------------------------------- identities

TEST(ClockIdentityTest, OrdersAsUnsignedBigEndianNumber)
{
    EXPECT_TRUE(identity(0x7F) < identity(0x80));
    EXPECT_FALSE(identity(0x80) < identity(0x7F));
    // The first octet outweighs every later one.
    EXPECT_TRUE(identity(0x01, 0x00) > identity(0x00, 0xFF));
    EXPECT_TRUE(identity(0x00, 0x01) < identity(0x00, 0x02));
    EXPECT_TRUE(identity(5, 5) == identity(5, 5));
    EXPECT_FALSE(identity(5, 5) < identity(5, 5));
    EXPECT_FALSE(identity(5, 5) > identity(5, 5));
    EXPECT_TRUE(identity(5, 5) != identity(5, 6));
    EXPECT_EQ(tClockIdentity(), identity(0));
}

TEST(ClockIdentityTest, WireFormAndTrace)
{
    const u8 bytes[8] = {0x00, 0x1B, 0x19, 0xFF, 0xFE, 0x0A, 0xBC, 0xDE};
    tClockIdentity id(bytes);
    tStatus status;
    EXPECT_EQ(serialized(id, status), tBytes(bytes, bytes + 8));
    EXPECT_EQ(id.getSize(), 8);
    EXPECT_EQ(traceText(id), "001b19fffe0abcde");
    EXPECT_EQ(traceText(const_cast<tClockIdentity&>(kAllOnesClockIdentity)), "ffffffffffffffff");
}

TEST(PortIdentityTest, OrdersByClockThenPort)
{
    const tPortIdentity low(identity(1), 0xFFFF);
    const tPortIdentity high(identity(2), 0);
    EXPECT_TRUE(low < high);
    EXPECT_TRUE(high > low);
    // Equal clocks: the port number decides, unsigned, 0xFFFF greatest.
    EXPECT_TRUE(tPortIdentity(identity(1), 0x7FFF) < tPortIdentity(identity(1), 0x8000));
    EXPECT_TRUE(tPortIdentity(identity(1), 0xFFFF) > tPortIdentity(identity(1), 0xFFFE));
    EXPECT_FALSE(low < low);
    EXPECT_TRUE(low == tPortIdentity(identity(1), 0xFFFF));
    EXPECT_TRUE(low != tPortIdentity(identity(1), 0xFFFE));
    EXPECT_TRUE(low != tPortIdentity(identity(3), 0xFFFF));
}

TEST(PortIdentityTest, SettersIgnoreAFatalStatus)
{
    tPortIdentity id;
    tStatus status;
    id.setPortNumber(7, status);
    id.setClockIdentity(identity(9), status);
    EXPECT_EQ(id, tPortIdentity(identity(9), 7));
    ORVTARN_SET_CODE(status, nOrvTarn000::kStatusInternalError);
    id.setPortNumber(8, status);
    id.setClockIdentity(identity(10), status);
    EXPECT_EQ(id, tPortIdentity(identity(9), 7));
}

TEST(PortIdentityTest, WireFormTraceAndTruncation)
{
    tPortIdentity id(identity(0xA5, 0x5A), 0x1234);
    tStatus status;
    const tBytes wire = serialized(id, status);
    EXPECT_EQ(wire, (tBytes{0xA5, 0, 0, 0, 0, 0, 0, 0x5A, 0x12, 0x34}));
    EXPECT_EQ(traceText(id), "clockIdentity: a50000000000005a portNumber: 4660\n");

    // Nine octets: the read fails and the identity keeps its value.
    tProtocolDataUnit unit(status);
    receive(unit, tBytes(wire.begin(), wire.end() - 1));
    tPortIdentity target(identity(1), 1);
    target.deserialize(unit, status);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
    EXPECT_EQ(target, tPortIdentity(identity(1), 1));
}

// ---------------------------------------------------------------- intervals

TEST(TimeIntervalTest, NanosecondConstructorSaturatesAtBothEnds)
{
    EXPECT_EQ(tTimeInterval(1).getScaledNanoseconds(), 65536);
    EXPECT_EQ(tTimeInterval(-3).getScaledNanoseconds(), -3 * 65536);
    EXPECT_EQ(tTimeInterval(0x00007FFFFFFFFFFFLL).getScaledNanoseconds(), 0x7FFFFFFFFFFF0000LL);
    EXPECT_EQ(tTimeInterval(0x0000800000000000LL).getScaledNanoseconds(), kMax);
    EXPECT_EQ(tTimeInterval(0x7FFFFFFFFFFFFFFFLL).getScaledNanoseconds(), kMax);
    // -2^47 fits exactly; one less saturates.
    EXPECT_EQ(tTimeInterval(-0x0000800000000000LL).getScaledNanoseconds(), kMin);
    EXPECT_EQ(tTimeInterval(-0x0000800000000001LL).getScaledNanoseconds(), kMin);
    EXPECT_EQ(tTimeInterval(kMin).getScaledNanoseconds(), kMin);
}

TEST(TimeIntervalTest, NanosecondsTruncateTowardsZero)
{
    EXPECT_EQ(scaled(65535).getNanoseconds(), 0);
    EXPECT_EQ(scaled(-65535).getNanoseconds(), 0);
    EXPECT_EQ(scaled(-65537).getNanoseconds(), -1);
    EXPECT_EQ(scaled(3 * 65536 + 1).getNanoseconds(), 3);
    EXPECT_TRUE(scaled(5) == 5);
    EXPECT_TRUE(scaled(5) != 6);
}

TEST(TimeIntervalTest, SumAndDifferenceKeepWholeNanoseconds)
{
    EXPECT_EQ((scaled(1) + scaled(1)).getScaledNanoseconds(), 0);
    EXPECT_EQ((tTimeInterval(100) + tTimeInterval(-250)).getNanoseconds(), -150);
    EXPECT_EQ((tTimeInterval(100) - tTimeInterval(250)).getNanoseconds(), -150);
    // -1.5 ns + 0 ns: truncated towards zero, to -1 ns.
    EXPECT_EQ((scaled(-98304) + tTimeInterval(0)).getScaledNanoseconds(), -65536);
}

TEST(TimeIntervalTest, SumAndDifferenceSaturateToWholeNanoseconds)
{
    const i64 maxWhole = 0x7FFFFFFFFFFF0000LL;
    EXPECT_EQ((scaled(kMax) + scaled(kMax)).getScaledNanoseconds(), maxWhole);
    EXPECT_EQ((scaled(kMax) - scaled(kMin)).getScaledNanoseconds(), maxWhole);
    EXPECT_EQ((scaled(kMin) + scaled(kMin)).getScaledNanoseconds(), kMin);
    EXPECT_EQ((scaled(kMin) - scaled(kMax)).getScaledNanoseconds(), kMin);
    EXPECT_EQ((scaled(kMin) - scaled(1)).getScaledNanoseconds(), kMin);
    EXPECT_EQ((scaled(kMax) + scaled(1)).getScaledNanoseconds(), maxWhole);
    // Opposite signs never overflow.
    EXPECT_EQ((scaled(kMax) + scaled(kMin)).getScaledNanoseconds(), 0);
}

TEST(TimeIntervalTest, DivisionDividesByTheDivisorsNanoseconds)
{
    EXPECT_EQ((tTimeInterval(1000) / tTimeInterval(2)).getNanoseconds(), 500);
    EXPECT_EQ((tTimeInterval(-1000) / tTimeInterval(3)).getNanoseconds(), -333);
    EXPECT_EQ((tTimeInterval(7) / tTimeInterval(-7)).getNanoseconds(), -1);
    EXPECT_EQ((scaled(kMin) / scaled(-1)).getScaledNanoseconds(), kMax);
    // A zero divisor saturates by the dividend's sign instead of trapping.
    EXPECT_EQ((tTimeInterval(5) / tTimeInterval(0)).getScaledNanoseconds(), kMax);
    EXPECT_EQ((tTimeInterval(-5) / tTimeInterval(0)).getScaledNanoseconds(), kMin);
    EXPECT_EQ((tTimeInterval(0) / tTimeInterval(0)).getScaledNanoseconds(), 0);
}

// The wire forms of intervals and timestamps are in the message literals.
TEST(TimeIntervalTest, Trace)
{
    tTimeInterval interval = scaled(-98304);
    EXPECT_EQ(traceText(interval), "scaledNanoseconds: -98304");
}

// ---------------------------------------------------------------- timestamps

TEST(TimestampTest, DifferenceBorrowsAndSaturatesBeyondTwoToTheFortySeven)
{
    EXPECT_EQ((tTimestamp(10, 100) - tTimestamp(10, 200)).getNanoseconds(), -100);
    EXPECT_EQ((tTimestamp(11, 100) - tTimestamp(10, 999999900)).getNanoseconds(), 200);
    EXPECT_EQ((tTimestamp(10, 999999900) - tTimestamp(11, 100)).getNanoseconds(), -200);
    // About 39 hours fit; four days do not.
    EXPECT_EQ((tTimestamp(140000, 0) - tTimestamp(0, 0)).getNanoseconds(), 140000000000000LL);
    EXPECT_EQ((tTimestamp(400000, 0) - tTimestamp(0, 0)).getScaledNanoseconds(), kMax);
    EXPECT_EQ((tTimestamp(0, 0) - tTimestamp(400000, 0)).getScaledNanoseconds(), kMin);
    // Seconds so far apart that the 64-bit total wraps.
    EXPECT_EQ((tTimestamp(0xFFFFFFFFFFFFULL, 0) - tTimestamp(0, 0)).getScaledNanoseconds(), kMax);
    EXPECT_EQ((tTimestamp(0, 0) - tTimestamp(0xFFFFFFFFFFFFULL, 0)).getScaledNanoseconds(), kMin);
    EXPECT_EQ((tTimestamp(0x4000000000000000ULL, 0) - tTimestamp(0, 0)).getScaledNanoseconds(),
              kMax);
}

TEST(TimestampTest, AddingAndSubtractingIntervalsNormalises)
{
    EXPECT_EQ(tTimestamp(5, 100) - tTimeInterval(200), tTimestamp(4, 999999900));
    EXPECT_EQ(tTimestamp(5, 999999900) + tTimeInterval(200), tTimestamp(6, 100));
    EXPECT_EQ(tTimestamp(5, 100) + tTimeInterval(-200), tTimestamp(4, 999999900));
    EXPECT_EQ(tTimestamp(5, 999999900) - tTimeInterval(-200), tTimestamp(6, 100));
    EXPECT_EQ(tTimestamp(5, 100) - tTimeInterval(100), tTimestamp(5, 0));
    EXPECT_EQ(tTimestamp(5, 100) - tTimeInterval(3000000100LL), tTimestamp(2, 0));
    EXPECT_EQ(tTimestamp(5, 100) - tTimeInterval(3000000200LL), tTimestamp(1, 999999900));
    EXPECT_EQ(tTimestamp(5, 100) + tTimeInterval(2999999900LL), tTimestamp(8, 0));
    EXPECT_EQ(tTimestamp(5, 100) + tTimeInterval(0), tTimestamp(5, 100));
    // Sub-nanosecond parts are dropped.
    EXPECT_EQ(tTimestamp(5, 100) + scaled(65535), tTimestamp(5, 100));

    const tTimestamp a(1700000000, 123456789);
    const tTimestamp b(1699999990, 987654321);
    EXPECT_EQ(b + (a - b), a);
    EXPECT_EQ(a - (a - b), b);
}

TEST(TimestampTest, WireCarriesFortyEightBitsOfSeconds)
{
    tStatus status;
    tTimestamp large(0x0001000000000005ULL, 1);
    tProtocolDataUnit unit(status);
    large.serialize(unit, status);
    tTimestamp back;
    back.deserialize(unit, status);
    EXPECT_EQ(back, tTimestamp(5, 1));
    EXPECT_EQ(status.getCode(), 0);
    tTimestamp ts(0x0000876543210FEDULL, 999999999);
    EXPECT_EQ(traceText(ts), "secondsField: 148868987686893 nanosecondsField: 999999999");
}

// ---------------------------------------------------------------- quality

TEST(ClockQualityTest, DefaultsWireAndTrace)
{
    tClockQuality quality;
    EXPECT_EQ(quality.getClockClass(), 187);
    EXPECT_EQ(quality.getClockAccuracy(), 0xFE);
    EXPECT_EQ(quality.getOffsetScaledLogVariance(), 0xFFFF);
    tStatus status;
    EXPECT_EQ(serialized(quality, status), (tBytes{187, 0xFE, 0xFF, 0xFF}));
    EXPECT_EQ(traceText(quality),
              "clockClass: 187 clockAccuracy: 0xfe offsetScaledLogVariance: 0xffff");

    tClockQuality small(6, 0, 0x0A);
    EXPECT_EQ(traceText(small), "clockClass: 6 clockAccuracy: 00 offsetScaledLogVariance: 0x000a");

    // Values the standard does not list are kept as received.
    tProtocolDataUnit unit(status);
    receive(unit, tBytes{0xFF, 0x99, 0x12, 0x34});
    quality.deserialize(unit, status);
    EXPECT_EQ(quality, tClockQuality(0xFF, 0x99, 0x1234));
}

// ---------------------------------------------------------------- address

TEST(PortAddressTest, ConstructionAndWireRoundTrip)
{
    tStatus status;
    tPortAddress unset;
    EXPECT_EQ(serialized(unset, status), (tBytes{0xFF, 0xFE, 0x00, 0x00}));
    const u8 ip[4] = {224, 0, 1, 129};
    tPortAddress address(1, 4, ip, status);
    EXPECT_EQ(status.getCode(), 0);
    EXPECT_EQ(address.getSize(), 8);
    const tBytes wire = serialized(address, status);
    EXPECT_EQ(wire, (tBytes{0x00, 0x01, 0x00, 0x04, 224, 0, 1, 129}));
    EXPECT_EQ(traceText(address),
              "networkProtocol: 0x0001 addressLength: 4 addressField: e0000181");

    tProtocolDataUnit unit(status);
    receive(unit, wire);
    tPortAddress back;
    back.deserialize(unit, status);
    EXPECT_EQ(back, address);
    EXPECT_EQ(std::memcmp(back.getAddressField(), ip, 4), 0);

    tPortAddress none(3, 4, nullptr, status);
    EXPECT_EQ(none.getAddressLength(), 0);
    EXPECT_EQ(none.getNetworkProtocol(), 3);
}

TEST(PortAddressTest, AddressLongerThanTheFieldIsRefused)
{
    u8 bytes[17];
    std::memset(bytes, 0xAB, sizeof(bytes));
    tStatus status;
    tPortAddress address(2, 17, bytes, status);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
    EXPECT_EQ(address.getAddressLength(), 0);

    tStatus fieldStatus;
    tPortAddress full(2, 16, bytes, fieldStatus);
    EXPECT_EQ(fieldStatus.getCode(), 0);
    EXPECT_EQ(full.getAddressLength(), 16);
}

// A received addressLength above the field is refused before any octet of the
// address is read, and the address keeps its old value. The object sits
// between guard bytes so that a write past the field would show.
TEST(PortAddressTest, ReceivedAddressLengthAboveSixteenWritesNothing)
{
    tStatus status;
    const u8 ip[4] = {10, 1, 2, 3};
    struct tGuarded
    {
        u8 m_before[32];
        tPortAddress m_address;
        u8 m_after[32];
    } guarded;
    std::memset(guarded.m_before, 0x5C, sizeof(guarded.m_before));
    std::memset(guarded.m_after, 0x5C, sizeof(guarded.m_after));
    guarded.m_address = tPortAddress(1, 4, ip, status);

    tBytes wire{0x00, 0x01, 0x00, 0x11};
    wire.resize(wire.size() + 17 + 40, 0xEE);
    tProtocolDataUnit unit(status);
    receive(unit, wire);
    guarded.m_address.deserialize(unit, status);

    EXPECT_EQ(status.getCode(), kOutOfBounds);
    tStatus expectedStatus;
    EXPECT_EQ(guarded.m_address, tPortAddress(1, 4, ip, expectedStatus));
    EXPECT_EQ(unit.getReadPositionBits(), 4u * 8);
    EXPECT_EQ(tBytes(guarded.m_before, guarded.m_before + 32), tBytes(32, 0x5C));
    EXPECT_EQ(tBytes(guarded.m_after, guarded.m_after + 32), tBytes(32, 0x5C));
}

TEST(PortAddressTest, TruncatedAddressKeepsTheOldValue)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    receive(unit, tBytes{0x00, 0x01, 0x00, 0x04, 1, 2, 3});
    tPortAddress address;
    address.deserialize(unit, status);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
    EXPECT_EQ(address, tPortAddress());
}

// ---------------------------------------------------------------- text

TEST(PTPTextTest, EmptyTextIsOneOctetAndNullPointer)
{
    tPTPText text;
    tStatus status;
    EXPECT_EQ(serialized(text, status), (tBytes{0x00}));
    EXPECT_EQ(text.getText(), nullptr);

    tPTPText read("old", status);
    tProtocolDataUnit unit(status);
    receive(unit, tBytes{0x00});
    read.deserialize(unit, status);
    EXPECT_EQ(status.getCode(), 0);
    EXPECT_EQ(read.getLength(), 0);
    EXPECT_EQ(read.getText(), nullptr);
}

TEST(PTPTextTest, WireFormHasNoTerminator)
{
    tStatus status;
    tPTPText text("ab;c", status);
    EXPECT_EQ(text.getSize(), 5);
    EXPECT_EQ(serialized(text, status), (tBytes{4, 'a', 'b', ';', 'c'}));
    EXPECT_EQ(traceText(text), "ab;c");

    tProtocolDataUnit unit(status);
    receive(unit, tBytes{3, 'x', 'y', 'z', 'Q'});
    tPTPText read;
    read.deserialize(unit, status);
    EXPECT_EQ(std::string(read.getText(), read.getLength()), "xyz");
}

TEST(PTPTextTest, TextLongerThanItsFieldIsRefused)
{
    tStatus status;
    const std::string longest(255, 'x');
    tPTPText fits(longest.c_str(), status);
    EXPECT_EQ(status.getCode(), 0);
    EXPECT_EQ(fits.getLength(), 255);
    EXPECT_EQ(fits.getSize(), 256);

    const std::string tooLong(256, 'y');
    tPTPText refused(tooLong.c_str(), status);
    EXPECT_EQ(status.getCode(), nOrvTarn000::kStatusInvalidArgument);
    EXPECT_EQ(refused.getLength(), 0);
    EXPECT_EQ(refused.getText(), nullptr);
}

TEST(PTPTextTest, TruncatedTextKeepsTheOldOne)
{
    tStatus status;
    tPTPText text("keep", status);
    tProtocolDataUnit unit(status);
    receive(unit, tBytes{10, 'a', 'b'});
    text.deserialize(unit, status);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
    EXPECT_EQ(std::string(text.getText(), text.getLength()), "keep");
}

TEST(PTPTextTest, CopiesAreDeepAndSetTextReplaces)
{
    tStatus status;
    tPTPText original("first", status);
    tPTPText copy(original);
    original.setText("FIRST", 5, status);
    EXPECT_EQ(std::string(copy.getText(), copy.getLength()), "first");
    EXPECT_EQ(std::string(original.getText(), original.getLength()), "FIRST");

    copy = original;
    EXPECT_EQ(copy, original);
    EXPECT_NE(copy.getText(), original.getText());

    original.setText("longer text", 11, status);
    EXPECT_EQ(std::string(original.getText(), original.getLength()), "longer text");
    original.setText(nullptr, 0, status);
    EXPECT_EQ(original.getText(), nullptr);

    // A fatal status changes nothing.
    tStatus failed;
    ORVTARN_SET_CODE(failed, nOrvTarn000::kStatusInternalError);
    copy.setText("zz", 2, failed);
    EXPECT_EQ(std::string(copy.getText(), copy.getLength()), "FIRST");
}

} // namespace
