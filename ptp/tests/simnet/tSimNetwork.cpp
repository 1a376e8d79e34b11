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

// ---- the three interfaces of an endpoint ----

void tSimMessaging::open(tStatus& a_status)
{
    m_network.open(m_id, a_status);
}

void tSimMessaging::close(tStatus& a_status)
{
    m_network.close(m_id, a_status);
}

void tSimMessaging::sendEventMessage(tProtocolDataUnit& a_rPdu, tStatus& a_status)
{
    m_network.send(m_id, a_rPdu, true, a_status);
}

void tSimMessaging::sendGeneralMessage(tProtocolDataUnit& a_rPdu, tStatus& a_status)
{
    m_network.send(m_id, a_rPdu, false, a_status);
}

void tSimMessaging::receiveMessage(tProtocolDataUnit& a_rPdu, tStatus& a_status)
{
    m_network.receive(m_id, a_rPdu, a_status);
}

void tSimMessaging::cancelReceive(tStatus&)
{
    m_network.cancelReceive(m_id);
}

nOrvPTP000::tPortAddress tSimMessaging::getPortAddress()
{
    // The PTP primary multicast group, as over UDP/IPv4.
    const u8 group[4] = {224, 0, 1, 129};
    tStatus status;
    return nOrvPTP000::tPortAddress(1, 4, group, status);
}

bool tSimTimestamps::getReceiveTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime,
                                         tStatus& a_status)
{
    return a_status.isNotFatal() && m_network.fetchTimestamp(m_id, true, a_rPdu, a_rTime);
}

bool tSimTimestamps::getTransmitTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime,
                                          tStatus& a_status)
{
    return a_status.isNotFatal() && m_network.fetchTimestamp(m_id, false, a_rPdu, a_rTime);
}

void tSimTimekeeper::getTime(tTimestamp& a_rTime, tStatus& a_status)
{
    if (a_status.isNotFatal() && !m_network.readClock(m_id, a_rTime))
    {
        ORVTARN_SET_CODE(a_status, kStatusNotAvailable);
    }
}

void tSimTimekeeper::stepTime(const tTimestamp& a_rTime, tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        m_network.step(m_id, a_rTime);
    }
}

void tSimTimekeeper::addSample(const tTimestamp& a_rMasterTime, const tTimestamp& a_rLocalTime,
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
    m_network.keepSample(m_id, sample);
}

bool tSimTimekeeper::isPortStateHeld()
{
    return m_network.held(m_id);
}

// ---- the network ----

bool tSimNetwork::tKey::operator<(const tKey& a_other) const
{
    if (m_messageType != a_other.m_messageType)
    {
        return m_messageType < a_other.m_messageType;
    }
    if (m_controlField != a_other.m_controlField)
    {
        return m_controlField < a_other.m_controlField;
    }
    if (m_sequenceId != a_other.m_sequenceId)
    {
        return m_sequenceId < a_other.m_sequenceId;
    }
    return std::memcmp(m_source, a_other.m_source, sizeof(m_source)) < 0;
}

tSimNetwork::tSimNetwork(u64 a_lossSeed) : m_random(a_lossSeed) {}

tSimNetwork::~tSimNetwork()
{
    for (const std::unique_ptr<tEndpoint>& pEndpoint : m_endpoints)
    {
        m_clock.forget(*pEndpoint->m_pArrival);
    }
}

u32 tSimNetwork::addEndpoint(i64 a_clockOffsetNs)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const u32 id = static_cast<u32>(m_endpoints.size());
    std::unique_ptr<tEndpoint> pEndpoint(new tEndpoint);
    pEndpoint->m_offsetNs = a_clockOffsetNs;
    pEndpoint->m_pMessaging.reset(new tSimMessaging(*this, id));
    pEndpoint->m_pTimestamps.reset(new tSimTimestamps(*this, id));
    pEndpoint->m_pTimekeeper.reset(new tSimTimekeeper(*this, id));
    tStatus eventStatus;
    pEndpoint->m_pArrival.reset(new tEvent(true, false, nullptr, eventStatus));
    for (u32 other = 0; other < id; ++other)
    {
        m_links[std::make_pair(other, id)] = tLink{0, 0.0};
        m_links[std::make_pair(id, other)] = tLink{0, 0.0};
    }
    m_endpoints.push_back(std::move(pEndpoint));
    return id;
}

tSimNetwork::tEndpoint& tSimNetwork::endpoint(u32 a_id)
{
    return *m_endpoints.at(a_id);
}

nOrvPTP000::iPTPPortMessaging* tSimNetwork::getMessaging(u32 a_id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return endpoint(a_id).m_pMessaging.get();
}

nOrvPTP000::iPTPTimestampGenerator* tSimNetwork::getTimestamps(u32 a_id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return endpoint(a_id).m_pTimestamps.get();
}

tSimTimekeeper* tSimNetwork::getTimekeeper(u32 a_id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return endpoint(a_id).m_pTimekeeper.get();
}

i64 tSimNetwork::now()
{
    return static_cast<i64>(m_clock.now());
}

