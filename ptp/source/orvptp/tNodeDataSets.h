#pragma once
#include "orvptp/iPTPNode.h"
#include "orvptp/tClockDescriptionDS.h"
#include "orvptp/tCurrentDS.h"
#include "orvptp/tDefaultDS.h"
#include "orvptp/tParentDS.h"
#include "orvptp/tPortDS.h"
#include "orvptp/tTimePropertiesDS.h"

namespace nOrvPTP000
{

// The data sets of an ordinary clock of one port and the typed accessors of
// iPTPNode over all their fields, made from tNodeProperties.def. What a write
// means beyond its field (telling observers, re-arming timers) belongs to the
// owner, through propertyWritten.
class tNodeDataSets : public iPTPNode
{
public:
    tNodeDataSets(const tClockIdentity& a_clockIdentity, tStatus& a_status);

#define ORVPTP_ACCESSORS_CLOCK(tValue, Name)                                                       \
    tValue get##Name() override;                                                                   \
    void set##Name(tArgument<tValue> a_value, tStatus& a_status, i32 a_context) override;
#define ORVPTP_ACCESSORS_PORT(tValue, Name)                                                        \
    tValue get##Name(u16 a_portNumber, tStatus& a_status) override;                                \
    void set##Name(u16 a_portNumber, tArgument<tValue> a_value, tStatus& a_status, i32 a_context)  \
        override;
#define ORVPTP_PROPERTY(id, Name, tValue, scope, ...) ORVPTP_ACCESSORS_##scope(tValue, Name)
#define ORVPTP_OTHER_PROPERTY(id)
#include "orvptp/tNodeProperties.def"
#undef ORVPTP_ACCESSORS_CLOCK
#undef ORVPTP_ACCESSORS_PORT

    tPTPText getPhysicalLayerProtocol(u16 a_portNumber) override;
    void setPhysicalLayerProtocol(u16 a_portNumber, const tPTPText& a_value, tStatus& a_status,
                                  i32 a_context) override;
    u16 getPhysicalAddress(u16 a_portNumber, u8* a_pBytes, tStatus& a_status) override;
    void setPhysicalAddress(u16 a_portNumber, const u8* a_pBytes, u16 a_length, tStatus& a_status,
                            i32 a_context) override;
    u16 getPhysicalAddressLength(u16 a_portNumber) override;
    tPortAddress getProtocolAddress(u16 a_portNumber) override;
    void setProtocolAddress(u16 a_portNumber, const tPortAddress& a_value, tStatus& a_status,
                            i32 a_context) override;
    void getManufacturerIdentity(u8* a_pBytes, tStatus& a_status) override;
    void setManufacturerIdentity(const u8* a_pBytes, tStatus& a_status, i32 a_context) override;
    tPTPText getProductDescription() override;
    void setProductDescription(const tPTPText& a_value, tStatus& a_status, i32 a_context) override;
    tPTPText getRevisionData() override;
    void setRevisionData(const tPTPText& a_value, tStatus& a_status, i32 a_context) override;
    tPTPText getUserDescription() override;
    void setUserDescription(const tPTPText& a_value, tStatus& a_status, i32 a_context) override;
    void getProfileIdentity(u16 a_portNumber, u8* a_pBytes, tStatus& a_status) override;
    void setProfileIdentity(u16 a_portNumber, const u8* a_pBytes, tStatus& a_status,
                            i32 a_context) override;

    // A description from its parts, each a NUL-terminated string or null
    // (a_pParts[2] unused for the user description); it tells the observers
    // as the whole-text setter does.
    void setDescriptionParts(i32 a_id, const char* const* a_pParts, tStatus& a_status);
    // Copies each part of a description into the caller's buffer of the part
    // size; a null buffer takes nothing.
    void getDescriptionParts(i32 a_id, char* const* a_pBuffers);

protected:
    // Every typed setter ends here, with the status of its write.
    virtual void propertyWritten(i32 a_id, tStatus& a_status, i32 a_context) = 0;
    // 0 or a port beyond numberPorts: kStatusInvalidArgument.
    bool checkPortNumber(u16 a_portNumber, tStatus& a_status);

    tDefaultDS m_defaultDS;
    tCurrentDS m_currentDS;
    tParentDS m_parentDS;
    // The time properties in force, the ones that Announce carries.
    tTimePropertiesDS m_timePropertiesDS;
    // What the local clock would announce as grandmaster.
    tTimePropertiesDS m_localTimePropertiesDS;
    tPortDS m_portDS;
    tClockDescriptionDS m_clockDescriptionDS;

private:
    // A time property goes to what the local clock would announce, and also
    // in force while the local clock is its own grandmaster.
    template <typename tValue>
    void writeTimeProperty(void (tTimePropertiesDS::*a_setter)(tValue, tStatus&),
                           tArgument<typename std::decay<tValue>::type> a_value, tStatus& a_status);
};

} // namespace nOrvPTP000
