#include "orvptp/tPTPNode.h"

#include "orvtarn/protons/status/tAssertion.h"

#include <algorithm>

// Property access by id, for callers on other threads (through the get and
// set events), observers, and the helpers every typed setter shares.

namespace nOrvPTP000
{

using namespace nOrvTarn000;

namespace
{

template <typename T>
T& valueAt(void** a_pValues, u32 a_index)
{
    return *static_cast<T*>(a_pValues[a_index]);
}

} // namespace

bool tPTPNode::checkPortNumber(u16 a_portNumber, tStatus& a_status)
{
    if (a_portNumber == 0 || a_portNumber > m_defaultDS.getNumberPorts())
    {
        ORVTARN_SET_CODE(a_status, kStatusInvalidArgument);
        return false;
    }
    return true;
}

void tPTPNode::notifyPropertyChange(i32 a_id, tStatus& a_status, i32 a_context)
{
    if (a_status.isFatal())
    {
        return;
    }
    for (iPropertyChangeObserver* pObserver : m_propertyObservers)
    {
        pObserver->propertyChanged(a_id, a_context);
    }
}

template <typename tObserver>
void tPTPNode::addObserver(tVector<tObserver*>& a_rObservers, tObserver* a_pObserver,
                           tStatus& a_status)
{
    if (a_status.isFatal() ||
        std::find(a_rObservers.begin(), a_rObservers.end(), a_pObserver) != a_rObservers.end())
    {
        return;
    }
    a_rObservers.push_back(a_pObserver);
    CHECK_ALLOCATION(a_rObservers, a_status);
}

template <typename tObserver>
void tPTPNode::removeObserver(tVector<tObserver*>& a_rObservers, tObserver* a_pObserver)
{
    typename tVector<tObserver*>::iterator it =
        std::find(a_rObservers.begin(), a_rObservers.end(), a_pObserver);
    if (it != a_rObservers.end())
    {
        a_rObservers.erase(it);
    }
}

void tPTPNode::getProperty(i32 a_id, void** a_pValues, u16 a_portNumber, tEvent* a_pDone,
                           tStatus* a_pStatus)
{
    tStatus& status = *a_pStatus;
    const u16 port = a_portNumber;
    switch (a_id)
    {
#define ORVPTP_GET(id, type, expression)                                                           \
    case id:                                                                                       \
        valueAt<type>(a_pValues, 0) = (expression);                                                \
        break;
        ORVPTP_GET(TWO_STEP_FLAG, bool, getTwoStepFlag())
        ORVPTP_GET(CLOCK_IDENTITY, tClockIdentity, getClockIdentity())
        ORVPTP_GET(NUMBER_PORTS, u16, getNumberPorts())
        ORVPTP_GET(CLOCK_QUALITY, tClockQuality, getClockQuality())
        ORVPTP_GET(CLOCK_CLASS, u8, getClockClass())
        ORVPTP_GET(CLOCK_ACCURACY, u8, getClockAccuracy())
        ORVPTP_GET(OFFSET_SCALED_LOG_VARIANCE, u16, getOffsetScaledLogVariance())
        ORVPTP_GET(PRIORITY1, u8, getPriority1())
        ORVPTP_GET(PRIORITY2, u8, getPriority2())
        ORVPTP_GET(DOMAIN_NUMBER, u8, getDomainNumber())
        ORVPTP_GET(SLAVE_ONLY, bool, getSlaveOnly())
        ORVPTP_GET(STEPS_REMOVED, u16, getStepsRemoved())
        ORVPTP_GET(OFFSET_FROM_MASTER, i64, getOffsetFromMaster().getScaledNanoseconds())
        ORVPTP_GET(MEAN_PATH_DELAY, i64, getMeanPathDelay().getScaledNanoseconds())
        ORVPTP_GET(PARENT_PORT_IDENTITY, tPortIdentity, getParentPortIdentity())
        ORVPTP_GET(PARENT_CLOCK_IDENTITY, tClockIdentity, getParentClockIdentity())
        ORVPTP_GET(PARENT_PORT_NUMBER, u16, getParentPortNumber())
        ORVPTP_GET(PARENT_STATS, bool, getParentStats())
        ORVPTP_GET(OBSERVED_PARENT_OFFSET_SCALED_LOG_VARIANCE, u16,
                   getObservedParentOffsetScaledLogVariance())
        ORVPTP_GET(OBSERVED_PARENT_CLOCK_PHASE_CHANGE_RATE, i32,
                   getObservedParentClockPhaseChangeRate())
        ORVPTP_GET(GRANDMASTER_IDENTITY, tClockIdentity, getGrandmasterIdentity())
        ORVPTP_GET(GRANDMASTER_CLOCK_QUALITY, tClockQuality, getGrandmasterClockQuality())
        ORVPTP_GET(GRANDMASTER_CLOCK_CLASS, u8, getGrandmasterClockClass())
        ORVPTP_GET(GRANDMASTER_CLOCK_ACCURACY, u8, getGrandmasterClockAccuracy())
        ORVPTP_GET(GRANDMASTER_OFFSET_SCALED_LOG_VARIANCE, u16,
                   getGrandmasterOffsetScaledLogVariance())
        ORVPTP_GET(GRANDMASTER_PRIORITY1, u8, getGrandmasterPriority1())
        ORVPTP_GET(GRANDMASTER_PRIORITY2, u8, getGrandmasterPriority2())
        ORVPTP_GET(CURRENT_UTC_OFFSET, i16, getCurrentUtcOffset())
        ORVPTP_GET(CURRENT_UTC_OFFSET_VALID, bool, getCurrentUtcOffsetValid())
        ORVPTP_GET(LEAP59, bool, getLeap59())
        ORVPTP_GET(LEAP61, bool, getLeap61())
        ORVPTP_GET(TIME_TRACEABLE, bool, getTimeTraceable())
        ORVPTP_GET(FREQUENCY_TRACEABLE, bool, getFrequencyTraceable())
        ORVPTP_GET(PTP_TIMESCALE, bool, getPtpTimescale())
        ORVPTP_GET(TIME_SOURCE, u8, getTimeSource())
        ORVPTP_GET(PORT_STATE, u8, getPortState(port, status))
        ORVPTP_GET(LOG_MIN_DELAY_REQ_INTERVAL, i8, getLogMinDelayReqInterval(port, status))
        ORVPTP_GET(PEER_MEAN_PATH_DELAY, i64, getPeerMeanPathDelay(port, status).getScaledNanoseconds())
        ORVPTP_GET(LOG_ANNOUNCE_INTERVAL, i8, getLogAnnounceInterval(port, status))
        ORVPTP_GET(ANNOUNCE_RECEIPT_TIMEOUT, u8, getAnnounceReceiptTimeout(port, status))
        ORVPTP_GET(LOG_SYNC_INTERVAL, i8, getLogSyncInterval(port, status))
        ORVPTP_GET(DELAY_MECHANISM, u8, getDelayMechanism(port, status))
        ORVPTP_GET(LOG_MIN_PDELAY_REQ_INTERVAL, i8, getLogMinPdelayReqInterval(port, status))
        ORVPTP_GET(VERSION_NUMBER, u8, getVersionNumber(port, status))
        ORVPTP_GET(EXTERNAL_CHECKS, bool, m_externalChecks)
        ORVPTP_GET(AUTOMATIC_RECOVERY, bool, m_automaticRecovery)
#undef ORVPTP_GET
    default:
        CHECK(false);
        break;
    }
    a_pDone->signal();
}

void tPTPNode::setProperty(i32 a_id, void** a_pValues, u16 a_portNumber, tEvent* a_pDone,
                           tStatus* a_pStatus)
{
    tStatus& status = *a_pStatus;
    const u16 port = a_portNumber;
    REQUIRE(a_id != TWO_STEP_FLAG);
    switch (a_id)
    {
#define ORVPTP_SET(id, setter, type)                                                               \
    case id:                                                                                       \
        setter(valueAt<type>(a_pValues, 0), status, 0);                                            \
        break;
#define ORVPTP_SET_PORT(id, setter, type)                                                          \
    case id:                                                                                       \
        setter(port, valueAt<type>(a_pValues, 0), status, 0);                                      \
        break;
        ORVPTP_SET(CLOCK_IDENTITY, setClockIdentity, tClockIdentity)
        ORVPTP_SET(CLOCK_QUALITY, setClockQuality, tClockQuality)
        ORVPTP_SET(CLOCK_CLASS, setClockClass, u8)
        ORVPTP_SET(CLOCK_ACCURACY, setClockAccuracy, u8)
        ORVPTP_SET(OFFSET_SCALED_LOG_VARIANCE, setOffsetScaledLogVariance, u16)
        ORVPTP_SET(PRIORITY1, setPriority1, u8)
        ORVPTP_SET(PRIORITY2, setPriority2, u8)
        ORVPTP_SET(DOMAIN_NUMBER, setDomainNumber, u8)
        ORVPTP_SET(SLAVE_ONLY, setSlaveOnly, bool)
        ORVPTP_SET(CURRENT_UTC_OFFSET, setCurrentUtcOffset, i16)
        ORVPTP_SET(CURRENT_UTC_OFFSET_VALID, setCurrentUtcOffsetValid, bool)
        ORVPTP_SET(LEAP59, setLeap59, bool)
        ORVPTP_SET(LEAP61, setLeap61, bool)
        ORVPTP_SET(TIME_TRACEABLE, setTimeTraceable, bool)
        ORVPTP_SET(FREQUENCY_TRACEABLE, setFrequencyTraceable, bool)
        ORVPTP_SET(PTP_TIMESCALE, setPtpTimescale, bool)
        ORVPTP_SET(TIME_SOURCE, setTimeSource, u8)
        ORVPTP_SET_PORT(LOG_MIN_DELAY_REQ_INTERVAL, setLogMinDelayReqInterval, i8)
        ORVPTP_SET_PORT(LOG_ANNOUNCE_INTERVAL, setLogAnnounceInterval, i8)
        ORVPTP_SET_PORT(ANNOUNCE_RECEIPT_TIMEOUT, setAnnounceReceiptTimeout, u8)
        ORVPTP_SET_PORT(LOG_SYNC_INTERVAL, setLogSyncInterval, i8)
        ORVPTP_SET_PORT(DELAY_MECHANISM, setDelayMechanism, u8)
        ORVPTP_SET_PORT(LOG_MIN_PDELAY_REQ_INTERVAL, setLogMinPdelayReqInterval, i8)
        ORVPTP_SET_PORT(VERSION_NUMBER, setVersionNumber, u8)
#undef ORVPTP_SET
#undef ORVPTP_SET_PORT
    case ADD_PORT_STATE_OBSERVER:
        addObserver(m_portStateObservers, valueAt<iPortStateObserver*>(a_pValues, 0), status);
        break;
    case REMOVE_PORT_STATE_OBSERVER:
        removeObserver(m_portStateObservers, valueAt<iPortStateObserver*>(a_pValues, 0));
        break;
    case ADD_PROPERTY_OBSERVER:
        addObserver(m_propertyObservers, valueAt<iPropertyChangeObserver*>(a_pValues, 0), status);
        break;
    case REMOVE_PROPERTY_OBSERVER:
        removeObserver(m_propertyObservers, valueAt<iPropertyChangeObserver*>(a_pValues, 0));
        break;
    case EXTERNAL_CHECKS:
        m_externalChecks = valueAt<bool>(a_pValues, 0);
        break;
    case AUTOMATIC_RECOVERY:
        m_automaticRecovery = valueAt<bool>(a_pValues, 0);
        break;
    default:
        CHECK(false);
        break;
    }
    a_pDone->signal();
}

} // namespace nOrvPTP000
