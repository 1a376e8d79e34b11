#pragma once
#include "orvtarn/protons/status/tAllocator.h"
#include "orvtarn/protons/status/tStatus.h"

struct tIniText;

namespace zelmarPluginCore_1_0
{

// The typed view on the initialisation file of one time source. The file
// <root>/orv-rt/system/zelmar/zelmar-<name>.ini keeps every attribute in the
// section "ZELMAR" under the key "source.<name>.<attribute>". The root is the
// environment variable ZM_PTP_ROOT, or /var/lib/zm_ptp when that is unset or
// empty; the directory is never created here.
//
// The constructor reads the file once; a missing or unreadable file gives
// an object that answers every read with its default. A key that is absent
// is no failure; a key whose text does not fit its type is kStatusInternalError
// with the default returned. Puts change the text in memory until save.
class tStaticAttributes
{
public:
    static constexpr const char* kRootVariable = "ZM_PTP_ROOT";
    static constexpr const char* kDefaultRoot = "/var/lib/zm_ptp";

    tStaticAttributes(const nOrvTarn000::tString& a_name, nOrvTarn000::tStatus& a_status);
    ~tStaticAttributes();
    tStaticAttributes(const tStaticAttributes&) = delete;
    tStaticAttributes& operator=(const tStaticAttributes&) = delete;

    [[nodiscard]] u32 getU32(const nOrvTarn000::tString& a_key, u32 a_default,
                             nOrvTarn000::tStatus& a_status);
    // The unsigned read with the same bits: -1 stands in the file as 4294967295.
    [[nodiscard]] i32 getI32(const nOrvTarn000::tString& a_key, i32 a_default,
                             nOrvTarn000::tStatus& a_status);
    [[nodiscard]] f64 getF64(const nOrvTarn000::tString& a_key, f64 a_default,
                             nOrvTarn000::tStatus& a_status);
    // At most the first 255 characters of the value.
    [[nodiscard]] nOrvTarn000::tString getString(const nOrvTarn000::tString& a_key,
                                                 const nOrvTarn000::tString& a_default,
                                                 nOrvTarn000::tStatus& a_status);
    [[nodiscard]] bool getBool(const nOrvTarn000::tString& a_key, bool a_default,
                               nOrvTarn000::tStatus& a_status);

    void putU32(const nOrvTarn000::tString& a_key, u32 a_value, nOrvTarn000::tStatus& a_status);
    // Written as the unsigned number with the same bits.
    void putI32(const nOrvTarn000::tString& a_key, i32 a_value, nOrvTarn000::tStatus& a_status);
    void putString(const nOrvTarn000::tString& a_key, const char* a_pValue,
                   nOrvTarn000::tStatus& a_status);

    // Replaces the file by the text; on failure the old file stays as it was.
    void save(nOrvTarn000::tStatus& a_status);

    const nOrvTarn000::tString& getFilePath() const { return m_filePath; }

private:
    // The full key of an attribute; false when the status is or becomes fatal.
    bool makeKey(const nOrvTarn000::tString& a_key, nOrvTarn000::tString& a_rFullKey,
                 nOrvTarn000::tStatus& a_status) const;

    nOrvTarn000::tString m_keyPrefix;
    nOrvTarn000::tString m_filePath;
    tIniText* m_pStaticAttributesIniText;
};

} // namespace zelmarPluginCore_1_0
