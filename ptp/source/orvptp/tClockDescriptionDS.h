#pragma once
#include "orvptp/tDescriptionText.h"
#include "orvptp/tPTPText.h"
#include "orvptp/tPortAddress.h"

#include <memory>

namespace nOrvPTP000
{

// What the clock tells about itself beyond the standard's data sets: its
// clock type, its manufacturer, its product, revision and user descriptions,
// and per port the physical layer, addresses and profile. Ports are addressed
// by port number, from 1; a port number outside 1 to numberPorts is refused
// with kStatusInvalidArgument, and a getter without a status then returns the
// value of an untouched port.
//
// The three descriptions can be set as a whole or from their parts, and their
// parts read back singly. A text over its limit is refused with
// kStatusOutOfBounds and the old one stays.
class tClockDescriptionDS
{
public:
    enum : u32
    {
        kProductDescriptionLimit = 64,
        kRevisionDataLimit = 32,
        kUserDescriptionLimit = 128,
        kPhysicalLayerProtocolLimit = 32
    };
    enum : u16
    {
        kManufacturerIdentityLength = 3,
        kProfileIdentityLength = 6,
        kMaxPhysicalAddressLength = 16
    };

private:
    typedef tDescriptionText<kProductDescriptionLimit, 3> tProductDescription;
    typedef tDescriptionText<kRevisionDataLimit, 3> tRevisionData;
    typedef tDescriptionText<kUserDescriptionLimit, 2> tUserDescription;

public:
    // Room that a caller's buffer needs for one part of a description, NUL
    // included.
    enum : u32
    {
        kProductDescriptionPartSize = tProductDescription::kStoreSize,
        kRevisionDataPartSize = tRevisionData::kStoreSize,
        kUserDescriptionPartSize = tUserDescription::kStoreSize
    };

    // An ordinary clock, not a management node, with a_numberPorts ports of
    // the default delay request-response profile and empty descriptions. When
    // the ports cannot be allocated the status holds kStatusMemoryFull and the
    // clock has no port entries.
    tClockDescriptionDS(u16 a_numberPorts, nOrvTarn000::tStatus& a_status);

    tClockDescriptionDS(const tClockDescriptionDS&) = delete;
    tClockDescriptionDS& operator=(const tClockDescriptionDS&) = delete;

    bool getOrdinaryClock() const { return m_ordinaryClock; }
    bool getBoundaryClock() const { return m_boundaryClock; }
    bool getPeerToPeerTransparentClock() const { return m_peerToPeerTransparentClock; }
    bool getEndToEndTransparentClock() const { return m_endToEndTransparentClock; }
    bool getManagementNode() const { return m_managementNode; }
    void setOrdinaryClock(bool a_value, nOrvTarn000::tStatus& a_status);
    void setBoundaryClock(bool a_value, nOrvTarn000::tStatus& a_status);
    void setPeerToPeerTransparentClock(bool a_value, nOrvTarn000::tStatus& a_status);
    void setEndToEndTransparentClock(bool a_value, nOrvTarn000::tStatus& a_status);
    void setManagementNode(bool a_value, nOrvTarn000::tStatus& a_status);

    // Fixed at construction: it sizes the port entries.
    u16 getNumberPorts() const { return m_numberPorts; }

    // kManufacturerIdentityLength octets.
    void getManufacturerIdentity(u8* a_pBytes, nOrvTarn000::tStatus& a_status) const;
    void setManufacturerIdentity(const u8* a_pBytes, nOrvTarn000::tStatus& a_status);

    tPTPText getProductDescription() const { return m_productDescription.getText(); }
    tPTPText getRevisionData() const { return m_revisionData.getText(); }
    tPTPText getUserDescription() const { return m_userDescription.getText(); }
    void setProductDescription(const tPTPText& a_text, nOrvTarn000::tStatus& a_status);
    void setRevisionData(const tPTPText& a_text, nOrvTarn000::tStatus& a_status);
    void setUserDescription(const tPTPText& a_text, nOrvTarn000::tStatus& a_status);

