#pragma once
// An ini text owned by a test, and its string values as std::string.
#include "tIniText.h"

#include <memory>
#include <string>
#include <vector>

namespace nTestFiles
{

struct tTextDeleter
{
    void operator()(tIniText* a_pText) const { iniDispose(a_pText); }
};
typedef std::unique_ptr<tIniText, tTextDeleter> tTextPointer;

inline std::string getString(tIniText* a_pText, const char* a_pSection, const char* a_pTag,
                             i32& a_rResult)
{
    std::vector<char> buffer(1 << 17);
    a_rResult =
        iniGetString(a_pText, a_pSection, a_pTag, buffer.data(), static_cast<i32>(buffer.size()));
    return buffer.data();
}

} // namespace nTestFiles
