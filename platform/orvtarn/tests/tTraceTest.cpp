#include "orvtarn/protons/status/tTrace.h"
#include "orvtarn/protons/status/tConsoleTraceDestination.h"
#include "orvtarn/protons/status/tTraceBudget.h"
#include "tManualClock.h"
#include "tTraceCapture.h"

#include <gtest/gtest.h>

#include <string>

using namespace nOrvTarn000;

namespace
{

class tPoint : public iTraceable
{
public:
    tTrace& trace(tTrace& a_trace) override
    {
        return a_trace.write("tPoint x=").writeNumber(static_cast<i32>(-3), 10);
    }
};

TEST(TraceTest, HeadersOfEachLayout)
{
    tTraceLayout bare;
    bare.m_showComponent = bare.m_showLine = bare.m_showFile = false;
    bare.m_headerWidth = 4;
    tTraceLayout wide;
    wide.m_showVersion = wide.m_showKind = true;
    wide.m_fixedHeader = false;
    wide.m_headerWidth = 0;
    const std::string dashes(49, '-');
    const std::string longFile(80, 'f');
    tTraceCapture capture;
    tTrace traces[] = {tTrace(capture), tTrace(capture, bare), tTrace(capture, wide)};
    const struct
    {
        int m_layout; // default, bare, wide
        const char* m_pFile;
        u64 m_line;
        i32 m_indent;
        std::string m_expected;
    } kCases[] = {
        {0, "C:\\src\\orvptp\\tPTPNode", 7, 0,
         "[orvptp3p--7--tPTPNode" + dashes.substr(22) + "] x\n"},
        {0, "plain.cpp", 1, 0, "[orvptp3p--1--plain.cpp" + dashes.substr(23) + "] x\n"},
        {0, "/rooted.cpp", 1, 0, "[orvptp3p--1--/rooted.cpp" + dashes.substr(25) + "] x\n"},
        {0, "a/b\\c/last.cpp", 1, 0, "[orvptp3p--1--last.cpp" + dashes.substr(22) + "] x\n"},
        {0, longFile.c_str(), 1234, 0, "[orvptp3p--1234--" + std::string(49 - 17, 'f') + "] x\n"},
        // Without fields the header is blank; the depth never goes below 0.
        {1, "f", 1, 1, "     x\n"},
        {1, "f", 1, 0, "       x\n"},
        {1, "f", 1, 2, "     x\n"},
        {1, "f", 1, 2, "     x\n"},
        {2, "x/y.cpp", 3, 0, "[orvptp3p--v1.0--3--y.cpp--105] x\n"},
    };
    for (const auto& testCase : kCases)
    {
        capture.m_writes.clear();
        traces[testCase.m_layout]
            .writeHeader("orvptp3p", testCase.m_line, testCase.m_pFile, 105, testCase.m_indent)
            .write("x")
            .endLine();
        EXPECT_EQ(testCase.m_expected, capture.all()) << testCase.m_pFile;
    }
}

TEST(TraceTest, LinesGoOutOnNewlineOrFullBuffer)
{
    tTraceCapture capture;
    tTrace trace(capture);
    trace.write(std::string(300, 'a').c_str());
    ASSERT_EQ(1u, capture.m_writes.size());
    EXPECT_EQ(std::string(253, 'a'), capture.m_writes[0]);
    trace.endLine();
    trace.write("one\ntwo");
    EXPECT_EQ(
        (std::vector<std::string>{std::string(253, 'a'), std::string(47, 'a') + "\n", "one\ntwo"}),
        capture.m_writes)
        << "a text with a newline goes out whole";
}

TEST(TraceTest, NumbersBooleansCountsObjectsAndFormattedText)
{
    tTraceCapture capture;
    tTrace trace(capture);
    tPoint point;
    trace.writeNumber(static_cast<u32>(255), 16).write(' ');
    trace.writeNumber(static_cast<u32>(0), 10).write(' ');
    trace.writeNumber(static_cast<i32>(-1), 10).write(' ');
    trace.writeNumber(static_cast<u32>(15), 8).write(' ');
    trace.writeNumber(static_cast<i16>(-32768), 10).write(' ');
    trace.writeNumber(static_cast<u16>(65535), 16).write(' ');
    trace.writeNumber(static_cast<i64>(INT64_MIN), 10).write(' ');
    trace.writeNumber(static_cast<i64>(-255), 16).write(' ');
    trace.writeNumber(static_cast<u32>(35), 36).endLine();
    trace.writeNumber(static_cast<u64>(UINT64_MAX), 2).endLine();
    trace.write(true).write(' ').write(false).write(' ').write("abcdef", 3).write(' ');
    trace.write(point).writeFormatted(" %s=%d", "value", 42).endLine();
    trace.writeFormatted("%s", std::string(2000, 'z').c_str()).endLine();
    EXPECT_EQ("0xFF 0 -1 8#17 -32768 0xFFFF -9223372036854775808 -0xFF 36#Z\n2#" +
                  std::string(64, '1') + "\ntrue(1) false(0) abc tPoint x=-3 value=42\n" +
                  "!!Formatted string exceeds kMaxTraceLine characters!!" + std::string(1023, 'z') +
                  "\n",
              capture.all());
}

TEST(TraceTest, ConsoleDestinationOptionTextNameAndPrinting)
{
    tConsoleTraceDestination console;
    char buffer[5] = {'x', 'x', 'x', 'x', 'x'};
    u32 needed = 0;
    EXPECT_EQ(buffer + 4, console.getOptionText(buffer, sizeof(buffer), &needed));
    EXPECT_STREQ(" --d", buffer);
    EXPECT_EQ(20u, needed);
    char whole[32];
    EXPECT_EQ(whole + 19, console.getOptionText(whole, sizeof(whole), nullptr));
    EXPECT_STREQ(" --destination tarn", whole);
    EXPECT_EQ(nullptr, console.getOptionText(nullptr, 8, &needed));
    EXPECT_STREQ("nOrvTarnS100_printf", console.getName());

    testing::internal::CaptureStdout();
    console.write("hello ").writeCount("worldwide", 5);
    getTrace(0).writeHeader("orvptp3p", 9, "x/tFoo.cpp", 105, 0).write("line").endLine();
    EXPECT_EQ("hello world[orvptp3p--9--tFoo.cpp" + std::string(49 - 22, '-') + "] line\n",
              testing::internal::GetCapturedStdout());
}

// Three lines a second: the fourth and fifth of the first second are counted,
// and the count comes with the first line of the next second.
TEST(TraceBudgetTest, LinesBeyondTheBudgetAreCountedUntilTheNextSecond)
{
    const u64 ms = tManualClock::kMillisecond;
    tManualClock clock(5 * ms);
    tTraceBudget budget(clock, 3);
    const struct
    {
        u64 m_atMs;
        bool m_allowed;
        u32 m_suppressed;
    } steps[] = {{5, true, 0},     {5, true, 0},    {600, true, 0},  {600, false, 7},
                 {999, false, 7},  {1000, true, 2}, {1000, true, 0}, {1999, true, 0},
                 {1999, false, 7}, {5000, true, 1}};
    for (const auto& step : steps)
    {
        clock.advanceTo(step.m_atMs * ms);
        u32 suppressed = 7;
        EXPECT_EQ(step.m_allowed, budget.allow(suppressed)) << step.m_atMs;
        EXPECT_EQ(step.m_suppressed, suppressed) << step.m_atMs;
    }
}

} // namespace
