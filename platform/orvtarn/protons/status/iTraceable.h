#pragma once

namespace nOrvTarn000
{

class tTrace;

// An object that renders itself as text inside the current trace line: no
// header, no line end.
class iTraceable
{
public:
    virtual ~iTraceable() {}
    virtual tTrace& trace(tTrace& a_trace) = 0;
};

} // namespace nOrvTarn000
