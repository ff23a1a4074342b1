#include <common/timestamp.h>

namespace vyn_connector::common {

std::int64_t CastToZt(const wem::types::Timestamp& value, zt_arena* /*arena*/)
{
    return value.count;
}

wem::types::Timestamp CastFromZt(const long& wire, const zt_arena* /*arena*/)
{
    return wem::types::Timestamp{wire};
}

} // namespace vyn_connector::common
