// Optional members: an array of zero or one wire element, so that the pointer's size alone says whether a value is
// there. Every optional member of a record goes through here. Null arguments raise mur::InvalidArgumentException,
// which names the line of the check.
#pragma once

#include <common/zt_string.h>

#include <optional>

namespace vyn_connector::common {

// Writes {0, 0} where there is no value, else a slot with what `convert(const Domain&, zt_arena*)` returns. Throws
// mur::ResultCodeException (out of space). `out` must not be null.
template <typename Wire, typename Domain, typename Convert>
void OptionalToZt(const std::optional<Domain>& value, zt_ptr_t* out, zt_arena* arena, Convert convert)
{
    if (arena == nullptr) mur::raise_invalid_argument(source::zt_optional, __LINE__);
    if (!value.has_value()) {
        *out = {0, 0};
        return;
    }

    // The slot comes first: what the value itself puts into the arena follows it.
    std::uint8_t* const slot = PlaceElements<Wire>(out, arena, 1);
    StoreElement<Wire>(slot, 0, convert(*value, arena));
}

// Returns what `convert(const Wire&, const zt_arena*)` makes of the first element, or nothing where there is none;
// further elements are ignored. Throws std::out_of_range where the array does not lie inside the arena or its size
// is not a whole number of elements.
//
// Absent is {0, 0}, and that resolves in every arena that has a buffer. An absent value whose offset lies outside
// the arena is refused all the same: {offset, 0} is still a pointer, and a sender that makes up one is not to be
// trusted with the next.
//
template <typename Wire, typename Domain, typename Convert>
std::optional<Domain> ZtToOptional(const zt_ptr_t* ptr, const zt_arena* arena, Convert convert)
{
    if (arena == nullptr) mur::raise_invalid_argument(source::zt_optional, __LINE__);
    if (ptr == nullptr) mur::raise_invalid_argument(source::zt_optional, __LINE__);

    std::size_t count = 0;
    const void* const array = zt_arena_resolve(arena, ptr, sizeof(Wire), &count);
    if (array == nullptr)
        RaiseOutside("zt optional: zt_arena does not contain an element with the address {}", ptr->offset);
    if (count == 0) return std::nullopt;
    return convert(LoadElement<Wire>(array, 0), arena);
}

// An optional string's slot holds the zt_ptr_t of its bytes: two levels, not a string pointer of size 0, so that
// an empty string and no string differ.
extern template VYN_EXPORT std::optional<std::string>
ZtToOptional<zt_ptr_t, std::string, std::string (*)(const zt_ptr_t&, const zt_arena*)>(
    const zt_ptr_t*, const zt_arena*, std::string (*)(const zt_ptr_t&, const zt_arena*));

} // namespace vyn_connector::common
