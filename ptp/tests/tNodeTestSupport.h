#pragma once
// Surroundings for a real node whose traffic a test inspects: messaging that
// keeps every datagram sent, timestamps that follow from a datagram's key
// (controlField and sequenceId), and a clock that reads a fixed time or
// fails on demand. Received datagrams are handed to the node as the network
// thread would, through a posted tPTPPacketReceivedEvent.
#include "orvptp/tDelayReqMessage.h"
#include "orvptp/tDelayRespMessage.h"
#include "orvptp/tFollowUpMessage.h"
#include "orvptp/tPTPMessageFactory.h"
#include "orvptp/tSyncMessage.h"
#include "tNodeHarness.h"

#include <memory>

namespace nOrvPTP000
{
namespace nTest
{

// One datagram as it left the node.
struct tSentDatagram
{
    bool m_event; // sent as an event message (port 319), else general
    std::vector<u8> m_bytes;

    u8 messageType() const { return m_bytes.empty() ? 0xFF : (m_bytes[0] & 0x0F); }
    std::unique_ptr<tPTPMessage> parse() const
    {
        tStatus status;
        tProtocolDataUnit packet(status);
        packet.writeOctets(m_bytes.data(), static_cast<u32>(m_bytes.size()), status);
        return std::unique_ptr<tPTPMessage>(tPTPMessageFactory::createMessage(packet, status));
    }
};

class tRecordingMessaging : public tQuietMessaging
{
public:
    void sendEventMessage(tProtocolDataUnit& a_rPdu, tStatus&) override { record(true, a_rPdu); }
    void sendGeneralMessage(tProtocolDataUnit& a_rPdu, tStatus&) override { record(false, a_rPdu); }

    // Waits until at least a_count datagrams have been sent.
    bool waitForSent(size_t a_count)
    {
        std::unique_lock<std::mutex> lock(m_sentMutex);
        return m_sentChanged.wait_for(lock, kGenerous, [&] { return m_sent.size() >= a_count; });
    }
    std::vector<tSentDatagram> sent()
    {
        std::lock_guard<std::mutex> lock(m_sentMutex);
        return m_sent;
    }
    // The datagrams of one message type, in the order sent.
    std::vector<tSentDatagram> sentOfType(u8 a_messageType)
    {
        std::vector<tSentDatagram> result;
        for (const tSentDatagram& datagram : sent())
        {
            if (datagram.messageType() == a_messageType)
            {
                result.push_back(datagram);
            }
        }
        return result;
    }

private:
    void record(bool a_event, tProtocolDataUnit& a_rPdu)
    {
        std::lock_guard<std::mutex> lock(m_sentMutex);
        m_sent.push_back(tSentDatagram{
            a_event, std::vector<u8>(a_rPdu.getData(), a_rPdu.getData() + a_rPdu.getLength())});
        m_sentChanged.notify_all();
    }

    std::mutex m_sentMutex;
    std::condition_variable m_sentChanged;
    std::vector<tSentDatagram> m_sent;
};

// Receive and transmit times are a function of the datagram's key, so that a
// test knows which time the node must have used.
class tKeyedTimestamps : public iPTPTimestampGenerator
{
public:
    static tTimestamp receiveTime(u8 a_control, u16 a_sequenceId)
    {
        return tTimestamp(1000 + a_sequenceId, 1000 * a_control + 600);
    }
    static tTimestamp transmitTime(u8 a_control, u16 a_sequenceId)
    {
        return tTimestamp(1000 + a_sequenceId, 1000 * a_control + 200);
    }

    bool getReceiveTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime, tStatus&) override
    {
        if (!m_receiveKnown || a_rPdu.getLength() < tMessageHeader::kLength)
        {
            return false;
        }
        a_rTime = receiveTime(control(a_rPdu), sequenceId(a_rPdu));
        return true;
    }
    bool getTransmitTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime, tStatus&) override
    {
        ++m_transmitLookups;
        if (m_transmitMisses > 0)
        {
            --m_transmitMisses;
            return false;
        }
        a_rTime = transmitTime(control(a_rPdu), sequenceId(a_rPdu));
        return true;
    }

    std::atomic<bool> m_receiveKnown{true};
    // The next lookups of a transmit time that find nothing.
    std::atomic<int> m_transmitMisses{0};
    std::atomic<int> m_transmitLookups{0};

private:
    static u8 control(tProtocolDataUnit& a_rPdu) { return a_rPdu.getData()[32]; }
    static u16 sequenceId(tProtocolDataUnit& a_rPdu)
    {
        return static_cast<u16>(a_rPdu.getData()[30] << 8 | a_rPdu.getData()[31]);
    }
};

class tRecordingTimekeeper : public iPTPTimekeeper
{
public:
    static tTimestamp now() { return tTimestamp(500, 250); }

