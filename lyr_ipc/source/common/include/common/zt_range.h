// Ranges: the array of a list, written from a pair of random-access iterators and read through an output iterator.
// Errors: null arguments as in detail/codec.h, the others are this codec's own. An empty range cannot be written, and
// where a list raises a standard exception, a range raises mur::ResultCodeException without a message.
#pragma once

#include <common/detail/codec.h>

namespace vyn_connector::common {

// Writes the values of [first, last), at most MaxCount, each as `convert(const value&, zt_arena*)` returns it. Throws
// mur::InvalidArgumentException for an empty or reversed range and mur::ResultCodeException (invalid argument) for one
// past MaxCount, both before anything is reserved; mur::ResultCodeException (out of space).
template <std::int64_t MaxCount, typename Wire, typename First, typename Last, typename Convert>
void RangeToZt(First first, Last last, zt_ptr_t* out, zt_arena* arena, Convert&& convert)
{
    using detail::codec::range;
    detail::RequireArgument(arena != nullptr, range.file, range.writing.arena);
    detail::RequireArgument(first < last, range.file, detail::codec::emptyRange);
    detail::RequireArgument(out != nullptr, range.file, range.writing.output);
    if (last - first > MaxCount) mur::raise_result_code(mur::resultInvalidArgument);

    auto count = static_cast<std::size_t>(last - first);
    std::uint8_t* element = detail::PlaceElements<Wire>(out, arena, count);
    for (; count > 0; --count, ++first, element += sizeof(Wire)) {
        const auto& value = *first;
        detail::Store<Wire>(element, convert(value, arena));
    }
}

// Assigns every element, as `convert(const Wire&, const zt_arena*)` makes it, through `output`, which is advanced
// after each. The writer's maximum does not bind here, and an empty array is read as no element. What was assigned
// before `convert` threw stays. Throws mur::ResultCodeException (out of space), the code of a full arena, where the
// array does not lie inside the arena or its size is not a whole number of elements.
template <typename Wire, typename Domain, typename Output, typename Convert>
void ZtToRange(const zt_ptr_t* ptr, Output output, const zt_arena* arena, Convert&& convert)
{
    using detail::codec::range;
    detail::RequireArgument(arena != nullptr, range.file, range.reading.arena);
    detail::RequireArgument(ptr != nullptr, range.file, range.reading.pointer);

    std::size_t count = 0;
    const void* const array = zt_arena_resolve(arena, ptr, sizeof(Wire), &count);
    if (array == nullptr) mur::raise_result_code(mur::resultOutOfSpace);
    const auto* element = static_cast<const std::uint8_t*>(array);
    for (std::size_t i = 0; i < count; ++i, ++output, element += sizeof(Wire))
        *output = Domain(convert(detail::Load<Wire>(element), arena));
}

} // namespace vyn_connector::common
