#include "orvptp/tDefaultBestMasterClockAlgorithm.h"

#include "orvptp/tBMCOutput.h"
#include "orvptp/tForeignMasterDS.h"
#include "orvtarn/protons/status/tAllocator.h"

using nOrvTarn000::kStatusMemoryFull;
using nOrvTarn000::tAllocator;
using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

const tAnnounceMessage* tDefaultBestMasterClockAlgorithm::selectErbest(iPTPNode& a_node, u16 a_port,
                                                                       tBMCOutput& a_output,
                                                                       tStatus& a_status)
{
    tForeignMasterDS* pTable = a_node.getForeignMasterDS(a_port);
    if (pTable == nullptr)
    {
        return nullptr;
    }
    const tForeignMasterDS::tIterator end = pTable->end();
    tForeignMasterDS::tIterator best = pTable->begin();
    while (best != end && !(*best)->isQualified())
    {
        ++best;
    }
    if (best == end)
    {
        return nullptr;
    }

    // Records not yet qualified are passed over and stay.
    tForeignMasterDS::tIterator candidate = best;
    ++candidate;
    while (candidate != end && a_status.isNotFatal())
    {
        if (!(*candidate)->isQualified())
        {
            ++candidate;
            continue;
        }
        const tDataSetComparison result =
            m_comparison.compareForeignMasters(a_node, (*candidate)->getLastAnnounce(), a_port,
                                               (*best)->getLastAnnounce(), a_port, a_status);
        if (a_status.isFatal())
        {
            break;
        }
        if (isAPreferred(result))
        {
            tForeignMasterDS::tIterator loser = best;
            best = candidate;
            ++candidate;
            a_output.resetHolding((*loser)->getLastAnnounce());
            pTable->erase(loser, a_status);
        }
        else
        {
            a_output.resetHolding((*candidate)->getLastAnnounce());
            pTable->erase(candidate, a_status);
        }
    }
    return (*best)->getLastAnnounce();
}

void tDefaultBestMasterClockAlgorithm::runBestMasterClock(iPTPNode& a_node, tBMCOutput& a_output,
                                                          tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    const u16 numberPorts = a_node.getNumberPorts();
    tAllocator<const tAnnounceMessage*> allocator;
    const tAnnounceMessage** erbest = allocator.allocate(numberPorts);
    if (allocator.hasFailed())
    {
        ORVTARN_SET_CODE(a_status, kStatusMemoryFull);
        return;
    }

    for (u16 i = 0; i < numberPorts && a_status.isNotFatal(); ++i)
    {
        erbest[i] = selectErbest(a_node, static_cast<u16>(i + 1), a_output, a_status);
    }

    if (a_status.isNotFatal())
    {
        // A later port must beat the present Ebest; on a tie or an error the
        // earlier one stays.
        u16 ebest = 0;
        for (u16 i = 1; i < numberPorts; ++i)
        {
            if (isAPreferred(m_comparison.compareForeignMasters(
                    a_node, erbest[i], static_cast<u16>(i + 1), erbest[ebest],
                    static_cast<u16>(ebest + 1), a_status)))
            {
                ebest = i;
            }
        }
        for (u16 i = 0; i < numberPorts && a_status.isNotFatal(); ++i)
        {
            tStateDecision decision;
            m_stateDecision.decideState(decision, a_node, erbest[i], static_cast<u16>(i + 1),
                                        erbest[ebest], static_cast<u16>(ebest + 1), a_status);
            a_output.setDecision(static_cast<u16>(i + 1), decision, a_status);
        }
    }
    allocator.deallocate(erbest, numberPorts);
}

} // namespace nOrvPTP000
