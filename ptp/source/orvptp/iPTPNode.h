#pragma once
#include "orvptp/tClockIdentity.h"
#include "orvptp/tClockQuality.h"
#include "orvptp/tPTPText.h"
#include "orvptp/tPortAddress.h"
#include "orvptp/tPortIdentity.h"
#include "orvptp/tTimeInterval.h"
#include "orvptp/tTimestamp.h"
#include "orvtarn/protons/status/iTraceable.h"
#include "orvtarn/quarks/tEvent.h"

#include <memory>
#include <type_traits>

namespace nOrvPTP000
{

class tForeignMasterDS;
class tPTPDispatcher;
class tProtocolDataUnit;
class tTimedEventGenerator;

// Property ids: the clock's data-set fields, the clock description, the
// observers and flags of the node, and the time. Setters report them to the
// property observers, with the context 1 for a change made by a management
// message and 0 otherwise.
enum tPropertyId : i32
{
#define ORVPTP_PROPERTY(id, ...) id,
#define ORVPTP_OTHER_PROPERTY(id) id,
#include "orvptp/tNodeProperties.def"
};

// What a typed setter takes: a number by value, anything else by reference.
template <typename T>
using tArgument = typename std::conditional<std::is_arithmetic<T>::value, T, const T&>::type;

// The PTP clock as the port states, the events, the best-master selection and
// management see it. Everything but the posting operations runs on the
// dispatcher thread only.
//
// Typed accessors, one pair per property of tNodeProperties.def: a setter
// writes the field, then (if the status is not fatal) tells the property
// observers; port properties take the port number first and refuse 0 or one
// beyond numberPorts with kStatusInvalidArgument.
class iPTPNode : public nOrvTarn000::iTraceable
{
public:
    typedef nOrvTarn000::tStatus tStatus;

    ~iPTPNode() override {}

#define ORVPTP_ACCESSORS_CLOCK(tValue, Name)                                                       \
    virtual tValue get##Name() = 0;                                                                \
    virtual void set##Name(tArgument<tValue> a_value, tStatus& a_status, i32 a_context) = 0;
#define ORVPTP_ACCESSORS_PORT(tValue, Name)                                                        \
    virtual tValue get##Name(u16 a_portNumber, tStatus& a_status) = 0;                             \
    virtual void set##Name(u16 a_portNumber, tArgument<tValue> a_value, tStatus& a_status,         \
                           i32 a_context) = 0;
#define ORVPTP_PROPERTY(id, Name, tValue, scope, ...) ORVPTP_ACCESSORS_##scope(tValue, Name)
#define ORVPTP_OTHER_PROPERTY(id)
#include "orvptp/tNodeProperties.def"
#undef ORVPTP_ACCESSORS_CLOCK
#undef ORVPTP_ACCESSORS_PORT

    // The clock description beyond its flags. Per port: the physical layer
    // protocol, the physical address (into or from a buffer of up to 16
    // octets), the protocol address and the 6-octet profile; then the
    // 3-octet manufacturer identity and the three descriptions.
    virtual tPTPText getPhysicalLayerProtocol(u16 a_portNumber) = 0;
    virtual void setPhysicalLayerProtocol(u16 a_portNumber, const tPTPText& a_value,
                                          tStatus& a_status, i32 a_context) = 0;
    virtual u16 getPhysicalAddress(u16 a_portNumber, u8* a_pBytes, tStatus& a_status) = 0;
    virtual void setPhysicalAddress(u16 a_portNumber, const u8* a_pBytes, u16 a_length,
                                    tStatus& a_status, i32 a_context) = 0;
    virtual u16 getPhysicalAddressLength(u16 a_portNumber) = 0;
    virtual tPortAddress getProtocolAddress(u16 a_portNumber) = 0;
    virtual void setProtocolAddress(u16 a_portNumber, const tPortAddress& a_value,
                                    tStatus& a_status, i32 a_context) = 0;
    virtual void getManufacturerIdentity(u8* a_pBytes, tStatus& a_status) = 0;
    virtual void setManufacturerIdentity(const u8* a_pBytes, tStatus& a_status, i32 a_context) = 0;
    virtual tPTPText getProductDescription() = 0;
    virtual void setProductDescription(const tPTPText& a_value, tStatus& a_status,
                                       i32 a_context) = 0;
    virtual tPTPText getRevisionData() = 0;
    virtual void setRevisionData(const tPTPText& a_value, tStatus& a_status, i32 a_context) = 0;
    virtual tPTPText getUserDescription() = 0;
    virtual void setUserDescription(const tPTPText& a_value, tStatus& a_status, i32 a_context) = 0;
    virtual void getProfileIdentity(u16 a_portNumber, u8* a_pBytes, tStatus& a_status) = 0;
    virtual void setProfileIdentity(u16 a_portNumber, const u8* a_pBytes, tStatus& a_status,
                                    i32 a_context) = 0;

