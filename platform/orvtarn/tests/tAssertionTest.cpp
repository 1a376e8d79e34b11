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

TEST(tAssertion, FailedRequireReportsSetsCodeAndCarriesOnAndAHoldingOneIsSilent)
{
    tStatus status;
    int dummy = 0;
    testing::internal::CaptureStdout();
    EXPECT_EQ(1, guarded(&dummy, status));
    EXPECT_EQ(-1, guarded(nullptr, status));
    CHECK(false, kStatusInternalError, status);
    const std::string text = testing::internal::GetCapturedStdout();
    EXPECT_EQ(kStatusInvalidArgument, status.getCode()) << "the first failure keeps its place";
    EXPECT_EQ(g_requireLine, status.getLine());
    EXPECT_STREQ("test", status.getComponent());

    const std::string header = "[test--" + std::to_string(g_requireLine) + "--tAssertionTest.cpp";
    EXPECT_EQ(0u, text.find(header + std::string(49 - header.size(), '-') +
                            "] ASSERTION FAILED: REQUIRE (NULL != a_pProperty)\n"))
        << text;
}

TEST(tAssertion, ReportFormsAndLevels)
{
    EXPECT_NE(std::string::npos,
              capture([] { CHECK(0 <= -1); }).find("] ASSERTION FAILED: CHECK (0 <= -1)\n"));
    EXPECT_NE(std::string::npos,
              capture([] { EXCEPTION("Unknown port state!\n"); })
                  .find("] ASSERTION FAILED: EXCEPTION (Unknown port state!\n)\n"));
    EXPECT_NE(std::string::npos,
              capture([] { reportAssertion("warning", "CHECK (x)", "c", "f.cpp", 1, 0, nullptr); })
                  .find("] ASSERTION WARNING: CHECK (x)\n"));
    EXPECT_NE(std::string::npos,
              capture([] { reportAssertion("paranoid", "CHECK (x)", "c", "f.cpp", 1, 0, nullptr); })
                  .find("] ASSERTION FAILED (paranoid): CHECK (x)\n"));
}
