#include "tZelmarPtpPlugin.h"

#include "orvptp/tClockDescriptionDS.h"
#include "orvptp/tPortStateCodes.h"
#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tAssertion.h"
#include "orvtarn/protons/status/tTrace.h"
#include "orvtarn/quarks/tMutexGuard.h"
#include "tNetworkDevices.h"
#include "tOrvEmbModule.h"
#include "tStaticAttributes.h"
#include "tTimeConversion.h"

#include <cmath>
#include <cstdio>
#include <cstring>

using namespace nOrvPTP000;
using nOrvTarn000::makeOwned;
using nOrvTarn000::tMutexGuard;
using nOrvTarn000::tStatus;
using nOrvTarn000::tString;
using zelmarPluginCore_1_0::iZelmarController;
using zelmarPluginCore_1_0::tStaticAttributes;
using zelmarPluginCore_1_0::tTimeValue;

namespace nZelmarPtpPlugin_1_0
{
namespace
{

enum : u32
{
    kKindInformation = 105, // 'i'
    kUtcOffsetPeriodMs = 1000,
    kUtcOffsetFirstDelayMs = 1,
    kTextSize = 32
};

const char kManufacturerName[] = "Orvane";
// What of the device description fits the product description beside the
// manufacturer, the MAC address and the two separators.
const u32 kDeviceDescriptionRoom = tClockDescriptionDS::kProductDescriptionLimit -
                                   (sizeof(kManufacturerName) - 1) - (kMacAddressTextSize - 1) - 2;
// PRE_MASTER, which this clock never enters.
const i32 kPortStatePreMaster = 5;
const u16 kProtocolUdpIpv4 = 1;
const u16 kIpv4AddressLength = 4;

// The management changes that the file keeps: id, the clock's property, and
// the field of the attributes (whose key names the entry).
#define ZM_PTP_PERSISTED_PROPERTIES(X)                                                             \
    X(PRIORITY1, m_priority1)                                                                      \
    X(PRIORITY2, m_priority2)                                                                      \
    X(DOMAIN_NUMBER, m_domainNumber)                                                               \
    X(LOG_MIN_DELAY_REQ_INTERVAL, m_logMinDelayReqInterval)                                        \
    X(LOG_ANNOUNCE_INTERVAL, m_logAnnounceInterval)                                                \
    X(ANNOUNCE_RECEIPT_TIMEOUT, m_announceReceiptTimeout)                                          \
    X(LOG_SYNC_INTERVAL, m_logSyncInterval)

// Unsigned values stand in the file as numbers, signed ones as the unsigned
// 32-bit number with the same bits.
void put(tStaticAttributes& a_rFile, const char* a_pKey, u8 a_value, tStatus& a_status)
{
    a_rFile.putU32(a_pKey, a_value, a_status);
}

void put(tStaticAttributes& a_rFile, const char* a_pKey, i8 a_value, tStatus& a_status)
{
    a_rFile.putI32(a_pKey, a_value, a_status);
}

void put(tStaticAttributes& a_rFile, const char* a_pKey, const tString& a_value, tStatus& a_status)
{
    a_rFile.putString(a_pKey, a_value.c_str(), a_status);
}

// Keeps a value for the next INITIALIZING and puts it into the file.
template <auto kField, typename tValue>
void keep(tPtpClockAttributes& a_rAttributes, const tValue& a_value, tStaticAttributes& a_rFile,
          tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        a_rAttributes.*kField = a_value;
        put(a_rFile, tAttributeKey<kField>::kKey, a_rAttributes.*kField, a_status);
    }
}

// The device's IPv4 address as its four bytes, most significant first; all
// zero when no device has the MAC address.
void readIpAddress(const u8* a_pMacAddress, u8 (&a_rBytes)[kIpv4AddressLength])
{
    tStatus lookupStatus;
    tNetworkDeviceConfig device;
    const u32 address = nNetworkDevices::findDeviceByMacAddress(a_pMacAddress, device, lookupStatus)
                            ? device.m_ipAddress
                            : 0;
    // Network byte order is the bytes' own order.
    std::memcpy(a_rBytes, &address, sizeof(a_rBytes));
}

} // namespace

