#include "orvptp/tClockDescriptionDS.h"

#include "orvptp/tOrganizationIdentifiers.h"
#include "orvptp/tSetUnlessFatal.h"
#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tAssertion.h"

#include <cstdio>
#include <cstring>

using nOrvTarn000::tStatus;

namespace nOrvPTP000
{
namespace
{

// The default delay request-response profile of IEEE 1588-2008, the only one
// this clock follows.
const u8 kDefaultProfileIdentity[tClockDescriptionDS::kProfileIdentityLength] = {0x00, 0x1B, 0x19,
                                                                                 0x00, 0x01, 0x00};

const char* orEmpty(const char* a_pText)
{
    return a_pText != nullptr ? a_pText : "";
}

} // namespace

tClockDescriptionDS::tPortEntry::tPortEntry() : m_physicalAddressLength(0)
{
    std::memset(m_physicalAddress, 0, sizeof(m_physicalAddress));
    std::memcpy(m_profileIdentity, kDefaultProfileIdentity, sizeof(m_profileIdentity));
}

tClockDescriptionDS::tClockDescriptionDS(u16 a_numberPorts, tStatus& a_status)
    : m_ordinaryClock(true), m_boundaryClock(false), m_peerToPeerTransparentClock(false),
      m_endToEndTransparentClock(false), m_managementNode(false), m_numberPorts(a_numberPorts)
{
    if (a_numberPorts != 0)
    {
        m_pPorts = nOrvTarn000::makeOwnedArray<tPortEntry>(a_status, a_numberPorts);
    }
    m_manufacturerIdentity[0] = static_cast<u8>(kOrvOrganizationId >> 16);
    m_manufacturerIdentity[1] = static_cast<u8>(kOrvOrganizationId >> 8);
    m_manufacturerIdentity[2] = static_cast<u8>(kOrvOrganizationId);
}

void tClockDescriptionDS::setOrdinaryClock(bool a_value, tStatus& a_status)
{
    setUnlessFatal(m_ordinaryClock, a_value, a_status);
}

void tClockDescriptionDS::setBoundaryClock(bool a_value, tStatus& a_status)
{
    setUnlessFatal(m_boundaryClock, a_value, a_status);
}

void tClockDescriptionDS::setPeerToPeerTransparentClock(bool a_value, tStatus& a_status)
{
    setUnlessFatal(m_peerToPeerTransparentClock, a_value, a_status);
}

void tClockDescriptionDS::setEndToEndTransparentClock(bool a_value, tStatus& a_status)
{
    setUnlessFatal(m_endToEndTransparentClock, a_value, a_status);
}

void tClockDescriptionDS::setManagementNode(bool a_value, tStatus& a_status)
{
    setUnlessFatal(m_managementNode, a_value, a_status);
}

void tClockDescriptionDS::getManufacturerIdentity(u8* a_pBytes, tStatus& a_status) const
{
    if (a_status.isNotFatal() &&
        REQUIRE(a_pBytes != nullptr, nOrvTarn000::kStatusInvalidArgument, a_status))
    {
        std::memcpy(a_pBytes, m_manufacturerIdentity, sizeof(m_manufacturerIdentity));
    }
}

void tClockDescriptionDS::setManufacturerIdentity(const u8* a_pBytes, tStatus& a_status)
{
    if (a_status.isNotFatal() &&
        REQUIRE(a_pBytes != nullptr, nOrvTarn000::kStatusInvalidArgument, a_status))
    {
        std::memcpy(m_manufacturerIdentity, a_pBytes, sizeof(m_manufacturerIdentity));
    }
}

void tClockDescriptionDS::setProductDescription(const tPTPText& a_text, tStatus& a_status)
{
    m_productDescription.assign(a_text, a_status);
}

void tClockDescriptionDS::setRevisionData(const tPTPText& a_text, tStatus& a_status)
{
    m_revisionData.assign(a_text, a_status);
}

void tClockDescriptionDS::setUserDescription(const tPTPText& a_text, tStatus& a_status)
{
    m_userDescription.assign(a_text, a_status);
}

void tClockDescriptionDS::setProductDescription(const char* a_pManufacturerName,
                                                const char* a_pModelNumber,
                                                const char* a_pInstanceIdentifier,
                                                tStatus& a_status)
{
    char formatted[tProductDescription::kStoreSize];
    const int length =
        std::snprintf(formatted, sizeof(formatted), "%s;%s;%s", orEmpty(a_pManufacturerName),
                      orEmpty(a_pModelNumber), orEmpty(a_pInstanceIdentifier));
    m_productDescription.assignFormatted(formatted, length, a_status);
}

void tClockDescriptionDS::setRevisionData(const char* a_pHardwareRevision,
                                          const char* a_pFirmwareRevision,
                                          const char* a_pSoftwareRevision, tStatus& a_status)
{
    char formatted[tRevisionData::kStoreSize];
    const int length =
        std::snprintf(formatted, sizeof(formatted), "%s;%s;%s", orEmpty(a_pHardwareRevision),
                      orEmpty(a_pFirmwareRevision), orEmpty(a_pSoftwareRevision));
    m_revisionData.assignFormatted(formatted, length, a_status);
}

void tClockDescriptionDS::setUserDescription(const char* a_pName, const char* a_pLocation,
                                             tStatus& a_status)
{
    char formatted[tUserDescription::kStoreSize];
    const int length = std::snprintf(formatted, sizeof(formatted), "%s%s%s", orEmpty(a_pName),
                                     a_pLocation != nullptr ? ";" : "", orEmpty(a_pLocation));
    m_userDescription.assignFormatted(formatted, length, a_status);
}

const tClockDescriptionDS::tPortEntry* tClockDescriptionDS::findPort(u16 a_portNumber,
                                                                     tStatus* a_pStatus) const
{
    if (m_pPorts != nullptr && a_portNumber >= 1 && a_portNumber <= m_numberPorts)
    {
        return &m_pPorts[a_portNumber - 1];
    }
    if (a_pStatus != nullptr)
    {
        ORVTARN_SET_CODE(*a_pStatus, nOrvTarn000::kStatusInvalidArgument);
    }
    return nullptr;
}

tClockDescriptionDS::tPortEntry* tClockDescriptionDS::portToChange(u16 a_portNumber,
                                                                   tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return nullptr;
    }
    return const_cast<tPortEntry*>(findPort(a_portNumber, &a_status));
}

