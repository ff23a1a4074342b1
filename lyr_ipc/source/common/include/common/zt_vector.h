// Lists: wire elements stored back to back, the first aligned, with no count and no terminator. What the elements
// refer to follows the array, element 0's first. Every list member of a record goes through here. Null arguments
// raise mur::InvalidArgumentException, which names the line of the check.
#pragma once

#include <common/zt_codec.h>

#include <vector>

namespace vyn_connector::common {

// Writes the values, at most MaxCount, each as `convert(const Domain&, zt_arena*)` returns it. Throws
// std::length_error before anything is reserved, mur::ResultCodeException (out of space). An empty list still
// moves the top up to the alignment of an element.
template <std::uint64_t MaxCount, typename Wire, typename Domain, typename Convert>
void VectorToZt(const std::vector<Domain>& values, zt_ptr_t* out, zt_arena* arena, Convert convert)
{
    if (arena == nullptr) mur::raise_invalid_argument(source::zt_vector, __LINE__);
    if (out == nullptr) mur::raise_invalid_argument(source::zt_vector, __LINE__);
    if (values.size() > MaxCount) RaiseTooLarge("zt vector: vector size larger than zt buffer");

    // The whole array at once, before any element converts: it stays contiguous and in place.
    std::uint8_t* const array = PlaceElements<Wire>(out, arena, values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        StoreElement<Wire>(array, i, convert(values[i], arena));
}

// Returns every element as `convert(const Wire&, const zt_arena*)` makes it.
//
// Throws std::out_of_range where the array does not lie inside the arena or its size is no whole number of elements.
//
// The writer's maximum does not bind here. What a hostile size can make this allocate is bounded by the arena: the
// count is taken from bytes that are there, and the values are allocated once.
//
// What `convert` throws passes through, and the part of the list that was built by then is destroyed first.
template <typename Wire, typename Domain, typename Convert>
std::vector<Domain> ZtToVector(const zt_ptr_t* ptr, const zt_arena* arena, Convert convert)
{
    if (arena == nullptr) mur::raise_invalid_argument(source::zt_vector, __LINE__);
    if (ptr == nullptr) mur::raise_invalid_argument(source::zt_vector, __LINE__);

    std::size_t count = 0;
    const void* const array = zt_arena_resolve(arena, ptr, sizeof(Wire), &count);
    if (array == nullptr)
        RaiseOutside("zt vector: zt_arena does not contain an element with the address {}", ptr->offset);
    std::vector<Domain> values(count);
    for (std::size_t i = 0; i < count; ++i)
        values[i] = convert(LoadElement<Wire>(array, i), arena);
    return values;
}

} // namespace vyn_connector::common
