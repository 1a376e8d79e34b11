#pragma once
#include "orvtarn/protons/status/tStatus.h"

namespace nOrvTarn000
{

// Writes an assertion report line to the program's trace and, when a status is
// given, stores a_code in it with the macro's place. Never stops the caller.
void reportAssertion(const char* a_level, const char* a_text, const char* a_component,
                     const char* a_file, i32 a_line, i32 a_code, tStatus* a_pStatus);

// Reports a failed contract; with a code and a status also stores the code.
// Always false, so that a macro yields the truth of its condition.
inline bool failContract(const char* a_text, const char* a_component, const char* a_file,
                         i32 a_line)
{
    reportAssertion("default", a_text, a_component, a_file, a_line, 0, nullptr);
    return false;
}

inline bool failContract(const char* a_text, const char* a_component, const char* a_file,
                         i32 a_line, i32 a_code, tStatus& a_status)
{
    reportAssertion("default", a_text, a_component, a_file, a_line, a_code, &a_status);
    return false;
}

} // namespace nOrvTarn000

// Contract macros: REQUIRE (condition) and CHECK (condition) report a failed
// condition; REQUIRE (condition, code, status) also stores the code. The code
// after the macro runs on in every case, and callers leave through their
// normal failure path. Each yields the condition's truth.
// The text is made here, before the condition's own macros (NULL) expand.
#define REQUIRE(cond, ...) ORVTARN_CONTRACT_("REQUIRE (" #cond ")", cond, ##__VA_ARGS__)
#define CHECK(cond, ...) ORVTARN_CONTRACT_("CHECK (" #cond ")", cond, ##__VA_ARGS__)
#define ORVTARN_CONTRACT_(text, cond, ...)                                                         \
    ((cond) ? true                                                                                 \
            : ::nOrvTarn000::failContract(text, ORVTARN_COMPONENT, __FILE__, __LINE__,             \
                                          ##__VA_ARGS__))
#define EXCEPTION(message)                                                                         \
    ::nOrvTarn000::failContract("EXCEPTION (" message ")", ORVTARN_COMPONENT, __FILE__, __LINE__)
