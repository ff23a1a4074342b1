// The library's conversions as the channel calls them: one form for all records. Most of them have a table, and a
// conversion that takes the arena; the others are those below.
#pragma once

#include <common/arena_size.h>
#include <common/vyn_connector_common.h>

#include <fmt/format.h>

#include <stdexcept>
#include <type_traits>
#include <utility>

namespace exchange {

template <typename Wire, typename = void>
inline constexpr bool takesArena = false;
template <typename Wire>
inline constexpr bool takesArena<Wire, std::void_t<decltype(vyn_connector::common::CastFromZt(
                                           std::declval<const Wire&>(), std::declval<const zt_arena*>()))>> = true;

// `Size` is the number of arena bytes that encoding takes, in an arena that is aligned for every type; `maxSize` the most
// that it can take for any record of the type. Encode and Decode throw what the conversions throw.
template <typename Record>
struct Codec {
    using Wire = vyn_connector::common::WireOf<Record>;
    static constexpr const char* name = vyn_connector::common::Description<Record>::name;
    static constexpr std::size_t maxSize = vyn_connector::common::MaxArenaSize<Record>();

    static std::size_t Size(const Record& record) { return vyn_connector::common::ArenaSize(record, 0); }
    static Wire Encode(const Record& record, zt_arena& arena)
    {
        if constexpr (takesArena<Wire>)
            return vyn_connector::common::CastToZt(record, &arena);
        else
            return vyn_connector::common::CastToZt(record);
    }
    static Record Decode(const Wire& wire, const zt_arena& arena)
    {
        if constexpr (takesArena<Wire>)
            return vyn_connector::common::CastFromZt(wire, &arena);
        else
            return vyn_connector::common::CastFromZt(wire);
    }
};

// A part of a vector of identifiers; it is received as a vector.
template <>
struct Codec<vyn_connector::common::VynUpdateIdentifierRange> {
    using Range = vyn_connector::common::VynUpdateIdentifierRange;
    using Wire = vyn_connector::common::WireOf<vyn_connector::VynUpdateIdentifiers>;
    static constexpr const char* name = Codec<vyn_connector::VynUpdateIdentifiers>::name;

    static std::size_t Size(const Range& range) { return vyn_connector::common::ArenaSize(range, 0); }
    static Wire Encode(const Range& range, zt_arena& arena) { return vyn_connector::common::CastToZt(range, &arena); }
};

// An event reports by its status.
template <>
struct Codec<vyn_connector::VynEvent> {
    using Wire = vyn_connector::common::WireOf<vyn_connector::VynEvent>;
    using Status = lyr::ipc::arena::conv::Status;
    static constexpr const char* name = vyn_connector::common::Description<vyn_connector::VynEvent>::name;
    static constexpr std::size_t maxSize = vyn_connector::common::MaxArenaSize<vyn_connector::VynEvent>();

    static std::size_t Size(const vyn_connector::VynEvent& event) { return vyn_connector::common::ArenaSize(event, 0); }
    static Wire Encode(const vyn_connector::VynEvent& event, zt_arena& arena)
    {
        Status status = Status::Ok;
        const Wire wire = lyr::ipc::arena::conv::ToZt(arena, event, status);
        if (status == Status::Failed) throw std::length_error("a field does not fit");
        return wire;
    }
    static vyn_connector::VynEvent Decode(const Wire& wire, const zt_arena& arena)
    {
        Status status = Status::Ok;
        vyn_connector::VynEvent event = lyr::ipc::arena::conv::FromZt(arena, wire, status);
        if (status == Status::Failed)
            throw std::out_of_range("a field lies outside the arena, or the severity is unknown");
        return event;
    }
};

// A state is a bare number on the wire.
template <>
struct Codec<vyn_connector::VynConnectorState> {
    using Wire = int;
    static constexpr const char* name = "VynConnectorState";
    static constexpr std::size_t maxSize = 0;

    static std::size_t Size(vyn_connector::VynConnectorState) { return 0; }
    static Wire Encode(vyn_connector::VynConnectorState state, zt_arena&)
    {
        const std::optional<int> code = vyn_connector::common::CastToZt(state);
        if (!code) throw std::out_of_range(fmt::format("there is no state {}", static_cast<int>(state)));
        return *code;
    }
    static vyn_connector::VynConnectorState Decode(Wire code, const zt_arena&)
    {
        const std::optional<vyn_connector::VynConnectorState> state = vyn_connector::common::CastFromZt(code);
        if (!state) throw std::out_of_range(fmt::format("there is no state with the code {}", code));
        return *state;
    }
};

} // namespace exchange
