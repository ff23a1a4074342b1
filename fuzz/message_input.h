// The inputs of the targets that read messages, which their mutator and the script that seeds them know as well:
//
//     which of the target's layouts | start and arena | top, 2 bytes | wire structure | the arena's bytes
//
// What is missing is zero.
#pragma once

#include "model/message.h"
#include "target.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Defined by each target.
const std::vector<const model::Layout*>& InputLayouts();

struct MessageInput {
    enum Flags : unsigned {
        StartMod16 = 0x0F,
        LastArena = 0x10, // the last bytes of the address space
        NullPointer = 0x20,
        UnsetArena = 0x40,
        NullArena = 0x80
    };

    std::size_t number = 0; // of the layout
    const model::Layout* layout = nullptr;
    unsigned flags = 0;
    std::size_t startMod16 = 0;
    model::Message message;
};

inline constexpr std::size_t messageInputHeader = 4;

inline MessageInput ParseMessageInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    MessageInput parsed;
    parsed.number = input.Byte() % InputLayouts().size();
    parsed.layout = InputLayouts()[parsed.number];
    parsed.flags = input.Byte();
    parsed.startMod16 = parsed.flags & MessageInput::StartMod16;
    const std::uint64_t top = input.Number(2);
    parsed.message.wire = input.Bytes(parsed.layout->size);
    parsed.message.arena.bytes = input.Bytes(input.Left());
    parsed.message.arena.top = std::min<std::uint64_t>(top, parsed.message.arena.bytes.size());
    parsed.message.arena.start = 0x1000 + parsed.startMod16;
    return parsed;
}
