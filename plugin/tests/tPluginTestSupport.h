#pragma once
// Shared by the plug-in's tests: a clock that counts its readings, and raw PTP
// datagrams with the fields the network layer and the timestamps look at.
#include "orvptp/iPTPTimekeeper.h"
#include "orvptp/tProtocolDataUnit.h"

#include <atomic>
#include <ctime>
#include <vector>

namespace nZelmarPtpPlugin_1_0
{
namespace nTest
{

// Each reading is kStep nanoseconds after the one before, so the two readings
// around one send are exactly kStep apart.
class tCountingTimekeeper : public nOrvPTP000::iPTPTimekeeper
{
public:
    enum : u32
    {
        kStep = 1000
    };
    static constexpr u64 kStartSeconds = 1700000000;

    void getTime(nOrvPTP000::tTimestamp& a_rTime, nOrvTarn000::tStatus& a_status) override
    {
        if (a_status.isFatal())
        {
            return;
        }
        const u64 reading = m_readings++;
        const u64 nanoseconds = reading * kStep;
        a_rTime = nOrvPTP000::tTimestamp(kStartSeconds + nanoseconds / 1000000000u,
                                         static_cast<u32>(nanoseconds % 1000000000u));
    }
    void stepTime(const nOrvPTP000::tTimestamp&, nOrvTarn000::tStatus&) override {}
    void addSample(const nOrvPTP000::tTimestamp&, const nOrvPTP000::tTimestamp&,
                   nOrvTarn000::tStatus&) override
    {
    }
    bool isPortStateHeld() override { return false; }

    u64 readings() const { return m_readings; }

private:
    std::atomic<u64> m_readings{0};
};

// The system's UTC clock, which the kernel stamps in, moved by an offset.
class tSystemTimekeeper : public tCountingTimekeeper
{
public:
    explicit tSystemTimekeeper(i64 a_offsetNs) : m_offsetNs(a_offsetNs) {}
    void getTime(nOrvPTP000::tTimestamp& a_rTime, nOrvTarn000::tStatus&) override
    {
        timespec now;
        clock_gettime(CLOCK_REALTIME, &now);
        const i64 reading = now.tv_sec * i64(1000000000) + now.tv_nsec + m_offsetNs;
        a_rTime = nOrvPTP000::tTimestamp(reading / 1000000000, reading % 1000000000);
    }

private:
    i64 m_offsetNs;
};

enum : u8
{
    kSync = 0x0,
    kDelayReq = 0x1,
    kFollowUp = 0x8,
    kDelayResp = 0x9,
    kAnnounce = 0xB,
    kManagement = 0xD,
    kLegacySizeFlag = 0x10
};

// The header's bytes with the given first byte, sequenceId at 30 and
// controlField at 32; the rest is a recognisable filler.
inline std::vector<u8> makeMessage(u8 a_firstByte, u16 a_sequenceId, u8 a_control,
                                   u32 a_length = 44)
{
    std::vector<u8> bytes(a_length < 33 ? 33 : a_length);
    for (u32 index = 0; index < bytes.size(); ++index)
    {
        bytes[index] = static_cast<u8>(0xA0 + index % 16);
    }
    bytes[0] = a_firstByte;
    bytes[1] = 2;
    bytes[30] = static_cast<u8>(a_sequenceId >> 8);
    bytes[31] = static_cast<u8>(a_sequenceId);
    bytes[32] = a_control;
    bytes.resize(a_length);
    return bytes;
}

inline void fill(nOrvPTP000::tProtocolDataUnit& a_rPdu, const std::vector<u8>& a_bytes)
{
    nOrvTarn000::tStatus status;
    a_rPdu.clear();
    a_rPdu.writeOctets(a_bytes.data(), static_cast<u32>(a_bytes.size()), status);
}

inline std::vector<u8> bytesOf(const nOrvPTP000::tProtocolDataUnit& a_rPdu)
{
    if (a_rPdu.getData() == nullptr)
    {
        return std::vector<u8>();
    }
    return std::vector<u8>(a_rPdu.getData(), a_rPdu.getData() + a_rPdu.getLength());
}

} // namespace nTest
} // namespace nZelmarPtpPlugin_1_0