    // Intervals in milliseconds from the port's log intervals, held within
    // the bounds of tLogInterval.h.
    virtual u32 getAnnounceIntervalMs() = 0;
    virtual u32 getSyncIntervalMs() = 0;

    // Inner objects; the port number is not used.
    virtual tForeignMasterDS* getForeignMasterDS(u16 a_portNumber) = 0;
    virtual tPTPDispatcher* getDispatcher() = 0;
    virtual tTimedEventGenerator* getTimedEventGenerator() = 0;

    // The clock's time, through the timekeeper; setting it steps the clock.
    virtual void getCurrentTime(tTimestamp& a_rTime, tStatus& a_status) = 0;
    virtual void setCurrentTime(const tTimestamp& a_time, tStatus& a_status, i32 a_context) = 0;

    // One received datagram, which the node takes.
    virtual void handlePacketReceived(std::unique_ptr<tProtocolDataUnit> a_pPacket,
                                      tStatus& a_status) = 0;

    // Event handlers, dispatcher thread only. Start and stop report into the
    // caller's status and signal the done event last.
    virtual void handleStateDecisionEvent(tStatus& a_status) = 0;
    virtual void handleInitialAnnounceTimeout(tStatus& a_status) = 0;
    virtual void handleSendAnnouncePacket(tStatus& a_status) = 0;
    virtual void handleSendSyncPacket(tStatus& a_status) = 0;
    virtual void handleDelayRequestTimer(tStatus& a_status) = 0;
    virtual void handleMasterClockSelectedCheck(tStatus& a_status) = 0;
    virtual void handleStartClock(nOrvTarn000::tEvent* a_pDone, tStatus* a_pStatus) = 0;
    virtual void handleStopClock(nOrvTarn000::tEvent* a_pDone, tStatus* a_pStatus) = 0;
    virtual void handleInitializedCheck(tStatus& a_status) = 0;
    virtual void handleDesignatedDisabled(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void handleInitializePort(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void handleSyncFault(tStatus& a_status) = 0;
    virtual void handleFaultCleared(tStatus& a_status) = 0;
    virtual void handleFaultDetected(tStatus& a_status) = 0;
    virtual void handleDesignatedEnabled(u16 a_portNumber, tStatus& a_status) = 0;
    virtual void handleNetworkError(tStatus& a_status) = 0;
    virtual void handleNetworkRecovery(tStatus& a_status) = 0;

    // Reads or writes the property a_id through the caller's value pointers, and
    // signals a_pDone as the last act. Observers (ids 58, 59, 62, 63) and the
    // external-checks and automatic-recovery flags (60, 61) are reached only here.
    virtual void getProperty(i32 a_id, void** a_pValues, u16 a_portNumber,
                             nOrvTarn000::tEvent* a_pDone, tStatus* a_pStatus) = 0;
    virtual void setProperty(i32 a_id, void** a_pValues, u16 a_portNumber,
                             nOrvTarn000::tEvent* a_pDone, tStatus* a_pStatus) = 0;

    // Tells every port state observer, in the order they were added.
    virtual void notifyPortStateChange(i32 a_newState, i32 a_oldState) = 0;

    // Any thread: each makes its event and posts it; true when posted.
    virtual bool designatePortDisabled(tStatus& a_status) = 0;
    virtual bool designatePortEnabled(tStatus& a_status) = 0;
    virtual bool signalFaultDetected(tStatus& a_status) = 0;
    virtual bool signalFaultCleared(tStatus& a_status) = 0;
    virtual bool signalSyncFault(tStatus& a_status) = 0;
    virtual bool initializePort(tStatus& a_status) = 0;

    // Ages the foreign master record of this sender.
    virtual void handleForeignMasterAnnounceTimeout(const tPortIdentity& a_sender,
                                                    tStatus& a_status) = 0;
};

} // namespace nOrvPTP000
