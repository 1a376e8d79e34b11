// The value types: ordering, the saturating interval and timestamp
// arithmetic, and what each keeps when a read fails. The plain wire forms and
// traces of identities, timestamps and qualities are those of the message
// samples.
#include "orvptp/tClockIdentity.h"
#include "orvptp/tClockQuality.h"
#include "orvptp/tLogInterval.h"
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
const i64 kMaxWhole = 0x7FFFFFFFFFFF0000LL;

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

std::string str(const tPTPText& a_text)
{
    return std::string(a_text.getText() != nullptr ? a_text.getText() : "", a_text.getLength());
}

// Deserialises a_bytes into a_rObject and returns the status code.
i32 readInto(iPTPSerializable& a_rObject, const tBytes& a_bytes)
{
    tStatus status;
    tProtocolDataUnit unit(status);
    receive(unit, a_bytes);
    a_rObject.deserialize(unit, status);
    return status.getCode();
}

TEST(IdentityTest, ClockIdentitiesOrderAsUnsignedBigEndianNumbers)
{
    EXPECT_TRUE(identity(0x7F) < identity(0x80));
    EXPECT_FALSE(identity(0x80) < identity(0x7F));
    EXPECT_TRUE(identity(0x01, 0x00) > identity(0x00, 0xFF));
    EXPECT_TRUE(identity(0x00, 0x01) < identity(0x00, 0x02));
    EXPECT_FALSE(identity(5, 5) < identity(5, 5));
    EXPECT_FALSE(identity(5, 5) > identity(5, 5));
    EXPECT_TRUE(identity(5, 5) != identity(5, 6));
    EXPECT_EQ(tClockIdentity(), identity(0));
}

TEST(IdentityTest, PortIdentitiesOrderByClockThenPort)
{
    const tPortIdentity low(identity(1), 0xFFFF);
    EXPECT_TRUE(low < tPortIdentity(identity(2), 0));
    EXPECT_TRUE(tPortIdentity(identity(2), 0) > low);
    EXPECT_TRUE(tPortIdentity(identity(1), 0x7FFF) < tPortIdentity(identity(1), 0x8000));
    EXPECT_TRUE(low > tPortIdentity(identity(1), 0xFFFE));
    EXPECT_FALSE(low < low);
    EXPECT_TRUE(low != tPortIdentity(identity(1), 0xFFFE));
    EXPECT_TRUE(low != tPortIdentity(identity(3), 0xFFFF));

    // Nine octets: the read fails and the identity keeps its value.
    tPortIdentity target(identity(1), 1);
    EXPECT_EQ(readInto(target, tBytes(9, 0xAB)), kOutOfBounds);
    EXPECT_EQ(target, tPortIdentity(identity(1), 1));
}

TEST(TimeIntervalTest, NanosecondConstructorSaturatesAtTwoToTheFortySeven)
{
    const struct
    {
        i64 m_nanoseconds;
        i64 m_scaled;
    } cases[] = {
        {1, 65536},
        {-3, -3 * 65536},
        {0x00007FFFFFFFFFFFLL, kMaxWhole},
        {0x0000800000000000LL, kMax},
        {0x7FFFFFFFFFFFFFFFLL, kMax},
        {-0x0000800000000000LL, kMin}, // fits exactly
        {-0x0000800000000001LL, kMin},
        {kMin, kMin},
    };
    for (const auto& entry : cases)
    {
        EXPECT_EQ(tTimeInterval(entry.m_nanoseconds).getScaledNanoseconds(), entry.m_scaled)
            << entry.m_nanoseconds;
    }
    EXPECT_EQ(scaled(65535).getNanoseconds(), 0);
    EXPECT_EQ(scaled(-65535).getNanoseconds(), 0);
    EXPECT_EQ(scaled(-65537).getNanoseconds(), -1);
    EXPECT_EQ(scaled(3 * 65536 + 1).getNanoseconds(), 3);
    EXPECT_TRUE(scaled(5) == 5);
    EXPECT_TRUE(scaled(5) != 6);
    tTimeInterval traced = scaled(-98304);
    EXPECT_EQ(traceText(traced), "scaledNanoseconds: -98304");
}

