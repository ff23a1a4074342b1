// The message arena and the wire pointer into it: the two plain types that cross the process boundary, and the two
// operations on them, reserving and resolving. Every codec goes through these. They work on addresses as integers, so
// that hostile offsets and sizes wrap where a test sees it; they never throw, and report failure as a null address.
#pragma once

#include <common/export.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

// start <= top <= end holds before and after every operation. The arena does not own its buffer; [start, top) is in
// use. An arena belongs to one message and one thread.
struct VYN_EXPORT zt_arena {
    std::uint8_t* start;
    std::uint8_t* top;
    std::uint8_t* end;
};

// `offset` counts bytes from the arena's start; `size` is in bytes too, never a count of elements.
struct VYN_EXPORT zt_ptr_t {
    std::uint32_t offset;
    std::uint32_t size;
};

static_assert(sizeof(zt_ptr_t) == 8 && alignof(zt_ptr_t) == 4);
static_assert(offsetof(zt_ptr_t, offset) == 0 && offsetof(zt_ptr_t, size) == 4);
static_assert(std::is_trivially_copyable_v<zt_ptr_t> && std::is_trivially_copyable_v<zt_arena>);

namespace vyn_connector::common::detail {

// Where an arena is read: its start, and what offset + size of a pointer into it stay below. Two words, held in
// registers while a message is read.
struct Bounds {
    std::uintptr_t start;
    std::uintptr_t limit; // one more than the arena's size; 0: not even an empty array lies in it
};

// An arena whose end lies before its start holds nothing; one of all addresses is as good as one of an address less.
constexpr Bounds BoundsBetween(std::uintptr_t start, std::uintptr_t end) noexcept
{
    const std::uintptr_t size = end - start;
    const bool isWhole = size + 1 == 0;
    return {start, end < start ? 0 : size + (isWhole ? 0 : 1)};
}

// Whether the bytes that `ptr` names lie before the arena's end and are a whole number of elements. This is the one
// test that stands between a hostile message and memory outside its arena. The sum of two 32-bit numbers cannot wrap in
// 64 bits, so neither an offset that would lead back below the arena nor a size that would seem to end inside it gets
// past the comparison. Deliberately not tested: the top (data behind it resolves) and the address's alignment (read
// elements with memcpy).
constexpr bool Holds(Bounds arena, zt_ptr_t ptr, std::size_t elementSize) noexcept
{
    if (std::uint64_t{ptr.offset} + ptr.size >= arena.limit) return false;
    return elementSize <= 1 || ptr.size % elementSize == 0; // no part of an element
}

// Returns the address that `ptr` names, or 0 where the arena does not hold its bytes. What an arena holds has address 0
// only if the arena starts there.
constexpr std::uintptr_t Resolve(Bounds arena, zt_ptr_t ptr, std::size_t elementSize) noexcept
{
    return Holds(arena, ptr, elementSize) ? arena.start + ptr.offset : 0;
}

constexpr std::uintptr_t AlignUp(std::uintptr_t address, std::size_t alignment) noexcept
{
    return (address + (alignment - 1)) & ~static_cast<std::uintptr_t>(alignment - 1);
}

// The arithmetic of a reservation: moves the top past `size` bytes aligned to `alignment` and returns their address, or
// returns null and leaves the arena as it was. The bytes are as they were, stale ones of an earlier message perhaps:
// for callers that overwrite every one of them. All others reserve.
inline void* Claim(zt_arena* arena, std::size_t size, std::size_t alignment) noexcept
{
    const auto top = reinterpret_cast<std::uintptr_t>(arena->top);
    const std::uintptr_t aligned = AlignUp(top, alignment);
    if (aligned < top) return nullptr; // rounding up went past the last address, and so below the start or to it
    const std::uintptr_t newTop = aligned + size;
    if (newTop < aligned) return nullptr; // a size that wraps around the address space
    if (newTop > reinterpret_cast<std::uintptr_t>(arena->end)) return nullptr;

    arena->top = reinterpret_cast<std::uint8_t*>(newTop);
    return reinterpret_cast<void*>(aligned);
}

} // namespace vyn_connector::common::detail

// Takes `size` bytes at the arena's top, aligned to `alignment` (a power of two), and returns their address; they and
// the bytes skipped for the alignment are zero. Returns null, and leaves the arena as it was, where they do not fit. It
// is the address that is aligned, not its distance from the start.
inline void* zt_arena_reserve(zt_arena* arena, std::size_t size, std::size_t alignment) noexcept
{
    std::uint8_t* const top = arena->top;
    void* const reserved = vyn_connector::common::detail::Claim(arena, size, alignment);
    // The gap included, so that no stale byte leaves the process. A top that stays may be null.
    if (arena->top != top) std::memset(top, 0, static_cast<std::size_t>(arena->top - top));
    return reserved;
}

// Returns the address that `ptr` names and stores the number of its elements in `*count`; returns null, and leaves
// `*count` as it was, where the bytes do not lie before the arena's end or are not a whole number of elements.
inline void* zt_arena_resolve(const zt_arena* arena, const zt_ptr_t* ptr, std::size_t elementSize,
                              std::size_t* count) noexcept
{
    using namespace vyn_connector::common::detail;
    const Bounds bounds =
        BoundsBetween(reinterpret_cast<std::uintptr_t>(arena->start), reinterpret_cast<std::uintptr_t>(arena->end));
    const std::uintptr_t address = Resolve(bounds, *ptr, elementSize);
    if (address != 0) *count = ptr->size / elementSize;
    return reinterpret_cast<void*>(address);
}
