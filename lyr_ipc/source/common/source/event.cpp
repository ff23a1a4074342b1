// The event's conversions share no step with the throwing codecs: they place a string without zeroing its room, give
// an empty one a byte, cap each field, and read against the arena's top and not its end. A reader and a writer built
// to these rules agree on every edge, so they stand here by themselves.
#include <common/event.h>

#include <cstring>

namespace lyr::ipc::arena::conv {
namespace {

namespace kind = vyn_connector::common::kind;

constexpr std::uint32_t invalid = 0xFFFFFFFF;

void Place(const std::string& text, std::size_t cap, zt_ptr_t& wire, zt_arena& arena, Status& status) noexcept
{
    const auto start = reinterpret_cast<std::uintptr_t>(arena.start);
    const auto top = reinterpret_cast<std::uintptr_t>(arena.top);
    const auto end = reinterpret_cast<std::uintptr_t>(arena.end);

    const auto length = static_cast<std::uint32_t>(text.size());
    const auto offset = static_cast<std::uint32_t>(top - start);
    const std::uintptr_t target = start + offset;
    const std::uint32_t need = length == 0 ? 1 : length;
    const std::uintptr_t limit = end - top > cap ? top + cap : end;
    if (need > limit - target) { // target + need > limit, where the sum might wrap
        wire = {invalid, invalid};
        status = Status::Failed;
        return;
    }

    if (length > 0 && target != 0) std::memcpy(reinterpret_cast<void*>(target), text.data(), length);
    wire = {offset, length};
    if (offset == invalid || length == invalid) {
        status = Status::Failed;
        return;
    }
    arena.top = reinterpret_cast<std::uint8_t*>(target + need);
}

void Fetch(const zt_ptr_t& wire, std::string& text, const zt_arena& arena, Status& status)
{
    const auto start = reinterpret_cast<std::uintptr_t>(arena.start);
    const auto used = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(arena.top) - start);
    const std::uintptr_t address = start + wire.offset;
    if (wire.offset >= used || wire.size > used - wire.offset || address == 0) {
        status = Status::Failed;
        return;
    }
    text.assign(reinterpret_cast<const char*>(address), wire.size);
}

template <typename T>
void Write(kind::Number, const T& value, T& wire, zt_arena&, Status&)
{
    wire = value;
}
template <typename T>
void Read(kind::Number, const T& wire, T& value, const zt_arena&, Status&)
{
    value = wire;
}

template <std::size_t MaxBytes>
void Write(kind::Text<MaxBytes>, const std::string& value, zt_ptr_t& wire, zt_arena& arena, Status& status)
{
    Place(value, MaxBytes, wire, arena, status);
}
template <std::size_t MaxBytes>
void Read(kind::Text<MaxBytes>, const zt_ptr_t& wire, std::string& value, const zt_arena& arena, Status& status)
{
    Fetch(wire, value, arena, status);
}

template <std::size_t Count, std::size_t MaxBytes>
void Write(kind::Texts<Count, MaxBytes>, const std::array<std::string, Count>& values, zt_ptr_t (&wire)[Count],
           zt_arena& arena, Status& status)
{
    for (std::size_t i = 0; i < Count; ++i)
        Place(values[i], MaxBytes, wire[i], arena, status);
}
template <std::size_t Count, std::size_t MaxBytes>
void Read(kind::Texts<Count, MaxBytes>, const zt_ptr_t (&wire)[Count], std::array<std::string, Count>& values,
          const zt_arena& arena, Status& status)
{
    for (std::size_t i = 0; i < Count; ++i)
        Fetch(wire[i], values[i], arena, status);
}

// Written unchecked; on reading, a value that no severity has fails and is kept all the same.
void Write(kind::Enumeration, vyn_connector::VynEventSeverity value, std::uint32_t& wire, zt_arena&, Status&)
{
    wire = static_cast<std::uint32_t>(value);
}
void Read(kind::Enumeration, std::uint32_t wire, vyn_connector::VynEventSeverity& value, const zt_arena&,
          Status& status)
{
    value = static_cast<vyn_connector::VynEventSeverity>(wire);
    if (wire > static_cast<std::uint32_t>(vyn_connector::VynEventSeverity::Severity3)) status = Status::Failed;
}

} // namespace

tq_vyn_connector_VynTypes_VynEvent ToZt(zt_arena& arena, const vyn_connector::VynEvent& value, Status& status) noexcept
{
    tq_vyn_connector_VynTypes_VynEvent wire{};
    vyn_connector::common::ForEachRow<vyn_connector::VynEvent>([&](auto row) {
        using Row = decltype(row);
        Write(typename Row::Kind{}, Row::InDomain::Of(value), Row::OnWire::Of(wire), arena, status);
    });
    return wire;
}

vyn_connector::VynEvent FromZt(const zt_arena& arena, const tq_vyn_connector_VynTypes_VynEvent& wire,
                               Status& status) noexcept
{
    vyn_connector::VynEvent value;
    vyn_connector::common::ForEachRow<vyn_connector::VynEvent>([&](auto row) {
        using Row = decltype(row);
        Read(typename Row::Kind{}, Row::OnWire::Of(wire), Row::InDomain::Of(value), arena, status);
    });
    return value;
}

} // namespace lyr::ipc::arena::conv
