// A borrowed look at a received message: reads the one field that is asked for and copies, allocates and follows
// nothing else. For callers who route, filter or log a message and need no record of their own.
//
//     const RecordView<AppInfo> view(wire, &arena);
//     const std::string_view name = view.Get<&AppInfo::productInfo>().Get<&ProductInfo::field1>();
//
//     kind of field                                    what Get returns
//     Number, Flag, Enumeration, Time, Bytes           the value
//     Text                                             std::string_view
//     Blob                                             BytesView
//     Nested                                           RecordView of the record
//     List, Range, and entries                         a random-access range of RecordView
//     Set, and an event's array of strings             a random-access range of std::string_view
//     Optional                                         std::optional of the above
//
// Get tests the pointer of its field and throws what the reader throws there; nothing is thrown for a field that was
// not asked for. A set shows its elements in the order of the wire, and one that is repeated as often as it stands
// there. An event's string that lies outside the used part of the arena is empty, as it is for its reader.
//
// A view and all that it hands out are valid as long as the wire structure and the arena's bytes are; the `zt_arena`
// itself is not looked at again. Copying a view is cheap, and a view may be used by several threads.
#pragma once

#include <common/array_view.h>
#include <common/detail/reach.h>
#include <common/record.h>

#include <type_traits>

namespace vyn_connector::common {

template <typename Record, typename Access>
class RecordView {
public:
    using Wire = WireOf<Record>;

    // A null arena is one in which nothing lies.
    template <typename Test = Access, std::enable_if_t<std::is_same_v<Test, detail::Tested>, int> = 0>
    RecordView(const Wire& wire VYN_LIFETIME_BOUND, const zt_arena* arena) noexcept
        : RecordView(reinterpret_cast<const std::uint8_t*>(&wire), Access{detail::ReachOf(arena)})
    {
    }
    // A view of a wire structure that is gone at the end of the line.
    template <typename Test = Access, std::enable_if_t<std::is_same_v<Test, detail::Tested>, int> = 0>
    RecordView(const Wire&& wire, const zt_arena* arena) = delete;

    // One field: `Get<&ProductInfo::field4>()`.
    template <auto Member>
    decltype(auto) Get() const
    {
        static_assert(std::is_same_v<typename detail::RecordOfMember<Member>::Type, Record>,
                      "the member is none of this record's");
        return Look<RowOf<Member>>();
    }
    // What a list is that has no record around it.
    template <typename Whole = Record>
    auto Get() const
    {
        return Look<RowOfWhole<Whole>>();
    }

private:
    template <typename Row>
    auto Look() const
    {
        return Row::Kind::template View<typename Row::InDomain::Type, typename Row::OnWire::Type>(wire_ + Row::offset,
                                                                                                  access_);
    }

    friend struct detail::ViewAccess;
    RecordView(const std::uint8_t* wire, Access access) noexcept : wire_(wire), access_(access) {}

    const std::uint8_t* wire_;
    Access access_;
};

// A view of a message that was found good as a whole: its Get tests nothing and throws nothing. Verified() of verify.h
// hands it out.
template <typename Record>
using VerifiedView = RecordView<Record, detail::Trusted>;

// The record with all its data, as its reader makes it. Throws what the reader throws; an event's never fails.
template <typename Record, typename Access>
Record ToRecord(const RecordView<Record, Access>& view)
{
    const auto wire = detail::Load<WireOf<Record>>(detail::ViewAccess::WireOfView(view));
    const detail::Reach reach = detail::ViewAccess::ReachOfView(view);
    if (detail::IsNullArena(reach.bounds)) return detail::ReadAsIs<Record>(wire, nullptr);
    const auto at = [](std::uintptr_t address) { return reinterpret_cast<std::uint8_t*>(address); };
    const zt_arena arena{at(reach.bounds.start), at(reach.top), at(reach.bounds.start + reach.bounds.limit - 1)};
    return detail::ReadAsIs<Record>(wire, &arena);
}

} // namespace vyn_connector::common
