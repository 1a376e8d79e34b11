#pragma once
// The common frame of the scenario tests: one network, clocks added to it by
// number, and waits with generous bounds that report every clock's history
// when they run out.
#include "tSimNode.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace nSimNet
{

// Bounds of waits for something that must happen; they only matter when a
// scenario fails.
const std::chrono::seconds kSettleBound(15);
// How long a clock is watched for something that must not happen. Several
// announce receipt timeouts of the scenarios' settings fit into it.
const std::chrono::milliseconds kQuietBound(800);

class tScenario : public ::testing::Test
{
protected:
    // A clock with identity 00-00-00-FF-FE-00-00-<a_number>.
    tSimNode& addClock(u8 a_number, const tNodeSettings& a_settings = tNodeSettings(),
                       i64 a_clockOffsetNs = 0)
    {
        m_nodes.emplace_back(new tSimNode(m_network, makeClockIdentity(a_number), a_clockOffsetNs));
        m_nodes.back()->settings() = a_settings;
        return *m_nodes.back();
    }

    void start(tSimNode& a_node)
    {
        tStatus status;
        a_node.start(status);
        ASSERT_EQ(status.getCode(), 0);
    }

    void startAll()
    {
        for (const std::unique_ptr<tSimNode>& pNode : m_nodes)
        {
            start(*pNode);
        }
    }

    void stop(tSimNode& a_node)
    {
        tStatus status;
        a_node.stop(status);
        ASSERT_EQ(status.getCode(), 0);
    }

    std::vector<tSimNode*> all()
    {
        std::vector<tSimNode*> nodes;
        for (const std::unique_ptr<tSimNode>& pNode : m_nodes)
        {
            nodes.push_back(pNode.get());
        }
        return nodes;
    }

    // A clock's expected state and, for a follower, the clock it follows.
    struct tExpect
    {
        tSimNode* m_pNode;
        u8 m_state;
        tSimNode* m_pParent = nullptr;
    };

    // Asserts that the clocks reach these states, and followers these
    // parents, together.
    ::testing::AssertionResult settlesInto(const std::vector<tExpect>& a_expected)
    {
        const bool settled = m_network.waitUntil(
            [&a_expected]
            {
                for (const tExpect& e : a_expected)
                {
                    if (e.m_pNode->getState() != e.m_state)
                    {
                        return false;
                    }
                }
                // Parents only once the states agree: each read is a round
                // trip through the clock's dispatcher.
                for (const tExpect& e : a_expected)
                {
                    if (e.m_pParent != nullptr &&
                        e.m_pNode->getParentClockIdentity() != e.m_pParent->getIdentity())
                    {
                        return false;
                    }
                }
                return true;
            },
            kSettleBound);
        if (settled)
        {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << "the clocks did not settle:\n"
                                             << describeAll(all());
    }

    // Waits until a_sender has sent a_count more Announce messages, and
    // asserts that no clock changed state meanwhile.
    ::testing::AssertionResult staysSettledFor(tSimNode& a_sender, u64 a_count)
    {
        std::vector<size_t> before;
        for (tSimNode* pNode : all())
        {
            before.push_back(pNode->getTransitionCount());
        }
        if (!sends(a_sender, kAnnounce, a_count))
        {
            return ::testing::AssertionFailure() << "the Announce messages stopped:\n"
                                                 << describeAll(all());
        }
        std::vector<tSimNode*> nodes = all();
        for (size_t i = 0; i < nodes.size(); ++i)
        {
            if (nodes[i]->getTransitionCount() != before[i])
            {
                return ::testing::AssertionFailure() << "a settled clock moved on:\n"
                                                     << describeAll(nodes);
            }
        }
        return ::testing::AssertionSuccess();
    }

    // Lets every thread finish what is due now, without time passing.
    void settle() { ASSERT_TRUE(m_network.getClock().settle()); }

    // Waits until a_node has sent a_more further messages of a_type.
    bool sends(tSimNode& a_node, u8 a_type, u64 a_more)
    {
        const u32 id = a_node.getId();
        const u64 target = m_network.getSentCount(id, a_type) + a_more;
        return m_network.waitUntil([this, id, a_type, target]
                                   { return m_network.getSentCount(id, a_type) >= target; },
                                   kSettleBound);
    }

    // True if the clock reaches a_state within the quiet bound; a scenario
    // that expects it not to asserts false.
    bool reachesWithinQuietBound(tSimNode& a_node, u8 a_state)
    {
        return a_node.waitForState(a_state, kQuietBound);
    }

    // True if a_node made exactly one transition, from a_old to a_new, since
    // it had made a_before.
    static bool movedOnce(tSimNode& a_node, size_t a_before, u8 a_old, u8 a_new)
    {
        const std::vector<tTransition> transitions = a_node.getTransitions();
        return transitions.size() == a_before + 1 && transitions.back().m_oldState == a_old &&
               transitions.back().m_newState == a_new;
    }

    static bool everEntered(tSimNode& a_node, u8 a_state)
    {
        for (const tTransition& t : a_node.getTransitions())
        {
            if (t.m_newState == a_state)
            {
                return true;
            }
        }
        return false;
    }

    // Declared first: the clocks go before the network they use.
    tSimNetwork m_network;
    std::vector<std::unique_ptr<tSimNode>> m_nodes;
};

} // namespace nSimNet
