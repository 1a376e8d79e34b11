#include "orvtarn/protons/status/tStatus.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace nOrvTarn000;

namespace
{

// A status as an older, smaller caller would hand it over: only size and code.
void shrink(tStatus& a_status, u32 a_size)
{
    std::memcpy(static_cast<void*>(&a_status), &a_size, sizeof(a_size));
}

} // namespace

TEST(tStatus, FreshStatusIsSuccessWithNoPlace)
{
    tStatus status;
    EXPECT_EQ(0, status.getCode());
    EXPECT_TRUE(status.isNotFatal());
    EXPECT_FALSE(status.isFatal());
    EXPECT_STREQ("", status.getComponent());
    EXPECT_STREQ("", status.getFile());
    EXPECT_EQ(0, status.getLine());
    EXPECT_FALSE(status.setCode(0, "x", "y.cpp", 1)) << "0 never counts as a code";
    EXPECT_STREQ("", status.getFile());
}

TEST(tStatus, FirstFatalCodeWinsWithItsPlace)
{
    tStatus status;
    EXPECT_TRUE(status.setCode(kStatusTimedOut, "orvptp3p", "a.cpp", 10));
    EXPECT_FALSE(status.setCode(kStatusSystemError, "other", "b.cpp", 20));
    EXPECT_FALSE(status.setCode(5, "other", "b.cpp", 20));
    EXPECT_EQ(kStatusTimedOut, status.getCode());
    EXPECT_STREQ("orvptp3p", status.getComponent());
    EXPECT_STREQ("a.cpp", status.getFile());
    EXPECT_EQ(10, status.getLine());
}

TEST(tStatus, WarningYieldsOnlyToFatal)
{
    tStatus status;
    EXPECT_TRUE(status.setCode(7, "warn", "w.cpp", 1));
    EXPECT_FALSE(status.setCode(8, "warn2", "w2.cpp", 2)) << "a second warning is dropped";
    EXPECT_EQ(7, status.getCode());
    EXPECT_TRUE(status.isNotFatal());
    EXPECT_TRUE(status.setCode(kStatusMemoryFull, "fatal", "f.cpp", 3));
    EXPECT_EQ(kStatusMemoryFull, status.getCode());
    EXPECT_STREQ("fatal", status.getComponent());
    EXPECT_EQ(3, status.getLine());
}

TEST(tStatus, ClearMakesItUsableAgain)
{
    tStatus status;
    status.setCode(kStatusCancelled, "c", "c.cpp", 9);
    status.clear();
    EXPECT_TRUE(status.isNotFatal());
    EXPECT_EQ(0, status.getLine());
    EXPECT_STREQ("", status.getFile());
    EXPECT_TRUE(status.setCode(kStatusOutOfBounds, "d", "d.cpp", 4));
    EXPECT_EQ(kStatusOutOfBounds, status.getCode());
}

TEST(tStatus, ComponentAndFileAreCutAndTerminated)
{
    tStatus status;
    status.setCode(kStatusMemoryFull, "123456789", "f", 1);
    EXPECT_STREQ("123456789", status.getComponent());
    status.clear();
    status.setCode(kStatusMemoryFull, "zelmarPtpPlugin17p", "f", 1);
    EXPECT_STREQ("zelmarPtp", status.getComponent());

    const std::string longPath(150, 'p');
    status.clear();
    status.setCode(kStatusMemoryFull, "c", longPath.c_str(), 1);
    EXPECT_EQ(std::string(100, 'p'), status.getFile());
}

TEST(tStatus, MergeCarriesCodePlaceAndKeepsFirstFatal)
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
    EXPECT_EQ(kStatusInvalidState, outer.getCode());
    EXPECT_STREQ("inner.cpp", outer.getFile());

    const tStatus copy(inner);
    EXPECT_EQ(kStatusInvalidState, copy.getCode());
    EXPECT_STREQ("inner.cpp", copy.getFile());
}

TEST(tStatus, SmallObjectHoldsOnlyTheCode)
{
    tStatus small;
    small.setCode(kStatusMemoryFull, "before", "before.cpp", 1);
    shrink(small, 8);
    EXPECT_STREQ("", small.getComponent());
    EXPECT_STREQ("", small.getFile());
    EXPECT_EQ(0, small.getLine());
    small.clear();
    EXPECT_TRUE(small.setCode(kStatusTimedOut, "after", "after.cpp", 2));
    EXPECT_EQ(kStatusTimedOut, small.getCode());

    // A full status merging from a small one gets the code and no place.
    tStatus full;
    EXPECT_TRUE(full.mergeFrom(small));
    EXPECT_EQ(kStatusTimedOut, full.getCode());
    EXPECT_STREQ("", full.getFile());
    shrink(small, tStatus::kFullSize);
}
