// Every port state against every port event, on a real node: the state
// reached after the event, and no notice when the port stays. A better master
// runs where a state needs one; PASSIVE comes from a local clock of class 6,
// which gives way to a better master without following it. No simulated
// time passes between reaching a state and the event, so no timer interferes.
#include "tScenario.h"

#include "orvptp/tNodeEvents.h"

#include <string>
#include <tuple>

using namespace nSimNet;
using namespace nOrvPTP000;

namespace
{

template <typename tEventClass>
iPTPEvent* make(iPTPNode* a_pNode)
{
    return new tEventClass(a_pNode);
}

struct tPortEvent
{
    const char* m_name;
    iPTPEvent* (*m_make)(iPTPNode*); // null: stopClock
};

const tPortEvent kEvents[] = {
    {"StopClock", nullptr},
    {"InitializePort", make<tInitializePortEvent>},
    {"InitializedCheck", make<tInitializedCheckEvent>},
    {"FaultCleared", make<tSignalFaultClearedEvent>},
    {"FaultDetected", make<tSignalFaultDetectedEvent>},
    {"NetworkError", make<tSignalNetworkErrorEvent>},
    {"DesignatedEnabled", make<tDesignatePortEnabledEvent>},
    {"DesignatedDisabled", make<tDesignatePortDisabledEvent>},
    {"StateDecision", make<tStateDecisionEvent>},
    {"AnnounceReceiptTimeout", make<tInitialAnnounceTimeoutEvent>},
    {"SyncFault", make<tSignalSyncFaultEvent>},
    {"MasterClockSelected", make<tMasterClockSelectedCheckEvent>},
};
constexpr size_t kEventCount = sizeof(kEvents) / sizeof(kEvents[0]);

const u8 S = kPortStateStopped, I = kPortStateInitializing, F = kPortStateFaulty,
         D = kPortStateDisabled, L = kPortStateListening, M = kPortStateMaster,
         P = kPortStatePassive, U = kPortStateUncalibrated, Z = kPortStateSlave;

// The state after each event, in the order of kEvents.
const u8 kTable[][1 + kEventCount] = {
    {S, S, S, S, S, S, S, S, S, S, S, S, S}, {I, S, I, L, I, I, F, I, I, I, I, I, I},
    {F, S, I, F, I, F, F, F, D, F, F, F, F}, {D, S, I, D, D, D, D, I, D, D, D, D, D},
    {L, S, I, L, L, F, F, L, D, L, M, L, L}, {M, S, I, M, M, F, F, M, D, M, M, M, M},
    {P, S, I, P, P, F, F, P, D, P, M, P, P}, {U, S, I, U, U, F, F, U, D, U, U, U, Z},
    {Z, S, I, Z, Z, F, F, Z, D, Z, M, U, Z},
};

class PortStateTable : public tScenario, public ::testing::WithParamInterface<std::tuple<int, int>>
{
protected:
    void reach(tSimNode& a_node, u8 a_state)
    {
        tStatus status;
        const bool withMaster = a_state == P || a_state == U || a_state == Z;
        if (withMaster)
        {
            tNodeSettings better;
            better.m_priority1 = 100;
            start(addClock(2, better));
        }
        a_node.setAutoCalibrate(a_state == Z);
        if (a_state == I)
        {
            a_node.node().startClock(status);
        }
        else if (a_state != S)
        {
            start(a_node);
        }
        if (a_state == F)
        {
            a_node.node().signalFaultDetected(status);
        }
        else if (a_state == D)
        {
            a_node.node().designatePortDisabled(status);
        }
        ASSERT_EQ(status.getCode(), 0);
        ASSERT_TRUE(a_node.waitForState(a_state, kSettleBound)) << describeAll(all());
        // A sync fault's way back to SLAVE is the calibration's business.
        a_node.setAutoCalibrate(false);
    }
};

TEST_P(PortStateTable, EventLeadsToItsState)
{
    const u8* row = kTable[std::get<0>(GetParam())];
    const int column = std::get<1>(GetParam());
    const tPortEvent& event = kEvents[column];
    tNodeSettings settings;
    settings.m_clockClass = row[0] == P ? 6 : 248;
    tSimNode& node = addClock(1, settings);
    reach(node, row[0]);
    if (HasFatalFailure())
    {
        return;
    }
    const size_t before = node.getTransitionCount();

    tStatus status;
    if (event.m_make == nullptr)
    {
        node.node().stopClock(status);
    }
    else
    {
        // A stopped clock refuses the event: that, too, leaves it stopped.
        node.node().postEvent(std::unique_ptr<iPTPEvent>(event.m_make(&node.node())), status);
    }
    settle();
    // The first state the event leads to: a port may leave it again at once,
    // as a slave's sync fault arms the selected check at delay 0.
    const std::vector<tTransition> transitions = node.getTransitions();
    const u8 reached = transitions.size() > before ? transitions[before].m_newState : row[0];
    EXPECT_EQ(reached, row[1 + column]) << describeAll(all());
    if (row[1 + column] == row[0])
    {
        EXPECT_EQ(transitions.size(), before) << "a port that stays tells nobody";
    }
}

std::string caseName(const ::testing::TestParamInfo<std::tuple<int, int>>& a_info)
{
    // "In": a name that begins with DISABLED_ would switch the case off.
    return std::string("In") + stateName(kTable[std::get<0>(a_info.param)][0]) + "_" +
           kEvents[std::get<1>(a_info.param)].m_name;
}

INSTANTIATE_TEST_SUITE_P(AllStatesAndEvents, PortStateTable,
                         ::testing::Combine(::testing::Range(0, 9),
                                            ::testing::Range(0, static_cast<int>(kEventCount))),
                         caseName);

} // namespace
