#include "orvptp/tBMCOutput.h"

#include "orvptp/tAnnounceMessage.h"
#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tAssertion.h"

using nOrvTarn000::kStatusInvalidArgument;
using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

namespace
{

bool isFrom(const tAnnounceMessage* a_pMessage, const tPortIdentity& a_sender)
{
    return a_pMessage != nullptr && a_pMessage->getHeader() != nullptr &&
           a_pMessage->getHeader()->getSourcePortIdentity() == a_sender;
}

} // namespace

tBMCOutput::tBMCOutput(u16 a_numberPorts, tStatus& a_status) : m_numberPorts(0)
{
    if (!REQUIRE(a_numberPorts != 0, kStatusInvalidArgument, a_status))
    {
        return;
    }
    m_pDecisions = nOrvTarn000::makeOwnedArray<tStateDecision>(a_status, a_numberPorts);
    if (m_pDecisions != nullptr)
    {
        m_numberPorts = a_numberPorts;
    }
}

bool tBMCOutput::isPort(u16 a_portNumber, tStatus& a_status) const
{
    return REQUIRE(a_portNumber != 0 && a_portNumber <= m_numberPorts, kStatusInvalidArgument,
                   a_status);
}

tStateDecision tBMCOutput::getDecision(u16 a_portNumber, tStatus& a_status) const
{
    if (!isPort(a_portNumber, a_status) || a_status.isFatal())
    {
        return tStateDecision();
    }
    return m_pDecisions[a_portNumber - 1];
}

void tBMCOutput::setDecision(u16 a_portNumber, const tStateDecision& a_decision, tStatus& a_status)
{
    if (isPort(a_portNumber, a_status) && a_status.isNotFatal())
    {
        m_pDecisions[a_portNumber - 1] = a_decision;
    }
}

void tBMCOutput::replaceMessage(const tAnnounceMessage* a_pNew, tStatus& a_status)
{
    if (a_status.isFatal() || m_numberPorts == 0 || a_pNew == nullptr ||
        a_pNew->getHeader() == nullptr)
    {
        return;
    }
    tStateDecision& first = m_pDecisions[0];
    if (isFrom(first.m_pMessage, a_pNew->getHeader()->getSourcePortIdentity()))
    {
        first.m_pMessage = a_pNew;
    }
}

void tBMCOutput::resetDecision(u16 a_portNumber, tStatus& a_status)
{
    setDecision(a_portNumber, tStateDecision(), a_status);
}

void tBMCOutput::resetAll()
{
    for (u16 i = 0; i < m_numberPorts; ++i)
    {
        m_pDecisions[i] = tStateDecision();
    }
}

void tBMCOutput::resetHolding(const tAnnounceMessage* a_pMessage)
{
    for (u16 i = 0; i < m_numberPorts; ++i)
    {
        if (a_pMessage != nullptr && m_pDecisions[i].m_pMessage == a_pMessage)
        {
            m_pDecisions[i] = tStateDecision();
        }
    }
}

void tBMCOutput::resetFrom(const tPortIdentity& a_sender)
{
    for (u16 i = 0; i < m_numberPorts; ++i)
    {
        if (isFrom(m_pDecisions[i].m_pMessage, a_sender))
        {
            m_pDecisions[i] = tStateDecision();
        }
    }
}

} // namespace nOrvPTP000
