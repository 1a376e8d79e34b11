#pragma once
#include "orvtarn/protons/status/tStatusCodes.h"

namespace nOrvTarn000
{

// The failure object. Holds the first fatal code with the component, file and
// line of the place that set it; a warning (positive code) yields only to a
// fatal one, and nothing but clear() removes a stored code.
//
// An object whose m_structSize is below kFullSize holds only its size and
// code: place and extension are then neither read nor written.
class tStatus
{
public:
    enum : u32
    {
        kFullSize = 164,
        kComponentSize = 10,
        kFileSize = 101,
        kExtensionWords = 10
    };

    tStatus();
    tStatus(const tStatus& a_other);
    tStatus& operator=(const tStatus&) = delete;

    void clear();
    bool setCode(i32 a_code, const char* a_component, const char* a_file, i32 a_line);
    bool mergeFrom(const tStatus& a_other);

    i32 getCode() const { return m_code; }
    bool isFatal() const { return m_code < 0; }
    bool isNotFatal() const { return m_code >= 0; }
    const char* getComponent() const;
    const char* getFile() const;
    i32 getLine() const;

private:
    bool isFull() const { return m_structSize >= kFullSize; }

    u32 m_structSize;
    i32 m_code;
    char m_component[kComponentSize];
    char m_file[kFileSize];
    i32 m_line;
    u32 m_extension[kExtensionWords];
};

static_assert(sizeof(tStatus) == tStatus::kFullSize, "tStatus must keep its 164-byte layout");

} // namespace nOrvTarn000

// Sets a code with the place of the call and the component of the program part.
#define ORVTARN_SET_CODE(status, code)                                                             \
    (status).setCode((code), ORVTARN_COMPONENT, __FILE__, __LINE__)
