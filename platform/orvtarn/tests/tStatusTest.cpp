#include "orvtarn/protons/status/tStatus.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace nOrvTarn000;

TEST(tStatus, FirstFatalCodeWinsWithItsPlaceAndAWarningYieldsOnlyToIt)
{
    tStatus status;
    EXPECT_TRUE(status.isNotFatal());
    EXPECT_STREQ("", status.getComponent());
    EXPECT_FALSE(status.setCode(0, "x", "y.cpp", 1)) << "0 never counts as a code";
    EXPECT_STREQ("", status.getFile());
    EXPECT_TRUE(status.setCode(7, "warn", "w.cpp", 1));
    EXPECT_FALSE(status.setCode(8, "warn2", "w2.cpp", 2)) << "a second warning is dropped";
    EXPECT_EQ(7, status.getCode());
    EXPECT_TRUE(status.isNotFatal());
    EXPECT_TRUE(status.setCode(kStatusTimedOut, "orvptp3p", "a.cpp", 10));
    EXPECT_FALSE(status.setCode(kStatusSystemError, "other", "b.cpp", 20));
    EXPECT_FALSE(status.setCode(5, "other", "b.cpp", 20));
    EXPECT_EQ(kStatusTimedOut, status.getCode());
    EXPECT_TRUE(status.isFatal());
    EXPECT_STREQ("orvptp3p", status.getComponent());
    EXPECT_STREQ("a.cpp", status.getFile());
    EXPECT_EQ(10, status.getLine());

    status.clear();
    EXPECT_TRUE(status.isNotFatal());
    EXPECT_EQ(0, status.getLine());
    EXPECT_STREQ("", status.getFile());
    EXPECT_TRUE(status.setCode(kStatusOutOfBounds, "123456789", std::string(150, 'p').c_str(), 4));
    EXPECT_STREQ("123456789", status.getComponent());
    EXPECT_EQ(std::string(100, 'p'), status.getFile());
    status.clear();
    status.setCode(kStatusMemoryFull, "zelmarPtpPlugin17p", "f", 1);
    EXPECT_STREQ("zelmarPtp", status.getComponent());
}

TEST(tStatus, MergeCarriesCodeAndPlaceAndKeepsTheFirstFatal)
{
    tStatus inner;
    inner.setCode(kStatusInvalidState, "inner", "inner.cpp", 42);
    tStatus outer;
    EXPECT_TRUE(outer.mergeFrom(inner));
    EXPECT_EQ(kStatusInvalidState, outer.getCode());
    EXPECT_STREQ("inner", outer.getComponent());
    EXPECT_EQ(42, outer.getLine());

    tStatus other;
    other.setCode(kStatusSystemError, "other", "other.cpp", 1);
    EXPECT_FALSE(outer.mergeFrom(other));
    EXPECT_STREQ("inner.cpp", outer.getFile());
    const tStatus copy(inner);
    EXPECT_STREQ("inner.cpp", copy.getFile());
}

// A status as an older, smaller caller hands it over: only size and code.
TEST(tStatus, SmallObjectHoldsOnlyTheCode)
{
    tStatus small;
    small.setCode(kStatusMemoryFull, "before", "before.cpp", 1);
    const u32 size = 8;
    std::memcpy(static_cast<void*>(&small), &size, sizeof(size));
    EXPECT_STREQ("", small.getFile());
    EXPECT_EQ(0, small.getLine());
    small.clear();
    EXPECT_TRUE(small.setCode(kStatusTimedOut, "after", "after.cpp", 2));
    EXPECT_EQ(kStatusTimedOut, small.getCode());

    tStatus full;
    EXPECT_TRUE(full.mergeFrom(small));
    EXPECT_EQ(kStatusTimedOut, full.getCode());
    EXPECT_STREQ("", full.getFile()) << "a full status merging a small one gets no place";
    const u32 fullSize = tStatus::kFullSize;
    std::memcpy(static_cast<void*>(&small), &fullSize, sizeof(fullSize));
}
