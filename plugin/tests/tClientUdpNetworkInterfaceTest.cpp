// What the network layer does before and without sockets. Its traffic is
// tested between network namespaces (the netns tests).
#include "tClientUdpNetworkInterface.h"
#include "tPluginTestSupport.h"
#include "tTimestampGenerator.h"

#include <gtest/gtest.h>

#include <cstring>
#include <dirent.h>

using namespace nZelmarPtpPlugin_1_0;
using namespace nZelmarPtpPlugin_1_0::nTest;
using nOrvPTP000::tProtocolDataUnit;
using nOrvTarn000::tStatus;

namespace
{

// The descriptors this process holds.
int countOpenDescriptors()
{
    int count = 0;
    DIR* pDirectory = opendir("/proc/self/fd");
    while (pDirectory != nullptr && readdir(pDirectory) != nullptr)
    {
        ++count;
    }
    if (pDirectory != nullptr)
    {
        closedir(pDirectory);
    }
    return count;
}

// A multicast address: no device has it as its own.
const u8 kNoDevice[6] = {0x01, 0x00, 0x5E, 0x7F, 0x00, 0x01};

TEST(NetworkInterfaceTest, WithoutItsDeviceNothingOpensAndNothingIsSentOrReceived)
{
    tStatus status;
    tTimestampGenerator generator(status);
    tCountingTimekeeper timekeeper;
    tProtocolDataUnit pdu(status);
    const int before = countOpenDescriptors();
    tClientUdpNetworkInterface messaging(&generator, &timekeeper, kNoDevice, 1);
    const u8 group[4] = {224, 0, 1, 129};
    EXPECT_EQ(1, messaging.getPortAddress().getNetworkProtocol());
    EXPECT_EQ(0, std::memcmp(group, messaging.getPortAddress().getAddressField(), 4));
    messaging.open(status);
    EXPECT_EQ(nOrvTarn000::kStatusNotAvailable, status.getCode());
    EXPECT_EQ(0u, messaging.getIpAddress());
    EXPECT_EQ(before, countOpenDescriptors()) << "a failed look-up opens no socket";

    // A cancel before the receive ends it at once and is used up: without
    // sockets the next wait fails instead.
    tStatus cancel;
    messaging.cancelReceive(cancel);
    messaging.receiveMessage(pdu, cancel);
    EXPECT_EQ(nOrvTarn000::kStatusCancelled, cancel.getCode());
    EXPECT_EQ(0u, pdu.getLength());
    tStatus again;
    messaging.receiveMessage(pdu, again);
    EXPECT_EQ(nOrvTarn000::kStatusSystemError, again.getCode());

    fill(pdu, makeMessage(kSync, 1, 0));
    for (const bool event : {true, false})
    {
        tStatus send;
        event ? messaging.sendEventMessage(pdu, send) : messaging.sendGeneralMessage(pdu, send);
        EXPECT_EQ(nOrvTarn000::kStatusInternalError, send.getCode());
    }
    EXPECT_EQ(44u, pdu.getLength()) << "padding is off until a peer asks for it";
    nOrvPTP000::tTimestamp time;
    tStatus fetch;
    EXPECT_FALSE(generator.getTransmitTimestamp(pdu, time, fetch));
    tStatus closeStatus;
    messaging.close(closeStatus);
    EXPECT_TRUE(closeStatus.isNotFatal());

    tStatus broken;
    ORVTARN_SET_CODE(broken, nOrvTarn000::kStatusInvalidArgument);
    const u64 readings = timekeeper.readings();
    messaging.sendEventMessage(pdu, broken);
    messaging.open(broken);
    EXPECT_EQ(readings, timekeeper.readings()) << "no timestamp was taken";
    messaging.receiveMessage(pdu, broken);
    EXPECT_EQ(0u, pdu.getLength()) << "the unit is emptied all the same";
}

} // namespace
