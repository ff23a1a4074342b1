// Sets: a list whose elements are written in the iteration order of the set, which the format does not fix, and
// read back with repeated values collapsed. Errors: see detail/codec.h.
#pragma once

#include <common/zt_string.h>

#include <unordered_set>

namespace vyn_connector::common {

// Writes the values, at most MaxCount, each as `convert(const Domain&, zt_arena*)` returns it. `out` must not be null.
template <std::uint64_t MaxCount, typename Wire, typename Domain, typename Convert>
void SetToZt(const std::unordered_set<Domain>& values, zt_ptr_t* out, zt_arena* arena, Convert convert)
{
    using detail::codec::set;
    detail::RequireArgument(arena != nullptr, set.file, set.writing.arena);
    if (values.size() > MaxCount) detail::RaiseTooLarge(set.tooLarge);

    std::uint8_t* element = detail::PlaceElements<Wire>(out, arena, values.size());
    for (const Domain& value : values) {
        detail::Store<Wire>(element, convert(value, arena));
        element += sizeof(Wire);
    }
}

// Returns the distinct elements, each as `convert(const Wire&, const zt_arena*)` makes it. The writer's maximum does
// not bind here; a repeated element is dropped without error. No capacity is reserved in advance: memory is spent only
// on elements that were really converted.
template <typename Wire, typename Domain, typename Convert>
std::unordered_set<Domain> ZtToSet(const zt_ptr_t* ptr, const zt_arena* arena, Convert convert)
{
    using detail::codec::set;
    detail::RequireArgument(arena != nullptr, set.file, set.reading.arena);
    detail::RequireArgument(ptr != nullptr, set.file, set.reading.pointer);

    std::size_t count = 0;
    const void* const array = zt_arena_resolve(arena, ptr, sizeof(Wire), &count);
    if (array == nullptr) detail::RaiseOutside(set.outside, ptr->offset);
    const auto* element = static_cast<const std::uint8_t*>(array);
    std::unordered_set<Domain> values;
    for (std::size_t i = 0; i < count; ++i, element += sizeof(Wire))
        values.insert(convert(detail::Load<Wire>(element), arena));
    return values;
}

} // namespace vyn_connector::common
