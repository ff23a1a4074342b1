// Goes over a received message field by field, as its table and the kinds of its fields say, without reading it into a
// record. Verify() and its like are visitors of it; so is whatever else has to know what each byte of a message is.
// Nothing is allocated or thrown here.
//
// A visitor is told of each field and decides whether to go on: every function below returns false to stop, and what
// called it then stops as well.
//
//     isStrict                       whether it asks about what readers tolerate: Expect is called in earnest
//     inWireOrder                    rows in the order of the wire, padding included; or in the order of the reader
//     Field(row, wire)               a row that is a field; calls ExamineField to go into it
//     Padding(row, wire)             a row that is none; only in the order of the wire
//     Bytes(claim)                   a pointer to bytes
//     Array(claim, element)          a pointer to elements; calls element(place, first) for each
//     Optional(claim, element)       a pointer to no element or one; calls element(place) for it
//     Each<Width>(wire, count, element)  elements inside the wire structure; calls element(place) for each
//     EventText(pointer, most)       an event's string, which has its own rules
//     Severity(value, highest)       an event's severity
//     Allocate(bytes)                what a reader allocates besides what the claims say
//     Expect(holds, fault)           if it is strict, `fault` unless it holds
//     TextAt(pointer)                the bytes of a pointer that was found good; if it is strict
//     WouldPlaceAt(offset, alignment)  whether a writer would put the next array there; if it is strict
#pragma once

#include <common/description.h>
#include <common/detail/codec.h>
#include <common/detail/table.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>

namespace vyn_connector::common {

// What can be wrong with a field.
enum class FaultKind : std::uint8_t {
    // What readers refuse.
    NullArena,       // a pointer, and no arena
    OutsideArena,    // leads past the arena's end
    PartOfElement,   // its size is not a whole number of elements
    OutsideUsedPart, // an event's string leads past the arena's top
    Severity,        // an event's severity is none of the four
    // What a caller refuses.
    OverBudget, // reading takes more bytes than the caller allows
    // What readers tolerate, and no writer writes.
    OverLimit,   // more bytes or elements than the field's limit
    Empty,       // a list that cannot be empty
    Misplaced,   // stands elsewhere in the arena than a writer puts it
    BehindTop,   // in the arena, but behind its used part
    Gap,         // the bytes before an aligned array are not zero
    Padding,     // the bytes of the wire structure that no field owns are not zero
    Flag,        // a flag is neither 0 nor 1
    Repeated,    // an element of a set, or a key, that occurs before
    Absent,      // an absent value whose pointer is not all zero
    UnusedEntry, // an entry behind the last one is not all zero
    Unowned,     // bytes of the arena that no field owns
};

// What a kind of field says of a wire pointer.
struct PointerClaim {
    const detail::Codec* codec;
    zt_ptr_t pointer;
    std::size_t elementSize; // in bytes
    std::size_t alignment;
    std::uint64_t fewest; // elements that a writer accepts
    std::uint64_t most;
    std::uint64_t allocates;     // bytes that the reader asks for, its elements' own aside
    bool allocatesFirst = false; // before it looks at the pointer
};

namespace detail {

template <typename Element>
constexpr PointerClaim ClaimOf(const Codec& codec, zt_ptr_t pointer, std::uint64_t fewest, std::uint64_t most,
                               std::uint64_t allocates)
{
    return {&codec, pointer, sizeof(Element), alignof(Element), fewest, most, allocates};
}

constexpr bool IsZero(const std::uint8_t* bytes, const std::uint8_t* end) noexcept
{
    for (; bytes != end; ++bytes)
        if (*bytes != 0) return false;
    return true;
}

// Short strings lie in the string object.
inline std::uint64_t AllocatedByText(std::uint64_t size) noexcept
{
    return size > std::string().capacity() ? size + 1 : 0;
}

// At most: each element has a node with a link and a hash, and the tables of buckets, each over twice the size of the
// one before it and none over about twice the elements, stay below five words an element and sixteen for the first.
template <typename Value>
constexpr std::uint64_t AllocatedByHashed(std::uint64_t count) noexcept
{
    if (count == 0) return 0;
    return count * (sizeof(Value) + 7 * sizeof(void*)) + 16 * sizeof(void*);
}

} // namespace detail

template <typename Row, typename Visitor>
[[gnu::always_inline]] inline bool ExamineField(const std::uint8_t* wire, Visitor& visit)
{
    return Row::Kind::template Examine<typename Row::InDomain::Type, typename Row::OnWire::Type>(wire, visit);
}

namespace detail {

template <typename Row, typename Visitor>
[[gnu::always_inline]] inline bool ExamineRow(Row row, const std::uint8_t* wire, Visitor& visit)
{
    if constexpr (isField<Row>)
        return visit.Field(row, wire + Row::offset);
    else if constexpr (Visitor::inWireOrder && isOnWire<Row>)
        return visit.Padding(row, wire + Row::offset);
    else
        return true;
}

// A reader goes over the members of the domain record, in its order.
template <typename Visitor, typename Rows, typename... Members>
[[gnu::always_inline]] inline bool ExamineMembers(RowList<Members...>, const Rows& rows, const std::uint8_t* wire,
                                                  Visitor& visit)
{
    return (ExamineRow(std::get<Members>(rows), wire, visit) && ...);
}

} // namespace detail

// Goes over the record whose wire structure stands at `wire`, at any address.
template <typename Domain, typename Visitor>
[[gnu::always_inline]] inline bool ExamineRecord(const std::uint8_t* wire, Visitor& visit)
{
    return Description<Domain>::Rows([&](auto... row) __attribute__((always_inline)) {
        if constexpr (Visitor::inWireOrder)
            return (detail::ExamineRow(row, wire, visit) && ...);
        else
            return detail::ExamineMembers(detail::MembersInOrder<Domain>{}, std::tuple(row...), wire, visit);
    });
}

} // namespace vyn_connector::common
