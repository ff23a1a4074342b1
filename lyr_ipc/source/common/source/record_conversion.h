// Makes the writer and the reader of a record out of its table. The sources of the records define their exported pairs
// with it; callers see CastToZt and CastFromZt.
#pragma once

#include <common/record.h>

namespace vyn_connector::common {
namespace detail {

template <typename Row, typename Source>
[[gnu::cold]] void WriteRow(const Source& value, std::uint8_t* wire, zt_arena* arena)
{
    if constexpr (isField<Row>)
        Row::Kind::template Write<typename Row::OnWire::Type>(Row::InDomain::Of(value), wire + Row::offset, arena);
}

template <typename Row, typename Source>
[[gnu::always_inline]] inline std::size_t PutRow(const Source& value, std::uint8_t* wire, std::size_t at, Room room)
{
    if constexpr (isField<Row>)
        return Row::Kind::template Put<typename Row::OnWire::Type>(Row::InDomain::Of(value), wire + Row::offset, at,
                                                                   room);
    else if constexpr (isOnWire<Row>)
        std::memset(wire + Row::offset, 0, Row::width);
    return at;
}

template <typename Row>
typename Row::InDomain::Type ReadRow(const std::uint8_t* wire, Bounds arena)
{
    using Domain = typename Row::InDomain::Type;
    if constexpr (isField<Row>)
        return Row::Kind::template Read<Domain, typename Row::OnWire::Type>(wire + Row::offset, arena);
    else
        return Domain{};
}

// Braces keep the order of their elements, so the members are read in the order in which they are built. Where one
// cannot be read, those built before it are destroyed.
template <typename Domain, typename... Rows>
[[gnu::always_inline]] inline Domain Build(RowList<Rows...>, const std::uint8_t* wire, Bounds arena)
{
    if constexpr ((std::is_same_v<typename Rows::InDomain, Itself<Domain>> && ...))
        return (ReadRow<Rows>(wire, arena), ...);
    else
        return Domain{ReadRow<Rows>(wire, arena)...};
}

template <typename Domain, typename Source>
[[gnu::cold, gnu::noinline]] void WriteRecord(const Source& value, std::uint8_t* wire, zt_arena* arena)
{
    Description<Domain>::Rows([&](auto... row) __attribute__((always_inline)) {
        (WriteRow<decltype(row)>(value, wire, arena), ...);
    });
}

template <typename Domain, typename Source>
[[gnu::always_inline]] inline std::size_t PutRecord(const Source& value, std::uint8_t* wire, std::size_t at,
                                                    Room room) noexcept
{
    Description<Domain>::Rows([&](auto... row) __attribute__((always_inline)) {
        return ((at = PutRow<decltype(row)>(value, wire, at, room), at != refused) && ...);
    });
    return at;
}

template <typename Domain>
[[gnu::noinline]] Domain ReadRecord(const std::uint8_t* wire, Bounds arena)
{
    return Build<Domain>(MembersInOrder<Domain>{}, wire, arena);
}

template <typename Domain>
[[gnu::always_inline]] inline Domain ReadElement(const std::uint8_t* wire, Bounds arena)
{
    return Build<Domain>(MembersInOrder<Domain>{}, wire, arena);
}

// What fails is written again by the steps, from the untouched top, so that every failure is what the steps make it.
template <typename Domain, typename Source>
[[gnu::cold, gnu::noinline]] void WriteBySteps(const Source& value, std::uint8_t* wire, zt_arena* arena)
{
    std::memset(wire, 0, sizeof(WireOf<Domain>));
    WriteRecord<Domain>(value, wire, arena);
}

// Writes straight where every address is there and none is cut to 32 bits, so that nothing can fail but a limit or the
// room.
template <typename Domain, typename Source>
[[gnu::always_inline]] inline bool WriteStraight(const Source& value, std::uint8_t* wire, zt_arena* arena)
{
    if (arena == nullptr || arena->start == nullptr) return false;
    const Room room{arena->start, static_cast<std::size_t>(arena->end - arena->start)};
    if (room.size > 0xFFFFFFFF) return false;
    const std::size_t end = PutRecord<Domain>(value, wire, static_cast<std::size_t>(arena->top - room.start), room);
    if (end == refused) return false;
    arena->top = room.start + end;
    return true;
}

} // namespace detail

// Returns the wire structure of `value`, padding zero, and puts what it refers to into the arena.
template <typename Domain, typename Source = Domain>
[[gnu::always_inline]] inline WireOf<Domain> ToWire(const Source& value, zt_arena* arena)
{
    WireOf<Domain> wire;
    auto* const bytes = reinterpret_cast<std::uint8_t*>(&wire);
    if (!detail::WriteStraight<Domain>(value, bytes, arena)) detail::WriteBySteps<Domain>(value, bytes, arena);
    return wire;
}

// Returns a record that owns all its data.
template <typename Domain>
Domain FromWire(const WireOf<Domain>& wire, const zt_arena* arena)
{
    return detail::ReadRecord<Domain>(reinterpret_cast<const std::uint8_t*>(&wire), detail::BoundsOf(arena));
}

} // namespace vyn_connector::common

// The exported pair of a record, which its header declares.
#define VYN_DEFINE_CONVERSIONS(DOMAIN)                                                                                 \
    WireOf<DOMAIN> CastToZt(const DOMAIN& value, zt_arena* arena)                                                      \
    {                                                                                                                  \
        return ToWire<DOMAIN>(value, arena);                                                                           \
    }                                                                                                                  \
    DOMAIN CastFromZt(const WireOf<DOMAIN>& wire, const zt_arena* arena)                                               \
    {                                                                                                                  \
        return FromWire<DOMAIN>(wire, arena);                                                                          \
    }

// The same for records of plain numbers, whose pair takes no arena.
#define VYN_DEFINE_CONVERSIONS_WITHOUT_ARENA(DOMAIN)                                                                   \
    WireOf<DOMAIN> CastToZt(const DOMAIN& value)                                                                       \
    {                                                                                                                  \
        return ToWire<DOMAIN>(value, nullptr);                                                                         \
    }                                                                                                                  \
    DOMAIN CastFromZt(const WireOf<DOMAIN>& wire)                                                                      \
    {                                                                                                                  \
        return FromWire<DOMAIN>(wire, nullptr);                                                                        \
    }
