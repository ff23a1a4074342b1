// Records to and from the peer: a record is encoded into a wire structure and an arena, which travel in one frame, and
// decoded on the other side. README.md describes the frame. All that passes is counted, and captured where that is
// asked for.
#pragma once

#include "transport/capture.h"
#include "transport/codec.h"
#include "transport/limits.h"
#include "transport/statistics.h"
#include "transport/transport.h"

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace exchange {

struct Message {
    std::string record;
    std::vector<std::uint8_t> wire;
    std::vector<std::uint8_t> arena;
};

// A record that came from the peer, and the message that it came in.
template <typename Record>
struct Received {
    Record record;
    typename Codec<Record>::Wire wire;
    std::vector<std::uint8_t> arena;

    vyn_connector::common::RecordView<Record> View() const
    {
        const zt_arena received = vyn_connector::common::ArenaOf(arena.data(), arena.size());
        return {wire, &received};
    }
};

class Channel {
public:
    // `capture` may be null.
    Channel(Transport& transport, Capture* capture) : transport_(transport), capture_(capture) {}

    // Throws std::runtime_error with the record's name and the reason where the record cannot be encoded.
    template <typename Record>
    void Send(const Record& record)
    {
        SendMessage(Encode(record));
    }

    // The next message has to be this record. Throws std::runtime_error where it is another one or does not decode.
    template <typename Record>
    Received<Record> Receive()
    {
        std::optional<Received<Record>> received = ReceiveOrEnd<Record>();
        if (!received) RaiseUnexpected("", Codec<Record>::name);
        return std::move(*received);
    }

    // For a series of records: empty where the peer says that there are no more.
    template <typename Record>
    std::optional<Received<Record>> ReceiveOrEnd()
    {
        using Wire = typename Codec<Record>::Wire;
        std::optional<Message> message = ReceiveMessage({Codec<Record>::name, sizeof(Wire), Codec<Record>::maxSize});
        if (!message) return std::nullopt;
        Received<Record> received;
        std::memcpy(&received.wire, message->wire.data(), sizeof(received.wire));
        received.record = Decode<Record>(received.wire, message->arena);
        received.arena = std::move(message->arena);
        return received;
    }

    // The end of a series of records, or of a step.
    void SendEnd();
    void ReceiveEnd();

    const Statistics& Counts() const { return statistics_; }

private:
    struct Expected {
        std::string_view record;
        std::size_t wireSize;
        std::size_t maxArenaSize;
    };

    template <typename Record>
    Message Encode(const Record& record)
    try {
        CheckLimits(record);
        Message message;
        message.record = Codec<Record>::name;
        auto encoded = Codec<Record>::Encode(record);
        message.arena = std::move(encoded.arena);
        message.wire.resize(sizeof(encoded.wire));
        std::memcpy(message.wire.data(), &encoded.wire, sizeof(encoded.wire));
        statistics_.Add(record, message.wire.size(), message.arena.size());
        return message;
    } catch (...) {
        RaiseAbout(Codec<Record>::name);
    }

    template <typename Record>
    Record Decode(const typename Codec<Record>::Wire& wire, const std::vector<std::uint8_t>& arena)
    try {
        Codec<Record>::Check(wire, arena);
        Record record = Codec<Record>::Decode(wire, arena);
        statistics_.Add(record, sizeof(wire), arena.size());
        return record;
    } catch (...) {
        RaiseAbout(Codec<Record>::name);
    }

    // Throws the current exception again, with the record's name before its text.
    [[noreturn]] static void RaiseAbout(std::string_view record);
    [[noreturn]] static void RaiseUnexpected(std::string_view received, std::string_view due);

    void SendMessage(const Message& message);
    std::optional<Message> ReceiveMessage(const Expected& expected);

    Transport& transport_;
    Capture* capture_;
    Statistics statistics_;
};

} // namespace exchange
