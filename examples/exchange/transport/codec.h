// The library's conversions as the channel calls them. Every record with a table is encoded and decoded in one way; a
// state is a bare number on the wire.
#pragma once

#include <common/record_view.h>
#include <common/verify.h>
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

    // Throws std::runtime_error, naming the field, for what Decode would refuse, and for a message that makes its
    // reader allocate far more than it has itself: all the elements of a list may point to the same long string. Honest
    // messages take a few times their bytes; the reader of update identifiers reserves sixteen times that. A small one
    // may take more: the tables of four sets and of the map around them alone are over a kilobyte.
    static void Check(const Wire& wire, const std::vector<std::uint8_t>& arena)
    {
        constexpr std::uint64_t mostTimes = 16;
        constexpr std::uint64_t always = 4096;
        const zt_arena received = vyn_connector::common::ArenaOf(arena.data(), arena.size());
        const auto fault =
            vyn_connector::common::Verify<Record>(wire, &received, always + mostTimes * (sizeof(wire) + arena.size()));
        if (!fault) return;
        // The words of most readers do not name the field.
        const std::string path = fault->Path();
        const std::string text = fault->Text();
        throw std::runtime_error(text.find(path) != std::string::npos ? text : fmt::format("{}: {}", path, text));
    }
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

    static void Check(Wire, const std::vector<std::uint8_t>&) {}
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
