#include "orvptp/tNodeEventGenerators.h"
#include "orvptp/tPTPNode.h"

// The typed accessors of the data-set fields. A setter writes its field and,
// when that worked, tells the property observers; port properties refuse a
// port number outside 1..numberPorts, and the interval setters re-arm the
// timers that run at the old interval.

namespace nOrvPTP000
{

using namespace nOrvTarn000;

template <typename tDataSet, typename tValue>
void tPTPNode::setField(tDataSet& a_rDataSet, void (tDataSet::*a_setter)(tValue, tStatus&),
                        typename tNonDeduced<tValue>::type a_value, i32 a_id, tStatus& a_status,
                        i32 a_context)
{
    (a_rDataSet.*a_setter)(a_value, a_status);
    notifyPropertyChange(a_id, a_status, a_context);
}

template <typename tValue>
void tPTPNode::setTimeProperty(void (tTimePropertiesDS::*a_setter)(tValue, tStatus&),
                               typename tNonDeduced<tValue>::type a_value, i32 a_id,
                               tStatus& a_status, i32 a_context)
{
    (m_localTimePropertiesDS.*a_setter)(a_value, a_status);
    if (m_parentDS.getGrandmasterIdentity() == m_defaultDS.getClockIdentity())
    {
        (m_timePropertiesDS.*a_setter)(a_value, a_status);
    }
    notifyPropertyChange(a_id, a_status, a_context);
}

bool tPTPNode::getTwoStepFlag()
{
    return m_defaultDS.getTwoStepFlag();
}

void tPTPNode::setTwoStepFlag(bool a_value, tStatus& a_status, i32 a_context)
{
    setField(m_defaultDS, &tDefaultDS::setTwoStepFlag, a_value, TWO_STEP_FLAG, a_status, a_context);
}

tClockIdentity tPTPNode::getClockIdentity()
{
    return m_defaultDS.getClockIdentity();
}

void tPTPNode::setClockIdentity(const tClockIdentity& a_value, tStatus& a_status, i32 a_context)
{
    setField(m_defaultDS, &tDefaultDS::setClockIdentity, a_value, CLOCK_IDENTITY, a_status,
             a_context);
}

u16 tPTPNode::getNumberPorts()
{
    return m_defaultDS.getNumberPorts();
}

void tPTPNode::setNumberPorts(u16 a_value, tStatus& a_status, i32 a_context)
{
    setField(m_defaultDS, &tDefaultDS::setNumberPorts, a_value, NUMBER_PORTS, a_status, a_context);
}

tClockQuality tPTPNode::getClockQuality()
{
    return m_defaultDS.getClockQuality();
}

void tPTPNode::setClockQuality(const tClockQuality& a_value, tStatus& a_status, i32 a_context)
{
    setField(m_defaultDS, &tDefaultDS::setClockQuality, a_value, CLOCK_QUALITY, a_status,
             a_context);
}

u8 tPTPNode::getClockClass()
{
    return m_defaultDS.getClockQuality().getClockClass();
}

void tPTPNode::setClockClass(u8 a_value, tStatus& a_status, i32 a_context)
{
    const tClockQuality q = m_defaultDS.getClockQuality();
    setField(m_defaultDS, &tDefaultDS::setClockQuality,
             tClockQuality(a_value, q.getClockAccuracy(), q.getOffsetScaledLogVariance()),
             CLOCK_CLASS, a_status, a_context);
}

u8 tPTPNode::getClockAccuracy()
{
    return m_defaultDS.getClockQuality().getClockAccuracy();
}

void tPTPNode::setClockAccuracy(u8 a_value, tStatus& a_status, i32 a_context)
{
    const tClockQuality q = m_defaultDS.getClockQuality();
    setField(m_defaultDS, &tDefaultDS::setClockQuality,
             tClockQuality(q.getClockClass(), a_value, q.getOffsetScaledLogVariance()),
             CLOCK_ACCURACY, a_status, a_context);
}

u16 tPTPNode::getOffsetScaledLogVariance()
{
    return m_defaultDS.getClockQuality().getOffsetScaledLogVariance();
}

void tPTPNode::setOffsetScaledLogVariance(u16 a_value, tStatus& a_status, i32 a_context)
{
    const tClockQuality q = m_defaultDS.getClockQuality();
    setField(m_defaultDS, &tDefaultDS::setClockQuality,
             tClockQuality(q.getClockClass(), q.getClockAccuracy(), a_value),
             OFFSET_SCALED_LOG_VARIANCE, a_status, a_context);
}

u8 tPTPNode::getPriority1()
{
    return m_defaultDS.getPriority1();
}

void tPTPNode::setPriority1(u8 a_value, tStatus& a_status, i32 a_context)
{
    setField(m_defaultDS, &tDefaultDS::setPriority1, a_value, PRIORITY1, a_status, a_context);
}

u8 tPTPNode::getPriority2()
{
    return m_defaultDS.getPriority2();
}

void tPTPNode::setPriority2(u8 a_value, tStatus& a_status, i32 a_context)
{
    setField(m_defaultDS, &tDefaultDS::setPriority2, a_value, PRIORITY2, a_status, a_context);
}

u8 tPTPNode::getDomainNumber()
{
    return m_defaultDS.getDomainNumber();
}

void tPTPNode::setDomainNumber(u8 a_value, tStatus& a_status, i32 a_context)
{
    setField(m_defaultDS, &tDefaultDS::setDomainNumber, a_value, DOMAIN_NUMBER, a_status,
             a_context);
}

bool tPTPNode::getSlaveOnly()
{
    return m_defaultDS.getSlaveOnly();
}

void tPTPNode::setSlaveOnly(bool a_value, tStatus& a_status, i32 a_context)
{
    setField(m_defaultDS, &tDefaultDS::setSlaveOnly, a_value, SLAVE_ONLY, a_status, a_context);
}

u16 tPTPNode::getStepsRemoved()
{
    return m_currentDS.getStepsRemoved();
}

void tPTPNode::setStepsRemoved(u16 a_value, tStatus& a_status, i32 a_context)
{
    setField(m_currentDS, &tCurrentDS::setStepsRemoved, a_value, STEPS_REMOVED, a_status,
             a_context);
}

tTimeInterval tPTPNode::getOffsetFromMaster()
{
    return m_currentDS.getOffsetFromMaster();
}

void tPTPNode::setOffsetFromMaster(const tTimeInterval& a_value, tStatus& a_status, i32 a_context)
{
    setField(m_currentDS, &tCurrentDS::setOffsetFromMaster, a_value, OFFSET_FROM_MASTER, a_status,
             a_context);
}

tTimeInterval tPTPNode::getMeanPathDelay()
{
    return m_currentDS.getMeanPathDelay();
}

void tPTPNode::setMeanPathDelay(const tTimeInterval& a_value, tStatus& a_status, i32 a_context)
{
    setField(m_currentDS, &tCurrentDS::setMeanPathDelay, a_value, MEAN_PATH_DELAY, a_status,
             a_context);
}

tPortIdentity tPTPNode::getParentPortIdentity()
{
    return m_parentDS.getParentPortIdentity();
}

void tPTPNode::setParentPortIdentity(const tPortIdentity& a_value, tStatus& a_status, i32 a_context)
{
    setField(m_parentDS, &tParentDS::setParentPortIdentity, a_value, PARENT_PORT_IDENTITY, a_status,
             a_context);
}

tClockIdentity tPTPNode::getParentClockIdentity()
{
    return m_parentDS.getParentPortIdentity().getClockIdentity();
}

void tPTPNode::setParentClockIdentity(const tClockIdentity& a_value, tStatus& a_status,
                                      i32 a_context)
{
    const tPortIdentity parent = m_parentDS.getParentPortIdentity();
    setField(m_parentDS, &tParentDS::setParentPortIdentity,
             tPortIdentity(a_value, parent.getPortNumber()), PARENT_CLOCK_IDENTITY, a_status,
             a_context);
}

u16 tPTPNode::getParentPortNumber()
{
    return m_parentDS.getParentPortIdentity().getPortNumber();
}

void tPTPNode::setParentPortNumber(u16 a_value, tStatus& a_status, i32 a_context)
{
    const tPortIdentity parent = m_parentDS.getParentPortIdentity();
    setField(m_parentDS, &tParentDS::setParentPortIdentity,
             tPortIdentity(parent.getClockIdentity(), a_value), PARENT_PORT_NUMBER, a_status,
             a_context);
}

bool tPTPNode::getParentStats()
{
    return m_parentDS.getParentStats();
}

void tPTPNode::setParentStats(bool a_value, tStatus& a_status, i32 a_context)
{
    setField(m_parentDS, &tParentDS::setParentStats, a_value, PARENT_STATS, a_status, a_context);
}

u16 tPTPNode::getObservedParentOffsetScaledLogVariance()
{
    return m_parentDS.getObservedParentOffsetScaledLogVariance();
}

void tPTPNode::setObservedParentOffsetScaledLogVariance(u16 a_value, tStatus& a_status,
                                                        i32 a_context)
{
    setField(m_parentDS, &tParentDS::setObservedParentOffsetScaledLogVariance, a_value,
             OBSERVED_PARENT_OFFSET_SCALED_LOG_VARIANCE, a_status, a_context);
}

i32 tPTPNode::getObservedParentClockPhaseChangeRate()
{
    return m_parentDS.getObservedParentClockPhaseChangeRate();
}

void tPTPNode::setObservedParentClockPhaseChangeRate(i32 a_value, tStatus& a_status, i32 a_context)
{
    setField(m_parentDS, &tParentDS::setObservedParentClockPhaseChangeRate, a_value,
             OBSERVED_PARENT_CLOCK_PHASE_CHANGE_RATE, a_status, a_context);
}

tClockIdentity tPTPNode::getGrandmasterIdentity()
{
    return m_parentDS.getGrandmasterIdentity();
}

void tPTPNode::setGrandmasterIdentity(const tClockIdentity& a_value, tStatus& a_status,
                                      i32 a_context)
{
    setField(m_parentDS, &tParentDS::setGrandmasterIdentity, a_value, GRANDMASTER_IDENTITY,
             a_status, a_context);
}

tClockQuality tPTPNode::getGrandmasterClockQuality()
{
    return m_parentDS.getGrandmasterClockQuality();
}

void tPTPNode::setGrandmasterClockQuality(const tClockQuality& a_value, tStatus& a_status,
                                          i32 a_context)
{
    setField(m_parentDS, &tParentDS::setGrandmasterClockQuality, a_value, GRANDMASTER_CLOCK_QUALITY,
             a_status, a_context);
}

u8 tPTPNode::getGrandmasterClockClass()
{
    return m_parentDS.getGrandmasterClockQuality().getClockClass();
}

void tPTPNode::setGrandmasterClockClass(u8 a_value, tStatus& a_status, i32 a_context)
{
    const tClockQuality q = m_parentDS.getGrandmasterClockQuality();
    setField(m_parentDS, &tParentDS::setGrandmasterClockQuality,
             tClockQuality(a_value, q.getClockAccuracy(), q.getOffsetScaledLogVariance()),
             GRANDMASTER_CLOCK_CLASS, a_status, a_context);
}

u8 tPTPNode::getGrandmasterClockAccuracy()
{
    return m_parentDS.getGrandmasterClockQuality().getClockAccuracy();
}

void tPTPNode::setGrandmasterClockAccuracy(u8 a_value, tStatus& a_status, i32 a_context)
{
    const tClockQuality q = m_parentDS.getGrandmasterClockQuality();
    setField(m_parentDS, &tParentDS::setGrandmasterClockQuality,
             tClockQuality(q.getClockClass(), a_value, q.getOffsetScaledLogVariance()),
             GRANDMASTER_CLOCK_ACCURACY, a_status, a_context);
}

u16 tPTPNode::getGrandmasterOffsetScaledLogVariance()
{
    return m_parentDS.getGrandmasterClockQuality().getOffsetScaledLogVariance();
}

void tPTPNode::setGrandmasterOffsetScaledLogVariance(u16 a_value, tStatus& a_status, i32 a_context)
{
    const tClockQuality q = m_parentDS.getGrandmasterClockQuality();
    setField(m_parentDS, &tParentDS::setGrandmasterClockQuality,
             tClockQuality(q.getClockClass(), q.getClockAccuracy(), a_value),
             GRANDMASTER_OFFSET_SCALED_LOG_VARIANCE, a_status, a_context);
}

u8 tPTPNode::getGrandmasterPriority1()
{
    return m_parentDS.getGrandmasterPriority1();
}

void tPTPNode::setGrandmasterPriority1(u8 a_value, tStatus& a_status, i32 a_context)
{
    setField(m_parentDS, &tParentDS::setGrandmasterPriority1, a_value, GRANDMASTER_PRIORITY1,
             a_status, a_context);
}

u8 tPTPNode::getGrandmasterPriority2()
{
    return m_parentDS.getGrandmasterPriority2();
}

void tPTPNode::setGrandmasterPriority2(u8 a_value, tStatus& a_status, i32 a_context)
{
    setField(m_parentDS, &tParentDS::setGrandmasterPriority2, a_value, GRANDMASTER_PRIORITY2,
             a_status, a_context);
}

i16 tPTPNode::getCurrentUtcOffset()
{
    return m_timePropertiesDS.getCurrentUtcOffset();
}

void tPTPNode::setCurrentUtcOffset(i16 a_value, tStatus& a_status, i32 a_context)
{
    setTimeProperty(&tTimePropertiesDS::setCurrentUtcOffset, a_value, CURRENT_UTC_OFFSET, a_status,
                    a_context);
}

bool tPTPNode::getCurrentUtcOffsetValid()
{
    return m_timePropertiesDS.getCurrentUtcOffsetValid();
}

void tPTPNode::setCurrentUtcOffsetValid(bool a_value, tStatus& a_status, i32 a_context)
{
    setTimeProperty(&tTimePropertiesDS::setCurrentUtcOffsetValid, a_value, CURRENT_UTC_OFFSET_VALID,
                    a_status, a_context);
}

bool tPTPNode::getLeap59()
{
    return m_timePropertiesDS.getLeap59();
}

void tPTPNode::setLeap59(bool a_value, tStatus& a_status, i32 a_context)
{
    setTimeProperty(&tTimePropertiesDS::setLeap59, a_value, LEAP59, a_status, a_context);
}

bool tPTPNode::getLeap61()
{
    return m_timePropertiesDS.getLeap61();
}

void tPTPNode::setLeap61(bool a_value, tStatus& a_status, i32 a_context)
{
    setTimeProperty(&tTimePropertiesDS::setLeap61, a_value, LEAP61, a_status, a_context);
}

bool tPTPNode::getTimeTraceable()
{
    return m_timePropertiesDS.getTimeTraceable();
}

void tPTPNode::setTimeTraceable(bool a_value, tStatus& a_status, i32 a_context)
{
    setTimeProperty(&tTimePropertiesDS::setTimeTraceable, a_value, TIME_TRACEABLE, a_status,
                    a_context);
}

bool tPTPNode::getFrequencyTraceable()
{
    return m_timePropertiesDS.getFrequencyTraceable();
}

void tPTPNode::setFrequencyTraceable(bool a_value, tStatus& a_status, i32 a_context)
{
    setTimeProperty(&tTimePropertiesDS::setFrequencyTraceable, a_value, FREQUENCY_TRACEABLE,
                    a_status, a_context);
}

bool tPTPNode::getPtpTimescale()
{
    return m_timePropertiesDS.getPtpTimescale();
}

void tPTPNode::setPtpTimescale(bool a_value, tStatus& a_status, i32 a_context)
{
    setTimeProperty(&tTimePropertiesDS::setPtpTimescale, a_value, PTP_TIMESCALE, a_status,
                    a_context);
}

u8 tPTPNode::getTimeSource()
{
    return m_timePropertiesDS.getTimeSource();
}

void tPTPNode::setTimeSource(u8 a_value, tStatus& a_status, i32 a_context)
{
    setTimeProperty(&tTimePropertiesDS::setTimeSource, a_value, TIME_SOURCE, a_status, a_context);
}

u8 tPTPNode::getPortState(u16 a_portNumber, tStatus& a_status)
{
    checkPortNumber(a_portNumber, a_status);
    return currentState();
}

void tPTPNode::setPortState(u16 a_portNumber, u8 a_value, tStatus& a_status, i32 a_context)
{
    checkPortNumber(a_portNumber, a_status);
    setField(m_portDS, &tPortDS::setPortState, a_value, PORT_STATE, a_status, a_context);
}

i8 tPTPNode::getLogMinDelayReqInterval(u16 a_portNumber, tStatus& a_status)
{
    checkPortNumber(a_portNumber, a_status);
    return m_portDS.getLogMinDelayReqInterval();
}

void tPTPNode::setLogMinDelayReqInterval(u16 a_portNumber, i8 a_value, tStatus& a_status,
                                         i32 a_context)
{
    checkPortNumber(a_portNumber, a_status);
    setField(m_portDS, &tPortDS::setLogMinDelayReqInterval, a_value, LOG_MIN_DELAY_REQ_INTERVAL,
             a_status, a_context);
}

tTimeInterval tPTPNode::getPeerMeanPathDelay(u16 a_portNumber, tStatus& a_status)
{
    checkPortNumber(a_portNumber, a_status);
    return m_portDS.getPeerMeanPathDelay();
}

void tPTPNode::setPeerMeanPathDelay(u16 a_portNumber, const tTimeInterval& a_value,
                                    tStatus& a_status, i32 a_context)
{
    checkPortNumber(a_portNumber, a_status);
    setField(m_portDS, &tPortDS::setPeerMeanPathDelay, a_value, PEER_MEAN_PATH_DELAY, a_status,
             a_context);
}

i8 tPTPNode::getLogAnnounceInterval(u16 a_portNumber, tStatus& a_status)
{
    checkPortNumber(a_portNumber, a_status);
    return m_portDS.getLogAnnounceInterval();
}

void tPTPNode::setLogAnnounceInterval(u16 a_portNumber, i8 a_value, tStatus& a_status,
                                      i32 a_context)
{
    checkPortNumber(a_portNumber, a_status);
    setField(m_portDS, &tPortDS::setLogAnnounceInterval, a_value, LOG_ANNOUNCE_INTERVAL, a_status,
             a_context);
    if (a_status.isFatal())
    {
        return;
    }
    const u32 intervalMs = getAnnounceIntervalMs();
    rearmPeriodic(tPortDS::kSendAnnounceTimer,
                  makeOwned<tSendAnnouncePacketEventGenerator>(a_status, this), intervalMs,
                  a_status);
    rearmPeriodic(tPortDS::kStateDecisionTimer,
                  makeOwned<tStateDecisionEventGenerator>(a_status, this), intervalMs, a_status);
    if (m_portDS.getTimerId(tPortDS::kAnnounceReceiptTimer) != tPortDS::kNoTimer)
    {
        restartAnnounceReceiptTimeout(a_status);
    }
}

u8 tPTPNode::getAnnounceReceiptTimeout(u16 a_portNumber, tStatus& a_status)
{
    checkPortNumber(a_portNumber, a_status);
    return m_portDS.getAnnounceReceiptTimeout();
}

void tPTPNode::setAnnounceReceiptTimeout(u16 a_portNumber, u8 a_value, tStatus& a_status,
                                         i32 a_context)
{
    checkPortNumber(a_portNumber, a_status);
    setField(m_portDS, &tPortDS::setAnnounceReceiptTimeout, a_value, ANNOUNCE_RECEIPT_TIMEOUT,
             a_status, a_context);
    if (a_status.isNotFatal() &&
        m_portDS.getTimerId(tPortDS::kAnnounceReceiptTimer) != tPortDS::kNoTimer)
    {
        restartAnnounceReceiptTimeout(a_status);
    }
}

i8 tPTPNode::getLogSyncInterval(u16 a_portNumber, tStatus& a_status)
{
    checkPortNumber(a_portNumber, a_status);
    return m_portDS.getLogSyncInterval();
}

void tPTPNode::setLogSyncInterval(u16 a_portNumber, i8 a_value, tStatus& a_status, i32 a_context)
{
    checkPortNumber(a_portNumber, a_status);
    setField(m_portDS, &tPortDS::setLogSyncInterval, a_value, LOG_SYNC_INTERVAL, a_status,
             a_context);
    if (a_status.isNotFatal())
    {
        rearmPeriodic(tPortDS::kSendSyncTimer,
                      makeOwned<tSendSyncPacketEventGenerator>(a_status, this), getSyncIntervalMs(),
                      a_status);
    }
}

u8 tPTPNode::getDelayMechanism(u16 a_portNumber, tStatus& a_status)
{
    checkPortNumber(a_portNumber, a_status);
    return m_portDS.getDelayMechanism();
}

void tPTPNode::setDelayMechanism(u16 a_portNumber, u8 a_value, tStatus& a_status, i32 a_context)
{
    checkPortNumber(a_portNumber, a_status);
    setField(m_portDS, &tPortDS::setDelayMechanism, a_value, DELAY_MECHANISM, a_status, a_context);
}

i8 tPTPNode::getLogMinPdelayReqInterval(u16 a_portNumber, tStatus& a_status)
{
    checkPortNumber(a_portNumber, a_status);
    return m_portDS.getLogMinPdelayReqInterval();
}

void tPTPNode::setLogMinPdelayReqInterval(u16 a_portNumber, i8 a_value, tStatus& a_status,
                                          i32 a_context)
{
    checkPortNumber(a_portNumber, a_status);
    setField(m_portDS, &tPortDS::setLogMinPdelayReqInterval, a_value, LOG_MIN_PDELAY_REQ_INTERVAL,
             a_status, a_context);
}

u8 tPTPNode::getVersionNumber(u16 a_portNumber, tStatus& a_status)
{
    checkPortNumber(a_portNumber, a_status);
    return m_portDS.getVersionNumber();
}

void tPTPNode::setVersionNumber(u16 a_portNumber, u8 a_value, tStatus& a_status, i32 a_context)
{
    checkPortNumber(a_portNumber, a_status);
    setField(m_portDS, &tPortDS::setVersionNumber, a_value, VERSION_NUMBER, a_status, a_context);
}

} // namespace nOrvPTP000
