// What holds of the ways to look at a message without reading it, beside what its reader made of it: Verify says the
// same as the reader, a view shows what the reader returned or throws what it threw, at the field that Verify names,
// and what is canonical is what a writer writes.
#pragma once

#include "library_values.h"
#include "target.h"

#include <common/all_records.h>
#include <common/record_view.h>
#include <common/verify.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace library {

// Goes over a view in the order of the domain record and compares each leaf with the record that the reader returned,
// where there is one. `path` is that of the leaf that is looked at.
class Looks {
public:
    std::string path;

    template <typename Record, typename Access>
    void Look(const common::RecordView<Record, Access>& view, const Record* record)
    {
        EachRow<Record>(common::detail::MembersInOrder<Record>{}, view, record);
    }

private:
    template <typename Record, typename View, typename... Members>
    void EachRow(common::detail::RowList<Members...>, const View& view, const Record* record)
    {
        (OneRow<Record, Members>(view, record), ...);
    }
    template <typename Record, typename Row, typename View>
    void NamedRow(const char* name, const View& view, const Record* record)
    {
        const std::string around = path;
        path += (around.empty() ? "" : ".") + std::string(name);
        Leaf(GetOf(static_cast<typename Row::InDomain*>(nullptr), view),
             record == nullptr ? nullptr : &Row::InDomain::Of(*record));
        path = around;
    }
    template <typename Record, typename Row, typename View>
    void OneRow(const View& view, const Record* record)
    {
        if constexpr (common::isField<Row>) {
            common::ForEachRow<Record>([&](auto row) {
                if constexpr (std::is_same_v<decltype(row), Row>) NamedRow<Record, Row>(row.name, view, record);
            });
        }
    }

    template <auto Member, typename View>
    static auto GetOf(common::detail::Member<Member>*, const View& view)
    {
        return view.template Get<Member>();
    }
    template <typename Value, typename View>
    static auto GetOf(common::detail::Itself<Value>*, const View& view)
    {
        return view.Get();
    }

    template <typename Same>
    void RequireSame(bool isThere, Same same)
    {
        if (isThere) Require(same(), "the view shows another value than the reader: " + path);
    }

    // Numbers and the like.
    template <typename Seen, typename Value>
    void Leaf(const Seen& seen, const Value* read)
    {
        RequireSame(read != nullptr, [&] { return seen == *read; });
    }
    template <typename Value>
    void Leaf(const common::BytesView& seen, const Value* read)
    {
        RequireSame(read != nullptr, [&] { return std::equal(seen.begin(), seen.end(), read->begin(), read->end()); });
    }
    template <typename Record, typename Access, typename Value>
    void Leaf(const common::RecordView<Record, Access>& seen, const Value* read)
    {
        Look(seen, read);
        RequireSame(read != nullptr, [&] { return ToRecord(seen) == *read; });
    }
    template <typename Seen, typename Value>
    void Leaf(const std::optional<Seen>& seen, const Value* read)
    {
        RequireSame(read != nullptr, [&] { return seen.has_value() == read->has_value(); });
        if (seen) Leaf(*seen, read == nullptr ? nullptr : &**read);
    }
    template <typename Kind, typename Domain, typename Wire, typename Access, typename Values>
    void Leaf(const common::ArrayView<Kind, Domain, Wire, Access>& seen, const Values* read)
    {
        if constexpr (std::is_same_v<Values, std::unordered_set<std::string>>) {
            std::unordered_set<std::string> distinct;
            Each(seen, [&](std::string_view text, std::size_t) { distinct.emplace(text); });
            RequireSame(read != nullptr, [&] { return distinct == *read; });
        } else if constexpr (std::is_same_v<Values, VynSubscriptions>) {
            VynSubscriptions entries;
            Each(seen, [&](const auto& entry, std::size_t) {
                Look(entry, static_cast<const VynSubscription*>(nullptr));
                entries.emplace(ToRecord(entry));
            });
            RequireSame(read != nullptr, [&] { return entries == *read; });
        } else {
            RequireSame(read != nullptr, [&] { return seen.size() == read->size(); });
            Each(seen,
                 [&](const auto& element, std::size_t i) { Leaf(element, read == nullptr ? nullptr : &(*read)[i]); });
        }
    }
    // The index is part of the path while the element is taken and while it is looked at.
    template <typename View, typename Use>
    void Each(const View& view, Use use)
    {
        const std::string around = path;
        std::size_t i = 0;
        for (auto element = view.begin(); element != view.end(); ++element, ++i) {
            path = around + "[" + std::to_string(i) + "]";
            use(*element, i);
        }
        path = around;
    }
};