// Sums and differences keep whole nanoseconds, truncated towards zero, and
// saturate to the largest whole-nanosecond value.
TEST(TimeIntervalTest, SumDifferenceAndQuotient)
{
    const struct
    {
        tTimeInterval m_result;
        i64 m_scaled;
    } cases[] = {
        {scaled(1) + scaled(1), 0},
        {tTimeInterval(100) + tTimeInterval(-250), -150 * 65536},
        {tTimeInterval(100) - tTimeInterval(250), -150 * 65536},
        {scaled(-98304) + tTimeInterval(0), -65536},
        {scaled(kMax) + scaled(kMax), kMaxWhole},
        {scaled(kMax) - scaled(kMin), kMaxWhole},
        {scaled(kMax) + scaled(1), kMaxWhole},
        {scaled(kMin) + scaled(kMin), kMin},
        {scaled(kMin) - scaled(kMax), kMin},
        {scaled(kMin) - scaled(1), kMin},
        {scaled(kMax) + scaled(kMin), 0},
        // Division by an interval of n nanoseconds divides by n.
        {tTimeInterval(1000) / tTimeInterval(2), 500 * 65536},
        {tTimeInterval(-1000) / tTimeInterval(3), -333 * 65536},
        {tTimeInterval(7) / tTimeInterval(-7), -65536},
        {scaled(kMin) / scaled(-1), kMax},
        // A zero divisor saturates by the dividend's sign instead of trapping.
        {tTimeInterval(5) / tTimeInterval(0), kMax},
        {tTimeInterval(-5) / tTimeInterval(0), kMin},
        {tTimeInterval(0) / tTimeInterval(0), 0},
    };
    for (std::size_t i = 0; i < sizeof(cases) / sizeof(cases[0]); ++i)
    {
        EXPECT_EQ(cases[i].m_result.getScaledNanoseconds(), cases[i].m_scaled) << "case " << i;
    }
}

TEST(TimestampTest, DifferenceBorrowsAndSaturates)
{
    const struct
    {
        tTimestamp m_a;
        tTimestamp m_b;
        i64 m_scaled;
    } cases[] = {
        {tTimestamp(10, 100), tTimestamp(10, 200), -100 * 65536},
        {tTimestamp(11, 100), tTimestamp(10, 999999900), 200 * 65536},
        {tTimestamp(10, 999999900), tTimestamp(11, 100), -200 * 65536},
        // About 39 hours fit; four days do not.
        {tTimestamp(140000, 0), tTimestamp(0, 0), 140000000000000LL * 65536},
        {tTimestamp(400000, 0), tTimestamp(0, 0), kMax},
        {tTimestamp(0, 0), tTimestamp(400000, 0), kMin},
        // Seconds so far apart that the 64-bit total wraps.
        {tTimestamp(0xFFFFFFFFFFFFULL, 0), tTimestamp(0, 0), kMax},
        {tTimestamp(0, 0), tTimestamp(0xFFFFFFFFFFFFULL, 0), kMin},
        {tTimestamp(0x4000000000000000ULL, 0), tTimestamp(0, 0), kMax},
    };
    for (std::size_t i = 0; i < sizeof(cases) / sizeof(cases[0]); ++i)
    {
        EXPECT_EQ((cases[i].m_a - cases[i].m_b).getScaledNanoseconds(), cases[i].m_scaled)
            << "case " << i;
    }
}

