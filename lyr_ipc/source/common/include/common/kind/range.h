// The kind of a vector of described records that is written from two iterators into it: the update identifiers. Tables
// name it as Range<N>: a writer refuses none and more than N elements, a reader takes any number.
#pragma once

#include <common/kind/list.h>
#include <common/zt_range.h>

#include <iterator>
#include <utility>

namespace vyn_connector::common::kind {

template <std::uint64_t MaxCount>
struct Range : List<MaxCount> {
    template <typename Wire, typename Iterator>
    static void Write(const std::pair<Iterator, Iterator>& range, std::uint8_t* wire, zt_arena* arena)
    {
        using Record = typename std::iterator_traits<Iterator>::value_type;
        zt_ptr_t pointer{};
        RangeToZt<static_cast<std::int64_t>(MaxCount), WireOf<Record>>(range.first, range.second, &pointer, arena,
                                                                       WriterOf<Record>{&detail::WriteElement<Record>});
        detail::Store(wire, pointer);
    }
    // An empty range cannot be written either way.
    template <typename Wire, typename Iterator>
    [[gnu::always_inline]] static std::size_t Put(const std::pair<Iterator, Iterator>& range, std::uint8_t* wire,
                                                  std::size_t at, detail::Room room)
    {
        using Record = typename std::iterator_traits<Iterator>::value_type;
        if (!(range.first < range.second)) return detail::refused;
        const auto count = static_cast<std::size_t>(range.second - range.first);
        if (count > MaxCount) return detail::refused;
        // As PutElements does it, but two at a time: an identifier is so short that a third of the instructions would
        // be the loop's.
        return detail::PutArray<WireOf<Record>>(
            count, wire, at, room, [&](std::uint8_t * element, std::size_t next) __attribute__((always_inline)) {
                Iterator value = range.first;
#pragma GCC unroll 2
                for (std::size_t left = count; left > 0; --left, ++value, element += sizeof(WireOf<Record>)) {
                    next = detail::PutRecord<Record>(*value, element, next, room);
                    if (next == detail::refused) break;
                }
                return next;
            });
    }
    // The capacity is reserved from the byte count, sixteen times what the elements need, and before any test: what a
    // caller sees of a huge size is std::bad_alloc and not a result code. Both are kept as they are.
    template <typename Domain, typename Wire>
    static Domain Read(const std::uint8_t* wire, detail::Bounds arena)
    {
        using Record = typename Domain::value_type;
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        Domain values;
        if (pointer.size != 0) values.reserve(pointer.size);
        const std::uint8_t* element = detail::Get(detail::codec::range, pointer, arena, sizeof(WireOf<Record>));
        for (const std::uint8_t* const end = element + pointer.size; element != end; element += sizeof(WireOf<Record>))
            values.push_back(detail::ReadElement<Record>(element, arena));
        return values;
    }
    template <typename Domain, typename Wire, typename Access>
    static auto View(const std::uint8_t* wire, const Access& access)
    {
        return List<MaxCount>::template ViewOf<Domain>(detail::codec::range, wire, access);
    }
    template <typename Domain, typename Wire, typename Visitor>
    [[gnu::always_inline]] static bool Examine(const std::uint8_t* wire, Visitor& visit)
    {
        using Record = typename Domain::value_type;
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        auto claim = detail::ClaimOf<WireOf<Record>>(detail::codec::range, pointer, 1, MaxCount,
                                                     std::uint64_t{pointer.size} * sizeof(Record));
        claim.allocatesFirst = true;
        return visit.Array(claim, detail::ExamineElement<Record>(visit));
    }

    template <typename Iterator>
    static std::uintptr_t After(const std::pair<Iterator, Iterator>& range, std::uintptr_t at)
    {
        using Record = typename std::iterator_traits<Iterator>::value_type;
        at = detail::AlignUp(at, alignof(WireOf<Record>));
        at += static_cast<std::uintptr_t>(range.second - range.first) * sizeof(WireOf<Record>);
        for (Iterator value = range.first; value != range.second; ++value)
            at = detail::AfterRecord<Record>(*value, at);
        return at;
    }
    template <typename Record>
    static std::uintptr_t After(const std::vector<Record>& values, std::uintptr_t at)
    {
        return After(std::pair(values.begin(), values.end()), at);
    }
};

} // namespace vyn_connector::common::kind
