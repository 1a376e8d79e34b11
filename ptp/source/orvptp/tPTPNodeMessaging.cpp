#include "orvptp/tPTPNode.h"
#include "orvptp/tProtocolDataUnit.h"

// Reception and transmission of messages.

namespace nOrvPTP000
{

using namespace nOrvTarn000;

void tPTPNode::handlePacketReceived(tProtocolDataUnit* a_pPacket, tStatus&)
{
    delete a_pPacket;
}

void tPTPNode::handleSendAnnouncePacket(tStatus&)
{
}

void tPTPNode::handleSendSyncPacket(tStatus&)
{
}

void tPTPNode::handleDelayRequestTimer(tStatus& a_status)
{
    armDelayRequestTimer(a_status);
}

} // namespace nOrvPTP000
