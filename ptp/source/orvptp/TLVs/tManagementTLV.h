#pragma once
#include "orvptp/TLVs/tManagementFields.h"
#include "orvptp/TLVs/tManagementMessagePayload.h"

namespace nOrvPTP000
{

// The actions that a managementId offers, as tManagementIds.def lists them.
enum : u8
{
    kOfferGet = 1,
    kOfferSet = 2,
    kOfferCommand = 4
};

// The data length of a managementId whose data field varies.
enum : u16
{
    kVariableLength = 0xFFFF
};

// The managementIds of tManagementIds.def by their names.
namespace nManagementId
{
enum : u16
{
#define ORVPTP_MANAGEMENT_TLV(id, NAME, ...) NAME = id,
#include "orvptp/TLVs/tManagementIds.def"
};
} // namespace nManagementId

// What tManagementIds.def says of one managementId.
struct tManagementIdInfo
{
    u16 m_managementId;
    const char* m_pName;
    u8 m_offers;
    // Octets of the data field, or kVariableLength.
    u16 m_dataLength;
};

// The entry of a managementId, or null for one that this clock does not know.
const tManagementIdInfo* findManagementId(u16 a_managementId);
// The managementIds in the order of their ids, and their count.
const tManagementIdInfo* managementIds(u32& a_rCount);

// MANAGEMENT: one class per managementId derives from this. Its value:
//   managementId (2), then the data field of the class.
// A class reads its whole data field whatever the lengthField says, and a
// fixed-size class keeps the lengthField it was received with.
class tManagementTLV : public tManagementMessagePayload
{
public:
    // A fixed-size class starts with the lengthField of its data field.
    explicit tManagementTLV(u16 a_managementId);

    u16 getManagementId() const override { return m_managementId; }
    void setManagementId(u16 a_managementId, nOrvTarn000::tStatus& a_status) override;
    // The actions of the managementId's entry.
    bool offers(u8 a_action) const override;

    // a_valueLength is the length of the data field alone.
    u16 setLength(u32 a_valueLength, nOrvTarn000::tStatus& a_status, u32 a_alignment) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void deserializeValue(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeValue(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

    virtual void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) = 0;
    virtual void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) = 0;

protected:
    // The TLV itself, or nothing when the status is fatal.
    static tManagementReply itselfUnlessFatal(const nOrvTarn000::tStatus& a_status);
    // What a GET or SET answers once its node operations ran: the TLV itself,
    // or GENERAL_ERROR with a_failureText when they failed.
    tManagementReply itselfUnlessFailed(const char* a_failureText, nOrvTarn000::tStatus& a_status);

private:
    u16 m_managementId;
};

// GET and SET answer a failure of the node with these.
extern const char kFailureGetting[];
extern const char kFailureSetting[];

} // namespace nOrvPTP000
