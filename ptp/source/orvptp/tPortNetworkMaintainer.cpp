#include "orvptp/tPortNetworkMaintainer.h"

#include "orvptp/tNodeEvents.h"
#include "orvptp/tProtocolDataUnit.h"
#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/quarks/tMutexGuard.h"

namespace nOrvPTP000
{

using namespace nOrvTarn000;

tPortNetworkMaintainer::tPortNetworkMaintainer(iPTPPortMessaging* a_pMessaging,
                                               tPTPDispatcher* a_pDispatcher, tStatus& a_status)
    : m_pMessaging(a_pMessaging), m_pDispatcher(a_pDispatcher), m_sendMutex(a_status),
      m_pNode(nullptr), m_stopping(false), m_running(false)
{
}

tPortNetworkMaintainer::~tPortNetworkMaintainer()
{
    if (!m_stopping)
    {
        tStatus status;
        stop(status);
    }
}

void tPortNetworkMaintainer::start(iPTPNode* a_pNode, tStatus& a_status)
{
    if (m_running || a_status.isFatal())
    {
        return;
    }
    m_pNode = a_pNode;
    m_stopping = false;
    m_pMessaging->open(a_status);
    if (a_status.isFatal())
    {
        return;
    }
    m_running = true;
    m_threadStatus.clear();
    m_thread.start(this, 0, ORVTARN_COMPONENT, m_threadStatus);
    // Without its thread nothing would ever be received: report it, so that
    // the port goes FAULTY, and leave the sockets closed.
    if (m_threadStatus.isFatal())
    {
        m_running = false;
        tStatus closeStatus;
        m_pMessaging->close(closeStatus);
        a_status.mergeFrom(m_threadStatus);
    }
}

void tPortNetworkMaintainer::stop(tStatus& a_status)
{
    if (a_status.isFatal() || !m_running)
    {
        return;
    }
    m_stopping = true;
    m_running = false;
    tStatus cancelStatus;
    m_pMessaging->cancelReceive(cancelStatus);
    m_pMessaging->close(a_status);
    m_thread.join();
}

void tPortNetworkMaintainer::sendEvent(tProtocolDataUnit& a_rPacket, tStatus& a_status)
{
    send(&iPTPPortMessaging::sendEventMessage, a_rPacket, a_status);
}

void tPortNetworkMaintainer::sendGeneral(tProtocolDataUnit& a_rPacket, tStatus& a_status)
{
    send(&iPTPPortMessaging::sendGeneralMessage, a_rPacket, a_status);
}

void tPortNetworkMaintainer::send(void (iPTPPortMessaging::*a_send)(tProtocolDataUnit&, tStatus&),
                                  tProtocolDataUnit& a_rPacket, tStatus& a_status)
{
    if (!m_running)
    {
        ORVTARN_SET_CODE(a_status, kStatusInvalidState);
        return;
    }
    if (a_status.isFatal())
    {
        return;
    }
    {
        tMutexGuard guard(m_sendMutex, a_status);
        if (a_status.isNotFatal())
        {
            (m_pMessaging->*a_send)(a_rPacket, a_status);
        }
    }
    if (a_status.isFatal())
    {
        a_status.clear();
        postNetworkError(a_status);
    }
}

// Posts one network error event; a refused post releases the event and
// leaves its failure in a_status.
void tPortNetworkMaintainer::postNetworkError(tStatus& a_status)
{
    m_pDispatcher->postEvent(makeOwned<tSignalNetworkErrorEvent>(a_status, m_pNode), a_status);
}

void tPortNetworkMaintainer::run(tStatus& a_status)
{
    if (m_stopping)
    {
        return;
    }
    // A failure of the receive or of the post, or no memory for either,
    // ends the loop; a refused post releases the packet with the event.
    while (a_status.isNotFatal())
    {
        std::unique_ptr<tProtocolDataUnit> pPacket =
            makeOwned<tProtocolDataUnit>(a_status, a_status);
        if (pPacket != nullptr)
        {
            m_pMessaging->receiveMessage(*pPacket, a_status);
        }
        m_pDispatcher->postEvent(
            makeOwned<tPTPPacketReceivedEvent>(a_status, m_pNode, std::move(pPacket)), a_status);
        if (m_stopping)
        {
            return;
        }
    }
    if (a_status.getCode() == kStatusCancelled)
    {
        return;
    }
    a_status.clear();
    tStatus postStatus;
    postNetworkError(postStatus);
}

} // namespace nOrvPTP000
