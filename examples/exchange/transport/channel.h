// Records to and from the peer: a record is encoded into a wire structure and an arena, which travel in one frame, and
// decoded on the other side. README.md describes the frame. All that passes is counted, and captured where that is
// asked for.
#pragma once

#include "transport/capture.h"
#include "transport/claims.h"
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

// A record that came from the peer, and what it took.
template <typename Record>
struct Received {
    Record record;
    std::size_t wireBytes;
    std::size_t arenaBytes;
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
        return Received<Record>{Decode<Record>(*message), message->wire.size(), message->arena.size()};
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
    Record Decode(const Message& message)
    try {
        typename Codec<Record>::Wire wire;
        std::memcpy(&wire, message.wire.data(), sizeof(wire));
        if constexpr (vyn_connector::common::isDescribed<Record>)
            CheckClaims<Record>(message.wire.data(), message.arena);
        Record record = Codec<Record>::Decode(wire, message.arena);
        statistics_.Add(record, message.wire.size(), message.arena.size());
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
