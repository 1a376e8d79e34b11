#pragma once
#include "orvtarn/protons/status/tStatus.h"

namespace nOrvPTP000
{

// The body of every plain status-taking setter: a fatal status changes nothing.
template <typename T>
inline void setUnlessFatal(T& a_rMember, const T& a_value, const nOrvTarn000::tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        a_rMember = a_value;
    }
}

} // namespace nOrvPTP000
