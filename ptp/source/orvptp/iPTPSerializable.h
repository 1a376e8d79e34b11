#pragma once
#include "orvptp/iSerializableTarget.h"
#include "orvtarn/protons/status/iTraceable.h"

namespace nOrvPTP000
{

// An object with a wire form. It knows only the abstract target, so the same
// code writes a message for sending and parses a received one.
class iPTPSerializable : public nOrvTarn000::iTraceable
{
public:
    virtual void serialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) = 0;
    virtual void deserialize(iSerializableTarget& a_target, nOrvTarn000::tStatus& a_status) = 0;
    // The length of the wire form in bytes.
    virtual u16 getSize() = 0;
};

} // namespace nOrvPTP000
