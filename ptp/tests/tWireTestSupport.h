#pragma once
// Helpers shared by the wire-layer tests: datagrams from literal bytes, the
// bytes a serialisation produced, and a trace that keeps its text.
#include "../../platform/orvtarn/tests/support/tTraceCapture.h"
#include "orvptp/iPTPSerializable.h"
#include "orvptp/tProtocolDataUnit.h"

#include <string>
#include <vector>

namespace nWireTest
{

using tBytes = std::vector<u8>;

inline tBytes bytesOf(const nOrvPTP000::tProtocolDataUnit& a_unit)
{
    return tBytes(a_unit.getData(), a_unit.getData() + a_unit.getLength());
}

// A received datagram: the bytes appended to an empty unit, read from 0.
inline void receive(nOrvPTP000::tProtocolDataUnit& a_unit, const tBytes& a_bytes)
{
    nOrvTarn000::tStatus status;
    a_unit.clear();
    if (!a_bytes.empty())
    {
        a_unit.writeOctets(a_bytes.data(), static_cast<u32>(a_bytes.size()), status);
    }
}

inline tBytes serialized(nOrvPTP000::iPTPSerializable& a_object, nOrvTarn000::tStatus& a_status)
{
    nOrvPTP000::tProtocolDataUnit unit(a_status);
    a_object.serialize(unit, a_status);
    return bytesOf(unit);
}

inline tBytes concat(tBytes a_first, const tBytes& a_second)
{
    a_first.insert(a_first.end(), a_second.begin(), a_second.end());
    return a_first;
}

// The text an object renders, without the line end that hands it over.
inline std::string traceText(nOrvTarn000::iTraceable& a_object)
{
    std::string text = nOrvTarn000::traceLine(a_object);
    text.pop_back();
    return text;
}

} // namespace nWireTest
