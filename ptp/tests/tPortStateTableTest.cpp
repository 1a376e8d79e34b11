// Every port state against every port event, on a real node: the state
// reached after the event, as the port state machine's table gives it. A
// better master is heard where a state needs one (with no foreign master a
// state decision recommends nothing to a listening port); PASSIVE comes from a
// local clock of class 6, which gives way to a better master without
// following it.
#include "tNodeHarness.h"

#include "orvptp/tNodeEvents.h"

#include <string>

using namespace nOrvPTP000;
using namespace nOrvPTP000::nTest;

namespace
{

enum tEventId
{
    kStopClock,
    kInitializePort,
    kInitializedCheck,
    kFaultCleared,
    kFaultDetected,
    kNetworkError,
    kDesignatedEnabled,
    kDesignatedDisabled,
    kStateDecision,
    kAnnounceReceiptTimeout,
    kSyncFault,
    kMasterClockSelected,
    kEventCount
};

const char* const kEventNames[kEventCount] = {
    "StopClock",     "InitializePort",         "InitializedCheck",  "FaultCleared",
    "FaultDetected", "NetworkError",           "DesignatedEnabled", "DesignatedDisabled",
    "StateDecision", "AnnounceReceiptTimeout", "SyncFault",         "MasterClockSelected"};

struct tRow
{
    u8 m_state;
    u8 m_after[kEventCount];
};

const u8 S = kPortStateStopped, I = kPortStateInitializing, F = kPortStateFaulty,
         D = kPortStateDisabled, L = kPortStateListening, M = kPortStateMaster,
         P = kPortStatePassive, U = kPortStateUncalibrated, Z = kPortStateSlave;

// Columns in the order of tEventId.
const tRow kTable[] = {
    {S, {S, S, S, S, S, S, S, S, S, S, S, S}}, {I, {S, I, L, I, I, F, I, I, I, I, I, I}},
    {F, {S, I, F, I, F, F, F, D, F, F, F, F}}, {D, {S, I, D, D, D, D, I, D, D, D, D, D}},
    {L, {S, I, L, L, F, F, L, D, L, M, L, L}}, {M, {S, I, M, M, F, F, M, D, M, M, M, M}},
    {P, {S, I, P, P, F, F, P, D, P, M, P, P}}, {U, {S, I, U, U, F, F, U, D, U, U, U, Z}},
    {Z, {S, I, Z, Z, F, F, Z, D, Z, M, U, Z}},
};

class PortStateTable : public tNodeFixture, public testing::WithParamInterface<std::pair<int, int>>
{
protected:
    // A stopped clock's dispatcher refuses the event: that, too, leaves it stopped.
    template <typename tEventClass>
    void post()
    {
        tStatus status;
        m_node.postEvent(std::unique_ptr<iPTPEvent>(new tEventClass(&m_node)), status);
    }

    void reach(u8 a_state)
    {
        switch (a_state)
        {
        case kPortStateStopped:
            return;
        case kPortStateInitializing:
        {
            setExternalChecks(true);
            tStatus status;
            m_node.startClock(status);
            return;
        }
        case kPortStateFaulty:
            startListening();
            post<tSignalFaultDetectedEvent>();
            break;
        case kPortStateDisabled:
            startListening();
            post<tDesignatePortDisabledEvent>();
            break;
        case kPortStateListening:
            startListening();
            return;
        case kPortStateMaster:
            startListening();
            post<tInitialAnnounceTimeoutEvent>();
            break;
        case kPortStatePassive:
            startListening();
            runOnDispatcher([&](tStatus& a_status) { m_node.setClockClass(6, a_status, 0); });
            hearBetterMaster();
            post<tStateDecisionEvent>();
            break;
        case kPortStateUncalibrated:
        case kPortStateSlave:
            startListening();
            hearBetterMaster();
            post<tStateDecisionEvent>();
            if (a_state == kPortStateSlave)
            {
                ASSERT_TRUE(m_states.waitFor(kPortStateUncalibrated));
                post<tMasterClockSelectedCheckEvent>();
            }
            break;
        }
        ASSERT_TRUE(m_states.waitFor(a_state));
    }

