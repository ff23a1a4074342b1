// How the kinds of field find what a wire pointer names. Readers and views call it for each pointer; an address that it
// gives is one of the arena's, with room for the whole size, or it raises what the codec raises.
#pragma once

#include <common/detail/codec.h>

namespace vyn_connector::common::detail {

// What a null arena is read as: nothing lies in it, so the first pointer that is looked at fails.
inline constexpr Bounds nullArena{0, 0};

constexpr bool IsNullArena(Bounds bounds) noexcept
{
    return bounds.start == nullArena.start && bounds.limit == nullArena.limit;
}

inline Bounds BoundsOf(const zt_arena* arena) noexcept
{
    if (arena == nullptr) return nullArena;
    return BoundsBetween(reinterpret_cast<std::uintptr_t>(arena->start), reinterpret_cast<std::uintptr_t>(arena->end));
}

// Raises what the codec raises for a pointer that does not resolve; a codec without words of its own, arena exhaustion.
[[noreturn, gnu::cold, gnu::noinline]] inline void RaiseUnresolved(const char* file, int arenaCheck, const char* text,
                                                                   Bounds arena, zt_ptr_t pointer)
{
    if (IsNullArena(arena)) mur::raise_invalid_argument(file, arenaCheck);
    if (text == nullptr) mur::raise_result_code(mur::resultOutOfSpace);
    RaiseOutside(text, pointer.offset);
}

// The first of the bytes that `pointer` names.
[[gnu::always_inline]] inline const std::uint8_t* Get(const Codec& codec, zt_ptr_t pointer, Bounds arena,
                                                      std::size_t elementSize)
{
    const std::uintptr_t address = Resolve(arena, pointer, elementSize);
    if (address == 0) RaiseUnresolved(codec.file, codec.reading.arena, codec.outside, arena, pointer);
    return reinterpret_cast<const std::uint8_t*>(address);
}

} // namespace vyn_connector::common::detail
