// Sets: a list whose elements are written in the iteration order of the set, which the format does not fix, and
// read back with repeated values collapsed. The event types of a subscription go through here. Null arguments
// raise mur::InvalidArgumentException, which names the line of the check.
#pragma once

#include <common/zt_string.h>

#include <unordered_set>

namespace vyn_connector::common {

// Writes the values, at most MaxCount, each as `convert(const Domain&, zt_arena*)` returns it. Throws
// std::length_error before anything is reserved, mur::ResultCodeException (out of space). `out` must not be null.
// The strings of one set may together need up to 128 times the room of one: the arena decides, not this limit.
//
template <std::uint64_t MaxCount, typename Wire, typename Domain, typename Convert>
void SetToZt(const std::unordered_set<Domain>& values, zt_ptr_t* out, zt_arena* arena, Convert convert)
{
    if (arena == nullptr) mur::raise_invalid_argument(source::zt_set, __LINE__);
    if (values.size() > MaxCount) RaiseTooLarge("zt set: set size larger than zt buffer");

    std::uint8_t* const array = PlaceElements<Wire>(out, arena, values.size());
    std::size_t index = 0;
    for (const Domain& value : values)
        StoreElement<Wire>(array, index++, convert(value, arena));
}

// Returns the distinct elements, each as `convert(const Wire&, const zt_arena*)` makes it.
//
// Throws std::out_of_range where the array does not lie inside the arena or its size is not a whole number of
// elements.
//
// A repeated element is dropped without error, so the set may be smaller than the array. The writer's maximum does
// not bind here.
//
// No capacity is reserved in advance: the count is the sender's word, and memory is spent only on elements that
// were really converted.
//
// What `convert` throws passes through, and the part of the set that was built by then is destroyed first.
template <typename Wire, typename Domain, typename Convert>
std::unordered_set<Domain> ZtToSet(const zt_ptr_t* ptr, const zt_arena* arena, Convert convert)
{
    if (arena == nullptr) mur::raise_invalid_argument(source::zt_set, __LINE__);
    if (ptr == nullptr) mur::raise_invalid_argument(source::zt_set, __LINE__);

    std::size_t count = 0;
    const void* const array = zt_arena_resolve(arena, ptr, sizeof(Wire), &count);
    if (array == nullptr) RaiseOutside("zt set: zt_arena does not contain an element with the address {}", ptr->offset);
    std::unordered_set<Domain> values;
    for (std::size_t i = 0; i < count; ++i)
        values.insert(convert(LoadElement<Wire>(array, i), arena));
    return values;
}

} // namespace vyn_connector::common