tZelmarPtpPlugin::tZelmarPtpPlugin(const tString& a_name, iZelmarController* a_pController,
                                   tStaticAttributes& a_rAttributes, const tPtpNetwork& a_network,
                                   tStatus& a_status)
    : tZelmarPluginBase(a_name, a_pController, a_rAttributes, kDefaultIntervalMs, a_status),
      m_timestampGenerator(a_status), m_pNetworkInterface(), m_pPtpClock(), m_changedProperties(),
      m_clockAttributes(), m_useUtcOffset(false), m_utcOffsetValid(false), m_utcOffsetSeconds(0)
{
    m_clockAttributes.read(a_rAttributes, a_status);
    const bool useUdp = a_network.m_pMessaging == nullptr;
    if (useUdp)
    {
        findDevice(a_status);
    }
    const u8 ttl = readMulticastMsgTTL(a_rAttributes, a_status);
    m_useUtcOffset = readUseUtcOffset(a_rAttributes, a_status);
    if (a_status.isFatal())
    {
        return;
    }
    iPTPPortMessaging* pMessaging = a_network.m_pMessaging;
    iPTPTimestampGenerator* pTimestamps = a_network.m_pTimestampGenerator;
    if (useUdp)
    {
        m_pNetworkInterface = makeOwned<tClientUdpNetworkInterface>(
            a_status, &m_timestampGenerator, this, m_clockAttributes.m_macAddress, ttl);
        pMessaging = m_pNetworkInterface.get();
        pTimestamps = &m_timestampGenerator;
    }
    m_pPtpClock = makeOwned<tPTPOrdinaryClock>(a_status, pMessaging, pTimestamps, this,
                                               m_clockAttributes.m_clockIdentity,
                                               controller().getClock(), a_status);
    if (a_status.isFatal())
    {
        return;
    }
    // The initialized and master clock selected checks come only from the
    // actions, once the settings are in the clock and the port may go on.
    m_pPtpClock->addPortStateObserver(this);
    m_pPtpClock->addPropertyChangeObserver(this);
    m_pPtpClock->setExternalChecks(true, a_status);
}

tZelmarPtpPlugin::~tZelmarPtpPlugin()
{
    // The clock first: its threads call this object until they have ended.
    m_pPtpClock.reset();
    m_pNetworkInterface.reset();
    iZelmarController* const pController = getController();
    if (pController != nullptr)
    {
        pController->cancelDeferredAction(static_cast<tPtpInitializeClockAction*>(this));
        pController->cancelDeferredAction(static_cast<tPtpCalibrateClockAction*>(this));
        pController->cancelDeferredAction(static_cast<tPtpPersistStateAction*>(this));
        pController->cancelDeferredAction(static_cast<tPtpUpdateUtcOffsetAction*>(this));
    }
}

void tZelmarPtpPlugin::findDevice(tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    tNetworkDeviceConfig device;
    if (!nNetworkDevices::findDeviceByMacAddress(m_clockAttributes.m_macAddress, device, a_status))
    {
        if (a_status.isNotFatal())
        {
            setErrorCode(kErrorNoDevice);
            ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidArgument);
        }
    }
    else if (device.m_ipAddress == 0)
    {
        setErrorCode(kErrorNoIpAddress);
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidState);
    }
}

void tZelmarPtpPlugin::start(tStatus& a_status)
{
    tMutexGuard guard(getMutex(), a_status);
    if (guard.isLocked() &&
        REQUIRE(NULL != m_pPtpClock, nOrvTarn000::kStatusInternalError, a_status))
    {
        m_pPtpClock->startClock(a_status);
    }
}

