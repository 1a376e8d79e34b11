// Several threads tracing into one trace at the same moment, as the warnings
// of received messages do: their lines may mix, but no write leaves the line
// buffer and the trace keeps working afterwards.
#include "orvtarn/protons/status/tTrace.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace nOrvTarn000;

namespace
{

// Keeps the longest buffer and the last one handed over; any thread may write.
class tSharedDestination : public iTraceDestination
{
public:
    iTraceDestination& writeCount(const char* a_text, u32 a_length) override
    {
        return record(std::string(a_text, a_length));
    }
    iTraceDestination& write(const char* a_text) override { return record(a_text); }
    void control(u32, u32) override {}
    char* getOptionText(char*, u32, u32*) override { return nullptr; }
    bool isReady() override { return true; }
    void flush() override {}
    const char* getName() override { return "shared"; }

    std::size_t longest()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_longest;
    }
    std::string last()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_last;
    }

private:
    iTraceDestination& record(const std::string& a_text)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_longest = std::max(m_longest, a_text.size());
        m_last = a_text;
        return *this;
    }

    std::mutex m_mutex;
    std::size_t m_longest = 0;
    std::string m_last;
};

TEST(TraceThreadsTest, ConcurrentLongLinesStayInsideTheLineBuffer)
{
    const int kThreads = 8;
    const int kLines = 40000;
    tSharedDestination destination;
    // On the heap, so that a write behind the object is one the sanitizer sees.
    std::unique_ptr<tTrace> pTrace(new tTrace(destination));
    const std::string text(300, 'x');

    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
    {
        threads.emplace_back(
            [&]
            {
                for (int line = 0; line < kLines; ++line)
                {
                    pTrace->writeHeader("test", 7, "a/b.cpp", 105, 0)
                        .write(text.c_str())
                        .writeNumber(static_cast<u32>(line), 16)
                        .endLine();
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    EXPECT_LE(destination.longest(), 253u);
    // Whatever the threads left behind goes out with the next line end; a
    // line written alone afterwards comes out whole.
    pTrace->endLine();
    pTrace->write("alone\n");
    EXPECT_EQ("alone\n", destination.last());
}

} // namespace
