#pragma once
#include "orvptp/TLVs/tManagementTLV.h"

// The TLVs without a data field, and INITIALIZE: the commands and
// NULL_MANAGEMENT.

namespace nOrvPTP000
{

// A management TLV without data field: lengthField 2.
class tEmptyManagementTLV : public tManagementTLV
{
public:
    explicit tEmptyManagementTLV(u16 a_managementId) : tManagementTLV(a_managementId) {}

    void deserializeData(iSerializableTarget&, nOrvTarn000::tStatus&) override {}
    void serializeData(iSerializableTarget&, nOrvTarn000::tStatus&) override {}
};

// NULL_MANAGEMENT: every action answers with the TLV itself.
class tNullManagementTLV : public tCloneable<tNullManagementTLV, tEmptyManagementTLV>
{
public:
    tNullManagementTLV() : tCloneable(nManagementId::NULL_MANAGEMENT) {}

    [[nodiscard]] tManagementReply handleGet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    [[nodiscard]] tManagementReply handleSet(iPTPNode& a_node, u16 a_portNumber,
                                             nOrvTarn000::tStatus& a_status) override;
    [[nodiscard]] tManagementReply handleCommand(iPTPNode& a_node, u16 a_portNumber,
                                                 nOrvTarn000::tStatus& a_status) override;
};

// The clock keeps no settings of its own that a command could save or reset:
// they live in the file of the plug-in. Both commands answer NOT_SUPPORTED.
class tNonVolatileStorageTLV : public tEmptyManagementTLV
{
public:
    [[nodiscard]] tManagementReply handleCommand(iPTPNode& a_node, u16 a_portNumber,
                                                 nOrvTarn000::tStatus& a_status) override;

protected:
    explicit tNonVolatileStorageTLV(u16 a_managementId) : tEmptyManagementTLV(a_managementId) {}
};

class tSaveInNonVolatileStorageTLV
    : public tCloneable<tSaveInNonVolatileStorageTLV, tNonVolatileStorageTLV>
{
public:
    tSaveInNonVolatileStorageTLV() : tCloneable(nManagementId::SAVE_IN_NON_VOLATILE_STORAGE) {}
};

class tResetNonVolatileStorageTLV
    : public tCloneable<tResetNonVolatileStorageTLV, tNonVolatileStorageTLV>
{
public:
    tResetNonVolatileStorageTLV() : tCloneable(nManagementId::RESET_NON_VOLATILE_STORAGE) {}
};

// A command to the addressed port: the node's operation, and GENERAL_ERROR
// with the failure text when it fails.
class tPortCommandTLV : public tEmptyManagementTLV
{
public:
    [[nodiscard]] tManagementReply handleCommand(iPTPNode& a_node, u16 a_portNumber,
                                                 nOrvTarn000::tStatus& a_status) override;

protected:
    typedef void (iPTPNode::*tOperation)(u16 a_portNumber, nOrvTarn000::tStatus& a_status);

    tPortCommandTLV(u16 a_managementId, tOperation a_operation, const char* a_failureText)
        : tEmptyManagementTLV(a_managementId), m_operation(a_operation),
          m_failureText(a_failureText)
    {
    }

private:
    tOperation m_operation;
    const char* m_failureText;
};

// ENABLE_PORT: the port is designated enabled.
class tEnablePortTLV : public tCloneable<tEnablePortTLV, tPortCommandTLV>
{
public:
    tEnablePortTLV()
        : tCloneable(nManagementId::ENABLE_PORT, &iPTPNode::handleDesignatedEnabled,
                     "Failure enabling port")
    {
    }
};

// DISABLE_PORT: the port is designated disabled.
class tDisablePortTLV : public tCloneable<tDisablePortTLV, tPortCommandTLV>
{
public:
    tDisablePortTLV()
        : tCloneable(nManagementId::DISABLE_PORT, &iPTPNode::handleDesignatedDisabled,
                     "Failure disabling port")
    {
    }
};

// INITIALIZE: data field initializationKey (16-bit enumeration). Key 0 runs
// the port's initialisation; any other is refused with WRONG_VALUE.
class tInitializeTLV : public tCloneable<tInitializeTLV, tManagementTLV>
{
public:
    tInitializeTLV() : tCloneable(nManagementId::INITIALIZE), m_initializationKey(0) {}

    [[nodiscard]] tManagementReply handleCommand(iPTPNode& a_node, u16 a_portNumber,
                                                 nOrvTarn000::tStatus& a_status) override;
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
    void deserializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;
    void serializeData(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) override;

private:
    u16 m_initializationKey;
};

} // namespace nOrvPTP000
