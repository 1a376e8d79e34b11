#pragma once
// An in-process network for PTP clocks: one segment on which every open
// endpoint hears every other, with a one-way delay and a loss rate per
// direction, and a simulated clock behind each endpoint. Only bytes move: the
// nodes serialise and parse every message themselves.
//
// Time is the network's manual clock, which the nodes' timers use too, so a
// scenario runs in virtual time. A datagram sent at simulated time t carries
// the sender's clock at t as its transmit time and arrives at t + delay with
// the receiver's clock then as its receive time. Readings are whole
// nanoseconds of t alone, so that receive - transmit = delay + (receiver
// offset - sender offset) exactly, and a slave measures to the nanosecond.
#include "orvptp/iPTPNode.h"
#include "orvptp/iPTPPortMessaging.h"
#include "orvptp/iPTPTimekeeper.h"
#include "orvptp/iPTPTimestampGenerator.h"
#include "tManualClock.h"

#include <array>
#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <vector>

namespace nSimNet
{

using nOrvPTP000::tProtocolDataUnit;
using nOrvPTP000::tTimestamp;
using nOrvTarn000::tStatus;

class tSimNetwork;

// The first second of every simulated clock, a plausible present-day PTP time.
constexpr i64 kClockEpochSeconds = 1700000000;
constexpr i64 kNanosecondsPerSecond = 1000000000;

// Header positions, for recognising and editing datagrams.
enum : u32
{
    kDomainNumberOffset = 4,
    kFlagsOffset = 6,
    kCorrectionFieldOffset = 8,
    kSourcePortIdentityOffset = 20,
    kSequenceIdOffset = 30,
    kControlFieldOffset = 32,
    kLogMessageIntervalOffset = 33,
    kHeaderLength = 34
};

// The message types that a node sends.
enum : u8
{
    kSync = 0,
    kDelayReq = 1,
    kFollowUp = 8,
    kDelayResp = 9,
    kAnnounce = 11
};

// The message type of a datagram (low nibble of its first byte), or 0xFF for
// one too short to have a header.
u8 messageTypeOf(const std::vector<u8>& a_bytes);
// The big-endian field of a_length bytes (at most 8) at a_offset; the bytes
// past the end of the datagram read as 0 and are not written.
u64 fieldOf(const std::vector<u8>& a_bytes, u32 a_offset, u32 a_length);
void setField(std::vector<u8>& a_bytes, u32 a_offset, u32 a_length, u64 a_value);
// The correctionField of a datagram in scaled nanoseconds (2^-16 ns).
inline i64 correctionFieldOf(const std::vector<u8>& a_bytes)
{
    return static_cast<i64>(fieldOf(a_bytes, kCorrectionFieldOffset, 8));
}
inline void setCorrectionField(std::vector<u8>& a_bytes, i64 a_scaledNanoseconds)
{
    setField(a_bytes, kCorrectionFieldOffset, 8, static_cast<u64>(a_scaledNanoseconds));
}

// A clock reading as whole nanoseconds since the timescale's epoch, and back.
i64 toNanoseconds(const tTimestamp& a_time);
tTimestamp toTimestamp(i64 a_nanoseconds);

// One copy of a datagram on its way from one endpoint to another, as the
// in-flight hook sees it. The hook may edit the bytes (as a transparent clock
// edits the correctionField), add to the delay, or drop the copy.
struct tInFlight
{
    u32 m_from;
    bool m_event;
    std::vector<u8> m_bytes;
    i64 m_extraDelayNs;
    bool m_drop;
};
// Runs under the network's lock: it must not call back into the network.
typedef std::function<void(tInFlight&)> tInFlightHook;

// One datagram as it left an endpoint.
struct tSentDatagram
{
    bool m_event;
    std::vector<u8> m_bytes;
};

// One pair that the node handed to its timekeeper, with the node's
// offsetFromMaster and meanPathDelay (scaled) at that moment.
struct tSample
{
    tTimestamp m_masterTime;
    tTimestamp m_localTime;
    i64 m_offsetFromMaster;
    i64 m_meanPathDelay;
};

// One endpoint: the three interfaces of a node over the network's state for
// it. A timestamp record is found by the datagram's own bytes (messageType,
// controlField, sequenceId and the sender's port identity), so that two
// senders that happen to use the same sequenceId never share one.
class tSimEndpoint : public nOrvPTP000::iPTPPortMessaging,
                     public nOrvPTP000::iPTPTimestampGenerator,
                     public nOrvPTP000::iPTPTimekeeper
{
public:
    tSimEndpoint(tSimNetwork& a_network, u32 a_id, i64 a_offsetNs);

    void open(tStatus& a_status) override;
    void close(tStatus& a_status) override;
    void sendEventMessage(tProtocolDataUnit& a_rPdu, tStatus& a_status) override;
    void sendGeneralMessage(tProtocolDataUnit& a_rPdu, tStatus& a_status) override;
    void receiveMessage(tProtocolDataUnit& a_rPdu, tStatus& a_status) override;
    void cancelReceive(tStatus& a_status) override;
    nOrvPTP000::tPortAddress getPortAddress() override;

    bool getReceiveTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime,
                             tStatus& a_status) override;
    bool getTransmitTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime,
                              tStatus& a_status) override;

    void getTime(tTimestamp& a_rTime, tStatus& a_status) override;
    void stepTime(const tTimestamp& a_rTime, tStatus& a_status) override;
    void addSample(const tTimestamp& a_rMasterTime, const tTimestamp& a_rLocalTime,
                   tStatus& a_status) override;
    bool isPortStateHeld() override;

    // The node whose offsetFromMaster and meanPathDelay each sample records.
    // addSample runs on that node's dispatcher thread, where reading them is safe.
    void setProbe(nOrvPTP000::iPTPNode* a_pNode) { m_pProbe = a_pNode; }

