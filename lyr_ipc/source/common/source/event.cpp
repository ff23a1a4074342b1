// The event's conversions go through its table like any record's, but by the rules of its own kinds of field: they
// share no step with the throwing codecs.
#include <common/event.h>

#include "record_conversion.h"

namespace lyr::ipc::arena::conv {

using vyn_connector::VynEvent;
using vyn_connector::common::Description;
using vyn_connector::common::ForEachRow;
using vyn_connector::common::WireOf;
using vyn_connector::common::detail::WriteStraight;

namespace {

[[gnu::cold, gnu::noinline]] void WriteBySteps(zt_arena& arena, const VynEvent& value, std::uint8_t* wire,
                                               Status& status) noexcept
{
    ForEachRow<VynEvent>([&](auto row) {
        using Row = decltype(row);
        Row::Kind::template Write<typename Row::OnWire::Type>(Row::InDomain::Of(value), wire + Row::offset, arena,
                                                              status);
    });
}

} // namespace

WireOf<VynEvent> ToZt(zt_arena& arena, const VynEvent& value, Status& status) noexcept
{
    WireOf<VynEvent> wire;
    auto* const bytes = reinterpret_cast<std::uint8_t*>(&wire);
    if (!WriteStraight<VynEvent>(value, bytes, &arena)) WriteBySteps(arena, value, bytes, status);
    return wire;
}

// Braces keep the order of their elements: the fields are read one after the other.
VynEvent FromZt(const zt_arena& arena, const WireOf<VynEvent>& wire, Status& status) noexcept
{
    const zt_arena received = arena;
    return Description<VynEvent>::Rows([&](auto... row) __attribute__((always_inline)) {
        return VynEvent{decltype(row)::Kind::template Read<typename decltype(row)::InDomain::Type,
                                                           typename decltype(row)::OnWire::Type>(
            reinterpret_cast<const std::uint8_t*>(&wire) + decltype(row)::offset, received, status)...};
    });
}

} // namespace lyr::ipc::arena::conv