    void getTime(tTimestamp& a_rTime, tStatus& a_status) override
    {
        if (m_timeLost)
        {
            ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusNotAvailable);
            return;
        }
        a_rTime = now();
    }
    void stepTime(const tTimestamp&, tStatus&) override {}
    void addSample(const tTimestamp& a_rMasterTime, const tTimestamp& a_rLocalTime,
                   tStatus&) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_samples.push_back(std::make_pair(a_rMasterTime, a_rLocalTime));
    }
    bool isPortStateHeld() override { return false; }

    std::vector<std::pair<tTimestamp, tTimestamp>> samples()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_samples;
    }

    std::atomic<bool> m_timeLost{false};

private:
    std::mutex m_mutex;
    std::vector<std::pair<tTimestamp, tTimestamp>> m_samples;
};

// ---- datagrams as a peer would send them ----

inline std::vector<u8> bytesOf(tPTPMessage& a_rMessage)
{
    tStatus status;
    tProtocolDataUnit packet(status);
    a_rMessage.serialize(packet, status);
    return std::vector<u8>(packet.getData(), packet.getData() + packet.getLength());
}

inline void fillHeader(tPTPMessage& a_rMessage, const tPortIdentity& a_sender, u16 a_sequenceId,
                       u8 a_domain = 0)
{
    tStatus status;
    a_rMessage.getHeader()->setSourcePortIdentity(a_sender, status);
    a_rMessage.getHeader()->setSequenceId(a_sequenceId, status);
    a_rMessage.getHeader()->setDomainNumber(a_domain, status);
}

inline std::vector<u8> syncFrom(const tPortIdentity& a_sender, u16 a_sequenceId, bool a_twoStep,
                                const tTimestamp& a_origin)
{
    tStatus status;
    tSyncMessage message(status);
    fillHeader(message, a_sender, a_sequenceId);
    message.getHeader()->setTwoStepFlag(a_twoStep, status);
    message.setOriginTimestamp(a_origin, status);
    return bytesOf(message);
}

inline std::vector<u8> followUpFrom(const tPortIdentity& a_sender, u16 a_sequenceId,
                                    const tTimestamp& a_preciseOrigin)
{
    tStatus status;
    tFollowUpMessage message(status);
    fillHeader(message, a_sender, a_sequenceId);
    message.setPreciseOriginTimestamp(a_preciseOrigin, status);
    return bytesOf(message);
}

inline std::vector<u8> delayReqFrom(const tPortIdentity& a_sender, u16 a_sequenceId,
                                    i64 a_correction = 0, u8 a_domain = 0)
{
    tStatus status;
    tDelayReqMessage message(status);
    fillHeader(message, a_sender, a_sequenceId, a_domain);
    message.getHeader()->setCorrectionField(a_correction, status);
    return bytesOf(message);
}

inline std::vector<u8> delayRespFrom(const tPortIdentity& a_sender,
                                     const tPortIdentity& a_requester, u16 a_sequenceId,
                                     i8 a_logInterval, const tTimestamp& a_received)
{
    tStatus status;
    tDelayRespMessage message(status);
    fillHeader(message, a_sender, a_sequenceId);
    message.getHeader()->setLogMessageInterval(a_logInterval, status);
    message.setRequestingPortIdentity(a_requester, status);
    message.setReceiveTimestamp(a_received, status);
    return bytesOf(message);
}

// An Announce of a_grandmaster sent by itself from a_port, better than a
// default clock by priority1 unless told otherwise.
inline std::vector<u8> announceFrom(const tClockIdentity& a_grandmaster, u16 a_sequenceId,
                                    u16 a_port = 1, i16 a_utcOffset = 37, u8 a_priority1 = 1,
                                    u16 a_stepsRemoved = 0)
{
    tStatus status;
    tAnnounceMessage message(status);
    fillHeader(message, tPortIdentity(a_grandmaster, a_port), a_sequenceId);
    message.getHeader()->setCurrentUTCOffsetValid(true, status);
    message.getHeader()->setPtpTimescale(true, status);
    message.setCurrentUTCOffset(a_utcOffset, status);
    message.setGrandmasterIdentity(a_grandmaster, status);
    message.setGrandmasterPriority1(a_priority1, status);
    message.setGrandmasterPriority2(128, status);
    message.setGrandmasterClockQuality(tClockQuality(6, 0x21, 0x4E5D), status);
    message.setStepsRemoved(a_stepsRemoved, status);
    return bytesOf(message);
}

inline tClockIdentity identity(u8 a_last)
{
    const u8 bytes[tClockIdentity::kLength] = {0x00, 0x80, 0x2F, 0xFF, 0xFE, 0x00, 0x00, a_last};
    return tClockIdentity(bytes);
}

// A node in the recording surroundings, with the steps that bring it into
// each state through the same events that timers, the network and the clock
// would post. All intervals are set so long that no timer but the master's
// first Announce and Sync fires during a test: what is sent is what the test
// asked for.
struct tMessagingFixture : testing::Test
{
    enum : i8
    {
        kQuietLogInterval = 16
    };

