#pragma once
#include "orvptp/iPTPTimestampGenerator.h"
#include "orvptp/tPortIdentity.h"
#include "orvtarn/quarks/tMutex.h"
#include "tFixedSizeFifo.h"

namespace nZelmarPtpPlugin_1_0
{

// One software timestamp with the key of its message.
struct tTimestampRecord
{
    // The message's controlField when it is 0, 1, 2, 3 or 5; -1 otherwise,
    // and in an empty record.
    i32 m_control = -1;
    u32 m_sequenceId = 0;
    nOrvPTP000::tPortIdentity m_sender;
    nOrvPTP000::tTimestamp m_time;
};

// Where the messaging leaves the times at which event messages crossed the
// socket, and where the node picks them up later on its own thread. A message
// is known by its sourcePortIdentity, controlField and sequenceId, read
// straight from its bytes: another clock's Sync with the same sequenceId,
// which the node drops without asking for its time, must not lend its time to
// the master's.
//
// Each direction keeps the last kCapacity records. Recording never fails for
// lack of room: the oldest record gives way. A fetch consumes every record up
// to and including the match, so records nobody asked for do not pile up; a
// fetch that finds nothing empties its FIFO.
class tTimestampGenerator : public nOrvPTP000::iPTPTimestampGenerator
{
public:
    enum : u32
    {
        kCapacity = 10,
        kSourcePortIdentityOffset = 20,
        kSequenceIdOffset = 30,
        kControlFieldOffset = 32
    };

    explicit tTimestampGenerator(nOrvTarn000::tStatus& a_status);
    ~tTimestampGenerator() override {}

    // a_rTime is left alone when the result is false. A datagram too short to
    // hold the key matches nothing, with a clean status.
    bool getReceiveTimestamp(nOrvPTP000::tProtocolDataUnit& a_rPdu, nOrvPTP000::tTimestamp& a_rTime,
                             nOrvTarn000::tStatus& a_status) override;
    bool getTransmitTimestamp(nOrvPTP000::tProtocolDataUnit& a_rPdu,
                              nOrvPTP000::tTimestamp& a_rTime,
                              nOrvTarn000::tStatus& a_status) override;
    // A datagram too short to hold the key is not recorded, with a clean
    // status: it is no PTP message, and the node drops it when it parses it.
    void recordReceiveTimestamp(nOrvPTP000::tProtocolDataUnit& a_rPdu,
                                const nOrvPTP000::tTimestamp& a_rTime,
                                nOrvTarn000::tStatus& a_status) override;
    void recordTransmitTimestamp(nOrvPTP000::tProtocolDataUnit& a_rPdu,
                                 const nOrvPTP000::tTimestamp& a_rTime,
                                 nOrvTarn000::tStatus& a_status) override;

private:
    typedef zelmarPluginCore_1_0::tFixedSizeFifo<tTimestampRecord> tRecords;

    void record(tRecords& a_rRecords, nOrvPTP000::tProtocolDataUnit& a_rPdu,
                const nOrvPTP000::tTimestamp& a_rTime, nOrvTarn000::tStatus& a_status);
    bool fetch(tRecords& a_rRecords, nOrvPTP000::tProtocolDataUnit& a_rPdu,
               nOrvPTP000::tTimestamp& a_rTime, nOrvTarn000::tStatus& a_status);

    tRecords m_receiveRecords;
    tRecords m_transmitRecords;
    nOrvTarn000::tMutex m_mutex;
};

} // namespace nZelmarPtpPlugin_1_0
