// Ranges: the array of a list, written from a pair of random-access iterators and read through an output iterator.
// Lists of update identifiers go through here. Their errors are their own: a result code and no message where a
// list raises a standard exception, and an empty range cannot be written at all. Null arguments raise
// mur::InvalidArgumentException, which names the line of the check.
#pragma once

#include <common/zt_codec.h>

#include <vector>

namespace vyn_connector::common {

// Writes the values of [first, last), at most MaxCount, each as `convert(const value&, zt_arena*)` returns it.
// Throws mur::InvalidArgumentException for an empty or reversed range, mur::ResultCodeException (invalid argument)
// for one past MaxCount, both before anything is reserved, and mur::ResultCodeException (out of space).
//
template <std::int64_t MaxCount, typename Wire, typename First, typename Last, typename Convert>
void RangeToZt(First first, Last last, zt_ptr_t* out, zt_arena* arena, Convert&& convert)
{
    if (arena == nullptr) mur::raise_invalid_argument(source::zt_range, __LINE__);
    if (!(first < last)) mur::raise_invalid_argument(source::zt_range, __LINE__);
    if (out == nullptr) mur::raise_invalid_argument(source::zt_range, __LINE__);
    if (last - first > MaxCount) mur::raise_result_code(mur::resultInvalidArgument);

    const auto count = static_cast<std::size_t>(last - first);
    std::uint8_t* const array = PlaceElements<Wire>(out, arena, count);
    for (std::size_t i = 0; i < count; ++i, ++first) {
        const auto& value = *first;
        StoreElement<Wire>(array, i, convert(value, arena));
    }
}

// Assigns every element, as `convert(const Wire&, const zt_arena*)` makes it, through `output`, which is advanced
// after each. The writer's maximum does not bind here, and an empty array is read as no element.
//
// The destination is not cleared first: behind a back inserter the values follow those that were there. What was
// assigned before `convert` threw stays.
//
// `output` is taken by value, so the caller's own iterator does not move.
//
// Throws mur::ResultCodeException (out of space) where the array does not lie inside the arena or its size is not
// a whole number of elements.
//
// That is deliberate: a bad range has the code of a full arena, and neither the type nor the words of the other
// readers' errors.
template <typename Wire, typename Domain, typename Output, typename Convert>
void ZtToRange(const zt_ptr_t* ptr, Output output, const zt_arena* arena, Convert&& convert)
{
    if (arena == nullptr) mur::raise_invalid_argument(source::zt_range, __LINE__);
    if (ptr == nullptr) mur::raise_invalid_argument(source::zt_range, __LINE__);

    std::size_t count = 0;
    const void* const array = zt_arena_resolve(arena, ptr, sizeof(Wire), &count);
    if (array == nullptr) mur::raise_result_code(mur::resultOutOfSpace);
    for (std::size_t i = 0; i < count; ++i, ++output)
        *output = Domain(convert(LoadElement<Wire>(array, i), arena));
}

} // namespace vyn_connector::common
