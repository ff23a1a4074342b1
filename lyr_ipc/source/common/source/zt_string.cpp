#include <common/zt_string.h>

namespace vyn_connector::common {

template void StringToZt<128>(std::string_view, zt_ptr_t*, zt_arena*);
template void StringToZt<256>(std::string_view, zt_ptr_t*, zt_arena*);

std::string ZtToString(const zt_ptr_t* ptr, const zt_arena* arena)
{
    using detail::codec::string;
    detail::RequireArgument(arena != nullptr, string.file, string.reading.arena);
    detail::RequireArgument(ptr != nullptr, string.file, string.reading.pointer);

    std::size_t size = 0;
    const void* const bytes = zt_arena_resolve(arena, ptr, 1, &size);
    if (bytes == nullptr) detail::RaiseOutside(string.outside, ptr->offset);
    return std::string(static_cast<const char*>(bytes), size);
}

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

} // namespace vyn_connector::common
