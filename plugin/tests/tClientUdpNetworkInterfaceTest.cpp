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
using nOrvPTP000::tPortAddress;
using nOrvPTP000::tProtocolDataUnit;
using nOrvTarn000::tStatus;

namespace
{

// The descriptors this process holds.
int countOpenDescriptors()
{
    int count = 0;
    DIR* pDirectory = opendir("/proc/self/fd");
    if (pDirectory == nullptr)
    {
        return -1;
    }
    while (readdir(pDirectory) != nullptr)
    {
        ++count;
    }
    closedir(pDirectory);
    return count;
}

// A multicast address: no device has it as its own.
const u8 kNoDevice[6] = {0x01, 0x00, 0x5E, 0x7F, 0x00, 0x01};

class NetworkInterfaceTest : public testing::Test
{
protected:
    NetworkInterfaceTest()
        : m_generator(m_status), m_pdu(m_status),
          m_interface(&m_generator, &m_timekeeper, kNoDevice, 1)
    {
    }

    tStatus m_status;
    tTimestampGenerator m_generator;
    tCountingTimekeeper m_timekeeper;
    tProtocolDataUnit m_pdu;
    tClientUdpNetworkInterface m_interface;
};

} // namespace

TEST_F(NetworkInterfaceTest, PortAddressIsTheGroupOverUdp)
{
    const tPortAddress address = m_interface.getPortAddress();
    EXPECT_EQ(1, address.getNetworkProtocol());
    ASSERT_EQ(4, address.getAddressLength());
    const u8 expected[4] = {224, 0, 1, 129};
    EXPECT_EQ(0, std::memcmp(expected, address.getAddressField(), 4));
}

TEST_F(NetworkInterfaceTest, ConstructionOpensNothingAndAMissingDeviceFailsOpen)
{
    const int before = countOpenDescriptors();
    tStatus status;
    {
        tClientUdpNetworkInterface messaging(&m_generator, &m_timekeeper, kNoDevice, 1);
        EXPECT_EQ(before, countOpenDescriptors());
        messaging.open(status);
        EXPECT_EQ(nOrvTarn000::kStatusNotAvailable, status.getCode());
        EXPECT_EQ(0u, messaging.getIpAddress());
        EXPECT_EQ(before, countOpenDescriptors()) << "a failed look-up opens no socket";
    }
    EXPECT_EQ(before, countOpenDescriptors());
}

TEST_F(NetworkInterfaceTest, CloseWithoutOpenIsClean)
{
    tStatus status;
    m_interface.close(status);
    EXPECT_TRUE(status.isNotFatal());
}

TEST_F(NetworkInterfaceTest, CancelBeforeReceiveEndsItAtOnceAndIsClearedAfterwards)
{
    tStatus status;
    m_interface.cancelReceive(status);
    m_interface.receiveMessage(m_pdu, status);
    EXPECT_EQ(nOrvTarn000::kStatusCancelled, status.getCode());
    EXPECT_EQ(0u, m_pdu.getLength());

    // The cancel is used up: without sockets the next wait fails instead.
    tStatus again;
    m_interface.receiveMessage(m_pdu, again);
    EXPECT_EQ(nOrvTarn000::kStatusSystemError, again.getCode());
}

TEST_F(NetworkInterfaceTest, SendingWithoutSocketsFailsAndRecordsNothing)
{
    fill(m_pdu, makeMessage(kSync, 1, 0));
    tStatus status;
    m_interface.sendEventMessage(m_pdu, status);
    EXPECT_EQ(nOrvTarn000::kStatusInternalError, status.getCode());
    EXPECT_EQ(44u, m_pdu.getLength()) << "padding is off until a peer asks for it";
    nOrvPTP000::tTimestamp time;
    tStatus fetch;
    EXPECT_FALSE(m_generator.getTransmitTimestamp(m_pdu, time, fetch));

    tStatus general;
    m_interface.sendGeneralMessage(m_pdu, general);
    EXPECT_EQ(nOrvTarn000::kStatusInternalError, general.getCode());
}

TEST_F(NetworkInterfaceTest, FatalStatusDoesNothing)
{
    tStatus broken;
    ORVTARN_SET_CODE(broken, nOrvTarn000::kStatusInvalidArgument);
    fill(m_pdu, makeMessage(kSync, 1, 0));
    m_interface.sendEventMessage(m_pdu, broken);
    m_interface.sendGeneralMessage(m_pdu, broken);
    m_interface.open(broken);
    EXPECT_EQ(0u, m_timekeeper.readings()) << "no timestamp was taken";
    m_interface.receiveMessage(m_pdu, broken);
    EXPECT_EQ(0u, m_pdu.getLength()) << "the unit is emptied all the same";
    EXPECT_EQ(nOrvTarn000::kStatusInvalidArgument, broken.getCode());
}
