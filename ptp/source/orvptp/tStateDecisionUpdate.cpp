#include "orvptp/tStateDecisionUpdate.h"

#include "orvptp/tAnnounceMessage.h"
#include "orvptp/tCurrentDS.h"
#include "orvptp/tDefaultDS.h"
#include "orvptp/tParentDS.h"
#include "orvptp/tTimePropertiesDS.h"
#include "orvtarn/protons/status/tAssertion.h"

using nOrvTarn000::kStatusInvalidArgument;
using nOrvTarn000::tStatus;

namespace nOrvPTP000
{

namespace
{

void becomeGrandmaster(const tDefaultDS& a_defaultDS, tCurrentDS& a_currentDS,
                       tParentDS& a_parentDS, tTimePropertiesDS& a_timePropertiesDS,
                       const tTimePropertiesDS& a_local, tStatus& a_status)
{
    a_currentDS.setStepsRemoved(0, a_status);
    a_currentDS.setOffsetFromMaster(tTimeInterval(), a_status);
    a_currentDS.setMeanPathDelay(tTimeInterval(), a_status);

    const tClockIdentity clockIdentity = a_defaultDS.getClockIdentity();
    a_parentDS.setParentPortIdentity(tPortIdentity(clockIdentity, 0), a_status);
    a_parentDS.setGrandmasterIdentity(clockIdentity, a_status);
    a_parentDS.setGrandmasterClockQuality(a_defaultDS.getClockQuality(), a_status);
    a_parentDS.setGrandmasterPriority1(a_defaultDS.getPriority1(), a_status);
    a_parentDS.setGrandmasterPriority2(a_defaultDS.getPriority2(), a_status);

    // Leap seconds belong to the PTP timescale only.
    const bool ptpTimescale = a_local.getPtpTimescale();
    a_timePropertiesDS.setCurrentUtcOffset(a_local.getCurrentUtcOffset(), a_status);
    a_timePropertiesDS.setCurrentUtcOffsetValid(a_local.getCurrentUtcOffsetValid(), a_status);
    a_timePropertiesDS.setLeap59(ptpTimescale && a_local.getLeap59(), a_status);
    a_timePropertiesDS.setLeap61(ptpTimescale && a_local.getLeap61(), a_status);
    a_timePropertiesDS.setTimeTraceable(a_local.getTimeTraceable(), a_status);
    a_timePropertiesDS.setFrequencyTraceable(a_local.getFrequencyTraceable(), a_status);
    a_timePropertiesDS.setPtpTimescale(ptpTimescale, a_status);
    a_timePropertiesDS.setTimeSource(a_local.getTimeSource(), a_status);
}

void followSender(const tAnnounceMessage& a_message, tCurrentDS& a_currentDS, tParentDS& a_parentDS,
                  tTimePropertiesDS& a_timePropertiesDS, tStatus& a_status)
{
    const tMessageHeader& header = *a_message.getHeader();
    a_currentDS.setStepsRemoved(static_cast<u16>(a_message.getStepsRemoved() + 1), a_status);

    a_parentDS.setParentPortIdentity(header.getSourcePortIdentity(), a_status);
    a_parentDS.setGrandmasterIdentity(a_message.getGrandmasterIdentity(), a_status);
    a_parentDS.setGrandmasterClockQuality(a_message.getGrandmasterClockQuality(), a_status);
    a_parentDS.setGrandmasterPriority1(a_message.getGrandmasterPriority1(), a_status);
    a_parentDS.setGrandmasterPriority2(a_message.getGrandmasterPriority2(), a_status);

    a_timePropertiesDS.setCurrentUtcOffset(a_message.getCurrentUTCOffset(), a_status);
    a_timePropertiesDS.setCurrentUtcOffsetValid(header.getCurrentUTCOffsetValid(), a_status);
    a_timePropertiesDS.setLeap59(header.getLeap59(), a_status);
    a_timePropertiesDS.setLeap61(header.getLeap61(), a_status);
    a_timePropertiesDS.setTimeTraceable(header.getTimeTraceable(), a_status);
    a_timePropertiesDS.setFrequencyTraceable(header.getFrequencyTraceable(), a_status);
    a_timePropertiesDS.setPtpTimescale(header.getPtpTimescale(), a_status);
    a_timePropertiesDS.setTimeSource(a_message.getTimeSource(), a_status);
}

} // namespace

void applyStateDecisionUpdate(i32 a_code, const tAnnounceMessage* a_pMessage,
                              const tDefaultDS& a_defaultDS, tCurrentDS& a_currentDS,
                              tParentDS& a_parentDS, tTimePropertiesDS& a_timePropertiesDS,
                              const tTimePropertiesDS& a_localTimePropertiesDS, tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return;
    }
    switch (a_code)
    {
    case kUpdateM1:
    case kUpdateM2:
        becomeGrandmaster(a_defaultDS, a_currentDS, a_parentDS, a_timePropertiesDS,
                          a_localTimePropertiesDS, a_status);
        break;
    case kUpdateS1:
        if (REQUIRE(a_pMessage != nullptr && a_pMessage->getHeader() != nullptr,
                    kStatusInvalidArgument, a_status))
        {
            followSender(*a_pMessage, a_currentDS, a_parentDS, a_timePropertiesDS, a_status);
        }
        break;
    case kUpdateM3:
    case kUpdateP1:
    case kUpdateP2:
        break;
    default:
        EXCEPTION("Unknown state decision code!\n");
        break;
    }
}

} // namespace nOrvPTP000