TEST(TimestampTest, AddingAndSubtractingIntervalsNormalises)
{
    const tTimestamp t(5, 100);
    EXPECT_EQ(t - tTimeInterval(200), tTimestamp(4, 999999900));
    EXPECT_EQ(tTimestamp(5, 999999900) + tTimeInterval(200), tTimestamp(6, 100));
    EXPECT_EQ(t + tTimeInterval(-200), tTimestamp(4, 999999900));
    EXPECT_EQ(tTimestamp(5, 999999900) - tTimeInterval(-200), tTimestamp(6, 100));
    EXPECT_EQ(t - tTimeInterval(100), tTimestamp(5, 0));
    EXPECT_EQ(t - tTimeInterval(3000000100LL), tTimestamp(2, 0));
    EXPECT_EQ(t - tTimeInterval(3000000200LL), tTimestamp(1, 999999900));
    EXPECT_EQ(t + tTimeInterval(2999999900LL), tTimestamp(8, 0));
    EXPECT_EQ(t + tTimeInterval(0), t);
    EXPECT_EQ(t + scaled(65535), t); // sub-nanosecond parts are dropped

    const tTimestamp a(1700000000, 123456789);
    const tTimestamp b(1699999990, 987654321);
    EXPECT_EQ(b + (a - b), a);
    EXPECT_EQ(a - (a - b), b);

    // The wire carries the low 48 bits of the seconds.
    tStatus status;
    tTimestamp large(0x0001000000000005ULL, 1);
    tTimestamp back;
    EXPECT_EQ(readInto(back, serialized(large, status)), 0);
    EXPECT_EQ(back, tTimestamp(5, 1));
}

TEST(ClockQualityTest, AnAccuracyOfZeroTracesWithoutPrefix)
{
    tClockQuality small(6, 0, 0x0A);
    EXPECT_EQ(traceText(small), "clockClass: 6 clockAccuracy: 00 offsetScaledLogVariance: 0x000a");
}

TEST(PortAddressTest, WireFormTraceAndLimits)
{
    tStatus status;
    tPortAddress unset;
    EXPECT_EQ(serialized(unset, status), (tBytes{0xFF, 0xFE, 0x00, 0x00}));
    const u8 ip[4] = {224, 0, 1, 129};
    tPortAddress address(1, 4, ip, status);
    EXPECT_EQ(address.getSize(), 8);
    const tBytes wire = serialized(address, status);
    EXPECT_EQ(wire, (tBytes{0x00, 0x01, 0x00, 0x04, 224, 0, 1, 129}));
    EXPECT_EQ(traceText(address),
              "networkProtocol: 0x0001 addressLength: 4 addressField: e0000181");
    tPortAddress back;
    EXPECT_EQ(readInto(back, wire), 0);
    EXPECT_EQ(back, address);
    EXPECT_EQ(std::memcmp(back.getAddressField(), ip, 4), 0);
    EXPECT_EQ(status.getCode(), 0);

    // Without bytes the length is 0; 16 bytes fit the field, 17 do not.
    EXPECT_EQ(tPortAddress(3, 4, nullptr, status).getAddressLength(), 0);
    u8 bytes[17];
    std::memset(bytes, 0xAB, sizeof(bytes));
    EXPECT_EQ(tPortAddress(2, 16, bytes, status).getAddressLength(), 16);
    EXPECT_EQ(status.getCode(), 0);
    EXPECT_EQ(tPortAddress(2, 17, bytes, status).getAddressLength(), 0);
    EXPECT_EQ(status.getCode(), kOutOfBounds);
}

