// The PTP plug-in behind a real source in virtual time: on the UDP network
// without its device, and on the simulated network beside a master, where it
// follows, keeps a management change in its file and heals itself.
#include "orvptp/tPortStateCodes.h"
#include "tAttributeRoot.h"
#include "tMonotonicRawTickSource.h"
#include "tSimNode.h"
#include "tSoftwareTimeReference.h"
#include "tStaticAttributes.h"
#include "tTestHost.h"
#include "tZelmarController.h"
#include "tZelmarPtpPluginFactory.h"
#include "tZelmarSource.h"

#include <gtest/gtest.h>

using namespace nZelmarPtpPlugin_1_0;
using namespace zelmarPluginCore_1_0;
using nOrvTarn000::tManualClock;

namespace
{

const u64 kRetry = (tZelmarController::kRetryDelayMs + 1) * tManualClock::kMillisecond;

TEST(ZelmarPtpPluginTest, WithoutItsDeviceOrWithAnUnreadableFileItIsRetriedEvery2000ms)
{
    const std::pair<const char*, u32> kRows[] = {
        {"source.ptp.EthernetMacAddress = 02-00-5e-7a-7a-01\r\n", tZelmarPtpPlugin::kErrorNoDevice},
        {"source.ptp.EthernetMacAddress = none\r\n", tZelmarPtpPlugin::kErrorNoDevice},
        {"source.ptp.PriorityOne = high\r\n", 0},
    };
    nTestFiles::tAttributeRoot root;
    tManualClock clock;
    tZelmarPtpPluginFactory factory;
    for (const auto& row : kRows)
    {
        root.writeEntries(tZelmarPtpPlugin::kSourceName, row.first);
        tStatus status;
        tZelmarSource source(factory, clock, status);
        for (int attempt = 0; attempt < 3; ++attempt)
        {
            ASSERT_TRUE(clock.settle());
            EXPECT_FALSE(source.isOnline()) << row.first;
            EXPECT_EQ(row.second, source.getController()->takeErrorCode(status)) << row.first;
            EXPECT_EQ(clock.now() + kRetry, clock.getNextDeadline()) << row.first;
            clock.advance(kRetry);
        }
        EXPECT_EQ(0, status.getCode());
    }
}

struct tSimulatedPlugin
{
    explicit tSimulatedPlugin(nSimNet::tSimNetwork& a_rNetwork) : m_network(a_rNetwork) {}
    // The plug-in's clock under the mutex, as a property read holds it.
    template <typename tRead>
    auto read(tRead a_read)
    {
        tStatus status;
        iZelmarController& core = *m_source.getController();
        tZelmarPtpPlugin* pPlugin = static_cast<tZelmarPtpPlugin*>(core.acquirePlugin(status));
        decltype(a_read(*pPlugin)) value{};
        if (pPlugin != nullptr)
        {
            value = a_read(*pPlugin);
            core.releasePlugin();
        }
        return value;
    }
    u8 portState()
    {
        return read([](tZelmarPtpPlugin& a_rPlugin)
                    { return a_rPlugin.getPtpClock()->getPortState(); });
    }
    bool waitForSlave()
    {
        return m_network.waitUntil([&] { return portState() == nOrvPTP000::kPortStateSlave; },
                                   std::chrono::seconds(60));
    }
    u32 priorityOneInTheFile()
    {
        tStatus status;
        tStaticAttributes file(tZelmarPtpPlugin::kSourceName, status);
        return file.getU32("PriorityOne", 0, status);
    }

    nSimNet::tSimNetwork& m_network;
    tStatus m_status;
    nZelmar::tMonotonicRawTickSource m_ticks{m_status};
    nZelmar::tSoftwareTimeReference m_reference{m_ticks, 0, m_status};
    u32 m_endpoint = m_network.addEndpoint();
    tZelmarPtpPluginFactory m_factory{
        tPtpNetwork{m_network.getMessaging(m_endpoint), m_network.getTimestamps(m_endpoint)}};
    std::shared_ptr<nTestHost::tTestHost> m_pHost =
        std::make_shared<nTestHost::tTestHost>(m_network.getClock());
    tZelmarSource m_source{m_factory, m_network.getClock(), m_status};
};

TEST(ZelmarPtpPluginTest, OnASimulatedNetworkItFollowsKeepsChangesAndHealsItself)
{
    nTestFiles::tAttributeRoot root;
    // The master is better; the UTC offset action runs once a second as SLAVE.
    root.writeEntries(tZelmarPtpPlugin::kSourceName,
                      "source.ptp.EthernetMacAddress = 02:00:00:00:00:42\r\n"
                      "source.ptp.PriorityOne = 200\r\nsource.ptp.UseUtcOffset = TRUE\r\n"
                      "source.ptp.LogSyncInterval = 4294967295\r\n");
    nSimNet::tSimNetwork network;
    nSimNet::tSimNode master(network, nSimNet::makeClockIdentity(1));
    tStatus status;
    master.start(status);
    tSimulatedPlugin ours{network};
    ours.m_source.setObserver(ours.m_pHost);
    ASSERT_TRUE(
        network.waitUntil([&] { return ours.m_source.isOnline(); }, std::chrono::seconds(1)));
    ours.m_source.attachTimeReference(&ours.m_reference);
    ASSERT_TRUE(ours.waitForSlave());

    // A change of this process stays out of the file; management's goes in.
    ours.read(
        [&](tZelmarPtpPlugin& a_rPlugin)
        {
            a_rPlugin.getPtpClock()->setPriority1(201, status);
            return 0;
        });
    ASSERT_TRUE(network.getClock().settle());
    EXPECT_EQ(200u, ours.priorityOneInTheFile());
    ours.read(
        [&](tZelmarPtpPlugin& a_rPlugin)
        {
            a_rPlugin.propertyChanged(nOrvPTP000::PRIORITY1,
                                      nOrvPTP000::iPropertyChangeObserver::kContextManagement);
            return 0;
        });
    ASSERT_TRUE(network.getClock().settle());
    EXPECT_EQ(201u, ours.priorityOneInTheFile());

    // A broken network makes the port FAULTY: the plug-in goes, with its
    // queued actions, and a new one comes 2000 ms later with the change.
    network.failNextReceive(ours.m_endpoint);
    ASSERT_TRUE(network.waitUntil([&] { return ours.m_pHost->triggers().size() == 3; },
                                  std::chrono::seconds(10)));
    const nTestHost::tTriggers triggers = ours.m_pHost->triggers();
    EXPECT_EQ((nTestHost::tTriggers{
                  triggers[0], {triggers[1].first, false}, {triggers[1].first + kRetry, true}}),
              triggers);
    EXPECT_EQ(nOrvPTP000::kPortStateStopped, ours.portState()) << "started only by an attach";
    ours.m_source.attachTimeReference(&ours.m_reference);
    ASSERT_TRUE(ours.waitForSlave());
    EXPECT_EQ(201, ours.read([](tZelmarPtpPlugin& a_rPlugin)
                             { return a_rPlugin.getPtpClock()->getPriority1(); }));
    EXPECT_EQ(0, status.getCode());
    EXPECT_EQ(0, ours.m_status.getCode());
}

} // namespace
