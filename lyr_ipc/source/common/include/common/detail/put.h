// How the kinds of field put bytes and arrays into an arena straight. No step raises: a limit that is exceeded, or want of
// room, is a position that is returned as `refused`, and the record is then written by the steps of the codecs.
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

// Strings are short: up to 64 bytes are copied by loads and stores that overlap in the middle.
[[gnu::noinline]] inline void CopyBytes(std::uint8_t* to, const void* data, std::size_t size) noexcept
{
    const auto* const from = static_cast<const std::uint8_t*>(data);
    const auto copyEnds = [&](auto first) {
        auto last = first;
        std::memcpy(&first, from, sizeof(first));
        std::memcpy(&last, from + size - sizeof(last), sizeof(last));
        std::memcpy(to, &first, sizeof(first));
        std::memcpy(to + size - sizeof(last), &last, sizeof(last));
    };
    if (size > 64)
        std::memcpy(to, from, size);
    else if (size > 32)
        copyEnds(std::array<std::uint64_t, 4>{});
    else if (size >= 16)
        copyEnds(std::array<std::uint64_t, 2>{});
    else if (size >= 8)
        copyEnds(std::uint64_t{});
    else if (size >= 4)
        copyEnds(std::uint32_t{});
    else if (size >= 2)
        copyEnds(std::uint16_t{});
    else if (size == 1)
        *to = *from;
}

// The pointer's two words are stored one by one: put together first, they would cost three instructions more.
[[gnu::always_inline]] inline void StorePointer(std::uint8_t* wire, std::size_t offset, std::size_t size) noexcept
{
    Store(wire, static_cast<std::uint32_t>(offset));
    Store(wire + sizeof(std::uint32_t), static_cast<std::uint32_t>(size));
}

// Copies the bytes, whose number a limit bounds, to position `at`, points `wire` at them, and returns the position behind
// them.
[[gnu::always_inline]] inline std::size_t PutBytes(const void* data, std::size_t size, std::uint8_t* wire,
                                                   std::size_t at, Room room) noexcept
{
    if (at + size > room.size) return refused;
    StorePointer(wire, at, size);
    CopyBytes(room.start + at, data, size);
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
// returns the position of the first. The caller writes every byte of them; the next position is behind them.
template <typename Wire>
[[gnu::always_inline]] inline std::size_t PutArray(std::size_t count, std::uint8_t* wire, std::size_t at,
                                                   Room room) noexcept
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
    return first;
}

// The same for `count` values from `value` on, each put by `put(value, element, at)`; the position is the one behind all.
template <typename Wire, typename Iterator, typename Put>
[[gnu::always_inline]] inline std::size_t PutElements(Iterator value, std::size_t count, std::uint8_t* wire,
                                                      std::size_t at, Room room, Put put) noexcept
{
    at = PutArray<Wire>(count, wire, at, room);
    if (at == refused) return refused;
    std::uint8_t* element = room.start + at;
    at += count * sizeof(Wire);
    for (; count > 0; --count, ++value, element += sizeof(Wire)) {
        at = put(*value, element, at);
        if (at == refused) return refused;
    }
    return at;
}

} // namespace vyn_connector::common::detail
