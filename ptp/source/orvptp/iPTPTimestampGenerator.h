#pragma once
#include "orvptp/tProtocolDataUnit.h"
#include "orvptp/tTimestamp.h"

namespace nOrvPTP000
{

// The times at which datagrams crossed the wire. A datagram is recognised by
// its own content; the result tells whether a time was found for it.
class iPTPTimestampGenerator
{
public:
    virtual ~iPTPTimestampGenerator() {}

    virtual bool getReceiveTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime,
                                     nOrvTarn000::tStatus& a_status) = 0;
    virtual bool getTransmitTimestamp(tProtocolDataUnit& a_rPdu, tTimestamp& a_rTime,
                                      nOrvTarn000::tStatus& a_status) = 0;
    // Generators that learn times elsewhere need not record them.
    virtual void recordReceiveTimestamp(tProtocolDataUnit& /*a_rPdu*/,
                                        const tTimestamp& /*a_rTime*/,
                                        nOrvTarn000::tStatus& /*a_status*/)
    {
    }
    virtual void recordTransmitTimestamp(tProtocolDataUnit& /*a_rPdu*/,
                                         const tTimestamp& /*a_rTime*/,
                                         nOrvTarn000::tStatus& /*a_status*/)
    {
    }
};

} // namespace nOrvPTP000
