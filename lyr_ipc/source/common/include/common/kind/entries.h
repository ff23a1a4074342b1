// The kind of a map's entries inline in the wire structure, without a count: the subscriptions by severity.
//
// An unused entry is all zero and reads as severity 0 with no names: written and read back, a record without severity 0
// and with fewer than MaxCount entries comes back with one more. The format is like that, and both ends rely on it.
#pragma once

#include <common/detail/derived.h>
#include <common/kind/list.h>
#include <common/record.h>

namespace vyn_connector::common::detail {

[[noreturn, gnu::cold, gnu::noinline]] inline void RaiseTooManySeverities(std::size_t limit)
{
    throw std::length_error(
        fmt::vformat("vyn subscriptions: Vyn event severity types more than {}", fmt::make_format_args(limit)));
}

// The record that a map's entry is: the pair, without the const that the map gives its key.
template <typename Entry>
struct RecordOfEntry;
template <typename Key, typename Value>
struct RecordOfEntry<std::pair<const Key, Value>> {
    using Type = std::pair<Key, Value>;
};

} // namespace vyn_connector::common::detail

namespace vyn_connector::common::kind {

template <std::size_t MaxCount>
struct Entries {
    static constexpr std::size_t limit = MaxCount;

    template <typename Map>
    using RecordIn = typename detail::RecordOfEntry<typename Map::value_type>::Type;

    template <typename Domain, typename Wire>
    static constexpr bool fits = std::is_same_v<Wire, WireOf<RecordIn<Domain>>[MaxCount]>;
    template <typename Domain, typename Wire>
    static constexpr bool Joins()
    {
        static_assert(fits<Domain, Wire>, "an Entries joins a map and an array of its entries' wire structures");
        return true;
    }

    // Each entry is written from where it stands in the map.
    template <typename Wire, typename Domain>
    static void Write(const Domain& entries, std::uint8_t* wire, zt_arena* arena)
    {
        if (entries.size() > MaxCount) detail::RaiseTooManySeverities(MaxCount);
        for (const auto& entry : entries) {
            detail::WriteRecord<RecordIn<Domain>>(entry, wire, arena);
            wire += sizeof(WireOf<RecordIn<Domain>>);
        }
    }
    template <typename Wire, typename Domain>
    [[gnu::always_inline]] static std::size_t Put(const Domain& entries, std::uint8_t* wire, std::size_t at,
                                                  detail::Room room)
    {
        if (entries.size() > MaxCount) return detail::refused;
        const std::uint8_t* const end = wire + sizeof(Wire);
        for (const auto& entry : entries) {
            at = detail::PutRecord<RecordIn<Domain>>(entry, wire, at, room);
            if (at == detail::refused) return detail::refused;
            wire += sizeof(WireOf<RecordIn<Domain>>);
        }
        std::memset(wire, 0, static_cast<std::size_t>(end - wire));
        return at;
    }
    // All entries, used or not. A repeated severity's entry is read in full, so what it raises is raised, and dropped.
    template <typename Domain, typename Wire>
    static Domain Read(const std::uint8_t* wire, detail::Bounds arena)
    {
        Domain entries;
        for (std::size_t i = 0; i < MaxCount; ++i, wire += sizeof(WireOf<RecordIn<Domain>>))
            entries.emplace(detail::ReadRecord<RecordIn<Domain>>(wire, arena));
        return entries;
    }
    // All entries, used or not.
    template <typename Domain, typename Wire, typename Access>
    static auto View(const std::uint8_t* wire, const Access& access)
    {
        using Record = RecordIn<Domain>;
        return ArrayView<Nested, Record, WireOf<Record>, Access>(wire, MaxCount, access);
    }
    template <typename Domain, typename Wire, typename Visitor>
    [[gnu::always_inline]] static bool Examine(const std::uint8_t* wire, Visitor& visit)
    {
        using Record = RecordIn<Domain>;
        if (!visit.Allocate(detail::AllocatedByHashed<typename Domain::value_type>(MaxCount))) return false;
        return visit.template Each<sizeof(WireOf<Record>)>(
            wire, MaxCount, [&](const std::uint8_t* entry) __attribute__((always_inline)) {
                if constexpr (Visitor::isStrict) {
                    if (IsUnused<Record>(entry, wire, visit))
                        return visit.Expect(detail::IsZero(entry, wire + sizeof(Wire)), FaultKind::UnusedEntry);
                    if (!visit.Expect(!IsKeyUsed<Record>(entry, wire), FaultKind::Repeated)) return false;
                }
                return ExamineRecord<Record>(entry, visit);
            });
    }
    template <typename Value, typename Out>
    static void Show(const Value& value, Out& out)
    {
        out.Entries(value);
    }

    template <typename Domain>
    static std::uintptr_t After(const Domain& entries, std::uintptr_t at)
    {
        for (const auto& entry : entries)
            at = detail::AfterRecord<RecordIn<Domain>>(entry, at);
        return at;
    }
    template <typename Domain>
    static constexpr std::uintptr_t MostAfter(std::uintptr_t at)
    {
        return detail::MostAfterRecords<RecordIn<Domain>>(MaxCount, at);
    }

private:
    // An entry that is all zero is also what a writer makes of severity 0 without names where nothing stands in the
    // arena yet. It can do so once.
    template <typename Record, typename Visitor>
    static bool IsUnused(const std::uint8_t* entry, const std::uint8_t* wire, const Visitor& visit)
    {
        constexpr std::size_t width = sizeof(WireOf<Record>);
        if (!detail::IsZero(entry, entry + width)) return false;
        for (; wire != entry; wire += width)
            if (detail::IsZero(wire, wire + width)) return true;
        return !visit.WouldPlaceAt(0, alignof(zt_ptr_t));
    }
    template <typename Record>
    static bool IsKeyUsed(const std::uint8_t* entry, const std::uint8_t* wire)
    {
        using Key = typename Record::first_type;
        const auto key = [](const std::uint8_t* place) {
            return detail::Load<Key>(place + RowOf<&Record::first>::offset);
        };
        for (; wire != entry; wire += sizeof(WireOf<Record>))
            if (key(wire) == key(entry)) return true;
        return false;
    }
};

} // namespace vyn_connector::common::kind
