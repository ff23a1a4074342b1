// Optional members: an array of zero or one wire element, so that the pointer's size alone says whether a value is
// there. Errors: see detail/codec.h.
#pragma once

#include <common/zt_string.h>

#include <optional>

namespace vyn_connector::common {

// Writes {0, 0} where there is no value, else a slot with what `convert(const Domain&, zt_arena*)` returns. `out` must
// not be null; the arena must not be null even where there is no value.
template <typename Wire, typename Domain, typename Convert>
void OptionalToZt(const std::optional<Domain>& value, zt_ptr_t* out, zt_arena* arena, Convert convert)
{
    using detail::codec::optional;
    detail::RequireArgument(arena != nullptr, optional.file, optional.writing.arena);
    if (!value.has_value()) {
        *out = {0, 0};
        return;
    }

    // The slot comes first: what the value itself puts into the arena follows it.
    std::uint8_t* const slot = detail::PlaceElements<Wire>(out, arena, 1);
    detail::Store<Wire>(slot, convert(*value, arena));
}

// Returns what `convert(const Wire&, const zt_arena*)` makes of the first element, or nothing where there is none;
// further elements are ignored. An absent value's pointer is tested like any other: {0, 0} resolves in every arena that
// has a buffer, {offset, 0} beyond the arena's end does not.
template <typename Wire, typename Domain, typename Convert>
std::optional<Domain> ZtToOptional(const zt_ptr_t* ptr, const zt_arena* arena, Convert convert)
{
    using detail::codec::optional;
    detail::RequireArgument(arena != nullptr, optional.file, optional.reading.arena);
    detail::RequireArgument(ptr != nullptr, optional.file, optional.reading.pointer);

    std::size_t count = 0;
    const void* const array = zt_arena_resolve(arena, ptr, sizeof(Wire), &count);
    if (array == nullptr) detail::RaiseOutside(optional.outside, ptr->offset);
    if (count == 0) return std::nullopt;
    return std::optional<Domain>(std::in_place,
                                 detail::Lazy{[&]() -> Domain { return convert(detail::Load<Wire>(array), arena); }});
}

// An optional string's slot holds the zt_ptr_t of its bytes: two levels, not a string pointer of size 0, so that
// an empty string and no string differ.
extern template VYN_EXPORT std::optional<std::string>
ZtToOptional<zt_ptr_t, std::string, std::string (*)(const zt_ptr_t&, const zt_arena*)>(
    const zt_ptr_t*, const zt_arena*, std::string (*)(const zt_ptr_t&, const zt_arena*));

} // namespace vyn_connector::common
