#pragma once
#include "orvptp/tNodeProperty.h"

namespace nOrvPTP000
{

class iPortStateObserver;

// The clock's properties that its user reads and writes by name, each with
// the id it travels as. A get takes no status and gives the property's value
// (a default one when it fails); a set takes the value and a status.
#define ORVPTP_CLOCK_GETTERS(X)                                                                    \
    X(TwoStepFlag, TWO_STEP_FLAG)                                                                  \
    X(ClockIdentity, CLOCK_IDENTITY)                                                               \
    X(NumberPorts, NUMBER_PORTS)                                                                   \
    X(ClockClass, CLOCK_CLASS)                                                                     \
    X(ClockAccuracy, CLOCK_ACCURACY)                                                               \
    X(OffsetScaledLogVariance, OFFSET_SCALED_LOG_VARIANCE)                                         \
    X(Priority1, PRIORITY1)                                                                        \
    X(Priority2, PRIORITY2)                                                                        \
    X(DomainNumber, DOMAIN_NUMBER)                                                                 \
    X(SlaveOnly, SLAVE_ONLY)                                                                       \
    X(StepsRemoved, STEPS_REMOVED)                                                                 \
    X(OffsetFromMaster, OFFSET_FROM_MASTER)                                                        \
    X(MeanPathDelay, MEAN_PATH_DELAY)                                                              \
    X(ParentClockIdentity, PARENT_CLOCK_IDENTITY)                                                  \
    X(ParentPortNumber, PARENT_PORT_NUMBER)                                                        \
    X(ParentStats, PARENT_STATS)                                                                   \
    X(ObservedParentOffsetScaledLogVariance, OBSERVED_PARENT_OFFSET_SCALED_LOG_VARIANCE)           \
    X(ObservedParentClockPhaseChangeRate, OBSERVED_PARENT_CLOCK_PHASE_CHANGE_RATE)                 \
    X(GrandmasterIdentity, GRANDMASTER_IDENTITY)                                                   \
    X(GrandmasterClockClass, GRANDMASTER_CLOCK_CLASS)                                              \
    X(GrandmasterClockAccuracy, GRANDMASTER_CLOCK_ACCURACY)                                        \
    X(GrandmasterOffsetScaledLogVariance, GRANDMASTER_OFFSET_SCALED_LOG_VARIANCE)                  \
    X(GrandmasterPriority1, GRANDMASTER_PRIORITY1)                                                 \
    X(GrandmasterPriority2, GRANDMASTER_PRIORITY2)                                                 \
    X(CurrentUtcOffset, CURRENT_UTC_OFFSET)                                                        \
    X(CurrentUtcOffsetValid, CURRENT_UTC_OFFSET_VALID)                                             \
    X(Leap59, LEAP59)                                                                              \
    X(Leap61, LEAP61)                                                                              \
    X(TimeTraceable, TIME_TRACEABLE)                                                               \
    X(FrequencyTraceable, FREQUENCY_TRACEABLE)                                                     \
    X(PtpTimescale, PTP_TIMESCALE)                                                                 \
    X(TimeSource, TIME_SOURCE)                                                                     \
    X(PortState, PORT_STATE)                                                                       \
    X(LogMinDelayReqInterval, LOG_MIN_DELAY_REQ_INTERVAL)                                          \
    X(PeerMeanPathDelay, PEER_MEAN_PATH_DELAY)                                                     \
    X(LogAnnounceInterval, LOG_ANNOUNCE_INTERVAL)                                                  \
    X(AnnounceReceiptTimeout, ANNOUNCE_RECEIPT_TIMEOUT)                                            \
    X(LogSyncInterval, LOG_SYNC_INTERVAL)                                                          \
    X(DelayMechanism, DELAY_MECHANISM)                                                             \
    X(LogMinPdelayReqInterval, LOG_MIN_PDELAY_REQ_INTERVAL)                                        \
    X(VersionNumber, VERSION_NUMBER)
#define ORVPTP_CLOCK_SETTERS(X)                                                                    \
    X(Priority1, PRIORITY1)                                                                        \
    X(Priority2, PRIORITY2)                                                                        \
    X(DomainNumber, DOMAIN_NUMBER)                                                                 \
    X(SlaveOnly, SLAVE_ONLY)                                                                       \
    X(LogMinDelayReqInterval, LOG_MIN_DELAY_REQ_INTERVAL)                                          \
    X(LogAnnounceInterval, LOG_ANNOUNCE_INTERVAL)                                                  \
    X(AnnounceReceiptTimeout, ANNOUNCE_RECEIPT_TIMEOUT)                                            \
    X(LogSyncInterval, LOG_SYNC_INTERVAL)                                                          \
    X(DelayMechanism, DELAY_MECHANISM)                                                             \
    X(LogMinPdelayReqInterval, LOG_MIN_PDELAY_REQ_INTERVAL)                                        \
    X(VersionNumber, VERSION_NUMBER)

// The PTP clock as its user sees it, from any thread. A get or a set posts
// its event to the clock's dispatcher and waits for it; a signal only posts.
// Gets and sets work in every state, before a start and after a stop too. A
// handler or observer on the dispatcher thread must not get, set, start or
// stop: it would wait for itself.
class iPTPOrdinaryClock
{
public:
    virtual ~iPTPOrdinaryClock() {}

    // Start while running, or stop while stopped: -52017.
    virtual void startClock(tStatus& a_status) = 0;
    virtual void stopClock(tStatus& a_status) = 0;

#define ORVPTP_CLOCK_GETTER(Name, id) virtual typename tNodeProperty<id>::tValue get##Name() = 0;
#define ORVPTP_CLOCK_SETTER(Name, id)                                                              \
    virtual void set##Name(typename tNodeProperty<id>::tValue a_value, tStatus& a_status) = 0;
    ORVPTP_CLOCK_GETTERS(ORVPTP_CLOCK_GETTER)
    ORVPTP_CLOCK_SETTERS(ORVPTP_CLOCK_SETTER)
#undef ORVPTP_CLOCK_GETTER
#undef ORVPTP_CLOCK_SETTER

    // The user description as its two parts, each NUL-terminated into a
    // buffer of tClockDescriptionDS::kUserDescriptionPartSize.
    virtual void getUserDescription(char* a_pName, char* a_pLocation, tStatus& a_status) = 0;
    virtual void setUserDescription(const char* a_pName, const char* a_pLocation,
                                    tStatus& a_status) = 0;
    // Three octets.
    virtual void getManufacturerIdentity(u8* a_pBytes, tStatus& a_status) = 0;
    virtual void setManufacturerIdentity(const u8* a_pBytes, tStatus& a_status) = 0;
    // The port's protocol address: protocol, length and up to 16 octets.
    virtual void getPortAddress(u16* a_pProtocol, u16* a_pLength, u8* a_pBytes,
                                tStatus& a_status) = 0;
    virtual void setPortAddress(u16 a_protocol, u16 a_length, const u8* a_pBytes,
                                tStatus& a_status) = 0;

    virtual void addPortStateObserver(iPortStateObserver* a_pObserver) = 0;
    virtual void removePortStateObserver(iPortStateObserver* a_pObserver) = 0;

    // Signals: the status holds only a failure to post.
    virtual void designatePortDisabled(tStatus& a_status) = 0;
    virtual void designatePortEnabled(tStatus& a_status) = 0;
    virtual void signalFaultDetected(tStatus& a_status) = 0;
    virtual void signalFaultCleared(tStatus& a_status) = 0;
    virtual void signalSyncFault(tStatus& a_status) = 0;
    virtual void initializePort(tStatus& a_status) = 0;
};

} // namespace nOrvPTP000