    tMessagingFixture()
        : m_node(&m_messaging, &m_timestamps, &m_timekeeper, tClockIdentity(kOwnBytes), m_status),
          m_own(tClockIdentity(kOwnBytes), 1), m_master(identity(0x09), 1)
    {
        EXPECT_TRUE(m_status.isNotFatal());
        setProperty(ADD_PORT_STATE_OBSERVER, static_cast<iPortStateObserver*>(&m_states));
    }

    i32 runOnDispatcher(std::function<void(tStatus&)> a_call)
    {
        tStatus status;
        nOrvTarn000::tEvent done(status);
        i32 code = 0;
        m_node.postEventAndWait(std::unique_ptr<iPTPEvent>(new tCallEvent(
                                    [&](tStatus& a_status)
                                    {
                                        a_call(a_status);
                                        code = a_status.getCode();
                                    },
                                    &done)),
                                &done, status);
        EXPECT_TRUE(status.isNotFatal());
        return code;
    }

    template <typename T>
    void setProperty(i32 a_id, T a_value)
    {
        tStatus status;
        nOrvTarn000::tEvent done(status);
        void* values[1] = {&a_value};
        m_node.postEventAndWait(std::unique_ptr<iPTPEvent>(new tSetDatasetEvent(
                                    &m_node, a_id, values, 1, 1, &done, &status)),
                                &done, status);
        EXPECT_TRUE(status.isNotFatal());
    }

    // Posts an event to the node and waits until it has run.
    void post(iPTPEvent* a_pEvent)
    {
        tStatus status;
        m_node.postEvent(std::unique_ptr<iPTPEvent>(a_pEvent), status);
        EXPECT_TRUE(status.isNotFatal());
        runOnDispatcher([](tStatus&) {});
    }

    // The node receives a_bytes as a datagram.
    void receive(const std::vector<u8>& a_bytes)
    {
        tStatus status;
        std::unique_ptr<tProtocolDataUnit> pPacket(new tProtocolDataUnit(status));
        pPacket->writeOctets(a_bytes.data(), static_cast<u32>(a_bytes.size()), status);
        post(new tPTPPacketReceivedEvent(&m_node, std::move(pPacket)));
    }

    u8 portState()
    {
        u8 state = 0xFF;
        runOnDispatcher([&](tStatus& a_status) { state = m_node.getPortState(1, a_status); });
        return state;
    }

    u32 timerId(u32 a_index)
    {
        u32 id = 0;
        runOnDispatcher([&](tStatus&) { id = m_node.getPortDS().getTimerId(a_index); });
        return id;
    }

    void startListening()
    {
        setProperty(EXTERNAL_CHECKS, true);
        tStatus status;
        m_node.startClock(status);
        ASSERT_TRUE(status.isNotFatal());
        setProperty(LOG_ANNOUNCE_INTERVAL, i8(kQuietLogInterval));
        setProperty(LOG_SYNC_INTERVAL, i8(kQuietLogInterval));
        setProperty(LOG_MIN_DELAY_REQ_INTERVAL, i8(kQuietLogInterval));
        m_node.postInitializedCheck(status);
        ASSERT_TRUE(m_states.waitFor(kPortStateListening));
    }

    // Nobody announced: the clock serves, and its first Announce and Sync
    // (with Follow_Up) go out at once.
    void becomeMaster()
    {
        startListening();
        post(new tInitialAnnounceTimeoutEvent(&m_node));
        ASSERT_TRUE(m_states.waitFor(kPortStateMaster));
        ASSERT_TRUE(m_messaging.waitForSent(3));
    }

    // m_master announces twice and wins the next state decision.
    void becomeUncalibrated()
    {
        startListening();
        followMaster();
    }

    void followMaster()
    {
        receive(announceFrom(m_master.getClockIdentity(), 0));
        receive(announceFrom(m_master.getClockIdentity(), 1));
        post(new tStateDecisionEvent(&m_node));
        ASSERT_TRUE(m_states.waitFor(kPortStateUncalibrated));
    }

    void becomeSlave()
    {
        becomeUncalibrated();
        tStatus status;
        m_node.postMasterClockSelectedCheck(status);
        ASSERT_TRUE(m_states.waitFor(kPortStateSlave));
    }

    static constexpr u8 kOwnBytes[tClockIdentity::kLength] = {0x00, 0x1B, 0x21, 0xFF,
                                                              0xFE, 0x01, 0x02, 0x03};

    tStatus m_status;
    tRecordingMessaging m_messaging;
    tKeyedTimestamps m_timestamps;
    tRecordingTimekeeper m_timekeeper;
    tStateRecorder m_states;
    tPTPNode m_node;
    const tPortIdentity m_own;
    const tPortIdentity m_master;
};

} // namespace nTest
} // namespace nOrvPTP000