private:
    friend class tSimNetwork;
    // messageType, controlField, sequenceId, sourcePortIdentity.
    typedef std::array<u8, 14> tKey;
    struct tRecord
    {
        tKey m_key;
        tTimestamp m_time;
    };
    struct tDatagram
    {
        std::vector<u8> m_bytes;
        bool m_event;
        i64 m_due;
    };

    void send(tProtocolDataUnit& a_rPdu, bool a_event, tStatus& a_status);
    // One look, under the network's lock: true when the receive ends
    // (datagram, cancel or failure); otherwise a_rDeadline is the next
    // datagram's arrival.
    bool tryReceiveLocked(tProtocolDataUnit& a_rPdu, u64& a_rDeadline, tStatus& a_status);
    bool fetchTimestamp(bool a_receive, tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime);
    tTimestamp clockAtLocked(i64 a_t) const;
    void wakeLocked();

    tSimNetwork& m_network;
    const u32 m_id;
    nOrvPTP000::iPTPNode* m_pProbe = nullptr;
    i64 m_offsetNs;
    bool m_open = false;
    bool m_cancelled = false;
    bool m_connected = true;
    bool m_failReceive = false;
    bool m_failClose = false;
    // A receive is under way: only then does a change wake it.
    bool m_receiving = false;
    bool m_failOpen = false;
    bool m_timeLost = false;
    bool m_held = false;
    u32 m_openCount = 0;
    u32 m_lostTimestamps[2] = {}; // transmit, receive
    // Signalled at every change a waiting receive must look at.
    std::unique_ptr<nOrvTarn000::tEvent> m_pArrival;
    std::deque<tDatagram> m_queue;
    std::deque<tRecord> m_records[2]; // transmit, receive
    u64 m_sent[16] = {};
    u64 m_delivered[16] = {};
    std::vector<tSentDatagram> m_sentLog;
    std::vector<tSample> m_samples;
};

class tSimNetwork
{
public:
    typedef std::chrono::milliseconds tBound;

    explicit tSimNetwork(u64 a_lossSeed = 1);
    ~tSimNetwork();
    tSimNetwork(const tSimNetwork&) = delete;
    tSimNetwork& operator=(const tSimNetwork&) = delete;

    // Adds an endpoint whose clock reads epoch + offset + t at simulated time
    // t. Links to and from it have no delay.
    u32 addEndpoint(i64 a_clockOffsetNs = 0);

