#pragma once
#include "orvptp/iPTPNode.h"
#include "orvptp/tTLV.h"
#include "orvtarn/protons/status/tAllocation.h"

#include <memory>
#include <type_traits>

namespace nOrvPTP000
{

// actionField values of a management message.
enum : u8
{
    kActionGet = 0,
    kActionSet = 1,
    kActionResponse = 2,
    kActionCommand = 3,
    kActionAcknowledge = 4
};

// managementErrorId values that this clock sends.
enum : u16
{
    kManagementErrorWrongValue = 4,
    kManagementErrorNotSupported = 6,
    kManagementErrorGeneral = 0xFFFE
};

class tManagementMessagePayload;

// What a management TLV answers a request with: itself, its fields brought up
// to date; a TLV that takes its place (an error status); or nothing, when no
// answer can go out.
class tManagementReply
{
public:
    // Nothing.
    tManagementReply() : m_itself(false) {}
    // a_pReplacement, or nothing when it is null.
    explicit tManagementReply(std::unique_ptr<tManagementMessagePayload> a_pReplacement);
    static tManagementReply itself();

    bool isItself() const { return m_itself; }
    // The replacement, once; null for the TLV itself and for nothing.
    std::unique_ptr<tManagementMessagePayload> takeReplacement();

private:
    bool m_itself;
    std::unique_ptr<tManagementMessagePayload> m_pReplacement;
};

// The TLV of a management message that the clock acts on: a management TLV,
// or an error status. A handler works on the node for one of its ports and
// says what goes back; all three refuse by default with NOT_SUPPORTED and
// "Unsupported actionField". Handlers run on the dispatcher thread and call
// the node directly; whatever they set, they set with the management context.
class tManagementMessagePayload : public tTLV
{
public:
    explicit tManagementMessagePayload(u16 a_tlvType) : tTLV(a_tlvType) {}

    tManagementMessagePayload* asManagementPayload() override { return this; }

    virtual u16 getManagementId() const = 0;
    virtual void setManagementId(u16 a_managementId, nOrvTarn000::tStatus& a_status) = 0;
    [[nodiscard]] virtual tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                                     nOrvTarn000::tStatus& a_status);
    [[nodiscard]] virtual tManagementReply handleSet(iPTPNode& a_node, u16 a_portNumber,
                                                     nOrvTarn000::tStatus& a_status);
    [[nodiscard]] virtual tManagementReply handleCommand(iPTPNode& a_node, u16 a_portNumber,
                                                         nOrvTarn000::tStatus& a_status);
    // Whether the TLV answers a_action (GET, SET or COMMAND) with a handler
    // of its own; every other action gets the refusal.
    virtual bool offers(u8 a_action) const;

    // An error status for this managementId, or nothing when none can be
    // made (kStatusMemoryFull). A fatal status on entry stays as it is: the
    // error reports the failure it holds.
    tManagementReply failure(u16 a_managementErrorId, const char* a_displayData,
                             nOrvTarn000::tStatus& a_status) const;
    // NOT_SUPPORTED, "Unsupported actionField".
    tManagementReply refusal(nOrvTarn000::tStatus& a_status) const;
};

// A TLV of class tSelf, derived from tBase, with the clone of its class: a deep
// copy through the copy constructor, or through one that takes a status when
// tSelf has such (its copies allocate); null when the status is or becomes
// fatal.
template <typename tSelf, typename tBase>
class tCloneable : public tBase
{
public:
    using tBase::tBase;

    std::unique_ptr<tTLV> clone(nOrvTarn000::tStatus& a_status) const override
    {
        const tSelf& self = static_cast<const tSelf&>(*this);
        std::unique_ptr<tSelf> pCopy;
        if constexpr (std::is_constructible<tSelf, const tSelf&, nOrvTarn000::tStatus&>::value)
        {
            pCopy = nOrvTarn000::makeOwned<tSelf>(a_status, self, a_status);
        }
        else
        {
            pCopy = nOrvTarn000::makeOwned<tSelf>(a_status, self);
        }
        if (a_status.isFatal())
        {
            return nullptr;
        }
        return pCopy;
    }
};

} // namespace nOrvPTP000