// What the fault throws, which it also names.
inline std::optional<model::Failure> Raised(const common::Fault& fault)
{
    auto raised = FailureOf([&] { fault.Raise(); });
    Require(raised->type == fault.Exception(), "a fault names another type than it throws");
    Require(raised->text == fault.Text(), "a fault gives another text than it throws");
    return raised;
}

// `failure` and `status` are the reader's, and so is `record`, which is null where it failed.
template <typename Record>
void CheckLooks(const common::WireOf<Record>& wire, const zt_arena* arena, const std::optional<model::Failure>& failure,
                bool status, const Record* record)
{
    if (failure.has_value() && failure->type == "std::bad_alloc") return;
    const std::string name = std::string(common::Description<Record>::name) + ": ";
    const bool isGood = !failure.has_value() && status;

    const std::optional<common::Fault> fault = common::Verify<Record>(wire, arena);
    Require(fault.has_value() != isGood, name + "Verify and the reader do not agree");
    std::vector<common::Fault> all;
    common::Verify<Record>(wire, arena, [&](const common::Fault& each) { all.push_back(each); });
    Require(all.empty() == isGood, name + "the two forms of Verify do not agree");

    Looks looks;
    const common::RecordView<Record> view(wire, arena);
    const auto thrown = FailureOf([&] { looks.Look(view, record); });
    Require(thrown == failure, name + "a view throws something else than the reader");
    if (fault.has_value()) {
        Require(all.front().Path() == fault->Path() && all.front().Kind() == fault->Kind(),
                name + "the first of all faults is another one");
        Require(fault->IsRefused(), name + "a fault that readers refuse says that they do not");
        if (failure.has_value()) {
            Require(Raised(*fault) == failure, name + "Raise throws something else than the reader");
            Require(fault->Path() == looks.path, name + "a fault at " + fault->Path() + ", thrown at " + looks.path);
        }
        if constexpr (std::is_same_v<Record, VynEvent>)
            Require(FailureOf([&] { common::Conversion<Record>::Read(wire, arena); }) == Raised(*fault),
                    name + "Decode throws something else than Raise");
        Require(!common::Verified<Record>(wire, arena).has_value(), name + "a view of a message with a fault");
        Require(common::VerifyCanonical<Record>(wire, arena).has_value(), name + "canonical, with a fault");
        return;
    }

    Require(common::ToRecord(view) == *record, name + "ToRecord gives another record");
    if constexpr (std::is_same_v<Record, VynEvent>)
        Require(common::Conversion<Record>::Read(wire, arena) == *record, name + "Decode gives another record");
    const auto verified = common::Verified<Record>(wire, arena);
    Require(verified.has_value(), name + "no view of a message without a fault");
    Looks().Look(*verified, record);

    const std::uint64_t size = common::DecodedSize<Record>(wire, arena);
    Require(!common::Verify<Record>(wire, arena, size).has_value(), name + "over a budget of just the size");
    if (size == 0) return;
    const auto over = common::Verify<Record>(wire, arena, size - 1);
    Require(over.has_value() && over->Kind() == common::FaultKind::OverBudget, name + "within a budget of less");
    Raised(*over);
}

