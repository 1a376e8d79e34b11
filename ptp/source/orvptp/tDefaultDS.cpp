#include "orvptp/tDefaultDS.h"

#include "orvptp/tDataSetTrace.h"

using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tDefaultDS::tDefaultDS(const tClockIdentity& a_clockIdentity)
    : tResettableDataSet(tDefaultDSValues{
          true, a_clockIdentity, 1,
          tClockQuality(tClockQuality::kDefaultClockClass, tClockQuality::kAccuracyUnknown,
                        tClockQuality::kDefaultOffsetScaledLogVariance),
          kDefaultPriority, kDefaultPriority, 0, false})
{
}

tTrace& tDefaultDS::trace(tTrace& a_trace)
{
    traceUnsigned(a_trace, "twoStepFlag: ", m_values.m_twoStepFlag);
    traceMember(a_trace, " clockIdentity: ", m_values.m_clockIdentity);
    traceUnsigned(a_trace, " numberPorts: ", m_values.m_numberPorts);
    traceMember(a_trace, " clockQuality: ", m_values.m_clockQuality);
    traceUnsigned(a_trace, " priority1: ", m_values.m_priority1);
    traceUnsigned(a_trace, " priority2: ", m_values.m_priority2);
    traceUnsigned(a_trace, " domainNumber: ", m_values.m_domainNumber);
    return traceUnsigned(a_trace, " slaveOnly: ", m_values.m_slaveOnly);
}

} // namespace nOrvPTP000
