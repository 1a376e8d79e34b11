#pragma once
#include "orvptp/tPTPMessage.h"

namespace nOrvPTP000
{

class iPTPNode;
class tManagementMessagePayload;
class tManagementReply;

// Management: a request to read, change or do something, which the message
// answers itself. Body, behind the header:
//   targetPortIdentity (10), startingBoundaryHops (1), boundaryHops (1),
//   reserved nibble and actionField (1), reserved (1).
// The first TLV of the suffix is the payload that the action works on. This
// clock only answers: a management message is only ever parsed, and the
// response is the request itself, turned around.
class tManagementMessage : public tPTPMessage
{
public:
    enum : u16
    {
        kBodyLength = tPortIdentity::kLength + 4
    };

    // An actionField above ACKNOWLEDGE is refused with kStatusNotSupported.
    tManagementMessage(std::unique_ptr<tMessageHeader> a_pHeader, iSerializableTarget& a_target,
                       nOrvTarn000::tStatus& a_status);
    tManagementMessage(const tManagementMessage&) = delete;
    tManagementMessage& operator=(const tManagementMessage&) = delete;

    // A deep copy: its own header and clones of the TLVs; null when the
    // status is or becomes fatal.
    [[nodiscard]] std::unique_ptr<tManagementMessage> clone(nOrvTarn000::tStatus& a_status) const;

    const tPortIdentity& getTargetPortIdentity() const { return m_targetPortIdentity; }
    void setTargetPortIdentity(const tPortIdentity& a_identity, nOrvTarn000::tStatus& a_status);
    u8 getStartingBoundaryHops() const { return m_startingBoundaryHops; }
    u8 getBoundaryHops() const { return m_boundaryHops; }
    u8 getActionField() const { return m_actionField; }

    // Lets the payload act on a_node for the port of the target and turns
    // this message into the response: RESPONSE for GET and SET, ACKNOWLEDGE
    // for COMMAND, addressed back to the requester, with the payload brought
    // up to date or replaced by an error status. A request without a
    // management TLV in front is answered with no TLV at all. Returns this
    // when the response is to go out; null for a RESPONSE or ACKNOWLEDGE
    // received, for an answer that could not be made, and (with
    // kStatusInvalidState) for a message without suffix or a fatal status on
    // entry.
    tManagementMessage* processRequest(iPTPNode& a_node, nOrvTarn000::tStatus& a_status);

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    u16 getSize() override { return sizeWithBody(kBodyLength); }
    void deserializeBody(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeBody(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    // The copy of a_original, with a_pHeader a copy of its header.
    tManagementMessage(const tManagementMessage& a_original,
                       std::unique_ptr<tMessageHeader> a_pHeader, nOrvTarn000::tStatus& a_status);

    // The payload's answer to a_action: its handler, or the refusal for an
    // action that it does not offer.
    static tManagementReply answer(tManagementMessagePayload& a_payload, u8 a_action,
                                   iPTPNode& a_node, u16 a_portNumber,
                                   nOrvTarn000::tStatus& a_status);
    // Swaps target and source and counts the hops back.
    void turnAround(nOrvTarn000::tStatus& a_status);

    tPortIdentity m_targetPortIdentity;
    u8 m_startingBoundaryHops;
    u8 m_boundaryHops;
    u8 m_actionField;
};

} // namespace nOrvPTP000
