#include "orvtarn/protons/status/tAssertion.h"

#include <gtest/gtest.h>

#include <string>

using namespace nOrvTarn000;

namespace
{

// A guarded operation in the shape the system writes them: the macro reports,
// sets its code, and the operation leaves through its normal failure path.
int g_requireLine = 0;

int guarded(const void* a_pProperty, tStatus& a_status)
{
    g_requireLine = __LINE__ + 1;
    if (!REQUIRE(NULL != a_pProperty, kStatusInvalidArgument, a_status))
    {
        return -1;
    }
    return 1;
}

std::string capture(void (*a_pAction)())
{
    testing::internal::CaptureStdout();
    a_pAction();
    return testing::internal::GetCapturedStdout();
}

} // namespace

TEST(tAssertion, FailedRequireReportsSetsCodeAndCarriesOn)
{
    tStatus status;
    int result = 0;
    testing::internal::CaptureStdout();
    result = guarded(nullptr, status);
    const int line = g_requireLine;
    const std::string text = testing::internal::GetCapturedStdout();

    EXPECT_EQ(-1, result);
    EXPECT_EQ(kStatusInvalidArgument, status.getCode());
    EXPECT_EQ(line, status.getLine());
    EXPECT_STREQ("test", status.getComponent());

    const std::string header = "[test--" + std::to_string(line) + "--tAssertionTest.cpp";
    const std::string expected = header + std::string(49 - header.size(), '-') +
                                 "] ASSERTION FAILED: REQUIRE (NULL != a_pProperty)\n";
    EXPECT_EQ(expected, text);
}

TEST(tAssertion, HoldingConditionIsSilentAndKeepsStatus)
{
    tStatus status;
    int dummy = 0;
    testing::internal::CaptureStdout();
    EXPECT_EQ(1, guarded(&dummy, status));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_TRUE(status.isNotFatal());
}

TEST(tAssertion, FirstFailureKeepsItsPlaceAcrossMacros)
{
    tStatus status;
    testing::internal::CaptureStdout();
    REQUIRE(false, kStatusInternalError, status);
    CHECK(false, kStatusInvalidArgument, status);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(kStatusInternalError, status.getCode());
}

TEST(tAssertion, ReportOnlyFormsAndExceptionText)
{
    const std::string check = capture([] { CHECK(0 <= -1); });
    EXPECT_NE(std::string::npos, check.find("] ASSERTION FAILED: CHECK (0 <= -1)\n"));
    const std::string exception = capture([] { EXCEPTION("Unknown port state!\n"); });
    EXPECT_NE(std::string::npos,
              exception.find("] ASSERTION FAILED: EXCEPTION (Unknown port state!\n)\n"));
}

TEST(tAssertion, LevelsChooseTheirPrefix)
{
    const std::string warning =
        capture([] { reportAssertion("warning", "CHECK (x)", "c", "f.cpp", 1, 0, nullptr); });
    EXPECT_NE(std::string::npos, warning.find("] ASSERTION WARNING: CHECK (x)\n"));
    const std::string other =
        capture([] { reportAssertion("paranoid", "CHECK (x)", "c", "f.cpp", 1, 0, nullptr); });
    EXPECT_NE(std::string::npos, other.find("] ASSERTION FAILED (paranoid): CHECK (x)\n"));
}
