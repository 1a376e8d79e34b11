#include "orvptp/tNodeEvents.h"

#include "orvptp/tProtocolDataUnit.h"

namespace nOrvPTP000
{

tPTPPacketReceivedEvent::~tPTPPacketReceivedEvent()
{
    delete m_pPacket;
}

void tPTPPacketReceivedEvent::execute(tStatus& a_status)
{
    tProtocolDataUnit* pPacket = m_pPacket;
    m_pPacket = nullptr;
    m_pNode->handlePacketReceived(pPacket, a_status);
}

void tPTPPacketReceivedEvent::abandon(tStatus&)
{
    delete m_pPacket;
    m_pPacket = nullptr;
}

} // namespace nOrvPTP000
