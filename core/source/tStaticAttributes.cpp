#include "tStaticAttributes.h"

#include "orvtarn/protons/status/tAllocation.h"
#include "orvtarn/protons/status/tAssertion.h"
#include "orvtarn/protons/status/tTrace.h"
#include "tIniText.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>

using nOrvTarn000::tStatus;
using nOrvTarn000::tString;

namespace zelmarPluginCore_1_0
{
namespace
{

const char kSection[] = "ZELMAR";
const char kDirectory[] = "/orv-rt/system/zelmar/";
const char kFileOpening[] = "zelmar-";
const char kFileEnding[] = ".ini";

enum : u32
{
    kKindInformation = 105, // 'i'
    kMaxStringLength = 255
};

// The status for a result of the ini store. Results it leaves alone are
// successes, an absent entry (0) among them. The ranges cover the store's
// whole families of codes, also those it does not produce today.
i32 statusCodeOf(i32 a_result)
{
    if (a_result == kIniNoFile)
    {
        return nOrvTarn000::kStatusNotAvailable;
    }
    if (a_result == kIniOutOfMemory)
    {
        return nOrvTarn000::kStatusMemoryFull;
    }
    const bool failed = (a_result <= -2 && a_result >= -6) || a_result == kIniNotWritable ||
                        a_result == -24 || a_result == kIniWriteFailed ||
                        (a_result <= -5001 && a_result >= -5004) ||
                        (a_result <= -5021 && a_result >= -5024);
    return failed ? nOrvTarn000::kStatusInternalError : nOrvTarn000::kStatusSuccess;
}

bool translate(i32 a_result, tStatus& a_status)
{
    const i32 code = statusCodeOf(a_result);
    if (code != nOrvTarn000::kStatusSuccess)
    {
        ORVTARN_SET_CODE(a_status, code);
    }
    return code == nOrvTarn000::kStatusSuccess;
}

// Failures of the file itself carry the system's reason in errno.
bool isSystemFailure(i32 a_result)
{
    return a_result == kIniTemporaryNotCreated || a_result == kIniNotWritable ||
           a_result == kIniWriteFailed || a_result == kIniCannotOpen ||
           a_result == kIniReadFailed || a_result == kIniTemporaryNotOpened;
}

void traceFileFailure(const char* a_pWhat, const tString& a_path, i32 a_result, int a_error,
                      i32 a_line)
{
    char buffer[128] = "";
    const bool system = isSystemFailure(a_result);
    nOrvTarn000::getTrace(0)
        .writeHeader(ORVTARN_COMPONENT, static_cast<u64>(a_line), __FILE__, kKindInformation, 0)
        .writeFormatted("%s %s failed (%d)%s%s", a_pWhat, a_path.c_str(),
                        static_cast<int>(a_result), system ? ": " : "",
                        system ? strerror_r(a_error, buffer, sizeof(buffer)) : "")
        .endLine();
}

// True when the get found a value; otherwise its result goes into the status.
bool found(i32 a_result, const tString& a_key, tStatus& a_status)
{
    if (a_result == 1)
    {
        return true;
    }
    if (!translate(a_result, a_status) && a_result != kIniOutOfMemory)
    {
        nOrvTarn000::getTrace(0)
            .writeHeader(ORVTARN_COMPONENT, static_cast<u64>(__LINE__), __FILE__, kKindInformation,
                         0)
            .writeFormatted("the entry %s does not fit its type (%d)", a_key.c_str(),
                            static_cast<int>(a_result))
            .endLine();
    }
    return false;
}

// The root that stands for the target's drive.
const char* rootDirectory()
{
    const char* pRoot = std::getenv(tStaticAttributes::kRootVariable);
    return pRoot == nullptr || *pRoot == '\0' ? tStaticAttributes::kDefaultRoot : pRoot;
}

} // namespace

tStaticAttributes::tStaticAttributes(const tString& a_name, tStatus& a_status)
    : m_pStaticAttributesIniText(nullptr)
{
    if (a_status.isFatal())
    {
        return;
    }
    m_keyPrefix.append("source.").append(a_name).append(".");
    if (!CHECK_ALLOCATION(m_keyPrefix, a_status))
    {
        return;
    }
    m_pStaticAttributesIniText = iniNew();
    if (m_pStaticAttributesIniText == nullptr)
    {
        ORVTARN_SET_CODE(a_status, nOrvTarn000::kStatusMemoryFull);
        return;
    }
    m_filePath.append(rootDirectory()).append(kDirectory).append(kFileOpening);
    m_filePath.append(a_name).append(kFileEnding);
    if (!CHECK_ALLOCATION(m_filePath, a_status))
    {
        return;
    }
    // Whatever the read gives, every get answers with its default then.
    const i32 result = iniReadFromFile(m_pStaticAttributesIniText, m_filePath.c_str());
    if (result < 0 && result != kIniNoFile)
    {
        traceFileFailure("reading", m_filePath, result, errno, __LINE__);
    }
}

tStaticAttributes::~tStaticAttributes()
{
    iniDispose(m_pStaticAttributesIniText);
}

bool tStaticAttributes::makeKey(const tString& a_key, tString& a_rFullKey, tStatus& a_status) const
{
    if (a_status.isFatal() ||
        !REQUIRE(NULL != m_pStaticAttributesIniText, nOrvTarn000::kStatusInvalidState, a_status))
    {
        return false;
    }
    a_rFullKey.append(m_keyPrefix).append(a_key);
    return CHECK_ALLOCATION(a_rFullKey, a_status);
}

u32 tStaticAttributes::getU32(const tString& a_key, u32 a_default, tStatus& a_status)
{
    tString key;
    u32 value = 0;
    return makeKey(a_key, key, a_status) &&
                   found(iniGetU32(m_pStaticAttributesIniText, kSection, key.c_str(), &value), key,
                         a_status)
               ? value
               : a_default;
}

i32 tStaticAttributes::getI32(const tString& a_key, i32 a_default, tStatus& a_status)
{
    return static_cast<i32>(getU32(a_key, static_cast<u32>(a_default), a_status));
}

f64 tStaticAttributes::getF64(const tString& a_key, f64 a_default, tStatus& a_status)
{
    tString key;
    f64 value = 0.0;
    return makeKey(a_key, key, a_status) &&
                   found(iniGetF64(m_pStaticAttributesIniText, kSection, key.c_str(), &value), key,
                         a_status)
               ? value
               : a_default;
}

bool tStaticAttributes::getBool(const tString& a_key, bool a_default, tStatus& a_status)
{
    tString key;
    i32 value = 0;
    return makeKey(a_key, key, a_status) &&
                   found(iniGetBool(m_pStaticAttributesIniText, kSection, key.c_str(), &value), key,
                         a_status)
               ? value != 0
               : a_default;
}

tString tStaticAttributes::getString(const tString& a_key, const tString& a_default,
                                     tStatus& a_status)
{
    tString key;
    char buffer[kMaxStringLength + 1];
    const bool isFound =
        makeKey(a_key, key, a_status) && found(iniGetString(m_pStaticAttributesIniText, kSection,
                                                            key.c_str(), buffer, sizeof(buffer)),
                                               key, a_status);
    tString value(isFound ? tString(buffer) : a_default);
    CHECK_ALLOCATION(value, a_status);
    return value;
}

void tStaticAttributes::putU32(const tString& a_key, u32 a_value, tStatus& a_status)
{
    tString key;
    if (makeKey(a_key, key, a_status))
    {
        translate(iniPutU32(m_pStaticAttributesIniText, kSection, key.c_str(), a_value), a_status);
    }
}

void tStaticAttributes::putI32(const tString& a_key, i32 a_value, tStatus& a_status)
{
    putU32(a_key, static_cast<u32>(a_value), a_status);
}

void tStaticAttributes::putString(const tString& a_key, const char* a_pValue, tStatus& a_status)
{
    tString key;
    if (makeKey(a_key, key, a_status))
    {
        translate(iniPutString(m_pStaticAttributesIniText, kSection, key.c_str(), a_pValue),
                  a_status);
    }
}

void tStaticAttributes::save(tStatus& a_status)
{
    if (a_status.isFatal() ||
        !REQUIRE(NULL != m_pStaticAttributesIniText, nOrvTarn000::kStatusInvalidState, a_status))
    {
        return;
    }
    const i32 result = iniWriteToFile(m_pStaticAttributesIniText, m_filePath.c_str());
    const int error = errno;
    if (!translate(result, a_status))
    {
        traceFileFailure("writing", m_filePath, result, error, __LINE__);
    }
}

} // namespace zelmarPluginCore_1_0
