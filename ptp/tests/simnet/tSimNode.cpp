#include "tSimNode.h"

#include "orvptp/tNodeEvents.h"

#include <cstdio>
#include <cstdlib>
#include <future>
#include <sstream>

namespace nSimNet
{

using namespace nOrvTarn000;
using namespace nOrvPTP000;

namespace
{

// A dispatcher that has not run an event within this bound is hung; the
// waiting test cannot go on safely, since the event refers to its frame.
const std::chrono::seconds kDispatcherBound(30);

// Runs a piece of test code on the dispatcher thread, and gives the status
// code it ended with; an event that is abandoned or deleted unrun gives
// kStatusCancelled.
class tCallEvent : public iPTPEvent
{
public:
    tCallEvent(tPTPNode* a_pNode, const std::function<void(tPTPNode&, tStatus&)>& a_work)
        : m_pNode(a_pNode), m_work(a_work)
    {
    }
    ~tCallEvent() override { finish(kStatusCancelled); }
    bool allowedWhenStopped() override { return true; }
    void execute(tStatus&) override
    {
        tStatus status;
        m_work(*m_pNode, status);
        finish(status.getCode());
    }
    void abandon(tStatus&) override { finish(kStatusCancelled); }
    std::future<i32> result() { return m_code.get_future(); }

private:
    void finish(i32 a_code)
    {
        if (!m_finished)
        {
            m_finished = true;
            m_code.set_value(a_code);
        }
    }

    tPTPNode* m_pNode;
    std::function<void(tPTPNode&, tStatus&)> m_work;
    std::promise<i32> m_code;
    bool m_finished = false;
};

template <typename T>
T readOnDispatcher(tSimNode& a_node, T (*a_read)(tPTPNode&))
{
    std::shared_ptr<T> pValue(new T());
    tStatus status;
    a_node.runOnDispatcher(
        [pValue, a_read](tPTPNode& a_rNode, tStatus&) { *pValue = a_read(a_rNode); }, status);
    return *pValue;
}

} // namespace

tClockIdentity makeClockIdentity(u8 a_number)
{
    const u8 bytes[8] = {0x00, 0x00, 0x00, 0xFF, 0xFE, 0x00, 0x00, a_number};
    return tClockIdentity(bytes);
}

const char* stateName(u8 a_state)
{
    // By code; PRE_MASTER (5) does not occur.
    static const char* const kNames[] = {
        "STOPPED", "INITIALIZING", "FAULTY",  "DISABLED",     "LISTENING",
        "?",       "MASTER",       "PASSIVE", "UNCALIBRATED", "SLAVE"};
    return a_state < sizeof(kNames) / sizeof(kNames[0]) ? kNames[a_state] : "?";
}

tSimNode::tSimNode(tSimNetwork& a_network, const tClockIdentity& a_identity, i64 a_clockOffsetNs)
    : m_network(a_network), m_id(a_network.addEndpoint(a_clockOffsetNs)), m_identity(a_identity),
      m_state(kPortStateStopped), m_autoCalibrate(true)
{
    tStatus status;
    m_pNode.reset(new tPTPNode(m_network.getMessaging(m_id), m_network.getTimestamps(m_id),
                               m_network.getTimekeeper(m_id), a_identity, m_network.getClock(),
                               status));
    m_network.getTimekeeper(m_id)->setProbe(m_pNode.get());
    // Both survive every start: the checks come from outside from now on.
    m_pNode->writeProperty<EXTERNAL_CHECKS>(true, status);
    m_pNode->writeProperty<ADD_PORT_STATE_OBSERVER>(this, status);
    if (status.isFatal())
    {
        std::fprintf(stderr, "simnet: node %u could not be built (%d)\n", m_id, status.getCode());
        std::abort();
    }
}

tSimNode::~tSimNode()
{
    tStatus status;
    if (getState() != kPortStateStopped)
    {
        m_pNode->stopClock(status);
    }
    // The node's destructor joins its threads; the observer and the probe
    // (this object and the network's timekeeper) outlive it.
    m_pNode.reset();
}

void tSimNode::start(tStatus& a_status)
{
    m_pNode->startClock(a_status);
    completeInitialization(a_status);
}

void tSimNode::stop(tStatus& a_status)
{
    m_pNode->stopClock(a_status);
}

void tSimNode::completeInitialization(tStatus& a_status)
{
    configure(a_status);
    m_pNode->postInitializedCheck(a_status);
}

void tSimNode::configure(tStatus& a_status)
{
    const tNodeSettings s = m_settings;
    runOnDispatcher(
        [s](tPTPNode& a_rNode, tStatus& a_rStatus)
        {
            a_rNode.setPriority1(s.m_priority1, a_rStatus, 0);
            a_rNode.setPriority2(s.m_priority2, a_rStatus, 0);
            a_rNode.setClockClass(s.m_clockClass, a_rStatus, 0);
            a_rNode.setClockAccuracy(s.m_clockAccuracy, a_rStatus, 0);
            a_rNode.setOffsetScaledLogVariance(s.m_offsetScaledLogVariance, a_rStatus, 0);
            a_rNode.setDomainNumber(s.m_domainNumber, a_rStatus, 0);
            a_rNode.setSlaveOnly(s.m_slaveOnly, a_rStatus, 0);
            a_rNode.setLogAnnounceInterval(1, s.m_logAnnounceInterval, a_rStatus, 0);
            a_rNode.setAnnounceReceiptTimeout(1, s.m_announceReceiptTimeout, a_rStatus, 0);
            a_rNode.setLogSyncInterval(1, s.m_logSyncInterval, a_rStatus, 0);
            a_rNode.setLogMinDelayReqInterval(1, s.m_logMinDelayReqInterval, a_rStatus, 0);
        },
        a_status);
}

bool tSimNode::runOnDispatcher(const std::function<void(tPTPNode&, tStatus&)>& a_work,
                               tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return false;
    }
    std::unique_ptr<tCallEvent> pEvent(new tCallEvent(m_pNode.get(), a_work));
    std::future<i32> result = pEvent->result();
    tStatus postStatus;
    if (!m_pNode->postEvent(std::move(pEvent), postStatus))
    {
        a_status.mergeFrom(postStatus);
        return false;
    }
    if (result.wait_for(kDispatcherBound) != std::future_status::ready)
    {
        std::fprintf(stderr, "simnet: the dispatcher of node %u is hung\n", m_id);
        std::abort();
    }
    const i32 code = result.get();
    if (code != 0)
    {
        ORVTARN_SET_CODE(a_status, code);
    }
    return code >= 0;
}

