#include "tStatusRecord.h"

namespace nZmHost
{
namespace
{

tValue valueOf(f64 a_value)
{
    return a_value;
}

tValue valueOf(const std::string& a_value)
{
    return a_value;
}

template <typename tType>
tValue valueOf(const std::optional<tType>& a_value)
{
    if (!a_value.has_value())
    {
        return std::monostate();
    }
    if constexpr (std::is_same_v<tType, u32>)
    {
        return static_cast<i64>(*a_value);
    }
    else
    {
        return *a_value;
    }
}

} // namespace

tFields fieldsOf(const tStatusRecord& a_record)
{
    return tFields{
#define ZMHOST_STATUS_FIELD(member, name, heading, width)                                          \
    tField{name, heading, width, valueOf(a_record.member)},
#include "tStatusFields.def"
#undef ZMHOST_STATUS_FIELD
    };
}

} // namespace nZmHost
