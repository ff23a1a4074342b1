// Lists: wire elements stored back to back, the first aligned, with no count and no terminator. What the elements
// refer to follows the array, element 0's first. Errors: see detail/codec.h.
#pragma once

#include <common/detail/codec.h>

#include <vector>

namespace vyn_connector::common {

// Writes the values, at most MaxCount, each as `convert(const Domain&, zt_arena*)` returns it. An empty list still
// moves the top up to the alignment of an element. Where `convert` throws, the elements from that one on stay zero.
template <std::uint64_t MaxCount, typename Wire, typename Domain, typename Convert>
void VectorToZt(const std::vector<Domain>& values, zt_ptr_t* out, zt_arena* arena, Convert convert)
{
    using detail::codec::vector;
    detail::RequireArgument(arena != nullptr, vector.file, vector.writing.arena);
    detail::RequireArgument(out != nullptr, vector.file, vector.writing.output);
    if (values.size() > MaxCount) detail::RaiseTooLarge(vector.tooLarge);

    // The whole array at once, before any element converts: it stays contiguous and in place.
    std::uint8_t* element = detail::PlaceElements<Wire>(out, arena, values.size());
    for (const Domain& value : values) {
        detail::Store<Wire>(element, convert(value, arena));
        element += sizeof(Wire);
    }
}

// Returns every element as `convert(const Wire&, const zt_arena*)` makes it. The writer's maximum does not bind here.
//
// The array is allocated once, for as many elements as its bytes in the arena hold. What the elements allocate is not
// bounded like that: any number of them may point to the same bytes.
template <typename Wire, typename Domain, typename Convert>
std::vector<Domain> ZtToVector(const zt_ptr_t* ptr, const zt_arena* arena, Convert convert)
{
    using detail::codec::vector;
    detail::RequireArgument(arena != nullptr, vector.file, vector.reading.arena);
    detail::RequireArgument(ptr != nullptr, vector.file, vector.reading.pointer);

    std::size_t count = 0;
    const void* const array = zt_arena_resolve(arena, ptr, sizeof(Wire), &count);
    if (array == nullptr) detail::RaiseOutside(vector.outside, ptr->offset);
    const auto* element = static_cast<const std::uint8_t*>(array);
    std::vector<Domain> values(count);
    for (Domain& value : values) {
        value = convert(detail::Load<Wire>(element), arena);
        element += sizeof(Wire);
    }
    return values;
}

} // namespace vyn_connector::common
