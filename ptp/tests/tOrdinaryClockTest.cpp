// The clock's front from another thread: every property by its id, the
// observers told of each change, and the rules of its use around start and
// stop. The clock runs on a simulated endpoint in virtual time.
#include "orvptp/iPropertyChangeObserver.h"
#include "orvptp/tPTPOrdinaryClock.h"
#include "tSimNetwork.h"

#include <gtest/gtest.h>

#include <cstring>
#include <mutex>
#include <vector>

using namespace nOrvPTP000;
using nOrvTarn000::tStatus;

namespace
{

class tRecordingObserver : public iPropertyChangeObserver
{
public:
    void propertyChanged(i32 a_id, i32) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_ids.push_back(a_id);
    }
    std::vector<i32> take()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<i32> ids;
        ids.swap(m_ids);
        return ids;
    }

private:
    std::mutex m_mutex;
    std::vector<i32> m_ids;
};

// A value for each type that differs from every initial value.
template <typename T>
T probe()
{
    return static_cast<T>(77);
}
template <>
i8 probe<i8>()
{
    return -3;
}
template <>
bool probe<bool>()
{
    return true;
}
template <>
tClockIdentity probe<tClockIdentity>()
{
    const u8 bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    return tClockIdentity(bytes);
}
template <>
tClockQuality probe<tClockQuality>()
{
    return tClockQuality(100, 0x21, 0x4000);
}
template <>
tPortIdentity probe<tPortIdentity>()
{
    return tPortIdentity(probe<tClockIdentity>(), 9);
}

const u8 kIdentity[8] = {0x00, 0x11, 0x22, 0xFF, 0xFE, 0x33, 0x44, 0x55};

struct OrdinaryClockTest : testing::Test
{
    OrdinaryClockTest()
        : m_id(m_network.addEndpoint()),
          m_clock(m_network.getMessaging(m_id), m_network.getTimestamps(m_id),
                  m_network.getTimekeeper(m_id), kIdentity, m_network.getClock(), m_status)
    {
        m_clock.addPropertyChangeObserver(&m_observer);
    }

    nSimNet::tSimNetwork m_network;
    tStatus m_status;
    u32 m_id;
    tPTPOrdinaryClock m_clock;
    tRecordingObserver m_observer;
};

} // namespace

// Every field of the table: a settable one reads back what was written and
// tells the observers once; any other keeps its value and tells nobody. A
// time property is in force at once only while the clock is its own
// grandmaster, which it is no more once its identity has changed.
TEST_F(OrdinaryClockTest, EveryPropertyByIdFromAnotherThread)
{
    tPTPNode& node = m_clock.getNode();
#define ORVPTP_PROPERTY(id, Name, tField, scope, settable, kind, ...)                              \
    {                                                                                              \
        typedef tNodeProperty<id>::tValue tValue;                                                  \
        tStatus status;                                                                            \
        const tValue before = node.readProperty<id>(status);                                       \
        const tValue written = tCarried<tField>::from(probe<tField>());                            \
        const bool inForce =                                                                       \
            std::strcmp(#kind, "TIME") != 0 || node.readProperty<GRANDMASTER_IDENTITY>(status) ==  \
                                                   node.readProperty<CLOCK_IDENTITY>(status);      \
        node.writeProperty<id>(written, status);                                                   \
        EXPECT_TRUE(node.readProperty<id>(status) == (settable && inForce ? written : before))     \
            << #id;                                                                                \
        EXPECT_EQ(settable ? std::vector<i32>{id} : std::vector<i32>{}, m_observer.take()) << #id; \
        EXPECT_EQ(0, status.getCode()) << #id;                                                     \
    }
#define ORVPTP_OTHER_PROPERTY(id)
#include "orvptp/tNodeProperties.def"
}

TEST_F(OrdinaryClockTest, DescriptionsAndAddressesTravelByTheirParts)
{
    tStatus status;
    m_clock.setUserDescription("rack 7", "lab", status);
    char name[tClockDescriptionDS::kUserDescriptionPartSize] = "";
    char location[tClockDescriptionDS::kUserDescriptionPartSize] = "";
    m_clock.getUserDescription(name, location, status);
    EXPECT_STREQ("rack 7", name);
    EXPECT_STREQ("lab", location);

    const u8 manufacturer[3] = {0xAC, 0xDE, 0x48};
    u8 readBack[3] = {};
    m_clock.setManufacturerIdentity(manufacturer, status);
    m_clock.getManufacturerIdentity(readBack, status);
    EXPECT_EQ(0, std::memcmp(manufacturer, readBack, 3));

    const u8 address[4] = {169, 254, 1, 2};
    u8 bytes[16] = {};
    u16 protocol = 0, length = 0;
    m_clock.setPortAddress(1, 4, address, status);
    m_clock.getPortAddress(&protocol, &length, bytes, status);
    EXPECT_EQ(1, protocol);
    ASSERT_EQ(4, length);
    EXPECT_EQ(0, std::memcmp(address, bytes, 4));

    const u8 mac[6] = {0, 0x11, 0x22, 0x33, 0x44, 0x55};
    m_clock.setPhysicalAddress(mac, 6, status);
    EXPECT_EQ(6, m_clock.getNode().readProperty<PHYSICAL_ADDRESS_LENGTH>(status));
    m_clock.setProductDescription("maker", "model", nullptr, status);
    EXPECT_EQ(0, status.getCode());
    EXPECT_EQ((std::vector<i32>{USER_DESCRIPTION, MANUFACTURER_IDENTITY, PROTOCOL_ADDRESS,
                                PHYSICAL_ADDRESS, PRODUCT_DESCRIPTION}),
              m_observer.take());

    // A text over its limit is refused, and nobody hears of it.
    const std::string tooLong(tClockDescriptionDS::kUserDescriptionLimit + 1, 'x');
    m_clock.setUserDescription(tooLong.c_str(), nullptr, status);
    EXPECT_EQ(nOrvTarn000::kStatusOutOfBounds, status.getCode());
    EXPECT_TRUE(m_observer.take().empty());
}

// What a start resets and which starts and stops are refused are the node's
// rules, tested there; the clock's front passes them on.
TEST_F(OrdinaryClockTest, AStoppedClockRefusesSignalsAndExternalChecksHoldAStartedOne)
{
    tStatus status;
    m_clock.setExternalChecks(true, status);
    tStatus signalStatus;
    m_clock.designatePortEnabled(signalStatus);
    EXPECT_EQ(nOrvTarn000::kStatusSystemError, signalStatus.getCode());

    m_clock.startClock(status);
    ASSERT_EQ(0, status.getCode());
    ASSERT_TRUE(m_network.getClock().runFor(2000 * nOrvTarn000::tManualClock::kMillisecond));
    EXPECT_EQ(kPortStateInitializing, m_clock.getPortState());
    m_clock.stopClock(status);
    EXPECT_EQ(kPortStateStopped, m_clock.getPortState());
}
