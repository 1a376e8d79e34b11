#include "tDigitalFilter.h"
#include "tLinearRegressionFilter.h"
#include "tSpuriousSpikeFilter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace zelmarPluginCore_1_0;
using nOrvTarn000::kStatusInternalError;
using nOrvTarn000::kStatusInvalidArgument;
using nOrvTarn000::tStatus;

namespace
{

struct tSpikeCase
{
    const char* m_name;
    u32 m_historySize;
    std::vector<f64> m_inputs;
    std::vector<f64> m_outputs;
};

// Each limit is five times the mean absolute output in the window.
const tSpikeCase kSpikeCases[] = {
    {"first limit 1e9, then five times the mean", 60, {3.0, 100.0, 100.0}, {3.0, 15.0, 45.0}},
    {"a sample exactly at the limit passes", 60, {3.0, -15.0, 45.0}, {3.0, -15.0, 45.0}},
    {"the first limit keeps the sign", 60, {-2e9, 3e9}, {-1e9, 3e9}},
    {"size 1 looks at the last output only",
     1,
     {2.0, 100.0, -1000.0, 1.0},
     {2.0, 10.0, -50.0, 1.0}},
    {"the oldest output leaves the window", 2, {1.0, 1.0, 10.0, 100.0}, {1.0, 1.0, 5.0, 15.0}},
    {"a zero history pins the limit at zero", 3, {0.0, 0.0, 0.0, 7.0, -7.0}, {0, 0, 0, 0, -0.0}},
};

TEST(SpuriousSpikeFilter, LimitsToFiveTimesTheMeanOfTheWindow)
{
    for (const tSpikeCase& testCase : kSpikeCases)
    {
        tStatus status;
        tSpuriousSpikeFilter filter;
        filter.setHistorySize(testCase.m_historySize, status);
        filter.reset(status);
        std::vector<f64> outputs;
        for (const f64 input : testCase.m_inputs)
        {
            outputs.push_back(filter.filter(input, status));
        }
        EXPECT_EQ(testCase.m_outputs, outputs) << testCase.m_name;
        EXPECT_EQ(0, status.getCode()) << testCase.m_name;
    }
}

TEST(SpuriousSpikeFilter, ResetRestoresTheFirstLimitAndKeepsTheSize)
{
    tStatus status;
    tSpuriousSpikeFilter filter;
    filter.setHistorySize(1, status);
    filter.filter(1.0, status);
    filter.reset(status);
    EXPECT_EQ(5e8, filter.filter(5e8, status)) << "limit 1e9 again";
    EXPECT_EQ(2.5e9, filter.filter(1e10, status)) << "window of one again";
}

// The spike filter's window of 1 and the regression's of 2 are the smallest.
TEST(SampleFilters, HistorySizeBelowTheMinimumIsRefused)
{
    tStatus spikeStatus, regressionStatus, fine;
    testing::internal::CaptureStdout();
    tSpuriousSpikeFilter().setHistorySize(0, spikeStatus);
    tLinearRegressionFilter().setHistorySize(1, regressionStatus);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(kStatusInvalidArgument, spikeStatus.getCode());
    EXPECT_EQ(kStatusInvalidArgument, regressionStatus.getCode());
    tSpuriousSpikeFilter().setHistorySize(1, fine);
    tLinearRegressionFilter().setHistorySize(2, fine);
    EXPECT_EQ(0, fine.getCode());
}

// y[n] = (b0 x[n] + b1 x[n-1] + b2 x[n-2] - a0 y[n-1] - a1 y[n-2]) times the gain;
// the first row has the timekeeper's coefficients.
TEST(DigitalFilter, FollowsTheDifferenceEquation)
{
    struct tCase
    {
        tDigitalFilter::tCoefficients m_feedback;
        tDigitalFilter::tCoefficients m_feedForward;
        f64 m_gain;
        std::vector<f64> m_outputs;
    };
    const tCase kCases[] = {
        {{0.5, 0.0},
         {1.0, 1.0, 0.0},
         1.0,
         {1.0, 0.5, -0.25, -1.875, 3.9375, 8.03125, 1.234375, -1.3671875}},
        {{-0.25, 0.125},
         {0.5, -1.5, 2.0},
         3.0,
         {1.5, -4.125, 4.78125, -1.2890625, 15.580078125, -22.94384765625, 0.1915283203125,
          30.290863037109375}},
    };
    const f64 kInputs[] = {1.0, 0.0, 0.0, -2.0, 5.0, 5.0, 0.25, -1.0};
    for (const tCase& testCase : kCases)
    {
        tStatus status;
        tDigitalFilter filter;
        filter.setCoefficients(testCase.m_feedback, testCase.m_feedForward, status);
        filter.setGain(testCase.m_gain, status);
        std::vector<f64> outputs;
        for (const f64 input : kInputs)
        {
            outputs.push_back(filter.filter(input, status));
        }
        EXPECT_EQ(testCase.m_outputs, outputs);
        filter.reset(status);
        EXPECT_EQ(testCase.m_outputs[0], filter.filter(kInputs[0], status)) << "after reset";
        EXPECT_EQ(0, status.getCode());
    }
}

TEST(DigitalFilter, FilterWithoutCoefficientsGivesZeroAndFails)
{
    tStatus status, filterStatus;
    tDigitalFilter filter;
    filter.setCoefficients({0.5}, {1.0, 1.0, 0.0}, status);
    EXPECT_EQ(kStatusInvalidArgument, status.getCode()) << "a0 and a1 are read";
    EXPECT_EQ(0.0, filter.filter(1.0, filterStatus));
    EXPECT_EQ(nOrvTarn000::kStatusInvalidState, filterStatus.getCode());
}

struct tRegressionCase
{
    const char* m_name;
    u32 m_historySize;
    std::vector<std::pair<i64, i64>> m_samples; // value, interval
    f64 m_slope;
    f64 m_intercept;
    f64 m_meanInterval;
    i64 m_span;
};

// The x axis starts at the beginning of the oldest sample's interval.
const tRegressionCase kRegressionCases[] = {
    {"one sample: no line", 6, {{10, 7}}, 0.0, 0.0, 7.0, 7},
    {"two samples one apart", 6, {{10, 1}, {20, 1}}, 10.0, 0.0, 1.0, 2},
    {"the oldest lies at its own interval", 6, {{5, 2}, {11, 3}}, 2.0, 1.0, 2.5, 5},
    {"the window drops the oldest", 2, {{10, 1}, {20, 1}, {40, 1}}, 20.0, 0.0, 1.0, 2},
    {"a falling line", 6, {{0, 4}, {-8, 4}, {-16, 4}}, -2.0, 8.0, 4.0, 12},
};

TEST(LinearRegressionFilter, FitsTheWindow)
{
    for (const tRegressionCase& testCase : kRegressionCases)
    {
        tStatus status;
        tLinearRegressionFilter filter;
        filter.setHistorySize(testCase.m_historySize, status);
        f64 slope = -1.0;
        f64 intercept = -1.0;
        f64 meanInterval = -1.0;
        i64 span = -1;
        for (const std::pair<i64, i64>& sample : testCase.m_samples)
        {
            filter.addSample(sample.first, sample.second, slope, intercept, meanInterval, span,
                             status);
        }
        EXPECT_EQ(0, status.getCode()) << testCase.m_name;
        EXPECT_DOUBLE_EQ(testCase.m_slope, slope) << testCase.m_name;
        EXPECT_NEAR(testCase.m_intercept, intercept, 1e-9) << testCase.m_name;
        EXPECT_EQ(testCase.m_meanInterval, meanInterval) << testCase.m_name;
        EXPECT_EQ(testCase.m_span, span) << testCase.m_name;
    }
}

TEST(LinearRegressionFilter, AllSamplesAtOneXGiveNoSlopeAndFiniteOutputs)
{
    tStatus status;
    tLinearRegressionFilter filter;
    filter.setHistorySize(6, status);
    f64 slope = 0.0;
    f64 intercept = 0.0;
    f64 meanInterval = 0.0;
    i64 span = 0;
    filter.addSample(10, 5, slope, intercept, meanInterval, span, status);
    testing::internal::CaptureStdout();
    filter.addSample(20, 0, slope, intercept, meanInterval, span, status);
    const std::string report = testing::internal::GetCapturedStdout();
    EXPECT_EQ(kStatusInternalError, status.getCode());
    EXPECT_NE(std::string::npos, report.find("ASSERTION FAILED: CHECK (0 != denominator)"));
    EXPECT_EQ(0.0, slope);
    EXPECT_EQ(0.0, intercept);
    EXPECT_EQ(2.5, meanInterval);
    EXPECT_EQ(5, span);
}

} // namespace
