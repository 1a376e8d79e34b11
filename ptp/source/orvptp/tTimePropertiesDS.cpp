#include "orvptp/tTimePropertiesDS.h"

#include "orvptp/tDataSetTrace.h"

using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tTimePropertiesDS::tTimePropertiesDS()
    : tResettableDataSet(tTimePropertiesDSValues{kDefaultCurrentUtcOffset, false, false, false,
                                                 false, false, true, kTimeSourceInternalOscillator})
{
}

tTrace& tTimePropertiesDS::trace(tTrace& a_trace)
{
    traceUnsigned(a_trace, "currentUtcOffset: ", static_cast<u32>(m_values.m_currentUtcOffset));
    traceUnsigned(a_trace, " currentUtcOffsetValid: ", m_values.m_currentUtcOffsetValid);
    traceUnsigned(a_trace, " leap59: ", m_values.m_leap59);
    traceUnsigned(a_trace, " leap61: ", m_values.m_leap61);
    traceUnsigned(a_trace, " timeTraceable: ", m_values.m_timeTraceable);
    traceUnsigned(a_trace, " frequencyTraceable: ", m_values.m_frequencyTraceable);
    traceUnsigned(a_trace, " ptpTimescale: ", m_values.m_ptpTimescale);
    return traceUnsigned(a_trace, " timeSource: ", m_values.m_timeSource);
}

} // namespace nOrvPTP000
