#include "orvtarn/protons/status/tTrace.h"
#include "orvtarn/protons/status/tConsoleTraceDestination.h"
#include "orvtarn/protons/status/tTraceBudget.h"
#include "tManualClock.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace nOrvTarn000;

namespace
{

// Keeps each buffer the trace hands over, so tests see both text and chunking.
class tCaptureDestination : public iTraceDestination
{
public:
    iTraceDestination& writeCount(const char* a_text, u32 a_length) override
    {
        m_writes.push_back(std::string(a_text, a_length));
        return *this;
    }
    iTraceDestination& write(const char* a_text) override
    {
        m_writes.push_back(a_text);
        return *this;
    }
    void control(u32, u32) override {}
    char* getOptionText(char*, u32, u32*) override { return nullptr; }
    bool isReady() override { return true; }
    void flush() override {}
    const char* getName() override { return "capture"; }

    std::string all() const
    {
        std::string text;
        for (const std::string& write : m_writes)
        {
            text += write;
        }
        return text;
    }

    std::vector<std::string> m_writes;
};

class tPoint : public iTraceable
{
public:
    tTrace& trace(tTrace& a_trace) override
    {
        return a_trace.write("tPoint x=").writeNumber(static_cast<i32>(-3), 10);
    }
};

struct TraceTest : testing::Test
{
    tCaptureDestination m_destination;
};

} // namespace

TEST_F(TraceTest, HeaderHasComponentLineFileAndPadding)
{
    tTrace trace(m_destination);
    trace.writeHeader("orvptp3p", 7, "C:\\src\\orvptp\\tPTPNode", 105, 0).write("x").endLine();
    EXPECT_EQ("[orvptp3p--7--tPTPNode" + std::string(27, '-') + "] x\n", m_destination.all());
}

TEST_F(TraceTest, HeaderFileNameRules)
{
    tTrace trace(m_destination);
    trace.writeHeader("c", 1, "plain.cpp", 105, 0).endLine();
    trace.writeHeader("c", 1, "/rooted.cpp", 105, 0).endLine();
    trace.writeHeader("c", 1, "a/b\\c/last.cpp", 105, 0).endLine();
    ASSERT_EQ(3u, m_destination.m_writes.size());
    EXPECT_EQ(0u, m_destination.m_writes[0].find("[c--1--plain.cpp---"));
    EXPECT_EQ(0u, m_destination.m_writes[1].find("[c--1--/rooted.cpp---"));
    EXPECT_EQ(0u, m_destination.m_writes[2].find("[c--1--last.cpp---"));
    for (const std::string& line : m_destination.m_writes)
    {
        EXPECT_EQ(52u, line.size()) << line; // 49 + "] " + "\n"
    }
}

TEST_F(TraceTest, LongHeaderFieldsAreCutAtTheWidth)
{
    tTrace trace(m_destination);
    const std::string file(80, 'f');
    trace.writeHeader("orvptp3p", 1234, file.c_str(), 105, 0).endLine();
    const std::string expected = "[orvptp3p--1234--" + std::string(49 - 17, 'f') + "] \n";
    EXPECT_EQ(expected, m_destination.all());
}

TEST_F(TraceTest, OtherLayoutsAndIndentation)
{
    tTraceLayout layout;
    layout.m_showComponent = false;
    layout.m_showLine = false;
    layout.m_showFile = false;
    layout.m_headerWidth = 4;
    tTrace bare(m_destination, layout);
    bare.writeHeader("c", 1, "f", 105, 1).write("a").endLine();
    bare.writeHeader("c", 1, "f", 105, 0).write("b").endLine();
    bare.writeHeader("c", 1, "f", 105, 2).write("c").endLine();
    bare.writeHeader("c", 1, "f", 105, 2).write("d").endLine();
    EXPECT_EQ("     a\n       b\n     c\n     d\n", m_destination.all())
        << "no field: blanks, depth never below 0";

    m_destination.m_writes.clear();
    layout = tTraceLayout();
    layout.m_showVersion = true;
    layout.m_showKind = true;
    layout.m_fixedHeader = false;
    layout.m_headerWidth = 0;
    tTrace wide(m_destination, layout);
    wide.writeHeader("comp", 3, "x/y.cpp", 105, 0).endLine();
    EXPECT_EQ("[comp--v1.0--3--y.cpp--105] \n", m_destination.all());
}

