#pragma once
#include "orvptp/tClockIdentity.h"
#include "orvptp/tClockQuality.h"
#include "orvptp/tResettableDataSet.h"

namespace nOrvPTP000
{

struct tDefaultDSValues
{
    bool m_twoStepFlag;
    tClockIdentity m_clockIdentity;
    u16 m_numberPorts;
    tClockQuality m_clockQuality;
    u8 m_priority1;
    u8 m_priority2;
    u8 m_domainNumber;
    bool m_slaveOnly;
};

// What the clock is: its identity, quality and priorities as it would
// announce them as grandmaster. A two-step ordinary clock of one port at
// construction, of default quality and priorities, in domain 0.
class tDefaultDS : public tResettableDataSet<tDefaultDSValues>
{
public:
    enum : u8
    {
        kDefaultPriority = 128
    };

    explicit tDefaultDS(const tClockIdentity& a_clockIdentity);

    bool getTwoStepFlag() const { return m_values.m_twoStepFlag; }
    tClockIdentity getClockIdentity() const { return m_values.m_clockIdentity; }
    u16 getNumberPorts() const { return m_values.m_numberPorts; }
    tClockQuality getClockQuality() const { return m_values.m_clockQuality; }
    u8 getPriority1() const { return m_values.m_priority1; }
    u8 getPriority2() const { return m_values.m_priority2; }
    u8 getDomainNumber() const { return m_values.m_domainNumber; }
    bool getSlaveOnly() const { return m_values.m_slaveOnly; }

    void setTwoStepFlag(bool a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tDefaultDSValues::m_twoStepFlag, a_value, a_status);
    }
    void setClockIdentity(const tClockIdentity& a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tDefaultDSValues::m_clockIdentity, a_value, a_status);
    }
    void setNumberPorts(u16 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tDefaultDSValues::m_numberPorts, a_value, a_status);
    }
    void setClockQuality(const tClockQuality& a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tDefaultDSValues::m_clockQuality, a_value, a_status);
    }
    void setPriority1(u8 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tDefaultDSValues::m_priority1, a_value, a_status);
    }
    void setPriority2(u8 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tDefaultDSValues::m_priority2, a_value, a_status);
    }
    void setDomainNumber(u8 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tDefaultDSValues::m_domainNumber, a_value, a_status);
    }
    void setSlaveOnly(bool a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tDefaultDSValues::m_slaveOnly, a_value, a_status);
    }

    // The parts of the clock quality, each written with the others kept.
    u8 getClockClass() const { return getClockQuality().getClockClass(); }
    u8 getClockAccuracy() const { return getClockQuality().getClockAccuracy(); }
    u16 getOffsetScaledLogVariance() const
    {
        return getClockQuality().getOffsetScaledLogVariance();
    }
    void setClockClass(u8 a_value, nOrvTarn000::tStatus& a_status)
    {
        const tClockQuality q = getClockQuality();
        setClockQuality(
            tClockQuality(a_value, q.getClockAccuracy(), q.getOffsetScaledLogVariance()), a_status);
    }
    void setClockAccuracy(u8 a_value, nOrvTarn000::tStatus& a_status)
    {
        const tClockQuality q = getClockQuality();
        setClockQuality(tClockQuality(q.getClockClass(), a_value, q.getOffsetScaledLogVariance()),
                        a_status);
    }
    void setOffsetScaledLogVariance(u16 a_value, nOrvTarn000::tStatus& a_status)
    {
        const tClockQuality q = getClockQuality();
        setClockQuality(tClockQuality(q.getClockClass(), q.getClockAccuracy(), a_value), a_status);
    }

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
};

} // namespace nOrvPTP000
