#pragma once
#include "orvptp/TLVs/tManagementMessagePayload.h"
#include "orvptp/tPTPText.h"

namespace nOrvPTP000
{

// MANAGEMENT_ERROR_STATUS: why a request failed. Its value:
//   managementErrorId (2), managementId (2), 4 reserved octets, displayData
//   (a text), and a zero octet when the text's length and its length octet
//   make an odd count.
// The tTLVFactory makes it directly; the pad is written only behind an error
// made here, and never read: what follows a received text belongs to the
// next TLV.
class tManagementErrorStatusTLV
    : public tCloneable<tManagementErrorStatusTLV, tManagementMessagePayload>
{
public:
    // NOT_SUPPORTED for managementId 0, no text.
    tManagementErrorStatusTLV();
    tManagementErrorStatusTLV(u16 a_managementId, u16 a_managementErrorId,
                              const char* a_displayData, nOrvTarn000::tStatus& a_status);
    tManagementErrorStatusTLV(const tManagementErrorStatusTLV& a_other,
                              nOrvTarn000::tStatus& a_status);

    u16 getManagementErrorId() const { return m_managementErrorId; }
    const tPTPText& getDisplayData() const { return m_displayData; }
    u16 getManagementId() const override { return m_managementId; }
    void setManagementId(u16 a_managementId, nOrvTarn000::tStatus& a_status) override;

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void serializeValue(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    // A value cut short by the end of the data keeps what it got, without
    // error.
    void deserializeValue(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    enum : u32
    {
        // managementErrorId, managementId and the reserved octets.
        kFixedValueLength = 8
    };

    u16 m_managementErrorId;
    u16 m_managementId;
    tPTPText m_displayData;
    bool m_pad;
};

} // namespace nOrvPTP000
