// The host's properties read through the PTP property node in process, with
// the plug-in beside a master on the simulated network in virtual time: each
// key's value as the host numbers it.
#include "tZelmarPtpPropertyNode.h"
#include "tAttributeRoot.h"
#include "tHostString.h"
#include "tMonotonicRawTickSource.h"
#include "tSimNode.h"
#include "tSoftwareTimeReference.h"
#include "tZelmarPtpPluginFactory.h"
#include "tZelmarSource.h"

#include <gtest/gtest.h>

using namespace nZelmarPtpPlugin_1_0;
using namespace zelmarPluginCore_1_0;
using std::chrono::seconds;
typedef tZelmarPtpPropertyNode tNode;

namespace
{

// One host call's read of a local key; its status code.
template <typename tValue>
i32 read(i32 a_localKey, tValue& a_rValue)
{
    tStatus status;
    tNode node(status);
    node.getProperty(tNode::kKeyBase + a_localKey, &a_rValue, status);
    return status.getCode();
}

std::string readText(i32 a_localKey)
{
    DGHandle handle = nullptr;
    if (read(a_localKey, handle) != 0)
    {
        return "failed";
    }
    const std::string text = textOf(handle);
    DGDisposeHandle(handle);
    return text;
}

TEST(ZelmarPtpPropertyNodeTest, EachKeyReadsTheClockAsTheHostNumbersIt)
{
    nTestFiles::tAttributeRoot root;
    root.writeEntries(tZelmarPtpPlugin::kSourceName,
                      "source.ptp.EthernetMacAddress = 02:00:00:00:00:42\r\n"
                      "source.ptp.PriorityOne = 200\r\nsource.ptp.LogSyncInterval = 4294967295\r\n"
                      "source.ptp.ClockClass = 249\r\n");
    nSimNet::tSimNetwork network;
    nSimNet::tSimNode master(network, nSimNet::makeClockIdentity(1));
    tStatus status;
    // priority1 10, priority2 20, clockClass 6, clockAccuracy 0x21.
    master.settings() = nSimNet::tNodeSettings{10, 20, 6, 0x21};
    master.start(status);
    master.runOnDispatcher(
        [](nOrvPTP000::tPTPNode& a_rNode, tStatus& a_status)
        {
            a_rNode.setCurrentUtcOffset(37, a_status, 0);
            a_rNode.setCurrentUtcOffsetValid(true, a_status, 0);
        },
        status);

    nZelmar::tMonotonicRawTickSource ticks(status);
    nZelmar::tSoftwareTimeReference reference(ticks, 0, status);
    const u32 endpoint = network.addEndpoint();
    network.setSymmetricDelay(master.getId(), endpoint, 100000);
    tZelmarPtpPluginFactory factory(
        tPtpNetwork{network.getMessaging(endpoint), network.getTimestamps(endpoint)});
    tZelmarSource source(factory, network.getClock(), status);
    ASSERT_TRUE(network.waitUntil([&] { return source.isOnline(); }, seconds(1)));
    u32 portState = 0;
    EXPECT_EQ(0, read(tNode::kKeyPortState, portState));
    EXPECT_EQ(9u, portState) << "not started: no state";
    source.attachTimeReference(&reference);
    f64 delay = 0.0;
    ASSERT_TRUE(network.waitUntil(
        [&]
        {
            return read(tNode::kKeyPortState, portState) == 0 && portState == 8 &&
                   read(tNode::kKeyMeanPathDelay, delay) == 0 && delay > 0.0;
        },
        seconds(60)));

    const std::pair<i32, u32> kIntegers[] = {
        {tNode::kKeyClockClass, 249},
        {tNode::kKeyClockAccuracy, 0},
        {tNode::kKeyPriority1, 200},
        {tNode::kKeyPriority2, 128},
        {tNode::kKeyGrandmasterClockClass, 6},
        {tNode::kKeyGrandmasterClockAccuracy, 2},
        {tNode::kKeyGrandmasterPriority1, 10},
        {tNode::kKeyGrandmasterPriority2, 20},
        {tNode::kKeyStepsRemoved, 1},
        {tNode::kKeyLogSyncInterval, 255},
        {tNode::kKeyErrorCode, 0},
    };
    for (const auto& row : kIntegers)
    {
        u32 value = 12345;
        EXPECT_EQ(0, read(row.first, value)) << std::hex << row.first;
        EXPECT_EQ(row.second, value) << std::hex << row.first;
    }
    const std::pair<i32, f64> kReals[] = {
        {tNode::kKeyMeanPathDelay, 100e-6},          {tNode::kKeyCurrentUtcOffset, 37.0},
        {tNode::kKeySynchronizationThreshold, 1e-3}, {tNode::kKeyInterval, 0.5},
        {tNode::kKeyTimeReferenceCorrection, 0.0},
    };
    for (const auto& row : kReals)
    {
        f64 value = -1.0;
        EXPECT_EQ(0, read(row.first, value)) << std::hex << row.first;
        EXPECT_NEAR(row.second, value, 1e-9) << std::hex << row.first;
    }
    u8 valid = 0;
    EXPECT_EQ(0, read(tNode::kKeyCurrentUtcOffsetValid, valid));
    EXPECT_EQ(1, valid);
    EXPECT_EQ("0.0.0.0", readText(tNode::kKeyIpAddress)) << "no UDP device";
    EXPECT_EQ("020000fffe000042", readText(tNode::kKeyClockIdentity));
    EXPECT_EQ("000000fffe000001", readText(tNode::kKeyGrandmasterIdentity));
    EXPECT_EQ("ptp", readText(tNode::kKeyName));

    // An accuracy that the host has no number for.
    iZelmarController& controller = *source.getController();
    auto* pPlugin = static_cast<tZelmarPtpPlugin*>(controller.acquirePlugin(status));
    ASSERT_NE(nullptr, pPlugin);
    pPlugin->getPtpClock()->getNode().writeProperty<nOrvPTP000::CLOCK_ACCURACY>(0x50, status);
    controller.releasePlugin();
    u32 accuracy = 12345;
    EXPECT_EQ(-52003, read(tNode::kKeyClockAccuracy, accuracy));
    EXPECT_EQ(12345u, accuracy);
    EXPECT_EQ(0, status.getCode());
}

} // namespace