// A received address that is cut short, or longer than the field, is refused
// before any octet of it is stored; the object sits between guard bytes so
// that a write past the field would show.
TEST(PortAddressTest, RefusedAddressesLeaveTheOldOne)
{
    const u8 ip[4] = {10, 1, 2, 3};
    tStatus status;
    struct tGuarded
    {
        u8 m_before[32];
        tPortAddress m_address;
        u8 m_after[32];
    } guarded;
    std::memset(guarded.m_before, 0x5C, sizeof(guarded.m_before));
    std::memset(guarded.m_after, 0x5C, sizeof(guarded.m_after));
    guarded.m_address = tPortAddress(1, 4, ip, status);

    tBytes overlong{0x00, 0x01, 0x00, 0x11};
    overlong.resize(4 + 17 + 40, 0xEE);
    for (const tBytes& bytes : {overlong, tBytes{0x00, 0x02, 0x00, 0x04, 1, 2, 3}})
    {
        EXPECT_EQ(readInto(guarded.m_address, bytes), kOutOfBounds);
        EXPECT_EQ(guarded.m_address, tPortAddress(1, 4, ip, status));
    }
    EXPECT_EQ(tBytes(guarded.m_before, guarded.m_before + 32), tBytes(32, 0x5C));
    EXPECT_EQ(tBytes(guarded.m_after, guarded.m_after + 32), tBytes(32, 0x5C));
}

TEST(PTPTextTest, WireFormHasNoTerminatorAndEmptyIsOneOctet)
{
    tStatus status;
    tPTPText text("ab;c", status);
    EXPECT_EQ(text.getSize(), 5);
    EXPECT_EQ(serialized(text, status), (tBytes{4, 'a', 'b', ';', 'c'}));
    EXPECT_EQ(traceText(text), "ab;c");
    EXPECT_EQ(readInto(text, tBytes{3, 'x', 'y', 'z', 'Q'}), 0);
    EXPECT_EQ(str(text), "xyz");

    tPTPText empty;
    EXPECT_EQ(serialized(empty, status), (tBytes{0x00}));
    EXPECT_EQ(readInto(text, tBytes{0x00}), 0);
    EXPECT_EQ(text.getLength(), 0);
    EXPECT_EQ(text.getText(), nullptr);

    // A cut text keeps the old one.
    tPTPText kept("keep", status);
    EXPECT_EQ(readInto(kept, tBytes{10, 'a', 'b'}), kOutOfBounds);
    EXPECT_EQ(str(kept), "keep");
    EXPECT_EQ(status.getCode(), 0);
}

TEST(PTPTextTest, LengthLimitCopiesAndReplacement)
{
    tStatus status;
    tPTPText longest(std::string(255, 'x').c_str(), status);
    EXPECT_EQ(status.getCode(), 0);
    EXPECT_EQ(longest.getSize(), 256);
    const tPTPText refused(std::string(256, 'y').c_str(), status);
    EXPECT_EQ(status.getCode(), nOrvTarn000::kStatusInvalidArgument);
    EXPECT_EQ(refused.getText(), nullptr);

    tStatus copyStatus;
    tPTPText original("first", copyStatus);
    tPTPText copy(original);
    original.setText("FIRST", 5, copyStatus);
    EXPECT_EQ(str(copy), "first");
    copy = original;
    EXPECT_EQ(copy, original);
    EXPECT_NE(copy.getText(), original.getText());
    original.setText("longer text", 11, copyStatus);
    EXPECT_EQ(str(original), "longer text");
    original.setText(nullptr, 0, copyStatus);
    EXPECT_EQ(original.getText(), nullptr);

    tStatus failed;
    ORVTARN_SET_CODE(failed, nOrvTarn000::kStatusInternalError);
    copy.setText("zz", 2, failed);
    EXPECT_EQ(str(copy), "FIRST");
}

} // namespace

// Any log interval a peer or management sends sets a timer within bounds:
// no tight loop below, nothing that outgrows its milliseconds above.
TEST(LogIntervalTest, ShiftsWithinItsBounds)
{
    const std::pair<i8, u32> cases[] = {{-128, 7},     {-10, 7},      {-7, 7},
                                        {-1, 500},     {0, 1000},     {3, 8000},
                                        {12, 4096000}, {13, 4096000}, {127, 4096000}};
    for (const std::pair<i8, u32>& c : cases)
    {
        EXPECT_EQ(c.second, nOrvPTP000::logIntervalToMilliseconds(c.first)) << int(c.first);
    }
}
