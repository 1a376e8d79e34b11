#include "orvptp/tNodeEvents.h"

#include "orvptp/tProtocolDataUnit.h"

namespace nOrvPTP000
{

tPTPPacketReceivedEvent::tPTPPacketReceivedEvent(iPTPNode* a_pNode,
                                                 std::unique_ptr<tProtocolDataUnit> a_pPacket)
    : m_pNode(a_pNode), m_pPacket(std::move(a_pPacket))
{
}

tPTPPacketReceivedEvent::~tPTPPacketReceivedEvent() = default;

void tPTPPacketReceivedEvent::execute(tStatus& a_status)
{
    m_pNode->handlePacketReceived(std::move(m_pPacket), a_status);
}

void tPTPPacketReceivedEvent::abandon(tStatus&)
{
    m_pPacket.reset();
}

} // namespace nOrvPTP000
