// The time source and its controller in virtual time, with a plug-in of the
// test's own: retries, the host's triggers, attach and detach in every order,
// destruction at every stage of a rebuild, and the common settings.
#include "tZelmarSource.h"
#include "tAttributeRoot.h"
#include "tManualClock.h"
#include "tSimulatedTickSource.h"
#include "tSoftwareTimeReference.h"
#include "tStaticAttributes.h"
#include "tTestHost.h"
#include "tZelmarController.h"
#include "tZelmarPluginBase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

using namespace zelmarPluginCore_1_0;
using nOrvTarn000::tManualClock;

namespace
{

const u64 kMs = tManualClock::kMillisecond;
const u64 kRetry = (tZelmarController::kRetryDelayMs + 1) * kMs; // a delay ends one tick late
std::atomic<int> g_livePlugins(0);

class tTestPlugin : public tZelmarPluginBase
{
public:
    tTestPlugin(iZelmarController* a_pController, tStaticAttributes& a_rFile, tStatus& a_status)
        : tZelmarPluginBase("test", a_pController, a_rFile, 1000, a_status)
    {
        ++g_livePlugins;
    }
    ~tTestPlugin() override { --g_livePlugins; }
    void start(tStatus&) override { m_started = true; }
    void stop() override { m_started = false; }
    bool m_started = false;
};

// Builds test plug-ins; each code it holds makes one attempt fail with it.
struct tTestFactory : iZelmarPluginFactory
{
    explicit tTestFactory(tManualClock& a_rClock) : m_rClock(a_rClock) {}
    std::unique_ptr<iZelmarPlugin> createPlugin(iZelmarController* a_pController, u32& a_rCode,
                                                tStatus& a_status) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_calls.push_back(m_rClock.now());
        tStaticAttributes file("test", a_status);
        std::unique_ptr<iZelmarPlugin> pPlugin(new tTestPlugin(a_pController, file, a_status));
        if (!m_failures.empty())
        {
            a_rCode = m_failures.front();
            m_failures.pop_front();
            ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidArgument);
        }
        return a_status.isFatal() ? nullptr : std::move(pPlugin);
    }
    std::vector<u64> calls()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_calls;
    }
    tManualClock& m_rClock;
    std::mutex m_mutex;
    std::deque<u32> m_failures;
    std::vector<u64> m_calls;
};

struct ZelmarSourceTest : testing::Test
{
    // A source whose first attempts fail with a_failures, watched by the host.
    tZelmarSource& makeSource(std::deque<u32> a_failures)
    {
        m_pSource.reset();
        m_factory.m_failures = std::move(a_failures);
        m_pSource.reset(new tZelmarSource(m_factory, m_clock, m_status));
        m_pSource->setObserver(m_pHost);
        EXPECT_EQ(0, m_status.getCode());
        return *m_pSource;
    }
    iZelmarController& controller() { return *m_pSource->getController(); }
    // The plug-in's started flag; false offline.
    bool isStarted()
    {
        tStatus status;
        iZelmarPlugin* pPlugin = controller().acquirePlugin(status);
        const bool started = pPlugin != nullptr && static_cast<tTestPlugin*>(pPlugin)->m_started;
        if (pPlugin != nullptr)
        {
            controller().releasePlugin();
        }
        return started;
    }
    void goOffline()
    {
        tStatus status;
        controller().goOffline(status);
        ASSERT_TRUE(m_clock.settle());
    }

    nTestFiles::tAttributeRoot m_root;
    tManualClock m_clock;
    tTestFactory m_factory{m_clock};
    std::shared_ptr<nTestHost::tTestHost> m_pHost = std::make_shared<nTestHost::tTestHost>(m_clock);
    nZelmar::tSimulatedTickSource m_ticks{10000000, 0.0};
    tStatus m_status;
    nZelmar::tSoftwareTimeReference m_reference{m_ticks, 0, m_status};
    std::unique_ptr<tZelmarSource> m_pSource;
};

TEST_F(ZelmarSourceTest, RetriesEvery2000msAndTriggersTheHostAtEachChangeOnly)
{
    tZelmarSource& source = makeSource({257, 258});
    ASSERT_TRUE(m_clock.runUntil([&] { return source.isOnline(); }, 10 * kRetry));
    EXPECT_EQ(std::vector<u64>({0, kRetry, 2 * kRetry}), m_factory.calls());
    EXPECT_EQ(257u, controller().takeErrorCode(m_status)) << "the first failure's code, once";
    EXPECT_EQ(0u, controller().takeErrorCode(m_status)) << "then the plug-in's";

    // Requests while one waits fold into one cycle; asking holds no lock.
    iZelmarPlugin* pPlugin = controller().acquirePlugin(m_status);
    ASSERT_NE(nullptr, pPlugin);
    pPlugin->setErrorCode(300);
    controller().goOffline(m_status);
    controller().goOffline(m_status);
    controller().releasePlugin();
    goOffline();
    EXPECT_FALSE(source.isOnline());
    EXPECT_EQ(0, g_livePlugins);
    EXPECT_EQ(300u, controller().takeErrorCode(m_status)) << "kept from the plug-in that went";
    const u64 up = 2 * kRetry;
    EXPECT_EQ(up + kRetry, m_clock.getNextDeadline());
    ASSERT_TRUE(m_clock.runFor(10 * kRetry));

    EXPECT_EQ((nTestHost::tTriggers{{up, true}, {up, false}, {up + kRetry, true}}),
              m_pHost->triggers());
    EXPECT_EQ(std::vector<u64>({0, kRetry, up, up + kRetry}), m_factory.calls());
    EXPECT_EQ(1, g_livePlugins);
    EXPECT_EQ(0, m_status.getCode());
}

