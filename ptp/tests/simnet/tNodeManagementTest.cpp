// What a real node answers of management: only requests for its own ports,
// none while INITIALIZING, always from port 1; SETs tell the observers in the
// management context, and the port commands move the port. What each
// managementId answers is the management unit test's business.
#include "../tManagementSamples.h"
#include "tScenario.h"

#include "orvptp/iPropertyChangeObserver.h"

#include <thread>

using namespace nSimNet;
using namespace nOrvPTP000;
using nWireTest::managementRequest;
using nWireTest::managementTLV;
using nWireTest::tBytes;

namespace
{

class tManagementChanges : public iPropertyChangeObserver
{
public:
    void propertyChanged(i32 a_propertyId, i32 a_context) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (a_context == kContextManagement)
        {
            m_ids.push_back(a_propertyId);
        }
    }
    std::vector<i32> ids()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_ids;
    }

private:
    std::mutex m_mutex;
    std::vector<i32> m_ids;
};

class NodeManagementTest : public tScenario
{
protected:
    NodeManagementTest() : m_clock(addClock(1)), m_requester(m_network.addEndpoint())
    {
        tStatus status;
        m_network.getMessaging(m_requester)->open(status);
        m_clock.node().writeProperty<ADD_PROPERTY_OBSERVER>(&m_changes, status);
        EXPECT_EQ(status.getCode(), 0);
    }

    // The clock's answer to a_request once it has taken it in; empty if none.
    // Its receive thread waits first: a thread that has not come to its first
    // wait is not yet known to the manual clock, which would let time run out
    // before the request is taken in.
    tBytes ask(const tBytes& a_request)
    {
        const u32 clock = m_clock.getId();
        while (!m_network.isReceiving(clock))
        {
            std::this_thread::yield();
        }
        settle();
        const u64 heard = m_network.getDeliveredCount(clock, kMessageTypeManagement) + 1;
        const size_t sent = m_network.getSent(clock).size();
        tStatus status;
        tProtocolDataUnit unit(status);
        nWireTest::receive(unit, a_request);
        m_network.getMessaging(m_requester)->sendGeneralMessage(unit, status);
        EXPECT_TRUE(m_network.waitUntil(
            [&] { return m_network.getDeliveredCount(clock, kMessageTypeManagement) >= heard; },
            kSettleBound));
        settle();
        const std::vector<tSentDatagram> after = m_network.getSent(clock);
        for (size_t i = sent; i < after.size(); ++i)
        {
            if (messageTypeOf(after[i].m_bytes) == kMessageTypeManagement)
            {
                return after[i].m_bytes;
            }
        }
        return {};
    }

    tSimNode& m_clock;
    u32 m_requester;
    tManagementChanges m_changes;
};

TEST_F(NodeManagementTest, AnswersItsOwnPortsOutsideInitializingAndSetsInTheManagementContext)
{
    const u8* own = m_clock.getIdentity().getBytes();
    const u8 ones[8] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    const u8 other[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    const tBytes get = managementTLV(0x2005, {0, 0});
    tStatus status;
    m_clock.node().startClock(status);
    EXPECT_TRUE(ask(managementRequest(nWireTest::kActionGet, get, ones, 0xFFFF)).empty())
        << "answered in INITIALIZING";
    m_clock.completeInitialization(status);
    ASSERT_TRUE(m_clock.waitForState(kPortStateListening, kSettleBound));

    const struct
    {
        const u8* m_pTarget;
        u16 m_port;
        bool m_answered;
    } targets[] = {{own, 1, true},    {ones, 0xFFFF, true},   {own, 0xFFFF, true}, {ones, 1, true},
                   {other, 1, false}, {other, 0xFFFF, false}, {own, 0, false},     {own, 2, false}};
    for (const auto& target : targets)
    {
        const tBytes response =
            ask(managementRequest(nWireTest::kActionGet, get, target.m_pTarget, target.m_port));
        EXPECT_EQ(response.empty(), !target.m_answered) << target.m_port;
        // The response comes from port 1 of this clock, whatever the target said.
        if (!response.empty())
        {
            EXPECT_TRUE(std::equal(own, own + 8, response.begin() + kSourcePortIdentityOffset));
            EXPECT_EQ(fieldOf(response, kSourcePortIdentityOffset + 8, 2), 1u);
        }
    }

    // Its own grandmaster, it takes a time too.
    ask(managementRequest(nWireTest::kActionSet, managementTLV(0x2005, {77, 0}), own));
    ask(managementRequest(nWireTest::kActionSet, managementTLV(0x200F, tBytes(10, 0)), own));
    EXPECT_EQ(m_clock.node().readProperty<PRIORITY1>(status), 77);
    const std::vector<i32> managed = {PRIORITY1, CURRENT_TIME};
    EXPECT_EQ(m_changes.ids(), managed);

    // Port commands take the port through its states.
    const struct
    {
        u16 m_managementId;
        tBytes m_data;
        u8 m_state;
    } commands[] = {{0x200E, {}, kPortStateDisabled},
                    {0x200D, {}, kPortStateInitializing},
                    {0x0005, {0, 0}, kPortStateInitializing}};
    for (const auto& command : commands)
    {
        if (m_clock.getState() == kPortStateInitializing)
        {
            m_clock.completeInitialization(status);
            ASSERT_TRUE(m_clock.waitForState(kPortStateListening, kSettleBound));
        }
        ask(managementRequest(nWireTest::kActionCommand,
                              managementTLV(command.m_managementId, command.m_data), own));
        EXPECT_EQ(m_clock.getState(), command.m_state) << command.m_managementId;
    }
    EXPECT_EQ(status.getCode(), 0);
}

} // namespace
