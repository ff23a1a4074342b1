// Says of a received message whether its reader would take it, and if not, where and why, without reading it: nothing
// is allocated and nothing thrown. For callers who distrust their peer.
//
// Verify finds a fault where the reader throws, or clears an event's status, the same fault first, and only there;
// running out of memory aside. What it costs is bounded by the size of the arena, however many elements point to the
// same bytes, for no list lies in the elements of another. A message that was found good stays good as long as its
// bytes do not change: one in memory that its sender can still write is to be copied first.
#pragma once

#include <common/detail/visitors.h>
#include <common/fault.h>
#include <common/record_view.h>

#include <limits>
#include <optional>
#include <type_traits>

namespace vyn_connector::common {

inline constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

// The bytes of memory that reading the message asks for, known before it is paid: exact for strings, blobs and lists,
// and at least that for sets, where a repeated element is counted as if it were kept. What a bad pointer leads to
// counts nothing.
template <typename Record>
std::uint64_t DecodedSize(const WireOf<Record>& wire, const zt_arena* arena) noexcept
{
    detail::Weight weight(detail::ReachOf(arena));
    ExamineRecord<Record>(reinterpret_cast<const std::uint8_t*>(&wire), weight);
    return weight.sum;
}

// Calls `report(fault)` for each fault, in the order of the reader, and goes on behind it.
template <typename Record, typename Report, std::enable_if_t<std::is_invocable_v<Report&, const Fault&>, int> = 0>
void Verify(const WireOf<Record>& wire, const zt_arena* arena, Report&& report)
{
    auto each = [&](const Fault& fault) {
        report(fault);
        return true;
    };
    detail::FaultFinder finder(detail::ReachOf(arena), unlimited, each);
    ExamineRecord<Record>(reinterpret_cast<const std::uint8_t*>(&wire), finder);
}

namespace detail {

// Whether the message is good and within the budget; a no may be wrong.
template <typename Record>
[[gnu::always_inline]] inline bool IsSound(const WireOf<Record>& wire, const zt_arena* arena, Reach reach,
                                           std::uint64_t budget) noexcept
{
    Soundness soundness(reach);
    return soundness.Of<Record>(reinterpret_cast<const std::uint8_t*>(&wire)) &&
           (budget == unlimited || DecodedSize<Record>(wire, arena) <= budget);
}

// Out of line, for messages that are bad.
template <typename Record>
[[gnu::cold, gnu::noinline]] std::optional<Fault> FirstFault(const WireOf<Record>& wire, const zt_arena* arena,
                                                             std::uint64_t budget) noexcept
{
    std::optional<Fault> first;
    auto stop = [&first](const Fault& fault) {
        first = fault;
        return false;
    };
    FaultFinder finder(ReachOf(arena), budget, stop);
    ExamineRecord<Record>(reinterpret_cast<const std::uint8_t*>(&wire), finder);
    return first;
}

} // namespace detail

// Nothing, or the first fault. Where reading would ask for more than `budget` bytes of memory, that is a fault too, of
// the field that goes over it.
template <typename Record>
std::optional<Fault> Verify(const WireOf<Record>& wire, const zt_arena* arena,
                            std::uint64_t budget = unlimited) noexcept
{
    if (detail::IsSound<Record>(wire, arena, detail::ReachOf(arena), budget)) return std::nullopt;
    return detail::FirstFault<Record>(wire, arena, budget);
}

// A view that tests no pointer any more, of a message that was found good; nothing where Verify finds a fault.
template <typename Record>
std::optional<VerifiedView<Record>> Verified(const WireOf<Record>& wire VYN_LIFETIME_BOUND, const zt_arena* arena,
                                             std::uint64_t budget = unlimited) noexcept
{
    const detail::Reach reach = detail::ReachOf(arena);
    if (!detail::IsSound<Record>(wire, arena, reach, budget) && detail::FirstFault<Record>(wire, arena, budget))
        return std::nullopt;
    return detail::ViewAccess::Make<Record>(reinterpret_cast<const std::uint8_t*>(&wire), detail::Trusted{reach});
}
template <typename Record>
std::optional<VerifiedView<Record>> Verified(const WireOf<Record>&& wire, const zt_arena* arena,
                                             std::uint64_t budget = unlimited) noexcept = delete;

// Whether the message is, byte for byte, one that a writer of this library writes for some record into an arena whose
// top is at its start and which holds nothing else: nothing, or the first departure from that, in wire order.
// Beyond what Verify refuses, that is a value over its limit; an array that stands anywhere but where the writer puts
// it, which no two fields can share; a gap, padding or an unused entry that is not zero; a flag that is neither 0 nor
// 1; a repeated element of a set; and bytes of the used part that no field owns. The order of a set's elements is free,
// as is the byte that an event's empty string takes. The arena's start is to be aligned as it was when the message was
// written; writers align addresses, not offsets. Padding counts: a wire structure that was filled by hand may have any.
// Reading subscriptions adds an entry for severity 0, so that these alone are not written again as they were.
template <typename Record>
std::optional<Fault> VerifyCanonical(const WireOf<Record>& wire, const zt_arena* arena) noexcept
{
    detail::Departure departure(detail::ReachOf(arena));
    if (ExamineRecord<Record>(reinterpret_cast<const std::uint8_t*>(&wire), departure)) departure.Finish();
    return departure.found;
}

} // namespace vyn_connector::common