tTimestamp tSimNetwork::clockAtLocked(const tEndpoint& a_endpoint, i64 a_t) const
{
    return toTimestamp(kEpochNs + a_endpoint.m_offsetNs + a_t);
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

void tSimNetwork::setConnected(u32 a_id, bool a_connected)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    endpoint(a_id).m_connected = a_connected;
}

void tSimNetwork::setInFlightHook(tInFlightHook a_hook)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_hook = std::move(a_hook);
}

void tSimNetwork::failNextClose(u32 a_id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    endpoint(a_id).m_failClose = true;
}

void tSimNetwork::failNextReceive(u32 a_id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    tEndpoint& e = endpoint(a_id);
    e.m_failReceive = true;
    wakeLocked(e);
}

void tSimNetwork::setOpenFailing(u32 a_id, bool a_failing)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    endpoint(a_id).m_failOpen = a_failing;
}

void tSimNetwork::setTimeLost(u32 a_id, bool a_lost)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    endpoint(a_id).m_timeLost = a_lost;
}

void tSimNetwork::loseTimestamps(u32 a_id, bool a_receive, u32 a_count)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    endpoint(a_id).m_lostTimestamps[a_receive ? 1 : 0] = a_count;
}

void tSimNetwork::setPortStateHeld(u32 a_id, bool a_held)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    endpoint(a_id).m_held = a_held;
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

bool tSimNetwork::isOpen(u32 a_id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return endpoint(a_id).m_open;
}

u32 tSimNetwork::getOpenCount(u32 a_id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return endpoint(a_id).m_openCount;
}

bool tSimNetwork::isReceiving(u32 a_id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return endpoint(a_id).m_receiving;
}

std::vector<tSentDatagram> tSimNetwork::getSent(u32 a_id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return endpoint(a_id).m_sentLog;
}

std::vector<tSample> tSimNetwork::getSamples(u32 a_id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return endpoint(a_id).m_samples;
}

bool tSimNetwork::waitUntil(const std::function<bool()>& a_condition, tBound a_bound)
{
    return m_clock.runUntil(a_condition,
                            static_cast<u64>(std::chrono::nanoseconds(a_bound).count()));
}

// A receive looks at the endpoint before it waits, so a change while none is
// under way needs no wake; and a receive thread that has ended leaves no
// signal behind that the clock would count as work.
void tSimNetwork::wakeLocked(tEndpoint& a_rEndpoint)
{
    if (a_rEndpoint.m_receiving)
    {
        m_clock.signal(*a_rEndpoint.m_pArrival);
    }
}

bool tSimNetwork::makeKey(const u8* a_pData, u32 a_length, tKey& a_rKey)
{
    if (a_pData == nullptr || a_length < kHeaderLength)
    {
        return false;
    }
    a_rKey.m_messageType = static_cast<u8>(a_pData[0] & 0x0F);
    a_rKey.m_controlField = a_pData[kControlFieldOffset];
    a_rKey.m_sequenceId =
        static_cast<u16>((a_pData[kSequenceIdOffset] << 8) | a_pData[kSequenceIdOffset + 1]);
    std::memcpy(a_rKey.m_source, a_pData + kSourcePortIdentityOffset, sizeof(a_rKey.m_source));
    return true;
}

bool tSimNetwork::takeRecord(std::deque<tRecord>& a_rRecords, const tProtocolDataUnit& a_rPdu,
                             tTimestamp& a_rTime)
{
    tKey key;
    if (!makeKey(a_rPdu.getData(), a_rPdu.getLength(), key))
    {
        return false;
    }
    for (std::deque<tRecord>::iterator it = a_rRecords.begin(); it != a_rRecords.end(); ++it)
    {
        if (!(it->m_key < key) && !(key < it->m_key))
        {
            a_rTime = it->m_time;
            a_rRecords.erase(it);
            return true;
        }
    }
    return false;
}

void tSimNetwork::keepRecord(std::deque<tRecord>& a_rRecords, const tKey& a_key,
                             const tTimestamp& a_time)
{
    if (a_rRecords.size() >= kMaxRecords)
    {
        a_rRecords.pop_front();
    }
    a_rRecords.push_back(tRecord{a_key, a_time});
}

void tSimNetwork::open(u32 a_id, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    tEndpoint& e = endpoint(a_id);
    if (e.m_failOpen)
    {
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return;
    }
    e.m_open = true;
    e.m_cancelled = false;
    e.m_queue.clear();
    ++e.m_openCount;
}

void tSimNetwork::close(u32 a_id, tStatus& a_status)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    tEndpoint& e = endpoint(a_id);
    if (e.m_failClose)
    {
        e.m_failClose = false;
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
    }
    e.m_open = false;
    e.m_queue.clear();
    wakeLocked(e);
}

