#include "orvptp/tPortIdentity.h"

#include "orvptp/tSetUnlessFatal.h"
#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tPortIdentity::tPortIdentity() : m_portNumber(0) {}

tPortIdentity::tPortIdentity(const tClockIdentity& a_clockIdentity, u16 a_portNumber)
    : m_clockIdentity(a_clockIdentity), m_portNumber(a_portNumber)
{
}

tPortIdentity allPortsIdentity()
{
    // Built from octets rather than from kAllOnesClockIdentity, so that it is
    // safe during static initialisation as well.
    const u8 allOnes[tClockIdentity::kLength] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    return tPortIdentity(tClockIdentity(allOnes), tPortIdentity::kAllPorts);
}

void tPortIdentity::setClockIdentity(const tClockIdentity& a_clockIdentity, tStatus& a_status)
{
    setUnlessFatal(m_clockIdentity, a_clockIdentity, a_status);
}

void tPortIdentity::setPortNumber(u16 a_portNumber, tStatus& a_status)
{
    setUnlessFatal(m_portNumber, a_portNumber, a_status);
}

bool tPortIdentity::operator==(const tPortIdentity& a_other) const
{
    return m_clockIdentity == a_other.m_clockIdentity && m_portNumber == a_other.m_portNumber;
}

bool tPortIdentity::operator<(const tPortIdentity& a_other) const
{
    if (m_clockIdentity != a_other.m_clockIdentity)
    {
        return m_clockIdentity < a_other.m_clockIdentity;
    }
    return m_portNumber < a_other.m_portNumber;
}

tTrace& tPortIdentity::trace(tTrace& a_trace)
{
    a_trace.write("clockIdentity: ").write(m_clockIdentity);
    return a_trace.writeFormatted(" portNumber: %u\n", static_cast<unsigned>(m_portNumber));
}

void tPortIdentity::serialize(iSerializableTarget& a_target, tStatus& a_status)
{
    m_clockIdentity.serialize(a_target, a_status);
    a_target.writeUInteger16(m_portNumber, a_status);
}

void tPortIdentity::deserialize(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    tClockIdentity clockIdentity;
    u16 portNumber = 0;
    clockIdentity.deserialize(a_target, a_status);
    a_target.readUInteger16(portNumber, a_status);
    if (a_status.isNotFatal())
    {
        m_clockIdentity = clockIdentity;
        m_portNumber = portNumber;
    }
}

} // namespace nOrvPTP000
