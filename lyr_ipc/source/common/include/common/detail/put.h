// How the kinds of field put bytes and arrays into an arena straight. No step raises: a limit that is exceeded, or want
// of room, is a position that is returned as `refused`, and the record is then written by the steps of the codecs.
#pragma once

#include <common/detail/codec.h>

#include <array>

namespace vyn_connector::common::detail {

// An arena that is written straight: below 4 GiB, so that no offset and no size is cut. Positions count from its start.
struct Room {
    std::uint8_t* start;
    std::size_t size;
};

inline constexpr std::size_t refused = static_cast<std::size_t>(-1);

// Copies the first and the last word of `size` bytes; they may overlap.
template <typename Word>
[[gnu::always_inline]] inline void CopyEnds(std::uint8_t* to, const std::uint8_t* from, std::size_t size) noexcept
{
    Word first;
    Word last;
    std::memcpy(&first, from, sizeof(Word));
    std::memcpy(&last, from + size - sizeof(Word), sizeof(Word));
    std::memcpy(to, &first, sizeof(Word));
    std::memcpy(to + size - sizeof(Word), &last, sizeof(Word));
}

// Copies 8 to 64 bytes.
[[gnu::always_inline]] inline void CopyShort(std::uint8_t* to, const std::uint8_t* from, std::size_t size) noexcept
{
    using Words = std::array<std::uint64_t, 2>;
    if (size < sizeof(Words)) {
        CopyEnds<std::uint64_t>(to, from, size);
    } else {
        CopyEnds<Words>(to, from, size);
        // What is left in the middle; where it is less than a word, its words reach into those at the ends.
        if (size > 2 * sizeof(Words))
            CopyEnds<Words>(to + sizeof(Words), from + sizeof(Words), size - 2 * sizeof(Words));
    }
}

[[gnu::noinline]] inline void CopyAny(std::uint8_t* to, const void* data, std::size_t size) noexcept
{
    const auto* const from = static_cast<const std::uint8_t*>(data);
    if (size > 64) {
        std::memcpy(to, from, size);
    } else if (size >= 8) {
        CopyShort(to, from, size);
    } else if (size >= 4) {
        CopyEnds<std::uint32_t>(to, from, size);
    } else if (size != 0) {
        to[0] = from[0];
        to[size / 2] = from[size / 2];
        to[size - 1] = from[size - 1];
    }
}

// Most strings and blobs are short and copied in place: calls would take their writers up to a third longer. Where they
// are expected to be long, a call copies them.
template <bool IsLong = false>
[[gnu::always_inline]] inline void CopyBytes(std::uint8_t* to, const void* data, std::size_t size) noexcept
{
    if (!IsLong && size >= 8 && size <= 64)
        CopyShort(to, static_cast<const std::uint8_t*>(data), size);
    else
        CopyAny(to, data, size);
}

// The pointer's two words are stored one by one: put together first, they would cost three instructions more.
[[gnu::always_inline]] inline void StorePointer(std::uint8_t* wire, std::size_t offset, std::size_t size) noexcept
{
    Store(wire, static_cast<std::uint32_t>(offset));
    Store(wire + sizeof(std::uint32_t), static_cast<std::uint32_t>(size));
}

// Copies the bytes, whose number a limit bounds, to position `at`, points `wire` at them, and returns the position
// behind them.
template <bool IsLong = false>
[[gnu::always_inline]] inline std::size_t PutBytes(const void* data, std::size_t size, std::uint8_t* wire,
                                                   std::size_t at, Room room) noexcept
{
    if (at + size > room.size) return refused;
    StorePointer(wire, at, size);
    CopyBytes<IsLong>(room.start + at, data, size);
    return at + size;
}

// Where an array of `count` elements begins that is put at `at`.
template <typename Wire>
[[gnu::always_inline]] inline std::size_t ArrayAt(std::size_t at, Room room) noexcept
{
    return AlignUp(reinterpret_cast<std::uintptr_t>(room.start) + at, alignof(Wire)) -
           reinterpret_cast<std::uintptr_t>(room.start);
}

[[gnu::noinline]] inline void ZeroGap(std::uint8_t* gap, std::size_t size) noexcept
{
    std::memset(gap, 0, size);
}

// Takes room for `count` elements, whose number a limit bounds, zeroes the gap before them, points `wire` at them, and
// returns `put(first, next)`: `put` writes every byte of the elements from address `first` on, and puts what belongs to
// them from position `next` on, which is behind them.
template <typename Wire, typename Put>
[[gnu::always_inline]] inline std::size_t PutArray(std::size_t count, std::uint8_t* wire, std::size_t at, Room room,
                                                   Put put) noexcept
{
    const std::size_t first = ArrayAt<Wire>(at, room);
    const std::size_t size = count * sizeof(Wire);
    if (first + size > room.size) return refused;
    static_assert(sizeof(Wire) >= sizeof(std::uint64_t) && alignof(Wire) <= sizeof(std::uint64_t));
    if (count != 0)
        Store(room.start + at, std::uint64_t{0}); // the gap is shorter; the first element overwrites the rest
    else
        ZeroGap(room.start + at, first - at);
    StorePointer(wire, first, size);
    return put(room.start + first, first + size);
}

// The same for `count` values from `value` on, each put by `put(value, element, at)`.
template <typename Wire, typename Iterator, typename Put>
[[gnu::always_inline]] inline std::size_t PutElements(Iterator value, std::size_t count, std::uint8_t* wire,
                                                      std::size_t at, Room room, Put put) noexcept
{
    return PutArray<Wire>(
        count, wire, at, room, [&](std::uint8_t * element, std::size_t next) __attribute__((always_inline)) {
            for (std::size_t left = count; left > 0; --left, ++value, element += sizeof(Wire)) {
                next = put(*value, element, next);
                if (next == refused) break;
            }
            return next;
        });
}

} // namespace vyn_connector::common::detail
