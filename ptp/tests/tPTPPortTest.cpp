// The state-object seam: transitionTo hands over the next state only when it
// exists and nothing failed, as when a state's constructor fails. The node
// tests on the simulated network cover the rest of the port behaviour.
#include "orvptp/iPTPPort.h"

#include <gtest/gtest.h>

using namespace nOrvPTP000;
using nOrvTarn000::tStatus;

namespace
{

class tTestPort : public iPTPPort
{
public:
    explicit tTestPort(u8 a_state, bool* a_pDeleted = nullptr)
        : iPTPPort(nullptr, nullptr, nullptr), m_state(a_state), m_pDeleted(a_pDeleted)
    {
    }
    ~tTestPort() override
    {
        if (m_pDeleted != nullptr)
        {
            *m_pDeleted = true;
        }
    }
    u8 getState() override { return m_state; }

private:
    u8 m_state;
    bool* m_pDeleted;
};

TEST(PTPPortTest, MissingNextStateKeepsThisOneAndReportsMemory)
{
    tTestPort port(kPortStateSlave);
    tStatus status;
    EXPECT_EQ(port.transitionTo(nullptr, status), &port);
    EXPECT_EQ(status.getCode(), nOrvTarn000::kStatusMemoryFull);
}

TEST(PTPPortTest, FailedTransitionDeletesTheNextStateAndKeepsTheFirstCode)
{
    tTestPort port(kPortStateSlave);
    bool deleted = false;
    tStatus status;
    ORVTARN_SET_CODE(status, nOrvTarn000::kStatusSystemError);
    EXPECT_EQ(port.transitionTo(
                  std::unique_ptr<iPTPPort>(new tTestPort(kPortStateFaulty, &deleted)), status),
              &port);
    EXPECT_TRUE(deleted);
    EXPECT_EQ(status.getCode(), nOrvTarn000::kStatusSystemError);
}

} // namespace
