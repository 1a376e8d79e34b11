#pragma once
#include "orvptp/tSetUnlessFatal.h"
#include "orvtarn/protons/status/iTraceable.h"

namespace nOrvPTP000
{

// The common shape of a data set that can fall back to where it started: the
// working values, and a copy of them taken at construction that
// resetToInitial brings back. tValues is a plain struct of the fields.
template <typename tValues>
class tResettableDataSet : public nOrvTarn000::iTraceable
{
public:
    // Every field takes its constructed value again.
    void resetToInitial(nOrvTarn000::tStatus& a_status)
    {
        setUnlessFatal(m_values, m_initial, a_status);
    }

protected:
    explicit tResettableDataSet(const tValues& a_initial)
        : m_values(a_initial), m_initial(a_initial)
    {
    }

    // The body of every field setter: a fatal status changes nothing.
    template <typename T>
    void set(T tValues::*a_pField, const T& a_value, const nOrvTarn000::tStatus& a_status)
    {
        setUnlessFatal(m_values.*a_pField, a_value, a_status);
    }

    tValues m_values;

private:
    tValues m_initial;
};

} // namespace nOrvPTP000
