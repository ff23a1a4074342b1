// Makes records of any type out of their tables: each string, blob, list and set gets the size that the caller's
// function chooses between 0 and its limit. For properties that hold for every record.
#pragma once

#include <common/all_records.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace any_record {

using namespace vyn_connector;
namespace kind = vyn_connector::common::kind;

// Given a field's limit, the size to make it; for an optional member, whose limit is 1, whether it is there.
using ChooseSize = std::function<std::uint64_t(std::uint64_t limit)>;

template <typename Record>
Record Make(const ChooseSize& choose);

// Every size as given, up to its limit. An empty range of identifiers cannot be written.
template <typename Record>
Record OfSize(std::uint64_t size)
{
    const std::uint64_t least = std::is_same_v<Record, VynUpdateIdentifiers> ? 1 : 0;
    return Make<Record>([=](std::uint64_t limit) { return std::min(limit, std::max(size, least)); });
}

inline std::string MakeText(std::uint64_t size, std::uint64_t number = 0)
{
    std::string text = std::to_string(number);
    text.resize(size, '.');
    return text;
}

// What a kind of a record's own stores, nobody knows here.
template <typename Value>
void Fill(kind::InPlace, Value&, const ChooseSize&)
{
}
// No byte of a number is that of padding, of stale memory or of another of its bytes.
template <typename Value>
void Fill(kind::Number, Value& value, const ChooseSize&)
{
    value = static_cast<Value>(0x123456789ABCDEF0);
}
inline void Fill(kind::Flag, bool& value, const ChooseSize&)
{
    value = true;
}
template <typename Value>
void Fill(kind::Enumeration, Value& value, const ChooseSize&)
{
    value = static_cast<Value>(2);
}
inline void Fill(kind::Bytes, std::array<std::byte, 16>& value, const ChooseSize&)
{
    for (std::size_t i = 0; i < value.size(); ++i)
        value[i] = static_cast<std::byte>(0xE0 + i);
}
inline void Fill(kind::Time, wem::types::Timestamp& value, const ChooseSize&)
{
    value.count = -0x123456789ABCDEF0;
}
template <std::size_t MaxBytes>
void Fill(kind::Text<MaxBytes>, std::string& value, const ChooseSize& choose)
{
    value = MakeText(choose(MaxBytes));
}
inline void Fill(kind::Blob, std::vector<std::uint8_t>& value, const ChooseSize& choose)
{
    value.resize(choose(kind::Blob::limit));
}
template <typename Record>
void Fill(kind::Nested, Record& value, const ChooseSize& choose)
{
    value = Make<Record>(choose);
}
template <std::uint64_t MaxCount, typename Element>
void Fill(kind::List<MaxCount>, std::vector<Element>& values, const ChooseSize& choose)
{
    for (std::uint64_t count = choose(MaxCount); count > 0; --count)
        values.push_back(Make<Element>(choose));
}
template <typename ElementKind, typename Element>
void Fill(kind::Optional<ElementKind>, std::optional<Element>& value, const ChooseSize& choose)
{
    if (choose(1) == 0) return;
    Fill(ElementKind{}, value.emplace(), choose);
}
// Equal texts would collapse, so each is long enough for a number of its own.
template <std::uint64_t MaxCount>
void Fill(kind::Set<MaxCount, kind::Text<128>>, std::unordered_set<std::string>& values, const ChooseSize& choose)
{
    for (std::uint64_t count = choose(MaxCount); count > 0; --count)
        values.insert(MakeText(3 + choose(125), count));
}
template <std::size_t MaxCount>
void Fill(kind::Entries<MaxCount>, VynSubscriptions& value, const ChooseSize& choose)
{
    for (std::uint64_t count = choose(MaxCount); count > 0; --count) {
        VynSubscription entry = Make<VynSubscription>(choose);
        value.emplace(static_cast<VynEventSeverity>(count - 1), std::move(entry.second));
    }
}
template <std::size_t Count, std::size_t MaxBytes>
void Fill(kind::EventTexts<Count, MaxBytes>, std::array<std::string, Count>& values, const ChooseSize& choose)
{
    for (std::string& value : values)
        value = MakeText(choose(MaxBytes));
}

template <typename Record>
Record Make(const ChooseSize& choose)
{
    Record record{};
    common::ForEachRow<Record>([&](auto row) {
        using Row = decltype(row);
        if constexpr (common::isField<Row>) Fill(typename Row::Kind{}, Row::InDomain::Of(record), choose);
    });
    return record;
}

} // namespace any_record
