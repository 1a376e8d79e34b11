#include "orvptp/tPortAddress.h"

#include "orvtarn/protons/status/tTrace.h"

#include <cstring>

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tPortAddress::tPortAddress() : m_networkProtocol(kNetworkProtocolUnknown), m_addressLength(0)
{
    std::memset(m_addressField, 0, sizeof(m_addressField));
}

tPortAddress::tPortAddress(u16 a_networkProtocol, u16 a_length, const void* a_pBytes,
                           tStatus& a_status)
    : tPortAddress()
{
    m_networkProtocol = a_networkProtocol;
    if (a_pBytes == nullptr || a_status.isFatal())
    {
        return;
    }
    if (a_length > kMaxAddressLength)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusOutOfBounds);
        return;
    }
    std::memcpy(m_addressField, a_pBytes, a_length);
    m_addressLength = a_length;
}

bool tPortAddress::operator==(const tPortAddress& a_other) const
{
    return m_networkProtocol == a_other.m_networkProtocol &&
           m_addressLength == a_other.m_addressLength &&
           std::memcmp(m_addressField, a_other.m_addressField, m_addressLength) == 0;
}

tTrace& tPortAddress::trace(tTrace& a_trace)
{
    a_trace.writeFormatted("networkProtocol: %#.4x ", static_cast<unsigned>(m_networkProtocol));
    a_trace.writeFormatted("addressLength: %u ", static_cast<unsigned>(m_addressLength));
    a_trace.write("addressField: ");
    for (u32 i = 0; i < m_addressLength; ++i)
    {
        a_trace.writeFormatted("%.2x", static_cast<unsigned>(m_addressField[i]));
    }
    return a_trace;
}

void tPortAddress::serialize(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeEnumeration16(m_networkProtocol, a_status);
    a_target.writeUInteger16(m_addressLength, a_status);
    if (m_addressLength != 0)
    {
        a_target.writeOctets(m_addressField, m_addressLength, a_status);
    }
}

void tPortAddress::deserialize(iSerializableTarget& a_target, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    u16 networkProtocol = 0;
    u16 addressLength = 0;
    a_target.readEnumeration16(networkProtocol, a_status);
    a_target.readUInteger16(addressLength, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    if (addressLength > kMaxAddressLength)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusOutOfBounds);
        return;
    }
    u8 addressField[kMaxAddressLength];
    if (addressLength != 0)
    {
        a_target.readOctets(addressField, addressLength, a_status);
    }
    if (a_status.isNotFatal())
    {
        m_networkProtocol = networkProtocol;
        m_addressLength = addressLength;
        std::memcpy(m_addressField, addressField, addressLength);
    }
}

} // namespace nOrvPTP000