u8 tSimNode::getState()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_state;
}

std::vector<tTransition> tSimNode::getTransitions()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_transitions;
}

size_t tSimNode::getTransitionCount()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_transitions.size();
}

bool tSimNode::waitForState(u8 a_state, tBound a_bound)
{
    return m_network.waitUntil([this, a_state] { return getState() == a_state; }, a_bound);
}

bool tSimNode::waitForEntry(u8 a_state, size_t a_first, tBound a_bound)
{
    return m_network.waitUntil(
        [this, a_state, a_first]
        {
            const std::vector<tTransition> transitions = getTransitions();
            for (size_t i = a_first; i < transitions.size(); ++i)
            {
                if (transitions[i].m_newState == a_state)
                {
                    return true;
                }
            }
            return false;
        },
        a_bound);
}

void tSimNode::setAutoCalibrate(bool a_on)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_autoCalibrate = a_on;
}

i64 tSimNode::getOffsetFromMaster()
{
    return readOnDispatcher<i64>(*this, [](tPTPNode& a_rNode)
                                 { return a_rNode.getOffsetFromMaster().getScaledNanoseconds(); });
}

i64 tSimNode::getMeanPathDelay()
{
    return readOnDispatcher<i64>(*this, [](tPTPNode& a_rNode)
                                 { return a_rNode.getMeanPathDelay().getScaledNanoseconds(); });
}

tClockIdentity tSimNode::getParentClockIdentity()
{
    return readOnDispatcher<tClockIdentity>(*this, [](tPTPNode& a_rNode)
                                            { return a_rNode.getParentClockIdentity(); });
}

tClockIdentity tSimNode::getGrandmasterIdentity()
{
    return readOnDispatcher<tClockIdentity>(*this, [](tPTPNode& a_rNode)
                                            { return a_rNode.getGrandmasterIdentity(); });
}

std::string tSimNode::describe()
{
    std::ostringstream text;
    text << "clock " << static_cast<unsigned>(m_identity.getBytes()[7]) << ": "
         << stateName(getState()) << ", parent "
         << static_cast<unsigned>(getParentClockIdentity().getBytes()[7]) << " (";
    for (const tTransition& t : getTransitions())
    {
        text << " " << stateName(t.m_oldState) << "->" << stateName(t.m_newState);
    }
    text << " )";
    return text.str();
}

void tSimNode::portStateChanged(i32 a_newState, i32 a_oldState)
{
    bool calibrate = false;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_state = static_cast<u8>(a_newState);
        m_transitions.push_back(
            tTransition{static_cast<u8>(a_newState), static_cast<u8>(a_oldState)});
        calibrate = m_autoCalibrate && a_newState == kPortStateUncalibrated;
    }
    if (calibrate)
    {
        // Only posts: an observer must not wait for the dispatcher it runs on.
        tStatus status;
        m_pNode->postMasterClockSelectedCheck(status);
    }
}

std::string describeAll(const std::vector<tSimNode*>& a_nodes)
{
    std::string text;
    for (tSimNode* pNode : a_nodes)
    {
        text += pNode->describe() + "\n";
    }
    return text;
}

} // namespace nSimNet
