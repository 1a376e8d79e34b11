#include "tSimNetwork.h"

#include "orvptp/tPortAddress.h"

#include <algorithm>
#include <cstring>

namespace nSimNet
{

using namespace nOrvTarn000;

namespace
{

constexpr i64 kEpochNs = kClockEpochSeconds * kNanosecondsPerSecond;

} // namespace

// ---- helpers on raw datagrams ----

u8 messageTypeOf(const std::vector<u8>& a_bytes)
{
    return a_bytes.size() < kHeaderLength ? 0xFF : static_cast<u8>(a_bytes[0] & 0x0F);
}

u64 fieldOf(const std::vector<u8>& a_bytes, u32 a_offset, u32 a_length)
{
    u64 value = 0;
    for (u32 i = a_offset; i < a_offset + a_length; ++i)
    {
        value = (value << 8) | (i < a_bytes.size() ? a_bytes[i] : 0);
    }
    return value;
}

void setField(std::vector<u8>& a_bytes, u32 a_offset, u32 a_length, u64 a_value)
{
    for (u32 i = a_offset + a_length; i-- > a_offset; a_value >>= 8)
    {
        if (i < a_bytes.size())
        {
            a_bytes[i] = static_cast<u8>(a_value & 0xFF);
        }
    }
}

i64 toNanoseconds(const tTimestamp& a_time)
{
    return static_cast<i64>(a_time.getSeconds()) * kNanosecondsPerSecond +
           static_cast<i64>(a_time.getNanoseconds());
}

tTimestamp toTimestamp(i64 a_nanoseconds)
{
    i64 seconds = a_nanoseconds / kNanosecondsPerSecond;
    i64 rest = a_nanoseconds % kNanosecondsPerSecond;
    if (rest < 0)
    {
        rest += kNanosecondsPerSecond;
        seconds -= 1;
    }
    return tTimestamp(static_cast<u64>(seconds), static_cast<u32>(rest));
}

// ---- an endpoint ----

namespace
{

// Records kept per direction; the oldest gives way.
constexpr size_t kMaxRecords = 64;

bool makeKey(const u8* a_pData, u32 a_length, std::array<u8, 14>& a_rKey)
{
    if (a_pData == nullptr || a_length < kHeaderLength)
    {
        return false;
    }
    a_rKey[0] = static_cast<u8>(a_pData[0] & 0x0F);
    a_rKey[1] = a_pData[kControlFieldOffset];
    a_rKey[2] = a_pData[kSequenceIdOffset];
    a_rKey[3] = a_pData[kSequenceIdOffset + 1];
    std::memcpy(&a_rKey[4], a_pData + kSourcePortIdentityOffset, 10);
    return true;
}

template <typename tRecords>
void keepRecord(tRecords& a_rRecords, const std::vector<u8>& a_bytes, const tTimestamp& a_time)
{
    typename tRecords::value_type record;
    if (makeKey(a_bytes.data(), static_cast<u32>(a_bytes.size()), record.m_key))
    {
        if (a_rRecords.size() >= kMaxRecords)
        {
            a_rRecords.pop_front();
        }
        record.m_time = a_time;
        a_rRecords.push_back(record);
    }
}

} // namespace

tSimEndpoint::tSimEndpoint(tSimNetwork& a_network, u32 a_id, i64 a_offsetNs)
    : m_network(a_network), m_id(a_id), m_offsetNs(a_offsetNs)
{
    tStatus eventStatus;
    m_pArrival.reset(new tEvent(true, false, nullptr, eventStatus));
}

tTimestamp tSimEndpoint::clockAtLocked(i64 a_t) const
{
    return toTimestamp(kEpochNs + m_offsetNs + a_t);
}

// A receive looks at the endpoint before it waits, so a change while none is
// under way needs no wake; and a receive thread that has ended leaves no
// signal behind that the clock would count as work.
void tSimEndpoint::wakeLocked()
{
    if (m_receiving)
    {
        m_network.m_clock.signal(*m_pArrival);
    }
}

void tSimEndpoint::open(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    std::lock_guard<std::mutex> lock(m_network.m_mutex);
    if (m_failOpen)
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return;
    }
    m_open = true;
    m_cancelled = false;
    m_queue.clear();
    ++m_openCount;
}

void tSimEndpoint::close(tStatus& a_status)
{
    std::lock_guard<std::mutex> lock(m_network.m_mutex);
    if (m_failClose)
    {
        m_failClose = false;
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
    }
    m_open = false;
    m_queue.clear();
    wakeLocked();
}

void tSimEndpoint::sendEventMessage(tProtocolDataUnit& a_rPdu, tStatus& a_status)
{
    send(a_rPdu, true, a_status);
}

void tSimEndpoint::sendGeneralMessage(tProtocolDataUnit& a_rPdu, tStatus& a_status)
{
    send(a_rPdu, false, a_status);
}