tPTPText tClockDescriptionDS::getPhysicalLayerProtocol(u16 a_portNumber) const
{
    const tPortEntry* pPort = findPort(a_portNumber, nullptr);
    return pPort != nullptr ? pPort->m_physicalLayerProtocol : tPTPText();
}

void tClockDescriptionDS::setPhysicalLayerProtocol(u16 a_portNumber, const tPTPText& a_text,
                                                   tStatus& a_status)
{
    tPortEntry* pPort = portToChange(a_portNumber, a_status);
    if (pPort == nullptr)
    {
        return;
    }
    if (a_text.getLength() > kPhysicalLayerProtocolLimit)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusOutOfBounds);
        return;
    }
    pPort->m_physicalLayerProtocol.assign(a_text, a_status);
}

u16 tClockDescriptionDS::getPhysicalAddressLength(u16 a_portNumber) const
{
    const tPortEntry* pPort = findPort(a_portNumber, nullptr);
    return pPort != nullptr ? pPort->m_physicalAddressLength : 0;
}

u16 tClockDescriptionDS::getPhysicalAddress(u16 a_portNumber, u8* a_pBytes, tStatus& a_status) const
{
    if (a_status.isFatal())
    {
        return 0;
    }
    const tPortEntry* pPort = findPort(a_portNumber, &a_status);
    if (pPort == nullptr || pPort->m_physicalAddressLength == 0 ||
        !REQUIRE(a_pBytes != nullptr, nOrvTarn000::kStatusInvalidArgument, a_status))
    {
        return 0;
    }
    std::memcpy(a_pBytes, pPort->m_physicalAddress, pPort->m_physicalAddressLength);
    return pPort->m_physicalAddressLength;
}

void tClockDescriptionDS::setPhysicalAddress(u16 a_portNumber, const u8* a_pBytes, u16 a_length,
                                             tStatus& a_status)
{
    tPortEntry* pPort = portToChange(a_portNumber, a_status);
    if (pPort == nullptr)
    {
        return;
    }
    if (a_pBytes == nullptr)
    {
        a_length = 0;
    }
    if (a_length > kMaxPhysicalAddressLength)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusOutOfBounds);
        return;
    }
    if (a_length != 0)
    {
        std::memcpy(pPort->m_physicalAddress, a_pBytes, a_length);
    }
    pPort->m_physicalAddressLength = a_length;
}

tPortAddress tClockDescriptionDS::getProtocolAddress(u16 a_portNumber) const
{
    const tPortEntry* pPort = findPort(a_portNumber, nullptr);
    return pPort != nullptr ? pPort->m_protocolAddress : tPortAddress();
}

void tClockDescriptionDS::setProtocolAddress(u16 a_portNumber, const tPortAddress& a_address,
                                             tStatus& a_status)
{
    tPortEntry* pPort = portToChange(a_portNumber, a_status);
    if (pPort != nullptr)
    {
        pPort->m_protocolAddress = a_address;
    }
}

void tClockDescriptionDS::getProfileIdentity(u16 a_portNumber, u8* a_pBytes,
                                             tStatus& a_status) const
{
    if (a_status.isFatal())
    {
        return;
    }
    const tPortEntry* pPort = findPort(a_portNumber, &a_status);
    if (pPort != nullptr &&
        REQUIRE(a_pBytes != nullptr, nOrvTarn000::kStatusInvalidArgument, a_status))
    {
        std::memcpy(a_pBytes, pPort->m_profileIdentity, sizeof(pPort->m_profileIdentity));
    }
}

void tClockDescriptionDS::setProfileIdentity(u16 a_portNumber, const u8* a_pBytes,
                                             tStatus& a_status)
{
    tPortEntry* pPort = portToChange(a_portNumber, a_status);
    if (pPort != nullptr &&
        REQUIRE(a_pBytes != nullptr, nOrvTarn000::kStatusInvalidArgument, a_status))
    {
        std::memcpy(pPort->m_profileIdentity, a_pBytes, sizeof(pPort->m_profileIdentity));
    }
}

} // namespace nOrvPTP000