void tSimNetwork::send(u32 a_id, tProtocolDataUnit& a_rPdu, bool a_event, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    tEndpoint& source = endpoint(a_id);
    if (!source.m_open)
    {
        // As a send on a closed socket fails.
        ORVTARN_SET_CODE(a_status, kStatusInternalError);
        return;
    }
    // The one instant of this sending: every copy and the transmit time derive from it.
    const i64 sent = now();
    std::vector<u8> bytes(a_rPdu.getData(), a_rPdu.getData() + a_rPdu.getLength());
    const u8 type = messageTypeOf(bytes);
    ++source.m_sent[type & 0x0F];
    source.m_sentLog.push_back(tSentDatagram{a_event, bytes});
    tKey key;
    if (a_event && makeKey(bytes.data(), static_cast<u32>(bytes.size()), key))
    {
        keepRecord(source.m_transmitRecords, key, clockAtLocked(source, sent));
    }
    if (source.m_connected)
    {
        for (u32 to = 0; to < m_endpoints.size(); ++to)
        {
            tEndpoint& target = endpoint(to);
            if (to == a_id || !target.m_open || !target.m_connected)
            {
                continue;
            }
            const tLink& link = m_links.at(std::make_pair(a_id, to));
            if (link.m_loss > 0.0 &&
                static_cast<double>(m_random() >> 11) * (1.0 / 9007199254740992.0) < link.m_loss)
            {
                continue;
            }
            tInFlight copy = {a_id, a_event, bytes, 0, false};
            if (m_hook)
            {
                m_hook(copy);
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
            wakeLocked(target);
        }
    }
}

void tSimNetwork::receive(u32 a_id, tProtocolDataUnit& a_rPdu, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    a_rPdu.clear();
    for (;;)
    {
        u64 deadline = tManualClock::kNever;
        tEvent* pArrival = nullptr;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            tEndpoint& e = endpoint(a_id);
            e.m_receiving = !tryReceiveLocked(e, a_rPdu, deadline, a_status);
            if (!e.m_receiving)
            {
                // A wake that came after the one taken is spent with the
                // receive: the thread may end, and leave no signal behind.
                tStatus resetStatus;
                m_clock.reset(*e.m_pArrival, resetStatus);
                return;
            }
            e.m_receiving = true;
            pArrival = e.m_pArrival.get();
        }
        // A change after the look above has signalled the event already.
        tStatus waitStatus;
        m_clock.waitUntil(*pArrival, deadline, waitStatus);
    }
}

bool tSimNetwork::tryReceiveLocked(tEndpoint& a_rEndpoint, tProtocolDataUnit& a_rPdu,
                                   u64& a_rDeadline, tStatus& a_status)
{
    if (a_rEndpoint.m_cancelled)
    {
        a_rEndpoint.m_cancelled = false;
        ORVTARN_SET_CODE(a_status, kStatusCancelled);
        return true;
    }
    if (a_rEndpoint.m_failReceive)
    {
        a_rEndpoint.m_failReceive = false;
        ORVTARN_SET_CODE(a_status, kStatusSystemError);
        return true;
    }
    if (a_rEndpoint.m_queue.empty())
    {
        return false;
    }
    const i64 due = a_rEndpoint.m_queue.front().m_due;
    if (now() < due)
    {
        a_rDeadline = static_cast<u64>(due);
        return false;
    }
    tDatagram datagram = std::move(a_rEndpoint.m_queue.front());
    a_rEndpoint.m_queue.pop_front();
    a_rPdu.writeOctets(datagram.m_bytes.data(), static_cast<u32>(datagram.m_bytes.size()),
                       a_status);
    tKey key;
    if (a_status.isNotFatal() && datagram.m_event &&
        makeKey(datagram.m_bytes.data(), static_cast<u32>(datagram.m_bytes.size()), key))
    {
        // The receiver's clock at the arrival instant, not at the moment this
        // thread got round to it.
        keepRecord(a_rEndpoint.m_receiveRecords, key, clockAtLocked(a_rEndpoint, due));
    }
    ++a_rEndpoint.m_delivered[messageTypeOf(datagram.m_bytes) & 0x0F];
    return true;
}

void tSimNetwork::cancelReceive(u32 a_id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    tEndpoint& e = endpoint(a_id);
    e.m_cancelled = true;
    wakeLocked(e);
}

bool tSimNetwork::fetchTimestamp(u32 a_id, bool a_receive, tProtocolDataUnit& a_rPdu,
                                 tTimestamp& a_rTime)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    tEndpoint& e = endpoint(a_id);
    u32& lost = e.m_lostTimestamps[a_receive ? 1 : 0];
    if (lost > 0)
    {
        --lost;
        return false;
    }
    return takeRecord(a_receive ? e.m_receiveRecords : e.m_transmitRecords, a_rPdu, a_rTime);
}

bool tSimNetwork::readClock(u32 a_id, tTimestamp& a_rTime)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const tEndpoint& e = endpoint(a_id);
    a_rTime = clockAtLocked(e, now());
    return !e.m_timeLost;
}

void tSimNetwork::step(u32 a_id, const tTimestamp& a_time)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    tEndpoint& e = endpoint(a_id);
    const i64 t = now();
    e.m_offsetNs = toNanoseconds(a_time) - (kEpochNs + t);
}

void tSimNetwork::keepSample(u32 a_id, const tSample& a_sample)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    endpoint(a_id).m_samples.push_back(a_sample);
}

bool tSimNetwork::held(u32 a_id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return endpoint(a_id).m_held;
}

} // namespace nSimNet
