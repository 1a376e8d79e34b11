#include "orvptp/tParentDS.h"

#include "orvptp/tDataSetTrace.h"
#include "orvptp/tDefaultDS.h"

using nOrvTarn000::tTrace;

namespace nOrvPTP000
{

tParentDS::tParentDS(const tClockIdentity& a_clockIdentity)
    : tResettableDataSet(tParentDSValues{
          tPortIdentity(a_clockIdentity, 0), false, kUnknownVariance, kUnknownPhaseChangeRate,
          a_clockIdentity,
          tClockQuality(tClockQuality::kDefaultClockClass, tClockQuality::kAccuracyUnknown,
                        tClockQuality::kDefaultOffsetScaledLogVariance),
          tDefaultDS::kDefaultPriority, tDefaultDS::kDefaultPriority})
{
}

tTrace& tParentDS::trace(tTrace& a_trace)
{
    traceMember(a_trace, "parentPortIdentity: ", m_values.m_parentPortIdentity);
    traceUnsigned(a_trace, " parentStats: ", m_values.m_parentStats);
    traceUnsigned(a_trace, " observedParentOffsetScaledLogVariance: ",
                  m_values.m_observedParentOffsetScaledLogVariance);
    traceSigned(a_trace, " observedParentClockPhaseChangeRate: ",
                m_values.m_observedParentClockPhaseChangeRate);
    traceMember(a_trace, " grandmasterIdentity: ", m_values.m_grandmasterIdentity);
    traceMember(a_trace, " grandmasterClockQuality: ", m_values.m_grandmasterClockQuality);
    traceUnsigned(a_trace, " grandmasterPriority1: ", m_values.m_grandmasterPriority1);
    return traceUnsigned(a_trace, " grandmasterPriority2: ", m_values.m_grandmasterPriority2);
}

} // namespace nOrvPTP000
