// The maintainer between the messaging and the engine, on a simulated
// endpoint in virtual time: every failure of the network reaches the node as
// one network error event, on the dispatcher thread, after the handler that
// saw it; a cancelled receive ends quietly.
#include "orvptp/tPortNetworkMaintainer.h"
#include "orvptp/tProtocolDataUnit.h"
#include "tFakeNode.h"
#include "tSimNetwork.h"

#include <gtest/gtest.h>

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace nOrvPTP000;
using nOrvTarn000::tStatus;
using tEntries = std::vector<std::string>;

namespace
{

// A node that records what reaches it through the dispatcher.
class tRecordingNode : public nFakeNode::tFakeNode
{
public:
    void handleNetworkError(tStatus&) override { add("network error"); }
    void handlePacketReceived(std::unique_ptr<tProtocolDataUnit>, tStatus&) override
    {
        add("packet");
    }
    void add(const std::string& a_entry)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.push_back(a_entry);
    }
    tEntries take()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        tEntries entries;
        entries.swap(m_entries);
        return entries;
    }

private:
    std::mutex m_mutex;
    tEntries m_entries;
};

// Runs a piece of code on the dispatcher thread, as a handler would.
class tHandlerEvent : public iPTPEvent
{
public:
    tHandlerEvent(std::function<void(tStatus&)> a_work, i32 a_kind)
        : m_work(std::move(a_work)), m_kind(a_kind)
    {
    }
    bool allowedWhenStopped() override { return true; }
    i32 getEventKind() override { return m_kind; }
    void execute(tStatus& a_status) override { m_work(a_status); }

private:
    std::function<void(tStatus&)> m_work;
    i32 m_kind;
};

struct PortNetworkMaintainerTest : testing::Test
{
    PortNetworkMaintainerTest()
        : m_id(m_network.addEndpoint()), m_peer(m_network.addEndpoint()),
          m_dispatcher(m_network.getClock(), m_status),
          m_maintainer(m_network.getMessaging(m_id), &m_dispatcher, m_status)
    {
        onDispatcher([](tStatus&) {}, iPTPEvent::kStartEvent);
    }
    ~PortNetworkMaintainerTest() override
    {
        onDispatcher([this](tStatus& a_status) { m_maintainer.stop(a_status); });
    }
    void onDispatcher(std::function<void(tStatus&)> a_work, i32 a_kind = iPTPEvent::kOtherEvent)
    {
        std::unique_ptr<iPTPEvent> pEvent(new tHandlerEvent(std::move(a_work), a_kind));
        m_dispatcher.post(pEvent, m_status);
        ASSERT_TRUE(m_network.getClock().settle());
    }
    // Sends one small datagram from the dispatcher thread; the code it got.
    i32 sendFromHandler()
    {
        i32 code = 1;
        onDispatcher(
            [this, &code](tStatus& a_status)
            {
                tProtocolDataUnit packet(a_status);
                packet.writeOctets(reinterpret_cast<const u8*>("datagram"), 8, a_status);
                m_maintainer.sendEvent(packet, a_status);
                code = a_status.getCode();
                m_node.add("handler done");
            });
        return code;
    }

    nSimNet::tSimNetwork m_network;
    tStatus m_status;
    tRecordingNode m_node;
    u32 m_id;
    u32 m_peer;
    tPTPDispatcher m_dispatcher;
    tPortNetworkMaintainer m_maintainer;
};

} // namespace

TEST_F(PortNetworkMaintainerTest, ASendWhileNotRunningIsRefused)
{
    EXPECT_EQ(nOrvTarn000::kStatusInvalidState, sendFromHandler());
    EXPECT_EQ((tEntries{"handler done"}), m_node.take());
}

TEST_F(PortNetworkMaintainerTest, AFailedSendIsOneNetworkErrorAfterTheHandler)
{
    onDispatcher([this](tStatus& a_status) { m_maintainer.start(&m_node, a_status); });
    ASSERT_TRUE(m_maintainer.isRunning());
    EXPECT_EQ(0, sendFromHandler());
    EXPECT_EQ((tEntries{"handler done"}), m_node.take());

    // The socket goes away under the sender: the sender's status stays clean.
    tStatus closeStatus;
    m_network.getMessaging(m_id)->close(closeStatus);
    EXPECT_EQ(0, sendFromHandler());
    EXPECT_EQ((tEntries{"handler done", "network error"}), m_node.take());
}

TEST_F(PortNetworkMaintainerTest, AReceiveFailureIsOneNetworkErrorAndACancelEndsQuietly)
{
    onDispatcher([this](tStatus& a_status) { m_maintainer.start(&m_node, a_status); });
    // The receive thread is one the clock knows from its first wait on.
    while (!m_network.isReceiving(m_id))
    {
        std::this_thread::yield();
    }
    tStatus status;
    tProtocolDataUnit packet(status);
    packet.writeOctets(reinterpret_cast<const u8*>("datagram"), 8, status);
    m_network.getMessaging(m_peer)->open(status);
    m_network.getMessaging(m_peer)->sendGeneralMessage(packet, status);
    ASSERT_TRUE(m_network.getClock().settle());
    EXPECT_EQ((tEntries{"packet"}), m_node.take());

    m_network.failNextReceive(m_id);
    ASSERT_TRUE(m_network.getClock().settle());
    EXPECT_EQ((tEntries{"network error"}), m_node.take());
    // The thread has ended: nothing more is received until a restart.
    m_network.getMessaging(m_peer)->sendGeneralMessage(packet, status);
    ASSERT_TRUE(m_network.getClock().settle());
    EXPECT_EQ(tEntries{}, m_node.take());

    onDispatcher(
        [this](tStatus& a_status)
        {
            m_maintainer.stop(a_status);
            m_maintainer.start(&m_node, a_status);
            m_maintainer.stop(a_status);
        });
    EXPECT_EQ(tEntries{}, m_node.take());
    EXPECT_EQ(0, status.getCode());
}