    void fire(int a_event)
    {
        switch (a_event)
        {
        case kStopClock:
        {
            tStatus status;
            m_node.stopClock(status);
            return;
        }
        case kInitializePort:
            return post<tInitializePortEvent>();
        case kInitializedCheck:
            return post<tInitializedCheckEvent>();
        case kFaultCleared:
            return post<tSignalFaultClearedEvent>();
        case kFaultDetected:
            return post<tSignalFaultDetectedEvent>();
        case kNetworkError:
            return post<tSignalNetworkErrorEvent>();
        case kDesignatedEnabled:
            return post<tDesignatePortEnabledEvent>();
        case kDesignatedDisabled:
            return post<tDesignatePortDisabledEvent>();
        case kStateDecision:
            return post<tStateDecisionEvent>();
        case kAnnounceReceiptTimeout:
            return post<tInitialAnnounceTimeoutEvent>();
        case kSyncFault:
            return post<tSignalSyncFaultEvent>();
        case kMasterClockSelected:
            return post<tMasterClockSelectedCheckEvent>();
        }
    }
};

TEST_P(PortStateTable, EventLeadsToItsState)
{
    const tRow& row = kTable[GetParam().first];
    const int event = GetParam().second;
    reach(row.m_state);
    if (HasFatalFailure())
    {
        return;
    }
    // A change is seen by the observer (a state may be left again at once, as
    // UNCALIBRATED after a slave's sync fault); staying is seen by a probe
    // that runs after the event, since events run in order of arrival.
    fire(event);
    if (row.m_after[event] != row.m_state)
    {
        EXPECT_TRUE(m_states.waitFor(row.m_after[event]));
    }
    else
    {
        EXPECT_EQ(row.m_state, portState());
    }
}

std::vector<std::pair<int, int>> allCases()
{
    std::vector<std::pair<int, int>> cases;
    for (int row = 0; row < static_cast<int>(sizeof(kTable) / sizeof(kTable[0])); ++row)
    {
        for (int event = 0; event < kEventCount; ++event)
        {
            cases.push_back(std::make_pair(row, event));
        }
    }
    return cases;
}

std::string caseName(const testing::TestParamInfo<std::pair<int, int>>& a_info)
{
    static const char* const kStateNames[] = {"Stopped",      "Initializing", "Faulty", "Disabled",
                                              "Listening",    "PreMaster",    "Master", "Passive",
                                              "Uncalibrated", "Slave"};
    return std::string(kStateNames[kTable[a_info.param.first].m_state]) + "_" +
           kEventNames[a_info.param.second];
}

INSTANTIATE_TEST_SUITE_P(AllStatesAndEvents, PortStateTable, testing::ValuesIn(allCases()),
                         caseName);

// A slave-only clock never serves: it stays LISTENING when nobody announces
// (its data sets still become its own), and a silent master sends it back
// to LISTENING with the record kept.
TEST_F(tNodeFixture, SlaveOnlyClockNeverServes)
{
    startListening();
    runOnDispatcher([&](tStatus& a_status) { m_node.setSlaveOnly(true, a_status, 0); });
    tStatus status;
    m_node.postEvent(std::unique_ptr<iPTPEvent>(new tInitialAnnounceTimeoutEvent(&m_node)), status);
    m_node.postEvent(std::unique_ptr<iPTPEvent>(new tStateDecisionEvent(&m_node)), status);
    EXPECT_EQ(kPortStateListening, portState());

    hearBetterMaster();
    m_node.postEvent(std::unique_ptr<iPTPEvent>(new tStateDecisionEvent(&m_node)), status);
    ASSERT_TRUE(m_states.waitFor(kPortStateUncalibrated));
    m_node.postMasterClockSelectedCheck(status);
    ASSERT_TRUE(m_states.waitFor(kPortStateSlave));
    m_node.postEvent(std::unique_ptr<iPTPEvent>(new tInitialAnnounceTimeoutEvent(&m_node)), status);
    ASSERT_TRUE(m_states.waitFor(kPortStateListening));
    u32 records = 0;
    runOnDispatcher([&](tStatus& a_status)
                    { records = m_node.getForeignMasterDS(1)->getRecordCount(a_status); });
    EXPECT_EQ(1u, records);
}

} // namespace
