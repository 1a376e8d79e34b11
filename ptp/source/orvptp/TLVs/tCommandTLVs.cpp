#include "orvptp/TLVs/tCommandTLVs.h"

#include "orvtarn/protons/status/tTrace.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tManagementReply tNullManagementTLV::handleGet(iPTPNode&, u16, tStatus& a_status)
{
    return itselfUnlessFatal(a_status);
}

tManagementReply tNullManagementTLV::handleSet(iPTPNode&, u16, tStatus& a_status)
{
    return itselfUnlessFatal(a_status);
}

tManagementReply tNullManagementTLV::handleCommand(iPTPNode&, u16, tStatus& a_status)
{
    return itselfUnlessFatal(a_status);
}

tManagementReply tNonVolatileStorageTLV::handleCommand(iPTPNode&, u16, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    return failure(kManagementErrorNotSupported, "Non-volatile storage is currently unsupported",
                   a_status);
}

tManagementReply tPortCommandTLV::handleCommand(iPTPNode& a_node, u16 a_portNumber,
                                                tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    (a_node.*m_operation)(a_portNumber, a_status);
    return itselfUnlessFailed(m_failureText, a_status);
}

tManagementReply tInitializeTLV::handleCommand(iPTPNode& a_node, u16 a_portNumber,
                                               tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return tManagementReply();
    }
    if (m_initializationKey != 0)
    {
        return failure(kManagementErrorWrongValue, "Unknown initialization key value", a_status);
    }
    a_node.handleInitializePort(a_portNumber, a_status);
    return itselfUnlessFailed("Node failed to initialize", a_status);
}

tTrace& tInitializeTLV::trace(tTrace& a_trace)
{
    tManagementTLV::trace(a_trace);
    return a_trace.writeFormatted("initializationKey: %#.4x\n",
                                  static_cast<unsigned>(m_initializationKey));
}

void tInitializeTLV::deserializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.readEnumeration16(m_initializationKey, a_status);
}

void tInitializeTLV::serializeData(iSerializableTarget& a_target, tStatus& a_status)
{
    a_target.writeEnumeration16(m_initializationKey, a_status);
}

} // namespace nOrvPTP000
