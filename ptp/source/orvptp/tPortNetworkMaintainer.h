#pragma once
#include "orvptp/iPTPNode.h"
#include "orvptp/iPTPPortMessaging.h"
#include "orvptp/tPTPDispatcher.h"
#include "orvtarn/protons/thread/iThread.h"
#include "orvtarn/protons/thread/tThreadController.h"
#include "orvtarn/quarks/tMutex.h"

#include <atomic>

namespace nOrvPTP000
{

// Stands between the messaging and the engine: its thread blocks in receive
// and posts each datagram as an event; sends are serialised; and every
// failure of the network, receiving or sending, reaches the port as one
// tSignalNetworkErrorEvent, in order, on the dispatcher thread.
//
// Idle (not running, sockets closed), Running (thread in receive, sockets
// open) and Failed (thread ended after a receive failure, sockets open until
// stop). start and stop run on the dispatcher thread only.
class tPortNetworkMaintainer : public nOrvTarn000::iThread
{
public:
    tPortNetworkMaintainer(iPTPPortMessaging* a_pMessaging, tPTPDispatcher* a_pDispatcher,
                           tStatus& a_status);
    ~tPortNetworkMaintainer() override;
    tPortNetworkMaintainer(const tPortNetworkMaintainer&) = delete;
    tPortNetworkMaintainer& operator=(const tPortNetworkMaintainer&) = delete;

    // Opens the messaging and starts the receive thread; nothing when running.
    void start(iPTPNode* a_pNode, tStatus& a_status);
    // Cancels the receive, closes the messaging and joins the thread.
    void stop(tStatus& a_status);
    bool isRunning() const { return m_running; }

    // A clean status says nothing about whether the datagram left: a failed
    // send is reported as a network error event. Not running: -52010.
    void sendEvent(tProtocolDataUnit& a_rPacket, tStatus& a_status);
    void sendGeneral(tProtocolDataUnit& a_rPacket, tStatus& a_status);

    void run(tStatus& a_status) override;

private:
    void send(void (iPTPPortMessaging::*a_send)(tProtocolDataUnit&, tStatus&),
              tProtocolDataUnit& a_rPacket, tStatus& a_status);
    void postNetworkError(tStatus& a_status);

    iPTPPortMessaging* m_pMessaging;
    tPTPDispatcher* m_pDispatcher;
    tStatus m_threadStatus;
    nOrvTarn000::tThreadController m_thread;
    nOrvTarn000::tMutex m_sendMutex;
    iPTPNode* m_pNode;
    std::atomic<bool> m_stopping;
    std::atomic<bool> m_running;
};

} // namespace nOrvPTP000
