// The event's conversions go through its table like any record's, but by the rules of its own kinds of field: they share
// no step with the throwing codecs.
#include <common/event.h>

namespace lyr::ipc::arena::conv {

using vyn_connector::common::ForEachRow;

tq_vyn_connector_VynTypes_VynEvent ToZt(zt_arena& arena, const vyn_connector::VynEvent& value, Status& status) noexcept
{
    tq_vyn_connector_VynTypes_VynEvent wire;
    zt_arena room = arena; // the caller's would be stored to and loaded from for each field
    ForEachRow<vyn_connector::VynEvent>([&](auto row) {
        using Row = decltype(row);
        Row::Kind::template Write<typename Row::OnWire::Type>(
            Row::InDomain::Of(value), reinterpret_cast<std::uint8_t*>(&wire) + Row::offset, room, status);
    });
    arena.top = room.top;
    return wire;
}

vyn_connector::VynEvent FromZt(const zt_arena& arena, const tq_vyn_connector_VynTypes_VynEvent& wire,
                               Status& status) noexcept
{
    vyn_connector::VynEvent value;
    ForEachRow<vyn_connector::VynEvent>([&](auto row) {
        using Row = decltype(row);
        Row::Kind::template Read<typename Row::OnWire::Type>(reinterpret_cast<const std::uint8_t*>(&wire) + Row::offset,
                                                             Row::InDomain::Of(value), arena, status);
    });
    return value;
}

} // namespace lyr::ipc::arena::conv
