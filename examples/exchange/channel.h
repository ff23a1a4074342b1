// Records to and from the peer: a record is encoded into a wire structure and an arena, which travel in one frame, and
// decoded on the other side. README.md describes the frame.
#pragma once

#include "transport.h"

#include <common/vyn_connector_common.h>

#include <fmt/format.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace exchange {

struct Message {
    std::string record;
    std::vector<std::uint8_t> wire;
    std::vector<std::uint8_t> arena;
};

// An arena over bytes that are there already: all of it is in use, or, to write into, none.
zt_arena FullArena(std::vector<std::uint8_t>& bytes);
zt_arena EmptyArena(std::vector<std::uint8_t>& bytes);

// Throws, from within a catch block, the current exception again with the record's name before its text.
[[noreturn]] void RaiseAbout(std::string_view record);

template <typename Record>
Message Encode(const Record& record)
{
    constexpr std::size_t arenaSize = 4096; // as much as the largest of these records needs, and more
    Message message;
    message.record = vyn_connector::common::Description<Record>::name;
    message.arena.resize(arenaSize);
    zt_arena arena = EmptyArena(message.arena);
    const auto wire = vyn_connector::common::CastToZt(record, &arena);
    message.arena.resize(static_cast<std::size_t>(arena.top - arena.start));
    message.wire.resize(sizeof(wire));
    std::memcpy(message.wire.data(), &wire, sizeof(wire));
    return message;
}

template <typename Record>
Record Decode(Message& message)
{
    vyn_connector::common::WireOf<Record> wire;
    if (message.wire.size() != sizeof(wire))
        throw std::runtime_error(
            fmt::format("the wire structure has {} bytes instead of {}", message.wire.size(), sizeof(wire)));
    std::memcpy(&wire, message.wire.data(), sizeof(wire));
    const zt_arena arena = FullArena(message.arena);
    return vyn_connector::common::CastFromZt(wire, &arena);
}

// A record that came from the peer, and what it took.
template <typename Record>
struct Received {
    Record record;
    std::size_t wireBytes;
    std::size_t arenaBytes;
};

class Channel {
public:
    explicit Channel(Transport& transport) : transport_(transport) {}

    template <typename Record>
    void Send(const Record& record)
    try {
        SendMessage(Encode(record));
    } catch (const PeerGone&) {
        throw;
    } catch (...) {
        RaiseAbout(vyn_connector::common::Description<Record>::name);
    }

    // The next message has to be this record.
    template <typename Record>
    Received<Record> Receive()
    {
        constexpr const char* name = vyn_connector::common::Description<Record>::name;
        Message message = ReceiveMessage(name);
        try {
            return {Decode<Record>(message), message.wire.size(), message.arena.size()};
        } catch (...) {
            RaiseAbout(name);
        }
    }

private:
    void SendMessage(const Message& message);
    Message ReceiveMessage(std::string_view record);

    Transport& transport_;
};

} // namespace exchange
