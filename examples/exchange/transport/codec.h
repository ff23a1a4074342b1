// The library's conversions as the channel calls them. Every record with a table is encoded and decoded in one way; a
// state is a bare number on the wire.
#pragma once

#include <common/vyn_connector_common.h>

#include <fmt/format.h>

#include <stdexcept>

namespace exchange {

// Encode and Decode throw what the library throws. `maxSize` is the most bytes of arena that a record of the type can
// take.
template <typename Record>
struct Codec {
    using Wire = vyn_connector::common::WireOf<Record>;
    static constexpr const char* name = vyn_connector::common::Description<Record>::name;
    static constexpr std::size_t maxSize = vyn_connector::common::MaxArenaSize<Record>();

    static auto Encode(const Record& record) { return vyn_connector::common::Encode(record); }
    static Record Decode(const Wire& wire, const std::vector<std::uint8_t>& arena)
    {
        return vyn_connector::common::Decode<Record>(wire, arena.data(), arena.size());
    }

    // The conversions alone, as a process calls them that keeps an arena.
    static Wire Write(const Record& record, zt_arena& arena)
    {
        return vyn_connector::common::Conversion<Record>::Write(record, &arena);
    }
    static Record Read(const Wire& wire, const zt_arena& arena)
    {
        return vyn_connector::common::Conversion<Record>::Read(wire, &arena);
    }
};

template <>
struct Codec<vyn_connector::VynConnectorState> {
    using State = vyn_connector::VynConnectorState;
    using Wire = int;
    static constexpr const char* name = "VynConnectorState";
    static constexpr std::size_t maxSize = 0;

    struct Message {
        Wire wire;
        std::vector<std::uint8_t> arena;
    };

    static Message Encode(State state)
    {
        const std::optional<int> code = vyn_connector::common::CastToZt(state);
        if (!code) throw std::out_of_range(fmt::format("there is no state {}", static_cast<int>(state)));
        return {*code, {}};
    }
    static State Decode(Wire code, const std::vector<std::uint8_t>&)
    {
        const std::optional<State> state = vyn_connector::common::CastFromZt(code);
        if (!state) throw std::out_of_range(fmt::format("there is no state with the code {}", code));
        return *state;
    }

    static Wire Write(State state, zt_arena&) { return Encode(state).wire; }
    static State Read(Wire code, const zt_arena&) { return Decode(code, {}); }
};

} // namespace exchange