TEST_F(TraceTest, LinesGoOutOnNewlineOrFullBuffer)
{
    tTrace trace(m_destination);
    trace.write(std::string(300, 'a').c_str());
    ASSERT_EQ(1u, m_destination.m_writes.size());
    EXPECT_EQ(std::string(253, 'a'), m_destination.m_writes[0]);
    trace.endLine();
    ASSERT_EQ(2u, m_destination.m_writes.size());
    EXPECT_EQ(std::string(47, 'a') + "\n", m_destination.m_writes[1]);

    trace.write("one\ntwo");
    ASSERT_EQ(3u, m_destination.m_writes.size());
    EXPECT_EQ("one\ntwo", m_destination.m_writes[2]) << "a text with a newline goes out whole";
}

TEST_F(TraceTest, NumbersInEveryForm)
{
    tTrace trace(m_destination);
    trace.writeNumber(static_cast<u32>(255), 16).write(' ');
    trace.writeNumber(static_cast<u32>(0), 10).write(' ');
    trace.writeNumber(static_cast<i32>(-1), 10).write(' ');
    trace.writeNumber(static_cast<u32>(15), 8).write(' ');
    trace.writeNumber(static_cast<i16>(-32768), 10).write(' ');
    trace.writeNumber(static_cast<u16>(65535), 16).write(' ');
    trace.writeNumber(static_cast<i64>(INT64_MIN), 10).write(' ');
    trace.writeNumber(static_cast<i64>(-255), 16).write(' ');
    trace.writeNumber(static_cast<u64>(UINT64_MAX), 2).write(' ');
    trace.writeNumber(static_cast<u32>(35), 36).endLine();
    EXPECT_EQ("0xFF 0 -1 8#17 -32768 0xFFFF -9223372036854775808 -0xFF 2#" + std::string(64, '1') +
                  " 36#Z\n",
              m_destination.all());
}

TEST_F(TraceTest, BooleansCharactersCountsAndObjects)
{
    tTrace trace(m_destination);
    tPoint point;
    trace.write(true).write(' ').write(false).write(' ').write("abcdef", 3).write(' ');
    trace.write(point).endLine();
    EXPECT_EQ("true(1) false(0) abc tPoint x=-3\n", m_destination.all());
}

TEST_F(TraceTest, FormattedTextAndOverflow)
{
    tTrace trace(m_destination);
    trace.writeFormatted("%s=%d", "value", 42).endLine();
    EXPECT_EQ("value=42\n", m_destination.all());

    m_destination.m_writes.clear();
    const std::string big(2000, 'z');
    trace.writeFormatted("%s", big.c_str()).endLine();
    const std::string expected =
        "!!Formatted string exceeds kMaxTraceLine characters!!" + std::string(1023, 'z') + "\n";
    EXPECT_EQ(expected, m_destination.all());
}

TEST(tConsoleTraceDestination, OptionTextNameAndPrinting)
{
    tConsoleTraceDestination console;
    char buffer[5] = {'x', 'x', 'x', 'x', 'x'};
    u32 needed = 0;
    char* pEnd = console.getOptionText(buffer, sizeof(buffer), &needed);
    EXPECT_STREQ(" --d", buffer);
    EXPECT_EQ(20u, needed);
    EXPECT_EQ(buffer + 4, pEnd);

    char whole[32];
    pEnd = console.getOptionText(whole, sizeof(whole), nullptr);
    EXPECT_STREQ(" --destination tarn", whole);
    EXPECT_EQ(whole + 19, pEnd);
    EXPECT_EQ(nullptr, console.getOptionText(nullptr, 8, &needed));
    EXPECT_STREQ("nOrvTarnS100_printf", console.getName());
    EXPECT_TRUE(console.isReady());

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
