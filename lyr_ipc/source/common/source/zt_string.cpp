#include <common/zt_string.h>

namespace vyn_connector::common {

template void StringToZt<128>(std::string_view, zt_ptr_t*, zt_arena*);
template void StringToZt<256>(std::string_view, zt_ptr_t*, zt_arena*);

zt_ptr_t CastToZt(const std::string& text, zt_arena* arena)
{
    zt_ptr_t out{};
    StringToZt<128>(text, &out, arena);
    return out;
}

std::string CastFromZt(const zt_ptr_t& ptr, const zt_arena* arena)
{
    return ZtToString(&ptr, arena);
}

namespace {
// The inline reader is part of the exported surface: a use that survives makes the compiler emit its body here.
[[gnu::used]] std::string (*const exportedReader)(const zt_ptr_t*, const zt_arena*) = &ZtToString;
} // namespace

} // namespace vyn_connector::common
