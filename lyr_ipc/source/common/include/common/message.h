// One message with everything it owns: the obvious way to write a record and to read it back, for any record, whatever
// the signature of its pair. Callers who hold an arena of the platform use CastToZt and CastFromZt themselves.
#pragma once

#include <common/arena_size.h>

#include <vector>

namespace vyn_connector::common {

// The two halves of a message, as they are sent. Copies are messages of their own.
template <typename Record>
struct Message {
    WireOf<Record> wire;
    std::vector<std::uint8_t> arena; // the bytes in use
};

namespace detail {

// Where an arena of no bytes stands: aligned, so that an array without elements needs no gap before it either. Nothing
// is written there.
inline constexpr std::uint64_t placeOfNone = 0;

// An arena of [bytes, bytes + size) with `used` bytes in use. Its addresses are not null even where it is empty, when
// those of an empty vector are. An arena has no const bytes; readers leave them alone all the same.
inline zt_arena ArenaOver(const void* bytes, std::size_t size, std::size_t used) noexcept
{
    auto* const start = static_cast<std::uint8_t*>(const_cast<void*>(size == 0 ? &placeOfNone : bytes));
    return {start, start + used, start + size};
}

} // namespace detail

// The arena of a received message, all of its `size` bytes in use: for readers, views and Verify, not for writers.
inline zt_arena ArenaOf(const std::uint8_t* bytes, std::size_t size) noexcept
{
    return detail::ArenaOver(bytes, size, size);
}

// Writes the record into a new message, in one allocation of just the size. Throws what the record's writer throws, and
// std::length_error, naming the field, for an event whose status would be cleared.
template <typename Record>
Message<Record> Encode(const Record& record)
{
    Message<Record> message{{}, std::vector<std::uint8_t>(ArenaSize(record, 0))};
    zt_arena arena = detail::ArenaOver(message.arena.data(), message.arena.size(), 0);
    message.wire = Conversion<Record>::Write(record, &arena);
    return message;
}

// Reads a message that was received as a wire structure and `size` bytes of arena, all of them in use. The arena is not
// changed. Throws what the record's reader throws, and std::out_of_range, naming the field, for an event whose status
// would be cleared.
template <typename Record>
Record Decode(const WireOf<Record>& wire, const std::uint8_t* arena, std::size_t size)
{
    const zt_arena received = ArenaOf(arena, size);
    return Conversion<Record>::Read(wire, &received);
}

template <typename Record>
Record Decode(const Message<Record>& message)
{
    return Decode<Record>(message.wire, message.arena.data(), message.arena.size());
}

} // namespace vyn_connector::common
