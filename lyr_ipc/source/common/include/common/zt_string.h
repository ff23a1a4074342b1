// Strings: on the wire exactly their bytes, without terminator or alignment, found through a zt_ptr_t. Writers enforce
// a maximum length in bytes, readers take any length that lies inside the arena; the bytes are not interpreted.
// Errors: see detail/codec.h.
#pragma once

#include <common/detail/codec.h>

#include <string>

namespace vyn_connector::common {

// Writes `text`, of at most MaxCount bytes, at the arena's top and points `*out` at it. An empty text takes no room;
// its offset is that of the top. A zero byte is a byte like any other: nothing ends at it.
template <std::size_t MaxCount>
void StringToZt(std::string_view text, zt_ptr_t* out, zt_arena* arena)
{
    using detail::codec::string;
    detail::RequireArgument(arena != nullptr, string.file, string.writing.arena);
    detail::RequireArgument(out != nullptr, string.file, string.writing.output);
    if (text.size() > MaxCount) detail::RaiseTooLarge(string.tooLarge);
    detail::PlaceBytes(out, arena, text.data(), text.size());
}

extern template VYN_EXPORT void StringToZt<128>(std::string_view, zt_ptr_t*, zt_arena*);
extern template VYN_EXPORT void StringToZt<256>(std::string_view, zt_ptr_t*, zt_arena*);

// Returns a copy of the bytes that `*ptr` names, zero bytes and all. The sender chooses the length, but not more than
// the bytes that are there.
VYN_EXPORT std::string ZtToString(const zt_ptr_t* ptr, const zt_arena* arena);

// The same by value, for strings that are elements; at most 128 bytes on writing.
VYN_EXPORT zt_ptr_t CastToZt(const std::string& text, zt_arena* arena);
VYN_EXPORT std::string CastFromZt(const zt_ptr_t& ptr, const zt_arena* arena);

} // namespace vyn_connector::common