// Without the entry for severity 0 that reading adds to subscriptions.
template <typename Record>
Record AsInMessage(const common::RecordView<Record>&, const Record& record)
{
    return record;
}
inline VynSubscriptions AsInMessage(const common::RecordView<VynSubscriptions>& view, const VynSubscriptions&)
{
    VynSubscriptions entries;
    for (const auto entry : view.Get())
        entries.emplace(common::ToRecord(entry));
    return entries;
}
inline VynSubscriptionsWithHash AsInMessage(const common::RecordView<VynSubscriptionsWithHash>& view,
                                            const VynSubscriptionsWithHash& record)
{
    return {record.first, AsInMessage(view.Get<&VynSubscriptionsWithHash::second>(), record.second)};
}

// Whether the texts of an event are the same in two arenas. The byte that an empty one takes is left to chance; where
// all are empty, there may be no memory at all.
inline bool AreTextsEqual(const common::WireOf<VynEvent>& wire, const std::uint8_t* a, const std::uint8_t* b)
{
    bool areEqual = true;
    common::ForEachRow<VynEvent>([&](auto row) {
        using Row = decltype(row);
        if constexpr (std::is_class_v<typename Row::InDomain::Type>) { // a string or an array of them
            for (std::size_t at = Row::offset; at < Row::offset + Row::width; at += sizeof(zt_ptr_t)) {
                zt_ptr_t text;
                std::memcpy(&text, reinterpret_cast<const std::uint8_t*>(&wire) + at, sizeof(text));
                if (text.size != 0)
                    areEqual = areEqual && std::memcmp(a + text.offset, b + text.offset, text.size) == 0;
            }
        }
    });
    return areEqual;
}

// Whose order is free. In another order, the sets of a map have other gaps before them.
template <typename Record>
inline constexpr bool hasMap =
    std::is_same_v<Record, VynSubscriptions> || std::is_same_v<Record, VynSubscriptionsWithHash>;
template <typename Record>
inline constexpr bool hasSet = std::is_same_v<Record, VynSubscription> || hasMap<Record>;

// A canonical message, read and written again from the same top, gives the same bytes; where it has a set, another
// canonical message of the same record.
template <typename Record>
void CheckCanonical(const common::WireOf<Record>& wire, const zt_arena& arena, const Record& record)
{
    const std::optional<common::Fault> departure = common::VerifyCanonical<Record>(wire, &arena);
    if (departure.has_value()) {
        Require(!departure->IsRefused(), "a good message is refused");
        Raised(*departure);
        return;
    }
    const auto used = static_cast<std::size_t>(arena.top - arena.start);
    const std::size_t startMod16 = reinterpret_cast<std::uintptr_t>(arena.start) % 16;
    const std::size_t mostGaps = hasMap<Record> ? 4 * 3 : 0;
    std::vector<std::uint8_t> room(16 + startMod16 + used + mostGaps + 1);
    std::uint8_t* start = room.data() + (16 - reinterpret_cast<std::uintptr_t>(room.data()) % 16) % 16 + startMod16;
    zt_arena again{start, start, start + used + mostGaps};
    common::WireOf<Record> rewritten{};
    const Record same = AsInMessage(common::RecordView<Record>(wire, &arena), record);
    const auto failure = FailureOf([&] { rewritten = common::Conversion<Record>::Write(same, &again); });
    Require(!failure.has_value(), "a canonical message cannot be written again");
    Require(hasMap<Record> || again.top == again.end,
            "a canonical message takes another size when it is written again");
    Require(!common::VerifyCanonical<Record>(rewritten, &again).has_value(), "what a writer wrote is not canonical");
    if constexpr (hasSet<Record>) {
        Require(common::Conversion<Record>::Read(rewritten, &again) == record, "another record is written again");
        return;
    }
    Require(std::memcmp(&rewritten, &wire, sizeof(wire)) == 0, "a canonical message has another wire structure");
    bool areEqual = false;
    if constexpr (std::is_same_v<Record, VynEvent>)
        areEqual = AreTextsEqual(wire, arena.start, start);
    else
        areEqual = std::equal(arena.start, arena.top, start);
    Require(areEqual, "a canonical message has another arena");
}

} // namespace library
