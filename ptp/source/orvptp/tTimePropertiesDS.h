#pragma once
#include "orvptp/tResettableDataSet.h"

namespace nOrvPTP000
{

struct tTimePropertiesDSValues
{
    i16 m_currentUtcOffset;
    bool m_currentUtcOffsetValid;
    bool m_leap59;
    bool m_leap61;
    bool m_timeTraceable;
    bool m_frequencyTraceable;
    bool m_ptpTimescale;
    u8 m_timeSource;
};

// The timescale that the grandmaster distributes. At construction: the PTP
// timescale from an internal oscillator, offset to UTC 34 s but not marked
// valid, no leap second pending, nothing traceable.
class tTimePropertiesDS : public tResettableDataSet<tTimePropertiesDSValues>
{
public:
    enum : u8
    {
        kTimeSourceInternalOscillator = 0xA0
    };
    static constexpr i16 kDefaultCurrentUtcOffset = 34;

    tTimePropertiesDS();

    i16 getCurrentUtcOffset() const { return m_values.m_currentUtcOffset; }
    bool getCurrentUtcOffsetValid() const { return m_values.m_currentUtcOffsetValid; }
    bool getLeap59() const { return m_values.m_leap59; }
    bool getLeap61() const { return m_values.m_leap61; }
    bool getTimeTraceable() const { return m_values.m_timeTraceable; }
    bool getFrequencyTraceable() const { return m_values.m_frequencyTraceable; }
    bool getPtpTimescale() const { return m_values.m_ptpTimescale; }
    u8 getTimeSource() const { return m_values.m_timeSource; }

    void setCurrentUtcOffset(i16 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tTimePropertiesDSValues::m_currentUtcOffset, a_value, a_status);
    }
    void setCurrentUtcOffsetValid(bool a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tTimePropertiesDSValues::m_currentUtcOffsetValid, a_value, a_status);
    }
    void setLeap59(bool a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tTimePropertiesDSValues::m_leap59, a_value, a_status);
    }
    void setLeap61(bool a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tTimePropertiesDSValues::m_leap61, a_value, a_status);
    }
    void setTimeTraceable(bool a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tTimePropertiesDSValues::m_timeTraceable, a_value, a_status);
    }
    void setFrequencyTraceable(bool a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tTimePropertiesDSValues::m_frequencyTraceable, a_value, a_status);
    }
    void setPtpTimescale(bool a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tTimePropertiesDSValues::m_ptpTimescale, a_value, a_status);
    }
    void setTimeSource(u8 a_value, nOrvTarn000::tStatus& a_status)
    {
        set(&tTimePropertiesDSValues::m_timeSource, a_value, a_status);
    }

    // The offset prints unsigned, so a negative offset shows as its 32-bit
    // two's complement.
    nOrvTarn000::tTrace& trace(nOrvTarn000::tTrace& a_trace) override;
};

} // namespace nOrvPTP000