void tSimEndpoint::send(tProtocolDataUnit& a_rPdu, bool a_event, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    std::lock_guard<std::mutex> lock(m_network.m_mutex);
    if (!m_open)
    {
        // As a send on a closed socket fails.
        ORVTARN_SET_CODE(a_status, kStatusInternalError);
        return;
    }
    // The one instant of this sending: every copy and the transmit time derive from it.
    const i64 sent = m_network.now();
    std::vector<u8> bytes(a_rPdu.getData(), a_rPdu.getData() + a_rPdu.getLength());
    ++m_sent[messageTypeOf(bytes) & 0x0F];
    m_sentLog.push_back(tSentDatagram{a_event, bytes});
    if (a_event)
    {
        keepRecord(m_records[0], bytes, clockAtLocked(sent));
    }
    for (u32 to = 0; m_connected && to < m_network.m_endpoints.size(); ++to)
    {
        tSimEndpoint& target = m_network.endpoint(to);
        if (to == m_id || !target.m_open || !target.m_connected)
        {
            continue;
        }
        const tSimNetwork::tLink& link = m_network.m_links.at(std::make_pair(m_id, to));
        if (link.m_loss > 0.0 &&
            static_cast<double>(m_network.m_random() >> 11) * (1.0 / 9007199254740992.0) <
                link.m_loss)
        {
            continue;
        }
        tInFlight copy = {m_id, a_event, bytes, 0, false};
        if (m_network.m_hook)
        {
            m_network.m_hook(copy);
        }
        if (copy.m_drop)
        {
            continue;
        }
        tDatagram datagram = {std::move(copy.m_bytes), a_event,
                              sent + link.m_delayNs + copy.m_extraDelayNs};
        // Ordered by arrival; equal arrivals keep the order of sending.
        std::deque<tDatagram>::iterator at = std::upper_bound(
            target.m_queue.begin(), target.m_queue.end(), datagram.m_due,
            [](i64 a_due, const tDatagram& a_other) { return a_due < a_other.m_due; });
        target.m_queue.insert(at, std::move(datagram));
        target.wakeLocked();
    }
}

void tSimEndpoint::receiveMessage(tProtocolDataUnit& a_rPdu, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    a_rPdu.clear();
    for (;;)
    {
        u64 deadline = tManualClock::kNever;
        {
            std::lock_guard<std::mutex> lock(m_network.m_mutex);
            m_receiving = !tryReceiveLocked(a_rPdu, deadline, a_status);
            if (!m_receiving)
            {
                // A wake that came after the one taken is spent with the
                // receive: the thread may end, and leave no signal behind.
                tStatus resetStatus;
                m_network.m_clock.reset(*m_pArrival, resetStatus);
                return;
            }
        }
        // A change after the look above has signalled the event already.
        tStatus waitStatus;
        m_network.m_clock.waitUntil(*m_pArrival, deadline, waitStatus);
    }
}

bool tSimEndpoint::tryReceiveLocked(tProtocolDataUnit& a_rPdu, u64& a_rDeadline, tStatus& a_status)
{
    if (m_cancelled || m_failReceive)
    {
        // A cancel first; a failure still due waits for the next receive.
        bool& rCause = m_cancelled ? m_cancelled : m_failReceive;
        ORVTARN_SET_CODE(a_status, m_cancelled ? kStatusCancelled : kStatusSystemError);
        rCause = false;
        return true;
    }
    if (m_queue.empty())
    {
        return false;
    }
    const i64 due = m_queue.front().m_due;
    if (m_network.now() < due)
    {
        a_rDeadline = static_cast<u64>(due);
        return false;
    }
    tDatagram datagram = std::move(m_queue.front());
    m_queue.pop_front();
    a_rPdu.writeOctets(datagram.m_bytes.data(), static_cast<u32>(datagram.m_bytes.size()),
                       a_status);
    if (a_status.isNotFatal() && datagram.m_event)
    {
        // The receiver's clock at the arrival instant, not at the moment this
        // thread got round to it.
        keepRecord(m_records[1], datagram.m_bytes, clockAtLocked(due));
    }
    ++m_delivered[messageTypeOf(datagram.m_bytes) & 0x0F];
    return true;
}

void tSimEndpoint::cancelReceive(tStatus&)
{
    std::lock_guard<std::mutex> lock(m_network.m_mutex);
    m_cancelled = true;
    wakeLocked();
}

nOrvPTP000::tPortAddress tSimEndpoint::getPortAddress()
{
    // The PTP primary multicast group, as over UDP/IPv4.
    const u8 group[4] = {224, 0, 1, 129};
    tStatus status;
    return nOrvPTP000::tPortAddress(1, 4, group, status);
}

bool tSimEndpoint::getReceiveTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime,
                                       tStatus& a_status)
{
    return a_status.isNotFatal() && fetchTimestamp(true, a_rPdu, a_rTime);
}

bool tSimEndpoint::getTransmitTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime,
                                        tStatus& a_status)
{
    return a_status.isNotFatal() && fetchTimestamp(false, a_rPdu, a_rTime);
}

