#include "orvptp/tPTPOrdinaryClock.h"

namespace nOrvPTP000
{

using namespace nOrvTarn000;

tPTPOrdinaryClock::tPTPOrdinaryClock(iPTPPortMessaging* a_pMessaging,
                                     iPTPTimestampGenerator* a_pTimestampGenerator,
                                     iPTPTimekeeper* a_pTimekeeper, const u8* a_pClockIdentity,
                                     tStatus& a_status)
    : tPTPOrdinaryClock(a_pMessaging, a_pTimestampGenerator, a_pTimekeeper, a_pClockIdentity,
                        getSystemClock(), a_status)
{
}

tPTPOrdinaryClock::tPTPOrdinaryClock(iPTPPortMessaging* a_pMessaging,
                                     iPTPTimestampGenerator* a_pTimestampGenerator,
                                     iPTPTimekeeper* a_pTimekeeper, const u8* a_pClockIdentity,
                                     iClock& a_rClock, tStatus& a_status)
    : m_node(a_pMessaging, a_pTimestampGenerator, a_pTimekeeper, tClockIdentity(a_pClockIdentity),
             a_rClock, a_status)
{
    initialize(a_status);
}

tPTPOrdinaryClock::~tPTPOrdinaryClock()
{
    tStatus stopStatus;
    m_node.stopClock(stopStatus);
}

// The clock's initial values, written directly: no other thread can reach
// the node yet. They equal what the node starts with, so the order of the
// steps changes nothing that shows.
void tPTPOrdinaryClock::initialize(tStatus& a_status)
{
    tPTPNode& node = m_node;
    node.setClockClass(tClockQuality::kDefaultClockClass, a_status, 0);
    node.setOffsetScaledLogVariance(tClockQuality::kDefaultOffsetScaledLogVariance, a_status, 0);
    node.setPriority1(tDefaultDS::kDefaultPriority, a_status, 0);
    node.setPriority2(tDefaultDS::kDefaultPriority, a_status, 0);
    node.setDomainNumber(0, a_status, 0);
    node.setSlaveOnly(false, a_status, 0);
    node.setGrandmasterClockClass(node.getClockClass(), a_status, 0);
    node.setGrandmasterOffsetScaledLogVariance(node.getOffsetScaledLogVariance(), a_status, 0);
    node.setGrandmasterPriority1(node.getPriority1(), a_status, 0);
    node.setGrandmasterPriority2(node.getPriority2(), a_status, 0);
    const u16 port = tPortDS::kPortNumber;
    node.setPortState(port, kPortStateInitializing, a_status, 0);
    node.setLogAnnounceInterval(port, 1, a_status, 0);
    node.setAnnounceReceiptTimeout(port, 3, a_status, 0);
    node.setLogSyncInterval(port, 0, a_status, 0);
    node.setDelayMechanism(port, 1, a_status, 0);
    node.setLogMinPdelayReqInterval(port, 0, a_status, 0);
    node.setVersionNumber(port, 2, a_status, 0);
    node.setParentClockIdentity(node.getClockIdentity(), a_status, 0);
    node.setGrandmasterIdentity(node.getClockIdentity(), a_status, 0);
}

void tPTPOrdinaryClock::startClock(tStatus& a_status)
{
    m_node.startClock(a_status);
}

void tPTPOrdinaryClock::stopClock(tStatus& a_status)
{
    m_node.stopClock(a_status);
}

void tPTPOrdinaryClock::getUserDescription(char* a_pName, char* a_pLocation, tStatus& a_status)
{
    void* const values[2] = {&a_pName, &a_pLocation};
    m_node.accessProperty(tPTPNode::kGet, USER_DESCRIPTION, values, 2, 0, a_status);
}

void tPTPOrdinaryClock::setUserDescription(const char* a_pName, const char* a_pLocation,
                                           tStatus& a_status)
{
    void* const values[2] = {&a_pName, &a_pLocation};
    m_node.accessProperty(tPTPNode::kSet, USER_DESCRIPTION, values, 2, 0, a_status);
}

void tPTPOrdinaryClock::getManufacturerIdentity(u8* a_pBytes, tStatus& a_status)
{
    void* const values[1] = {&a_pBytes};
    m_node.accessProperty(tPTPNode::kGet, MANUFACTURER_IDENTITY, values, 1, 0, a_status);
}

void tPTPOrdinaryClock::setManufacturerIdentity(const u8* a_pBytes, tStatus& a_status)
{
    void* const values[1] = {&a_pBytes};
    m_node.accessProperty(tPTPNode::kSet, MANUFACTURER_IDENTITY, values, 1, 0, a_status);
}

void tPTPOrdinaryClock::getPortAddress(u16* a_pProtocol, u16* a_pLength, u8* a_pBytes,
                                       tStatus& a_status)
{
    tPortAddress address;
    void* const values[1] = {&address};
    m_node.accessProperty(tPTPNode::kGet, PROTOCOL_ADDRESS, values, 1, tPortDS::kPortNumber,
                          a_status);
    *a_pProtocol = address.getNetworkProtocol();
    *a_pLength = a_status.isFatal() ? 0 : address.getAddressLength();
    for (u16 i = 0; i < *a_pLength; ++i)
    {
        a_pBytes[i] = address.getAddressField()[i];
    }
}

void tPTPOrdinaryClock::setPortAddress(u16 a_protocol, u16 a_length, const u8* a_pBytes,
                                       tStatus& a_status)
{
    tPortAddress address(a_protocol, a_length, a_pBytes, a_status);
    void* const values[1] = {&address};
    m_node.accessProperty(tPTPNode::kSet, PROTOCOL_ADDRESS, values, 1, tPortDS::kPortNumber,
                          a_status);
}

void tPTPOrdinaryClock::addPortStateObserver(iPortStateObserver* a_pObserver)
{
    tStatus setStatus;
    m_node.writeProperty<ADD_PORT_STATE_OBSERVER>(a_pObserver, setStatus);
}

void tPTPOrdinaryClock::removePortStateObserver(iPortStateObserver* a_pObserver)
{
    tStatus setStatus;
    m_node.writeProperty<REMOVE_PORT_STATE_OBSERVER>(a_pObserver, setStatus);
}

void tPTPOrdinaryClock::designatePortDisabled(tStatus& a_status)
{
    m_node.designatePortDisabled(a_status);
}

void tPTPOrdinaryClock::designatePortEnabled(tStatus& a_status)
{
    m_node.designatePortEnabled(a_status);
}

void tPTPOrdinaryClock::signalFaultDetected(tStatus& a_status)
{
    m_node.signalFaultDetected(a_status);
}

void tPTPOrdinaryClock::signalFaultCleared(tStatus& a_status)
{
    m_node.signalFaultCleared(a_status);
}

void tPTPOrdinaryClock::signalSyncFault(tStatus& a_status)
{
    m_node.signalSyncFault(a_status);
}

void tPTPOrdinaryClock::initializePort(tStatus& a_status)
{
    m_node.initializePort(a_status);
}

void tPTPOrdinaryClock::setClockClass(u8 a_value, tStatus& a_status)
{
    m_node.writeProperty<CLOCK_CLASS>(a_value, a_status);
}

void tPTPOrdinaryClock::setPhysicalAddress(const u8* a_pBytes, u16 a_length, tStatus& a_status)
{
    void* const values[2] = {&a_pBytes, &a_length};
    m_node.accessProperty(tPTPNode::kSet, PHYSICAL_ADDRESS, values, 2, tPortDS::kPortNumber,
                          a_status);
}

void tPTPOrdinaryClock::setProductDescription(const char* a_pManufacturerName,
                                              const char* a_pModelNumber,
                                              const char* a_pInstanceIdentifier, tStatus& a_status)
{
    void* const values[3] = {&a_pManufacturerName, &a_pModelNumber, &a_pInstanceIdentifier};
    m_node.accessProperty(tPTPNode::kSet, PRODUCT_DESCRIPTION, values, 3, 0, a_status);
}

void tPTPOrdinaryClock::addPropertyChangeObserver(iPropertyChangeObserver* a_pObserver)
{
    tStatus setStatus;
    m_node.writeProperty<ADD_PROPERTY_OBSERVER>(a_pObserver, setStatus);
}

void tPTPOrdinaryClock::setExternalChecks(bool a_on, tStatus& a_status)
{
    m_node.writeProperty<EXTERNAL_CHECKS>(a_on, a_status);
}

void tPTPOrdinaryClock::postInitializedCheck(tStatus& a_status)
{
    m_node.postInitializedCheck(a_status);
}

void tPTPOrdinaryClock::postMasterClockSelectedCheck(tStatus& a_status)
{
    m_node.postMasterClockSelectedCheck(a_status);
}

} // namespace nOrvPTP000