void tZelmarPtpPlugin::stop()
{
    tStatus stopStatus;
    tMutexGuard guard(getMutex(), stopStatus);
    if (m_pPtpClock != nullptr)
    {
        m_pPtpClock->stopClock(stopStatus);
    }
}

f64 tZelmarPtpPlugin::getInterval(tStatus& a_status)
{
    tMutexGuard guard(getMutex(), a_status);
    if (!guard.isLocked() || m_pPtpClock == nullptr)
    {
        return 0.0;
    }
    const i8 logInterval = m_pPtpClock->getNode().readProperty<LOG_SYNC_INTERVAL>(a_status);
    return a_status.isFatal() ? 0.0 : std::ldexp(1.0, logInterval);
}

void tZelmarPtpPlugin::setInterval(const f64& a_seconds, tStatus& a_status)
{
    tMutexGuard guard(getMutex(), a_status);
    if (!guard.isLocked() || m_pPtpClock == nullptr)
    {
        return;
    }
    const f64 logInterval = a_seconds > 0.0 ? std::round(std::log2(a_seconds)) : -HUGE_VAL;
    if (!(logInterval >= -128.0 && logInterval <= 127.0))
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidArgument);
        return;
    }
    const i8 value = static_cast<i8>(logInterval);
    m_pPtpClock->setLogSyncInterval(value, a_status);
    if (a_status.isNotFatal())
    {
        m_clockAttributes.m_logSyncInterval = value;
    }
}

tTimeValue tZelmarPtpPlugin::getUtcOffset() const
{
    return m_useUtcOffset && m_utcOffsetValid.load() ? tTimeValue(m_utcOffsetSeconds.load(), 0u, 1)
                                                     : tTimeValue();
}

void tZelmarPtpPlugin::getTime(tTimestamp& a_rTime, tStatus& a_status)
{
    const tTimeValue time = controller().getTime(a_status);
    if (a_status.isNotFatal())
    {
        a_rTime = toTimestamp(time + getUtcOffset());
    }
}

void tZelmarPtpPlugin::stepTime(const tTimestamp& a_rTime, tStatus& a_status)
{
    controller().stepTimeReference(toTimeValue(a_rTime) - getUtcOffset(), a_status);
}

void tZelmarPtpPlugin::addSample(const tTimestamp& a_rMasterTime, const tTimestamp& a_rLocalTime,
                                 tStatus& a_status)
{
    // The local time was read with the UTC offset added. Both times go back
    // to the reference's own scale: the difference stays, and the local time
    // finds the servo's reading of it.
    const tTimeValue utcOffset = getUtcOffset();
    controller().addTimeSample(toTimeValue(a_rMasterTime) - utcOffset,
                               toTimeValue(a_rLocalTime) - utcOffset, a_status);
}

void tZelmarPtpPlugin::portStateChanged(i32 a_newState, i32)
{
    tStatus observerStatus;
    iZelmarController& core = controller();
    switch (a_newState)
    {
    case kPortStateStopped:
    case kPortStateDisabled:
    case kPortStateListening:
    case kPortStatePreMaster:
        break;
    case kPortStateInitializing:
        core.queueDeferredAction(static_cast<tPtpInitializeClockAction*>(this), observerStatus);
        break;
    case kPortStateMaster:
    case kPortStatePassive:
        core.setFreeRunning(true, observerStatus);
        break;
    case kPortStateUncalibrated:
        core.queueDeferredAction(static_cast<tPtpCalibrateClockAction*>(this), observerStatus);
        break;
    case kPortStateSlave:
        core.setFreeRunning(false, observerStatus);
        if (m_useUtcOffset)
        {
            core.queueDeferredActionAfter(static_cast<tPtpUpdateUtcOffsetAction*>(this),
                                          kUtcOffsetFirstDelayMs, observerStatus);
        }
        break;
    default: // FAULTY, or a state that does not exist
        ORVTARN_SET_CODE(observerStatus, nOrvTarn000::kStatusInternalError);
        break;
    }
    if (observerStatus.isFatal())
    {
        char what[kTextSize];
        std::snprintf(what, sizeof(what), "port state %d", static_cast<int>(a_newState));
        fail(what, observerStatus);
    }
}

