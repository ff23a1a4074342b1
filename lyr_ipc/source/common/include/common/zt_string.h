// Strings: on the wire exactly their bytes, without terminator or alignment, found through a zt_ptr_t. Every text
// of every record goes through here. Writers enforce a maximum length in bytes, readers take any length that lies
// inside the arena; the bytes are not interpreted. Null arguments raise mur::InvalidArgumentException, which names
// the line of the check.
#pragma once

#include <common/zt_codec.h>

#include <string>

namespace vyn_connector::common {

// Writes `text`, of at most MaxCount bytes, at the arena's top and points `*out` at it. Throws std::length_error
// before anything is reserved, mur::ResultCodeException (out of space) where the arena cannot take the bytes.
//
// An empty text takes no room; its offset is that of the top. A zero byte is a byte like any other: nothing ends
// at it.
template <std::size_t MaxCount>
void StringToZt(std::string_view text, zt_ptr_t* out, zt_arena* arena)
{
    if (arena == nullptr) mur::raise_invalid_argument(source::zt_string, __LINE__);
    if (out == nullptr) mur::raise_invalid_argument(source::zt_string, __LINE__);
    if (text.size() > MaxCount) RaiseTooLarge("zt string: string size larger than zt buffer");

    PlaceBytes(out, arena, text.data(), text.size());
}

extern template VYN_EXPORT void StringToZt<128>(std::string_view, zt_ptr_t*, zt_arena*);
extern template VYN_EXPORT void StringToZt<256>(std::string_view, zt_ptr_t*, zt_arena*);

// Returns a copy of the bytes that `*ptr` names, zero bytes and all. The length is the sender's word, but the bytes are
// there: nothing longer than the arena is ever allocated.
//
// Throws std::out_of_range where they do not lie inside the arena.
//
// Inline, so that the record readers take it into themselves, and exported all the same.
VYN_EXPORT inline std::string ZtToString(const zt_ptr_t* ptr, const zt_arena* arena)
{
    if (arena == nullptr) mur::raise_invalid_argument(source::zt_string, __LINE__);
    if (ptr == nullptr) mur::raise_invalid_argument(source::zt_string, __LINE__);

    std::size_t size = 0;
    const void* const bytes = zt_arena_resolve(arena, ptr, 1, &size);
    if (bytes == nullptr)
        RaiseOutside("zt string: zt_arena does not contain an element with the address {}", ptr->offset);
    return std::string(static_cast<const char*>(bytes), size);
}

// The same by value, for the strings that are elements of a set or an optional; at most 128 bytes on writing.
VYN_EXPORT zt_ptr_t CastToZt(const std::string& text, zt_arena* arena);
VYN_EXPORT std::string CastFromZt(const zt_ptr_t& ptr, const zt_arena* arena);

} // namespace vyn_connector::common
