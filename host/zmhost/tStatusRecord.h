#pragma once
#include "orvtarn/quarks/tTypes.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace nZmHost
{

// What the host sees of its time source at one moment. A value the source
// could not give (offline, or not a slave) is absent.
struct tStatusRecord
{
    f64 m_seconds = 0.0; // since zmhost started
    // The port state's name, "OFFLINE" while the source is.
    std::string m_state;
    std::optional<bool> m_synchronized;
    std::optional<i64> m_offsetNs; // the servo's offset, master minus our clock
    std::optional<i64> m_delayNs;  // meanPathDelay
    std::optional<f64> m_ratePpm;  // how much faster our clock runs than its counter
    std::optional<i64> m_errorNs;  // our clock minus the system clock
    std::optional<std::string> m_grandmaster;
    std::optional<u32> m_stepsRemoved;
    std::optional<u32> m_grandmasterPriority1;
    std::optional<u32> m_grandmasterClockClass;
    std::optional<std::string> m_clock;
    std::optional<u32> m_priority1;
    std::optional<u32> m_clockClass;
    std::optional<std::string> m_address;
};

// One named value of a line, absent or of one of the kinds.
using tValue = std::variant<std::monostate, i64, f64, bool, std::string>;

struct tField
{
    const char* m_pName;
    const char* m_pHeading; // the column's heading in text lines
    int m_width;            // 0: not in text lines
    tValue m_value;
};

using tFields = std::vector<tField>;

// The record's fields in the order of tStatusFields.def.
tFields fieldsOf(const tStatusRecord& a_record);

} // namespace nZmHost