void tZelmarPtpPlugin::propertyChanged(i32 a_propertyId, i32 a_context)
{
    if (a_context != kContextManagement)
    {
        return;
    }
    tStatus observerStatus;
    m_changedProperties.add(a_propertyId);
    controller().queueDeferredAction(static_cast<tPtpPersistStateAction*>(this), observerStatus);
    if (observerStatus.isFatal())
    {
        fail("a changed property cannot be kept", observerStatus);
    }
}

u8 tZelmarPtpPlugin::readPortState(tStatus& a_status)
{
    return m_pPtpClock->getNode().readProperty<PORT_STATE>(a_status);
}

void tZelmarPtpPlugin::initializeClock()
{
    tStatus initializeStatus;
    tMutexGuard guard(getMutex(), initializeStatus);
    if (readPortState(initializeStatus) != kPortStateInitializing)
    {
        return;
    }
    tPTPOrdinaryClock& clock = *m_pPtpClock;
    const tPtpClockAttributes& settings = m_clockAttributes;
    // A failure makes the calls after it return at once. Every setting must
    // be in the clock before the initialized check lets the port go on.
    clock.setClockClass(settings.m_clockClass, initializeStatus);
    clock.setPriority1(settings.m_priority1, initializeStatus);
    clock.setPriority2(settings.m_priority2, initializeStatus);
    clock.setSlaveOnly(settings.m_slaveOnly, initializeStatus);
    clock.setLogSyncInterval(settings.m_logSyncInterval, initializeStatus);
    clock.setUserDescription(settings.m_userDescriptionName.c_str(),
                             settings.m_userDescriptionLocation.c_str(), initializeStatus);
    clock.setLogMinDelayReqInterval(settings.m_logMinDelayReqInterval, initializeStatus);
    clock.setAnnounceReceiptTimeout(settings.m_announceReceiptTimeout, initializeStatus);
    clock.setLogAnnounceInterval(settings.m_logAnnounceInterval, initializeStatus);
    clock.setDomainNumber(settings.m_domainNumber, initializeStatus);
    clock.setPhysicalAddress(settings.m_macAddress, tPtpClockAttributes::kMacAddressSize,
                             initializeStatus);
    u8 ipAddress[kIpv4AddressLength];
    readIpAddress(settings.m_macAddress, ipAddress);
    clock.setPortAddress(kProtocolUdpIpv4, kIpv4AddressLength, ipAddress, initializeStatus);
    char description[kDeviceDescriptionRoom + 1];
    const tOrvEmbModule orvEmb;
    orvEmb.getDeviceDescription(description, kDeviceDescriptionRoom);
    char macAddress[kMacAddressTextSize];
    formatMacAddress(settings.m_macAddress, macAddress);
    clock.setProductDescription(kManufacturerName, description, macAddress, initializeStatus);
    clock.postInitializedCheck(initializeStatus);
    // Without the check the port would wait in INITIALIZING for ever: a new
    // plug-in tries again.
    if (initializeStatus.isFatal())
    {
        fail("the settings cannot go into the clock", initializeStatus);
    }
}

void tZelmarPtpPlugin::calibrateClock()
{
    // The servo has no say: an UNCALIBRATED port goes on to SLAVE at once. A
    // failure here can only be the clock's going down, and is dropped.
    tStatus calibrateStatus;
    tMutexGuard guard(getMutex(), calibrateStatus);
    if (readPortState(calibrateStatus) == kPortStateUncalibrated)
    {
        m_pPtpClock->postMasterClockSelectedCheck(calibrateStatus);
    }
}