TEST_F(ZelmarSourceTest, AttachAndDetachInEveryOrderWithOfflineAndOnline)
{
    enum tStep
    {
        kAttach,
        kDetach,
        kOffline,
        kOnline
    };
    const char* const kNames[] = {"attach", "detach", "offline", "online"};
    std::vector<tStep> steps = {kAttach, kDetach, kOffline, kOnline};
    do
    {
        makeSource({});
        ASSERT_TRUE(m_clock.settle());
        bool online = true, attached = false, started = false;
        std::string done;
        for (tStep step : steps)
        {
            done += std::string(" ") + kNames[step];
            switch (step)
            {
            case kAttach: // does nothing offline
                m_pSource->attachTimeReference(&m_reference);
                attached = attached || online;
                started = started || online;
                break;
            case kDetach:
                m_pSource->detachTimeReference();
                attached = started = false;
                break;
            case kOffline: // the reference stays; a new plug-in waits for an attach
                goOffline();
                online = started = false;
                break;
            case kOnline:
                ASSERT_TRUE(m_clock.runFor(kRetry));
                online = true;
                break;
            }
            tStatus timeStatus;
            controller().getTime(timeStatus);
            EXPECT_EQ(online, m_pSource->isOnline()) << done;
            EXPECT_EQ(attached, m_pSource->isAttached()) << done;
            EXPECT_EQ(attached, timeStatus.isNotFatal()) << done << ": the servo's reference";
            EXPECT_EQ(started, isStarted()) << done;
        }
        m_pSource.reset();
        EXPECT_EQ(0, g_livePlugins) << done;
    } while (std::next_permutation(steps.begin(), steps.end()));
}

TEST_F(ZelmarSourceTest, DestroyedAtEveryStageOfARebuildLeavesNothing)
{
    const auto settle = [&] { ASSERT_TRUE(m_clock.settle()); };
    const auto attach = [&] { m_pSource->attachTimeReference(&m_reference); };
    struct tStage
    {
        const char* m_pName;
        std::deque<u32> m_failures;
        std::function<void()> m_reach;
    };
    const tStage kStages[] = {
        {"before the first attempt", {}, [] {}},
        {"waiting for a retry", {257}, settle},
        {"online", {}, settle},
        {"attached", {}, [&] { settle(), attach(); }},
        {"offline asked",
         {},
         [&]
         {
             settle(), attach();
             tStatus status;
             controller().goOffline(status);
         }},
        {"waiting for the rebuild", {}, [&] { settle(), attach(), goOffline(); }},
        {"rebuilt", {}, [&] { settle(), goOffline(), m_clock.runFor(kRetry); }},
    };
    for (const tStage& stage : kStages)
    {
        makeSource(stage.m_failures);
        stage.m_reach();
        m_pSource.reset();
        EXPECT_EQ(0, g_livePlugins) << stage.m_pName;
        EXPECT_EQ(tManualClock::kNever, m_clock.getNextDeadline()) << stage.m_pName;
    }
}

TEST_F(ZelmarSourceTest, CommonSettingsComeFromTheFileOrStayAsTheyAre)
{
    struct tRow
    {
        const char* m_pLines;
        bool m_built;
        f64 m_interval, m_gain, m_macro, m_correction, m_threshold;
    };
    const tRow kRows[] = {
        {"", true, 1.0, 0.001, 0.1, 0.0, 0.001},
        {"source.test.interval = 0.0015\r\nsource.test.timekeeperGain = 0.5\r\n"
         "source.test.timekeeperMacroPhaseAdjustThreshold = 0.25\r\n"
         "source.test.timeReferenceCorrection = 1.5e-9\r\n"
         "source.test.timekeeperSynchronizationThreshold = 0.002\r\n",
         true, 0.001, 0.5, 0.25, 1e-9, 0.002},
        {"source.test.timekeeperGain = high\r\n", false, 0.0, 0.001, 0.1, 0.0, 0.001},
    };
    for (const tRow& row : kRows)
    {
        m_root.writeEntries("test", row.m_pLines);
        makeSource({});
        ASSERT_TRUE(m_clock.settle());
        iZelmarController& core = controller();
        EXPECT_EQ(row.m_built, m_pSource->isOnline()) << row.m_pLines;
        EXPECT_EQ(row.m_interval, core.getInterval(m_status)) << row.m_pLines;
        EXPECT_EQ(row.m_gain, core.getGain(m_status)) << row.m_pLines;
        EXPECT_EQ(row.m_macro, core.getMacroPhaseAdjustThreshold(m_status)) << row.m_pLines;
        EXPECT_EQ(row.m_correction, core.getTimeReferenceCorrection(m_status)) << row.m_pLines;
        EXPECT_EQ(row.m_threshold, core.getSynchronizationThreshold(m_status)) << row.m_pLines;
    }
    EXPECT_EQ(0, m_status.getCode());
}

} // namespace
