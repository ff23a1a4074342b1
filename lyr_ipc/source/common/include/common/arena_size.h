// How much arena a record needs, so that callers size a buffer before they fill it instead of guessing. Derived from
// the records' tables. Header-only; nothing in the library calls it.
#pragma once

#include <common/event.h>
#include <common/record.h>
#include <common/subscriptions.h>
#include <common/update_identifiers.h>

#include <algorithm>

namespace vyn_connector::common {

// The number of bytes by which writing `value` moves the top of an arena, where the top is at address `top`. An arena
// with that much room left takes the record; with a byte less it does not. (Only the address's remainder by 8 matters:
// it decides the gaps before aligned elements.) Limits are not tested: a record that its writer refuses as too large is
// given the size that it would have.
template <typename Record>
std::size_t ArenaSize(const Record& value, std::uintptr_t top);

// An event's strings have rules of their own: an empty one takes a byte, one over its limit takes none.
std::size_t ArenaSize(const VynEvent& value, std::uintptr_t top);

// The identifiers that are sent.
std::size_t ArenaSize(const VynUpdateIdentifierRange& range, std::uintptr_t top);

// The most bytes that writing any record of the type can take, wherever the top is.
template <typename Record>
constexpr std::size_t MaxArenaSize();

// How far each kind of field moves the top. A position is an address, or its remainder by 8. Every rule stands once:
// for a value, and for the Largest of its type, which stands for one with every size at its limit.
namespace extent {

template <typename T>
struct Largest {
};

template <typename T>
constexpr std::uint64_t SizeOf(const T& value, std::uint64_t /*limit*/)
{
    return value.size();
}
template <typename T>
constexpr std::uint64_t SizeOf(Largest<T>, std::uint64_t limit)
{
    return limit;
}

template <typename Wire>
constexpr std::uintptr_t AfterElements(std::uintptr_t at, std::uint64_t count)
{
    return (at + alignof(Wire) - 1) / alignof(Wire) * alignof(Wire) + count * sizeof(Wire);
}

template <typename Record>
constexpr std::uintptr_t AfterRecord(const Record& value, std::uintptr_t at);

template <typename Element>
constexpr std::uintptr_t AfterEach(const std::vector<Element>& values, std::uint64_t /*limit*/, std::uintptr_t at)
{
    for (const Element& value : values)
        at = AfterRecord(value, at);
    return at;
}

// `limit` may be huge. But what a record adds depends only on the position's remainder by 8, so that the remainders
// come round again after at most 8 records, and whole rounds can be taken at once.
template <typename Element>
constexpr std::uintptr_t AfterEach(Largest<std::vector<Element>>, std::uint64_t limit, std::uintptr_t at)
{
    const auto next = [](std::uintptr_t position) { return AfterRecord(Largest<Element>{}, position); };
    for (int lead = 0; lead < 8 && limit > 0; ++lead, --limit)
        at = next(at);
    std::uintptr_t roundEnd = at;
    std::uint64_t round = 0;
    do {
        roundEnd = next(roundEnd);
        ++round;
    } while (roundEnd % 8 != at % 8);
    at += limit / round * (roundEnd - at);
    for (std::uint64_t rest = limit % round; rest > 0; --rest)
        at = next(at);
    return at;
}

template <typename Value>
constexpr std::uintptr_t After(kind::InPlace, const Value&, std::uintptr_t at)
{
    return at;
}

template <std::size_t MaxBytes, typename Value>
constexpr std::uintptr_t After(kind::Text<MaxBytes>, const Value& value, std::uintptr_t at)
{
    return at + SizeOf(value, MaxBytes);
}

template <typename Value>
constexpr std::uintptr_t After(kind::Blob, const Value& value, std::uintptr_t at)
{
    return at + SizeOf(value, kind::Blob::limit);
}

template <typename Value>
constexpr std::uintptr_t After(kind::Nested, const Value& value, std::uintptr_t at)
{
    return AfterRecord(value, at);
}

template <typename Values>
struct ElementOf {
    using Type = typename Values::value_type;
};
template <typename Values>
struct ElementOf<Largest<Values>> : ElementOf<Values> {
};

template <std::uint64_t MaxCount, typename Values>
constexpr std::uintptr_t After(kind::List<MaxCount>, const Values& values, std::uintptr_t at)
{
    using Wire = WireOf<typename ElementOf<Values>::Type>;
    return AfterEach(values, MaxCount, AfterElements<Wire>(at, SizeOf(values, MaxCount)));
}

template <std::int64_t MaxCount, typename Values>
constexpr std::uintptr_t After(kind::Range<MaxCount>, const Values& values, std::uintptr_t at)
{
    using Wire = WireOf<typename ElementOf<Values>::Type>;
    return AfterElements<Wire>(at, SizeOf(values, MaxCount));
}

template <typename ElementKind, typename Value>
constexpr std::uintptr_t After(kind::Optional<ElementKind>, const std::optional<Value>& value, std::uintptr_t at)
{
    if (!value.has_value()) return at;
    return After(ElementKind{}, *value, AfterElements<typename kind::SlotOf<Value>::Type>(at, 1));
}
template <typename ElementKind, typename Value>
constexpr std::uintptr_t After(kind::Optional<ElementKind>, Largest<std::optional<Value>>, std::uintptr_t at)
{
    return After(ElementKind{}, Largest<Value>{}, AfterElements<typename kind::SlotOf<Value>::Type>(at, 1));
}

template <std::uint64_t MaxCount>
std::uintptr_t After(kind::Set<MaxCount>, const std::unordered_set<std::string>& values, std::uintptr_t at)
{
    at = AfterElements<zt_ptr_t>(at, values.size());
    for (const std::string& value : values)
        at += value.size();
    return at;
}
template <std::uint64_t MaxCount>
constexpr std::uintptr_t After(kind::Set<MaxCount>, Largest<std::unordered_set<std::string>>, std::uintptr_t at)
{
    return AfterElements<zt_ptr_t>(at, MaxCount) + MaxCount * 128;
}

template <std::size_t MaxCount>
std::uintptr_t After(kind::Entries<MaxCount>, const VynSubscriptions& value, std::uintptr_t at)
{
    for (const auto& [severity, eventTypes] : value)
        at = After(kind::Set<128>{}, eventTypes, at);
    return at;
}
template <std::size_t MaxCount>
constexpr std::uintptr_t After(kind::Entries<MaxCount>, Largest<VynSubscriptions>, std::uintptr_t at)
{
    return AfterEach(Largest<std::vector<VynSubscription>>{}, MaxCount, at);
}

template <std::size_t Count, std::size_t MaxBytes, typename Value>
constexpr std::uintptr_t After(kind::Texts<Count, MaxBytes>, Largest<Value>, std::uintptr_t at)
{
    return at + Count * MaxBytes;
}

template <typename Row, typename Record>
constexpr std::uintptr_t AfterRow(const Record& value, std::uintptr_t at)
{
    if constexpr (isField<Row>) return After(typename Row::Kind{}, Row::InDomain::Of(value), at);
    return at;
}
template <typename Row, typename Record>
constexpr std::uintptr_t AfterRow(Largest<Record>, std::uintptr_t at)
{
    if constexpr (isField<Row>) return After(typename Row::Kind{}, Largest<typename Row::InDomain::Type>{}, at);
    return at;
}

template <typename Record>
struct RecordOf {
    using Type = Record;
};
template <typename Record>
struct RecordOf<Largest<Record>> {
    using Type = Record;
};

template <typename Record>
constexpr std::uintptr_t AfterRecord(const Record& value, std::uintptr_t at)
{
    return Description<typename RecordOf<Record>::Type>::Rows([&](auto... row) {
        std::uintptr_t end = at;
        ((end = AfterRow<decltype(row)>(value, end)), ...);
        return end;
    });
}

} // namespace extent

template <typename Record>
std::size_t ArenaSize(const Record& value, std::uintptr_t top)
{
    return extent::AfterRecord(value, top) - top;
}

inline std::size_t ArenaSize(const VynUpdateIdentifierRange& range, std::uintptr_t top)
{
    const auto count = static_cast<std::uint64_t>(range.second - range.first);
    return extent::AfterElements<WireOf<VynUpdateIdentifier>>(top, count) - top;
}

template <typename Record>
constexpr std::size_t MaxArenaSize()
{
    std::size_t most = 0;
    for (std::uintptr_t top = 0; top < 8; ++top)
        most = std::max<std::size_t>(most, extent::AfterRecord(extent::Largest<Record>{}, top) - top);
    return most;
}

namespace extent {

constexpr std::size_t EventText(std::size_t size, std::size_t limit)
{
    return size > limit ? 0 : std::max<std::size_t>(size, 1);
}

template <typename Value>
std::size_t InEvent(kind::InPlace, const Value&)
{
    return 0;
}
template <std::size_t MaxBytes>
std::size_t InEvent(kind::Text<MaxBytes>, const std::string& value)
{
    return EventText(value.size(), MaxBytes);
}
template <std::size_t Count, std::size_t MaxBytes>
std::size_t InEvent(kind::Texts<Count, MaxBytes>, const std::array<std::string, Count>& values)
{
    std::size_t size = 0;
    for (const std::string& value : values)
        size += EventText(value.size(), MaxBytes);
    return size;
}

} // namespace extent

inline std::size_t ArenaSize(const VynEvent& value, std::uintptr_t /*top*/)
{
    std::size_t size = 0;
    ForEachRow<VynEvent>([&](auto row) {
        using Row = decltype(row);
        size += extent::InEvent(typename Row::Kind{}, Row::InDomain::Of(value));
    });
    return size;
}

} // namespace vyn_connector::common
