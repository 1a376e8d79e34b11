#pragma once
#include "orvptp/TLVs/tManagementTLV.h"
#include "orvptp/tClockDescriptionDS.h"
#include "orvptp/tOctetBlock.h"
#include "orvptp/tPTPText.h"
#include "orvptp/tPortAddress.h"

// The clock's description. Variable data fields, each padded with one zero
// octet to an even length:
//   CLOCK_DESCRIPTION: clockType flags (bit 7 ordinaryClock, 6
//     boundaryClock, 5 peerToPeerTransparentClock, 4
//     endToEndTransparentClock, 3 managementNode), res., physicalLayerProtocol
//     (text), physicalAddressLength (2), physicalAddress, protocolAddress,
//     manufacturerIdentity (3), res., productDescription, revisionData,
//     userDescription (texts), profileIdentity (6)
//   USER_DESCRIPTION: userDescription (text)
// Both recompute their lengthField from what they hold, on reception too.

namespace nOrvPTP000
{

class tClockDescriptionTLV : public tCloneable<tClockDescriptionTLV, tManagementTLV>
{
public:
    tClockDescriptionTLV();
    tClockDescriptionTLV(const tClockDescriptionTLV& a_other, nOrvTarn000::tStatus& a_status);

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    // The lengthField of the present content, and whether it needs the pad.
    void updateLength(nOrvTarn000::tStatus& a_status);

    u8 m_clockType;
    tPTPText m_physicalLayerProtocol;
    // Null when the length is 0.
    tOctetBlock m_physicalAddress;
    tPortAddress m_protocolAddress;
    u8 m_manufacturerIdentity[tClockDescriptionDS::kManufacturerIdentityLength];
    tPTPText m_productDescription;
    tPTPText m_revisionData;
    tPTPText m_userDescription;
    u8 m_profileIdentity[tClockDescriptionDS::kProfileIdentityLength];
    bool m_pad;
};

// A SET takes at most the 128 characters of the clock's user description;
// a longer one answers GENERAL_ERROR.
class tUserDescriptionTLV : public tCloneable<tUserDescriptionTLV, tManagementTLV>
{
public:
    tUserDescriptionTLV();
    tUserDescriptionTLV(const tUserDescriptionTLV& a_other, nOrvTarn000::tStatus& a_status);

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    [[nodiscard]] tManagementReply handleSet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    tPTPText m_userDescription;
    bool m_pad;
};

} // namespace nOrvPTP000
