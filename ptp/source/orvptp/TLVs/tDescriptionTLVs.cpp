#include "orvptp/TLVs/tDescriptionTLVs.h"

#include "orvptp/iPropertyChangeObserver.h"
#include "orvtarn/protons/status/tTrace.h"

#include <cstring>

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

namespace
{

// Clock type bits.
enum : u8
{
    kOrdinaryClockBit = 7,
    kBoundaryClockBit = 6,
    kPeerToPeerTransparentClockBit = 5,
    kEndToEndTransparentClockBit = 4,
    kManagementNodeBit = 3
};

// The fixed octets of the clock description: the clock type, the length of
// the physical address, the manufacturer, the profile and two reserved.
const u32 kFixedDescriptionLength = 1 + 1 + 2 + tClockDescriptionDS::kManufacturerIdentityLength +
                                    1 + tClockDescriptionDS::kProfileIdentityLength;

} // namespace

// ---- CLOCK_DESCRIPTION ----

tClockDescriptionTLV::tClockDescriptionTLV()
    : tCloneable(nManagementId::CLOCK_DESCRIPTION), m_clockType(0), m_pad(false)
{
    std::memset(m_manufacturerIdentity, 0, sizeof(m_manufacturerIdentity));
    std::memset(m_profileIdentity, 0, sizeof(m_profileIdentity));
    tStatus status;
    updateLength(status);
}

tClockDescriptionTLV::tClockDescriptionTLV(const tClockDescriptionTLV& a_other, tStatus& a_status)
    : tCloneable(a_other), m_clockType(a_other.m_clockType),
      m_protocolAddress(a_other.m_protocolAddress), m_pad(a_other.m_pad)
{
    m_physicalLayerProtocol.assign(a_other.m_physicalLayerProtocol, a_status);
    m_physicalAddress.assign(a_other.m_physicalAddress, a_status);
    std::memcpy(m_manufacturerIdentity, a_other.m_manufacturerIdentity,
                sizeof(m_manufacturerIdentity));
    m_productDescription.assign(a_other.m_productDescription, a_status);
    m_revisionData.assign(a_other.m_revisionData, a_status);
    m_userDescription.assign(a_other.m_userDescription, a_status);
    std::memcpy(m_profileIdentity, a_other.m_profileIdentity, sizeof(m_profileIdentity));
}

void tClockDescriptionTLV::updateLength(tStatus& a_status)
{
    const u32 length = kFixedDescriptionLength + m_physicalLayerProtocol.getSize() +
                       m_physicalAddress.getLength() + m_protocolAddress.getSize() +
                       m_productDescription.getSize() + m_revisionData.getSize() +
                       m_userDescription.getSize();
    m_pad = setLength(length, a_status, 2) != 0;
}

tManagementReply tClockDescriptionTLV::handleGet(iPTPNode& a_node, u16 a_portNumber,
                                                 tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_clockType = static_cast<u8>(
        flagIf(a_node.getManagementNodeFlag(), kManagementNodeBit) |
        flagIf(a_node.getOrdinaryClockFlag(), kOrdinaryClockBit) |
        flagIf(a_node.getBoundaryClockFlag(), kBoundaryClockBit) |
        flagIf(a_node.getPeerToPeerTransparentClockFlag(), kPeerToPeerTransparentClockBit) |
        flagIf(a_node.getEndToEndTransparentClockFlag(), kEndToEndTransparentClockBit));
    m_physicalLayerProtocol.assign(a_node.getPhysicalLayerProtocol(a_portNumber), a_status);
    u8 address[tClockDescriptionDS::kMaxPhysicalAddressLength] = {};
    u16 addressLength = 0;
    if (a_node.getPhysicalAddressLength(a_portNumber) != 0)
    {
        addressLength = a_node.getPhysicalAddress(a_portNumber, address, a_status);
    }
    m_physicalAddress.assign(address, addressLength, a_status);
    m_protocolAddress = a_node.getProtocolAddress(a_portNumber);
    a_node.getManufacturerIdentity(m_manufacturerIdentity, a_status);
    m_productDescription.assign(a_node.getProductDescription(), a_status);
    m_revisionData.assign(a_node.getRevisionData(), a_status);
    m_userDescription.assign(a_node.getUserDescription(), a_status);
    a_node.getProfileIdentity(a_portNumber, m_profileIdentity, a_status);
    updateLength(a_status);
    return itselfUnlessFailed(kFailureGetting, a_status);
}

void tClockDescriptionTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    u16 addressLength = 0;
    m_clockType = readFlags(a_target, a_status) & 0xF8;
    readReserved(a_target, 1, a_status);
    m_physicalLayerProtocol.deserialize(a_target, a_status);
    a_target.readUInteger16(addressLength, a_status);
    m_physicalAddress.readFrom(a_target, addressLength, a_status);
    m_protocolAddress.deserialize(a_target, a_status);
    a_target.readOctets(m_manufacturerIdentity, sizeof(m_manufacturerIdentity), a_status);
    readReserved(a_target, 1, a_status);
    m_productDescription.deserialize(a_target, a_status);
    m_revisionData.deserialize(a_target, a_status);
    m_userDescription.deserialize(a_target, a_status);
    a_target.readOctets(m_profileIdentity, sizeof(m_profileIdentity), a_status);
    updateLength(a_status);
    readPad(m_pad, a_target, a_status);
}

void tClockDescriptionTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    writeFlags(a_target, m_clockType, a_status);
    writeReserved(a_target, 1, a_status);
    m_physicalLayerProtocol.serialize(a_target, a_status);
    a_target.writeUInteger16(static_cast<u16>(m_physicalAddress.getLength()), a_status);
    m_physicalAddress.writeTo(a_target, a_status);
    m_protocolAddress.serialize(a_target, a_status);
    a_target.writeOctets(m_manufacturerIdentity, sizeof(m_manufacturerIdentity), a_status);
    writeReserved(a_target, 1, a_status);
    m_productDescription.serialize(a_target, a_status);
    m_revisionData.serialize(a_target, a_status);
    m_userDescription.serialize(a_target, a_status);
    a_target.writeOctets(m_profileIdentity, sizeof(m_profileIdentity), a_status);
    writePad(m_pad, a_target, a_status);
}

// ---- USER_DESCRIPTION ----

tUserDescriptionTLV::tUserDescriptionTLV()
    : tCloneable(nManagementId::USER_DESCRIPTION), m_pad(false)
{
    tStatus status;
    m_pad = setLength(m_userDescription.getSize(), status, 2) != 0;
}

tUserDescriptionTLV::tUserDescriptionTLV(const tUserDescriptionTLV& a_other, tStatus& a_status)
    : tCloneable(a_other), m_pad(a_other.m_pad)
{
    m_userDescription.assign(a_other.m_userDescription, a_status);
}

tManagementReply tUserDescriptionTLV::handleGet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    m_userDescription.assign(a_node.getUserDescription(), a_status);
    m_pad = setLength(m_userDescription.getSize(), a_status, 2) != 0;
    return itselfUnlessFailed(kFailureGetting, a_status);
}

tManagementReply tUserDescriptionTLV::handleSet(iPTPNode& a_node, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    a_node.setUserDescription(m_userDescription, a_status,
                              iPropertyChangeObserver::kContextManagement);
    return itselfUnlessFailed(kFailureSetting, a_status);
}

tTrace& tUserDescriptionTLV::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    return a_trace.write("user description: ").write(m_userDescription).write("\n");
}

void tUserDescriptionTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    m_userDescription.deserialize(a_target, a_status);
    m_pad = setLength(m_userDescription.getSize(), a_status, 2) != 0;
    readPad(m_pad, a_target, a_status);
}

void tUserDescriptionTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    m_userDescription.serialize(a_target, a_status);
    writePad(m_pad, a_target, a_status);
}

} // namespace nOrvPTP000
