// The test bed's smoke test: a datagram crosses the simulated segment at its
// delay in virtual time, with exact timestamps, and a cancel ends a waiting
// receive. The scenarios exercise the rest.
#include "tSimNetwork.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace nSimNet;
using nOrvPTP000::tProtocolDataUnit;
using nOrvPTP000::tTimestamp;
using nOrvTarn000::tStatus;

TEST(SimNetworkTest, ADatagramCrossesAtItsDelayWithExactTimesAndACancelEndsAReceive)
{
    tSimNetwork network;
    const u32 a = network.addEndpoint(0);
    const u32 b = network.addEndpoint(1000);
    network.setDelay(a, b, 700);
    tStatus status;
    network.getMessaging(a)->open(status);
    network.getMessaging(b)->open(status);

    // A Sync of sequenceId 7 from clock 1.
    std::vector<u8> sync(44, 0);
    sync[1] = 2;
    sync[kSourcePortIdentityOffset + 7] = 1;
    sync[kSequenceIdOffset + 1] = 7;
    tProtocolDataUnit sent(status);
    sent.writeOctets(sync.data(), static_cast<u32>(sync.size()), status);

    tProtocolDataUnit received(status);
    std::atomic<i64> arrival(-1);
    std::atomic<i32> cancelCode(0);
    std::thread receiver(
        [&]
        {
            tStatus receiveStatus;
            network.getMessaging(b)->receiveMessage(received, receiveStatus);
            arrival = network.now();
            tProtocolDataUnit next(receiveStatus);
            network.getMessaging(b)->receiveMessage(next, receiveStatus);
            cancelCode = receiveStatus.getCode();
        });
    // The receiver is a thread the clock knows from its first wait on.
    while (!network.isReceiving(b))
    {
        std::this_thread::yield();
    }
    network.getMessaging(a)->sendEventMessage(sent, status);
    ASSERT_TRUE(network.waitUntil([&] { return arrival >= 0; }, std::chrono::milliseconds(1)));
    EXPECT_EQ(700, arrival.load());
    EXPECT_EQ(sync, std::vector<u8>(received.getData(), received.getData() + received.getLength()));

    tTimestamp transmitTime, receiveTime;
    ASSERT_TRUE(network.getTimestamps(a)->getTransmitTimestamp(sent, transmitTime, status));
    ASSERT_TRUE(network.getTimestamps(b)->getReceiveTimestamp(received, receiveTime, status));
    // The delay plus the difference of the two clocks, to the nanosecond.
    EXPECT_EQ(700 + 1000, toNanoseconds(receiveTime) - toNanoseconds(transmitTime));

    network.getMessaging(b)->cancelReceive(status);
    receiver.join();
    EXPECT_EQ(nOrvTarn000::kStatusCancelled, cancelCode.load());
    EXPECT_EQ(0, status.getCode());
}
