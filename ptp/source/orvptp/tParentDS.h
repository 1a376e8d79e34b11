#pragma once
#include "orvptp/tClockQuality.h"
#include "orvptp/tPortIdentity.h"
#include "orvptp/tResettableDataSet.h"

namespace nOrvPTP000
{

struct tParentDSValues
{
    tPortIdentity m_parentPortIdentity;
    bool m_parentStats;
    u16 m_observedParentOffsetScaledLogVariance;
    i32 m_observedParentClockPhaseChangeRate;
    tClockIdentity m_grandmasterIdentity;
    tClockQuality m_grandmasterClockQuality;
    u8 m_grandmasterPriority1;
    u8 m_grandmasterPriority2;
};

// The master the clock follows and the grandmaster behind it. At
// construction the clock is its own parent (port 0) and grandmaster, with
// default quality and priorities and no parent statistics.
class tParentDS : public tResettableDataSet<tParentDSValues>
{
public:
    enum : u16
    {
        kUnknownVariance = 0xFFFF
    };
    static constexpr i32 kUnknownPhaseChangeRate = 0x7FFFFFFF;

    explicit tParentDS(const tClockIdentity& a_clockIdentity);

    tPortIdentity getParentPortIdentity() const { return m_values.m_parentPortIdentity; }
    bool getParentStats() const { return m_values.m_parentStats; }
    u16 getObservedParentOffsetScaledLogVariance() const
    {
        return m_values.m_observedParentOffsetScaledLogVariance;
    }
    i32 getObservedParentClockPhaseChangeRate() const
    {
        return m_values.m_observedParentClockPhaseChangeRate;
    }
    tClockIdentity getGrandmasterIdentity() const { return m_values.m_grandmasterIdentity; }
    tClockQuality getGrandmasterClockQuality() const { return m_values.m_grandmasterClockQuality; }
    u8 getGrandmasterPriority1() const { return m_values.m_grandmasterPriority1; }
    u8 getGrandmasterPriority2() const { return m_values.m_grandmasterPriority2; }

    void setParentPortIdentity(const tPortIdentity& a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tParentDSValues::m_parentPortIdentity, a_value, a_status);
    }
    void setParentStats(bool a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tParentDSValues::m_parentStats, a_value, a_status);
    }
    void setObservedParentOffsetScaledLogVariance(u16 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tParentDSValues::m_observedParentOffsetScaledLogVariance, a_value, a_status);
    }
    void setObservedParentClockPhaseChangeRate(i32 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tParentDSValues::m_observedParentClockPhaseChangeRate, a_value, a_status);
    }
    void setGrandmasterIdentity(const tClockIdentity& a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tParentDSValues::m_grandmasterIdentity, a_value, a_status);
    }
    void setGrandmasterClockQuality(const tClockQuality& a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tParentDSValues::m_grandmasterClockQuality, a_value, a_status);
    }
    void setGrandmasterPriority1(u8 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tParentDSValues::m_grandmasterPriority1, a_value, a_status);
    }
    void setGrandmasterPriority2(u8 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tParentDSValues::m_grandmasterPriority2, a_value, a_status);
    }

    // The parts of the parent port identity and of the grandmaster's quality,
    // each written with the others kept.
    tClockIdentity getParentClockIdentity() const
    {
        return getParentPortIdentity().getClockIdentity();
    }
    u16 getParentPortNumber() const { return getParentPortIdentity().getPortNumber(); }
    u8 getGrandmasterClockClass() const { return getGrandmasterClockQuality().getClockClass(); }
    u8 getGrandmasterClockAccuracy() const
    {
        return getGrandmasterClockQuality().getClockAccuracy();
    }
    u16 getGrandmasterOffsetScaledLogVariance() const
    {
        return getGrandmasterClockQuality().getOffsetScaledLogVariance();
    }
    void setParentClockIdentity(const tClockIdentity& a_value, nOrvTarn000::tStatus& a_status)
    {
        setParentPortIdentity(tPortIdentity(a_value, getParentPortNumber()), a_status);
    }
    void setParentPortNumber(u16 a_value, nOrvTarn000::tStatus& a_status)
    {
        setParentPortIdentity(tPortIdentity(getParentClockIdentity(), a_value), a_status);
    }
    void setGrandmasterClockClass(u8 a_value, nOrvTarn000::tStatus& a_status)
    {
        const tClockQuality q = getGrandmasterClockQuality();
        setGrandmasterClockQuality(
            tClockQuality(a_value, q.getClockAccuracy(), q.getOffsetScaledLogVariance()), a_status);
    }
    void setGrandmasterClockAccuracy(u8 a_value, nOrvTarn000::tStatus& a_status)
    {
        const tClockQuality q = getGrandmasterClockQuality();
        setGrandmasterClockQuality(
            tClockQuality(q.getClockClass(), a_value, q.getOffsetScaledLogVariance()), a_status);
    }
    void setGrandmasterOffsetScaledLogVariance(u16 a_value, nOrvTarn000::tStatus& a_status)
    {
        const tClockQuality q = getGrandmasterClockQuality();
        setGrandmasterClockQuality(tClockQuality(q.getClockClass(), q.getClockAccuracy(), a_value),
                                   a_status);
    }

    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
};

} // namespace nOrvPTP000