bool tSimEndpoint::fetchTimestamp(bool a_receive, tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime)
{
    std::lock_guard<std::mutex> lock(m_network.m_mutex);
    u32& lost = m_lostTimestamps[a_receive ? 1 : 0];
    tKey key;
    if (lost > 0)
    {
        --lost;
        return false;
    }
    if (!makeKey(a_rPdu.getData(), a_rPdu.getLength(), key))
    {
        return false;
    }
    std::deque<tRecord>& records = m_records[a_receive ? 1 : 0];
    for (std::deque<tRecord>::iterator it = records.begin(); it != records.end(); ++it)
    {
        if (it->m_key == key)
        {
            a_rTime = it->m_time;
            records.erase(it);
            return true;
        }
    }
    return false;
}

void tSimEndpoint::getTime(tTimestamp& a_rTime, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    std::lock_guard<std::mutex> lock(m_network.m_mutex);
    a_rTime = clockAtLocked(m_network.now());
    if (m_timeLost)
    {
        ORVTARN_SET_CODE(a_status, kStatusNotAvailable);
    }
}

void tSimEndpoint::stepTime(const tTimestamp& a_rTime, tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        std::lock_guard<std::mutex> lock(m_network.m_mutex);
        m_offsetNs = toNanoseconds(a_rTime) - (kEpochNs + m_network.now());
    }
}

void tSimEndpoint::addSample(const tTimestamp& a_rMasterTime, const tTimestamp& a_rLocalTime,
                             tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    tSample sample = {a_rMasterTime, a_rLocalTime, 0, 0};
    if (m_pProbe != nullptr)
    {
        sample.m_offsetFromMaster = m_pProbe->getOffsetFromMaster().getScaledNanoseconds();
        sample.m_meanPathDelay = m_pProbe->getMeanPathDelay().getScaledNanoseconds();
    }
    std::lock_guard<std::mutex> lock(m_network.m_mutex);
    m_samples.push_back(sample);
}

bool tSimEndpoint::isPortStateHeld()
{
    std::lock_guard<std::mutex> lock(m_network.m_mutex);
    return m_held;
}

// ---- the network ----

tSimNetwork::tSimNetwork(u64 a_lossSeed) : m_random(a_lossSeed) {}

tSimNetwork::~tSimNetwork()
{
    for (const std::unique_ptr<tSimEndpoint>& pEndpoint : m_endpoints)
    {
        m_clock.forget(*pEndpoint->m_pArrival);
    }
}

u32 tSimNetwork::addEndpoint(i64 a_clockOffsetNs)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const u32 id = static_cast<u32>(m_endpoints.size());
    for (u32 other = 0; other < id; ++other)
    {
        m_links[std::make_pair(other, id)] = tLink{0, 0.0};
        m_links[std::make_pair(id, other)] = tLink{0, 0.0};
    }
    m_endpoints.emplace_back(new tSimEndpoint(*this, id, a_clockOffsetNs));
    return id;
}

tSimEndpoint* tSimNetwork::getEndpoint(u32 a_id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return &endpoint(a_id);
}

i64 tSimNetwork::now()
{
    return static_cast<i64>(m_clock.now());
}

void tSimNetwork::setDelay(u32 a_from, u32 a_to, i64 a_delayNs)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_links.at(std::make_pair(a_from, a_to)).m_delayNs = a_delayNs;
}

void tSimNetwork::setSymmetricDelay(u32 a_a, u32 a_b, i64 a_delayNs)
{
    setDelay(a_a, a_b, a_delayNs);
    setDelay(a_b, a_a, a_delayNs);
}

void tSimNetwork::setLoss(u32 a_from, u32 a_to, double a_probability)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_links.at(std::make_pair(a_from, a_to)).m_loss = a_probability;
}

void tSimNetwork::setInFlightHook(tInFlightHook a_hook)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_hook = std::move(a_hook);
}

void tSimNetwork::failNextReceive(u32 a_id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    endpoint(a_id).m_failReceive = true;
    endpoint(a_id).wakeLocked();
}

void tSimNetwork::loseTimestamps(u32 a_id, bool a_receive, u32 a_count)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    endpoint(a_id).m_lostTimestamps[a_receive ? 1 : 0] = a_count;
}

u64 tSimNetwork::getSentCount(u32 a_id, u8 a_messageType)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return endpoint(a_id).m_sent[a_messageType & 0x0F];
}

u64 tSimNetwork::getDeliveredCount(u32 a_id, u8 a_messageType)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return endpoint(a_id).m_delivered[a_messageType & 0x0F];
}

bool tSimNetwork::waitUntil(const std::function<bool()>& a_condition, tBound a_bound)
{
    return m_clock.runUntil(a_condition,
                            static_cast<u64>(std::chrono::nanoseconds(a_bound).count()));
}

} // namespace nSimNet