void tZelmarPtpPlugin::persistState()
{
    tStatus persistStatus;
    tMutexGuard guard(getMutex(), persistStatus);
    // The file as it is now, so that the entries of other keys stay.
    tStaticAttributes file(kSourceName, persistStatus);
    while (persistStatus.isNotFatal())
    {
        const i32 id = m_changedProperties.take();
        if (id == tPropertyIdSet::kNone)
        {
            break;
        }
        persistProperty(id, file, persistStatus);
    }
    if (persistStatus.isFatal())
    {
        fail("a changed property cannot be kept", persistStatus);
    }
    // What was put before a failure is written all the same; a file that
    // cannot be written leaves the plug-in online with the values in force.
    tStatus saveStatus;
    file.save(saveStatus);
}

void tZelmarPtpPlugin::persistProperty(i32 a_id, tStaticAttributes& a_rFile, tStatus& a_status)
{
    tPTPNode& node = m_pPtpClock->getNode();
    switch (a_id)
    {
#define ZM_PERSIST_PROPERTY(id, field)                                                             \
    case id:                                                                                       \
        keep<&tPtpClockAttributes::field>(m_clockAttributes, node.readProperty<id>(a_status),      \
                                          a_rFile, a_status);                                      \
        break;
        ZM_PTP_PERSISTED_PROPERTIES(ZM_PERSIST_PROPERTY)
#undef ZM_PERSIST_PROPERTY
    case USER_DESCRIPTION:
    {
        char name[tClockDescriptionDS::kUserDescriptionPartSize] = "";
        char location[tClockDescriptionDS::kUserDescriptionPartSize] = "";
        m_pPtpClock->getUserDescription(name, location, a_status);
        const tString nameText(name);
        const tString locationText(location);
        if (CHECK_ALLOCATION(nameText, a_status) && CHECK_ALLOCATION(locationText, a_status))
        {
            keep<&tPtpClockAttributes::m_userDescriptionName>(m_clockAttributes, nameText, a_rFile,
                                                              a_status);
            keep<&tPtpClockAttributes::m_userDescriptionLocation>(m_clockAttributes, locationText,
                                                                  a_rFile, a_status);
        }
        break;
    }
    default: // not kept
        break;
    }
}

void tZelmarPtpPlugin::updateUtcOffset()
{
    tStatus updateStatus;
    tMutexGuard guard(getMutex(), updateStatus);
    tPTPNode& node = m_pPtpClock->getNode();
    const bool valid = node.readProperty<CURRENT_UTC_OFFSET_VALID>(updateStatus);
    const i16 offset = node.readProperty<CURRENT_UTC_OFFSET>(updateStatus);
    if (updateStatus.isNotFatal())
    {
        // Taken as non-negative.
        m_utcOffsetSeconds = offset < 0 ? 0u : static_cast<u32>(offset);
        m_utcOffsetValid = valid;
    }
    if (readPortState(updateStatus) == kPortStateSlave)
    {
        controller().queueDeferredActionAfter(static_cast<tPtpUpdateUtcOffsetAction*>(this),
                                              kUtcOffsetPeriodMs, updateStatus);
    }
    if (updateStatus.isFatal())
    {
        fail("the UTC offset cannot be followed", updateStatus);
    }
}

void tZelmarPtpPlugin::fail(const char* a_pWhat, const tStatus& a_status)
{
    nOrvTarn000::getTrace(0)
        .writeHeader(ORVTARN_COMPONENT, __LINE__, __FILE__, kKindInformation, 0)
        .writeFormatted("%s (status %d at %s:%d); the plug-in goes offline", a_pWhat,
                        static_cast<int>(a_status.getCode()), a_status.getFile(),
                        static_cast<int>(a_status.getLine()))
        .endLine();
    tStatus offlineStatus;
    controller().goOffline(offlineStatus);
}

} // namespace nZelmarPtpPlugin_1_0