    tSimEndpoint* getEndpoint(u32 a_id);
    nOrvPTP000::iPTPPortMessaging* getMessaging(u32 a_id) { return getEndpoint(a_id); }
    nOrvPTP000::iPTPTimestampGenerator* getTimestamps(u32 a_id) { return getEndpoint(a_id); }
    tSimEndpoint* getTimekeeper(u32 a_id) { return getEndpoint(a_id); }

    // The clock of the network and of the nodes on it.
    nOrvTarn000::tManualClock& getClock() { return m_clock; }
    // Simulated nanoseconds since the network was made.
    i64 now();

    void setDelay(u32 a_from, u32 a_to, i64 a_delayNs);
    void setSymmetricDelay(u32 a_a, u32 a_b, i64 a_delayNs);
    // Probability from 0 to 1 that one copy from a_from to a_to is lost.
    void setLoss(u32 a_from, u32 a_to, double a_probability);
    // A disconnected endpoint neither hears nor is heard; its sends still succeed.
    void setConnected(u32 a_id, bool a_on) { set(a_id, &tSimEndpoint::m_connected, a_on); }
    void setInFlightHook(tInFlightHook a_hook);

    // The next receive of the endpoint fails with kStatusSystemError, as a
    // broken socket would.
    void failNextReceive(u32 a_id);
    // The next close of the endpoint reports kStatusSystemError; it closes all the same.
    void failNextClose(u32 a_id) { set(a_id, &tSimEndpoint::m_failClose, true); }
    // While set, opening the endpoint fails with kStatusSystemError.
    void setOpenFailing(u32 a_id, bool a_on) { set(a_id, &tSimEndpoint::m_failOpen, a_on); }
    // While set, the endpoint's clock cannot be read (kStatusNotAvailable).
    void setTimeLost(u32 a_id, bool a_lost) { set(a_id, &tSimEndpoint::m_timeLost, a_lost); }
    // The next a_count look-ups of a receive (or transmit) time find nothing.
    void loseTimestamps(u32 a_id, bool a_receive, u32 a_count);
    void setPortStateHeld(u32 a_id, bool a_held) { set(a_id, &tSimEndpoint::m_held, a_held); }

    // Traffic counters by messageType (0 to 15).
    u64 getSentCount(u32 a_id, u8 a_messageType);
    u64 getDeliveredCount(u32 a_id, u8 a_messageType);
    bool isOpen(u32 a_id) { return get(a_id, &tSimEndpoint::m_open); }
    u32 getOpenCount(u32 a_id) { return get(a_id, &tSimEndpoint::m_openCount); }
    // True while a receive of the endpoint waits.
    bool isReceiving(u32 a_id) { return get(a_id, &tSimEndpoint::m_receiving); }
    // Every datagram the endpoint sent, in order.
    std::vector<tSentDatagram> getSent(u32 a_id) { return get(a_id, &tSimEndpoint::m_sentLog); }

    std::vector<tSample> getSamples(u32 a_id) { return get(a_id, &tSimEndpoint::m_samples); }

    // Lets simulated time run until a_condition holds, testing it whenever
    // the nodes have no more work at the present instant. The condition runs
    // without the network's lock and may call any getter. False if a_bound of
    // simulated time ran out.
    bool waitUntil(const std::function<bool()>& a_condition, tBound a_bound);

private:
    friend class tSimEndpoint;

    struct tLink
    {
        i64 m_delayNs;
        double m_loss;
    };

    tSimEndpoint& endpoint(u32 a_id) { return *m_endpoints.at(a_id); }
    // A field of an endpoint, under the lock.
    template <typename T>
    T get(u32 a_id, T tSimEndpoint::*a_pField)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return endpoint(a_id).*a_pField;
    }
    template <typename T>
    void set(u32 a_id, T tSimEndpoint::*a_pField, T a_value)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        endpoint(a_id).*a_pField = a_value;
    }

    // First: it outlives everything that waits through it.
    nOrvTarn000::tManualClock m_clock;
    std::mutex m_mutex;
    std::mt19937_64 m_random;
    std::vector<std::unique_ptr<tSimEndpoint>> m_endpoints;
    std::map<std::pair<u32, u32>, tLink> m_links;
    tInFlightHook m_hook;
};

} // namespace nSimNet
