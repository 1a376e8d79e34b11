#pragma once
#include "orvptp/tPTPMessage.h"

#include <memory>

namespace nOrvPTP000
{

// Turns a received datagram into the message object of its type.
class tPTPMessageFactory
{
public:
    // Parses the datagram from the read position of a_target to the end of its
    // data and returns the message, or null with:
    //   kStatusOutOfBounds    fewer than 34 octets, or a body cut short;
    //   kStatusNotSupported   a versionPTP other than 2 (the body is not read),
    //                         or a management actionField above 4;
    //   kStatusInvalidArgument a message type that this clock does not take
    //                         (peer delay, unassigned values);
    //   kStatusMemoryFull.
    // messageLength is not consulted. Nothing stays allocated on failure.
    [[nodiscard]] static std::unique_ptr<tPTPMessage> createMessage(iSerializableTarget& a_target,
                                                                    nOrvTarn000::tStatus& a_status);

private:
    // The one place where a messageType chooses its class; the message keeps
    // the header.
    static std::unique_ptr<tPTPMessage> newMessageOfType(std::unique_ptr<tMessageHeader> a_pHeader,
                                                         iSerializableTarget& a_target,
                                                         nOrvTarn000::tStatus& a_status);
};

} // namespace nOrvPTP000
