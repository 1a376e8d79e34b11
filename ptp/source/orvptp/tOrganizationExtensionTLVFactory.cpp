#include "orvptp/tOrganizationExtensionTLVFactory.h"

#include "orvptp/tLXIConsortiumNotDefinedTLV.h"
#include "orvptp/tOrganizationIdentifiers.h"
#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tTrace.h"
#include "orvtarn/protons/status/tTraceBudget.h"

using nOrvTarn000::tStatus;
using nOrvTarn000::tTrace;

namespace nOrvPTP000
{
namespace
{

enum : u32
{
    kKindInformation = 105, // 'i'
    kWarningsPerSecond = 10
};

tTrace& warningLine(i32 a_line)
{
    return nOrvTarn000::getTrace(0).writeHeader(ORVTARN_COMPONENT, static_cast<u64>(a_line),
                                                __FILE__, kKindInformation, 0);
}

// Any peer can send datagrams full of unknown organisations, each of which is
// worth a line: the console gets a few of them a second, and a count of the
// ones it did not get.
bool mayWarn()
{
    static nOrvTarn000::tTraceBudget s_budget(nOrvTarn000::getSystemClock(), kWarningsPerSecond);
    u32 suppressed = 0;
    if (!s_budget.allow(suppressed))
    {
        return false;
    }
    if (suppressed != 0)
    {
        warningLine(__LINE__).writeFormatted(
            "%u warnings about unsupported organization extensions suppressed\n", suppressed);
    }
    return true;
}

} // namespace

std::unique_ptr<tOrganizationExtensionTLV>
tOrganizationExtensionTLVFactory::createOrganizationExtensionTLV(iSerializableTarget& a_target,
                                                                 tStatus& a_status)
{
    if (a_status.isFatal())
    {
        return nullptr;
    }
    u16 lengthField = 0;
    u8 identifiers[2][3];
    a_target.readUInteger16(lengthField, a_status);
    a_target.readOctets(identifiers[0], 3, a_status);
    a_target.readOctets(identifiers[1], 3, a_status);
    if (a_status.isFatal())
    {
        return nullptr;
    }
    const u32 organizationId = tOrganizationExtensionTLV::fromOctets(identifiers[0]);
    const u32 organizationSubType = tOrganizationExtensionTLV::fromOctets(identifiers[1]);

    // Identifiers print as six zero-padded hexadecimal digits.
    if (organizationId == kLXIConsortiumOrganizationId &&
        organizationSubType == tLXIConsortiumNotDefinedTLV::kOrganizationSubType)
    {
        std::unique_ptr<tLXIConsortiumNotDefinedTLV> pTLV =
            nOrvTarn000::makeOwned<tLXIConsortiumNotDefinedTLV>(a_status);
        if (pTLV == nullptr)
        {
            return nullptr;
        }
        // The lengthField counts the identifiers as well; setLength adds them back.
        pTLV->setLength(static_cast<u32>(lengthField) -
                            tOrganizationExtensionTLV::kIdentifiersLength,
                        a_status, 1);
        pTLV->deserializeOrganizationData(a_target, a_status);
        if (a_status.isFatal())
        {
            return nullptr;
        }
        return pTLV;
    }
    if (mayWarn())
    {
        if (organizationId == kLXIConsortiumOrganizationId)
        {
            warningLine(__LINE__).writeFormatted(
                "Unsupported organizationSubType %.6x for             "
                "               organization %.6x\n",
                static_cast<unsigned>(organizationSubType), static_cast<unsigned>(organizationId));
        }
        else if (organizationId == kOrvOrganizationId)
        {
            warningLine(__LINE__).writeFormatted(
                "Unsupported organizationSubType %.6x for                      organization %.6x\n",
                static_cast<unsigned>(organizationSubType), static_cast<unsigned>(organizationId));
        }
        else
        {
            warningLine(__LINE__).writeFormatted("Unsupported organizationId %.6x\n",
                                                 static_cast<unsigned>(organizationId));
        }
    }
    ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusInvalidArgument);
    return nullptr;
}

} // namespace nOrvPTP000
