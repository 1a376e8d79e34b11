#pragma once
#include "orvptp/tPTPMessage.h"

namespace nOrvPTP000
{

// Turns a received datagram into the message object of its type.
class tPTPMessageFactory
{
public:
    // Parses the datagram from the read position of a_target to the end of its
    // data and returns the message, which the caller owns, or null with:
    //   kStatusOutOfBounds    fewer than 34 octets, or a body cut short;
    //   kStatusNotSupported   a versionPTP other than 2 (the body is not read);
    //   kStatusInvalidArgument a message type that this clock does not take
    //                         (peer delay, unassigned values);
    //   kStatusMemoryFull.
    // messageLength is not consulted. Nothing stays allocated on failure.
    static tPTPMessage* createMessage(iSerializableTarget& a_target,
                                      nOrvTarn000::tStatus& a_status);

private:
    // The one place where a messageType chooses its class. Returns the new
    // message, which then owns a_pHeader, or null, in which case a_pHeader is
    // still the caller's.
    static tPTPMessage* newMessageOfType(tMessageHeader* a_pHeader, iSerializableTarget& a_target,
                                         nOrvTarn000::tStatus& a_status);
};

} // namespace nOrvPTP000
