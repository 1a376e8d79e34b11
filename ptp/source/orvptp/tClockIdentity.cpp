#include "orvptp/tClockIdentity.h"

#include "orvtarn/protons/status/tTrace.h"

#include <cstring>

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{
namespace
{

const u8 kAllOnes[tClockIdentity::kLength] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

} // namespace

const tClockIdentity kAllOnesClockIdentity(kAllOnes);

tClockIdentity::tClockIdentity()
{
    std::memset(m_id, 0, sizeof(m_id));
}

tClockIdentity::tClockIdentity(const u8* a_pBytes)
{
    std::memcpy(m_id, a_pBytes, sizeof(m_id));
}

bool tClockIdentity::operator==(const tClockIdentity& a_other) const
{
    return std::memcmp(m_id, a_other.m_id, sizeof(m_id)) == 0;
}

bool tClockIdentity::operator<(const tClockIdentity& a_other) const
{
    // memcmp compares as unsigned char, which is the big-endian number order.
    return std::memcmp(m_id, a_other.m_id, sizeof(m_id)) < 0;
}

tTrace& tClockIdentity::trace(tTrace& a_trace)
{
    for (u32 i = 0; i < kLength; ++i)
    {
        a_trace.writeFormatted("%.2x", static_cast<unsigned>(m_id[i]));
    }
    return a_trace;
}

void tClockIdentity::serialize(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeOctets(m_id, kLength, a_status);
}

void tClockIdentity::deserialize(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    u8 received[kLength];
    a_target.readOctets(received, kLength, a_status);
    if (a_status.isNotFatal())
    {
        std::memcpy(m_id, received, kLength);
    }
}

} // namespace nOrvPTP000
