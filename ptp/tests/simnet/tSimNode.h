#pragma once
// One real tPTPNode on a tSimNetwork, driven as the plug-in drives it: the
// initialized and master-clock-selected checks come from outside. The node's
// settings are written after each start (a start resets the data sets) and
// before the initialized check lets the port leave INITIALIZING; an
// UNCALIBRATED port is let on to SLAVE at once, unless that is switched off.
#include "tSimNetwork.h"

#include "orvptp/iPortStateObserver.h"
#include "orvptp/tPTPNode.h"
#include "orvptp/tPortStateCodes.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace nSimNet
{

using nOrvPTP000::tClockIdentity;
using nOrvPTP000::tPTPNode;

// What is written into the node's data sets before it decides anything. The
// intervals are short, so that a scenario settles in about a second.
struct tNodeSettings
{
    u8 m_priority1 = 128;
    u8 m_priority2 = 128;
    u8 m_clockClass = 248;
    u8 m_clockAccuracy = 0xFE;
    u16 m_offsetScaledLogVariance = 0xFFFF;
    u8 m_domainNumber = 0;
    bool m_slaveOnly = false;
    i8 m_logAnnounceInterval = -3;
    u8 m_announceReceiptTimeout = 3;
    i8 m_logSyncInterval = -4;
    i8 m_logMinDelayReqInterval = -4;
};

struct tTransition
{
    u8 m_newState;
    u8 m_oldState;
};

// A clock identity from a small number, as 00-00-00-FF-FE-00-00-nn would be.
tClockIdentity makeClockIdentity(u8 a_number);
const char* stateName(u8 a_state);

class tSimNode : public nOrvPTP000::iPortStateObserver
{
public:
    typedef tSimNetwork::tBound tBound;

    // Adds an endpoint with the given clock offset and builds the node on it.
    tSimNode(tSimNetwork& a_network, const tClockIdentity& a_identity, i64 a_clockOffsetNs = 0);
    ~tSimNode() override;
    tSimNode(const tSimNode&) = delete;
    tSimNode& operator=(const tSimNode&) = delete;

    u32 getId() const { return m_id; }
    const tClockIdentity& getIdentity() const { return m_identity; }
    tPTPNode& node() { return *m_pNode; }
    tNodeSettings& settings() { return m_settings; }

    // Starts the clock and completes its initialisation with the settings.
    void start(tStatus& a_status);
    void stop(tStatus& a_status);
    // Writes the settings, then lets the port leave INITIALIZING: what the
    // plug-in does each time the port reports INITIALIZING.
    void completeInitialization(tStatus& a_status);
    // Writes the settings through the typed setters, on the dispatcher thread.
    void configure(tStatus& a_status);

    // Runs a_work on the node's dispatcher thread and waits for it (bounded).
    // False, with kStatusTimedOut, if it did not finish within the bound.
    bool runOnDispatcher(const std::function<void(tPTPNode&, tStatus&)>& a_work, tStatus& a_status);

    // The state as the last notification told it (0 before the first).
    u8 getState();
    std::vector<tTransition> getTransitions();
    size_t getTransitionCount();
    bool waitForState(u8 a_state, tBound a_bound);
    // Waits until one of the transitions from number a_first on (counting
    // from 0) enters a_state, however briefly the port stayed there.
    bool waitForEntry(u8 a_state, size_t a_first, tBound a_bound);
    // When on (the default), each entry into UNCALIBRATED posts the master
    // clock selected check, as the plug-in's calibration would.
    void setAutoCalibrate(bool a_on);

    // Data-set fields, read on the dispatcher thread.
    i64 getOffsetFromMaster();
    i64 getMeanPathDelay();
    tClockIdentity getParentClockIdentity();
    tClockIdentity getGrandmasterIdentity();

    std::vector<tSample> getSamples() { return m_network.getSamples(m_id); }
    std::string describe();

    void portStateChanged(i32 a_newState, i32 a_oldState) override;

private:
    tSimNetwork& m_network;
    u32 m_id;
    tClockIdentity m_identity;
    tNodeSettings m_settings;
    std::unique_ptr<tPTPNode> m_pNode;
    std::mutex m_mutex;
    u8 m_state;
    bool m_autoCalibrate;
    std::vector<tTransition> m_transitions;
};

std::string describeAll(const std::vector<tSimNode*>& a_nodes);

} // namespace nSimNet
