// A message as it arrives: what a record's writer wrote, in an arena of just its size, to be looked at and to be
// spoilt. And what the arena's pointers look like, one by one.
#pragma once

#include "arena.h"

#include <common/arena_size.h>

template <typename Record>
struct Received {
    explicit Received(const Record& record, std::size_t startMod16 = 0)
        : arena(vyn_connector::common::ArenaSize(record, startMod16), startMod16),
          wire(vyn_connector::common::Conversion<Record>::Write(record, arena.Get()))
    {
    }

    TestArena arena;
    vyn_connector::common::WireOf<Record> wire;
};

// A structure that stands somewhere in the arena.
template <typename Structure>
Structure StructureAt(const TestArena& arena, std::size_t offset)
{
    Structure structure;
    std::memcpy(&structure, arena.Start() + offset, sizeof(structure));
    return structure;
}

inline void Put(TestArena& arena, std::size_t offset, zt_ptr_t pointer)
{
    arena.Put(offset, BytesOf(pointer));
}

// Of a member of an element in an array, the distance from the arena's start.
template <typename Structure>
std::size_t OffsetOf(zt_ptr_t array, std::size_t index, zt_ptr_t Structure::*member)
{
    Structure structure{};
    const auto* const first = reinterpret_cast<const std::uint8_t*>(&structure);
    const auto* const place = reinterpret_cast<const std::uint8_t*>(&(structure.*member));
    return array.offset + index * sizeof(Structure) + static_cast<std::size_t>(place - first);
}
