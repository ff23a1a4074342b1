// Which field each byte of a message belongs to, for whatever shows the bytes: the picture and the page.
#pragma once

#include "message.h"

#include <string_view>
#include <vector>

namespace inspect {

// Neighbouring bytes of one owner, in the order in which they stand. Bytes that several fields own are the one's that
// stands first in the tree.
struct Region {
    std::uint32_t offset;
    std::uint32_t size;
    std::uint32_t node;     // or noNode
    bool isShared = false;  // by several fields
    bool isRefused = false; // a refused fault is about it
    bool isFaulty = false;  // any fault is
};

// Without a hole from the first byte to the last: what no field owns has noNode.
std::vector<Region> RegionsOfWire(const Message& message);
std::vector<Region> RegionsOfArena(const Message& message);

// The field whose slot the node is, or the node itself.
std::uint32_t FieldOf(const Message& message, std::uint32_t node);

// Neighbours in the tree have different ones.
std::size_t ColourOf(const Message& message, std::uint32_t node);
inline constexpr std::size_t colours = 12;

} // namespace inspect