    // From parts, each null part counting as empty: "name;model;instance" and
    // "hardware;firmware;software" always hold both semicolons;
    // "name;location" drops the semicolon when the location is null.
    void setProductDescription(const char* a_pManufacturerName, const char* a_pModelNumber,
                               const char* a_pInstanceIdentifier, nOrvTarn000::tStatus& a_status);
    void setRevisionData(const char* a_pHardwareRevision, const char* a_pFirmwareRevision,
                         const char* a_pSoftwareRevision, nOrvTarn000::tStatus& a_status);
    void setUserDescription(const char* a_pName, const char* a_pLocation,
                            nOrvTarn000::tStatus& a_status);

    // One part as a NUL-terminated string into a buffer of the matching part
    // size; a null buffer takes nothing.
    void getManufacturerName(char* a_pBuffer) const { m_productDescription.copyPart(0, a_pBuffer); }
    void getModelNumber(char* a_pBuffer) const { m_productDescription.copyPart(1, a_pBuffer); }
    void getInstanceIdentifier(char* a_pBuffer) const
    {
        m_productDescription.copyPart(2, a_pBuffer);
    }
    void getHardwareRevision(char* a_pBuffer) const { m_revisionData.copyPart(0, a_pBuffer); }
    void getFirmwareRevision(char* a_pBuffer) const { m_revisionData.copyPart(1, a_pBuffer); }
    void getSoftwareRevision(char* a_pBuffer) const { m_revisionData.copyPart(2, a_pBuffer); }
    void getUserDescriptionName(char* a_pBuffer) const { m_userDescription.copyPart(0, a_pBuffer); }
    void getUserDescriptionLocation(char* a_pBuffer) const
    {
        m_userDescription.copyPart(1, a_pBuffer);
    }

    // Per port. Texts of more than kPhysicalLayerProtocolLimit characters
    // and addresses of more than kMaxPhysicalAddressLength octets are refused
    // with kStatusOutOfBounds. A null a_pBytes sets an empty address.
    tPTPText getPhysicalLayerProtocol(u16 a_portNumber) const;
    void setPhysicalLayerProtocol(u16 a_portNumber, const tPTPText& a_text,
                                  nOrvTarn000::tStatus& a_status);
    u16 getPhysicalAddressLength(u16 a_portNumber) const;
    // Copies the address into a_pBytes, which needs room for
    // kMaxPhysicalAddressLength octets, and returns its length; 0 on failure.
    u16 getPhysicalAddress(u16 a_portNumber, u8* a_pBytes, nOrvTarn000::tStatus& a_status) const;
    void setPhysicalAddress(u16 a_portNumber, const u8* a_pBytes, u16 a_length,
                            nOrvTarn000::tStatus& a_status);
    tPortAddress getProtocolAddress(u16 a_portNumber) const;
    void setProtocolAddress(u16 a_portNumber, const tPortAddress& a_address,
                            nOrvTarn000::tStatus& a_status);
    // kProfileIdentityLength octets.
    void getProfileIdentity(u16 a_portNumber, u8* a_pBytes, nOrvTarn000::tStatus& a_status) const;
    void setProfileIdentity(u16 a_portNumber, const u8* a_pBytes, nOrvTarn000::tStatus& a_status);

private:
    struct tPortEntry
    {
        tPortEntry();

        tPTPText m_physicalLayerProtocol;
        u16 m_physicalAddressLength;
        u8 m_physicalAddress[kMaxPhysicalAddressLength];
        tPortAddress m_protocolAddress;
        u8 m_profileIdentity[kProfileIdentityLength];
    };

    // The entry of a_portNumber, or null when there is none; with a status
    // given, that case is also reported as kStatusInvalidArgument.
    const tPortEntry* findPort(u16 a_portNumber, nOrvTarn000::tStatus* a_pStatus) const;
    // The entry to write, or null when a_status is fatal or the port is unknown.
    tPortEntry* portToChange(u16 a_portNumber, nOrvTarn000::tStatus& a_status);

    bool m_ordinaryClock;
    bool m_boundaryClock;
    bool m_peerToPeerTransparentClock;
    bool m_endToEndTransparentClock;
    bool m_managementNode;
    std::unique_ptr<tPortEntry[]> m_pPorts;
    u16 m_numberPorts;
    u8 m_manufacturerIdentity[kManufacturerIdentityLength];
    tProductDescription m_productDescription;
    tRevisionData m_revisionData;
    tUserDescription m_userDescription;
};

} // namespace nOrvPTP000
